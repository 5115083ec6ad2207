#pragma once
// Internal to the render library.

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace lumivane {

// Copies finished frames out of the device on a thread of its own, through a second EGL context
// that shares the back buffers. A software renderer copies pixels on the CPU at read time and makes
// the reading context wait for whatever it is still drawing; from a context of its own the copy of
// one frame runs beside the drawing of the next, on the other core.
class GlFrameReader {
 public:
  static constexpr int kBuffers = 2;

  GlFrameReader() = default;
  ~GlFrameReader();
  GlFrameReader(const GlFrameReader&) = delete;
  GlFrameReader& operator=(const GlFrameReader&) = delete;

  // Starts the thread with a context sharing `share`'s objects; reads `textures` (one per back
  // buffer) of `width` x `height`. False with the reason when the context cannot be made.
  bool Start(EGLDisplay display, EGLContext share, const GLuint (&textures)[kBuffers], int width, int height,
             std::string& error);
  // Copies back buffer `buffer` once `fence` (made after its last drawing, already flushed) is passed.
  // With `clear`, then fills the buffer with `color` (0xAARRGGBB) for the frame that will be drawn
  // into it next: a plain copy of a picture of the colour, where a software renderer's own clear
  // fills tile by tile at a fraction of the speed.
  void Submit(int buffer, GLsync fence, bool clear, std::uint32_t color);
  // Waits until the copy of `buffer` is done (or none is pending); answers its pixels, RGBA, top row
  // first, rows width * 4 bytes apart. Valid until the buffer is submitted again.
  const std::uint8_t* Wait(int buffer);
  // After Wait: whether the buffer was filled with `color`, and the fence the drawing context must
  // wait for before it draws into it (nullptr when none; the caller deletes it).
  bool ClearedWith(int buffer, std::uint32_t color) const { return cleared_[buffer] && clearColor_[buffer] == color; }
  GLsync TakeClearFence(int buffer) {
    GLsync fence = clearFences_[buffer];
    clearFences_[buffer] = nullptr;
    return fence;
  }

 private:
  void Run();

  EGLDisplay display_ = EGL_NO_DISPLAY;
  EGLContext context_ = EGL_NO_CONTEXT;
  GLuint textures_[kBuffers] = {0, 0};
  int width_ = 0, height_ = 0;
  std::unique_ptr<std::uint8_t[]> pixels_[kBuffers];  // not zeroed: each is written whole before it is read
  std::thread thread_;
  std::mutex mutex_;
  std::condition_variable changed_;
  GLsync fences_[kBuffers] = {nullptr, nullptr};
  bool pending_[kBuffers] = {false, false};  // submitted, not yet copied
  bool clear_[kBuffers] = {false, false};
  bool cleared_[kBuffers] = {false, false};
  std::uint32_t clearColor_[kBuffers] = {0, 0};
  GLsync clearFences_[kBuffers] = {nullptr, nullptr};
  std::vector<std::uint32_t> clearPicture_;
  bool stop_ = false;
  bool started_ = false;
  bool ready_ = false;
  bool failed_ = false;
  std::string error_;
};

}  // namespace lumivane
