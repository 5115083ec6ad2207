#include "render/FrameRenderer.h"

#include <cmath>

#include "core/Color.h"
#include "core/EngineContext.h"
#include "core/TextObject.h"
#include "core/TextEngine.h"
#include "render/TextureImage.h"

namespace lumivane {

namespace {

std::string Number(int value) { return std::to_string(value); }

}  // namespace

FrameRenderer::FrameRenderer(TextEngine& text)
    : text_(text), drawText_([this](std::int32_t index, std::int32_t copy, const TextFrame& frame) {
        DrawText(index, copy, frame);
      }),
      draw3D_([this](std::int32_t index, std::int32_t copy, const TextFrame& frame) {
        Render3DCopy(index, copy + 1, frame);
      }) {}

FrameRenderer::~FrameRenderer() { Destroy(); }

bool FrameRenderer::Initialize(RenderDevice* device, const std::string& applicationFolder, std::string& error) {
  Destroy();
  if (device == nullptr) return true;
  device_ = device;
  device_->SetRenderState(RenderState::LIGHTING, 0);
  textDrawer_ = std::make_unique<TextDrawer>(*device_);
  applicationFolder_ = applicationFolder;
  // A device that cannot hold a texture cannot draw a frame.
  const TextureId probe = device_->CreateTexture(2, 2, TextureFormat::X8R8G8B8);
  if (probe == 0) {
    error = "The device cannot make textures.";
    Destroy();
    return false;
  }
  device_->ReleaseTexture(probe);
  return true;
}

void FrameRenderer::Destroy() {
  if (device_ == nullptr) return;
  if (Ending) Ending();
  textBoxes_.clear();  // their textures and meshes go back to the device while it is still there
  models_.clear();
  textDrawer_.reset();
  ReleaseOutputTextures();
  device_ = nullptr;
}

void FrameRenderer::ReleaseOutputTextures() {
  ResetBackGrounds();
  ResetEffectTexture();
  CreateMaskTexture({});
  for (TextureId* t : {&feedbackTarget_, &effectCapture_, &overlayTexture_, &outputTexture_}) {
    if (*t != 0) device_->ReleaseTexture(*t);
    *t = 0;
  }
  for (Upload& u : uploads_)
    if (u.texture != 0) device_->ReleaseTexture(u.texture);
  uploads_.clear();
  images_.reset();  // decodes under way run out unheard
  ReleasePending();
  feedbackTexture_ = 0;
  overlayLeft_ = 0;
  backgroundChangeRequested_ = false;
}

void FrameRenderer::ReleaseLater(TextureId texture) {
  if (texture != 0 && device_ != nullptr) released_.push_back(texture);
}

void FrameRenderer::ReleasePending() {
  for (TextureId t : released_) device_->ReleaseTexture(t);
  released_.clear();
}

void FrameRenderer::FinishImages() {
  if (!images_) return;
  images_->WaitAll();
  PollImages(static_cast<std::size_t>(-1));
}

void FrameRenderer::PollImages(std::size_t budget) {
  RenderDevice* d = device_;
  if (d == nullptr || !images_) return;
  ImageLoader::Result result;
  while (images_->Take(result)) {
    Upload upload;
    upload.result = std::move(result);
    if (upload.result.Ok) {
      const TextureImage& image = upload.result.Image;
      upload.texture = d->CreateTexture(image.Width, image.Height, image.Format);
    }
    uploads_.push_back(std::move(upload));
  }
  // A slice of the oldest picture a frame; each is handed over once it is whole.
  while (!uploads_.empty()) {
    Upload& u = uploads_.front();
    const TextureImage& image = u.result.Image;
    if (u.texture != 0 && u.rowsDone < image.Height) {
      const std::size_t width = static_cast<std::size_t>(std::max(image.Width, 1));
      const int rows = static_cast<int>(std::clamp<std::size_t>(budget / width, 1, static_cast<std::size_t>(image.Height - u.rowsDone)));
      d->UpdateTexture(u.texture, 0, u.rowsDone, image.Width, rows,
                       image.Pixels.data() + static_cast<std::size_t>(u.rowsDone) * width,
                       static_cast<std::ptrdiff_t>(width) * 4);
      u.rowsDone += rows;
      budget -= std::min(budget, static_cast<std::size_t>(rows) * width);
      if (u.rowsDone < image.Height) return;
    }
    Upload done = std::move(uploads_.front());
    uploads_.erase(uploads_.begin());
    ImageArrived(done.result, done.texture);
    if (budget == 0) return;
  }
}

void FrameRenderer::ImageArrived(ImageLoader::Result& result, TextureId texture) {
  RenderDevice& d = *device_;
  const std::uint64_t ticket = result.Ticket;
  for (BackgroundTexture& b : backgrounds_) {
    if (b.Loading != ticket) continue;
    b.Loading = 0;
    b.Texture = texture;  // none for a picture that would not load: the rectangle shows the tint
    return;
  }
  if (ticket == effectLoading_) {
    effectLoading_ = 0;
    if (effectFile_ != 0) d.ReleaseTexture(effectFile_);
    effectFile_ = texture;
    effectTexture_ = texture;
    TextureDesc desc;
    if (texture != 0 && d.GetDesc(texture, desc)) {
      effectTextureWidth_ = desc.Width;
      effectTextureHeight_ = desc.Height;
    }
    return;
  }
  if (ticket == maskLoading_) {
    maskLoading_ = 0;
    if (maskTexture_ != 0) d.ReleaseTexture(maskTexture_);
    maskTexture_ = texture;
    return;
  }
  // Nobody waits for it any more.
  if (texture != 0) d.ReleaseTexture(texture);
}

std::string FrameRenderer::DevicePropertyInfo(const DeviceCaps& caps) {
  std::string info = "Display Adapater Capabilities                                               ";
  info += "\r\nMax Texture Height: " + Number(caps.MaxTextureHeight);
  info += "\r\nMax Texture Width: " + Number(caps.MaxTextureWidth);
  info += "\r\nMax Simultaneous TextureCount: " + Number(caps.MaxSimultaneousTextures);
  info += "\r\nMax VertexCount: " + Number(caps.MaxVertexCount);
  if (caps.SquareTexturesOnly)
    info += "\r\nSquare Textures Only\r\nProjection Mapping is possible only at square Resolutions";
  else
    info += "\r\nNon-Square Textures\r\nProjection Mapping is possible at all Resolutions";
  return info;
}

std::string FrameRenderer::GetDevicePropertyInfo() const {
  return DevicePropertyInfo(device_ != nullptr ? device_->Caps() : DeviceCaps{});
}

void FrameRenderer::RenderFrame(const FrameArguments& args) {
  RenderDevice* d = device_;
  const Tick now = text_.Context().clock.Now();
  if (d != nullptr) {
    ReleasePending();
    if (WaitForImages) FinishImages();
    else PollImages(UploadPixelsPerFrame);
    // The feedback source is made outside any scene, the first time it is wanted.
    if (args.Background.Feedback) FeedbackTexture();
  }
  // 1. Clear, unless the last frame is kept to be painted over.
  if (d != nullptr && !args.KeepPreviousFrame) d->Clear(ToDeviceColor(args.ClearColor), true);
  // 2.
  if (d != nullptr) d->BeginScene();
  if (d != nullptr) {
    // 3. and 4. The background's timer, then its draw: the feedback copy, or the picture shown
    // (the last one while the next is still coming in).
    bool changed = false;
    BackgroundStep(args, now, changed);
    if (args.Background.Feedback) {
      RenderBackground(FeedbackTexture());
    } else if (backgroundIndex_ > 0) {
      const BackgroundTexture& b = backgrounds_[static_cast<std::size_t>(backgroundIndex_ - 1)];
      if (b.Texture != 0) lastDrawnBackground_ = b.Texture;
      // A picture still coming in: the last one stays, or the clear colour when there was none.
      if (b.Texture != 0 || b.Loading == 0) RenderBackground(b.Texture);
      else if (lastDrawnBackground_ != 0) RenderBackground(lastDrawnBackground_);
    }
    // 5.
    RenderMachineStateOverlay();
    // 6. and 7. Video and the first FreeFrame place: not built yet.
    // 8.
    d->SetTexture(0);
  }
  // 9.
  DrawFlatTexts(args);
  // 10.
  if (d != nullptr) d->EndScene();
  // 11.
  Render3D(args);
  if (d != nullptr) {
    const float timeScale = text_.Context().TimeScale;
    // 12. and 13. The effect, its capture on its own timer. Its rectangle joins the output
    // stage's passes below, unless the feedback copy between them is due.
    bool effect = false;
    if (args.Effect.Enabled) {
      if (args.Effect.Capture && static_cast<double>(timeScale) * args.Effect.Timer < TicksSince(now, lastEffectCaptureTick_)) {
        SetEffectTexture({});
        lastEffectCaptureTick_ = now;
      }
      effect = LayOutEffect(args.Effect, now);
      if (effect && FeedbackDue(args, now)) {
        DrawEffect(args.Effect);
        effect = false;
      }
    }
    // 14. The finished layers so far feed the next frames, at their rate.
    FeedbackCopy(args, now);
    // 15. to 17. Invert, mask and the fade, which runs in every frame.
    FinishOutput(effect ? &args.Effect : nullptr, args.Invert, args.MaskEnabled, args.Fade);
    // 18. and 19. The second FreeFrame place and projection mapping: not built yet.
  }
  // 20. and 21.
  if (Present) Present();
  if (CloneRender) CloneRender();
}

bool FrameRenderer::FeedbackDue(const FrameArguments& args, Tick now) const {
  if (!args.Background.Feedback) return false;
  const std::int32_t rate = args.FeedbackRate;
  // A rate of 0 copies once, the first time, and never again.
  return rate >= 1 ? static_cast<double>(TicksSince(now, lastFeedbackTick_)) >
                         (1000.0 / rate) * static_cast<double>(text_.Context().TimeScale)
                   : !feedbackCopied_;
}

void FrameRenderer::FeedbackCopy(const FrameArguments& args, Tick now) {
  if (!FeedbackDue(args, now)) return;
  lastFeedbackTick_ = now;
  feedbackCopied_ = true;
  RenderOutputToBackGround();
}

void FrameRenderer::DrawFlatTexts(const FrameArguments& args) {
  RenderDevice* d = device_;
  drawHeight_ = d != nullptr ? static_cast<float>(d->BackBufferHeight()) : 0.0f;
  drawScaleX_ = d != nullptr && args.PreviewWidth > 0 ? static_cast<float>(d->BackBufferWidth()) / static_cast<float>(args.PreviewWidth) : 0.0f;
  drawScaleY_ = args.PreviewHeight > 0 ? drawHeight_ / static_cast<float>(args.PreviewHeight) : 0.0f;
  textPass_.Run(text_, args.Text, drawText_, TextPass::Kind::Flat);
}

void FrameRenderer::DrawText(std::int32_t index, std::int32_t copy, const TextFrame& frame) {
  if (TextDrawn) TextDrawn(index, copy, frame);
  if (textDrawer_ == nullptr || frame.Font == nullptr || drawScaleX_ <= 0.0f || drawScaleY_ <= 0.0f) return;
  const std::uint32_t format = FormatFlags(index, frame.AlignX);
  // Font sizes are points at 720 lines (96 pixels an inch), scaled with the back buffer.
  const float pixelSize = std::max(1.0f, frame.Font->Size) * (96.0f / 72.0f) * (drawHeight_ / 720.0f);
  TextRect rect{frame.Left * drawScaleX_, frame.Top * drawScaleY_, frame.Right * drawScaleX_, frame.Bottom * drawScaleY_};
  textDrawer_->DrawText(*frame.Font, pixelSize, ToDeviceColor(frame.Color), frame.Text, rect, format);
}

std::uint32_t FrameRenderer::FormatFlags(std::int32_t index, std::string_view alignX) const {
  std::uint32_t format = alignX == "Centered" ? kTextCenter : alignX == "Right Justify" ? kTextRight : kTextLeft;
  if (!text_.RenderGetClip(index)) format |= kTextNoClip;
  if (text_.RenderGetVertical(index)) format |= kTextVCenter;
  return format;
}

float FrameRenderer::RenderVisibleText(const TextFont& font, float pixelSize, std::uint32_t color, std::string_view text,
                                    TextRect rect, std::uint32_t format) {
  if (textDrawer_ == nullptr) return 0;
  const float width = static_cast<float>(BackBufferWidth()), height = static_cast<float>(BackBufferHeight());
  const float left = rect.left;
  float x = left, y = rect.top, lineHeight = 0;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = text.find("\r\n", start);
    const std::string_view line = text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
    for (std::size_t i = 0; i < line.size();) {
      // One character: a UTF-8 sequence.
      std::size_t n = 1;
      while (i + n < line.size() && (static_cast<unsigned char>(line[i + n]) & 0xC0) == 0x80) ++n;
      const std::string_view character = line.substr(i, n);
      TextRect measured{x, y, x, y};
      textDrawer_->DrawText(font, pixelSize, color, character, measured, kTextCalcRect);
      const float w = measured.right - measured.left, h = measured.bottom - measured.top;
      if (!(x > width || x + w < 0 || y + h < 0 || y > height)) {
        TextRect box{x, y, x + w, y + h};
        textDrawer_->DrawText(font, pixelSize, color, character, box, format);
      }
      x += w;
      lineHeight = h;
      i += n;
    }
    if (end == std::string_view::npos) break;
    x = left;
    y += lineHeight;
    start = end + 2;
  }
  return lineHeight;
}

}  // namespace lumivane
