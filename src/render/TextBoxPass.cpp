#include "render/TextBoxPass.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "core/Color.h"
#include "core/Numbers.h"
#include "core/TextObject.h"
#include "core/TextEngine.h"
#include "render/FlatTextPass.h"
#include "render/Mesh3D.h"
#include "render/TextMesh.h"

namespace lumivane {

namespace {

// A running angle is kept within a turn: a show that loops for hours keeps its precision.
float WrapAngle(float degrees) { return std::fmod(degrees, 360.0f); }

// Show files written elsewhere name pictures and models with backslashes.
std::string FilePath(std::string name) {
  std::replace(name.begin(), name.end(), '\\', '/');
  return name;
}

// A device object kept while records share it, given back with the last of them. Records never
// outlive the device: Release drops them first.
std::shared_ptr<const std::uint32_t> Hold(RenderDevice* device, std::uint32_t id,
                                          void (RenderDevice::*release)(std::uint32_t)) {
  if (id == 0 || device == nullptr) return nullptr;
  return std::shared_ptr<const std::uint32_t>(new std::uint32_t(id), [device, release](const std::uint32_t* held) {
    (device->*release)(*held);
    delete held;
  });
}

}  // namespace

TextBoxPass::TextBoxPass(const PassContext& context)
    : context_(context), drawCopy_([this](std::int32_t index, std::int32_t copy, const TextFrame& frame) {
        DrawCopy(index, copy + 1, frame);
      }) {}

void TextBoxPass::Release() {
  textBoxes_.clear();
  models_.clear();
}

void TextBoxPass::Draw(const FrameArguments& args) {
  RenderDevice* d = context_.device;
  if (d != nullptr) {
    d->SetTextureStageState(TextureStageState::MAGFILTER, TextureFilter::Linear);
    d->SetTextureStageState(TextureStageState::MINFILTER, TextureFilter::Linear);
    // Records follow their texts: new texts, new box sizes and new pictures are taken up here.
    TextBoxSetup();
  }
  frameArguments_ = &args;
  walker_.Run(context_.text, args.Text, drawCopy_, TextPass::Kind::ThreeD, true);
  frameArguments_ = nullptr;
  if (d != nullptr) d->SetRenderState(RenderState::ALPHABLENDENABLE, 0);
}

void TextBoxPass::DrawCopy(std::int32_t index, std::int32_t j, const TextFrame& frame) {
  const bool draw = frame.Enabled && !frame.Text.empty();
  if (draw && context_.textDrawn) context_.textDrawn(index, j - 1, frame);
  if (context_.device == nullptr || index > TextBoxCount() || frameArguments_ == nullptr) return;
  const FrameArguments& args = *frameArguments_;
  RenderDevice& d = *context_.device;
  TextEngine& text = context_.text;
  const TextObject& t = text.Live()[static_cast<std::size_t>(index - 1)];
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
  if (j == 1) text.RenderSetRotationCurrentAngle(index, box.RotationX, box.RotationY, box.RotationZ);

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
  if (!draw || context_.textDrawer == nullptr || frame.Font == nullptr) return;

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
    RenderTextToSurface(d, *context_.textDrawer, box, *frame.Font, pixelSize, color, t.BackGroundColor,
                        FlatTextPass::FormatFlags(text, index, frame.AlignX), frame.Text);
  }
  Wave3D wave = t.Wave3D;
  RenderTextBox(d, box, t, wave, j == 1, t.AlphaBlend, copyColor, t.Shape3DRenderMesh != 0, copyColor,
                textBoxScratch_);
  if (j == 1 && wave.CurrentPhase != t.Wave3D.CurrentPhase) text.RenderSetWaveCurrentPhase(index, wave.CurrentPhase);
}

