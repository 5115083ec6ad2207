#include "render/TextBoxShape.h"

#include <cmath>

namespace lumivane {

namespace {

// Pi as single precision holds it: angles match those of shows made elsewhere to the last bit.
constexpr float kPi = 3.1415927410125732f;

float Radians(float degrees) { return degrees * kPi / 180.0f; }

// The texture step: n / tile, or 0 where the tiling gives no step.
float Texel(std::size_t n, float tile) { return tile != 0.0f ? static_cast<float>(n) / tile : 0.0f; }

// 2 x span / step / tiling: the vertices a texture repeat takes; 0 (no step) without tiling.
float Tile(float span, float step, std::int32_t tiling) {
  return tiling != 0 && step != 0 ? 2.0f * span / step / static_cast<float>(tiling) : 0.0f;
}

void Add(std::vector<LVERTEX>& strip, float x, float y, float tile, float tv, std::uint32_t color) {
  strip.push_back(LVERTEX{x, y, 0, color, 0, Texel(strip.size(), tile), tv});
}

}  // namespace

void BuildTextBoxShape(std::string_view type, const Circle3D& circle, Wave3D& wave, const Spiral3D& spiral,
                       const TextBoxShape& box, bool firstCopy, std::vector<LVERTEX>& strip) {
  strip.clear();
  const float w = box.HalfWidth, h = box.HalfHeight, v = box.V;
  const std::uint32_t c = box.Color;
  if (type == "Circle") {
    const float r = static_cast<float>(circle.Radius);
    const int step = circle.Smoothness;
    if (step <= 0) return;
    const float tile = Tile(360.0f, static_cast<float>(step), circle.Tiling);
    for (int degrees = 0; degrees <= 360; degrees += step) {
      const float a = Radians(static_cast<float>(degrees));
      Add(strip, r * std::cos(a), r * std::sin(a), tile, 0.0f, c);
      Add(strip, (r + h) * std::cos(a), (r + h) * std::sin(a), tile, v, c);
    }
  } else if (type == "Wave") {
    const float amplitude = static_cast<float>(wave.Amplitude), size = static_cast<float>(wave.Size);
    if (size <= 0) return;
    const float tile = Tile(size * 2.0f / 10.0f, 1.0f, wave.Tiling);
    if (firstCopy) {
      wave.CurrentPhase += wave.Phase;
      // Past a full turn it folds back by the distance to 360, not by a turn.
      if (wave.CurrentPhase > 360) wave.CurrentPhase = std::abs(360 - wave.CurrentPhase);
    }
    const float phase = static_cast<float>(wave.CurrentPhase);
    for (float x = -size; x <= size; x += 10.0f) {
      const float y = -h + amplitude * std::sin(Radians(x + phase));
      Add(strip, x * w / size, y, tile, v, c);
      Add(strip, x * w / size, y + 2.0f * h, tile, 0.0f, c);
    }
  } else if (type == "Spiral") {
    const float r = static_cast<float>(spiral.Radius);
    const int turn = spiral.RevolutionCount * 360, step = spiral.Smoothness;
    if (step <= 0 || turn <= 0) return;
    const float tile = Tile(static_cast<float>(turn), static_cast<float>(step), spiral.Tiling);
    for (int degrees = 0; degrees <= turn; degrees += step) {
      const float a = Radians(static_cast<float>(degrees));
      const float radius = r - r * static_cast<float>(degrees) / static_cast<float>(turn);
      Add(strip, radius * std::cos(a), radius * std::sin(a), tile, v, c);
      Add(strip, (radius - h) * std::cos(a), (radius - h) * std::sin(a), tile, 0.0f, c);
    }
  } else {
    strip.push_back(LVERTEX{-w, h, 0, c, 0, 0, 0});
    strip.push_back(LVERTEX{-w, -h, 0, c, 0, 0, v});
    strip.push_back(LVERTEX{w, h, 0, c, 0, 1, 0});
    strip.push_back(LVERTEX{w, -h, 0, c, 0, 1, v});
  }
}

void BuildTextBoxOutline(std::string_view type, const std::vector<LVERTEX>& strip, std::uint32_t color,
                         std::vector<LINEVERTEX>& outline) {
  outline.clear();
  auto point = [&](std::size_t i) { outline.push_back(LINEVERTEX{strip[i].x, strip[i].y, strip[i].z, color}); };
  if (type == "Circle" || type == "Wave" || type == "Spiral") {
    for (std::size_t i = 0; i < strip.size(); i += 2) point(i);
  } else if (strip.size() == 4) {
    for (std::size_t i : {0, 1, 3, 2, 0}) point(i);
  }
}

}  // namespace lumivane
