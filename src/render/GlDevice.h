#pragma once
// The OpenGL 3.3 core device (4.3 compute for the output pass where offered): on an EGL context
// without a surface (headless), or on a window's.
// Internal to the render library; everything else sees RenderDevice.

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "render/GlFrameReader.h"
#include "render/RenderDevice.h"

namespace lumivane {

// A compiled shader of `kind`, or 0 when it does not compile.
GLuint CompileShader(GLenum kind, const std::string& source);

class GlDevice final : public RenderDevice {
 public:
  GlDevice(int width, int height) : width_(width), height_(height) {}
  ~GlDevice() override;

  // Makes an EGL context without a surface and the device on it.
  bool InitializeHeadless(std::string& error);
  // Makes the device on the context current now (a window's).
  bool InitializeGl(std::string& error);

  int BackBufferWidth() const noexcept override { return width_; }
  int BackBufferHeight() const noexcept override { return height_; }
  DeviceCaps Caps() const override { return caps_; }
  std::string Renderer() const override { return renderer_; }

  void BeginScene() override;
  void EndScene() override;
  void Clear(std::uint32_t color, bool zBuffer) override;

  void SetRenderState(RenderState state, std::uint32_t value) override;
  std::uint32_t GetRenderState(RenderState state) const override;
  void SetTextureStageState(TextureStageState state, std::uint32_t value) override;
  std::uint32_t GetTextureStageState(TextureStageState state) const override;
  void SetTransform(TransformState state, const Matrix& matrix) override;
  void SetTexture(TextureId texture) override;
  void SetVertexShader(VertexFormat format) override;
  void DrawPrimitiveUP(PrimitiveType type, std::uint32_t primitiveCount, const void* vertices,
                       std::uint32_t stride) override;

  MeshId CreateMesh(const MeshData& mesh) override;
  void DrawMeshSubset(MeshId mesh, std::uint32_t subset) override;
  void ReleaseMesh(MeshId mesh) override;
  void SetMaterial(const MeshMaterial& material) override;
  void SetLight(const Light& light) override;
  void LightEnable(bool on) override;

  TextureId CreateTexture(int width, int height, TextureFormat format, bool renderTarget, bool exactSize) override;
  TextureId CreateTextureFromImage(const TextureImage& image) override;
  void UpdateTexture(TextureId texture, int x, int y, int width, int height, const void* pixels,
                     std::ptrdiff_t stride) override;
  bool GetDesc(TextureId texture, TextureDesc& desc) const override;
  void ReleaseTexture(TextureId texture) override;
  bool BeginRenderToTexture(TextureId texture) override;
  void EndRenderToTexture() override;
  void CopyBackBufferToTexture(TextureId texture, int sourceX, int sourceY, int width, int height, int x,
                               int y) override;
  void StretchBackBufferToTexture(TextureId texture, const BlitSource& source) override;

  bool FinishOutput(const OutputFinish& finish) override;
  void Present(int targetWidth, int targetHeight, std::uint32_t targetFramebuffer, const BlitSource& source) override;
  void QueueReadBack() override;
  bool TakeReadBack(const FrameSink& sink) override;
  bool FlushReadBack(const FrameSink& sink) override;
  bool ReadBackNow(const FrameSink& sink) override;
  bool ReadTexture(TextureId texture, const FrameSink& sink) override;

 private:
  static constexpr int kBackBuffers = 2;

  struct Texture {
    GLuint name = 0;
    GLuint framebuffer = 0;  // made when first rendered to or stretched into
    int width = 0, height = 0;
    TextureFormat format = TextureFormat::A8R8G8B8;
    bool renderTarget = false;
  };
  // What draws go to: a back buffer or a texture.
  struct Target {
    GLuint framebuffer = 0;
    int width = 0, height = 0;
    bool alpha = false;  // a back buffer keeps its alpha at 1
  };
  // A mesh in the device's memory: its vertex array over its own vertex and index buffers.
  struct Mesh {
    GLuint vertexArray = 0, vertices = 0, indices = 0;
    std::vector<MeshSubset> subsets;
  };
  // A shader program for one combination of vertex layout, lighting, texture coordinates and
  // stage-0 operations.
  struct Program {
    GLuint name = 0;
    GLint viewport = -1, transform = -1, factor = -1;
    GLint worldView = -1, normalMatrix = -1, textureMatrix = -1;
    GLint materialDiffuse = -1, materialAmbient = -1, materialSpecular = -1, materialEmissive = -1, materialPower = -1;
    GLint ambient = -1, lightOn = -1, lightDiffuse = -1, lightSpecular = -1, lightAmbient = -1, lightDirection = -1;
    bool eyeSpace = false;  // lit, or with texture coordinates made or transformed: the uniforms above are set
  };
  // The state a draw is made under; draws under equal state are batched.
  struct DrawState {
    std::uint32_t render[176] = {};
    std::uint32_t stage[25] = {};
    TextureId texture = 0;
    VertexFormat format = VertexFormat::TL;
  };
  // A frame queued for read back: which back buffer holds it, and whether it has been copied out.
  struct QueuedFrame {
    int buffer = 0;
    bool copied = false;
  };

