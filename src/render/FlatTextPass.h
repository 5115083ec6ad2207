#pragma once

#include <cstdint>
#include <string_view>

#include "core/TextPass.h"
#include "render/FrameArguments.h"
#include "render/PassContext.h"
#include "render/TextDrawer.h"

namespace lumivane {

// The flat texts: each text that is not 3D, and each of its copies, drawn straight into the back
// buffer where the text engine's step places it, scaled from the preview pane to the output.
class FlatTextPass {
 public:
  explicit FlatTextPass(const PassContext& context);

  // Steps every flat text and draws what shows; without a device it only steps (the text log
  // still hears of each).
  void Draw(const FrameArguments& args);
  // Draws a multi-line text character by character, only the characters that lie on the back
  // buffer. Answers the height of the last line.
  float RenderVisibleText(const TextFont& font, float pixelSize, std::uint32_t color, std::string_view text,
                          TextRect rect, std::uint32_t format);
  // The text drawer's format flags for text `index` with its alignment: the 3D texts draw their
  // strings with the same.
  static std::uint32_t FormatFlags(const TextEngine& text, std::int32_t index, std::string_view alignX);

 private:
  void DrawText(std::int32_t index, std::int32_t copy, const TextFrame& frame);

  const PassContext& context_;
  TextPass walker_;
  // Made once: a callback made per frame would allocate. The scale is the frame's.
  TextDraw drawText_;
  float scaleX_ = 0, scaleY_ = 0, height_ = 0;
};

}  // namespace lumivane
