#pragma once

#include <cstdint>
#include <vector>

#include "render/RenderDevice.h"

namespace lumivane::test {

// A pixel of an RGBA frame (top row first) as 0xRRGGBB.
inline std::uint32_t Pixel(const std::vector<std::uint8_t>& rgba, int width, int x, int y) {
  const std::size_t i = (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 4;
  return (static_cast<std::uint32_t>(rgba[i]) << 16) | (static_cast<std::uint32_t>(rgba[i + 1]) << 8) | rgba[i + 2];
}

// A solid quad in back buffer pixels, wound clockwise on screen.
inline void Quad(RenderDevice& device, float x0, float y0, float x1, float y1, std::uint32_t color) {
  const TLVERTEX v[6] = {{x0, y0, 0, 1, color}, {x1, y0, 0, 1, color}, {x1, y1, 0, 1, color},
                         {x0, y0, 0, 1, color}, {x1, y1, 0, 1, color}, {x0, y1, 0, 1, color}};
  device.DrawPrimitiveUP(PrimitiveType::TriangleList, 2, v);
}

// The same with the whole texture over it.
inline void TexturedQuad(RenderDevice& device, float x0, float y0, float x1, float y1, std::uint32_t color) {
  const TLVERTEX v[4] = {{x0, y0, 0, 1, color, 0, 0, 0}, {x1, y0, 0, 1, color, 0, 1, 0},
                         {x0, y1, 0, 1, color, 0, 0, 1}, {x1, y1, 0, 1, color, 0, 1, 1}};
  device.DrawPrimitiveUP(PrimitiveType::TriangleStrip, 2, v);
}

}  // namespace lumivane::test
