// The device's context, back buffers, textures, read back and present.
#include "render/GlDevice.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "core/Numbers.h"
#include "render/TextureImage.h"

namespace lumivane {

namespace {

// Upload format of a texture format's device words.
void UploadFormat(TextureFormat format, GLenum& internal, GLenum& layout, GLenum& type) {
  if (format == TextureFormat::A8) {
    internal = GL_R8;
    layout = GL_RED;
    type = GL_UNSIGNED_BYTE;
  } else {
    // 0xAARRGGBB words lie in memory as B, G, R, A.
    internal = GL_RGBA8;
    layout = GL_BGRA;
    type = GL_UNSIGNED_INT_8_8_8_8_REV;
  }
}

int BytesPerPixel(TextureFormat format) { return format == TextureFormat::A8 ? 1 : 4; }

}  // namespace

bool GlDevice::MakeContext(EGLDisplay display, std::string& error) {
  EGLint major = 0, minor = 0;
  if (display == EGL_NO_DISPLAY || !eglInitialize(display, &major, &minor)) {
    error = "EGL could not be initialised";
    return false;
  }
  if (!eglBindAPI(EGL_OPENGL_API)) {
    error = "EGL offers no desktop OpenGL";
    eglTerminate(display);
    return false;
  }
  const EGLint contextAttributes[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 3,
                                      EGL_CONTEXT_OPENGL_PROFILE_MASK, EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
  // Surfaceless: no config is needed where the driver allows it.
  EGLContext context = eglCreateContext(display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, contextAttributes);
  if (context == EGL_NO_CONTEXT) {
    error = "no OpenGL 3.3 core context could be made";
    eglTerminate(display);
    return false;
  }
  if (!eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context)) {
    error = "the OpenGL context cannot be made current without a surface";
    eglDestroyContext(display, context);
    eglTerminate(display);
    return false;
  }
  display_ = display;
  context_ = context;
  return true;
}

bool GlDevice::InitializeHeadless(std::string& error) {
  // Mesa's software renderer keeps its default of a rasteriser thread per core. Holding it to
  // the calling thread (which once measured faster for text frames) made full-screen layers fill
  // bound: measured again on two cores, every benchmark show runs faster with the threads (see
  // docs/performance.md). A value the user set stands.
  std::string why = "no EGL platform without a display was found";
  bool made = false;
  if (epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_MESA_platform_surfaceless"))
    made = MakeContext(eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr), why);
  if (!made && epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_EXT_platform_device")) {
    EGLDeviceEXT devices[8];
    EGLint count = 0;
    if (eglQueryDevicesEXT(8, devices, &count)) {
      for (EGLint i = 0; i < count && !made; ++i)
        made = MakeContext(eglGetPlatformDisplayEXT(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr), why);
    }
  }
  if (!made) {
    error = why;
    return false;
  }
  if (!InitializeGl(error)) return false;
  if (softwareRenderer_) {
    auto reader = std::make_unique<GlFrameReader>();
    std::string ignored;  // without a second context, frames are read on this thread
    if (reader->Start(display_, context_, backBufferTextures_, width_, height_, ignored)) reader_ = std::move(reader);
  }
  return true;
}

bool GlDevice::InitializeGl(std::string& error) {
  if (epoxy_gl_version() < 33) {
    error = "OpenGL 3.3 is needed; the driver offers " + std::to_string(epoxy_gl_version() / 10) + "." +
            std::to_string(epoxy_gl_version() % 10);
    return false;
  }
  renderer_ = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
  softwareRenderer_ = renderer_.find("llvmpipe") != std::string::npos ||
                      renderer_.find("softpipe") != std::string::npos || renderer_.find("swrast") != std::string::npos;
  const char* outputPass = std::getenv("LUMIVANE_OUTPUT_PASS");
  const std::string_view pass = outputPass != nullptr ? outputPass : "";
  finishByCompute_ = pass == "compute" || (pass != "draw" && !softwareRenderer_);
  GLint value = 0;
  glGetIntegerv(GL_MAX_TEXTURE_SIZE, &value);
  caps_.MaxTextureWidth = caps_.MaxTextureHeight = value;
  glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &value);
  caps_.MaxSimultaneousTextures = std::min(value, 8);
  glGetIntegerv(GL_MAX_ELEMENTS_VERTICES, &value);
  caps_.MaxVertexCount = value;
  caps_.SquareTexturesOnly = false;
  if (width_ < 1 || height_ < 1 || width_ > caps_.MaxTextureWidth || height_ > caps_.MaxTextureHeight) {
    error = "the back buffer of " + std::to_string(width_) + "x" + std::to_string(height_) +
            " cannot be made (the largest is " + std::to_string(caps_.MaxTextureWidth) + "x" +
            std::to_string(caps_.MaxTextureHeight) + ")";
    return false;
  }
  if (!MakeBackBuffers(error)) return false;

