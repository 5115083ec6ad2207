#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lumivane {

// A lit mesh on the CPU, as text extrusion and model import make it and the device takes it:
// triangle lists in subsets, one material each. Positions are left-handed (x right, y up, z into
// the screen); front faces wind clockwise seen from the side their normal points to.
struct MeshVertex {
  float x = 0, y = 0, z = 0;
  float nx = 0, ny = 0, nz = 0;
  float tu = 0, tv = 0;
};

// A material's colours as floats 0..1 (r, g, b, a), and the picture on it.
struct MeshMaterial {
  float Diffuse[4] = {1, 1, 1, 1};
  float Ambient[4] = {1, 1, 1, 1};
  float Specular[4] = {0, 0, 0, 1};
  float Emissive[4] = {0, 0, 0, 1};
  float Power = 0;
  std::string TextureFileName;  // as the model names it; empty for none
};

// The triangles of one material: `IndexCount` indices from `IndexStart` in the mesh's list.
struct MeshSubset {
  std::uint32_t IndexStart = 0;
  std::uint32_t IndexCount = 0;
  std::uint32_t Material = 0;
};

struct MeshData {
  std::vector<MeshVertex> Vertices;
  std::vector<std::uint32_t> Indices;  // three per triangle
  std::vector<MeshSubset> Subsets;
  std::vector<MeshMaterial> Materials;
  float Min[3] = {0, 0, 0};  // the bounding box
  float Max[3] = {0, 0, 0};

  std::size_t FaceCount() const noexcept { return Indices.size() / 3; }
  // Recomputes Min and Max from the vertices (all 0 for none).
  void ComputeBoundingBox() noexcept {
    if (Vertices.empty()) {
      Min[0] = Min[1] = Min[2] = Max[0] = Max[1] = Max[2] = 0;
      return;
    }
    const MeshVertex& f = Vertices.front();
    Min[0] = Max[0] = f.x, Min[1] = Max[1] = f.y, Min[2] = Max[2] = f.z;
    for (const MeshVertex& v : Vertices) {
      const float p[3] = {v.x, v.y, v.z};
      for (int i = 0; i < 3; ++i) {
        if (p[i] < Min[i]) Min[i] = p[i];
        if (p[i] > Max[i]) Max[i] = p[i];
      }
    }
  }
};

}  // namespace lumivane
