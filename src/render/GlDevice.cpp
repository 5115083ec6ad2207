// The OpenGL 3.3 core device: on an EGL context without a surface (headless), or on a window's.
#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <cstring>

#include "render/RenderDevice.h"

namespace lumivane {

namespace {

// Two pixel buffers: while one is read, the other receives the next frame.
constexpr int kReadBuffers = 2;

class GlDevice final : public RenderDevice {
 public:
  GlDevice(int width, int height) : width_(width), height_(height) {}
  ~GlDevice() override;

  // Makes an EGL context without a surface and the device on it.
  bool InitializeHeadless(std::string& error);
  // Makes the device on the context current now (a window's).
  bool InitializeGl(std::string& error);
  void Present(int targetWidth, int targetHeight, std::uint32_t targetFramebuffer) override;
  int BackBufferWidth() const noexcept override { return width_; }
  int BackBufferHeight() const noexcept override { return height_; }
  void BeginScene() override {
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
    glViewport(0, 0, width_, height_);
    // A context shared with a painter (the countdown) may have left these set.
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_STENCIL_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
  }
  void Clear(std::uint32_t color) override {
    glClearColor(static_cast<float>((color >> 16) & 0xFF) / 255.0f, static_cast<float>((color >> 8) & 0xFF) / 255.0f,
                 static_cast<float>(color & 0xFF) / 255.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  }
  void EndScene() override {}
  void QueueReadBack() override;
  bool TakeReadBack(const FrameSink& sink) override;
  bool FlushReadBack(const FrameSink& sink) override;
  std::string Renderer() const override { return renderer_; }
  void DrawTextQuads(const std::uint8_t* atlas, int atlasSize, bool atlasChanged, const float* quads,
                     std::size_t quadCount, std::uint32_t color) override;
  void SetBlend(int sourceCode, int destinationCode) override;
  void DrawQuads(const float* rects, std::size_t quadCount, std::uint32_t color) override;

 private:
  bool MakeTextProgram();
  // Uploads vertices_ and draws them as triangles with `program`, whose uniforms are the
  // viewport and the colour; `blend` with the given factors, colour only (alpha stays 1).
  void DrawVertices(GLuint program, GLint viewportUniform, GLint colorUniform, std::uint32_t color, bool blend,
                    GLenum source, GLenum destination);
  bool MakeContext(EGLDisplay display, std::string& error);
  bool Deliver(int buffer, const FrameSink& sink);

  int width_;
  int height_;
  EGLDisplay display_ = EGL_NO_DISPLAY;
  EGLContext context_ = EGL_NO_CONTEXT;
  GLuint framebuffer_ = 0;
  GLuint color_ = 0;
  GLuint depth_ = 0;
  GLuint pixelBuffers_[kReadBuffers] = {0, 0};
  bool queued_[kReadBuffers] = {false, false};
  int next_ = 0;  // the buffer the next frame is read into
  std::string renderer_;
  // Text drawing: program, vertex state, atlas texture, and the vertices rebuilt each draw.
  GLuint textProgram_ = 0, textVao_ = 0, textVbo_ = 0, atlasTexture_ = 0;
  GLint viewportUniform_ = -1, colorUniform_ = -1;
  int atlasSize_ = 0;
  std::vector<float> vertices_;
  GLuint solidProgram_ = 0;
  GLint solidViewport_ = -1, solidColor_ = -1;
  bool blending_ = false;
  GLenum blendSource_ = GL_ONE, blendDestination_ = GL_ZERO;
};

constexpr const char* kSolidFragment = R"(#version 330 core
uniform vec4 color;
in vec2 atlasTexel;
out vec4 fragment;
void main() { fragment = color; }
)";

// The GL factor of a blend code.
GLenum BlendFactor(int code) {
  switch (code) {
    case 1: return GL_ZERO;
    case 3: return GL_SRC_COLOR;
    case 4: return GL_ONE_MINUS_SRC_COLOR;
    case 5: return GL_SRC_ALPHA;
    case 6: return GL_ONE_MINUS_SRC_ALPHA;
    case 7: return GL_DST_ALPHA;
    case 8: return GL_ONE_MINUS_DST_ALPHA;
    case 9: return GL_DST_COLOR;
    case 10: return GL_ONE_MINUS_DST_COLOR;
    case 11: return GL_SRC_ALPHA_SATURATE;
    default: return GL_ONE;
  }
}

constexpr const char* kTextVertex = R"(#version 330 core
layout(location = 0) in vec2 position;
layout(location = 1) in vec2 texel;
uniform vec2 viewport;
out vec2 atlasTexel;
void main() {
  atlasTexel = texel;
  gl_Position = vec4(position.x / viewport.x * 2.0 - 1.0, 1.0 - position.y / viewport.y * 2.0, 0.0, 1.0);
}
)";

constexpr const char* kTextFragment = R"(#version 330 core
uniform sampler2D atlas;
uniform vec4 color;
in vec2 atlasTexel;
out vec4 fragment;
void main() { fragment = vec4(color.rgb, color.a * texture(atlas, atlasTexel).r); }
)";

