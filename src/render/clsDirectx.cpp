#include "render/clsDirectx.h"

#include <cmath>

#include "core/Color.h"
#include "core/TextObject.h"
#include "core/clsText.h"
#include "core/frmMain.h"
#include "render/TextureImage.h"

namespace lumivane {

namespace {

std::string Number(int value) { return std::to_string(value); }

}  // namespace

FrameArguments ReadFrameArguments(const frmMain& form) {
  FrameArguments args;
  args.ClearColor = ControlModel::BackColor(form.BackgroundColor);
  args.Text = form.FrameInput();
  args.PreviewWidth = form.PreviewWidth;
  args.PreviewHeight = form.PreviewHeight;
  return args;
}

clsDirectx::clsDirectx(clsText& text)
    : text_(text), drawText_([this](std::int32_t index, std::int32_t copy, const TextFrame& frame) {
        DrawText(index, copy, frame);
      }),
      draw3D_([this](std::int32_t index, std::int32_t copy, const TextFrame& frame) {
        Render3DCopy(index, copy + 1, frame);
      }) {}

clsDirectx::~clsDirectx() { Destroy(); }

bool clsDirectx::Initialize(RenderDevice* device, const std::string& applicationFolder, std::string& error) {
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

TextureId clsDirectx::FeedbackTexture() {
  if (feedbackTexture_ != 0 || device_ == nullptr) return feedbackTexture_;
  // The missing-image tile at back buffer size, made when first asked for: it is 16 MB at 1080p,
  // and a show without feedback never needs it. A folder without the tile still plays: grey
  // stands in.
  feedbackTexture_ = device_->CreateTextureFromFileEx(applicationFolder_ + "/NoTexture.bmp", device_->BackBufferWidth(),
                                                      device_->BackBufferHeight(), TextureFormat::X8R8G8B8,
                                                      ImageFilter::Point, 0);
  if (feedbackTexture_ == 0) {
    TextureImage grey;
    grey.Width = grey.Height = 2;
    grey.Format = TextureFormat::X8R8G8B8;
    grey.Pixels.assign(4, 0xFF404040u);
    feedbackTexture_ = device_->CreateTextureFromImage(grey);
  }
  return feedbackTexture_;
}

void clsDirectx::Destroy() {
  if (device_ == nullptr) return;
  textBoxes_.clear();  // their textures and meshes go back to the device while it is still there
  models_.clear();
  textDrawer_.reset();
  if (feedbackTexture_ != 0) device_->ReleaseTexture(feedbackTexture_);
  feedbackTexture_ = 0;
  device_ = nullptr;
}

std::string clsDirectx::DevicePropertyInfo(const DeviceCaps& caps) {
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

std::string clsDirectx::GetDevicePropertyInfo() const {
  return DevicePropertyInfo(device_ != nullptr ? device_->Caps() : DeviceCaps{});
}

void clsDirectx::RenderFrame(const FrameArguments& args) {
  RenderDevice* d = device_;
  // 1. Clear, unless the last frame is kept to be painted over.
  if (d != nullptr && !args.KeepPreviousFrame) d->Clear(ToDeviceColor(args.ClearColor), true);
  // 2.
  if (d != nullptr) d->BeginScene();
  // 3. to 7. Background timing and drawing, the preset overlay, video and the first FreeFrame
  // place: not built yet.
  // 8.
  if (d != nullptr) d->SetTexture(0);
  // 9.
  DrawFlatTexts(args);
  // 10.
  if (d != nullptr) d->EndScene();
  // 11.
  Render3D(args);
  // 12. to 19. The effect layer, the feedback copy, invert, mask, the output fade, the second
  // FreeFrame place and projection mapping: not built yet.
  // 20. and 21.
  if (Present) Present();
  if (CloneRender) CloneRender();
}

void clsDirectx::DrawFlatTexts(const FrameArguments& args) {
  RenderDevice* d = device_;
  drawHeight_ = d != nullptr ? static_cast<float>(d->BackBufferHeight()) : 0.0f;
  drawScaleX_ = d != nullptr && args.PreviewWidth > 0 ? static_cast<float>(d->BackBufferWidth()) / static_cast<float>(args.PreviewWidth) : 0.0f;
  drawScaleY_ = args.PreviewHeight > 0 ? drawHeight_ / static_cast<float>(args.PreviewHeight) : 0.0f;
  textPass_.Run(text_, args.Text, drawText_, TextPass::Kind::Flat);
}

void clsDirectx::DrawText(std::int32_t index, std::int32_t copy, const TextFrame& frame) {
  if (TextDrawn) TextDrawn(index, copy, frame);
  if (textDrawer_ == nullptr || frame.Font == nullptr || drawScaleX_ <= 0.0f || drawScaleY_ <= 0.0f) return;
  const std::uint32_t format = FormatFlags(index, frame.AlignX);
  // Font sizes are points at 720 lines (96 pixels an inch), scaled with the back buffer.
  const float pixelSize = std::max(1.0f, frame.Font->Size) * (96.0f / 72.0f) * (drawHeight_ / 720.0f);
  TextRect rect{frame.Left * drawScaleX_, frame.Top * drawScaleY_, frame.Right * drawScaleX_, frame.Bottom * drawScaleY_};
  textDrawer_->DrawText(*frame.Font, pixelSize, ToDeviceColor(frame.Color), frame.Text, rect, format);
}

std::uint32_t clsDirectx::FormatFlags(std::int32_t index, std::string_view alignX) const {
  std::uint32_t format = alignX == "Centered" ? kTextCenter : alignX == "Right Justify" ? kTextRight : kTextLeft;
  if (!text_.RenderGetClip(index)) format |= kTextNoClip;
  if (text_.RenderGetVertical(index)) format |= kTextVCenter;
  return format;
}

float clsDirectx::RenderVisibleText(const TextFont& font, float pixelSize, std::uint32_t color, std::string_view text,
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
