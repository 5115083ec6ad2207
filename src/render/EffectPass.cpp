#include "render/EffectPass.h"

#include "core/Color.h"
#include "core/EngineContext.h"
#include "core/TextEngine.h"

namespace lumivane {

namespace {

// The device word back to a program colour (red in the low byte).
std::int32_t ProgramColorOf(std::uint32_t device) {
  return ProgramColor(static_cast<std::uint8_t>(device >> 16), static_cast<std::uint8_t>(device >> 8),
                      static_cast<std::uint8_t>(device));
}

}  // namespace

void EffectPass::SetEffectTexture(const std::string& file) {
  RenderDevice* d = context_.device;
  if (d == nullptr) return;
  const int width = context_.Width(), height = context_.Height();
  if (!file.empty()) {
    // The last picture stays on until the new one is in.
    effectFileName_ = file;
    effectLoading_ = pictures_.Request(file, width, height, TextureFormat::X8R8G8B8, ImageFilter::Point, 0);
    pictures_.CatchUp();
    return;
  }
  // A capture of the back buffer as it stands, one device copy.
  effectFileName_.clear();
  effectLoading_ = 0;
  effectTexture_ = context_.BackBufferTexture(effectCapture_);
  if (effectTexture_ == 0) return;
  d->CopyBackBufferToTexture(effectTexture_, 0, 0, width, height, 0, 0);
  effectTextureWidth_ = width;
  effectTextureHeight_ = height;
}

void EffectPass::ResetEffectTexture() {
  effectTexture_ = 0;
  effectLoading_ = 0;
  effectFileName_.clear();
  pictures_.ReleaseLater(effectFile_);
  effectFile_ = 0;
}

bool EffectPass::Run(const EffectArguments& e, Tick now, bool drawNow) {
  if (!e.Enabled || context_.device == nullptr) return false;
  if (e.Capture &&
      static_cast<double>(context_.text.Context().TimeScale) * e.Timer < TicksSince(now, lastEffectCaptureTick_)) {
    SetEffectTexture({});
    lastEffectCaptureTick_ = now;
  }
  if (!LayOut(e, now)) return false;
  if (!drawNow) return true;
  Draw(e);
  return false;
}

bool EffectPass::LayOut(const EffectArguments& e, Tick now) {
  const double elapsed = TicksSince(now, lastEffectTick_);
  const bool relayout = !(static_cast<double>(context_.text.Context().TimeScale) * e.Timer >= elapsed) && !e.HoldTimer;
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
  m.BackBufferWidth = context_.Width();
  m.BackBufferHeight = context_.Height();
  lumivane::BuildBackGroundMesh(m, context_.text.Context().random, effectMesh_, effectVertices_);
  if (relayout) {
    lastEffectTick_ = now;
    if (EffectColorChanged) EffectColorChanged(ProgramColorOf(effectMesh_.RenderElementColor));
  }
  if (e.SourceBlend == 0 && e.TargetBlend == 0) return false;
  // A picture still coming in with none before it: nothing yet, rather than a plain rectangle
  // that would flash over the whole output until it is in.
  return !(effectTexture_ == 0 && effectLoading_ != 0);
}

void EffectPass::Draw(const EffectArguments& e) {
  RenderDevice* d = context_.device;
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

RenderDevice::BlendedRectangle EffectPass::Rectangle(const EffectArguments& e) const {
  // The layout's corners: the first vertex is the top left, the fifth the bottom right.
  const TLVERTEX& lt = effectVertices_[0];
  const TLVERTEX& rb = effectVertices_[4];
  return {lt.x, lt.y, rb.x, rb.y, rb.tu, rb.tv, effectTexture_, lt.color, static_cast<std::uint32_t>(e.SourceBlend),
          static_cast<std::uint32_t>(e.TargetBlend)};
}

bool EffectPass::PictureArrived(std::uint64_t ticket, TextureId texture) {
  if (ticket != effectLoading_) return false;
  RenderDevice& d = *context_.device;
  effectLoading_ = 0;
  if (effectFile_ != 0) d.ReleaseTexture(effectFile_);
  effectFile_ = texture;
  effectTexture_ = texture;
  TextureDesc desc;
  if (texture != 0 && d.GetDesc(texture, desc)) {
    effectTextureWidth_ = desc.Width;
    effectTextureHeight_ = desc.Height;
  }
  return true;
}

void EffectPass::Release() {
  ResetEffectTexture();
  context_.Release(effectCapture_);
}

}  // namespace lumivane
