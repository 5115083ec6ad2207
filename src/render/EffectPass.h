#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "core/Clock.h"
#include "render/BackgroundMesh.h"
#include "render/FrameArguments.h"
#include "render/IncomingPictures.h"
#include "render/PassContext.h"

namespace lumivane {

// The effect layer: one textured rectangle blended over the composed picture, its picture from a
// file or a capture of the output, laid out anew at random on its own timer, its colour drifting
// at random with each new layout.
class EffectPass {
 public:
  EffectPass(const PassContext& context, IncomingPictures& pictures) : context_(context), pictures_(pictures) {}

  // With a file name, the effect shows that picture (decoded off the frame path; the last one
  // stays until it is in); with none, a capture of the back buffer as it is now.
  void SetEffectTexture(const std::string& file);
  void ResetEffectTexture();
  TextureId GetEffectTexture() const noexcept { return effectTexture_; }
  const std::string& EffectFileName() const noexcept { return effectFileName_; }
  // The effect colour after each random drift; the control takes it, so the drift goes on from there.
  std::function<void(std::int32_t programColor)> EffectColorChanged;

  // ---- The frame -----------------------------------------------------------------------------
  // The capture and the layout, each on its timer. The rectangle is drawn at once with `drawNow`;
  // otherwise it is left to the output stage, which can blend it in its own pass. True when it is
  // left there.
  bool Run(const EffectArguments& e, Tick now, bool drawNow);
  // The rectangle as laid out, blended over the back buffer.
  void Draw(const EffectArguments& e);
  // The same rectangle for the device's one output pass.
  RenderDevice::BlendedRectangle Rectangle(const EffectArguments& e) const;

  // A picture this pass asked for is whole on the device; false when it is not the one.
  bool PictureArrived(std::uint64_t ticket, TextureId texture);
  // The output ends: the picture and the capture go back to the device; the layout stays.
  void Release();

 private:
  // The layout on its timer; true when there is a rectangle to blend.
  bool LayOut(const EffectArguments& e, Tick now);

  const PassContext& context_;
  IncomingPictures& pictures_;
  TextureId effectTexture_ = 0;  // what the effect shows: the file's picture or the capture
  TextureId effectFile_ = 0;     // the file's picture, owned
  TextureId effectCapture_ = 0;  // the back-buffer-sized capture, owned
  std::string effectFileName_;
  std::uint64_t effectLoading_ = 0;
  std::int32_t effectTextureWidth_ = 0, effectTextureHeight_ = 0;
  BackGroundMesh effectMesh_;
  Tick lastEffectTick_ = 0, lastEffectCaptureTick_ = 0;
  TLVERTEX effectVertices_[12] = {};
};

}  // namespace lumivane
