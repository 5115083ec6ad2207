#include "render/BackgroundPass.h"

#include <algorithm>
#include <cmath>

#include "core/Color.h"
#include "core/EngineContext.h"
#include "core/Numbers.h"
#include "core/TextEngine.h"

namespace lumivane {

namespace {

// A program colour with each channel scaled by `factor`, truncated, above 255 held at 255.
std::int32_t ScaleColor(std::int32_t color, double factor) {
  std::int32_t result = 0;
  for (int shift : {0, 8, 16}) {
    const double channel = std::trunc(((color >> shift) & 0xFF) * factor);
    result |= static_cast<std::int32_t>(std::clamp(channel, 0.0, 255.0)) << shift;
  }
  return result;
}

// A picture's side on its texture: the next power of two, or the one below for a side at most a
// tenth above it (1080 lines take 1024, not 2048: half the memory and upload, 5% softer), held to
// what a frame can show sharply.
int TextureSide(int side, int limit) {
  const int up = NextPowerOfTwo(std::clamp(side, 1, limit));
  const int down = std::max(up / 2, 2);
  return side <= down + down / 10 ? down : up;
}

}  // namespace

void BackgroundPass::InitializeBackground(const std::string& file, bool hideAll, std::int32_t width,
                                          std::int32_t height) {
  if (hideAll)
    for (BackgroundTexture& b : backgrounds_) b.Visible = false;
  if (file.empty()) return;
  std::size_t found = 0;
  while (found < backgrounds_.size() && backgrounds_[found].FileName != file) ++found;
  if (found == backgrounds_.size()) {
    BackgroundTexture record;
    record.FileName = file;
    if (RenderDevice* d = context_.device) {
      const int limit = std::max(std::min(d->Caps().MaxTextureWidth, 2048), 2);
      const int w = TextureSide(width > 0 ? width : d->BackBufferWidth(), limit);
      const int h = TextureSide(height > 0 ? height : d->BackBufferHeight(), limit);
      record.Loading = pictures_.Request(file, w, h, TextureFormat::X8R8G8B8, ImageFilter::Point, 0);
    }
    backgrounds_.push_back(std::move(record));
  }
  // One before the picture, so that the change lands on it.
  backgroundIndex_ = static_cast<std::int32_t>(found);
  BackgroundTexture& record = backgrounds_[found];
  record.Width = width;
  record.Height = height;
  record.Visible = true;
  backgroundChangeRequested_ = true;
  pictures_.CatchUp();
}

void BackgroundPass::ResetBackGrounds() {
  for (BackgroundTexture& b : backgrounds_)
    pictures_.ReleaseLater(b.Texture);
  // A feedback loop that started from one of them goes on from its own copy.
  for (const BackgroundTexture& b : backgrounds_)
    if (b.Texture != 0 && feedbackTexture_ == b.Texture) feedbackTexture_ = feedbackTarget_;
  backgrounds_.clear();
  backgroundIndex_ = 0;
  lastDrawnBackground_ = 0;
}

TextureId BackgroundPass::GetBackGroundTexture(std::int32_t index) const {
  const BackgroundTexture* b = Background(index);
  return b != nullptr ? b->Texture : 0;
}

void BackgroundPass::ComputeBackGroundFeedBackFactor(std::int32_t index) {
  // The real size is read, and yet both factors are 1 whatever it is: a texture extent of 1 spans
  // the whole picture however its texture was padded.
  if (index < 1 || index > BackgroundCount()) return;
  BackgroundTexture& b = backgrounds_[static_cast<std::size_t>(index - 1)];
  b.DUFeedBackFactor = b.DVFeedBackFactor = 1.0f;
}

BackGroundMeshArguments BackgroundPass::MeshArguments(const FrameArguments& args, bool hold, bool fadeIn) const {
  const BackgroundArguments& b = args.Background;
  BackGroundMeshArguments m;
  static_cast<LayerPlacement&>(m) = b;
  m.ComputeAspectRatio = b.ComputeAspectRatio;
  m.Index = backgroundIndex_;
  m.HoldTimer = b.HoldTimer;
  m.FilterColor = b.FilterColor;
  m.FilterRandom = b.FilterRandom;
  m.Hold = hold;
  m.Feedback = b.Feedback;
  m.FadeIn = fadeIn;
  m.ImagesLoaded = !backgrounds_.empty();
  if (const BackgroundTexture* shown = Background(backgroundIndex_)) {
    m.ImageWidth = shown->Width;
    m.ImageHeight = shown->Height;
  }
  m.BackBufferWidth = context_.Width();
  m.BackBufferHeight = context_.Height();
  return m;
}

void BackgroundPass::BuildBackGroundMesh(const FrameArguments& args, bool hold, bool fadeIn) {
  if (!hold && !args.Background.HoldTimer && backgroundIndex_ != 0) ComputeBackGroundFeedBackFactor(backgroundIndex_);
  lumivane::BuildBackGroundMesh(MeshArguments(args, hold, fadeIn), context_.text.Context().random, lastMesh_,
                                backgroundVertices_);
}

void BackgroundPass::Draw(const FrameArguments& args, Tick now) {
  if (context_.device == nullptr) return;
  Step(args, now);
  if (args.Background.Feedback) {
    RenderBackground(FeedbackTexture());
  } else if (backgroundIndex_ > 0) {
    const BackgroundTexture& b = backgrounds_[static_cast<std::size_t>(backgroundIndex_ - 1)];
    if (b.Texture != 0) lastDrawnBackground_ = b.Texture;
    // A picture still coming in: the last one stays, or the clear colour when there was none.
    if (b.Texture != 0 || b.Loading == 0) RenderBackground(b.Texture);
    else if (lastDrawnBackground_ != 0) RenderBackground(lastDrawnBackground_);
  }
}

void BackgroundPass::Step(const FrameArguments& args, Tick now) {
  const BackgroundArguments& b = args.Background;
  const double elapsed = TicksSince(now, lastBackgroundTick_);
  const double interval = static_cast<double>(context_.text.Context().TimeScale) * b.TimerInterval;
  if (interval >= elapsed && !backgroundChangeRequested_) {
    // The fades scale the tint by the time since the change and the time left; the window of the
    // fade out is a third of the interval even where the fade time is held at 3 s.
    const double fadeTime = interval < 10001 ? interval / 3.0 : 3000.0;
    if (b.FadeIn && elapsed < fadeTime)
      lastMesh_.RenderElementColor = ToDeviceColor(ScaleColor(b.FilterColor, elapsed / fadeTime));
    if (b.FadeOut && !b.HoldTimer && (interval - elapsed) < interval / 3.0)
      lastMesh_.RenderElementColor = ToDeviceColor(ScaleColor(b.FilterColor, (interval - elapsed) / fadeTime));
    BuildBackGroundMesh(args, true, b.FadeIn);
  } else {
    backgroundChangeRequested_ = false;
    backgroundIndex_ = GetNextVisibleBackGroundIndex(BackgroundCount(), backgroundIndex_, [this](std::int32_t i) {
      return backgrounds_[static_cast<std::size_t>(i - 1)].Visible;
    });
    // Changing in every frame leaves no time to fade in.
    const bool fadeIn = b.FadeIn && interval != 0;
    BuildBackGroundMesh(args, false, fadeIn);
    if (b.Feedback && backgroundIndex_ >= 1) {
      // A new picture enters the loop: drawn once, copied, and from then on fed back.
      feedbackTexture_ = GetBackGroundTexture(backgroundIndex_);
      RenderBackground(feedbackTexture_);
      BuildBackGroundMesh(args, false, fadeIn);
      RenderOutputToBackGround();
    }
    lastBackgroundTick_ = now;
  }
}

void BackgroundPass::RenderBackground(TextureId texture) {
  RenderDevice* d = context_.device;
  if (d == nullptr) return;
  d->SetTransform(TransformState::World, Matrix::Identity());
  d->SetRenderState(RenderState::CULLMODE, CullMode::None);
  d->SetVertexShader(VertexFormat::TL);
  d->SetTexture(texture);
  d->SetRenderState(RenderState::FILLMODE, FillMode::Solid);
  // Pictures are scaled to the output filtered, not point-sampled; the later passes keep theirs.
  const std::uint32_t mag = d->GetTextureStageState(TextureStageState::MAGFILTER);
  const std::uint32_t min = d->GetTextureStageState(TextureStageState::MINFILTER);
  d->SetTextureStageState(TextureStageState::MAGFILTER, TextureFilter::Anisotropic);
  d->SetTextureStageState(TextureStageState::MINFILTER, TextureFilter::Anisotropic);
  d->DrawPrimitiveUP(PrimitiveType::TriangleList, 4, backgroundVertices_, sizeof(TLVERTEX));
  d->SetTextureStageState(TextureStageState::MAGFILTER, mag);
  d->SetTextureStageState(TextureStageState::MINFILTER, min);
}

bool BackgroundPass::FeedbackCopyDue(const FrameArguments& args, Tick now) const {
  if (!args.Background.Feedback) return false;
  const std::int32_t rate = args.FeedbackRate;
  // A rate of 0 copies once, the first time, and never again.
  return rate >= 1 ? static_cast<double>(TicksSince(now, lastFeedbackTick_)) >
                         (1000.0 / rate) * static_cast<double>(context_.text.Context().TimeScale)
                   : !feedbackCopied_;
}

void BackgroundPass::FeedbackCopy(const FrameArguments& args, Tick now) {
  if (!FeedbackCopyDue(args, now)) return;
  lastFeedbackTick_ = now;
  feedbackCopied_ = true;
  RenderOutputToBackGround();
}

void BackgroundPass::RenderOutputToBackGround() {
  if (context_.device == nullptr) return;
  const TextureId target = context_.BackBufferTexture(feedbackTarget_);
  if (target == 0) return;
  feedbackTexture_ = target;
  context_.device->CopyBackBufferToTexture(target, 0, 0, context_.Width(), context_.Height(), 0, 0);
}

TextureId BackgroundPass::FeedbackTexture() {
  if (feedbackTexture_ != 0 || context_.device == nullptr) return feedbackTexture_;
  if (feedbackTarget_ == 0) {
    // The missing-image tile stretched over a back-buffer-sized target, made when first asked for
    // (a show without feedback never needs it), outside any scene. A folder without the tile
    // still plays: grey stands in.
    RenderDevice& d = *context_.device;
    if (context_.BackBufferTexture(feedbackTarget_) == 0) return 0;
    const TextureId tile = d.CreateTextureFromFileEx(context_.applicationFolder + "/NoTexture.bmp", 0, 0,
                                                     TextureFormat::X8R8G8B8, ImageFilter::Point, 0);
    if (d.BeginRenderToTexture(feedbackTarget_)) {
      d.BeginScene();
      d.Clear(0xFF404040u, true);
      if (tile != 0) {
        const float w = static_cast<float>(context_.Width()), h = static_cast<float>(context_.Height());
        const TLVERTEX quad[4] = {{0, 0, 0, 1, 0xFFFFFFFFu, 0, 0, 0}, {w, 0, 0, 1, 0xFFFFFFFFu, 0, 1, 0},
                                  {0, h, 0, 1, 0xFFFFFFFFu, 0, 0, 1}, {w, h, 0, 1, 0xFFFFFFFFu, 0, 1, 1}};
        d.SetRenderState(RenderState::ALPHABLENDENABLE, 0);
        d.SetTexture(tile);
        d.DrawPrimitiveUP(PrimitiveType::TriangleStrip, 2, quad);
        d.SetTexture(0);
      }
      d.EndScene();
      d.EndRenderToTexture();
    }
    if (tile != 0) d.ReleaseTexture(tile);
  }
  feedbackTexture_ = feedbackTarget_;
  return feedbackTexture_;
}

bool BackgroundPass::PictureArrived(std::uint64_t ticket, TextureId texture) {
  for (BackgroundTexture& b : backgrounds_) {
    if (b.Loading != ticket) continue;
    b.Loading = 0;
    b.Texture = texture;  // none for a picture that would not load: the rectangle shows the tint
    return true;
  }
  return false;
}

void BackgroundPass::Release() {
  ResetBackGrounds();
  context_.Release(feedbackTarget_);
  feedbackTexture_ = 0;
  backgroundChangeRequested_ = false;
}

}  // namespace lumivane
