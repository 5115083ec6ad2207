#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/BlitSource.h"
#include "render/Matrix.h"
#include "render/MeshData.h"
#include "render/Vertex.h"

namespace lumivane {

struct TextureImage;

// A texture of the device; 0 is none. Every texture dies with its device.
using TextureId = std::uint32_t;

// A mesh held by the device (vertices and indices in its memory); 0 is none. Every mesh dies with
// its device.
using MeshId = std::uint32_t;

// The one light of lit meshes: directional, shining along `Direction` (world space). Colours are
// floats 0..1 (r, g, b, a).
struct Light {
  float Diffuse[4] = {1, 1, 1, 1};
  float Specular[4] = {0, 0, 0, 0};
  float Ambient[4] = {0, 0, 0, 0};
  float Direction[3] = {0, 0, 1};
};

// Texture formats by their device codes. X8R8G8B8 reads its alpha as 1; A8 is coverage only and
// samples as white with that alpha.
enum class TextureFormat : std::uint32_t { A8R8G8B8 = 21, X8R8G8B8 = 22, A8 = 28 };

struct TextureDesc {
  int Width = 0;   // the real size: a power of two at least as large as asked for
  int Height = 0;
  TextureFormat Format = TextureFormat::A8R8G8B8;
  bool RenderTarget = false;
};

// The render states the passes set, by their device codes. The values they take are named below.
enum class RenderState : std::uint32_t {
  ZENABLE = 7,
  FILLMODE = 8,       // FillMode
  SHADEMODE = 9,      // ShadeMode
  ZWRITEENABLE = 14,
  SRCBLEND = 19,      // Blend
  DESTBLEND = 20,     // Blend
  CULLMODE = 22,      // CullMode
  ZFUNC = 23,         // ZFunc
  DITHERENABLE = 26,
  ALPHABLENDENABLE = 27,
  FOGENABLE = 28,
  SPECULARENABLE = 29,
  STENCILENABLE = 52,
  TEXTUREFACTOR = 60,
  LIGHTING = 137,     // lights meshes by the material and the light; other layouts keep their colours
  AMBIENT = 139,      // 0xAARRGGBB, times the material's ambient colour
  COLORVERTEX = 141,
  NORMALIZENORMALS = 143,
  DIFFUSEMATERIALSOURCE = 145,  // MaterialSource
  SPECULARMATERIALSOURCE = 146,
  AMBIENTMATERIALSOURCE = 147,
  EMISSIVEMATERIALSOURCE = 148,
  VERTEXBLEND = 151,
  CLIPPLANEENABLE = 152,
  COLORWRITEENABLE = 168,  // ColorWrite bits
};

// Stage 0's colour and alpha operations and sampling, by their device codes.
enum class TextureStageState : std::uint32_t {
  COLOROP = 1,    // TextureOp
  COLORARG1 = 2,  // TextureArg
  COLORARG2 = 3,
  ALPHAOP = 4,
  ALPHAARG1 = 5,
  ALPHAARG2 = 6,
  TEXCOORDINDEX = 11,  // TexCoordIndex
  ADDRESSU = 13,  // TextureAddress
  ADDRESSV = 14,
  MAGFILTER = 16,  // TextureFilter
  MINFILTER = 17,
  MIPFILTER = 18,
  TEXTURETRANSFORMFLAGS = 24,  // TextureTransform
};

// The values of the states above, by their device codes (the numbers are the device's and never
// change). The enabling states (ZENABLE, LIGHTING...) take 0 and 1.
namespace CullMode {
inline constexpr std::uint32_t None = 1, Clockwise = 2, CounterClockwise = 3;  // counter-clockwise: the default
}
namespace FillMode {
inline constexpr std::uint32_t Point = 1, Wireframe = 2, Solid = 3;
}
namespace ShadeMode {
inline constexpr std::uint32_t Flat = 1, Gouraud = 2;
}
// What a pixel's depth must be against the depth buffer's to be drawn; less-equal is the default.
namespace ZFunc {
inline constexpr std::uint32_t Never = 1, Less = 2, Equal = 3, LessEqual = 4, Greater = 5, NotEqual = 6,
                               GreaterEqual = 7, Always = 8;
}
// MAGFILTER, MINFILTER and MIPFILTER (None only there).
namespace TextureFilter {
inline constexpr std::uint32_t None = 0, Point = 1, Linear = 2, Anisotropic = 3;
}
// ADDRESSU and ADDRESSV.
namespace TextureAddress {
inline constexpr std::uint32_t Wrap = 1, Mirror = 2, Clamp = 3, Border = 4, MirrorOnce = 5;
}
// COLOROP and ALPHAOP, with a and b the first and second argument.
namespace TextureOp {
inline constexpr std::uint32_t Disable = 1,      // the diffuse colour passes on
    SelectArg1 = 2, SelectArg2 = 3,
    Modulate = 4, Modulate2x = 5, Modulate4x = 6,  // a b, 2 a b, 4 a b
    Add = 7, AddSigned = 8, AddSigned2x = 9,       // a + b, a + b - 0.5, 2 (a + b - 0.5)
    Subtract = 10, AddSmooth = 11,                 // a - b, a + b - a b
    DotProduct3 = 24;                              // the dot product of a and b as signed vectors, in each channel
}
// The arguments: one source, optionally complemented (1 - x) and alpha-replicated.
namespace TextureArg {
inline constexpr std::uint32_t Diffuse = 0, Current = 1, Texture = 2, TextureFactor = 3;
inline constexpr std::uint32_t SourceMask = 0xF, Complement = 0x10, AlphaReplicate = 0x20;
}
// TEXCOORDINDEX: the vertex's own coordinates, or coordinates made from the camera-space normal
// or position.
namespace TexCoordIndex {
inline constexpr std::uint32_t Vertex = 0, CameraSpaceNormal = 0x10000, CameraSpacePosition = 0x20000;
inline constexpr std::uint32_t GeneratedMask = 0x30000;
}
// TEXTURETRANSFORMFLAGS: coordinates as they come, or through the Texture0 matrix with this many kept.
namespace TextureTransform {
inline constexpr std::uint32_t Disable = 0, Count2 = 2;
inline constexpr std::uint32_t CountMask = 0xFF;
}
namespace MaterialSource {
inline constexpr std::uint32_t Material = 0;  // meshes have no vertex colours to take instead
}
// COLORWRITEENABLE's bits.
namespace ColorWrite {
inline constexpr std::uint32_t Red = 1, Green = 2, Blue = 4, Alpha = 8, All = 0xF;
}
// SRCBLEND and DESTBLEND, as show files name them (SetBlend). The two BOTH codes, given as the
// source, set both factors; SRC_ALPHA_SAT is a source factor only (ONE as the destination's).
namespace Blend {
inline constexpr std::uint32_t Zero = 1, One = 2, SrcColor = 3, InvSrcColor = 4, SrcAlpha = 5, InvSrcAlpha = 6,
                               DestAlpha = 7, InvDestAlpha = 8, DestColor = 9, InvDestColor = 10, SrcAlphaSat = 11,
                               BothSrcAlpha = 12, BothInvSrcAlpha = 13;
}

enum class TransformState : std::uint32_t { View = 2, Projection = 3, Texture0 = 16, World = 256 };

// How a file is scaled to its texture.
enum class ImageFilter : std::uint32_t { Point = 2, Linear = 3 };

struct DeviceCaps {
  int MaxTextureWidth = 0;
  int MaxTextureHeight = 0;
  int MaxSimultaneousTextures = 0;
  int MaxVertexCount = 0;
  bool SquareTexturesOnly = false;
};

// The narrow device the frame's passes draw through. The engine never sees a GL header: this is
// all it knows of the device. Colours are device words 0xAARRGGBB. No call throws; a call that
// fails is skipped and the frame goes on, so a layer whose call failed is missing or stale.
//
// Pixels: row 0 of every render target is its top row, as pre-transformed vertices count them.
class RenderDevice {
 public:
  virtual ~RenderDevice() = default;

