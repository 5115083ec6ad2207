#include "render/GlyphAtlas.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace lumivane {

GlyphAtlas::GlyphAtlas() : image_(kSize, kSize, QImage::Format_Alpha8) { image_.fill(0); }

QString GlyphAtlas::FaceKey(const QRawFont& font) {
  return font.familyName() + QLatin1Char('/') + font.styleName() + QLatin1Char('/') +
         QString::number(font.pixelSize(), 'f', 2);
}

void GlyphAtlas::StartOver() {
  // Full: texts in use come back at their next draw.
  image_.fill(0);
  slots_.clear();
  byFace_.clear();
  penX_ = penY_ = shelfHeight_ = 0;
  dirtyTop_ = kSize;
  dirtyBottom_ = 0;
  ++generation_;
}

int GlyphAtlas::SlotFor(const QRawFont& font, const QString& faceKey, quint32 glyph) {
  QHash<quint32, int>& face = byFace_[faceKey];
  if (auto it = face.constFind(glyph); it != face.constEnd()) return it.value();

  const QImage alpha = font.alphaMapForGlyph(glyph, QRawFont::PixelAntialiasing).convertToFormat(QImage::Format_Alpha8);
  if (alpha.isNull() || alpha.width() == 0 || alpha.height() == 0 || alpha.width() > kSize / 4 ||
      alpha.height() > kSize / 4) {
    face.insert(glyph, -1);  // blanks, and glyphs too large for the atlas, draw nothing
    return -1;
  }
  const QRectF bounds = font.boundingRect(glyph);
  constexpr int kPad = 1;
  const int w = alpha.width() + kPad, h = alpha.height() + kPad;
  if (penX_ + w > kSize) {  // next shelf
    penX_ = 0;
    penY_ += shelfHeight_;
    shelfHeight_ = 0;
  }
  if (penY_ + h > kSize) {
    StartOver();
    return SlotFor(font, faceKey, glyph);
  }
  QPainter p(&image_);
  p.setCompositionMode(QPainter::CompositionMode_Source);
  p.drawImage(penX_, penY_, alpha);
  p.end();
  const Slot slot{static_cast<float>(penX_) / kSize,
                  static_cast<float>(penY_) / kSize,
                  static_cast<float>(penX_ + alpha.width()) / kSize,
                  static_cast<float>(penY_ + alpha.height()) / kSize,
                  static_cast<int>(std::floor(bounds.left())),
                  static_cast<int>(std::floor(bounds.top())),
                  alpha.width(),
                  alpha.height()};
  dirtyTop_ = std::min(dirtyTop_, penY_);
  dirtyBottom_ = std::max(dirtyBottom_, penY_ + alpha.height());
  penX_ += w;
  shelfHeight_ = std::max(shelfHeight_, h);
  slots_.push_back(slot);
  const int index = static_cast<int>(slots_.size()) - 1;
  byFace_[faceKey].insert(glyph, index);
  return index;
}

}  // namespace lumivane
