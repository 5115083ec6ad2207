// The effect layer: one textured rectangle blended over the composed picture, its picture from a
// file or a capture of the output, laid out anew at random on its own timer.
#include "core/Color.h"
#include "core/EngineContext.h"
#include "core/TextEngine.h"
#include "render/FrameRenderer.h"

namespace lumivane {

namespace {

// The device word back to a program colour (red in the low byte).
std::int32_t ProgramColorOf(std::uint32_t device) {
  return ProgramColor(static_cast<std::uint8_t>(device >> 16), static_cast<std::uint8_t>(device >> 8),
                      static_cast<std::uint8_t>(device));
}

}  // namespace

void FrameRenderer::SetEffectTexture(const std::string& file) {
  RenderDevice* d = device_;
  if (d == nullptr) return;
  if (!file.empty()) {
    // The last picture stays on until the new one is in.
    effectFileName_ = file;
    if (!images_) images_ = std::make_unique<ImageLoader>();
    effectLoading_ = images_->Request(file, BackBufferWidth(), BackBufferHeight(), TextureFormat::X8R8G8B8,
                                      ImageFilter::Point, 0);
    if (WaitForImages) FinishImages();
    return;
  }
  // A capture of the back buffer as it stands, one device copy.
  effectFileName_.clear();
  effectLoading_ = 0;
  effectTexture_ = BackBufferTexture(effectCapture_);
  if (effectTexture_ == 0) return;
  d->CopyBackBufferToTexture(effectTexture_, 0, 0, BackBufferWidth(), BackBufferHeight(), 0, 0);
  effectTextureWidth_ = BackBufferWidth();
  effectTextureHeight_ = BackBufferHeight();
}

void FrameRenderer::ResetEffectTexture() {
  effectTexture_ = 0;
  effectLoading_ = 0;
  effectFileName_.clear();
  ReleaseLater(effectFile_);
  effectFile_ = 0;
}

bool FrameRenderer::LayOutEffect(const EffectArguments& e, Tick now) {
  if (device_ == nullptr) return false;
  const double elapsed = TicksSince(now, lastEffectTick_);
  const bool relayout = !(static_cast<double>(text_.Context().TimeScale) * e.Timer >= elapsed) && !e.HoldTimer;
  BackGroundMeshArguments m;
  if (relayout) {
    m.ComputeAspectRatio = e.ComputeAspectRatio;
    // Tiles count from the texture's extent the picture fills: 1, as the capture is exactly the
    // back buffer's size and a file's picture spans its texture.
    m.Index = 1;
    static_cast<LayerPlacement&>(m) = e;
    m.FilterColor = e.Color;
    m.FilterRandom = e.ColorRandom;
    m.ImagesLoaded = true;
    m.ImageWidth = effectTextureWidth_;
    m.ImageHeight = effectTextureHeight_;
  } else {
    m.Hold = true;
    effectMesh_.RenderElementColor = ToDeviceColor(e.Color);
  }
  m.BackBufferWidth = BackBufferWidth();
  m.BackBufferHeight = BackBufferHeight();
  lumivane::BuildBackGroundMesh(m, text_.Context().random, effectMesh_, effectVertices_);
  if (relayout) {
    lastEffectTick_ = now;
    if (EffectColorChanged) EffectColorChanged(ProgramColorOf(effectMesh_.RenderElementColor));
  }
  if (e.SourceBlend == 0 && e.TargetBlend == 0) return false;
  // A picture still coming in with none before it: nothing yet, rather than a plain rectangle
  // that would flash over the whole output until it is in.
  return !(effectTexture_ == 0 && effectLoading_ != 0);
}

void FrameRenderer::DrawEffect(const EffectArguments& e) {
  RenderDevice* d = device_;
  if (d == nullptr) return;
  d->BeginScene();
  d->SetRenderState(RenderState::CULLMODE, CullMode::None);
  d->SetVertexShader(VertexFormat::TL);
  d->SetTexture(effectTexture_);
  d->SetRenderState(RenderState::DESTBLEND, static_cast<std::uint32_t>(e.TargetBlend));
  d->SetRenderState(RenderState::SRCBLEND, static_cast<std::uint32_t>(e.SourceBlend));
  d->SetRenderState(RenderState::ALPHABLENDENABLE, 1);
  d->SetRenderState(RenderState::FILLMODE, FillMode::Solid);
  d->DrawPrimitiveUP(PrimitiveType::TriangleList, 4, effectVertices_, sizeof(TLVERTEX));
  d->SetRenderState(RenderState::ALPHABLENDENABLE, 0);
  d->SetTexture(0);
  d->EndScene();
}

}  // namespace lumivane
