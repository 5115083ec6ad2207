#include "persistence/GlobalBlock.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <span>
#include <string_view>

#include "core/Numbers.h"
#include "forms/BackgroundsForm.h"
#include "forms/EffectsForm.h"
#include "forms/MainForm.h"
#include "persistence/XmlDocument.h"

namespace lumivane {

namespace {

// How a setting is stored and which control, or which part of a form, it stands for.
enum class Type : std::uint8_t {
  Resolution,    // cboResolution: taken only when it looks like WIDTHxHEIGHT
  Text,          // combo or text box text, kept even when it is none of the items
  Flag,          // check box or toggle button: 0 or 1, any non-zero reads as set
  Slider,        // clamped into the slider's range
  Colour,        // 0x00BBGGRR
  Milliseconds,  // a text box holding a number
  Playing,       // cmdPlay of the backgrounds: set only after the list is replaced
  BackgroundCount,
  BackgroundFiles,  // 1Background, 2Background, ...
  MaskFile,
  EffectFile,
  Kept,  // not read by this build: the show's element goes back in its place
  Block,
};

// The form a setting belongs to; without it (a bare test) the show's element is kept.
enum class Part : std::uint8_t { Main, Backgrounds, Effects, None };

using BG = BackgroundsForm::Controls;
using FX = EffectsForm::Controls;

struct Field {
  std::string_view name;
  Type type;
  Part part;
  ControlHandle (*main)(MainForm&) = nullptr;
  ControlHandle BG::*background = nullptr;
  ControlHandle FX::*effect = nullptr;
  std::span<const Field> children = {};
};

constexpr Field B(std::string_view name, Type type, ControlHandle BG::*c = nullptr) {
  return {name, type, Part::Backgrounds, nullptr, c, nullptr, {}};
}
constexpr Field E(std::string_view name, Type type, ControlHandle FX::*c = nullptr) {
  return {name, type, Part::Effects, nullptr, nullptr, c, {}};
}

constexpr Field kBackgroundsBlock[] = {
    B("BackgroundCount", Type::BackgroundCount),
    B("BackgroundFadeIn", Type::Flag, &BG::chkImageFadeIn),
    B("BackgroundFadeOut", Type::Flag, &BG::chkImageFadeOut),
    B("BackGroundComputeAspectRatio", Type::Flag, &BG::chkComputeAspectRatio),
    B("BackgroundPlaying", Type::Playing, &BG::cmdPlay),
    B("Background", Type::BackgroundFiles),
};

constexpr Field kMaskBlock[] = {
    B("MaskFileName", Type::MaskFile),
    B("EnableMask", Type::Flag, &BG::cmdEnableMask),
};

// Global in the writer's order.
constexpr Field kGlobal[] = {
    {"Resolution", Type::Resolution, Part::Main, [](MainForm& f) { return f.Playback().cboResolution; }},
    B("RecordFramesPerSecond", Type::Slider, &BG::SliderRecordFramesPerSecond),
    {"Backgrounds", Type::Block, Part::Backgrounds, nullptr, nullptr, nullptr, kBackgroundsBlock},
    {"Mask", Type::Block, Part::Backgrounds, nullptr, nullptr, nullptr, kMaskBlock},
    {"VideoFiles", Type::Kept, Part::None},
    {"BackGroundColor", Type::Colour, Part::Main, [](MainForm& f) { return f.BackgroundColor; }},
    B("BackGroundFilterColor", Type::Colour, &BG::piCFilterColor),
    B("BackGroundTimer", Type::Milliseconds, &BG::txtTimerInterval),
    B("HoldBackGroundTimer", Type::Flag, &BG::chkHoldBackgroundTimer),
    B("BackGroundCapture", Type::Flag, &BG::cmdFeedBack),
    B("BackGroundHold", Type::Flag, &BG::chkHoldBackground),
    B("InvertOutput", Type::Flag, &BG::chkInvertOutput),
    B("BackGroundPositionRandomX", Type::Slider, &BG::SliderBackGroundPositionRandomX),
    B("BackGroundPositionRandomY", Type::Slider, &BG::SliderBackGroundPositionRandomY),
    B("BackGroundPositionUniform", Type::Flag, &BG::chkBackGroundPositionUniform),
    B("BackGroundSizeRandomX", Type::Slider, &BG::SliderBackgroundSizeRandomX),
    B("BackGroundSizeRandomY", Type::Slider, &BG::SliderBackgroundSizeRandomY),
    B("BackGroundSizeUniform", Type::Flag, &BG::chkBackGroundSizeUniform),
    B("BackGroundFilterRandom", Type::Slider, &BG::sliderRandomBackgroundFilterColor),
    B("BackGroundTileX", Type::Slider, &BG::SliderBackgroundTileX),
    B("BackGroundTileY", Type::Slider, &BG::SliderBackgroundTileY),
    B("BackGroundOffsetX", Type::Slider, &BG::SliderBackGroundOffsetX),
    B("BackGroundOffsetY", Type::Slider, &BG::SliderBackGroundOffsetY),
    B("BackGroundTileRandomize", Type::Flag, &BG::chkRandomizeTiling),
    B("BackGroundOffsetRandomize", Type::Flag, &BG::chkRandomizeOffset),
    E("EffectSourceBlend", Type::Text, &FX::cboSourceBlend),
    E("EffectTargetBlend", Type::Text, &FX::cboTargetBlend),
    E("EffectEnabled", Type::Flag, &FX::chkEnableEffect),
    E("EffectFileName", Type::EffectFile),
    E("EffectColor", Type::Colour, &FX::picEffectColor),
    E("EffectTimer", Type::Slider, &FX::SliderEffectTime),
    E("HoldEffectTimer", Type::Flag, &FX::chkHoldEffectTimer),
    E("EffectColorRandom", Type::Slider, &FX::SliderEffectColorRandom),
    E("EffectTileX", Type::Slider, &FX::SliderEffectTileX),
    E("EffectTileY", Type::Slider, &FX::SliderEffectTileY),
    E("EffectOffsetX", Type::Slider, &FX::SliderEffectOffsetX),
    E("EffectOffsetY", Type::Slider, &FX::SliderEffectOffsetY),
    E("EffectRandomizeTiling", Type::Flag, &FX::chkRandomizeTiling),
    E("EffectRandomizeOffset", Type::Flag, &FX::chkRandomizeOffset),
    E("EffectSizeRandomX", Type::Slider, &FX::SliderEffectSizeRandomX),
    E("EffectSizeRandomY", Type::Slider, &FX::SliderEffectSizeRandomY),
    E("EffectSizeUniform", Type::Flag, &FX::chkEffectSizeUniform),
    E("EffectPositionRandomX", Type::Slider, &FX::SliderEffectPositionRandomX),
    E("EffectPositionRandomY", Type::Slider, &FX::SliderEffectPositionRandomY),
    E("EffectPositionUniform", Type::Flag, &FX::chkEffectPositionUniform),
    E("EffectComputeAspectRatio", Type::Flag, &FX::chkComputeAspectRatio),
    E("CaptureEffect", Type::Flag, &FX::chkCaptureEffect),
    B("FadeOut", Type::Slider, &BG::SliderFadeOut),
};

bool Owned(Part part, const MainForm& form) {
  switch (part) {
    case Part::Main: return true;
    case Part::Backgrounds: return form.Backgrounds != nullptr;
    case Part::Effects: return form.Effects != nullptr;
    case Part::None: break;
  }
  return false;
}

ControlHandle ControlOf(const Field& f, MainForm& form) {
  if (f.main != nullptr) return f.main(form);
  if (f.background != nullptr) return form.Backgrounds->C().*f.background;
  if (f.effect != nullptr) return form.Effects->C().*f.effect;
  return {};
}

// "12Background" for word "Background": digits, at least one, then the word.
bool IsNumbered(std::string_view name, std::string_view word) {
  if (name.size() <= word.size() || name.substr(name.size() - word.size()) != word) return false;
  const std::string_view number = name.substr(0, name.size() - word.size());
  return std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool Names(const Field& f, std::string_view name) {
  return f.type == Type::BackgroundFiles ? IsNumbered(name, f.name) : name == f.name;
}

bool NamedBy(std::span<const Field> fields, std::string_view name) {
  return std::any_of(fields.begin(), fields.end(), [&](const Field& f) { return Names(f, name); });
}

// Signed or unsigned decimal of a 32-bit word; the bits are what counts.
std::optional<std::uint32_t> ParseWord(const char* text) {
  const auto v = ParseNumber(text);
  if (!v) return std::nullopt;
  const double r = std::nearbyint(*v);
  if (r < -2147483648.0 || r > 4294967295.0) return std::nullopt;
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(r));
}

// ---- Writing ---------------------------------------------------------------------------------------

void CopyKept(pugi::xml_node parent, const Field& f, pugi::xml_node kept) {
  if (f.type == Type::BackgroundFiles) {
    for (pugi::xml_node n = kept.first_child(); n; n = n.next_sibling())
      if (IsNumbered(XmlDocument::FileName(n.name()), f.name)) parent.append_copy(n);
  } else if (const pugi::xml_node n = Child(kept, f.name)) {
    parent.append_copy(n);
  }
}

void WriteFields(pugi::xml_node parent, std::span<const Field> fields, MainForm& form, pugi::xml_node kept) {
  for (const Field& f : fields) {
    if (f.type == Type::Kept || !Owned(f.part, form)) {
      CopyKept(parent, f, kept);
      continue;
    }
    const ControlHandle c = ControlOf(f, form);
    switch (f.type) {
      case Type::Resolution:
      case Type::Text: AppendValue(parent, f.name, ControlModel::Text(c)); break;
      case Type::Flag:
      case Type::Playing: AppendFlag(parent, f.name, ControlModel::Checked(c)); break;
      case Type::Slider: AppendValue(parent, f.name, std::to_string(ControlModel::Value(c))); break;
      case Type::Colour: AppendValue(parent, f.name, std::to_string(ControlModel::BackColor(c))); break;
      // The output reads the box's leading number; a typed "300 ms" is stored as what it means.
      case Type::Milliseconds: AppendValue(parent, f.name, FormatNumber(LeadingNumber(ControlModel::Text(c)))); break;
      case Type::BackgroundCount:
        AppendValue(parent, f.name, std::to_string(form.Backgrounds->Items().size()));
        break;
      case Type::BackgroundFiles: {
        const std::vector<BackgroundItem>& items = form.Backgrounds->Items();
        for (std::size_t i = 0; i < items.size(); ++i)
          AppendValue(parent, std::to_string(i + 1) + std::string(f.name), items[i].FileName);
        break;
      }
      case Type::MaskFile: AppendValue(parent, f.name, form.Backgrounds->MaskFileName()); break;
      case Type::EffectFile: AppendValue(parent, f.name, form.Effects->EffectFileName()); break;
      case Type::Block: {
        const pugi::xml_node block = parent.append_child(XmlDocument::ChildName(f.name).c_str());
        WriteFields(block, f.children, form, Child(kept, f.name));
        break;
      }
      case Type::Kept: break;
    }
  }
  // What a newer writer added goes back after everything this build knows.
  for (pugi::xml_node n = kept.first_child(); n; n = n.next_sibling())
    if (!NamedBy(fields, XmlDocument::FileName(n.name()))) parent.append_copy(n);
}

// ---- Reading ---------------------------------------------------------------------------------------

// The numbered files of a block, 1 to its count; an old count-less block up to the first gap.
std::vector<std::string> ReadNumbered(pugi::xml_node block, std::string_view word) {
  std::vector<std::string> files;
  auto file = [&](std::size_t i) { return Child(block, std::to_string(i) + std::string(word)); };
  const pugi::xml_node countNode = Child(block, "BackgroundCount");
  const auto count = countNode ? ParseNumber(countNode.text().get()) : std::nullopt;
  if (count) {
    // No more files than the block has elements, whatever the count says.
    const auto children = static_cast<double>(std::distance(block.begin(), block.end()));
    const auto last = static_cast<std::size_t>(std::clamp(*count, 0.0, children));
    for (std::size_t i = 1; i <= last; ++i)
      if (const pugi::xml_node n = file(i)) files.emplace_back(n.text().get());
  } else {
    for (std::size_t i = 1; const pugi::xml_node n = file(i); ++i) files.emplace_back(n.text().get());
  }
  return files;
}

void ReadFields(pugi::xml_node parent, std::span<const Field> fields, MainForm& form, GlobalSettings& s) {
  using How = GlobalSettings::ControlWrite::How;
  for (const Field& f : fields) {
    if (f.type == Type::Kept || !Owned(f.part, form)) continue;
    if (f.type == Type::BackgroundFiles) {
      s.Backgrounds = ReadNumbered(parent, f.name);
      continue;
    }
    const pugi::xml_node node = Child(parent, f.name);
    if (!node) continue;
    const char* text = node.text().get();
    const ControlHandle c = ControlOf(f, form);
    switch (f.type) {
      case Type::Resolution:
        if (std::string_view(text).find('x') != std::string_view::npos) s.Controls.push_back({c, How::Text, text, 0});
        break;
      case Type::Text: s.Controls.push_back({c, How::Text, text, 0}); break;
      case Type::Flag:
        if (const auto v = ParseNumber(text)) s.Controls.push_back({c, How::Value, {}, *v != 0 ? 1 : 0});
        break;
      case Type::Playing:
        if (const auto v = ParseNumber(text)) s.BackgroundPlaying = *v != 0;
        break;
      case Type::Slider:
        if (const auto v = ParseNumber(text); v && c) {
          // The slider refuses values outside its range: an old or edited show gets its nearest end.
          const double lo = std::min(c->Min, c->Max), hi = std::max(c->Min, c->Max);
          s.Controls.push_back({c, How::Value, {}, static_cast<std::int32_t>(std::nearbyint(std::clamp(*v, lo, hi)))});
        }
        break;
      case Type::Colour:
        if (const auto v = ParseWord(text)) s.Controls.push_back({c, How::Colour, {}, static_cast<std::int32_t>(*v)});
        break;
      case Type::Milliseconds:
        if (const auto v = ParseNumber(text)) s.Controls.push_back({c, How::Text, FormatNumber(*v), 0});
        break;
      case Type::MaskFile: s.MaskFileName = text; break;
      case Type::EffectFile: s.EffectFileName = text; break;
      case Type::Block: ReadFields(node, f.children, form, s); break;
      case Type::BackgroundCount:
      case Type::BackgroundFiles:
      case Type::Kept: break;
    }
  }
}

}  // namespace

void XmlWriteGlobal(pugi::xml_node root, MainForm& form, pugi::xml_node keptGlobal) {
  WriteFields(root.append_child("Global"), kGlobal, form, keptGlobal);
}

GlobalSettings XmlReadGlobal(pugi::xml_node root, MainForm& form) {
  GlobalSettings s;
  ReadFields(Child(root, "Global"), kGlobal, form, s);
  if (form.Backgrounds != nullptr) s.Mesh = XmlReadLastBackGroundMesh(root, form.Backgrounds->CurrentMesh());
  return s;
}

void ApplyGlobal(MainForm& form, const GlobalSettings& s) {
  using How = GlobalSettings::ControlWrite::How;
  ControlModel& model = form.Model();
  for (const GlobalSettings::ControlWrite& w : s.Controls) {
    switch (w.how) {
      case How::Text: model.SetText(w.control, w.text, Origin::File); break;
      case How::Value: model.SetValue(w.control, w.value, Origin::File); break;
      case How::Colour: model.SetBackColor(w.control, w.value, Origin::File); break;
    }
  }
  BackgroundsForm* backgrounds = form.Backgrounds;
  if (backgrounds != nullptr) {
    const BackgroundsForm::Controls& c = backgrounds->C();
    if (s.Backgrounds) {
      backgrounds->ClearBackGrounds();
      // Quiet: a picture that cannot be read stays listed, so the next save keeps it.
      backgrounds->LoadBackground(*s.Backgrounds, true);
    }
    if (s.BackgroundPlaying) model.SetValue(c.cmdPlay, *s.BackgroundPlaying ? 1 : 0, Origin::File);
    if (s.Backgrounds && !backgrounds->Items().empty()) model.SelectItem(c.ListBackgrounds, 1, Origin::File);
    backgrounds->SetMaskFileName(s.MaskFileName, true);
  }
  if (form.Effects != nullptr) form.Effects->SetEffectFile(s.EffectFileName);
  if (backgrounds != nullptr) {
    if (s.Mesh) backgrounds->SetMesh(*s.Mesh);
    backgrounds->SendToOutput();
  }
}

void XmlWriteLastBackGroundMesh(pugi::xml_node root, const BackGroundMesh& mesh) {
  const pugi::xml_node node = root.append_child("LastBackGroundMesh");
  AppendNumber(node, "X0", mesh.X0);
  AppendNumber(node, "Y0", mesh.Y0);
  AppendNumber(node, "DU", mesh.DU);
  AppendNumber(node, "DV", mesh.DV);
  AppendNumber(node, "MeshHeight", mesh.MeshHeight);
  AppendNumber(node, "MeshWidth", mesh.MeshWidth);
  AppendNumber(node, "RenderElementColor", mesh.RenderElementColor);
  AppendNumber(node, "DUFeedBackFactor", mesh.DUFeedBackFactor);
  AppendNumber(node, "DVFeedBackFactor", mesh.DVFeedBackFactor);
}

std::optional<BackGroundMesh> XmlReadLastBackGroundMesh(pugi::xml_node root, const BackGroundMesh& current) {
  const pugi::xml_node node = Child(root, "LastBackGroundMesh");
  if (!node) return std::nullopt;
  BackGroundMesh mesh = current;
  auto single = [&](std::string_view name, float& field) {
    if (const auto v = ChildNumber(node, name); v && std::fabs(*v) <= FLT_MAX) field = static_cast<float>(*v);
  };
  StoreNumber(ChildNumber(node, "X0"), mesh.X0);
  StoreNumber(ChildNumber(node, "Y0"), mesh.Y0);
  StoreNumber(ChildNumber(node, "DU"), mesh.DU);
  StoreNumber(ChildNumber(node, "DV"), mesh.DV);
  StoreNumber(ChildNumber(node, "MeshHeight"), mesh.MeshHeight);
  StoreNumber(ChildNumber(node, "MeshWidth"), mesh.MeshWidth);
  if (const pugi::xml_node n = Child(node, "RenderElementColor"))
    if (const auto v = ParseWord(n.text().get())) mesh.RenderElementColor = *v;
  single("DUFeedBackFactor", mesh.DUFeedBackFactor);
  single("DVFeedBackFactor", mesh.DVFeedBackFactor);
  return mesh;
}

}  // namespace lumivane
