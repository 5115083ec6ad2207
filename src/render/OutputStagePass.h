#pragma once

#include <cstdint>
#include <string>

#include "render/FrameArguments.h"
#include "render/IncomingPictures.h"
#include "render/PassContext.h"

namespace lumivane {

class EffectPass;

// The output stage: the passes over the finished picture (invert, the mask, the fade, grey),
// the last preset's picture shining through the next, and the picture handed on as a texture or a
// file.
class OutputStagePass {
 public:
  OutputStagePass(const PassContext& context, IncomingPictures& pictures) : context_(context), pictures_(pictures) {}

  // The output mask: the picture scaled to the back buffer's power-of-two size; an empty name
  // removes it (the mask pass then multiplies with white).
  void CreateMaskTexture(const std::string& file);
  TextureId MaskTexture() const noexcept { return maskTexture_; }

  // ---- The frame -----------------------------------------------------------------------------
  // The last preset's picture over the background, fading out over OverlayFrameCount frames.
  void RenderMachineStateOverlay();
  // The frame's last passes: the effect's rectangle (when the effect pass left it here), invert,
  // mask and fade, in one pass where the device offers it, else drawn.
  void Finish(EffectPass* effect, const FrameArguments& args);
  // Off, the frame's last passes are always drawn, never run as one (tests hold the two ways to
  // the same picture).
  bool FinishInOnePass = true;

  // The passes one by one. The mask pass has the output fade folded in (255: the mask alone).
  void RenderMask(std::int32_t fade = 255);
  void RenderOutputFade(std::int32_t fade);
  void RenderInvert();
  void RenderGrayScale();
  // The last picture of a preset shines through the next for `frames` frames.
  void InitializeMachineStateOverlay(std::int32_t frames);
  std::int32_t OverlayFrameCount = 0;
  std::int32_t OverlayFramesLeft() const noexcept { return overlayLeft_; }
  // The finished picture as a texture for projection mapping, with the share of it the back
  // buffer fills. One texture, refilled at each call.
  TextureId GetCurrentOutputTexture(float& ratioX, float& ratioY);
  // Writes the back buffer to a 24-bit Windows bitmap, whole or not at all.
  bool RenderToFile(const std::string& path, std::string& error);

  // The mask picture asked for is whole on the device; false when it is not the one.
  bool PictureArrived(std::uint64_t ticket, TextureId texture);
  // The output ends: the mask, the overlay and the output texture go back to the device.
  void Release();

 private:
  // A full-screen rectangle in `color` with `texture`, blended `source` over `destination` (Blend
  // codes).
  void DrawOutputRectangle(std::uint32_t color, TextureId texture, std::uint32_t source, std::uint32_t destination);

  const PassContext& context_;
  IncomingPictures& pictures_;
  TextureId maskTexture_ = 0;
  std::uint64_t maskLoading_ = 0;
  TextureId overlayTexture_ = 0;
  std::int32_t overlayLeft_ = 0;
  TextureId outputTexture_ = 0;
  TLVERTEX outputRectangle_[12] = {};
  int outputRectangleWidth_ = 0, outputRectangleHeight_ = 0;
};

}  // namespace lumivane
