#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumivane {

// The narrow device the frame's passes draw through. The engine never sees a GL header: this is
// all it knows of the device. Colours are device words 0xAARRGGBB.
class RenderDevice {
 public:
  virtual ~RenderDevice() = default;

  virtual int BackBufferWidth() const noexcept = 0;
  virtual int BackBufferHeight() const noexcept = 0;

  // Starts a frame on the back buffer.
  virtual void BeginScene() = 0;
  virtual void Clear(std::uint32_t color) = 0;
  virtual void EndScene() = 0;

  // Blending as show files name it: 1 ZERO, 2 ONE, 3 SRC_COLOR, 4 INV_SRC_COLOR, 5 SRC_ALPHA,
  // 6 INV_SRC_ALPHA, 7 DEST_ALPHA, 8 INV_DEST_ALPHA, 9 DEST_COLOR, 10 INV_DEST_COLOR,
  // 11 SRC_ALPHA_SAT, 12 BOTH_SRC_ALPHA, 13 BOTH_INV_SRC_ALPHA (the last two set both factors from
  // the source code). Code 0 in either turns blending off; other codes count as ONE.
  virtual void SetBlend(int sourceCode, int destinationCode) = 0;
  // Solid quads in one colour (0xAARRGGBB) under the current blending; each quad is x0, y0, x1, y1
  // in back buffer pixels.
  virtual void DrawQuads(const float* rects, std::size_t quadCount, std::uint32_t color) = 0;

  // Draws coverage-masked quads in one colour, alpha-blended: text from a glyph atlas.
  // `atlas` is a square of `atlasSize` coverage bytes, uploaded when `atlasChanged`; each quad is
  // eight floats: x0, y0, x1, y1 in back buffer pixels (top left origin), then u0, v0, u1, v1.
  virtual void DrawTextQuads(const std::uint8_t* atlas, int atlasSize, bool atlasChanged, const float* quads,
                             std::size_t quadCount, std::uint32_t color) = 0;

  // Read back, overlapped with the next frame: QueueReadBack starts copying the finished frame out
  // of the device, and TakeReadBack delivers the frame queued before it (RGBA, top row first).
  // FlushReadBack delivers the last queued frame at the end of a run.
  // The sink sees the frame where it lies, without a copy: `top` is the first byte of the top row
  // and rows are `stride` bytes apart (negative when the device stores them bottom up). Valid only
  // during the call.
  using FrameSink = std::function<void(const std::uint8_t* top, std::ptrdiff_t stride)>;
  virtual void QueueReadBack() = 0;
  virtual bool TakeReadBack(const FrameSink& sink) = 0;
  virtual bool FlushReadBack(const FrameSink& sink) = 0;
  // The same, copied into `rgba` top row first.
  bool TakeReadBack(std::vector<std::uint8_t>& rgba) { return TakeReadBack(CopyInto(rgba)); }
  bool FlushReadBack(std::vector<std::uint8_t>& rgba) { return FlushReadBack(CopyInto(rgba)); }

  // Shows the back buffer on a window's framebuffer, stretched to its size (a headless device has
  // none and does nothing).
  virtual void Present(int targetWidth, int targetHeight, std::uint32_t targetFramebuffer) = 0;

  // What the device runs on, for logs and figures ("llvmpipe ...", "NVIDIA H100 ...").
  virtual std::string Renderer() const = 0;

 private:
  FrameSink CopyInto(std::vector<std::uint8_t>& rgba) const;
};

// A device without any window, rendering into an offscreen back buffer of the given size: EGL
// without a surface (Mesa's surfaceless platform first, then the EGL device platform that NVIDIA
// drivers offer). Answers nullptr with the reason when none can be made.
std::unique_ptr<RenderDevice> CreateHeadlessDevice(int width, int height, std::string& error);
// A device on the OpenGL context that is current now (a window's); the context must stay current
// whenever the device is used, and when it is destroyed.
std::unique_ptr<RenderDevice> CreateDeviceOnCurrentContext(int width, int height, std::string& error);

}  // namespace lumivane
