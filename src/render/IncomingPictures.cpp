#include "render/IncomingPictures.h"

#include <algorithm>
#include <utility>

namespace lumivane {

IncomingPictures::~IncomingPictures() = default;

std::uint64_t IncomingPictures::Request(const std::string& file, int width, int height, TextureFormat format,
                                        ImageFilter filter, std::uint32_t colorKey) {
  if (!images_) images_ = std::make_unique<ImageLoader>();
  return images_->Request(file, width, height, format, filter, colorKey);
}

void IncomingPictures::BeginFrame() {
  ReleasePending();
  if (WaitForImages) FinishImages();
  else Poll(UploadPixelsPerFrame);
}

void IncomingPictures::ReleaseLater(TextureId texture) {
  if (texture != 0 && context_.device != nullptr) released_.push_back(texture);
}

void IncomingPictures::ReleasePending() {
  for (TextureId t : released_) context_.device->ReleaseTexture(t);
  released_.clear();
}

void IncomingPictures::Release() {
  for (Upload& u : uploads_)
    if (u.texture != 0) context_.device->ReleaseTexture(u.texture);
  uploads_.clear();
  images_.reset();  // decodes under way run out unheard
  ReleasePending();
}

void IncomingPictures::FinishImages() {
  if (!images_) return;
  images_->WaitAll();
  Poll(static_cast<std::size_t>(-1));
}

void IncomingPictures::Poll(std::size_t budget) {
  RenderDevice* d = context_.device;
  if (d == nullptr || !images_) return;
  ImageLoader::Result result;
  while (images_->Take(result)) {
    Upload upload;
    upload.result = std::move(result);
    if (upload.result.Ok) {
      const TextureImage& image = upload.result.Image;
      upload.texture = d->CreateTexture(image.Width, image.Height, image.Format);
    }
    uploads_.push_back(std::move(upload));
  }
  // A slice of the oldest picture a frame; each is handed over once it is whole.
  while (!uploads_.empty()) {
    Upload& u = uploads_.front();
    const TextureImage& image = u.result.Image;
    if (u.texture != 0 && u.rowsDone < image.Height) {
      const std::size_t width = static_cast<std::size_t>(std::max(image.Width, 1));
      const int rows = static_cast<int>(std::clamp<std::size_t>(budget / width, 1, static_cast<std::size_t>(image.Height - u.rowsDone)));
      d->UpdateTexture(u.texture, 0, u.rowsDone, image.Width, rows,
                       image.Pixels.data() + static_cast<std::size_t>(u.rowsDone) * width,
                       static_cast<std::ptrdiff_t>(width) * 4);
      u.rowsDone += rows;
      budget -= std::min(budget, static_cast<std::size_t>(rows) * width);
      if (u.rowsDone < image.Height) return;
    }
    Upload done = std::move(uploads_.front());
    uploads_.erase(uploads_.begin());
    // Nobody waits for it any more: a picture asked for again, or a layer reset meanwhile.
    if (!(Arrived && Arrived(done.result.Ticket, done.texture)) && done.texture != 0) d->ReleaseTexture(done.texture);
    if (budget == 0) return;
  }
}

}  // namespace lumivane
