#pragma once

#include <QFont>
#include <QRawFont>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "render/GlyphAtlas.h"

namespace lumivane {

struct TextFont;

// Strings laid out with Qt (HarfBuzz shaping, fallback fonts, any script) into glyphs of a glyph
// atlas, at whole pixel positions.
//
// Counters change every frame, so strings made only of digits, blanks and the signs numbers use
// take a fast path that allocates nothing: each face is checked once against the full shaper, and
// where every pair of those characters shapes to the sum of its advances (no kerning, no
// ligatures), they are placed from a table. Everything else goes through the full shaper.
class TextLayout {
 public:
  // One glyph on screen: its rectangle in pixels and its place in the atlas.
  struct Quad {
    float x0, y0, x1, y1;
    float u0, v0, u1, v1;
  };
  // One line as laid out: its glyphs are quads [first, first + count) of the output.
  struct Line {
    std::size_t first = 0, count = 0;
    float width = 0;   // the advance of the whole line
    float height = 0;  // the line's height
  };

  explicit TextLayout(GlyphAtlas& atlas) : atlas_(atlas) {}
  ~TextLayout();

  // Lays `text` out (lines split at CR LF) in `font` at `pixelSize` from the pen position (0, 0),
  // each line below the one before. Appends to `quads` and `lines`.
  void Layout(std::string_view text, const TextFont& font, float pixelSize, std::vector<Quad>& quads,
              std::vector<Line>& lines);
  // The same through the full shaper only: the reference the fast path must agree with.
  void LayoutShaped(std::string_view text, const TextFont& font, float pixelSize, std::vector<Quad>& quads,
                    std::vector<Line>& lines);
  // Whether the fast path serves `text` in this face (for tests and figures).
  bool FastPathServes(std::string_view text, const TextFont& font, float pixelSize);

 private:
  static constexpr std::string_view kFastCharacters = "0123456789 .,:;-+/%()$#*=";
  struct Face {
    std::string name;
    int pixelSize = 0;
    bool bold = false, italic = false;
    QFont font;
    bool checked = false;
    bool fast = false;  // the fast path is exact for this face
    float ascent = 0, lineHeight = 0;
    std::array<float, 128> advance{};
    std::array<quint32, 128> glyph{};
    std::array<int, 128> slot{};
    std::uint32_t slotGeneration = 0;
    QRawFont raw;
    QString key;
  };
  Face& FaceFor(const TextFont& font, float pixelSize);
  void Check(Face& face);
  bool Fast(const Face& face, std::string_view text) const;
  void LayoutFast(Face& face, std::string_view text, std::vector<Quad>& quads, std::vector<Line>& lines);
  void LayoutLineShaped(Face& face, const QString& line, float y, std::vector<Quad>& quads, std::vector<Line>& lines);
  void Emit(int slot, float penX, float baseline, std::vector<Quad>& quads) const;

  GlyphAtlas& atlas_;
  std::vector<std::unique_ptr<Face>> faces_;
  Face* last_ = nullptr;
};

}  // namespace lumivane
