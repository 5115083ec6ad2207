#pragma once

#include <cstdint>

#include "render/BackgroundMesh.h"
#include "render/RenderDevice.h"
#include "core/TextFrame.h"

namespace lumivane {

// The background's controls as one frame reads them.
struct BackgroundArguments : LayerPlacement {
  std::int32_t FilterColor = 0xFFFFFF;  // piCFilterColor, program order
  std::int32_t FilterRandom = 0;
  std::int32_t TimerInterval = 5000;  // ms
  bool HoldTimer = false;
  bool ComputeAspectRatio = false, FadeIn = false, FadeOut = false;
  bool Feedback = false;
};

// The effect layer's controls as one frame reads them; blends as device codes.
struct EffectArguments : LayerPlacement {
  bool ComputeAspectRatio = false, Enabled = false, Capture = false, HoldTimer = false;
  int SourceBlend = Blend::SrcColor, TargetBlend = Blend::DestColor;
  std::int32_t Color = 0xFFFFFF, ColorRandom = 0, Timer = 1000;
};

// What the controls say for one frame: read by ReadFrameArguments (forms) and handed by the stage
// to FrameRenderer::RenderFrame, so the renderer never reads a control. A pass that needs another
// value adds it here.
struct FrameArguments {
  std::int32_t ClearColor = 0;     // picBackGroundColor's colour, program order
  bool KeepPreviousFrame = false;  // the global that chkHoldBackground sets
  BackgroundArguments Background;
  EffectArguments Effect;
  // The output stage.
  bool MaskEnabled = false;
  std::int32_t FeedbackRate = 25;  // copies of the output a second while feeding back
  std::int32_t Fade = 255;         // 255 leaves the picture, 0 is black
  bool Invert = false;
  TextFrameInput Text;
  // The preview pane the text boxes are placed on; the flat texts scale from it to the back buffer.
  int PreviewWidth = 480;
  int PreviewHeight = 270;
};

}  // namespace lumivane
