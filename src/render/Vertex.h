#pragma once

#include <cstdint>

namespace lumivane {

// The three vertex layouts of the whole pipeline. Colours are device words 0xAARRGGBB.

// Pre-transformed: x and y in pixels of the render target (top left origin). Every one the program
// builds has z 0, rhw 1 and specular 0.
struct TLVERTEX {
  float x = 0, y = 0, z = 0, rhw = 1.0f;
  std::uint32_t color = 0xFFFFFFFF;
  std::uint32_t specular = 0;
  float tu = 0, tv = 0;
};
static_assert(sizeof(TLVERTEX) == 32);

// World units, through the world, view and projection matrices.
struct LVERTEX {
  float x = 0, y = 0, z = 0;
  std::uint32_t color = 0xFFFFFFFF;
  std::uint32_t specular = 0;
  float tu = 0, tv = 0;
};
static_assert(sizeof(LVERTEX) == 28);

struct LINEVERTEX {
  float x = 0, y = 0, z = 0;
  std::uint32_t color = 0xFFFFFFFF;
};
static_assert(sizeof(LINEVERTEX) == 16);

// The flexible vertex format codes that select a layout. Mesh (position, normal, one texture
// coordinate pair) is MeshVertex, drawn only from meshes the device holds.
enum class VertexFormat : std::uint32_t { TL = 452, L = 450, Line = 66, Mesh = 274 };

enum class PrimitiveType : std::uint32_t { LineStrip = 3, TriangleList = 4, TriangleStrip = 5 };

// Vertices a primitive count of `type` takes.
constexpr std::uint32_t VertexCount(PrimitiveType type, std::uint32_t primitives) noexcept {
  switch (type) {
    case PrimitiveType::TriangleList: return primitives * 3;
    case PrimitiveType::TriangleStrip: return primitives == 0 ? 0 : primitives + 2;
    case PrimitiveType::LineStrip: return primitives == 0 ? 0 : primitives + 1;
  }
  return 0;
}

}  // namespace lumivane
