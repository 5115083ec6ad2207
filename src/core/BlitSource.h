#pragma once

#include <string_view>

namespace lumivane {

// A rectangle of the back buffer to copy from, in pixels with row 0 at the top. A negative extent
// reads backwards from its start pixel, as a stretch copy does: {width - 1, 0, -width, height}
// is the whole frame mirrored left to right. The start pixel is read, so in pixel-edge terms
// (glBlitFramebuffer's) a backward run spans from x + 1 down to x + 1 + width.
struct BlitSource {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  friend bool operator==(const BlitSource&, const BlitSource&) = default;
};

// The part of a `width` x `height` frame a clone shows: the whole frame, read backwards along an
// axis whose mirror string is that axis' letter ("X" or "Y"); any other string leaves it as is.
constexpr BlitSource CloneSourceRect(int width, int height, std::string_view mirrorX,
                                     std::string_view mirrorY) noexcept {
  BlitSource s{0, 0, width, height};
  if (mirrorX == "X") {
    s.x = width - 1;
    s.width = -width;
  }
  if (mirrorY == "Y") {
    s.y = height - 1;
    s.height = -height;
  }
  return s;
}

}  // namespace lumivane
