#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "render/TextureImage.h"

namespace lumivane {

// Decodes pictures for textures on a thread of its own, one after another in the order asked, so
// neither the frame nor the operator's window ever waits for a file. The frame takes what is
// finished when it likes. Dropping the loader never waits: a decode under way is let run out and
// its result thrown away, and the thread ends.
class ImageLoader {
 public:
  struct Result {
    std::uint64_t Ticket = 0;
    bool Ok = false;
    TextureImage Image;
    std::string Error;
  };

  ImageLoader();
  ~ImageLoader();
  ImageLoader(const ImageLoader&) = delete;
  ImageLoader& operator=(const ImageLoader&) = delete;

  // Queues a decode (DecodeTextureImage's arguments) and answers its ticket, never 0.
  std::uint64_t Request(const std::string& file, int width, int height, TextureFormat format, ImageFilter filter,
                        std::uint32_t colorKey);
  // One finished decode, the oldest first; false when none is ready. Never blocks.
  bool Take(Result& out);
  // Blocks until every decode asked so far has finished (offline renders, which must be the same
  // on every run).
  void WaitAll();

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
  std::uint64_t nextTicket_ = 1;
  bool threaded_ = false;
};

}  // namespace lumivane
