#include "forms/Shape3DForm.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "core/Numbers.h"
#include "core/TextEngine.h"
#include "forms/MainForm.h"

namespace lumivane {

namespace {

using FieldBinding = MainForm::FieldBinding;

// The mesh's camera distance: always in front of the camera, never at it.
constexpr int kMeshZMin = -200;
constexpr int kMeshZMax = -1;

// A shape no text has set yet: every parameter 0 (the wave's running phase is the renderer's).
bool Blank(const Circle3D& s) { return s.Radius == 0 && s.Smoothness == 0 && s.Tiling == 0; }
bool Blank(const Wave3D& s) { return s.Amplitude == 0 && s.Size == 0 && s.Phase == 0 && s.Tiling == 0; }
bool Blank(const Spiral3D& s) {
  return s.Radius == 0 && s.RevolutionCount == 0 && s.Smoothness == 0 && s.Tiling == 0;
}

void ShowClamped(ControlModel& m, ControlHandle h, double value) {
  const Control* c = h.get();
  if (c == nullptr) return;
  const double lo = std::min(c->Min, c->Max), hi = std::max(c->Min, c->Max);
  m.SetValue(h, ToInt32(std::clamp(value, lo, hi)).value_or(c->Value));
}

// A slider onto one parameter of a shape. A blank shape shows its defaults, and the next save
// stores them, so ticking it draws something rather than a degenerate strip. A stored value
// beyond the slider's range shows at the nearest end.
template <class Shape>
FieldBinding ShapeSlider(ControlHandle h, Shape TextObject::*shape, std::int32_t Shape::*field,
                         const Shape& defaults) {
  return {h, [h, shape, field](const ControlModel& m, TextObject& t) { t.*shape.*field = m.Value(h); },
          [h, shape, field, defaults](ControlModel& m, const TextObject& t) {
            const Shape& s = Blank(t.*shape) ? defaults : t.*shape;
            ShowClamped(m, h, s.*field);
          }};
}

// The slider's whole-number position a stored camera distance shows at; 0 is "never set".
int MeshZShown(float z) {
  constexpr int fallback = Shape3DForm::kMeshZDefault;
  if (z == 0.0f || !std::isfinite(z)) return fallback;
  return ToInt32(std::clamp(static_cast<double>(z), double{kMeshZMin}, double{kMeshZMax})).value_or(fallback);
}

}  // namespace

Shape3DForm::Shape3DForm(ControlModel& model, MainForm& main) : model_(model), main_(main) {
  RegisterControls();
  BindFields();
  if (main_.getSelectedTextIndex() >= 1) main_.RenderTextProperties();
}

void Shape3DForm::RegisterControls() {
  ControlModel& m = model_;
  const std::string_view f = kFormName;
  auto check = [&](std::string_view name, std::string_view caption) {
    ControlHandle h = m.Add(f, ControlKind::CheckBox, name);
    m.SetCaption(h, caption);
    return h;
  };
  auto frame = [&](std::string_view name) {
    ControlHandle h = m.Add(f, ControlKind::Frame, name);
    m.SetEnabled(h, false);  // nothing is ticked yet
    return h;
  };
  auto slider = [&](std::string_view name, std::string_view caption, int min, int max, int value, int smallChange = 1,
                    int largeChange = 5) {
    ControlHandle h = m.Add(f, ControlKind::Slider, name);
    m.SetCaption(h, caption);
    m.SetRange(h, min, max);
    m.SetSteps(h, smallChange, largeChange);
    m.SetValue(h, value);
    return h;
  };

  ShapeControls& c = c_;
  c.chkCircle = check("chkCircle", "Circular");
  c.fraCircle = frame("fraCircle");
  c.SliderCircleRadius = slider("SliderCircleRadius", "Radius", 1, 20, kCircleDefaults.Radius);
  c.SliderCircleSmoothness = slider("SliderCircleSmoothness", "Smoothness", 1, 360, kCircleDefaults.Smoothness, 1, 10);
  c.SliderCircleTiling = slider("SliderCircleTiling", "Tiling", 1, 20, kCircleDefaults.Tiling);

  c.chkWave = check("chkWave", "Wave");
  c.fraWave = frame("fraWave");
  c.SliderWaveAmplitude = slider("SliderWaveAmplitude", "Amplitude", 0, 10, kWaveDefaults.Amplitude);
  // The wave is sampled every 10 degrees: the size moves in those steps.
  c.SliderWaveSize = slider("SliderWaveSize", "Size", 10, 720, kWaveDefaults.Size, 10, 90);
  c.SliderWavePhase = slider("SliderWavePhase", "Phase", 0, 90, kWaveDefaults.Phase);
  c.SliderWaveTiling = slider("SliderWaveTiling", "Tiling", 1, 20, kWaveDefaults.Tiling);

  c.chkSpiral = check("chkSpiral", "Spiral");
  c.fraSpiral = frame("fraSpiral");
  c.SliderSpiralRadius = slider("SliderSpiralRadius", "Radius", 1, 20, kSpiralDefaults.Radius);
  c.SliderSpiralRevolutionCount =
      slider("SliderSpiralRevolutionCount", "Revolutions", 1, 10, kSpiralDefaults.RevolutionCount, 1, 1);
  c.SliderSpiralSmoothness = slider("SliderSpiralSmoothness", "Smoothness", 1, 90, kSpiralDefaults.Smoothness);
  c.SliderSpiralTiling = slider("SliderSpiralTiling", "Tiling", 1, 20, kSpiralDefaults.Tiling);

  c.chkCustom = check("chkCustom", "Custom Mesh Import (3DS)");
  c.fraCustom = frame("fraCustom");
  c.cmdLoadCustomMesh = m.Add(f, ControlKind::CommandButton, "cmdLoadCustomMesh");
  m.SetCaption(c.cmdLoadCustomMesh, "Load Custom Mesh (3DS)");
  c.SliderCustomMeshZ = slider("SliderCustomMeshZ", "Zoom", kMeshZMin, kMeshZMax, kMeshZDefault, 1, 10);
  m.SetToolTip(c.SliderCustomMeshZ, "Custom Mesh Zoom");
  c.chkCustomMeshPreserveTextures = check("chkCustomMeshPreserveTextures", "Preserve Mesh Textures");
  c.txtMeshInfo = m.Add(f, ControlKind::TextBox, "txtMeshInfo");
  m.SetToolTip(c.txtMeshInfo, "Shows the Mesh Info");

  c.chkShowMesh = check("chkShowMesh", "Show the Mesh (Wireframe)");

  c.cmdLoadTextBoxTexture = m.Add(f, ControlKind::CommandButton, "cmdLoadTextBoxTexture");
  m.SetCaption(c.cmdLoadTextBoxTexture, "Load Text Box Picture");
  c.cmdClearTextBoxTexture = m.Add(f, ControlKind::CommandButton, "cmdClearTextBoxTexture");
  m.SetCaption(c.cmdClearTextBoxTexture, "Show the Text");
  c.lblTextBoxTexture = m.Add(f, ControlKind::Label, "lblTextBoxTexture");
}

void Shape3DForm::BindFields() {
  const ShapeControls& c = c_;
  auto bind = [this](FieldBinding b, bool saves = true) {
    if (saves) model_.OnChange(b.control, [this](const ControlEvent&) { main_.Save(); });
    main_.AddFieldBinding(std::move(b));
  };

  // Every check box reads the whole choice, so the type follows whichever of them is ticked.
  struct Shape {
    ControlHandle check;
    std::string_view type;
  };
  for (const Shape& s : {Shape{c.chkCircle, "Circle"}, Shape{c.chkWave, "Wave"}, Shape{c.chkSpiral, "Spiral"},
                         Shape{c.chkCustom, "Custom"}}) {
    const ControlHandle h = s.check;
    const std::string type(s.type);
    bind({h, [this](const ControlModel&, TextObject& t) { t.Shape3DType = ShapeType(); },
          [h, type](ControlModel& m, const TextObject& t) { m.SetValue(h, t.Shape3DType == type ? 1 : 0); }},
         false);
    model_.OnChange(h, [this, h](const ControlEvent& e) { ShapeChecked(h, e.origin); });
  }

  const auto circle = &TextObject::Circle3D;
  bind(ShapeSlider(c.SliderCircleRadius, circle, &Circle3D::Radius, kCircleDefaults));
  bind(ShapeSlider(c.SliderCircleSmoothness, circle, &Circle3D::Smoothness, kCircleDefaults));
  bind(ShapeSlider(c.SliderCircleTiling, circle, &Circle3D::Tiling, kCircleDefaults));
  const auto wave = &TextObject::Wave3D;
  bind(ShapeSlider(c.SliderWaveAmplitude, wave, &Wave3D::Amplitude, kWaveDefaults));
  bind(ShapeSlider(c.SliderWaveSize, wave, &Wave3D::Size, kWaveDefaults));
  bind(ShapeSlider(c.SliderWavePhase, wave, &Wave3D::Phase, kWaveDefaults));
  bind(ShapeSlider(c.SliderWaveTiling, wave, &Wave3D::Tiling, kWaveDefaults));
  const auto spiral = &TextObject::Spiral3D;
  bind(ShapeSlider(c.SliderSpiralRadius, spiral, &Spiral3D::Radius, kSpiralDefaults));
  bind(ShapeSlider(c.SliderSpiralRevolutionCount, spiral, &Spiral3D::RevolutionCount, kSpiralDefaults));
  bind(ShapeSlider(c.SliderSpiralSmoothness, spiral, &Spiral3D::Smoothness, kSpiralDefaults));
  bind(ShapeSlider(c.SliderSpiralTiling, spiral, &Spiral3D::Tiling, kSpiralDefaults));

  // The camera distance is a float in the record, and the renderer takes any negative one as set
  // for every shape: the record changes only when the slider stands elsewhere than the record
  // shows, so a record's 0 (not set) or -12.5 survives saves made for other controls.
  const ControlHandle z = c.SliderCustomMeshZ;
  bind({z,
        [z](const ControlModel& m, TextObject& t) {
          if (MeshZShown(t.Mesh3DZ) != m.Value(z)) t.Mesh3DZ = static_cast<float>(m.Value(z));
        },
        [z](ControlModel& m, const TextObject& t) { m.SetValue(z, MeshZShown(t.Mesh3DZ)); }});
  const ControlHandle preserve = c.chkCustomMeshPreserveTextures;
  bind({preserve,
        [preserve](const ControlModel& m, TextObject& t) { t.Mesh3DPreserveTextures = m.Value(preserve) == 1 ? 1 : 0; },
        [preserve](ControlModel& m, const TextObject& t) { m.SetValue(preserve, t.Mesh3DPreserveTextures != 0 ? 1 : 0); }});
  const ControlHandle mesh = c.chkShowMesh;
  bind({mesh, [mesh](const ControlModel& m, TextObject& t) { t.Shape3DRenderMesh = m.Value(mesh) == 1 ? 1 : 0; },
        [mesh](ControlModel& m, const TextObject& t) { m.SetValue(mesh, t.Shape3DRenderMesh != 0 ? 1 : 0); }});
  // The mesh info is the loader's to write; the box only shows it.
  const ControlHandle info = c.txtMeshInfo;
  bind({info, nullptr, [info](ControlModel& m, const TextObject& t) { m.SetText(info, t.Mesh3DInfo); }}, false);

  model_.OnChange(c.cmdLoadCustomMesh, [this](const ControlEvent&) { LoadCustomMesh(); });

  const ControlHandle picture = c.lblTextBoxTexture;
  bind({picture, nullptr,
        [picture](ControlModel& m, const TextObject& t) { m.SetCaption(picture, t.TextBoxTextureFileName); }},
       false);
  model_.OnChange(c.cmdLoadTextBoxTexture, [this](const ControlEvent&) { LoadTextBoxTexture(); });
  model_.OnChange(c.cmdClearTextBoxTexture, [this](const ControlEvent&) { ClearTextBoxTexture(); });
}

std::string Shape3DForm::ShapeType() const {
  if (ControlModel::Checked(c_.chkCircle)) return "Circle";
  if (ControlModel::Checked(c_.chkWave)) return "Wave";
  if (ControlModel::Checked(c_.chkSpiral)) return "Spiral";
  if (ControlModel::Checked(c_.chkCustom)) return "Custom";
  return {};
}

void Shape3DForm::ShapeChecked(ControlHandle check, Origin origin) {
  const std::array<std::pair<ControlHandle, ControlHandle>, 4> shapes = {
      {{c_.chkCircle, c_.fraCircle}, {c_.chkWave, c_.fraWave}, {c_.chkSpiral, c_.fraSpiral}, {c_.chkCustom, c_.fraCustom}}};
  if (ControlModel::Checked(check) && !switching_) {
    switching_ = true;
    for (const auto& shape : shapes) {
      if (!(shape.first == check)) model_.SetValue(shape.first, 0, origin);
    }
    switching_ = false;
  }
  for (const auto& shape : shapes) model_.SetEnabled(shape.second, ControlModel::Checked(shape.first));
  if (!switching_) main_.Save();
}

void Shape3DForm::LoadCustomMesh() {
  const std::int32_t index = main_.getSelectedTextIndex();
  if (index < 1 || index > main_.Text().PreviewGetTextCount() || !ChooseMeshFile) return;
  const std::string file = ChooseMeshFile();
  if (file.empty()) return;
  main_.TextSelected.Mesh3DFileName = file;
  main_.Save();  // the loader finds the name in the stored record as well
  if (!LoadMesh) return;
  LoadMesh(file);
  model_.SetText(c_.txtMeshInfo, main_.TextSelected.Mesh3DInfo);
  main_.Save();
}

void Shape3DForm::LoadTextBoxTexture() {
  const std::int32_t index = main_.getSelectedTextIndex();
  if (index < 1 || index > main_.Text().PreviewGetTextCount() || !ChooseTextBoxTexture) return;
  const std::string file = ChooseTextBoxTexture();
  if (file.empty()) return;
  // The renderer takes the new name up at its next frame; operate-on-all hands it to every text.
  main_.TextSelected.TextBoxTextureFileName = file;
  main_.Save();
  model_.SetCaption(c_.lblTextBoxTexture, file);
}

void Shape3DForm::ClearTextBoxTexture() {
  const std::int32_t index = main_.getSelectedTextIndex();
  if (index < 1 || index > main_.Text().PreviewGetTextCount()) return;
  main_.TextSelected.TextBoxTextureFileName.clear();
  main_.Save();
  model_.SetCaption(c_.lblTextBoxTexture, "");
}

}  // namespace lumivane