  virtual int BackBufferWidth() const noexcept = 0;
  virtual int BackBufferHeight() const noexcept = 0;
  virtual DeviceCaps Caps() const = 0;
  // What the device runs on, for logs and figures ("llvmpipe ...", "NVIDIA H100 ...").
  virtual std::string Renderer() const = 0;

  // ---- The scene --------------------------------------------------------------------------
  // BeginScene makes the back buffer the target unless a texture is being rendered to.
  virtual void BeginScene() = 0;
  virtual void EndScene() = 0;
  // Fills the target with a colour; with `zBuffer` also z 1.0 and stencil 0.
  virtual void Clear(std::uint32_t color, bool zBuffer = true) = 0;

  // ---- State --------------------------------------------------------------------------------
  virtual void SetRenderState(RenderState state, std::uint32_t value) = 0;
  virtual std::uint32_t GetRenderState(RenderState state) const = 0;
  virtual void SetTextureStageState(TextureStageState state, std::uint32_t value) = 0;
  virtual std::uint32_t GetTextureStageState(TextureStageState state) const = 0;
  virtual void SetTransform(TransformState state, const Matrix& matrix) = 0;
  virtual void SetTexture(TextureId texture) = 0;
  virtual void SetVertexShader(VertexFormat format) = 0;
  // Blending by Blend codes, as show files name them (ZERO, ONE, SRC_COLOR...). Code 0 in either
  // turns blending off; codes the device does not know count as ONE.
  void SetBlend(std::uint32_t sourceCode, std::uint32_t destinationCode);