GLuint Compile(GLenum kind, const char* source) {
  const GLuint shader = glCreateShader(kind);
  glShaderSource(shader, 1, &source, nullptr);
  glCompileShader(shader);
  GLint ok = GL_FALSE;
  glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
  if (ok != GL_TRUE) {
    glDeleteShader(shader);
    return 0;
  }
  return shader;
}

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
  return InitializeGl(error);
}

bool GlDevice::InitializeGl(std::string& error) {
  if (epoxy_gl_version() < 33) {
    error = "OpenGL 3.3 is needed; the driver offers " + std::to_string(epoxy_gl_version() / 10) + "." +
            std::to_string(epoxy_gl_version() % 10);
    return false;
  }
  renderer_ = reinterpret_cast<const char*>(glGetString(GL_RENDERER));

  glGenFramebuffers(1, &framebuffer_);
  glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
  glGenRenderbuffers(1, &color_);
  glBindRenderbuffer(GL_RENDERBUFFER, color_);
  glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width_, height_);
  glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, color_);
  glGenRenderbuffers(1, &depth_);
  glBindRenderbuffer(GL_RENDERBUFFER, depth_);
  glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, width_, height_);
  glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, depth_);
  if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
    error = "the back buffer of " + std::to_string(width_) + "x" + std::to_string(height_) + " cannot be made";
    return false;
  }
  glGenBuffers(kReadBuffers, pixelBuffers_);
  for (GLuint b : pixelBuffers_) {
    glBindBuffer(GL_PIXEL_PACK_BUFFER, b);
    glBufferData(GL_PIXEL_PACK_BUFFER, static_cast<GLsizeiptr>(width_) * height_ * 4, nullptr, GL_STREAM_READ);
  }
  glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  return true;
}

bool GlDevice::MakeTextProgram() {
  const GLuint vs = Compile(GL_VERTEX_SHADER, kTextVertex);
  const GLuint fs = Compile(GL_FRAGMENT_SHADER, kTextFragment);
  if (vs == 0 || fs == 0) return false;
  textProgram_ = glCreateProgram();
  glAttachShader(textProgram_, vs);
  glAttachShader(textProgram_, fs);
  glLinkProgram(textProgram_);
  glDeleteShader(vs);
  glDeleteShader(fs);
  GLint linked = GL_FALSE;
  glGetProgramiv(textProgram_, GL_LINK_STATUS, &linked);
  if (linked != GL_TRUE) return false;
  viewportUniform_ = glGetUniformLocation(textProgram_, "viewport");
  colorUniform_ = glGetUniformLocation(textProgram_, "color");
  glGenVertexArrays(1, &textVao_);
  glBindVertexArray(textVao_);
  glGenBuffers(1, &textVbo_);
  glBindBuffer(GL_ARRAY_BUFFER, textVbo_);
  glEnableVertexAttribArray(0);
  glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 4 * sizeof(float), nullptr);
  glEnableVertexAttribArray(1);
  glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 4 * sizeof(float), reinterpret_cast<const void*>(2 * sizeof(float)));
  glGenTextures(1, &atlasTexture_);
  return true;
}

