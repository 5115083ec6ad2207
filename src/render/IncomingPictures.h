#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "render/ImageLoader.h"
#include "render/PassContext.h"

namespace lumivane {

// Pictures on their way to the device, for every pass that shows one: files are decoded off the
// frame path, then taken onto the device a slice a frame, so that neither a slow file nor a large
// picture ever makes a frame long. Also holds textures given up outside a frame (an operator's
// reset) until a frame, whose device context is sure to be current, can give them back.
class IncomingPictures {
 public:
  explicit IncomingPictures(const PassContext& context) : context_(context) {}
  ~IncomingPictures();
  IncomingPictures(const IncomingPictures&) = delete;
  IncomingPictures& operator=(const IncomingPictures&) = delete;

  // Queues a decode (DecodeTextureImage's arguments) and answers its ticket, never 0. The pass
  // keeps the ticket to know its picture by, then calls CatchUp.
  std::uint64_t Request(const std::string& file, int width, int height, TextureFormat format, ImageFilter filter,
                        std::uint32_t colorKey);
  // Offline renders (WaitForImages): the pictures asked for are taken onto the device now.
  void CatchUp() {
    if (WaitForImages) FinishImages();
  }
  // Decodes every picture asked for and takes it onto the device now.
  void FinishImages();
  // The start of a frame: what was given up goes back to the device, and finished decodes come
  // on, UploadPixelsPerFrame pixels of them (all of them with WaitForImages).
  void BeginFrame();
  void ReleaseLater(TextureId texture);
  // The output ends: decodes under way run out unheard, and every texture held goes back.
  void Release();

  // Told of each picture once it is whole on the device (texture 0: the file would not load);
  // answers whether a pass took it. A picture nobody takes goes back to the device.
  std::function<bool(std::uint64_t ticket, TextureId texture)> Arrived;
  // Offline renders and tests: pictures asked for are decoded and taken onto the device before
  // the next frame is drawn, rather than shown when ready.
  bool WaitForImages = false;
  // Pixels of a picture taken onto the device per frame while one is coming in, so that a large
  // picture never makes one frame long.
  std::size_t UploadPixelsPerFrame = 1u << 18;

 private:
  // Takes finished decodes onto the device, `budget` pixels at most.
  void Poll(std::size_t budget);
  void ReleasePending();

  const PassContext& context_;
  std::unique_ptr<ImageLoader> images_;
  // The pictures decoded and not yet whole on the device, the oldest first.
  struct Upload {
    ImageLoader::Result result;
    TextureId texture = 0;
    int rowsDone = 0;
  };
  std::vector<Upload> uploads_;
  std::vector<TextureId> released_;
};

}  // namespace lumivane