  // ---- Drawing -------------------------------------------------------------------------------
  // Draws from a client vertex list laid out as the current vertex format; `stride` must be that
  // format's size. Consecutive triangle lists under unchanged state are drawn together, so many
  // small draws cost one.
  virtual void DrawPrimitiveUP(PrimitiveType type, std::uint32_t primitiveCount, const void* vertices,
                               std::uint32_t stride) = 0;
  void DrawPrimitiveUP(PrimitiveType type, std::uint32_t primitiveCount, const TLVERTEX* vertices) {
    SetVertexShader(VertexFormat::TL);
    DrawPrimitiveUP(type, primitiveCount, vertices, sizeof(TLVERTEX));
  }
  void DrawPrimitiveUP(PrimitiveType type, std::uint32_t primitiveCount, const LVERTEX* vertices) {
    SetVertexShader(VertexFormat::L);
    DrawPrimitiveUP(type, primitiveCount, vertices, sizeof(LVERTEX));
  }
  void DrawPrimitiveUP(PrimitiveType type, std::uint32_t primitiveCount, const LINEVERTEX* vertices) {
    SetVertexShader(VertexFormat::Line);
    DrawPrimitiveUP(type, primitiveCount, vertices, sizeof(LINEVERTEX));
  }

  // ---- Meshes and lighting -------------------------------------------------------------------
  // Copies a mesh into the device's memory; 0 when it is empty or cannot be made.
  virtual MeshId CreateMesh(const MeshData& mesh) = 0;
  // Draws one subset's triangles under the current states, transforms, material and light.
  virtual void DrawMeshSubset(MeshId mesh, std::uint32_t subset) = 0;
  virtual void ReleaseMesh(MeshId mesh) = 0;
  // Lit mesh colour: emissive + AMBIENT x ambient + (light ambient x ambient + light diffuse x
  // diffuse x N.L when the light is on), alpha the material's diffuse alpha; with SPECULARENABLE
  // also light specular x specular x (N.H)^power, H half way between the light and the eye.
  virtual void SetMaterial(const MeshMaterial& material) = 0;
  virtual void SetLight(const Light& light) = 0;
  virtual void LightEnable(bool on) = 0;

  // ---- Textures ------------------------------------------------------------------------------
  // Sizes go up to the next power of two, unless `exactSize` (the copies of the back buffer, whose
  // texture coordinates 0 to 1 must span the frame exactly). 0 when the texture cannot be made.
  virtual TextureId CreateTexture(int width, int height, TextureFormat format, bool renderTarget = false,
                                  bool exactSize = false) = 0;
  // An image prepared off the frame path (DecodeTextureImage) made into a texture.
  virtual TextureId CreateTextureFromImage(const TextureImage& image) = 0;
  // Loads, scales and colour-keys an image file in one go (see DecodeTextureImage); 0 with the
  // reason in `error` when it cannot.
  TextureId CreateTextureFromFileEx(const std::string& path, int width, int height, TextureFormat format,
                                    ImageFilter filter, std::uint32_t colorKey, std::string* error = nullptr);
  // Replaces a rectangle of a texture: `pixels` are device words (A8: one byte each), `stride` bytes a row.
  virtual void UpdateTexture(TextureId texture, int x, int y, int width, int height, const void* pixels,
                             std::ptrdiff_t stride) = 0;
  virtual bool GetDesc(TextureId texture, TextureDesc& desc) const = 0;
  virtual void ReleaseTexture(TextureId texture) = 0;

  // Render to texture: until EndRenderToTexture, scenes, clears and draws go to `texture` (made
  // as a render target), with pre-transformed pixels counted in its own size. False when it cannot.
  virtual bool BeginRenderToTexture(TextureId texture) = 0;
  virtual void EndRenderToTexture() = 0;
  // Copies a rectangle of the back buffer into a texture of the same pixel size at (x, y).
  virtual void CopyBackBufferToTexture(TextureId texture, int sourceX, int sourceY, int width, int height, int x,
                                       int y) = 0;
  // Stretches a rectangle of the back buffer (a negative extent reads backwards) over a whole texture.
  virtual void StretchBackBufferToTexture(TextureId texture, const BlitSource& source) = 0;