void GlDevice::SetBlend(int sourceCode, int destinationCode) {
  blending_ = sourceCode != 0 && destinationCode != 0;
  if (sourceCode == 12) {  // both from the source alpha
    blendSource_ = GL_SRC_ALPHA;
    blendDestination_ = GL_ONE_MINUS_SRC_ALPHA;
  } else if (sourceCode == 13) {
    blendSource_ = GL_ONE_MINUS_SRC_ALPHA;
    blendDestination_ = GL_SRC_ALPHA;
  } else {
    blendSource_ = BlendFactor(sourceCode);
    blendDestination_ = destinationCode == 11 ? GL_ONE : BlendFactor(destinationCode);  // saturate is source-only
  }
}

void GlDevice::DrawQuads(const float* rects, std::size_t quadCount, std::uint32_t color) {
  if (quadCount == 0) return;
  if (textProgram_ == 0 && !MakeTextProgram()) return;
  if (solidProgram_ == 0) {
    const GLuint vs = Compile(GL_VERTEX_SHADER, kTextVertex);
    const GLuint fs = Compile(GL_FRAGMENT_SHADER, kSolidFragment);
    if (vs == 0 || fs == 0) return;
    solidProgram_ = glCreateProgram();
    glAttachShader(solidProgram_, vs);
    glAttachShader(solidProgram_, fs);
    glLinkProgram(solidProgram_);
    glDeleteShader(vs);
    glDeleteShader(fs);
    solidViewport_ = glGetUniformLocation(solidProgram_, "viewport");
    solidColor_ = glGetUniformLocation(solidProgram_, "color");
  }
  vertices_.clear();
  for (std::size_t q = 0; q < quadCount; ++q) {
    const float* r = rects + q * 4;
    const float corners[6][4] = {{r[0], r[1], 0, 0}, {r[2], r[1], 0, 0}, {r[2], r[3], 0, 0},
                                 {r[0], r[1], 0, 0}, {r[2], r[3], 0, 0}, {r[0], r[3], 0, 0}};
    for (const auto& c : corners) vertices_.insert(vertices_.end(), c, c + 4);
  }
  DrawVertices(solidProgram_, solidViewport_, solidColor_, color, blending_, blendSource_, blendDestination_);
}

void GlDevice::DrawVertices(GLuint program, GLint viewportUniform, GLint colorUniform, std::uint32_t color, bool blend,
                            GLenum source, GLenum destination) {
  glUseProgram(program);
  glUniform2f(viewportUniform, static_cast<float>(width_), static_cast<float>(height_));
  glUniform4f(colorUniform, static_cast<float>((color >> 16) & 0xFF) / 255.0f,
              static_cast<float>((color >> 8) & 0xFF) / 255.0f, static_cast<float>(color & 0xFF) / 255.0f,
              static_cast<float>((color >> 24) & 0xFF) / 255.0f);
  glBindVertexArray(textVao_);
  glBindBuffer(GL_ARRAY_BUFFER, textVbo_);
  glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertices_.size() * sizeof(float)), vertices_.data(),
               GL_STREAM_DRAW);
  if (blend) {
    glEnable(GL_BLEND);
    // The back buffer's alpha stays 1, as on an X8R8G8B8 buffer.
    glBlendFuncSeparate(source, destination, GL_ZERO, GL_ONE);
  }
  glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(vertices_.size() / 4));
  glDisable(GL_BLEND);
}

