#include "render/GlFrameReader.h"

#include <cstring>

namespace lumivane {

GlFrameReader::~GlFrameReader() {
  if (!started_) return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

bool GlFrameReader::Start(EGLDisplay display, EGLContext share, const GLuint (&textures)[kBuffers], int width,
                          int height, std::string& error) {
  const EGLint attributes[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 3,
                               EGL_CONTEXT_OPENGL_PROFILE_MASK, EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
  context_ = eglCreateContext(display, EGL_NO_CONFIG_KHR, share, attributes);
  if (context_ == EGL_NO_CONTEXT) {
    error = "no second context for reading frames back";
    return false;
  }
  display_ = display;
  for (int i = 0; i < kBuffers; ++i) {
    textures_[i] = textures[i];
    pixels_[i].reset(new std::uint8_t[static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4]);
  }
  width_ = width;
  height_ = height;
  // The context is made current on the thread; a failure there is told through Wait's answer.
  std::unique_lock<std::mutex> lock(mutex_);
  thread_ = std::thread([this] { Run(); });
  started_ = true;
  changed_.wait(lock, [this] { return failed_ || ready_; });
  if (failed_) {
    lock.unlock();
    error = error_;
    return false;
  }
  return true;
}

void GlFrameReader::Submit(int buffer, GLsync fence, bool clear, std::uint32_t color) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    fences_[buffer] = fence;
    pending_[buffer] = true;
    clear_[buffer] = clear;
    clearColor_[buffer] = color;
    cleared_[buffer] = false;
  }
  changed_.notify_all();
}

const std::uint8_t* GlFrameReader::Wait(int buffer) {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait(lock, [&] { return !pending_[buffer] || failed_; });
  return failed_ ? nullptr : pixels_[buffer].get();
}

void GlFrameReader::Run() {
  GLuint framebuffers[kBuffers] = {0, 0};
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_)) {
      failed_ = true;
      error_ = "the reading context cannot be made current";
    } else {
      // Framebuffers belong to their context: this one reads through its own.
      glGenFramebuffers(kBuffers, framebuffers);
      for (int i = 0; i < kBuffers; ++i) {
        glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffers[i]);
        glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, textures_[i], 0);
      }
      glPixelStorei(GL_PACK_ALIGNMENT, 4);
      ready_ = true;
    }
  }
  changed_.notify_all();
  if (failed_) return;
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    changed_.wait(lock, [&] { return stop_ || pending_[0] || pending_[1]; });
    if (stop_) break;
    const int buffer = pending_[0] ? 0 : 1;
    GLsync fence = fences_[buffer];
    const bool clear = clear_[buffer];
    const std::uint32_t color = clearColor_[buffer];
    lock.unlock();
    if (fence != nullptr) {
      while (glClientWaitSync(fence, 0, 1000000000) == GL_TIMEOUT_EXPIRED) {
      }
      glDeleteSync(fence);
    }
    glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffers[buffer]);
    glReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, pixels_[buffer].get());
    GLsync cleared = nullptr;
    if (clear) {
      // Bytes in the texture's own order (R, G, B, A), so the upload is a plain copy.
      const std::uint8_t rgba[4] = {static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
                                    static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 24)};
      std::uint32_t word;
      std::memcpy(&word, rgba, 4);
      if (clearPicture_.empty() || clearPicture_[0] != word)
        clearPicture_.assign(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), word);
      glBindTexture(GL_TEXTURE_2D, textures_[buffer]);
      glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
      glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, clearPicture_.data());
      glBindTexture(GL_TEXTURE_2D, 0);
      cleared = glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
      glFlush();
    }
    lock.lock();
    if (clearFences_[buffer] != nullptr) glDeleteSync(clearFences_[buffer]);
    clearFences_[buffer] = cleared;
    cleared_[buffer] = cleared != nullptr;
    pending_[buffer] = false;
    fences_[buffer] = nullptr;
    changed_.notify_all();
  }
  for (GLsync& fence : fences_)
    if (fence != nullptr) glDeleteSync(fence), fence = nullptr;
  for (GLsync& fence : clearFences_)
    if (fence != nullptr) glDeleteSync(fence), fence = nullptr;
  lock.unlock();
  glDeleteFramebuffers(kBuffers, framebuffers);
  eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
  eglDestroyContext(display_, context_);
}

}  // namespace lumivane
