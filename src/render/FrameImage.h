#pragma once

#include <QImage>
#include <cstddef>
#include <cstdint>

namespace lumivane {

class RenderDevice;

// A frame as the device hands it over (top row, signed stride) copied into an image, top row first.
QImage FrameToImage(const std::uint8_t* top, std::ptrdiff_t stride, int width, int height);
// The device's finished frame, read back now (not overlapped): for the occasional grab.
QImage ReadFrameImage(RenderDevice& device);

}  // namespace lumivane
