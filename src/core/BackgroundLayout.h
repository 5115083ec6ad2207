#pragma once

#include <cstdint>

namespace lumivane {

// The rectangle the background is drawn on, as the last layout left it (kept in show files under
// LastBackGroundMesh): its offset from the screen's centre in pixels, its size, the texture's
// extent over it (above 1 it repeats), and its colour (0xAARRGGBB).
struct BackGroundMesh {
  double X0 = 0, Y0 = 0;
  double DU = 1, DV = 1;
  std::int32_t MeshHeight = 0, MeshWidth = 0;
  std::uint32_t RenderElementColor = 0xFFFFFFFFu;
  float DUFeedBackFactor = 1, DVFeedBackFactor = 1;
};

}  // namespace lumivane
