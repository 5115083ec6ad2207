#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/Clock.h"
#include "render/BackgroundMesh.h"
#include "render/FrameArguments.h"
#include "render/IncomingPictures.h"
#include "render/PassContext.h"

namespace lumivane {

// The background layer, the frame's first: the output's picture list, the timer that fades and
// changes the pictures, the rectangle's draw, and the feedback loop (the finished picture copied
// back in at its rate and drawn as the background of the next frames).
class BackgroundPass {
 public:
  BackgroundPass(const PassContext& context, IncomingPictures& pictures) : context_(context), pictures_(pictures) {}

  // One picture of the output's background list.
  struct BackgroundTexture {
    TextureId Texture = 0;
    float DUFeedBackFactor = 1, DVFeedBackFactor = 1;
    std::string FileName;
    bool Visible = false;
    std::int32_t Width = 0, Height = 0;
    std::uint64_t Loading = 0;  // the decode under way, 0 when none
  };
  // Shows `file` next (hiding all others with `hideAll`): a new file joins the list and is decoded
  // off the frame path; the frame takes the change at once. An empty name only hides.
  void InitializeBackground(const std::string& file, bool hideAll, std::int32_t width, std::int32_t height);
  void ResetBackGrounds();
  TextureId GetBackGroundTexture(std::int32_t index) const;
  std::int32_t BackgroundCount() const noexcept { return static_cast<std::int32_t>(backgrounds_.size()); }
  const BackgroundTexture* Background(std::int32_t index) const noexcept {
    return index >= 1 && index <= BackgroundCount() ? &backgrounds_[static_cast<std::size_t>(index - 1)] : nullptr;
  }
  std::int32_t BackgroundIndex() const noexcept { return backgroundIndex_; }
  const BackGroundMesh& LastBackGroundMesh() const noexcept { return lastMesh_; }
  void SetLastBackGroundMesh(const BackGroundMesh& mesh) noexcept { lastMesh_ = mesh; }

  // The texture the background feeds back from: the last copy of the output, exactly the back
  // buffer's size, so that the background's texture extent of 1 spans it. It starts as
  // "NoTexture.bmp" of the application folder.
  TextureId FeedbackTexture();

  // ---- The frame -----------------------------------------------------------------------------
  // Before the scene: a feedback loop's source is made the first time a frame wants it (it is
  // drawn into a texture of its own, which cannot happen inside the back buffer's scene).
  void PrepareFeedback(const BackgroundArguments& args) {
    if (args.Feedback) FeedbackTexture();
  }
  // The timer's fades and change, then the draw: the feedback copy, or the picture shown (the last
  // one while the next is still coming in).
  void Draw(const FrameArguments& args, Tick now);
  // Whether the finished picture is to be copied back into the loop in this frame, at its rate.
  bool FeedbackCopyDue(const FrameArguments& args, Tick now) const;
  void FeedbackCopy(const FrameArguments& args, Tick now);

  // A picture this pass asked for is whole on the device; false when it is not one of them.
  bool PictureArrived(std::uint64_t ticket, TextureId texture);
  // The output ends: every texture goes back; the list and the last layout are kept.
  void Release();

 private:
  // The timer: fades, and at its interval (or a change asked for) the next visible picture.
  void Step(const FrameArguments& args, Tick now);
  BackGroundMeshArguments MeshArguments(const FrameArguments& args, bool hold, bool fadeIn) const;
  void BuildBackGroundMesh(const FrameArguments& args, bool hold, bool fadeIn);
  void RenderBackground(TextureId texture);
  void RenderOutputToBackGround();
  void ComputeBackGroundFeedBackFactor(std::int32_t index);

  const PassContext& context_;
  IncomingPictures& pictures_;
  std::vector<BackgroundTexture> backgrounds_;
  std::int32_t backgroundIndex_ = 0;
  bool backgroundChangeRequested_ = false;
  Tick lastBackgroundTick_ = 0;
  BackGroundMesh lastMesh_;
  TLVERTEX backgroundVertices_[12] = {};
  TextureId lastDrawnBackground_ = 0;  // shown while the next picture is still coming in
  TextureId feedbackTexture_ = 0;      // the texture the background feeds back from
  TextureId feedbackTarget_ = 0;       // the back-buffer-sized copy it usually is
  Tick lastFeedbackTick_ = 0;
  bool feedbackCopied_ = false;  // the rate 0 copies once
};

}  // namespace lumivane
