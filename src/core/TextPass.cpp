#include "core/TextPass.h"

#include "core/TextEngine.h"

namespace lumivane {

void TextPass::Run(TextEngine& text, const TextFrameInput& input, const TextDraw& draw, Kind kind, bool everyCopy) {
  const std::int32_t count = text.RenderGetTextCount();
  for (std::int32_t i = 1; i <= count; ++i) {
    if (text.PreviewText3D(i) != (kind == Kind::ThreeD)) continue;
    const std::int32_t copies = text.RenderGetOutputMultiplier(i);
    for (std::int32_t j = 1; j <= copies; ++j) {
      TextFrame frame = text.TextFrameStep(i, j, input);
      if (j == 1)
        first_.assign(frame.Text);  // the step's own buffer is reused by the next step
      else
        frame.Text = first_;
      if ((everyCopy || (frame.Enabled && !frame.Text.empty())) && draw) draw(i, j - 1, frame);
    }
  }
}

}  // namespace lumivane
