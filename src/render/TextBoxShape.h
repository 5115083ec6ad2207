#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "core/TextObject.h"
#include "render/Vertex.h"

namespace lumivane {

// The flat shapes a 3D text's texture is drawn on, in world units around the text's centre: the
// plain quad, a ring ("Circle"), a band along a sine ("Wave") and a band winding inwards
// ("Spiral"). Each is a triangle strip of vertex pairs; vertices are numbered n from 0 and the
// texture runs along the strip by n (not by angle), one repeat every `Tile` vertices.
struct TextBoxShape {
  // Half the box's size in world units (the texture's size over the back buffer's, times 10).
  float HalfWidth = 0;
  float HalfHeight = 0;
  // The texture's vertical direction at the far edge: 1, or -1 for pictures that stand on their head.
  float V = 1.0f;
  std::uint32_t Color = 0xFFFFFFFF;
};

// Builds the strip of `type` ("Circle", "Wave", "Spiral"; anything else is the quad) into `strip`,
// replacing what it held. The wave's running phase moves on by its step when `firstCopy` (copies
// of a text share one phase). A shape whose step or size cannot make a strip (a smoothness or
// size of 0 or less) gives no vertices.
void BuildTextBoxShape(std::string_view type, const Circle3D& circle, Wave3D& wave, const Spiral3D& spiral,
                       const TextBoxShape& box, bool firstCopy, std::vector<LVERTEX>& strip);

// The outline of a strip built above, in `color`: along the first vertex of each pair, or for the
// quad five points: first, second, fourth, third, first.
void BuildTextBoxOutline(std::string_view type, const std::vector<LVERTEX>& strip, std::uint32_t color,
                         std::vector<LINEVERTEX>& outline);

}  // namespace lumivane
