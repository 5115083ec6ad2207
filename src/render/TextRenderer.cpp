#include "render/TextRenderer.h"

#include <algorithm>

#include "core/Color.h"
#include "core/TextFrame.h"
#include "core/TextObject.h"
#include "render/RenderDevice.h"

namespace lumivane {

void TextRenderer::Draw(RenderDevice& device, const TextFrame& frame, int previewWidth, int previewHeight) {
  if (frame.Font == nullptr || frame.Text.empty() || previewWidth <= 0 || previewHeight <= 0) return;
  const float width = static_cast<float>(device.BackBufferWidth());
  const float height = static_cast<float>(device.BackBufferHeight());
  const float sx = width / static_cast<float>(previewWidth);
  const float sy = height / static_cast<float>(previewHeight);
  const float pixelSize = std::max(1.0f, frame.Font->Size) * (96.0f / 72.0f) * (height / 720.0f);
  const GlyphAtlas::Align align = frame.AlignX == "Left Justify"    ? GlyphAtlas::Align::Left
                                  : frame.AlignX == "Right Justify" ? GlyphAtlas::Align::Right
                                                                    : GlyphAtlas::Align::Center;
  quads_.clear();
  atlas_.Layout(frame.Text, *frame.Font, pixelSize, frame.Left * sx, frame.Top * sy, (frame.Right - frame.Left) * sx,
                align, quads_);
  device.DrawTextQuads(atlas_.Image().constBits(), GlyphAtlas::kSize, atlas_.Dirty(),
                       reinterpret_cast<const float*>(quads_.data()), quads_.size(), ToDeviceColor(frame.Color));
  atlas_.Uploaded();
}

}  // namespace lumivane
