#include <gtest/gtest.h>

#include <QFont>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <map>
#include <tuple>

#include "render/TextMesh.h"

namespace lumivane {
namespace {

const TextFont kSans{"DejaVu Sans", 12};

using Position = std::tuple<long, long, long>;
Position Key(const MeshVertex& v) {  // positions to a micro-unit grid, so walls meet faces
  return {std::lround(v.x * 1e5), std::lround(v.y * 1e5), std::lround(v.z * 1e5)};
}

std::array<float, 3> FaceNormal(const MeshData& m, std::size_t t) {
  const MeshVertex &p = m.Vertices[m.Indices[t]], &q = m.Vertices[m.Indices[t + 1]], &r = m.Vertices[m.Indices[t + 2]];
  const float u[3] = {q.x - p.x, q.y - p.y, q.z - p.z}, v[3] = {r.x - p.x, r.y - p.y, r.z - p.z};
  return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

// Whether a front-face triangle covers (x, y).
bool Covered(const MeshData& m, float x, float y) {
  for (std::size_t t = 0; t < m.Indices.size(); t += 3) {
    const MeshVertex &a = m.Vertices[m.Indices[t]], &b = m.Vertices[m.Indices[t + 1]], &c = m.Vertices[m.Indices[t + 2]];
    if (a.z != 0 || b.z != 0 || c.z != 0 || a.nz >= 0) continue;
    auto side = [&](const MeshVertex& p, const MeshVertex& q) { return (q.x - p.x) * (y - p.y) - (q.y - p.y) * (x - p.x); };
    const float s1 = side(a, b), s2 = side(b, c), s3 = side(c, a);
    if ((s1 >= 0 && s2 >= 0 && s3 >= 0) || (s1 <= 0 && s2 <= 0 && s3 <= 0)) return true;
  }
  return false;
}

// A solid's surface is closed and consistently wound: every edge is met by exactly one other
// triangle, running the other way; and the winding turns every face outward, which makes the
// enclosed volume (by the divergence theorem) come out as the face's area times the depth.
TEST(TextMesh, AnExtrudedStringIsAClosedSolidWithOutwardFaces) {
  for (const char* text : {"O", "8", "Ag%"}) {
    const MeshData m = BuildTextMesh(kSans, text, 0.001f, 0.25f);
    ASSERT_FALSE(m.Indices.empty()) << text;
    std::map<std::pair<Position, Position>, int> edges;
    for (std::size_t t = 0; t < m.Indices.size(); t += 3)
      for (int e = 0; e < 3; ++e)
        ++edges[{Key(m.Vertices[m.Indices[t + e]]), Key(m.Vertices[m.Indices[t + (e + 1) % 3]])}];
    int open = 0;
    for (const auto& [edge, count] : edges) {
      const auto reverse = edges.find({edge.second, edge.first});
      if (count != 1 || reverse == edges.end() || reverse->second != 1) ++open;
    }
    EXPECT_EQ(open, 0) << text;

    double volume = 0, frontArea = 0;
    for (std::size_t t = 0; t < m.Indices.size(); t += 3) {
      const MeshVertex &a = m.Vertices[m.Indices[t]], &b = m.Vertices[m.Indices[t + 1]], &c = m.Vertices[m.Indices[t + 2]];
      const auto g = FaceNormal(m, t);
      // Clockwise seen from outside: the cross product of the two edges points out. Summed over a
      // closed surface, a . g / 6 is the volume.
      volume += (a.x * g[0] + a.y * g[1] + a.z * g[2]) / 6.0;
      if (a.z == 0 && b.z == 0 && c.z == 0 && a.nz < 0) frontArea += std::fabs(g[2]) / 2.0;
      // Every vertex's normal leans the way its face points.
      for (int k = 0; k < 3; ++k) {
        const MeshVertex& v = m.Vertices[m.Indices[t + k]];
        EXPECT_GT(v.nx * g[0] + v.ny * g[1] + v.nz * g[2], 0) << text;
      }
    }
    EXPECT_NEAR(volume, frontArea * 0.25, frontArea * 0.25 * 1e-3) << text;
  }
}

// The filled face matches the glyph as Qt's rasteriser fills it, and keeps the holes of the "O"
// and of both loops of the "8".
TEST(TextMesh, TheFaceCoversTheGlyphAndKeepsItsHoles) {
  for (const char* text : {"O", "8", "W"}) {
    const MeshData m = BuildTextMesh(kSans, text, 0.001f, 0);
    double area = 0;
    for (std::size_t t = 0; t < m.Indices.size(); t += 3) area += std::fabs(FaceNormal(m, t)[2]) / 2.0;
    // The same glyph filled by Qt at 400 pixels an em.
    QFont font("DejaVu Sans");
    font.setPixelSize(400);
    font.setHintingPreference(QFont::PreferNoHinting);
    QPainterPath path;
    path.addText(0, 0, font, text);
    const QRectF box = path.boundingRect();
    QImage image(static_cast<int>(box.width()) + 4, static_cast<int>(box.height()) + 4, QImage::Format_Grayscale8);
    image.fill(0);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(2 - box.left(), 2 - box.top());
    painter.fillPath(path, Qt::white);
    painter.end();
    double ink = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) ink += image.pixelColor(x, y).value() / 255.0;
    EXPECT_NEAR(area, ink / (400.0 * 400.0), area * 0.01) << text;
  }
  const MeshData o = BuildTextMesh(kSans, "O", 0.001f, 0);
  const float cx = (o.Min[0] + o.Max[0]) / 2, cy = (o.Min[1] + o.Max[1]) / 2;
  EXPECT_FALSE(Covered(o, cx, cy));
  EXPECT_TRUE(Covered(o, o.Min[0] + 0.02f, cy));  // the ring's left side
  EXPECT_NEAR(o.Min[1], 0, 0.02);                 // standing on the baseline, about 0.73 em high
  EXPECT_NEAR(o.Max[1], 0.74, 0.03);

  const MeshData eight = BuildTextMesh(kSans, "8", 0.001f, 0);
  const float ex = (eight.Min[0] + eight.Max[0]) / 2, height = eight.Max[1] - eight.Min[1];
  EXPECT_FALSE(Covered(eight, ex, eight.Min[1] + height * 0.27f));  // the lower loop's hole
  EXPECT_FALSE(Covered(eight, ex, eight.Min[1] + height * 0.75f));  // the upper loop's hole
  EXPECT_TRUE(Covered(eight, ex, eight.Min[1] + height * 0.53f));   // the waist
}

// A finer deviation follows the curves with more points; nothing to outline gives nothing; a line
// break is a blank; the depth is the extrusion's.
TEST(TextMesh, DeviationDepthAndEmptyStrings) {
  const MeshData coarse = BuildTextMesh(kSans, "O", 0.01f, 0.5f), fine = BuildTextMesh(kSans, "O", 0.0005f, 0.5f);
  EXPECT_GT(fine.Vertices.size(), coarse.Vertices.size());
  EXPECT_FLOAT_EQ(fine.Min[2], 0);
  EXPECT_FLOAT_EQ(fine.Max[2], 0.5f);
  EXPECT_TRUE(BuildTextMesh(kSans, "", 0.001f, 0.5f).Indices.empty());
  EXPECT_TRUE(BuildTextMesh(kSans, "   ", 0.001f, 0.5f).Indices.empty());
  const MeshData broken = BuildTextMesh(kSans, "A\r\nB", 0.001f, 0), spaced = BuildTextMesh(kSans, "A B", 0.001f, 0);
  EXPECT_EQ(broken.Indices.size(), spaced.Indices.size());
  EXPECT_FLOAT_EQ(broken.Max[0], spaced.Max[0]);
}

}  // namespace
}  // namespace lumivane