  glGenVertexArrays(3, vertexArrays_);
  glGenBuffers(1, &vertexBuffer_);
  glGenSamplers(1, &sampler_);
  glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer_);
  // The three layouts, each on its own vertex array over the one streaming buffer. Colours are
  // 0xAARRGGBB words, which GL reads as BGRA bytes.
  struct Layout {
    GLsizei stride;
    GLint positionSize;
    int colorOffset, specularOffset, texelOffset;
  };
  const Layout layouts[3] = {{32, 4, 16, 20, 24}, {28, 3, 12, 16, 20}, {16, 3, 12, -1, -1}};
  for (int i = 0; i < 3; ++i) {
    const Layout& l = layouts[i];
    glBindVertexArray(vertexArrays_[i]);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, l.positionSize, GL_FLOAT, GL_FALSE, l.stride, nullptr);
    glEnableVertexAttribArray(1);
    glVertexAttribPointer(1, GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE, l.stride, reinterpret_cast<const void*>(std::intptr_t{l.colorOffset}));
    if (l.specularOffset >= 0) {
      glEnableVertexAttribArray(2);
      glVertexAttribPointer(2, GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE, l.stride,
                            reinterpret_cast<const void*>(std::intptr_t{l.specularOffset}));
      glEnableVertexAttribArray(3);
      glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, l.stride, reinterpret_cast<const void*>(std::intptr_t{l.texelOffset}));
    } else {
      glVertexAttrib4f(2, 0, 0, 0, 0);
      glVertexAttrib2f(3, 0, 0);
    }
  }
  glBindVertexArray(0);
  ResetState();
  ready_ = true;
  // Made now rather than in the first frame that wants it: a shader compiled mid-show is a stutter.
  if (finishByCompute_) finishByCompute_ = MakeFinishProgram();
  // A fresh back buffer is black and opaque.
  for (int i = 0; i < kBackBuffers; ++i) {
    current_ = i;
    Clear(0xFF000000u, true);
  }
  current_ = 0;
  return true;
}

bool GlDevice::MakeBackBuffers(std::string& error) {
  glGenTextures(kBackBuffers, backBufferTextures_);
  glGenBuffers(kBackBuffers, pixelBuffers_);
  for (int i = 0; i < kBackBuffers; ++i) {
    glBindTexture(GL_TEXTURE_2D, backBufferTextures_[i]);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width_, height_, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    Target& t = backBuffers_[i];
    glGenFramebuffers(1, &t.framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, t.framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, backBufferTextures_[i], 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
      error = "the back buffer of " + std::to_string(width_) + "x" + std::to_string(height_) + " cannot be made";
      return false;
    }
    t.width = width_;
    t.height = height_;
    t.alpha = false;
  }
  glBindTexture(GL_TEXTURE_2D, 0);
  boundFramebuffer_ = backBuffers_[0].framebuffer;
  return true;
}

