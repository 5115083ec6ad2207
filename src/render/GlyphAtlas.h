#pragma once

#include <QHash>
#include <QImage>
#include <QRawFont>
#include <cstdint>
#include <vector>

namespace lumivane {

// A cache of glyph images in one coverage texture: a glyph is rasterised once, the first time it
// is drawn, never per frame. Slots are numbered and stay valid until the atlas fills up and starts
// over (Generation() then changes).
class GlyphAtlas {
 public:
  static constexpr int kSize = 2048;

  struct Slot {
    float u0, v0, u1, v1;  // place in the atlas, 0..1
    int left, top;         // image offset from the pen position, whole pixels
    int width, height;
  };

  GlyphAtlas();

  // The slot of a glyph of `font` (rasterised now if new); -1 when it has no image.
  int SlotFor(const QRawFont& font, const QString& faceKey, quint32 glyph);
  const Slot& At(int slot) const { return slots_[static_cast<std::size_t>(slot)]; }
  std::uint32_t Generation() const { return generation_; }

  // The coverage image (one byte a pixel) and the rows that changed since the last upload.
  const QImage& Image() const { return image_; }
  bool Dirty() const { return dirtyTop_ < dirtyBottom_; }
  int DirtyTop() const { return dirtyTop_; }
  int DirtyBottom() const { return dirtyBottom_; }
  void Uploaded() { dirtyTop_ = kSize, dirtyBottom_ = 0; }

  // A name for a face at a size, for the slot look-up.
  static QString FaceKey(const QRawFont& font);

 private:
  void StartOver();

  QImage image_;
  std::vector<Slot> slots_;
  QHash<QString, QHash<quint32, int>> byFace_;
  int penX_ = 0, penY_ = 0, shelfHeight_ = 0;
  int dirtyTop_ = kSize, dirtyBottom_ = 0;  // only rows that hold glyphs are ever sampled
  std::uint32_t generation_ = 1;
};

}  // namespace lumivane