  // The frame's last passes in one go, in place over the back buffer. First `Layer`, a textured
  // rectangle blended over the picture as its draw under SRCBLEND/DESTBLEND would blend it (both
  // 0: none), with the stage's addressing and filters. Then, with `Invert`, each channel d becomes
  // 1 - d * d; then the picture is multiplied by `Tint` (0xRRGGBB) and, with `Mask`, by
  // `MaskTexture` stretched from just outside one corner of the output to just outside the other
  // (a texture that is gone multiplies by white). Each step is kept to 8 bits, as a pass of its own
  // leaves it. Bypassing the blender, this is far cheaper on a GPU than the full-screen blended
  // draws it stands for. False when the device cannot: the caller draws those instead.
  struct BlendedRectangle {
    float Left = 0, Top = 0, Right = 0, Bottom = 0;  // pixels
    float U = 1, V = 1;  // texture coordinates at the bottom right; (0, 0) at the top left
    TextureId Texture = 0;  // 0: the colour alone
    std::uint32_t Color = 0xFFFFFFFFu;
    std::uint32_t SourceBlend = 0, TargetBlend = 0;
  };
  struct OutputFinish {
    BlendedRectangle Layer;
    bool Invert = false;
    bool Mask = false;
    TextureId MaskTexture = 0;
    std::uint32_t Tint = 0xFFFFFFu;
  };
  virtual bool FinishOutput(const OutputFinish& finish) = 0;

  // ---- Output --------------------------------------------------------------------------------
  // Shows a rectangle of the back buffer on a window's framebuffer, stretched to its size (a
  // headless device has none and does nothing).
  virtual void Present(int targetWidth, int targetHeight, std::uint32_t targetFramebuffer, const BlitSource& source) = 0;
  void Present(int targetWidth, int targetHeight, std::uint32_t targetFramebuffer) {
    Present(targetWidth, targetHeight, targetFramebuffer, BlitSource{0, 0, BackBufferWidth(), BackBufferHeight()});
  }

  // Read back, overlapped with the next frame. QueueReadBack ends the frame and queues it; the next
  // frame is drawn into a second back buffer (what it does not clear it inherits from this one),
  // while this one is copied out. TakeReadBack then delivers the frame queued before the newest;
  // FlushReadBack delivers the oldest frame still queued, for the end of a run.
  // The sink sees the frame where it lies, without a copy: `top` is the first byte of the top row
  // (RGBA) and rows are `stride` bytes apart. Valid only during the call.
  using FrameSink = std::function<void(const std::uint8_t* top, std::ptrdiff_t stride)>;
  virtual void QueueReadBack() = 0;
  virtual bool TakeReadBack(const FrameSink& sink) = 0;
  virtual bool FlushReadBack(const FrameSink& sink) = 0;
  // The back buffer as it is now, read at once (for a screenshot or the preview monitor).
  virtual bool ReadBackNow(const FrameSink& sink) = 0;
  // A texture's pixels (RGBA, top row first), read at once: thumbnails and checks.
  virtual bool ReadTexture(TextureId texture, const FrameSink& sink) = 0;
  // The same, copied into `rgba` top row first.
  bool TakeReadBack(std::vector<std::uint8_t>& rgba) { return TakeReadBack(CopyInto(rgba, BackBufferWidth(), BackBufferHeight())); }
  bool FlushReadBack(std::vector<std::uint8_t>& rgba) { return FlushReadBack(CopyInto(rgba, BackBufferWidth(), BackBufferHeight())); }
  bool ReadBackNow(std::vector<std::uint8_t>& rgba) { return ReadBackNow(CopyInto(rgba, BackBufferWidth(), BackBufferHeight())); }

 protected:
  static FrameSink CopyInto(std::vector<std::uint8_t>& rgba, int width, int height);
};

// A device without any window, rendering into an offscreen back buffer of the given size: EGL
// without a surface (Mesa's surfaceless platform first, then the EGL device platform that NVIDIA
// drivers offer). Answers nullptr with the reason when none can be made.
std::unique_ptr<RenderDevice> CreateHeadlessDevice(int width, int height, std::string& error);
// A device on the OpenGL context that is current now (a window's); the context must stay current
// whenever the device is used, and when it is destroyed.
std::unique_ptr<RenderDevice> CreateDeviceOnCurrentContext(int width, int height, std::string& error);

}  // namespace lumivane