GlDevice::~GlDevice() {
  reader_.reset();  // its context goes before the one it shares with
  if (ready_ || backBuffers_[0].framebuffer != 0) {
    for (const auto& [key, program] : programs_) glDeleteProgram(program.name);
    if (finish_.name != 0) glDeleteProgram(finish_.name);
    for (Texture& t : textures_) {
      if (t.framebuffer != 0) glDeleteFramebuffers(1, &t.framebuffer);
      if (t.name != 0) glDeleteTextures(1, &t.name);
    }
    for (Mesh& m : meshes_) {
      if (m.vertexArray == 0) continue;
      glDeleteVertexArrays(1, &m.vertexArray);
      glDeleteBuffers(1, &m.vertices);
      glDeleteBuffers(1, &m.indices);
    }
    glDeleteVertexArrays(3, vertexArrays_);
    glDeleteBuffers(1, &vertexBuffer_);
    glDeleteSamplers(1, &sampler_);
    glDeleteBuffers(kBackBuffers, pixelBuffers_);
    for (Target& t : backBuffers_)
      if (t.framebuffer != 0) glDeleteFramebuffers(1, &t.framebuffer);
    glDeleteTextures(kBackBuffers, backBufferTextures_);
    if (depth_ != 0) glDeleteRenderbuffers(1, &depth_);
  }
  if (context_ != EGL_NO_CONTEXT) {
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display_, context_);
  }
  if (display_ != EGL_NO_DISPLAY) eglTerminate(display_);
}

// ---- Scene and targets -----------------------------------------------------------------------

bool GlDevice::EnsureDepth() {
  if (depth_ != 0) return true;
  // Made when a draw first tests depth: a show without 3D never holds the 8 MB of it.
  glGenRenderbuffers(1, &depth_);
  glBindRenderbuffer(GL_RENDERBUFFER, depth_);
  glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, width_, height_);
  for (const Target& t : backBuffers_) {
    glBindFramebuffer(GL_FRAMEBUFFER, t.framebuffer);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, depth_);
  }
  glBindFramebuffer(GL_FRAMEBUFFER, boundFramebuffer_);
  depthClearPending_ = true;
  return true;
}

void GlDevice::BeginScene() {
  Flush();
  // A context shared with a painter (the countdown, the identify numbers) may have changed any state.
  glStateValid_ = false;
}

void GlDevice::EndScene() { Flush(); }

void GlDevice::Clear(std::uint32_t color, bool zBuffer) {
  if (!ready_) return;
  Flush();
  const Target& target = CurrentTarget();
  if (!renderingToTexture_) {
    ClaimBackBuffer();
    carryPending_ = false;  // nothing of the last frame survives a clear
    const std::uint32_t opaque = color | 0xFF000000u;
    frameCleared_ = true;
    clearColor_ = opaque;
    if (preCleared_ == opaque) {  // the reader filled it already
      preCleared_ = 0;
      if (zBuffer) depthClearPending_ = true;
      return;
    }
    preCleared_ = 0;
  }
  if (boundFramebuffer_ != target.framebuffer || !glStateValid_) {
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
    boundFramebuffer_ = target.framebuffer;
  }
  glDisable(GL_SCISSOR_TEST);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  const float alpha = target.alpha ? static_cast<float>(color >> 24) / 255.0f : 1.0f;
  glClearColor(static_cast<float>((color >> 16) & 0xFF) / 255.0f, static_cast<float>((color >> 8) & 0xFF) / 255.0f,
               static_cast<float>(color & 0xFF) / 255.0f, alpha);
  glClear(GL_COLOR_BUFFER_BIT);
  // Depth and stencil are cleared when a draw first tests or writes depth: a frame without 3D
  // never pays for them.
  if (zBuffer) depthClearPending_ = true;
  glStateValid_ = false;  // the colour mask changed under the cached state
}

GlDevice::Texture* GlDevice::Find(TextureId id) {
  if (id == 0 || id > textures_.size()) return nullptr;
  Texture& t = textures_[id - 1];
  return t.name != 0 ? &t : nullptr;
}

