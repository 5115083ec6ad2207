#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "render/RenderDevice.h"

class QImage;

namespace lumivane {

// An image made ready for a texture on the CPU: a power of two in each direction, in device words
// 0xAARRGGBB (one byte a pixel for A8), top row first. Made off the frame path, uploaded in one go.
struct TextureImage {
  int Width = 0;
  int Height = 0;
  TextureFormat Format = TextureFormat::A8R8G8B8;
  std::vector<std::uint32_t> Pixels;  // A8: bytes packed four to a word
};

// Reads an image file through Qt's image readers (PNG, JPEG, BMP, GIF, WebP where present). Pixels
// equal to `colorKey` (alpha included; 0 for none) become transparent black; then the picture is
// scaled to `width` x `height` (0 or less: the file's own size), each rounded up to a power of two,
// point-sampled or filtered. Safe on any thread. False with the reason when the file cannot be read.
bool DecodeTextureImage(const std::string& path, int width, int height, TextureFormat format, ImageFilter filter,
                        std::uint32_t colorKey, TextureImage& out, std::string& error);
// The same from an image already in memory.
void PrepareTextureImage(const QImage& source, int width, int height, TextureFormat format, ImageFilter filter,
                         std::uint32_t colorKey, TextureImage& out);
// A picture's size from its header, without decoding it. False with the reason when the file is
// not a picture Qt can read.
bool ReadImageSize(const std::string& path, std::int32_t& width, std::int32_t& height, std::string& error);

}  // namespace lumivane