void GlDevice::DrawTextQuads(const std::uint8_t* atlas, int atlasSize, bool atlasChanged, const float* quads,
                                     std::size_t quadCount, std::uint32_t color) {
  if (quadCount == 0) return;
  if (textProgram_ == 0 && !MakeTextProgram()) return;  // no text without its program; the frame goes on
  glBindTexture(GL_TEXTURE_2D, atlasTexture_);
  if (atlasChanged || atlasSize != atlasSize_) {
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_R8, atlasSize, atlasSize, 0, GL_RED, GL_UNSIGNED_BYTE, atlas);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    atlasSize_ = atlasSize;
  }
  vertices_.clear();
  for (std::size_t q = 0; q < quadCount; ++q) {
    const float* v = quads + q * 8;
    const float corners[6][4] = {{v[0], v[1], v[4], v[5]}, {v[2], v[1], v[6], v[5]}, {v[2], v[3], v[6], v[7]},
                                 {v[0], v[1], v[4], v[5]}, {v[2], v[3], v[6], v[7]}, {v[0], v[3], v[4], v[7]}};
    for (const auto& c : corners) vertices_.insert(vertices_.end(), c, c + 4);
  }
  DrawVertices(textProgram_, viewportUniform_, colorUniform_, color, true, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void GlDevice::Present(int targetWidth, int targetHeight, std::uint32_t targetFramebuffer) {
  // The back buffer stretched onto the window: one blit.
  glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer_);
  glBindFramebuffer(GL_DRAW_FRAMEBUFFER, targetFramebuffer);
  glBlitFramebuffer(0, 0, width_, height_, 0, 0, targetWidth, targetHeight, GL_COLOR_BUFFER_BIT, GL_LINEAR);
  glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
}

GlDevice::~GlDevice() {
  if (framebuffer_ != 0) {
    if (solidProgram_ != 0) glDeleteProgram(solidProgram_);
    if (textProgram_ != 0) {
      glDeleteProgram(textProgram_);
      glDeleteVertexArrays(1, &textVao_);
      glDeleteBuffers(1, &textVbo_);
      glDeleteTextures(1, &atlasTexture_);
    }
    glDeleteBuffers(kReadBuffers, pixelBuffers_);
    glDeleteRenderbuffers(1, &depth_);
    glDeleteRenderbuffers(1, &color_);
    glDeleteFramebuffers(1, &framebuffer_);
  }
  if (context_ != EGL_NO_CONTEXT) {
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display_, context_);
  }
  if (display_ != EGL_NO_DISPLAY) eglTerminate(display_);
}

void GlDevice::QueueReadBack() {
  glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer_);
  glReadBuffer(GL_COLOR_ATTACHMENT0);
  glBindBuffer(GL_PIXEL_PACK_BUFFER, pixelBuffers_[next_]);
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  glReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  queued_[next_] = true;
  next_ = (next_ + 1) % kReadBuffers;
}

bool GlDevice::Deliver(int buffer, const FrameSink& sink) {
  if (!queued_[buffer]) return false;
  queued_[buffer] = false;
  const auto row = static_cast<std::ptrdiff_t>(width_) * 4;
  const auto size = row * height_;
  glBindBuffer(GL_PIXEL_PACK_BUFFER, pixelBuffers_[buffer]);
  const auto* pixels = static_cast<const std::uint8_t*>(
      glMapBufferRange(GL_PIXEL_PACK_BUFFER, 0, static_cast<GLsizeiptr>(size), GL_MAP_READ_BIT));
  // GL's rows run bottom up: the top row is the last one, and the stride walks backwards.
  if (pixels != nullptr) {
    if (sink) sink(pixels + (height_ - 1) * row, -row);
    glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
  }
  glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  return pixels != nullptr;
}

bool GlDevice::TakeReadBack(const FrameSink& sink) {
  // The buffer that will be written next holds the frame queued before the last one.
  return Deliver(next_, sink);
}

bool GlDevice::FlushReadBack(const FrameSink& sink) {
  return Deliver((next_ + kReadBuffers - 1) % kReadBuffers, sink);
}

}  // namespace

RenderDevice::FrameSink RenderDevice::CopyInto(std::vector<std::uint8_t>& rgba) const {
  return [this, &rgba](const std::uint8_t* top, std::ptrdiff_t stride) {
    const auto row = static_cast<std::size_t>(BackBufferWidth()) * 4;
    rgba.resize(row * static_cast<std::size_t>(BackBufferHeight()));
    for (int y = 0; y < BackBufferHeight(); ++y) std::memcpy(rgba.data() + y * row, top + y * stride, row);
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
