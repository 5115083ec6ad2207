#include "render/TextMesh.h"

#include <GL/glu.h>

#include <QFont>
#include <QPainterPath>
#include <QString>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <deque>

namespace lumivane {

namespace {

using Point = std::array<double, 2>;
using Contour = std::vector<Point>;

// Outlines are taken at this many pixels an em, then scaled to one unit an em: large enough that
// the font's own coordinates are not rounded.
constexpr double kEmPixels = 256.0;

// A cubic curve as chords of equal parameter steps, as few as keep every chord within
// `tolerance` of the curve: a step h strays at most h^2 / 8 times the largest second derivative,
// which for a cubic is 6 times the larger of its control polygon's two bends.
void FlattenCubic(const Point& p0, const Point& p1, const Point& p2, const Point& p3, double tolerance,
                  Contour& out) {
  const double bend = std::max(std::hypot(p0[0] - 2 * p1[0] + p2[0], p0[1] - 2 * p1[1] + p2[1]),
                               std::hypot(p1[0] - 2 * p2[0] + p3[0], p1[1] - 2 * p2[1] + p3[1]));
  const int steps = std::clamp(static_cast<int>(std::ceil(std::sqrt(0.75 * bend / tolerance))), 1, 1024);
  for (int i = 1; i < steps; ++i) {
    const double t = static_cast<double>(i) / steps, u = 1 - t;
    const double a = u * u * u, b = 3 * u * u * t, c = 3 * u * t * t, d = t * t * t;
    out.push_back({a * p0[0] + b * p1[0] + c * p2[0] + d * p3[0], a * p0[1] + b * p1[1] + c * p2[1] + d * p3[1]});
  }
  out.push_back(p3);
}

// The path's closed contours in em units, y up, without repeated points.
std::vector<Contour> Contours(const QPainterPath& path, double tolerance) {
  std::vector<Contour> contours;
  const double scale = 1.0 / kEmPixels;
  auto at = [&](int i) {
    const QPainterPath::Element e = path.elementAt(i);
    return Point{e.x * scale, -e.y * scale};
  };
  for (int i = 0; i < path.elementCount(); ++i) {
    const QPainterPath::Element e = path.elementAt(i);
    if (e.type == QPainterPath::MoveToElement || contours.empty()) {
      contours.emplace_back();
      contours.back().push_back(at(i));
    } else if (e.type == QPainterPath::LineToElement) {
      contours.back().push_back(at(i));
    } else if (e.type == QPainterPath::CurveToElement && i + 2 < path.elementCount()) {
      const Point start = contours.back().back();
      FlattenCubic(start, at(i), at(i + 1), at(i + 2), tolerance, contours.back());
      i += 2;
    }
  }
  for (Contour& c : contours) {
    c.erase(std::unique(c.begin(), c.end(),
                        [](const Point& a, const Point& b) { return std::hypot(a[0] - b[0], a[1] - b[1]) < 1e-9; }),
            c.end());
    while (c.size() > 1 && std::hypot(c.front()[0] - c.back()[0], c.front()[1] - c.back()[1]) < 1e-9) c.pop_back();
  }
  contours.erase(std::remove_if(contours.begin(), contours.end(), [](const Contour& c) { return c.size() < 3; }),
                 contours.end());
  return contours;
}

double SignedArea(const Contour& c) {
  double area = 0;
  for (std::size_t i = 0; i < c.size(); ++i) {
    const Point& a = c[i];
    const Point& b = c[(i + 1) % c.size()];
    area += a[0] * b[1] - b[0] * a[1];
  }
  return area / 2;
}

// What the tessellator hands back: triangles over the contour points and the points it adds where
// outlines cross.
struct Tessellation {
  std::deque<std::array<double, 3>> points;  // stable addresses: the tessellator keeps pointers
  std::vector<std::uint32_t> triangles;
  bool failed = false;
};

void OnVertex(void* vertex, void* data) {
  static_cast<Tessellation*>(data)->triangles.push_back(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(vertex)));
}
void OnCombine(GLdouble coords[3], void*[4], GLfloat[4], void** out, void* data) {
  auto* t = static_cast<Tessellation*>(data);
  t->points.push_back({coords[0], coords[1], 0.0});
  *out = reinterpret_cast<void*>(static_cast<std::uintptr_t>(t->points.size() - 1));
}
void OnEdgeFlag(GLboolean, void*) {}  // asked for, so that only separate triangles come
void OnError(GLenum, void* data) { static_cast<Tessellation*>(data)->failed = true; }

bool Tessellate(const std::vector<Contour>& contours, Tessellation& t) {
  GLUtesselator* tess = gluNewTess();
  if (tess == nullptr) return false;
  using Callback = _GLUfuncptr;
  gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<Callback>(&OnVertex));
  gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<Callback>(&OnCombine));
  gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA, reinterpret_cast<Callback>(&OnEdgeFlag));
  gluTessCallback(tess, GLU_TESS_ERROR_DATA, reinterpret_cast<Callback>(&OnError));
  // Glyph outlines are drawn to fill where they wind: overlapping parts of a glyph stay solid.
  gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_NONZERO);
  gluTessNormal(tess, 0, 0, 1);
  for (const Contour& c : contours)
    for (const Point& p : c) t.points.push_back({p[0], p[1], 0.0});
  gluTessBeginPolygon(tess, &t);
  std::size_t index = 0;
  for (const Contour& c : contours) {
    gluTessBeginContour(tess);
    for (std::size_t i = 0; i < c.size(); ++i, ++index)
      gluTessVertex(tess, t.points[index].data(), reinterpret_cast<void*>(static_cast<std::uintptr_t>(index)));
    gluTessEndContour(tess);
  }
  gluTessEndPolygon(tess);
  gluDeleteTess(tess);
  return !t.failed;
}