const GlDevice::Texture* GlDevice::Find(TextureId id) const { return const_cast<GlDevice*>(this)->Find(id); }

GLuint GlDevice::FramebufferOf(Texture& texture) {
  if (texture.framebuffer == 0) {
    glGenFramebuffers(1, &texture.framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, texture.framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name, 0);
    boundFramebuffer_ = texture.framebuffer;
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
      glDeleteFramebuffers(1, &texture.framebuffer);
      texture.framebuffer = 0;
    }
  }
  return texture.framebuffer;
}

bool GlDevice::BeginRenderToTexture(TextureId id) {
  Flush();
  Texture* texture = Find(id);
  if (texture == nullptr || texture->format == TextureFormat::A8) return false;
  const GLuint framebuffer = FramebufferOf(*texture);
  if (framebuffer == 0) return false;
  textureTarget_ = Target{framebuffer, texture->width, texture->height, texture->format == TextureFormat::A8R8G8B8};
  renderingToTexture_ = true;
  glStateValid_ = false;
  return true;
}

void GlDevice::EndRenderToTexture() {
  Flush();
  renderingToTexture_ = false;
  glStateValid_ = false;
}

void GlDevice::ClaimBackBuffer() {
  if (!claimPending_) return;
  claimPending_ = false;
  if (!reader_) return;
  reader_->Wait(current_);
  if (GLsync fence = reader_->TakeClearFence(current_)) {
    glWaitSync(fence, 0, GL_TIMEOUT_IGNORED);
    glDeleteSync(fence);
    preCleared_ = reader_->ClearedWith(current_, clearColor_) ? clearColor_ : 0;
  }
}

void GlDevice::Carry() {
  ClaimBackBuffer();
  if (!carryPending_) return;
  carryPending_ = false;
  const int previous = (current_ + kBackBuffers - 1) % kBackBuffers;
  glBindFramebuffer(GL_READ_FRAMEBUFFER, backBuffers_[previous].framebuffer);
  glBindFramebuffer(GL_DRAW_FRAMEBUFFER, backBuffers_[current_].framebuffer);
  glBlitFramebuffer(0, 0, width_, height_, 0, 0, width_, height_, GL_COLOR_BUFFER_BIT, GL_NEAREST);
  glBindFramebuffer(GL_FRAMEBUFFER, boundFramebuffer_);
}

// ---- Textures -------------------------------------------------------------------------------

TextureId GlDevice::CreateTexture(int width, int height, TextureFormat format, bool renderTarget, bool exactSize) {
  if (!ready_ || width < 1 || height < 1) return 0;
  Flush();
  const int w = exactSize ? width : NextPowerOfTwo(width), h = exactSize ? height : NextPowerOfTwo(height);
  if (w > caps_.MaxTextureWidth || h > caps_.MaxTextureHeight) return 0;
  Texture t;
  t.width = w;
  t.height = h;
  t.format = format;
  t.renderTarget = renderTarget;
  glGenTextures(1, &t.name);
  glBindTexture(GL_TEXTURE_2D, t.name);
  GLenum internal, layout, type;
  UploadFormat(format, internal, layout, type);
  while (glGetError() != GL_NO_ERROR) {
  }
  glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(internal), w, h, 0, layout, type, nullptr);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
  if (format == TextureFormat::A8) {
    const GLint swizzle[4] = {GL_ONE, GL_ONE, GL_ONE, GL_RED};
    glTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_RGBA, swizzle);
  } else if (format == TextureFormat::X8R8G8B8) {
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_A, GL_ONE);
  }
  glBindTexture(GL_TEXTURE_2D, 0);
  if (glGetError() != GL_NO_ERROR) {  // out of memory: no texture, and the show goes on
    glDeleteTextures(1, &t.name);
    return 0;
  }
  glStateValid_ = false;  // the texture binding changed under the cached state
  if (!freeTextures_.empty()) {
    const TextureId id = freeTextures_.back();
    freeTextures_.pop_back();
    textures_[id - 1] = t;
    return id;
  }
  textures_.push_back(t);
  return static_cast<TextureId>(textures_.size());
}

