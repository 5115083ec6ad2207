#include "forms/EffectsForm.h"

#include <array>
#include <utility>
#include <vector>

namespace lumivane {

namespace {

constexpr std::array<std::string_view, 13> kCodes = {"ZERO",          "ONE",           "SRC_COLOR",
                                                      "INV_SRC_COLOR", "SRC_ALPHA",     "INV_SRC_ALPHA",
                                                      "DEST_ALPHA",    "INV_DEST_ALPHA", "DEST_COLOR",
                                                      "INV_DEST_COLOR", "SRC_ALPHA_SAT", "BOTH_SRC_ALPHA",
                                                      "BOTH_INV_SRC_ALPHA"};

// cmdEffectBlending1..4: source and target.
constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kPairs = {
    {{"SRC_COLOR", "INV_SRC_COLOR"}, {"DEST_COLOR", "SRC_COLOR"}, {"INV_SRC_COLOR", "INV_SRC_COLOR"},
     {"INV_DEST_COLOR", "INV_DEST_COLOR"}}};

}  // namespace

int EffectBlendCode(std::string_view name, bool source) noexcept {
  for (std::size_t i = 0; i < kCodes.size(); ++i)
    if (kCodes[i] == name) return static_cast<int>(i) + 1;
  return source ? 3 : 9;
}

EffectsForm::EffectsForm(ControlModel& model) : model_(model) {
  RegisterControls();
  Connect();
}

void EffectsForm::RegisterControls() {
  ControlModel& m = model_;
  const std::string_view f = kFormName;
  auto add = [&](ControlKind kind, std::string_view name, std::string_view caption = {}) {
    ControlHandle h = m.Add(f, kind, name);
    if (!caption.empty()) m.SetCaption(h, caption);
    return h;
  };
  auto slider = [&](std::string_view name, int min, int max, int value, int large, std::string_view caption) {
    ControlHandle h = add(ControlKind::Slider, name, caption);
    m.SetRange(h, min, max);
    m.SetSteps(h, 1, large);
    m.SetValue(h, value);
    return h;
  };
  Controls& c = c_;
  c.chkEnableEffect = add(ControlKind::CheckBox, "chkEnableEffect", "Enable Effect");
  c.chkCaptureEffect = add(ControlKind::CheckBox, "chkCaptureEffect", "Capture Output");
  c.chkHoldEffectTimer = add(ControlKind::CheckBox, "chkHoldEffectTimer", "Hold Timer");
  c.chkComputeAspectRatio = add(ControlKind::CheckBox, "chkComputeAspectRatio", "Keep Aspect Ratio");
  const std::vector<std::string> names(std::begin(kBlendNames), std::end(kBlendNames));
  c.cboSourceBlend = add(ControlKind::ComboBox, "cboSourceBlend", "Source blend");
  m.SetItems(c.cboSourceBlend, names);
  m.SetText(c.cboSourceBlend, "SRC_COLOR");
  c.cboTargetBlend = add(ControlKind::ComboBox, "cboTargetBlend", "Target blend");
  m.SetItems(c.cboTargetBlend, names);
  m.SetText(c.cboTargetBlend, "DEST_COLOR");
  c.cmdEffectBlending1 = add(ControlKind::CommandButton, "cmdEffectBlending1", "Screen");
  c.cmdEffectBlending2 = add(ControlKind::CommandButton, "cmdEffectBlending2", "Multiply");
  c.cmdEffectBlending3 = add(ControlKind::CommandButton, "cmdEffectBlending3", "Inverse");
  c.cmdEffectBlending4 = add(ControlKind::CommandButton, "cmdEffectBlending4", "Inverse Target");
  c.picEffectColor = add(ControlKind::PictureBox, "picEffectColor", "Colour");
  m.SetBackColor(c.picEffectColor, 0xFFFFFF);
  c.SliderEffectColorRandom = slider("SliderEffectColorRandom", 0, 255, 0, 16, "Colour random");
  c.SliderEffectTime = slider("SliderEffectTime", 0, 10000, 1000, 250, "Period (ms)");
  m.SetToolTip(c.SliderEffectTime, "Layout and capture period (ms)");
  c.SliderEffectPositionRandomX = slider("SliderEffectPositionRandomX", 0, 1000, 0, 50, "Position X random");
  c.SliderEffectPositionRandomY = slider("SliderEffectPositionRandomY", 0, 1000, 0, 50, "Position Y random");
  c.chkEffectPositionUniform = add(ControlKind::CheckBox, "chkEffectPositionUniform", "Uniform");
  c.SliderEffectSizeRandomX = slider("SliderEffectSizeRandomX", 0, 1000, 0, 50, "Size X random");
  c.SliderEffectSizeRandomY = slider("SliderEffectSizeRandomY", 0, 1000, 0, 50, "Size Y random");
  c.chkEffectSizeUniform = add(ControlKind::CheckBox, "chkEffectSizeUniform", "Uniform");
  c.SliderEffectTileX = slider("SliderEffectTileX", 1, 20, 1, 2, "Tile X");
  c.SliderEffectTileY = slider("SliderEffectTileY", 1, 20, 1, 2, "Tile Y");
  c.chkRandomizeTiling = add(ControlKind::CheckBox, "chkRandomizeTiling", "Random Tiling");
  c.SliderEffectOffsetX = slider("SliderEffectOffsetX", -20, 20, 0, 5, "Offset X");
  c.SliderEffectOffsetY = slider("SliderEffectOffsetY", -20, 20, 0, 5, "Offset Y");
  c.chkRandomizeOffset = add(ControlKind::CheckBox, "chkRandomizeOffset", "Random Offset");
  c.cmdLoadEffectTexture = add(ControlKind::CommandButton, "cmdLoadEffectTexture", "Load Image...");
  c.cmdClearEffectTexture = add(ControlKind::CommandButton, "cmdClearEffectTexture", "Clear Image");
  c.picCurrentEffect = add(ControlKind::PictureBox, "picCurrentEffect");
  c.txtEffectFileName = add(ControlKind::TextBox, "txtEffectFileName");
}

void EffectsForm::Connect() {
  ControlModel& m = model_;
  const Controls& c = c_;
  m.OnChange(c.cmdLoadEffectTexture, [this](const ControlEvent&) { LoadEffectTexture(); });
  m.OnChange(c.cmdClearEffectTexture, [this](const ControlEvent&) { ClearEffectTexture(); });
  const ControlHandle buttons[] = {c.cmdEffectBlending1, c.cmdEffectBlending2, c.cmdEffectBlending3,
                                   c.cmdEffectBlending4};
  for (int i = 0; i < 4; ++i)
    m.OnChange(buttons[i], [this, i](const ControlEvent&) { EffectBlending(i + 1); });
}

void EffectsForm::EffectBlending(int button) {
  if (button < 1 || button > 4) return;
  const auto& pair = kPairs[static_cast<std::size_t>(button - 1)];
  model_.SetText(c_.cboSourceBlend, pair.first);
  model_.SetText(c_.cboTargetBlend, pair.second);
}

void EffectsForm::SetEffectFile(const std::string& file) {
  model_.SetText(c_.txtEffectFileName, file);
  if (file.empty()) {
    if (Output != nullptr) Output->ResetEffectPicture();
  } else if (Output != nullptr) {
    Output->SetEffectPicture(file);
  }
  if (GetEffectScreenShot) GetEffectScreenShot();
}

void EffectsForm::LoadEffectTexture() {
  if (!ChooseEffectFile) return;
  const std::string file = ChooseEffectFile();
  if (!file.empty()) SetEffectFile(file);
}

void EffectsForm::ClearEffectTexture() { SetEffectFile({}); }

void EffectsForm::Initialize() {
  const std::string file = EffectFileName();
  if (!file.empty() && Output != nullptr) Output->SetEffectPicture(file);
}

}  // namespace lumivane
