// The 3D pass of the frame: each 3D text, and each copy of it, placed, turned and scaled in world
// space and drawn on its shape with its string's texture.
#include <algorithm>
#include <cmath>
#include <iterator>

#include "core/Color.h"
#include "core/TextObject.h"
#include "core/TextEngine.h"
#include "render/Mesh3D.h"
#include "render/TextMesh.h"
#include "render/FrameRenderer.h"

namespace lumivane {

namespace {

// A running angle is kept within a turn: a show that loops for hours keeps its precision.
float WrapAngle(float degrees) { return std::fmod(degrees, 360.0f); }

}  // namespace

void FrameRenderer::Render3D(const FrameArguments& args) {
  RenderDevice* d = device_;
  if (d != nullptr) {
    d->SetTextureStageState(TextureStageState::MAGFILTER, TextureFilter::Linear);
    d->SetTextureStageState(TextureStageState::MINFILTER, TextureFilter::Linear);
    // Records follow their texts: new texts, new box sizes and new pictures are taken up here.
    TextBoxSetup();
  }
  frameArguments_ = &args;
  textPass_.Run(text_, args.Text, draw3D_, TextPass::Kind::ThreeD, true);
  frameArguments_ = nullptr;
  if (d != nullptr) d->SetRenderState(RenderState::ALPHABLENDENABLE, 0);
}

void FrameRenderer::Render3DCopy(std::int32_t index, std::int32_t j, const TextFrame& frame) {
  const bool draw = frame.Enabled && !frame.Text.empty();
  if (draw && TextDrawn) TextDrawn(index, j - 1, frame);
  if (device_ == nullptr || index > TextBoxCount() || frameArguments_ == nullptr) return;
  const FrameArguments& args = *frameArguments_;
  RenderDevice& d = *device_;
  const TextObject& t = text_.Live()[static_cast<std::size_t>(index - 1)];
  TextBox& box = textBoxes_[static_cast<std::size_t>(index - 1)];
  const bool picture = !box.TextBoxTextureFileName.empty() && box.VideoLockToTextBox != 1;

  // Blending: alpha-blended text adds onto the frame; a picture blends by its own alpha (its black
  // keyed out); otherwise the box is opaque.
  if (t.AlphaBlend) {
    d.SetRenderState(RenderState::ALPHABLENDENABLE, 1);
    d.SetBlend(Blend::SrcAlpha, Blend::DestAlpha);
  } else if (picture) {
    d.SetBlend(Blend::SrcAlpha, Blend::InvSrcAlpha);
    d.SetRenderState(RenderState::ALPHABLENDENABLE, 1);
  } else {
    d.SetRenderState(RenderState::ALPHABLENDENABLE, 0);
    d.SetBlend(Blend::DestAlpha, Blend::InvSrcAlpha);
  }

  // Rotation. A looping axis runs on from the text's current angle; a fixed one stands at its
  // angle. The fine-tune switch slows every speed sevenfold, and the looping first copy's twice
  // over (by 49): shows are made with that speed.
  const Rotation& r = t.Rotation;
  box.World = r.World;
  const float fine = r.FineTuneRotationAngle == 1 ? 7.0f : 1.0f;
  const bool uniform = t.Particle.PhaseRotateUniform;
  const auto step = static_cast<float>(t.Particle.PhaseRotate.Value);
  const auto copy = static_cast<float>(j);
  auto turn = [&](float angle, bool loop, float current, float last) {
    const float a = angle / fine;
    if (!loop) return uniform ? a + step / fine : a + step * copy / fine;
    if (uniform) return current + step / (fine * 10.0f);
    if (j == 1) return current + a / fine;
    return last + step * copy / fine;
  };
  box.RotationX = WrapAngle(turn(r.AngleX, r.LoopX, r.CurrentAngleX, box.RotationX));
  box.RotationY = WrapAngle(turn(r.AngleY, r.LoopY, r.CurrentAngleY, box.RotationY));
  box.RotationZ = WrapAngle(turn(r.AngleZ, r.LoopZ, r.CurrentAngleZ, box.RotationZ));
  if (j == 1) text_.RenderSetRotationCurrentAngle(index, box.RotationX, box.RotationY, box.RotationZ);

  // Scale: the text's size factor less its particle's size (particle clouds shrink and grow their
  // copies), never below 0.
  const auto& particles = t.Particle.Particles;
  const float factor = t.FONT_SIZE_ZERO == 0.0f ? 1.0f : 5.0f;
  const float ownSize = static_cast<std::size_t>(j - 1) < particles.size() ? particles[static_cast<std::size_t>(j - 1)].Size : 0.0f;
  const float firstSize = particles.empty() ? 0.0f : particles.front().Size;
  const float base = ownSize < 0 && j > 1 ? 0.0f : frame.ScaleX;
  const float scale = std::max(0.0f, base - (t.Particle.PhaseSizeUniform ? firstSize : ownSize) / factor);
  box.ScaleX = box.ScaleY = box.ScaleZ = scale;
  const std::string& shape = t.Shape3DType;
  const bool hasShape = !shape.empty();
  const bool meshed = t.Extrude3D != 0.0f && !hasShape;
  // Box half sizes are over the back buffer's width and height alike; a flat shape drawn across
  // the screen is widened back to the texture's own proportions. An extruded string is built
  // in the font's own proportions and needs no correction.
  const float bbWidth = static_cast<float>(d.BackBufferWidth()), bbHeight = static_cast<float>(d.BackBufferHeight());
  if (!meshed && shape != "Custom" && shape != "Circle" && shape != "Spiral" && hasShape && bbWidth > 0 &&
      bbHeight > 0)
    box.ScaleX /= bbHeight / bbWidth;

  // Translation: the box's centre, from the preview's centre, in units of a hundredth of the
  // preview's size; a mesh's camera distance scales it so it stays on the same place.
  const auto pw = static_cast<float>(args.PreviewWidth), ph = static_cast<float>(args.PreviewHeight);
  const float z = CameraZ(t, args.PreviewHeight);
  if (pw > 0 && ph > 0) {
    const float cx = ((frame.Right - pw / 2) + (frame.Left - pw / 2)) / 2;
    const float cy = ((frame.Top - ph / 2) + (frame.Bottom - ph / 2)) / 2;
    float tx = cx / (pw / 2) * (pw / 100), ty = -cy / (ph / 2) * (ph / 100);
    if (shape == "Custom") {
      tx = std::fabs(z) * tx / 20.0f;
      ty = std::fabs(z) * ty / 20.0f;
    }
    box.TranslationX = tx;
    box.TranslationY = ty;
    box.TranslationZ = 0;
  }
  UpdateTextBoxFrame(box, d, d.BackBufferWidth(), d.BackBufferHeight(), z);
  if (!draw || textDrawer_ == nullptr || frame.Font == nullptr) return;

  const std::uint32_t copyColor = ToDeviceColor(frame.Color);
  if (shape == "Custom") {
    RenderModel(box, t, copyColor);
    return;
  }
  if (meshed) {
    CreateFull3DText(box, t, frame, copyColor, ph);
    return;
  }
  // The string is drawn once a frame, by the first copy; the others show the same texture. Alpha-
  // blended text is drawn white so each copy can tint it with its own colour.
  if (box.TextBoxTextureFileName.empty() && j == 1) {
    const std::uint32_t color = t.AlphaBlend ? 0xFFFFFFFFu : copyColor;
    // A 3D text's size changes go to its scale: its string is drawn at the base size, in points
    // at 720 lines, at the preview's scale like the box.
    const float points = t.FONT_SIZE_ZERO > 0 ? t.FONT_SIZE_ZERO : t.Font.Size;
    const float pixelSize = std::max(1.0f, points) * (96.0f / 72.0f) * (ph / 720.0f);
    RenderTextToSurface(d, *textDrawer_, box, *frame.Font, pixelSize, color, t.BackGroundColor,
                        FormatFlags(index, frame.AlignX), frame.Text);
  }
  Wave3D wave = t.Wave3D;
  RenderTextBox(d, box, t, wave, j == 1, t.AlphaBlend, copyColor, t.Shape3DRenderMesh != 0, copyColor,
                textBoxScratch_);
  if (j == 1 && wave.CurrentPhase != t.Wave3D.CurrentPhase) text_.RenderSetWaveCurrentPhase(index, wave.CurrentPhase);
}

void FrameRenderer::CreateFull3DText(TextBox& box, const TextObject& t, const TextFrame& frame, std::uint32_t color,
                                  float previewHeight) {
  RenderDevice& d = *device_;
  const TextFont& font = *frame.Font;
  // Built only when the font, the extrusion or the string changed: never for a steady text.
  if (!(box.MeshFont == font) || box.MeshExtrusion != t.Extrude3D || box.MeshString != frame.Text) {
    MeshData mesh = BuildTextMesh(font, frame.Text, 0.001f, t.Extrude3D);
    mesh.ComputeBoundingBox();
    for (int i = 0; i < 3; ++i) box.MeshCentre[i] = (mesh.Min[i] + mesh.Max[i]) / 2;
    box.TextMesh = HoldMesh(d.CreateMesh(mesh));
    box.MeshFont = font;
    box.MeshExtrusion = t.Extrude3D;
    box.MeshString.assign(frame.Text);
  }
  // A string the font cannot outline has no mesh, and a black text is not lit at all.
  if (!box.TextMesh || (color & 0xFFFFFFu) == 0) return;

  SavedRenderStates saved;
  SetLitMeshStates(d, t.Shape3DRenderMesh != 0, ToDeviceColor(t.BackGroundColor), saved);
  // A picture is projected onto the mesh from the camera, ten world units to a repeat.
  struct StageValue {
    TextureStageState state;
    std::uint32_t value;
  };
  StageValue stages[] = {{TextureStageState::TEXCOORDINDEX, TexCoordIndex::CameraSpacePosition},
                         {TextureStageState::COLORARG1, TextureArg::Texture},
                         {TextureStageState::COLOROP, TextureOp::Modulate2x},
                         {TextureStageState::COLORARG2, TextureArg::Diffuse},
                         {TextureStageState::ALPHAARG1, TextureArg::Texture},
                         {TextureStageState::ALPHAOP, TextureOp::Disable},
                         {TextureStageState::ALPHAARG2, TextureArg::Diffuse},
                         {TextureStageState::TEXTURETRANSFORMFLAGS, TextureTransform::Count2},
                         {TextureStageState::ADDRESSU, TextureAddress::Wrap},
                         {TextureStageState::ADDRESSV, TextureAddress::Wrap},
                         {TextureStageState::MINFILTER, TextureFilter::Linear},
                         {TextureStageState::MAGFILTER, TextureFilter::Linear},
                         {TextureStageState::MIPFILTER, TextureFilter::Linear}};
  for (StageValue& stage : stages) {
    const std::uint32_t old = d.GetTextureStageState(stage.state);
    d.SetTextureStageState(stage.state, stage.value);
    stage.value = old;
  }
  // A video locked to the text would mirror it for ".SWF" sources; pictures stand as they are.
  constexpr float mirror = 1.0f;
  Matrix projection = box.TextFrame->GetUpdatedMatrix() * Matrix::Scaling(mirror / 10.0f, 1.0f / 10.0f, 1.0f);
  projection.m[3][0] += 0.5f;
  projection.m[3][1] += 0.5f;
  d.SetTransform(TransformState::Texture0, projection);
  d.SetMaterial(MaterialOfColor(color));

  // One em is as large as the same text drawn flat: its size in preview pixels, at 50 preview
  // pixels to a world unit (the placement's unit). The depth is in em too.
  const float points = t.FONT_SIZE_ZERO > 0 ? t.FONT_SIZE_ZERO : font.Size;
  const float em = std::max(1.0f, points) * (96.0f / 72.0f) * (previewHeight / 720.0f) / 50.0f;
  box.TextFrame->AddScale(SceneNode::kBefore, em, em, em);
  box.TextFrame->AddTranslation(SceneNode::kBefore, -box.MeshCentre[0], -box.MeshCentre[1], -box.MeshCentre[2]);
  d.SetTransform(TransformState::World, box.TextFrame->GetUpdatedMatrix());
  SetTextLight(d, color);
  d.SetRenderState(RenderState::ALPHABLENDENABLE, 0);
  const bool picture = !box.TextBoxTextureFileName.empty() && box.VideoLockToTextBox != 1;
  d.SetTexture(picture ? box.Texture : 0);
  d.DrawMeshSubset(*box.TextMesh, 0);

  d.SetTexture(0);
  d.LightEnable(false);
  for (auto it = std::rbegin(stages); it != std::rend(stages); ++it) d.SetTextureStageState(it->state, it->value);
  saved.Restore(d);
}

void FrameRenderer::RenderModel(TextBox& box, const TextObject& t, std::uint32_t color) {
  if (!box.Model || !box.Model->InitialiseGeometry(*device_)) return;
  // The model turns about the middle of its bounding box.
  const float* c = box.Model->Centre();
  box.TextFrame->AddTranslation(SceneNode::kBefore, -c[0], -c[1], -c[2]);
  device_->SetTransform(TransformState::World, box.TextFrame->GetUpdatedMatrix());
  box.Model->Render(*device_, color, t.Mesh3DPreserveTextures == 1, t.Shape3DRenderMesh != 0);
}

}  // namespace lumivane