TextureId GlDevice::CreateTextureFromImage(const TextureImage& image) {
  const TextureId id = CreateTexture(image.Width, image.Height, image.Format, false, false);
  if (id == 0) return 0;
  UpdateTexture(id, 0, 0, image.Width, image.Height, image.Pixels.data(),
                static_cast<std::ptrdiff_t>(image.Width) * BytesPerPixel(image.Format));
  return id;
}

void GlDevice::UpdateTexture(TextureId id, int x, int y, int width, int height, const void* pixels,
                             std::ptrdiff_t stride) {
  Texture* t = Find(id);
  if (t == nullptr || pixels == nullptr || width < 1 || height < 1 || x < 0 || y < 0 || x + width > t->width ||
      y + height > t->height)
    return;
  Flush();
  const int bytes = BytesPerPixel(t->format);
  if (stride <= 0 || stride % bytes != 0) return;
  GLenum internal, layout, type;
  UploadFormat(t->format, internal, layout, type);
  glBindTexture(GL_TEXTURE_2D, t->name);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(stride / bytes));
  glTexSubImage2D(GL_TEXTURE_2D, 0, x, y, width, height, layout, type, pixels);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  glBindTexture(GL_TEXTURE_2D, 0);
  glStateValid_ = false;
}

bool GlDevice::GetDesc(TextureId id, TextureDesc& desc) const {
  const Texture* t = Find(id);
  if (t == nullptr) return false;
  desc = TextureDesc{t->width, t->height, t->format, t->renderTarget};
  return true;
}

void GlDevice::ReleaseTexture(TextureId id) {
  Texture* t = Find(id);
  if (t == nullptr) return;
  Flush();
  if (renderingToTexture_ && textureTarget_.framebuffer == t->framebuffer && t->framebuffer != 0)
    EndRenderToTexture();
  if (state_.texture == id) state_.texture = 0;
  if (t->framebuffer != 0) glDeleteFramebuffers(1, &t->framebuffer);
  glDeleteTextures(1, &t->name);
  *t = Texture{};
  freeTextures_.push_back(id);
  glStateValid_ = false;
}

void GlDevice::CopyBackBufferToTexture(TextureId id, int sourceX, int sourceY, int width, int height, int x, int y) {
  Texture* t = Find(id);
  if (t == nullptr || t->format == TextureFormat::A8) return;
  Flush();
  Carry();
  sourceX = std::max(0, sourceX);
  sourceY = std::max(0, sourceY);
  width = std::min({width, width_ - sourceX, t->width - x});
  height = std::min({height, height_ - sourceY, t->height - y});
  if (width < 1 || height < 1 || x < 0 || y < 0) return;
  glBindFramebuffer(GL_READ_FRAMEBUFFER, backBuffers_[current_].framebuffer);
  glBindTexture(GL_TEXTURE_2D, t->name);
  glCopyTexSubImage2D(GL_TEXTURE_2D, 0, x, y, sourceX, sourceY, width, height);
  glBindTexture(GL_TEXTURE_2D, 0);
  glBindFramebuffer(GL_FRAMEBUFFER, boundFramebuffer_);
  glStateValid_ = false;
}

