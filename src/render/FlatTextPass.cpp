#include "render/FlatTextPass.h"

#include <algorithm>

#include "core/Color.h"
#include "core/TextEngine.h"

namespace lumivane {

FlatTextPass::FlatTextPass(const PassContext& context)
    : context_(context), drawText_([this](std::int32_t index, std::int32_t copy, const TextFrame& frame) {
        DrawText(index, copy, frame);
      }) {}

void FlatTextPass::Draw(const FrameArguments& args) {
  RenderDevice* d = context_.device;
  height_ = d != nullptr ? static_cast<float>(d->BackBufferHeight()) : 0.0f;
  scaleX_ = d != nullptr && args.PreviewWidth > 0 ? static_cast<float>(d->BackBufferWidth()) / static_cast<float>(args.PreviewWidth) : 0.0f;
  scaleY_ = args.PreviewHeight > 0 ? height_ / static_cast<float>(args.PreviewHeight) : 0.0f;
  walker_.Run(context_.text, args.Text, drawText_, TextPass::Kind::Flat);
}

void FlatTextPass::DrawText(std::int32_t index, std::int32_t copy, const TextFrame& frame) {
  if (context_.textDrawn) context_.textDrawn(index, copy, frame);
  TextDrawer* drawer = context_.textDrawer;
  if (drawer == nullptr || frame.Font == nullptr || scaleX_ <= 0.0f || scaleY_ <= 0.0f) return;
  const std::uint32_t format = FormatFlags(context_.text, index, frame.AlignX);
  // Font sizes are points at 720 lines (96 pixels an inch), scaled with the back buffer.
  const float pixelSize = std::max(1.0f, frame.Font->Size) * (96.0f / 72.0f) * (height_ / 720.0f);
  TextRect rect{frame.Left * scaleX_, frame.Top * scaleY_, frame.Right * scaleX_, frame.Bottom * scaleY_};
  drawer->DrawText(*frame.Font, pixelSize, ToDeviceColor(frame.Color), frame.Text, rect, format);
}

std::uint32_t FlatTextPass::FormatFlags(const TextEngine& text, std::int32_t index, std::string_view alignX) {
  std::uint32_t format = alignX == "Centered" ? kTextCenter : alignX == "Right Justify" ? kTextRight : kTextLeft;
  if (!text.RenderGetClip(index)) format |= kTextNoClip;
  if (text.RenderGetVertical(index)) format |= kTextVCenter;
  return format;
}

float FlatTextPass::RenderVisibleText(const TextFont& font, float pixelSize, std::uint32_t color, std::string_view text,
                                      TextRect rect, std::uint32_t format) {
  TextDrawer* drawer = context_.textDrawer;
  if (drawer == nullptr) return 0;
  const float width = static_cast<float>(context_.Width()), height = static_cast<float>(context_.Height());
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
      drawer->DrawText(font, pixelSize, color, character, measured, kTextCalcRect);
      const float w = measured.right - measured.left, h = measured.bottom - measured.top;
      if (!(x > width || x + w < 0 || y + h < 0 || y > height)) {
        TextRect box{x, y, x + w, y + h};
        drawer->DrawText(font, pixelSize, color, character, box, format);
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