void TextBoxPass::CreateFull3DText(TextBox& box, const TextObject& t, const TextFrame& frame, std::uint32_t color,
                                  float previewHeight) {
  RenderDevice& d = *context_.device;
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

void TextBoxPass::RenderModel(TextBox& box, const TextObject& t, std::uint32_t color) {
  RenderDevice& d = *context_.device;
  if (!box.Model || !box.Model->InitialiseGeometry(d)) return;
  // The model turns about the middle of its bounding box.
  const float* c = box.Model->Centre();
  box.TextFrame->AddTranslation(SceneNode::kBefore, -c[0], -c[1], -c[2]);
  d.SetTransform(TransformState::World, box.TextFrame->GetUpdatedMatrix());
  box.Model->Render(d, color, t.Mesh3DPreserveTextures == 1, t.Shape3DRenderMesh != 0);
}

std::shared_ptr<const TextureId> TextBoxPass::HoldTexture(TextureId texture) {
  return Hold(context_.device, texture, &RenderDevice::ReleaseTexture);
}

std::shared_ptr<const MeshId> TextBoxPass::HoldMesh(MeshId mesh) {
  return Hold(context_.device, mesh, &RenderDevice::ReleaseMesh);
}

std::shared_ptr<Mesh3D> TextBoxPass::Model(const std::string& path) {
  std::weak_ptr<Mesh3D>& slot = models_[path];
  if (std::shared_ptr<Mesh3D> model = slot.lock()) return model;
  auto model = std::make_shared<Mesh3D>(path, ModelLimits);
  slot = model;
  // Names no record holds any more go, so the map stays as small as the show.
  std::erase_if(models_, [](const auto& entry) { return entry.second.expired(); });
  return model;
}

float TextBoxPass::CameraZ(const TextObject& text, int previewHeight) {
  if (text.Mesh3DZ < 0) return text.Mesh3DZ;
  // Meshes are modelled for a camera twenty units back; a shape's placement units put the
  // preview's half height at previewHeight / 100 units, which fills a quarter-turn view here.
  if (text.Shape3DType == "Custom") return -20.0f;
  return -(static_cast<float>(previewHeight) / 100.0f) / std::tan(3.1415f / 8.0f);
}

void TextBoxPass::TextBoxSetup() {
  if (context_.device == nullptr || context_.text.EngineGetState() != 0) return;
  textBoxes_.resize(static_cast<std::size_t>(context_.text.RenderGetTextCount()));
  for (std::int32_t i = 1; i <= TextBoxCount(); ++i) RefreshTextBox(i);
}

void TextBoxPass::RefreshTextBox(std::int32_t index) {
  const TextObject& t = context_.text.Live()[static_cast<std::size_t>(index - 1)];
  TextBox& box = textBoxes_[static_cast<std::size_t>(index - 1)];
  // A "Custom" text's model, read off the frame's thread; its info goes to the text once read.
  if (t.Text3D && t.Shape3DType == "Custom" && !t.Mesh3DFileName.empty()) {
    const std::string path = FilePath(t.Mesh3DFileName);
    if (!box.Model || box.Model->Path() != path) box.Model = Model(path);
    if (WaitForModels) box.Model->Wait();
    if (box.Model->Loaded() && box.Model->Info() != t.Mesh3DInfo)
      context_.text.RenderSetMesh3DInfo(index, box.Model->Info());
  } else {
    box.Model.reset();
  }
  // An extruded string's mesh is dropped as soon as the text no longer needs it.
  if (!t.Text3D || t.Extrude3D == 0.0f || !t.Shape3DType.empty()) {
    box.TextMesh.reset();
    box.MeshString.clear();
  }
  // Boxes are kept in preview units, so the texture is the box's own size in preview pixels:
  // small, because the string is drawn into it again in every frame.
  // A box dragged far beyond the pane still gets a texture of bounded memory (16 MB at most).
  constexpr int kLargest = 2048;
  const DeviceCaps caps = context_.device->Caps();
  const int maxWidth = caps.MaxTextureWidth > 0 ? std::min(caps.MaxTextureWidth, kLargest) : kLargest;
  const int maxHeight = caps.MaxTextureHeight > 0 ? std::min(caps.MaxTextureHeight, kLargest) : kLargest;
  const int width = std::min(NextPowerOfTwo(t.Right - t.Left), maxWidth);
  const int height = std::min(NextPowerOfTwo(t.Bottom - t.Top), maxHeight);
  const bool resized = box.Width != width || box.Height != height;
  box.Width = width;
  box.Height = height;
  box.VideoLockToTextBox = t.VideoLockToTextBox;
  if (box.TextBoxTextureFileName != t.TextBoxTextureFileName) {
    TextBoxSetTexture(index, t, true, false);
    return;
  }
  if (!box.TextBoxTextureFileName.empty()) return;  // a picture keeps its own size
  if (box.Texture != 0 && !resized) return;
  box.TextureHold = HoldTexture(context_.device->CreateTexture(width, height, TextureFormat::X8R8G8B8, true));
  box.Texture = box.TextureHold ? *box.TextureHold : 0;
}

void TextBoxPass::TextBoxSetTexture(std::int32_t index, const TextObject& settings, bool reload, bool applyToAll) {
  if (context_.device == nullptr || (!applyToAll && TextBoxRecord(index) == nullptr)) return;
  auto each = [&](auto&& apply) {
    for (std::int32_t i = 1; i <= TextBoxCount(); ++i)
      if (applyToAll || i == index) apply(textBoxes_[static_cast<std::size_t>(i - 1)], i);
  };
  each([&](TextBox& box, std::int32_t) {
    box.TextBoxTextureFileName = settings.TextBoxTextureFileName;
    box.VideoLockToTextBox = settings.VideoLockToTextBox;
  });
  if (!reload) return;
  const std::string& name = settings.TextBoxTextureFileName;
  if (name.empty()) {
    // Back to the string: the record makes its own texture again.
    each([&](TextBox& box, std::int32_t i) {
      box.TextureHold.reset();
      box.Texture = 0;
      box.Width = 0;
      if (i <= context_.text.RenderGetTextCount()) RefreshTextBox(i);
    });
    return;
  }
  // One texture per picture: a record that already shows this file lends it.
  std::shared_ptr<const TextureId> picture;
  if (!applyToAll)
    for (std::int32_t i = 1; i <= TextBoxCount() && !picture; ++i) {
      const TextBox& other = textBoxes_[static_cast<std::size_t>(i - 1)];
      if (i != index && other.TextureHold && other.TextBoxTextureFileName == name) picture = other.TextureHold;
    }
  if (!picture) {
    // Pure black is transparent, so a picture on black shows only its figure. A file that does
    // not load leaves the text untextured, and is not tried again until its name changes.
    std::string error;
    picture = HoldTexture(context_.device->CreateTextureFromFileEx(FilePath(name), -1, -1, TextureFormat::A8R8G8B8,
                                                                   ImageFilter::Linear, 0xFF000000u, &error));
  }
  each([&](TextBox& box, std::int32_t) {
    box.TextureHold = picture;
    box.Texture = picture ? *picture : 0;
  });
}

void TextBoxPass::ScaleText(std::int32_t index, float x, float y, float z) {
  if (TextBoxRecord(index) == nullptr) return;
  TextBox& box = textBoxes_[static_cast<std::size_t>(index - 1)];
  box.RootFrame->UpdateFrames();
  box.TextFrame->AddScale(SceneNode::kAfter, x, y, z);
}

void TextBoxPass::TextBoxRemove(std::int32_t index) {
  if (TextBoxRecord(index) == nullptr) return;
  textBoxes_.erase(textBoxes_.begin() + (index - 1));
}

void TextBoxPass::TextFrameZOrder(std::int32_t index, bool toFirst) {
  if (context_.text.EngineGetState() != 0 || TextBoxRecord(index) == nullptr) return;
  const auto at = textBoxes_.begin() + (index - 1);
  // The moved record takes the first or last place; the others close up around it.
  if (toFirst)
    std::rotate(textBoxes_.begin(), at, at + 1);
  else
    std::rotate(at, at + 1, textBoxes_.end());
}

}  // namespace lumivane
