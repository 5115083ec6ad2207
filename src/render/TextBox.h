#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <string_view>
#include <vector>

#include "core/TextObject.h"
#include "render/SceneNode.h"
#include "render/RenderDevice.h"
#include "render/TextBoxShape.h"

namespace lumivane {

class Mesh3D;

// What the device holds for one 3D text: the frames it is placed with, the texture its string is
// drawn into (or a picture file's), and where and how it stands. One record per text, in the
// engine's order.
struct TextBox {
  std::unique_ptr<SceneNode> RootFrame = std::make_unique<SceneNode>();
  SceneNode* TextFrame = RootFrame->AddChild();
  std::string TextBoxTextureFileName;  // empty: the texture shows the text's string
  TextureId Texture = 0;
  // Keeps Texture alive and releases it with the last record that shows it: a picture loaded
  // for all texts is one texture shared by every record.
  std::shared_ptr<const TextureId> TextureHold;
  std::int32_t VideoLockToTextBox = 0;  // 1: the shape shows the video instead
  std::int32_t Width = 0;               // the texture's size, powers of two
  std::int32_t Height = 0;
  float ScaleX = 1, ScaleY = 1, ScaleZ = 1;
  float RotationX = 0, RotationY = 0, RotationZ = 0;  // degrees
  bool World = false;                                  // turn about the world's centre, not the text's
  float TranslationX = 0, TranslationY = 0, TranslationZ = 0;

  // The extruded string's mesh and what it was built from: it is built again only when one of
  // these changes.
  std::shared_ptr<const MeshId> TextMesh;
  TextFont MeshFont;
  float MeshExtrusion = 0;
  std::string MeshString;
  float MeshCentre[3] = {0, 0, 0};  // the middle of its bounding box, in em
  // A "Custom" text's model, shared by every record that names the same file.
  std::shared_ptr<Mesh3D> Model;
};

// The camera of the 3D pass: a perspective of a quarter turn (as 3.1415 / 4) over the output's
// aspect, near 1 and far 3000, looking from (0, 0, z) at the centre; the world matrix back to the
// identity.
void SceneSetup(RenderDevice& device, int width, int height, float z);

// Places a text for this frame: the camera, then the text frame's matrix from the record's
// rotation, translation and scale. A text in world mode turns about the world's centre (rotation,
// then translation, then scale merged in front), otherwise about its own (translation, rotation,
// scale).
void UpdateTextBoxFrame(TextBox& box, RenderDevice& device, int width, int height, float z);

class TextDrawer;

// Draws a text's string into its record's texture: the texture cleared to the background colour
// (program order, opaque), the string in `color` (0xAARRGGBB) inside the whole texture with the
// format flags of the flat pass. A record without a texture draws nothing.
void RenderTextToSurface(RenderDevice& device, TextDrawer& drawer, const TextBox& box, const TextFont& font,
                         float pixelSize, std::uint32_t color, std::int32_t backgroundColor, std::uint32_t format,
                         std::string_view text);

// The scratch lists a shape is built into, kept by the pass so frames allocate nothing.
struct TextBoxScratch {
  std::vector<LVERTEX> strip;
  std::vector<LINEVERTEX> outline;
};

// Draws a text's shape in world space with its texture, under the text frame's matrix: white where
// the texture carries the colour (no blending, no picture file, no video), else in the copy's
// colour; with `outline`, its edge in `outlineColor` too. The box's half size in world units is its
// texture's size over the back buffer's, times 10.
void RenderTextBox(RenderDevice& device, const TextBox& box, const TextObject& text, Wave3D& wave, bool firstCopy,
                   bool alphaBlend, std::uint32_t color, bool outline, std::uint32_t outlineColor,
                   TextBoxScratch& scratch);

}  // namespace lumivane
