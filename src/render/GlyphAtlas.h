#pragma once

#include <QHash>
#include <QImage>
#include <QRawFont>
#include <cstdint>
#include <string_view>
#include <vector>

namespace lumivane {

struct TextFont;

// Text laid out with Qt (shaping, fallback fonts, any script) and drawn as textured quads from a
// cache of glyph images: a glyph is rasterised once, the first time it is drawn, never per frame.
class GlyphAtlas {
 public:
  static constexpr int kSize = 2048;

  // One glyph on screen: its rectangle in back buffer pixels and its place in the atlas (0..1).
  struct Quad {
    float x0, y0, x1, y1;
    float u0, v0, u1, v1;
  };
  enum class Align { Left, Center, Right };

  GlyphAtlas();

  // Appends the quads of `text` (lines split at CR LF) set in `font` at `pixelSize`, inside the
  // box from `left`/`top` of width `width`, lines aligned as asked.
  void Layout(std::string_view text, const TextFont& font, float pixelSize, float left, float top, float width,
              Align align, std::vector<Quad>& out);

  // The atlas image (one byte of coverage a pixel) and whether it grew since the last upload.
  const QImage& Image() const { return image_; }
  bool Dirty() const { return dirty_; }
  void Uploaded() { dirty_ = false; }

 private:
  struct Slot {
    float u0, v0, u1, v1;
    QRectF bounds;  // relative to the pen position
  };
  const Slot* Glyph(const QRawFont& font, quint32 index);

  QImage image_;
  bool dirty_ = true;
  int penX_ = 0, penY_ = 0, shelfHeight_ = 0;
  QHash<QString, QHash<quint32, Slot>> slots_;  // by face key, then glyph index
};

}  // namespace lumivane
