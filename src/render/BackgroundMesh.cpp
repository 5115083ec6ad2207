#include "render/BackgroundMesh.h"

#include <algorithm>
#include <cmath>

#include "core/Color.h"
#include "core/RandomSource.h"

namespace lumivane {

namespace {

// Rnd rounded to one decimal, halves to even as the show's timing was made with.
double RoundTenth(double value) { return std::nearbyint(value * 10.0) / 10.0; }

}  // namespace

void RandomSigns(RandomSource& random, int& sx, int& sy) {
  sx = RoundTenth(random.Rnd()) <= 0.5 ? 1 : -1;
  sy = RoundTenth(random.Rnd()) > 0.5 ? 1 : -1;
}

std::int32_t ChangeColorRandom(std::int32_t color, std::int32_t amount, RandomSource& random) {
  int sign = 1, unused = 1;
  RandomSigns(random, sign, unused);
  const double reach = std::abs(static_cast<double>(amount));
  std::int32_t result = 0;
  for (int shift : {0, 8, 16}) {
    const double moved = ((color >> shift) & 0xFF) + random.Rnd() * sign * reach;
    result |= static_cast<std::int32_t>(std::clamp(std::trunc(moved), 0.0, 255.0)) << shift;
  }
  return result;
}

void FitAspect(double imageWidth, double imageHeight, double targetWidth, double targetHeight, double& ax,
               double& ay) {
  const double rx = imageHeight != 0 ? imageWidth / imageHeight : 0;
  const double ry = targetHeight != 0 ? targetWidth / targetHeight : 0;
  ax = 1;
  ay = 1;
  if (ry <= 1) ay = rx != 0 ? ry / rx : 0;
  else ax = ry != 0 ? rx / ry : 0;
  if (ax == 0) ax = 1;
  if (ay == 0) ay = 1;
}

void BuildBackGroundMesh(const BackGroundMeshArguments& a, RandomSource& random, BackGroundMesh& last,
                         TLVERTEX (&vertices)[12]) {
  const double width = a.BackBufferWidth, height = a.BackBufferHeight;
  auto aspect = [&](double& ax, double& ay) {
    ax = ay = 1;
    if (a.ComputeAspectRatio && a.ImagesLoaded) FitAspect(a.ImageWidth, a.ImageHeight, width, height, ax, ay);
  };
  if (!a.HoldTimer && !a.Hold) {
    BackGroundMesh m = last;
    // The record's feedback factors: they are always 1, whatever the texture's size.
    const double factorU = a.Index != 0 ? 1.0 : 0.0, factorV = factorU;
    if (a.Index != 0) m.DUFeedBackFactor = m.DVFeedBackFactor = 1.0f;
    double ax = 1, ay = 1;
    if (!a.Feedback) {
      const std::int32_t tinted = ChangeColorRandom(a.FilterColor, a.FilterRandom, random);
      if (!(a.FadeIn && a.ImagesLoaded)) m.RenderElementColor = ToDeviceColor(tinted);
      int sx = 1, sy = 1;
      RandomSigns(random, sx, sy);
      if (a.Position.Uniform) sx = sy;
      m.X0 = random.Rnd() * sx * a.Position.X;
      m.Y0 = random.Rnd() * sy * a.Position.Y;
      RandomSigns(random, sx, sy);
      double r1 = random.Rnd(), r2 = random.Rnd();
      if (a.Size.Uniform) sx = sy, r2 = r1;
      aspect(ax, ay);
      m.MeshWidth = static_cast<std::int32_t>(std::trunc((width + sx * r1 * a.Size.X) * ax));
      m.MeshHeight = static_cast<std::int32_t>(std::trunc((height + sy * r2 * a.Size.Y) * ay));
      if (a.RandomizeTiling) {
        RandomSigns(random, sx, sy);
        auto extent = [&](double factor, double tile, int s) {
          const double rnd = random.Rnd();
          double e;
          if (a.Index == 0) e = tile + std::floor(rnd * tile) * s;
          else if (tile < 2) e = std::fabs(factor * s * rnd + (tile - 1));
          else e = factor + (tile - 1) + std::floor((factor + tile - 1) * rnd) * s;
          return e == 0 ? 1.0 : e;
        };
        m.DU = extent(factorU, a.TileX, sx);
        m.DV = extent(factorV, a.TileY, sy);
      } else {
        m.DU = a.Index != 0 ? factorU + (a.TileX - 1) : a.TileX;
        m.DV = a.Index != 0 ? factorV + (a.TileY - 1) : a.TileY;
      }
      // Offsets stretch the texture's extent; the origin stays.
      RandomSigns(random, sx, sy);
      if (a.RandomizeOffset) {
        m.DU += random.Rnd() / 10 * sx * a.OffsetX;
        m.DV += random.Rnd() / 10 * sy * a.OffsetY;
      } else {
        m.DU += a.OffsetX * 0.05;
        m.DV += a.OffsetY * 0.05;
      }
    } else {
      // Feeding back, the sliders zoom and shift the last frame directly.
      aspect(ax, ay);
      m.MeshWidth = static_cast<std::int32_t>(std::trunc((width - a.Size.Maximum / 2.0 + a.Size.X) * ax));
      m.MeshHeight = static_cast<std::int32_t>(std::trunc((height - a.Size.Maximum / 2.0 + a.Size.Y) * ay));
      m.X0 = -a.Position.Maximum / 2.0 + a.Position.X;
      m.Y0 = a.Position.Maximum / 2.0 - a.Position.Y;
      const bool plain = a.Index == 0 || a.ComputeAspectRatio;
      m.DU = (plain ? a.TileX : factorU + (a.TileX - 1)) + a.OffsetX * 0.05;
      m.DV = (plain ? a.TileY : factorV + (a.TileY - 1)) + a.OffsetY * 0.05;
    }
    m.MeshWidth = std::max(m.MeshWidth, 0);
    m.MeshHeight = std::max(m.MeshHeight, 0);
    last = m;
  }

  const auto left = static_cast<float>(width / 2 + last.X0 - last.MeshWidth / 2.0 - 1.0);
  const auto top = static_cast<float>(height / 2 + last.Y0 - last.MeshHeight / 2.0 - 1.0);
  const float right = left + static_cast<float>(last.MeshWidth) + 1.0f;
  const float bottom = top + static_cast<float>(last.MeshHeight) + 1.0f;
  const auto du = static_cast<float>(last.DU), dv = static_cast<float>(last.DV);
  const std::uint32_t c = last.RenderElementColor;
  const TLVERTEX lt{left, top, 0, 1, c, 0, 0, 0}, rt{right, top, 0, 1, c, 0, du, 0};
  const TLVERTEX rb{right, bottom, 0, 1, c, 0, du, dv}, lb{left, bottom, 0, 1, c, 0, 0, dv};
  const TLVERTEX centre{(left + right) / 2, (top + bottom) / 2, 0, 1, c, 0, du / 2, dv / 2};
  const TLVERTEX order[12] = {lt, rt, centre, rt, rb, centre, rb, lb, centre, lb, lt, centre};
  std::copy(std::begin(order), std::end(order), vertices);
}

}  // namespace lumivane
