#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "core/TextFrame.h"

namespace lumivane {

class TextEngine;

// What is drawn of one text or copy: the text index (one-based), the copy (0 for the text itself,
// 1.. for its further copies) and the step's result.
using TextDraw = std::function<void(std::int32_t index, std::int32_t copy, const TextFrame& frame)>;

// The texts of a frame, flat ones or 3D ones: steps every such live text and each of its copies, and
// hands what is drawn to `draw`. A text that is not enabled, or whose string is empty, draws
// nothing. Copies above the first draw the string the first one drew. Keeps its buffer between
// frames, so a steady show allocates nothing here.
class TextPass {
 public:
  enum class Kind { Flat, ThreeD };
  // With `everyCopy`, `draw` hears of every copy, also those that show nothing (whose placement
  // still runs on, as a looping rotation does).
  void Run(TextEngine& text, const TextFrameInput& input, const TextDraw& draw, Kind kind = Kind::Flat,
           bool everyCopy = false);
  // Both kinds, flat texts first: what a frame steps when nothing is drawn.
  void RunAll(TextEngine& text, const TextFrameInput& input, const TextDraw& draw) {
    Run(text, input, draw, Kind::Flat);
    Run(text, input, draw, Kind::ThreeD);
  }

 private:
  std::string first_;
};

}  // namespace lumivane
