#pragma once

#include <vector>

#include "render/GlyphAtlas.h"

namespace lumivane {

class RenderDevice;
struct TextFrame;

// The flat text pass's drawing: a text's string, laid out in its box (pane units scaled to the
// back buffer) at its size (points at 720 lines, scaled with the back buffer), in its colour.
class TextRenderer {
 public:
  void Draw(RenderDevice& device, const TextFrame& frame, int previewWidth, int previewHeight);

 private:
  GlyphAtlas atlas_;
  std::vector<GlyphAtlas::Quad> quads_;  // reused: steady frames allocate nothing here
};

}  // namespace lumivane
