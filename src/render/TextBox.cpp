#include "render/TextBox.h"

namespace lumivane {

namespace {

// The pass's own pi, four decimals: rotations match shows made elsewhere.
constexpr float kPi4 = 3.1415f;

}  // namespace

void SceneSetup(RenderDevice& device, int width, int height, float z) {
  const float aspect = width > 0 ? static_cast<float>(height) / static_cast<float>(width) : 1.0f;
  device.SetTransform(TransformState::Projection, Matrix::PerspectiveFovLH(kPi4 / 4.0f, aspect, 1.0f, 3000.0f));
  const float eye[3] = {0, 0, z}, at[3] = {0, 0, 0}, up[3] = {0, 1, 0};
  device.SetTransform(TransformState::View, Matrix::LookAtLH(eye, at, up));
  device.SetTransform(TransformState::World, Matrix::Identity());
}

void UpdateTextBoxFrame(TextBox& box, RenderDevice& device, int width, int height, float z) {
  SceneSetup(device, width, height, z);
  box.RootFrame->UpdateFrames();
  const float x = box.RotationX * kPi4 / 180.0f, y = box.RotationY * kPi4 / 180.0f, r = box.RotationZ * kPi4 / 180.0f;
  CD3DFrame& frame = *box.TextFrame;
  if (box.World) {
    frame.AddRotationXYZ(CD3DFrame::kReplace, x, y, r);
    frame.AddTranslation(CD3DFrame::kBefore, box.TranslationX, box.TranslationY, 0);
  } else {
    frame.AddTranslation(CD3DFrame::kReplace, box.TranslationX, box.TranslationY, box.TranslationZ);
    frame.AddRotationXYZ(CD3DFrame::kBefore, x, y, r);
  }
  frame.AddScale(CD3DFrame::kBefore, box.ScaleX, box.ScaleY, box.ScaleZ);
}

}  // namespace lumivane
