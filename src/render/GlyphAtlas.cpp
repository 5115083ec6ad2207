#include "render/GlyphAtlas.h"

#include <QFont>
#include <QGlyphRun>
#include <QPainter>
#include <QTextLayout>

#include "core/TextObject.h"

namespace lumivane {

namespace {

QString FaceKey(const QRawFont& font) {
  return font.familyName() + QLatin1Char('/') + font.styleName() + QLatin1Char('/') +
         QString::number(font.pixelSize(), 'f', 2);
}

}  // namespace

GlyphAtlas::GlyphAtlas() : image_(kSize, kSize, QImage::Format_Alpha8) { image_.fill(0); }

const GlyphAtlas::Slot* GlyphAtlas::Glyph(const QRawFont& font, quint32 index) {
  QHash<quint32, Slot>& face = slots_[FaceKey(font)];
  if (auto it = face.find(index); it != face.end()) return &it.value();

  const QImage alpha = font.alphaMapForGlyph(index, QRawFont::PixelAntialiasing).convertToFormat(QImage::Format_Alpha8);
  const QRectF bounds = font.boundingRect(index);
  constexpr int kPad = 1;
  const int w = alpha.width() + kPad, h = alpha.height() + kPad;
  if (penX_ + w > kSize) {  // next shelf
    penX_ = 0;
    penY_ += shelfHeight_;
    shelfHeight_ = 0;
  }
  if (penY_ + h > kSize) {
    // Full: start over. Texts in use come back at their next draw.
    image_.fill(0);
    slots_.clear();
    penX_ = penY_ = shelfHeight_ = 0;
  }
  QPainter p(&image_);
  p.setCompositionMode(QPainter::CompositionMode_Source);
  p.drawImage(penX_, penY_, alpha);
  p.end();
  const Slot slot{static_cast<float>(penX_) / kSize, static_cast<float>(penY_) / kSize,
                  static_cast<float>(penX_ + alpha.width()) / kSize, static_cast<float>(penY_ + alpha.height()) / kSize,
                  QRectF(bounds.left(), bounds.top(), alpha.width(), alpha.height())};
  penX_ += w;
  shelfHeight_ = std::max(shelfHeight_, h);
  dirty_ = true;
  return &(slots_[FaceKey(font)][index] = slot);
}

void GlyphAtlas::Layout(std::string_view text, const TextFont& font, float pixelSize, float left, float top,
                        float width, Align align, std::vector<Quad>& out) {
  QFont qfont(QString::fromStdString(font.Name));
  qfont.setPixelSize(std::max(1, static_cast<int>(pixelSize + 0.5f)));
  qfont.setBold(font.Bold);
  qfont.setItalic(font.Italic);
  const QString all = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  float y = top;
  for (const QString& line : all.split(QStringLiteral("\r\n"))) {
    QTextLayout layout(line, qfont);
    layout.beginLayout();
    QTextLine l = layout.createLine();
    if (!l.isValid()) {
      layout.endLayout();
      continue;
    }
    l.setLineWidth(1e6);
    layout.endLayout();
    const float lineWidth = static_cast<float>(l.naturalTextWidth());
    const float x = align == Align::Left ? left : align == Align::Right ? left + width - lineWidth
                                                                         : left + (width - lineWidth) / 2;
    for (const QGlyphRun& run : layout.glyphRuns()) {
      const QRawFont raw = run.rawFont();
      const QList<quint32> indexes = run.glyphIndexes();
      const QList<QPointF> positions = run.positions();
      for (qsizetype i = 0; i < indexes.size(); ++i) {
        const Slot* slot = Glyph(raw, indexes[i]);
        if (slot == nullptr || slot->bounds.width() <= 0) continue;
        const float gx = x + static_cast<float>(positions[i].x() + slot->bounds.left());
        const float gy = y + static_cast<float>(positions[i].y() + slot->bounds.top());
        out.push_back({gx, gy, gx + static_cast<float>(slot->bounds.width()), gy + static_cast<float>(slot->bounds.height()),
                       slot->u0, slot->v0, slot->u1, slot->v1});
      }
    }
    y += static_cast<float>(l.height());
  }
}

}  // namespace lumivane
