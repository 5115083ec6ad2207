#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "render/GlyphAtlas.h"
#include "render/RenderDevice.h"
#include "render/TextLayout.h"

namespace lumivane {

struct TextFont;

// The format flags of the text drawing operation, with the meaning of the window system's text
// drawing flags of the same values.
enum TextFormatFlags : std::uint32_t {
  kTextLeft = 0,
  kTextCenter = 1,
  kTextRight = 2,
  kTextVCenter = 4,      // centres vertically, and only together with kTextSingleLine
  kTextSingleLine = 32,
  kTextNoClip = 256,
  kTextCalcRect = 1024,  // measures only
};

struct TextRect {
  float left = 0, top = 0, right = 0, bottom = 0;
};

// Draws strings into rectangles of the current target as textured quads from a glyph atlas that
// lives on the device; the atlas grows as new glyphs appear and is uploaded by the rows that
// changed. Lives as long as its device. In steady state a draw allocates nothing.
class TextDrawer {
 public:
  explicit TextDrawer(RenderDevice& device);
  ~TextDrawer();
  TextDrawer(const TextDrawer&) = delete;
  TextDrawer& operator=(const TextDrawer&) = delete;

  // Draws `text` (lines split at CR LF, each aligned by itself) in `font` at `pixelSize` inside
  // `rect` in `color` (0xAARRGGBB), clipped to `rect` unless kTextNoClip. Answers the height of the
  // text. With kTextCalcRect nothing is drawn and `rect` is set to the box the text takes.
  float DrawText(const TextFont& font, float pixelSize, std::uint32_t color, std::string_view text, TextRect& rect,
                 std::uint32_t format);

  TextLayout& Layout() { return layout_; }

 private:
  void Upload();

  RenderDevice& device_;
  GlyphAtlas atlas_;
  TextLayout layout_{atlas_};
  TextureId texture_ = 0;
  std::vector<TextLayout::Quad> quads_;
  std::vector<TextLayout::Line> lines_;
  std::vector<TLVERTEX> vertices_;
};

}  // namespace lumivane
