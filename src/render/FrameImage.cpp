#include "render/FrameImage.h"

#include "render/RenderDevice.h"

namespace lumivane {

QImage FrameToImage(const std::uint8_t* top, std::ptrdiff_t stride, int width, int height) {
  // Rows stored bottom up come as the last row first: build the image on the memory as it lies and
  // turn it over.
  const std::uint8_t* first = stride < 0 ? top + (height - 1) * stride : top;
  const QImage view(first, width, height, static_cast<qsizetype>(stride < 0 ? -stride : stride),
                    QImage::Format_RGBA8888);
  return view.mirrored(false, stride < 0);  // a copy either way: the device's memory goes after the call
}

QImage ReadFrameImage(RenderDevice& device) {
  QImage image;
  device.ReadBackNow([&](const std::uint8_t* top, std::ptrdiff_t stride) {
    image = FrameToImage(top, stride, device.BackBufferWidth(), device.BackBufferHeight());
  });
  return image;
}

}  // namespace lumivane
