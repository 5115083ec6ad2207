#pragma once

#include <cstdint>
#include <string_view>

namespace lumivane {

struct TextFont;
struct Rotation;

// What the frame reads from the controls once and hands to every text's step.
struct TextFrameInput {
  int BackBufferWidth = 1280;
  int BackBufferHeight = 720;
  // The minimum of the position sliders: a manual position maps the slider's range onto the
  // back buffer.
  std::int32_t RandomizeXMin = -1000;
  std::int32_t RandomizeYMin = -1000;
};

// What one text (or one of its copies) draws in this frame.
struct TextFrame {
  // Empty when nothing is drawn (flashed off, nothing to show). Valid until the next step.
  std::string_view Text;
  const TextFont* Font = nullptr;  // face, size and style to draw with
  float OffsetX = 0.0f;
  float OffsetY = 0.0f;
  float ScaleX = 1.0f;  // 3D text's size factor
  float ScaleY = 1.0f;
  float ScaleZ = 1.0f;
  std::int32_t Color = 0;  // 0x00BBGGRR
  // The text box in preview pane units, moved by the offsets.
  float Left = 0.0f;
  float Top = 0.0f;
  float Right = 0.0f;
  float Bottom = 0.0f;
  const ::lumivane::Rotation* Rotation = nullptr;
  std::string_view AlignX;
  bool Clip = false;
  bool Updated = false;  // the text's update ran in this step
  bool Enabled = true;   // the text is drawn at all (EnableRender 1)
};

}  // namespace lumivane
