#include "render/TextBox.h"

#include "core/Color.h"
#include "render/TextDrawer.h"

namespace lumivane {

namespace {

// The pass's own pi, four decimals: rotations match shows made elsewhere.
constexpr float kPi4 = 3.1415f;

}  // namespace

void SceneSetup(RenderDevice& device, int width, int height, float z) {
  // Width over height: only then is a circle round on screen, and do the boxes' half sizes (over
  // the back buffer's width and height) and their placement units meet the screen's edges.
  const float aspect = height > 0 ? static_cast<float>(width) / static_cast<float>(height) : 1.0f;
  device.SetTransform(TransformState::Projection, Matrix::PerspectiveFovLH(kPi4 / 4.0f, aspect, 1.0f, 3000.0f));
  const float eye[3] = {0, 0, z}, at[3] = {0, 0, 0}, up[3] = {0, 1, 0};
  device.SetTransform(TransformState::View, Matrix::LookAtLH(eye, at, up));
  device.SetTransform(TransformState::World, Matrix::Identity());
}

void UpdateTextBoxFrame(TextBox& box, RenderDevice& device, int width, int height, float z) {
  SceneSetup(device, width, height, z);
  box.RootFrame->UpdateFrames();
  const float x = box.RotationX * kPi4 / 180.0f, y = box.RotationY * kPi4 / 180.0f, r = box.RotationZ * kPi4 / 180.0f;
  SceneNode& frame = *box.TextFrame;
  if (box.World) {
    frame.AddRotationXYZ(SceneNode::kReplace, x, y, r);
    frame.AddTranslation(SceneNode::kBefore, box.TranslationX, box.TranslationY, 0);
  } else {
    frame.AddTranslation(SceneNode::kReplace, box.TranslationX, box.TranslationY, box.TranslationZ);
    frame.AddRotationXYZ(SceneNode::kBefore, x, y, r);
  }
  frame.AddScale(SceneNode::kBefore, box.ScaleX, box.ScaleY, box.ScaleZ);
}

void RenderTextToSurface(RenderDevice& device, TextDrawer& drawer, const TextBox& box, const TextFont& font,
                         float pixelSize, std::uint32_t color, std::int32_t backgroundColor, std::uint32_t format,
                         std::string_view text) {
  if (box.Texture == 0 || !device.BeginRenderToTexture(box.Texture)) return;
  device.BeginScene();
  device.Clear(ToDeviceColor(backgroundColor), true);
  TextRect rect{0, 0, static_cast<float>(box.Width), static_cast<float>(box.Height)};
  drawer.DrawText(font, pixelSize, color, text, rect, format);
  device.EndScene();
  device.EndRenderToTexture();
}

void RenderTextBox(RenderDevice& device, const TextBox& box, const TextObject& text, Wave3D& wave, bool firstCopy,
                   bool alphaBlend, std::uint32_t color, bool outline, std::uint32_t outlineColor,
                   TextBoxScratch& scratch) {
  const bool white = !alphaBlend && box.TextBoxTextureFileName.empty() && box.VideoLockToTextBox != 1;
  TextBoxShape shape;
  shape.HalfWidth = static_cast<float>(box.Width) / static_cast<float>(device.BackBufferWidth()) * 10.0f;
  shape.HalfHeight = static_cast<float>(box.Height) / static_cast<float>(device.BackBufferHeight()) * 10.0f;
  shape.Color = white ? 0xFFFFFFFFu : color;
  device.SetTexture(box.Texture);
  device.SetRenderState(RenderState::CULLMODE, CullMode::None);
  device.SetRenderState(RenderState::FILLMODE, FillMode::Solid);
  device.SetTransform(TransformState::World, box.TextFrame->GetUpdatedMatrix());
  BuildTextBoxShape(text.Shape3DType, text.Circle3D, wave, text.Spiral3D, shape, firstCopy, scratch.strip);
  if (scratch.strip.size() >= 3)
    device.DrawPrimitiveUP(PrimitiveType::TriangleStrip, static_cast<std::uint32_t>(scratch.strip.size() - 2),
                           scratch.strip.data());
  if (!outline) return;
  BuildTextBoxOutline(text.Shape3DType, scratch.strip, outlineColor, scratch.outline);
  device.SetTexture(0);
  if (scratch.outline.size() >= 2)
    device.DrawPrimitiveUP(PrimitiveType::LineStrip, static_cast<std::uint32_t>(scratch.outline.size() - 1),
                           scratch.outline.data());
}

}  // namespace lumivane