void GlDevice::BlitBackBuffer(GLuint framebuffer, int x0, int y0, int x1, int y1, const BlitSource& source) {
  // A stretch copy's start and extent in pixels; a negative extent reads from the far edge of its
  // start pixel backwards, which is a mirrored copy.
  auto edges = [](int start, int extent, int& from, int& to) {
    from = extent < 0 ? start + 1 : start;
    to = from + extent;
  };
  int sx0, sx1, sy0, sy1;
  edges(source.x, source.width, sx0, sx1);
  edges(source.y, source.height, sy0, sy1);
  glBindFramebuffer(GL_READ_FRAMEBUFFER, backBuffers_[current_].framebuffer);
  glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
  glDisable(GL_SCISSOR_TEST);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glBlitFramebuffer(sx0, sy0, sx1, sy1, x0, y0, x1, y1, GL_COLOR_BUFFER_BIT, GL_LINEAR);
  glBindFramebuffer(GL_FRAMEBUFFER, boundFramebuffer_);
  glStateValid_ = false;
}

void GlDevice::StretchBackBufferToTexture(TextureId id, const BlitSource& source) {
  Texture* t = Find(id);
  if (t == nullptr || t->format == TextureFormat::A8) return;
  Flush();
  Carry();
  const GLuint framebuffer = FramebufferOf(*t);
  if (framebuffer != 0) BlitBackBuffer(framebuffer, 0, 0, t->width, t->height, source);
}

void GlDevice::Present(int targetWidth, int targetHeight, std::uint32_t targetFramebuffer, const BlitSource& source) {
  if (!ready_) return;
  Flush();
  Carry();
  // A window's rows run bottom up: the copy turns the picture over.
  BlitBackBuffer(targetFramebuffer, 0, targetHeight, targetWidth, 0, source);
}

// ---- Read back --------------------------------------------------------------------------------

void GlDevice::CopyOut(QueuedFrame& frame) {
  if (frame.copied) return;
  glBindFramebuffer(GL_READ_FRAMEBUFFER, backBuffers_[frame.buffer].framebuffer);
  glReadBuffer(GL_COLOR_ATTACHMENT0);
  glBindBuffer(GL_PIXEL_PACK_BUFFER, pixelBuffers_[frame.buffer]);
  if (!pixelBufferSized_[frame.buffer]) {  // made when first used: a device with a reader never needs them
    glBufferData(GL_PIXEL_PACK_BUFFER, static_cast<GLsizeiptr>(width_) * height_ * 4, nullptr, GL_STREAM_READ);
    pixelBufferSized_[frame.buffer] = true;
  }
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  glReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  glBindFramebuffer(GL_FRAMEBUFFER, boundFramebuffer_);
  frame.copied = true;
}

void GlDevice::QueueReadBack() {
  if (!ready_) return;
  Flush();
  Carry();
  if (queued_ == kBackBuffers) {  // nobody took the oldest: it makes room
    queue_[0] = queue_[1];
    queued_ = 1;
  }
  if (reader_) {
    // The frame goes to the reader once the renderer has finished it; the next frame's drawing
    // waits only for the reader to be done with the buffer it draws into.
    GLsync fence = glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
    glFlush();
    // A show that clears every frame will clear this buffer again, most likely in the same colour.
    reader_->Submit(current_, fence, frameCleared_, clearColor_);
    frameCleared_ = false;
    queue_[queued_++] = QueuedFrame{current_, true};
    claimPending_ = true;
  } else if (softwareRenderer_) {
    // Hand this frame to the renderer's threads first, then copy the one before it while they work.
    glFlush();
    for (int i = 0; i < queued_; ++i) CopyOut(queue_[i]);
    queue_[queued_++] = QueuedFrame{current_, false};
  } else {
    queue_[queued_] = QueuedFrame{current_, false};
    CopyOut(queue_[queued_++]);
  }
  current_ = (current_ + 1) % kBackBuffers;
  carryPending_ = true;
  glStateValid_ = false;
}

