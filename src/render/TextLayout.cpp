#include "render/TextLayout.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QTextLayout>
#include <cmath>

#include "core/TextObject.h"

namespace lumivane {

namespace {

constexpr std::string_view kLineBreak = "\r\n";

}  // namespace

TextLayout::~TextLayout() = default;

TextLayout::Face& TextLayout::FaceFor(const TextFont& font, float pixelSize) {
  const int size = std::max(1, static_cast<int>(pixelSize + 0.5f));
  auto same = [&](const Face& f) {
    return f.pixelSize == size && f.bold == font.Bold && f.italic == font.Italic && f.name == font.Name;
  };
  if (last_ != nullptr && same(*last_)) return *last_;
  for (auto& f : faces_) {
    if (same(*f)) return *(last_ = f.get());
  }
  auto face = std::make_unique<Face>();
  face->name = font.Name;
  face->pixelSize = size;
  face->bold = font.Bold;
  face->italic = font.Italic;
  face->font = QFont(QString::fromStdString(font.Name));
  face->font.setPixelSize(size);
  face->font.setBold(font.Bold);
  face->font.setItalic(font.Italic);
  faces_.push_back(std::move(face));
  return *(last_ = faces_.back().get());
}

void TextLayout::Check(Face& face) {
  face.checked = true;
  face.fast = false;
  // Every ordered pair of the fast characters, shaped once by the full shaper.
  QString probe;
  for (char a : kFastCharacters)
    for (char b : kFastCharacters) {
      probe += QLatin1Char(a);
      probe += QLatin1Char(b);
    }
  QTextLayout layout(probe, face.font);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  if (!line.isValid()) {
    layout.endLayout();
    return;
  }
  line.setLineWidth(1e7);
  layout.endLayout();
  const QList<QGlyphRun> runs = layout.glyphRuns();
  if (runs.size() != 1) return;  // a fallback font stepped in: not a face for the table
  const QList<quint32> indexes = runs[0].glyphIndexes();
  const QList<QPointF> positions = runs[0].positions();
  if (indexes.size() != probe.size()) return;  // ligatures or decompositions
  face.raw = runs[0].rawFont();
  face.key = GlyphAtlas::FaceKey(face.raw);
  for (char c : kFastCharacters) {
    const QChar ch = QLatin1Char(c);
    quint32 glyph = 0;
    int count = 1;
    if (!face.raw.glyphIndexesForChars(&ch, 1, &glyph, &count) || count != 1 || glyph == 0) return;
    QPointF advance;
    if (!face.raw.advancesForGlyphIndexes(&glyph, &advance, 1)) return;
    const auto i = static_cast<std::size_t>(static_cast<unsigned char>(c));
    face.glyph[i] = glyph;
    face.advance[i] = static_cast<float>(advance.x());
  }
  const double baseline = positions[0].y();
  if (std::fabs(positions[0].x()) > 1e-3) return;
  for (qsizetype i = 0; i < indexes.size(); ++i) {
    const auto c = static_cast<std::size_t>(probe[i].toLatin1());
    if (indexes[i] != face.glyph[c] || std::fabs(positions[i].y() - baseline) > 1e-3) return;
    if (i + 1 < indexes.size() && std::fabs(positions[i + 1].x() - positions[i].x() - face.advance[c]) > 1e-3) return;
  }
  face.ascent = static_cast<float>(baseline);
  face.lineHeight = static_cast<float>(line.height());
  face.slotGeneration = 0;
  face.fast = true;
}

bool TextLayout::Fast(const Face& face, std::string_view text) const {
  if (!face.fast) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
      ++i;
      continue;
    }
    if (kFastCharacters.find(c) == std::string_view::npos) return false;
  }
  return true;
}

bool TextLayout::FastPathServes(std::string_view text, const TextFont& font, float pixelSize) {
  Face& face = FaceFor(font, pixelSize);
  if (!face.checked) Check(face);
  return Fast(face, text);
}

