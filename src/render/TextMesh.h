#pragma once

#include <string_view>

#include "core/TextObject.h"
#include "render/MeshData.h"

namespace lumivane {

// A string as a solid: the font's outlines, flattened so no chord strays further than `deviation`
// (in em units) from the curve, filled by the GLU tessellator (holes of "O" and "8" kept), with a
// front face at z 0 facing the camera (-z), a back face at z `extrusion` and side walls whose
// normals point out of the letters (smoothed across bends under 30 degrees). One em of the font is
// one unit; y is up, the baseline at 0. An `extrusion` of 0 or less gives the front face alone.
// "\r\n" is drawn as a blank. A string the font cannot outline gives an empty mesh.
MeshData BuildTextMesh(const TextFont& font, std::string_view text, float deviation, float extrusion);

}  // namespace lumivane