bool GlDevice::Deliver(QueuedFrame& frame, const FrameSink& sink) {
  const auto row = static_cast<std::ptrdiff_t>(width_) * 4;
  if (reader_) {
    const std::uint8_t* pixels = reader_->Wait(frame.buffer);
    if (pixels != nullptr && sink) sink(pixels, row);
    return pixels != nullptr;
  }
  CopyOut(frame);
  glBindBuffer(GL_PIXEL_PACK_BUFFER, pixelBuffers_[frame.buffer]);
  const auto* pixels = static_cast<const std::uint8_t*>(
      glMapBufferRange(GL_PIXEL_PACK_BUFFER, 0, static_cast<GLsizeiptr>(row * height_), GL_MAP_READ_BIT));
  if (pixels != nullptr) {
    if (sink) sink(pixels, row);
    glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
  }
  glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  return pixels != nullptr;
}

bool GlDevice::TakeReadBack(const FrameSink& sink) {
  if (queued_ < kBackBuffers) return false;  // the newest frame stays until the next one is queued
  QueuedFrame oldest = queue_[0];
  queue_[0] = queue_[1];
  queued_ = 1;
  return Deliver(oldest, sink);
}

bool GlDevice::FlushReadBack(const FrameSink& sink) {
  if (queued_ == 0) return false;
  QueuedFrame oldest = queue_[0];
  queue_[0] = queue_[1];
  --queued_;
  return Deliver(oldest, sink);
}

bool GlDevice::ReadBackNow(const FrameSink& sink) {
  if (!ready_) return false;
  Flush();
  Carry();
  readNow_.resize(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 4);
  glBindFramebuffer(GL_READ_FRAMEBUFFER, backBuffers_[current_].framebuffer);
  glReadBuffer(GL_COLOR_ATTACHMENT0);
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  glReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, readNow_.data());
  glBindFramebuffer(GL_FRAMEBUFFER, boundFramebuffer_);
  if (sink) sink(readNow_.data(), static_cast<std::ptrdiff_t>(width_) * 4);
  return true;
}

bool GlDevice::ReadTexture(TextureId id, const FrameSink& sink) {
  Texture* t = Find(id);
  if (t == nullptr) return false;
  Flush();
  const std::size_t pixels = static_cast<std::size_t>(t->width) * static_cast<std::size_t>(t->height);
  std::vector<std::uint8_t> rgba(pixels * 4);
  glBindTexture(GL_TEXTURE_2D, t->name);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  if (t->format == TextureFormat::A8) {
    std::vector<std::uint8_t> alpha(pixels);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RED, GL_UNSIGNED_BYTE, alpha.data());
    for (std::size_t i = 0; i < pixels; ++i) {
      rgba[i * 4] = rgba[i * 4 + 1] = rgba[i * 4 + 2] = 255;
      rgba[i * 4 + 3] = alpha[i];
    }
  } else {
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    if (t->format == TextureFormat::X8R8G8B8)
      for (std::size_t i = 0; i < pixels; ++i) rgba[i * 4 + 3] = 255;
  }
  glBindTexture(GL_TEXTURE_2D, 0);
  glStateValid_ = false;
  if (sink) sink(rgba.data(), static_cast<std::ptrdiff_t>(t->width) * 4);
  return true;
}

// ---- Factories ------------------------------------------------------------------------------

RenderDevice::FrameSink RenderDevice::CopyInto(std::vector<std::uint8_t>& rgba, int width, int height) {
  return [&rgba, width, height](const std::uint8_t* top, std::ptrdiff_t stride) {
    const auto row = static_cast<std::size_t>(width) * 4;
    rgba.resize(row * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) std::memcpy(rgba.data() + static_cast<std::size_t>(y) * row, top + y * stride, row);
  };
}

std::unique_ptr<RenderDevice> CreateHeadlessDevice(int width, int height, std::string& error) {
  auto device = std::make_unique<GlDevice>(width, height);
  if (!device->InitializeHeadless(error)) return nullptr;
  return device;
}

std::unique_ptr<RenderDevice> CreateDeviceOnCurrentContext(int width, int height, std::string& error) {
  auto device = std::make_unique<GlDevice>(width, height);
  if (!device->InitializeGl(error)) return nullptr;
  return device;
}

}  // namespace lumivane