// Adds a triangle wound clockwise as seen from the side `normal` points to, the way front faces are
// drawn; a triangle without area is left out.
void AddTriangle(MeshData& mesh, std::uint32_t a, std::uint32_t b, std::uint32_t c, const float normal[3]) {
  const MeshVertex &p = mesh.Vertices[a], &q = mesh.Vertices[b], &r = mesh.Vertices[c];
  const float u[3] = {q.x - p.x, q.y - p.y, q.z - p.z}, v[3] = {r.x - p.x, r.y - p.y, r.z - p.z};
  const float g[3] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
  const float along = g[0] * normal[0] + g[1] * normal[1] + g[2] * normal[2];
  if (std::fabs(along) < 1e-12f) return;
  mesh.Indices.insert(mesh.Indices.end(), {a, along > 0 ? b : c, along > 0 ? c : b});
}

}  // namespace

MeshData BuildTextMesh(const TextFont& font, std::string_view text, float deviation, float extrusion) {
  MeshData mesh;
  QString string = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  string.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
  QFont qfont(QString::fromStdString(font.Name));
  qfont.setPixelSize(static_cast<int>(kEmPixels));
  qfont.setBold(font.Bold);
  qfont.setItalic(font.Italic);
  qfont.setUnderline(font.Underline);
  qfont.setStrikeOut(font.Strikethrough);
  qfont.setHintingPreference(QFont::PreferNoHinting);
  QPainterPath path;
  path.addText(0, 0, qfont, string);
  const double tolerance = std::clamp(static_cast<double>(deviation), 0.0005, 0.1);
  const std::vector<Contour> contours = Contours(path, tolerance);
  Tessellation tess;
  if (contours.empty() || !Tessellate(contours, tess)) return mesh;

  // The face: every point the tessellator knows, its triangles facing the camera.
  const bool solid = extrusion > 0;
  const auto points = static_cast<std::uint32_t>(tess.points.size());
  mesh.Vertices.reserve(points * (solid ? 2 : 1));
  for (const auto& p : tess.points)
    mesh.Vertices.push_back({static_cast<float>(p[0]), static_cast<float>(p[1]), 0, 0, 0, -1, 0, 0});
  const float front[3] = {0, 0, -1}, back[3] = {0, 0, 1};
  for (std::size_t i = 0; i + 2 < tess.triangles.size(); i += 3)
    AddTriangle(mesh, tess.triangles[i], tess.triangles[i + 1], tess.triangles[i + 2], front);
  if (solid) {
    for (const auto& p : tess.points)
      mesh.Vertices.push_back({static_cast<float>(p[0]), static_cast<float>(p[1]), extrusion, 0, 0, 1, 0, 0});
    for (std::size_t i = 0; i + 2 < tess.triangles.size(); i += 3)
      AddTriangle(mesh, points + tess.triangles[i], points + tess.triangles[i + 1], points + tess.triangles[i + 2], back);

    // The walls. The letters lie left of their outer outlines when these run counter-clockwise
    // (and right of their holes', which run the other way), so the outward side of every edge is
    // the same side once the outlines' overall turn is known.
    double area = 0;
    for (const Contour& c : contours) area += SignedArea(c);
    const float out = area >= 0 ? 1.0f : -1.0f;
    const float smooth = std::cos(30.0f * 3.14159265f / 180.0f);
    std::vector<std::array<float, 2>> normals;
    std::vector<std::uint32_t> starts, ends;  // each wall's vertex pair at its start and its end
    for (const Contour& c : contours) {
      const std::size_t n = c.size();
      normals.resize(n);
      for (std::size_t i = 0; i < n; ++i) {
        const Point& a = c[i];
        const Point& b = c[(i + 1) % n];
        const auto dx = static_cast<float>(b[0] - a[0]), dy = static_cast<float>(b[1] - a[1]);
        const float length = std::hypot(dx, dy);
        normals[i] = {out * dy / length, -out * dx / length};
      }
      // Each point gets a pair of vertices (front, back): one pair shared by both walls across a
      // gentle bend, with their mean normal; two at a sharp corner, each wall's own.
      auto pair = [&](const Point& p, float nx, float ny) {
        const auto index = static_cast<std::uint32_t>(mesh.Vertices.size());
        const auto x = static_cast<float>(p[0]), y = static_cast<float>(p[1]);
        mesh.Vertices.push_back({x, y, 0, nx, ny, 0, 0, 0});
        mesh.Vertices.push_back({x, y, extrusion, nx, ny, 0, 0, 0});
        return index;
      };
      starts.resize(n);
      ends.resize(n);
      for (std::size_t i = 0; i < n; ++i) {
        const std::size_t previous = (i + n - 1) % n;
        const auto& w = normals[i];
        const auto& o = normals[previous];
        if (w[0] * o[0] + w[1] * o[1] >= smooth) {
          const float sx = w[0] + o[0], sy = w[1] + o[1], length = std::hypot(sx, sy);
          starts[i] = ends[previous] = pair(c[i], sx / length, sy / length);
        } else {
          starts[i] = pair(c[i], w[0], w[1]);
          ends[previous] = pair(c[i], o[0], o[1]);
        }
      }
      for (std::size_t i = 0; i < n; ++i) {
        const float wall[3] = {normals[i][0], normals[i][1], 0};
        AddTriangle(mesh, starts[i], ends[i], ends[i] + 1, wall);
        AddTriangle(mesh, starts[i], ends[i] + 1, starts[i] + 1, wall);
      }
    }
  }
  mesh.Subsets.push_back({0, static_cast<std::uint32_t>(mesh.Indices.size()), 0});
  mesh.Materials.emplace_back();
  mesh.ComputeBoundingBox();
  return mesh;
}

}  // namespace lumivane