void TextLayout::Emit(int slot, float penX, float baseline, std::vector<Quad>& quads) const {
  if (slot < 0) return;
  const GlyphAtlas::Slot& s = atlas_.At(slot);
  // Whole pixels: the glyph images were made at this size, so they are drawn one texel a pixel.
  const float x = std::round(penX) + static_cast<float>(s.left);
  const float y = std::round(baseline) + static_cast<float>(s.top);
  quads.push_back({x, y, x + static_cast<float>(s.width), y + static_cast<float>(s.height), s.u0, s.v0, s.u1, s.v1});
}

void TextLayout::LayoutFast(Face& face, std::string_view text, std::vector<Quad>& quads, std::vector<Line>& lines) {
  if (face.slotGeneration != atlas_.Generation()) {
    face.slot.fill(-2);  // looked up again at first use
    face.slotGeneration = atlas_.Generation();
  }
  float y = 0;
  std::size_t start = 0;
  while (true) {
    const std::size_t end = text.find(kLineBreak, start);
    const std::string_view row = text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
    Line line;
    line.first = quads.size();
    line.height = face.lineHeight;
    float pen = 0;
    for (char c : row) {
      const auto i = static_cast<std::size_t>(static_cast<unsigned char>(c));
      if (face.slot[i] == -2) face.slot[i] = atlas_.SlotFor(face.raw, face.key, face.glyph[i]);
      Emit(face.slot[i], pen, y + face.ascent, quads);
      pen += face.advance[i];
    }
    line.count = quads.size() - line.first;
    line.width = pen;  // blanks count, as the shaper counts them
    lines.push_back(line);
    if (end == std::string_view::npos) break;
    y += face.lineHeight;
    start = end + kLineBreak.size();
  }
}

void TextLayout::LayoutLineShaped(Face& face, const QString& text, float y, std::vector<Quad>& quads,
                                  std::vector<Line>& lines) {
  Line line;
  line.first = quads.size();
  QTextLayout layout(text, face.font);
  layout.beginLayout();
  QTextLine l = layout.createLine();
  if (l.isValid()) l.setLineWidth(1e7);
  layout.endLayout();
  if (l.isValid()) {
    line.width = static_cast<float>(l.naturalTextWidth());
    line.height = static_cast<float>(l.height());
    for (const QGlyphRun& run : layout.glyphRuns()) {
      const QRawFont raw = run.rawFont();
      const QString key = GlyphAtlas::FaceKey(raw);
      const QList<quint32> indexes = run.glyphIndexes();
      const QList<QPointF> positions = run.positions();
      for (qsizetype i = 0; i < indexes.size(); ++i)
        Emit(atlas_.SlotFor(raw, key, indexes[i]), static_cast<float>(positions[i].x()),
             y + static_cast<float>(positions[i].y()), quads);
    }
  } else {
    line.height = static_cast<float>(QFontMetricsF(face.font).height());
  }
  line.count = quads.size() - line.first;
  lines.push_back(line);
}

void TextLayout::LayoutShaped(std::string_view text, const TextFont& font, float pixelSize, std::vector<Quad>& quads,
                              std::vector<Line>& lines) {
  Face& face = FaceFor(font, pixelSize);
  const QString all = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  float y = 0;
  for (const QString& row : all.split(QStringLiteral("\r\n"))) {
    LayoutLineShaped(face, row, y, quads, lines);
    y += lines.back().height;
  }
}

void TextLayout::Layout(std::string_view text, const TextFont& font, float pixelSize, std::vector<Quad>& quads,
                        std::vector<Line>& lines) {
  Face& face = FaceFor(font, pixelSize);
  if (!face.checked) Check(face);
  if (Fast(face, text))
    LayoutFast(face, text, quads, lines);
  else
    LayoutShaped(text, font, pixelSize, quads, lines);
}

}  // namespace lumivane
