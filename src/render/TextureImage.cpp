#include "render/TextureImage.h"

#include <QImage>
#include <QImageReader>
#include <cstring>

#include "core/Numbers.h"

namespace lumivane {

namespace {

// The most pixels a picture may have to be decoded at all.
constexpr qint64 kMaxPixels = 16384LL * 16384LL;

}  // namespace

void PrepareTextureImage(const QImage& source, int width, int height, TextureFormat format, ImageFilter filter,
                         std::uint32_t colorKey, TextureImage& out) {
  QImage image = source.convertToFormat(QImage::Format_ARGB32);  // 0xAARRGGBB words, as the device takes
  if (colorKey != 0) {
    // Keyed before scaling, so that filtering blends the keyed pixels in as transparent.
    for (int y = 0; y < image.height(); ++y) {
      auto* row = reinterpret_cast<std::uint32_t*>(image.scanLine(y));
      for (int x = 0; x < image.width(); ++x)
        if (row[x] == colorKey) row[x] = 0;
    }
  }
  const int w = NextPowerOfTwo(width > 0 ? width : image.width());
  const int h = NextPowerOfTwo(height > 0 ? height : image.height());
  if (image.width() != w || image.height() != h)
    image = image.scaled(w, h, Qt::IgnoreAspectRatio,
                         filter == ImageFilter::Point ? Qt::FastTransformation : Qt::SmoothTransformation);
  out.Width = w;
  out.Height = h;
  out.Format = format;
  if (format == TextureFormat::A8) {
    out.Pixels.assign((static_cast<std::size_t>(w) * static_cast<std::size_t>(h) + 3) / 4, 0);
    auto* bytes = reinterpret_cast<std::uint8_t*>(out.Pixels.data());
    for (int y = 0; y < h; ++y) {
      const auto* row = reinterpret_cast<const std::uint32_t*>(image.constScanLine(y));
      for (int x = 0; x < w; ++x) bytes[static_cast<std::size_t>(y) * static_cast<std::size_t>(w) + static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(row[x] >> 24);
    }
    return;
  }
  out.Pixels.resize(static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
  for (int y = 0; y < h; ++y)
    std::memcpy(out.Pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(w), image.constScanLine(y),
                static_cast<std::size_t>(w) * 4);
  if (format == TextureFormat::X8R8G8B8)
    for (std::uint32_t& p : out.Pixels) p |= 0xFF000000u;
}

bool DecodeTextureImage(const std::string& path, int width, int height, TextureFormat format, ImageFilter filter,
                        std::uint32_t colorKey, TextureImage& out, std::string& error) {
  QImageReader reader(QString::fromStdString(path));
  // A picture of absurd size is refused before it is decoded, not after it has taken the memory.
  const QSize size = reader.size();
  if (size.isValid() && static_cast<qint64>(size.width()) * size.height() > kMaxPixels) {
    error = "The image \"" + path + "\" is too large (" + std::to_string(size.width()) + "x" +
            std::to_string(size.height()) + ").";
    return false;
  }
  // Without a colour key the reader may scale while it decodes (a JPEG photo decodes at a fraction
  // of its size, much faster); keyed pictures must be keyed at their own size first.
  if (colorKey == 0 && width > 0 && height > 0 && size.isValid()) {
    const QSize target(NextPowerOfTwo(width), NextPowerOfTwo(height));
    if (target.width() < size.width() || target.height() < size.height()) reader.setScaledSize(target);
  }
  QImage image;
  if (!reader.read(&image) || image.isNull()) {
    error = "The image \"" + path + "\" cannot be read: " + reader.errorString().toStdString() + ".";
    return false;
  }
  PrepareTextureImage(image, width, height, format, filter, colorKey, out);
  return true;
}

bool ReadImageSize(const std::string& path, std::int32_t& width, std::int32_t& height, std::string& error) {
  QImageReader reader(QString::fromStdString(path));
  const QSize size = reader.size();
  width = height = 0;
  if (size.isValid() && static_cast<qint64>(size.width()) * size.height() > kMaxPixels) {
    error = "too large (" + std::to_string(size.width()) + "x" + std::to_string(size.height()) + ")";
    return false;
  }
  if (!reader.canRead() || !size.isValid() || size.isEmpty()) {
    // Qt answers "Unknown error" for much of what it refuses (its own memory limit included).
    error = reader.error() == QImageReader::UnknownError
                ? std::string("not a picture, or one too large or damaged to read")
                : reader.errorString().toStdString();
    return false;
  }
  width = size.width();
  height = size.height();
  return true;
}

TextureId RenderDevice::CreateTextureFromFileEx(const std::string& path, int width, int height, TextureFormat format,
                                                ImageFilter filter, std::uint32_t colorKey, std::string* error) {
  TextureImage image;
  std::string why;
  if (!DecodeTextureImage(path, width, height, format, filter, colorKey, image, why)) {
    if (error != nullptr) *error = why;
    return 0;
  }
  const TextureId id = CreateTextureFromImage(image);
  if (id == 0 && error != nullptr) *error = "The texture for \"" + path + "\" cannot be made.";
  return id;
}

}  // namespace lumivane
