#pragma once

#include <cstdint>
#include <vector>

#include "core/BackgroundLayout.h"
#include "render/Vertex.h"

namespace lumivane {

class RandomSource;

// A slider pair with its common maximum and the switch that ties the two together.
struct PlacementBlock {
  std::int32_t X = 0, Y = 0, Maximum = 0;
  bool Uniform = false;
};

// The placement controls every rectangle layer has: random position and size, tiling and offsets.
struct LayerPlacement {
  PlacementBlock Position, Size;
  std::int32_t TileX = 1, TileY = 1;
  bool RandomizeTiling = false;
  std::int32_t OffsetX = 0, OffsetY = 0;
  bool RandomizeOffset = false;
};

// What a new layout is made from: the layer's controls and the frame's facts.
struct BackGroundMeshArguments : LayerPlacement {
  bool ComputeAspectRatio = false;
  std::int32_t Index = 0;  // the background shown, 0 for none
  bool HoldTimer = false;  // the layout stays as it is
  std::int32_t FilterColor = 0xFFFFFF;  // program order
  std::int32_t FilterRandom = 0;
  bool Hold = false;
  bool Feedback = false;
  bool FadeIn = false;        // the fades own the colour while images are loaded
  bool ImagesLoaded = false;
  std::int32_t ImageWidth = 0, ImageHeight = 0;  // the shown image's, for its aspect
  int BackBufferWidth = 0, BackBufferHeight = 0;
};

// Two random signs: x is 1 when Rnd rounded to a tenth is at most 0.5, y is 1 when a second one
// is above 0.5; -1 otherwise.
void RandomSigns(RandomSource& random, int& sx, int& sy);

// A program colour with red, green and blue each moved by up to `amount` in one random direction,
// held to 0..255.
std::int32_t ChangeColorRandom(std::int32_t color, std::int32_t amount, RandomSource& random);

// The factors that fit an image's proportions into a target's: (1, ry / rx) for a target no
// wider than high, else (rx / ry, 1), where rx and ry are width over height; 0 becomes 1.
void FitAspect(double imageWidth, double imageHeight, double targetWidth, double targetHeight, double& ax,
               double& ay);

// The next background to show after `current` (1-based) of `count`: the first one from current + 1
// on for which `visible(i)` holds, wrapping round; 0 when none is visible.
template <class Visible>
std::int32_t GetNextVisibleBackGroundIndex(std::int32_t count, std::int32_t current, Visible visible) {
  if (count <= 0) return 0;
  const std::int32_t start = current + 1 >= 1 && current + 1 <= count ? current + 1 : 1;
  for (std::int32_t i = start; i <= count; ++i)
    if (visible(i)) return i;
  for (std::int32_t i = 1; i < start; ++i)
    if (visible(i)) return i;
  return 0;
}
inline std::int32_t GetNextVisibleBackGroundIndex(const std::vector<bool>& visible, std::int32_t current) {
  return GetNextVisibleBackGroundIndex(static_cast<std::int32_t>(visible.size()), current,
                                       [&](std::int32_t i) { return visible[static_cast<std::size_t>(i - 1)]; });
}

// A new layout into `last` (unless held) drawn with `random` in a fixed order, and the twelve
// vertices of its four triangles round the centre: texture (0, 0) at the top left, (DU, DV) at
// the bottom right.
void BuildBackGroundMesh(const BackGroundMeshArguments& args, RandomSource& random, BackGroundMesh& last,
                         TLVERTEX (&vertices)[12]);

}  // namespace lumivane