  bool MakeContext(EGLDisplay display, std::string& error);
  bool MakeBackBuffers(std::string& error);
  void ResetState();
  const Texture* Find(TextureId id) const;
  Texture* Find(TextureId id);
  GLuint FramebufferOf(Texture& texture);
  const Target& CurrentTarget() const { return renderingToTexture_ ? textureTarget_ : backBuffers_[current_]; }
  // Draws what is batched; every operation other than a draw calls it first.
  void Flush();
  void ApplyState(const Target& target);
  // The sampler as the current stage states set it: filters and addressing.
  void ApplySampler(const DrawState& s);
  // Makes the output pass's program and tries it; false (and no program) when it cannot be used.
  bool MakeFinishProgram();
  bool FinishProgramWorks();
  void RunFinish(GLuint image, int width, int height, const OutputFinish& finish, const Texture* mask,
                 const Texture* picture);
  void SetLightingUniforms(const Program& program, const DrawState& s);
  const Program* ProgramFor(const DrawState& state);
  // A frame that begins without a clear inherits the last frame's pixels, as a single back buffer
  // would keep them.
  void Carry();
  bool EnsureDepth();
  // The reader may still be copying the back buffer a new frame is about to draw into.
  void ClaimBackBuffer();
  void CopyOut(QueuedFrame& frame);
  bool Deliver(QueuedFrame& frame, const FrameSink& sink);
  void BlitBackBuffer(GLuint framebuffer, int x0, int y0, int x1, int y1, const BlitSource& source);

  int width_;
  int height_;
  EGLDisplay display_ = EGL_NO_DISPLAY;
  EGLContext context_ = EGL_NO_CONTEXT;
  std::string renderer_;
  DeviceCaps caps_;
  bool ready_ = false;
  // A software renderer copies at glReadPixels time: the copy of a frame waits until the next one
  // has been handed to its threads. A GPU copies asynchronously: right away.
  bool softwareRenderer_ = false;

  Target backBuffers_[kBackBuffers];
  GLuint backBufferTextures_[kBackBuffers] = {0, 0};
  GLuint depth_ = 0;
  GLuint pixelBuffers_[kBackBuffers] = {0, 0};
  bool pixelBufferSized_[kBackBuffers] = {false, false};
  int current_ = 0;
  bool carryPending_ = false;
  bool depthClearPending_ = false;
  QueuedFrame queue_[kBackBuffers];
  int queued_ = 0;
  std::unique_ptr<GlFrameReader> reader_;  // headless on a software renderer
  bool claimPending_ = false;
  bool frameCleared_ = false;      // this frame began with a clear of the back buffer
  std::uint32_t clearColor_ = 0;   // the last clear colour of the back buffer
  std::uint32_t preCleared_ = 0;   // the colour the reader filled the current buffer with; 0 none
  std::vector<std::uint8_t> readNow_;

  bool renderingToTexture_ = false;
  Target textureTarget_;

  std::vector<Texture> textures_;  // by id - 1; a released slot has name 0
  std::vector<TextureId> freeTextures_;

  DrawState state_;       // as set
  DrawState batchState_;  // what the batch is drawn under
  Matrix world_, view_, projection_, texture0_;
  MeshMaterial material_;
  Light light_;
  bool lightOn_ = false;
  std::vector<Mesh> meshes_;  // by id - 1; a released slot has vertexArray 0
  std::vector<MeshId> freeMeshes_;
  bool transformChanged_ = true;
  std::unordered_map<std::uint64_t, Program> programs_;
  const Program* program_ = nullptr;
  GLuint vertexArrays_[3] = {0, 0, 0};
  GLuint vertexBuffer_ = 0;
  GLuint sampler_ = 0;
  // The output pass's compute program, made with the device where it is to be used.
  struct FinishProgram {
    GLuint name = 0;
    GLint invert = -1, mask = -1, tint = -1, size = -1;
    GLint layer = -1, layerRect = -1, layerExtent = -1, layerTextured = -1, layerColor = -1, layerBlend = -1;
  } finish_;
  // Whether the output stage runs as the compute pass: on a GPU, where it spares the blending
  // units two full-screen passes; not on a software renderer, which blends in its own SIMD code
  // faster than it runs compute. LUMIVANE_OUTPUT_PASS=compute or =draw chooses either way.
  bool finishByCompute_ = false;
  bool glStateValid_ = false;
  GLuint boundFramebuffer_ = 0;

  // The batch: vertices of consecutive triangle lists under one state.
  std::vector<std::uint8_t> batch_;
  std::uint32_t batchVertices_ = 0;
  PrimitiveType batchType_ = PrimitiveType::TriangleList;
};

}  // namespace lumivane
