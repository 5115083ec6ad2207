#include "render/TextDrawer.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace lumivane {

namespace {

// Glyph coverage times the text's colour, alpha-blended, unfiltered, whatever culling and depth
// the caller had.
constexpr std::pair<RenderState, std::uint32_t> kTextRenderStates[] = {
    {RenderState::ALPHABLENDENABLE, 1},
    {RenderState::SRCBLEND, Blend::SrcAlpha},
    {RenderState::DESTBLEND, Blend::InvSrcAlpha},
    {RenderState::CULLMODE, CullMode::None},
    {RenderState::ZENABLE, 0}};
constexpr std::pair<TextureStageState, std::uint32_t> kTextStageStates[] = {
    {TextureStageState::COLOROP, TextureOp::Modulate},      {TextureStageState::COLORARG1, TextureArg::Texture},
    {TextureStageState::COLORARG2, TextureArg::Diffuse},    {TextureStageState::ALPHAOP, TextureOp::Modulate},
    {TextureStageState::ALPHAARG1, TextureArg::Texture},    {TextureStageState::ALPHAARG2, TextureArg::Diffuse},
    {TextureStageState::MAGFILTER, TextureFilter::Point},   {TextureStageState::MINFILTER, TextureFilter::Point}};

}  // namespace

TextDrawer::TextDrawer(RenderDevice& device) : device_(device) {}

TextDrawer::~TextDrawer() {
  if (texture_ != 0) device_.ReleaseTexture(texture_);
}

void TextDrawer::Upload() {
  if (texture_ == 0) {
    texture_ = device_.CreateTexture(GlyphAtlas::kSize, GlyphAtlas::kSize, TextureFormat::A8);
    if (texture_ == 0) return;
  }
  if (!atlas_.Dirty()) return;
  const int top = atlas_.DirtyTop(), rows = atlas_.DirtyBottom() - atlas_.DirtyTop();
  device_.UpdateTexture(texture_, 0, top, GlyphAtlas::kSize, rows, atlas_.Image().constScanLine(top),
                        atlas_.Image().bytesPerLine());
  atlas_.Uploaded();
}

float TextDrawer::DrawText(const TextFont& font, float pixelSize, std::uint32_t color, std::string_view text,
                           TextRect& rect, std::uint32_t format) {
  quads_.clear();
  lines_.clear();
  if (text.empty()) {
    if (format & kTextCalcRect) rect.right = rect.left, rect.bottom = rect.top;
    return 0;
  }
  const std::uint32_t generation = atlas_.Generation();
  layout_.Layout(text, font, pixelSize, quads_, lines_);
  if (atlas_.Generation() != generation) {  // the atlas filled up and started over under this text
    quads_.clear();
    lines_.clear();
    layout_.Layout(text, font, pixelSize, quads_, lines_);
  }
  float width = 0, height = 0;
  for (const TextLayout::Line& line : lines_) {
    width = std::max(width, line.width);
    height += line.height;
  }
  if (format & kTextCalcRect) {
    rect.right = rect.left + width;
    rect.bottom = rect.top + height;
    return height;
  }

  float y = rect.top;
  if ((format & kTextVCenter) && (format & kTextSingleLine)) y += ((rect.bottom - rect.top) - height) / 2;
  y = std::round(y);
  const bool clip = (format & kTextNoClip) == 0;
  vertices_.clear();
  for (const TextLayout::Line& line : lines_) {
    float x = rect.left;
    if (format & kTextCenter)
      x += ((rect.right - rect.left) - line.width) / 2;
    else if (format & kTextRight)
      x = rect.right - line.width;
    x = std::round(x);  // whole pixels keep the glyphs one texel a pixel
    for (std::size_t i = line.first; i < line.first + line.count; ++i) {
      TextLayout::Quad q = quads_[i];
      q.x0 += x, q.x1 += x, q.y0 += y, q.y1 += y;
      if (clip) {
        // Cut the quad to the rectangle, and its place in the atlas with it.
        const float du = (q.u1 - q.u0) / (q.x1 - q.x0), dv = (q.v1 - q.v0) / (q.y1 - q.y0);
        if (q.x0 < rect.left) q.u0 += (rect.left - q.x0) * du, q.x0 = rect.left;
        if (q.x1 > rect.right) q.u1 -= (q.x1 - rect.right) * du, q.x1 = rect.right;
        if (q.y0 < rect.top) q.v0 += (rect.top - q.y0) * dv, q.y0 = rect.top;
        if (q.y1 > rect.bottom) q.v1 -= (q.y1 - rect.bottom) * dv, q.y1 = rect.bottom;
        if (q.x0 >= q.x1 || q.y0 >= q.y1) continue;
      }
      const TLVERTEX a{q.x0, q.y0, 0, 1, color, 0, q.u0, q.v0}, b{q.x1, q.y0, 0, 1, color, 0, q.u1, q.v0},
          c{q.x1, q.y1, 0, 1, color, 0, q.u1, q.v1}, d{q.x0, q.y1, 0, 1, color, 0, q.u0, q.v1};
      vertices_.insert(vertices_.end(), {a, b, c, a, c, d});
    }
    y += line.height;
  }
  if (vertices_.empty()) return height;

  Upload();
  if (texture_ == 0) return height;  // no atlas on the device: no text, the frame goes on
  // The drawing's own states, and the caller's back afterwards.
  std::uint32_t savedRender[std::size(kTextRenderStates)], savedStage[std::size(kTextStageStates)];
  for (std::size_t i = 0; i < std::size(kTextRenderStates); ++i) {
    savedRender[i] = device_.GetRenderState(kTextRenderStates[i].first);
    device_.SetRenderState(kTextRenderStates[i].first, kTextRenderStates[i].second);
  }
  for (std::size_t i = 0; i < std::size(kTextStageStates); ++i) {
    savedStage[i] = device_.GetTextureStageState(kTextStageStates[i].first);
    device_.SetTextureStageState(kTextStageStates[i].first, kTextStageStates[i].second);
  }
  device_.SetTexture(texture_);
  device_.DrawPrimitiveUP(PrimitiveType::TriangleList, static_cast<std::uint32_t>(vertices_.size() / 3),
                          vertices_.data());
  // Put back lazily: states that a following text sets again cost nothing, so texts batch.
  for (std::size_t i = 0; i < std::size(kTextRenderStates); ++i)
    device_.SetRenderState(kTextRenderStates[i].first, savedRender[i]);
  for (std::size_t i = 0; i < std::size(kTextStageStates); ++i)
    device_.SetTextureStageState(kTextStageStates[i].first, savedStage[i]);
  device_.SetTexture(0);
  return height;
}

}  // namespace lumivane
