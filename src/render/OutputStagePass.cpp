#include "render/OutputStagePass.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/Numbers.h"
#include "render/EffectPass.h"

namespace lumivane {

namespace {

constexpr std::uint32_t kWhite = 0xFFFFFFFFu;

std::uint32_t Grey(std::int32_t level) {
  const auto g = static_cast<std::uint32_t>(std::clamp(level, 0, 255));
  return 0xFF000000u | (g << 16) | (g << 8) | g;
}

}  // namespace

void OutputStagePass::DrawOutputRectangle(std::uint32_t color, TextureId texture, std::uint32_t source,
                                          std::uint32_t destination) {
  RenderDevice* d = context_.device;
  if (d == nullptr) return;
  const int w = context_.Width(), h = context_.Height();
  if (w != outputRectangleWidth_ || h != outputRectangleHeight_) {
    // From just outside one corner to just outside the other, texture 0 to 1.
    const float l = -1, t = -1, r = static_cast<float>(w) + 1, b = static_cast<float>(h) + 1;
    const TLVERTEX lt{l, t, 0, 1, 0, 0, 0, 0}, rt{r, t, 0, 1, 0, 0, 1, 0}, rb{r, b, 0, 1, 0, 0, 1, 1},
        lb{l, b, 0, 1, 0, 0, 0, 1}, c{(l + r) / 2, (t + b) / 2, 0, 1, 0, 0, 0.5f, 0.5f};
    const TLVERTEX order[12] = {lt, rt, c, rt, rb, c, rb, lb, c, lb, lt, c};
    std::copy(std::begin(order), std::end(order), outputRectangle_);
    outputRectangleWidth_ = w;
    outputRectangleHeight_ = h;
  }
  for (TLVERTEX& v : outputRectangle_) v.color = color;
  d->SetVertexShader(VertexFormat::TL);
  d->SetTexture(texture);
  d->SetRenderState(RenderState::SRCBLEND, source);
  d->SetRenderState(RenderState::DESTBLEND, destination);
  d->SetRenderState(RenderState::ALPHABLENDENABLE, 1);
  d->SetRenderState(RenderState::FILLMODE, FillMode::Solid);
  d->DrawPrimitiveUP(PrimitiveType::TriangleList, 4, outputRectangle_, sizeof(TLVERTEX));
  d->SetRenderState(RenderState::ALPHABLENDENABLE, 0);
  d->SetTexture(0);
}

void OutputStagePass::CreateMaskTexture(const std::string& file) {
  if (context_.device == nullptr) return;
  if (file.empty()) {
    maskLoading_ = 0;
    pictures_.ReleaseLater(maskTexture_);
    maskTexture_ = 0;
    return;
  }
  maskLoading_ = pictures_.Request(file, NextPowerOfTwo(context_.Width()), NextPowerOfTwo(context_.Height()),
                                   TextureFormat::X8R8G8B8, ImageFilter::Point, 0);
  pictures_.CatchUp();
}

// The picture times the mask picture (without one, times white), and times fade / 255.
void OutputStagePass::RenderMask(std::int32_t fade) {
  if (context_.device == nullptr) return;
  context_.device->SetRenderState(RenderState::CULLMODE, CullMode::None);
  DrawOutputRectangle(Grey(fade), maskTexture_, Blend::Zero, Blend::SrcColor);
}

// The picture times fade / 255; at 255 that is the picture itself, so nothing is drawn.
void OutputStagePass::RenderOutputFade(std::int32_t fade) {
  if (fade >= 255) return;
  DrawOutputRectangle(Grey(fade), 0, Blend::Zero, Blend::SrcColor);
}

// White times (1 - d) plus d times (1 - d): black turns white, white black, and mid grey lighter
// than a plain inversion would make it.
void OutputStagePass::RenderInvert() { DrawOutputRectangle(kWhite, 0, Blend::InvDestColor, Blend::InvDestColor); }

void OutputStagePass::Finish(EffectPass* effect, const FrameArguments& args) {
  RenderDevice* d = context_.device;
  const bool invert = args.Invert, mask = args.MaskEnabled;
  const std::int32_t fade = args.Fade;
  if (d == nullptr || (effect == nullptr && !invert && !mask && fade >= 255)) return;
  if (FinishInOnePass) {
    RenderDevice::OutputFinish finish{{}, invert, mask, maskTexture_, Grey(fade) & 0xFFFFFFu};
    if (effect != nullptr) finish.Layer = effect->Rectangle(args.Effect);
    if (d->FinishOutput(finish)) return;
  }
  if (effect != nullptr) effect->Draw(args.Effect);
  if (invert) {
    d->BeginScene();
    RenderInvert();
    d->EndScene();
  }
  // Mask and fade both multiply the picture: with the mask on, one draw does both (the mask
  // picture tinted by the fade's grey), as a full-screen pass is what a frame costs most.
  if (!mask && fade >= 255) return;
  d->BeginScene();
  if (mask) RenderMask(fade);
  else RenderOutputFade(fade);
  d->EndScene();
}

void OutputStagePass::RenderGrayScale() {
  RenderDevice* d = context_.device;
  if (d == nullptr) return;
  float rx = 1, ry = 1;
  const TextureId picture = GetCurrentOutputTexture(rx, ry);
  if (picture == 0) return;
  // Each pixel's luminance: the dot product with the weights 54, 182 and 18 of 255.
  d->SetTextureStageState(TextureStageState::COLOROP, TextureOp::DotProduct3);
  d->SetTextureStageState(TextureStageState::COLORARG1, TextureArg::Texture);
  d->SetTextureStageState(TextureStageState::COLORARG2, TextureArg::TextureFactor);
  d->SetRenderState(RenderState::TEXTUREFACTOR, 0x36B612);
  DrawOutputRectangle(kWhite, picture, Blend::One, Blend::Zero);
  d->SetRenderState(RenderState::TEXTUREFACTOR, 0xFFFFFFFFu);
  d->SetTextureStageState(TextureStageState::COLOROP, TextureOp::Modulate);
  d->SetTextureStageState(TextureStageState::COLORARG1, TextureArg::Current);
  d->SetTextureStageState(TextureStageState::COLORARG2, TextureArg::Current);
}

void OutputStagePass::InitializeMachineStateOverlay(std::int32_t frames) {
  if (context_.device == nullptr) return;
  const TextureId overlay = context_.BackBufferTexture(overlayTexture_);
  if (overlay == 0) return;
  context_.device->CopyBackBufferToTexture(overlay, 0, 0, context_.Width(), context_.Height(), 0, 0);
  OverlayFrameCount = frames;
  overlayLeft_ = std::max(frames, 0);
}

void OutputStagePass::RenderMachineStateOverlay() {
  if (overlayLeft_ <= 0 || OverlayFrameCount <= 0) return;
  const double share = static_cast<double>(overlayLeft_) / OverlayFrameCount;
  DrawOutputRectangle(Grey(static_cast<std::int32_t>(std::trunc(share * 255.0))), overlayTexture_, Blend::SrcColor, Blend::DestColor);
  --overlayLeft_;
}

TextureId OutputStagePass::GetCurrentOutputTexture(float& ratioX, float& ratioY) {
  ratioX = ratioY = 1;
  // One texture refilled at each call rather than a new one a frame.
  const TextureId texture = context_.BackBufferTexture(outputTexture_);
  TextureDesc desc;
  if (texture == 0 || !context_.device->GetDesc(texture, desc)) return 0;
  const int w = context_.Width(), h = context_.Height();
  context_.device->CopyBackBufferToTexture(texture, 0, 0, w, h, 0, 0);
  ratioX = static_cast<float>(w) / static_cast<float>(desc.Width);
  ratioY = static_cast<float>(h) / static_cast<float>(desc.Height);
  return texture;
}

bool OutputStagePass::RenderToFile(const std::string& path, std::string& error) {
  if (context_.device == nullptr) {
    error = "No output is running.";
    return false;
  }
  const int w = context_.Width(), h = context_.Height();
  // Rows of 24 bits a pixel padded to whole 32-bit words, bottom row first.
  const auto rowSize = static_cast<std::uint32_t>(std::trunc((w * 24.0 + 31.0) / 32.0) * 4);
  const std::uint32_t imageSize = rowSize * static_cast<std::uint32_t>(h);
  std::vector<std::uint8_t> file(54 + static_cast<std::size_t>(imageSize), 0);
  auto put16 = [&](std::size_t at, std::uint16_t v) { std::memcpy(&file[at], &v, 2); };
  auto put32 = [&](std::size_t at, std::uint32_t v) { std::memcpy(&file[at], &v, 4); };
  file[0] = 'B';
  file[1] = 'M';
  put32(2, static_cast<std::uint32_t>(file.size()));
  put32(10, 54);
  put32(14, 40);
  put32(18, static_cast<std::uint32_t>(w));
  put32(22, static_cast<std::uint32_t>(h));
  put16(26, 1);
  put16(28, 24);
  put32(34, imageSize);
  const bool read = context_.device->ReadBackNow([&](const std::uint8_t* top, std::ptrdiff_t stride) {
    for (int y = 0; y < h; ++y) {
      const std::uint8_t* src = top + stride * y;
      std::uint8_t* dst = &file[54 + static_cast<std::size_t>(rowSize) * static_cast<std::size_t>(h - 1 - y)];
      for (int x = 0; x < w; ++x, src += 4, dst += 3) {
        dst[0] = src[2];
        dst[1] = src[1];
        dst[2] = src[0];
      }
    }
  });
  if (!read) {
    error = "The frame could not be read back.";
    return false;
  }
  QSaveFile out(QString::fromStdString(path));
  if (!out.open(QIODevice::WriteOnly) ||
      out.write(reinterpret_cast<const char*>(file.data()), static_cast<qint64>(file.size())) !=
          static_cast<qint64>(file.size()) ||
      !out.commit()) {
    error = "The file \"" + path + "\" could not be written: " + out.errorString().toStdString();
    return false;
  }
  return true;
}

bool OutputStagePass::PictureArrived(std::uint64_t ticket, TextureId texture) {
  if (ticket != maskLoading_) return false;
  maskLoading_ = 0;
  if (maskTexture_ != 0) context_.device->ReleaseTexture(maskTexture_);
  maskTexture_ = texture;
  return true;
}

void OutputStagePass::Release() {
  CreateMaskTexture({});
  context_.Release(overlayTexture_);
  context_.Release(outputTexture_);
  overlayLeft_ = 0;
}

}  // namespace lumivane
