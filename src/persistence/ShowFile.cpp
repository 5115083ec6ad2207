#include "persistence/ShowFile.h"

#include <array>
#include <filesystem>
#include <string_view>

#include <cstdio>

#include "core/Clock.h"
#include "core/EngineContext.h"
#include "core/TextEngine.h"
#include "forms/BackgroundsForm.h"
#include "forms/MainForm.h"
#include "lumivane/Version.h"
#include "persistence/GlobalBlock.h"
#include "persistence/TextBlock.h"
#include "persistence/XmlDocument.h"

namespace lumivane {

namespace {

// The root's blocks in the order the format gives them.
constexpr std::array<std::string_view, 12> kRootOrder = {
    "Header", "Global", "Text", "Controllers", "Presets", "CUE", "AnimatedControls", "MotionPath",
    "FreeFrame", "AudioInput", "LastBackGroundMesh", "CustomRenderSurface"};

template <std::size_t N>
bool In(const std::array<std::string_view, N>& names, std::string_view name) {
  for (std::string_view n : names)
    if (n == name) return true;
  return false;
}

// A file the show names that is not where it says: look for it beside the show, in the folder
// its kind is collected into, by the name behind the last separator (\ or /).
void Relocate(std::string& file, const std::string& showPath, std::string_view collectionFolder) {
  if (file.empty() || std::filesystem::exists(file)) return;
  const std::size_t cut = file.find_last_of("\\/");
  const std::string name = cut == std::string::npos ? file : file.substr(cut + 1);
  const std::filesystem::path candidate =
      std::filesystem::path(showPath).parent_path() / std::string(collectionFolder) / name;
  std::error_code ec;
  if (std::filesystem::exists(candidate, ec)) file = candidate.string();
}

// The header: who wrote the file and when. Never read back.
void XmlWriteHeader(pugi::xml_node root, const CivilTime& now) {
  pugi::xml_node header = root.append_child("Header");
  AppendValue(header, "ApplicationName", kAppTitle);
  AppendValue(header, "Version", std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor) + "." +
                                     std::to_string(kVersionRevision));
  char created[32];
  std::snprintf(created, sizeof created, "%04d-%02d-%02d %02d:%02d:%02d", now.Year, now.Month, now.Day, now.Hour,
                now.Minute, now.Second);
  AppendValue(header, "DateCreated", created);
  AppendValue(header, "Info", "Made with Lumivane, a live visual performance instrument.");
}

}  // namespace

ShowFile::ShowFile(MainForm& form) : form_(form) {}
ShowFile::~ShowFile() = default;

bool ShowFile::EngineFileLoad(const std::string& path, std::string& error) {
  auto doc = std::make_unique<XmlDocument>();
  if (!XmlOpenDocument(*doc, path, error)) return false;
  const pugi::xml_node root = doc->Root();

  std::vector<TextObject> texts;
  XmlReadText(root, texts);
  for (TextObject& t : texts) {
    Relocate(t.FileName, path, "Dictionaries");
    Relocate(t.TextBoxTextureFileName, path, "TextBoxTextures");
    Relocate(t.Mesh3DFileName, path, "3DS_XFiles");
  }

  GlobalSettings global = XmlReadGlobal(root, form_);
  if (global.Backgrounds)
    for (std::string& file : *global.Backgrounds) Relocate(file, path, "Backgrounds");
  Relocate(global.MaskFileName, path, "Masks");
  Relocate(global.EffectFileName, path, "Effects");

  TextEngine& text = form_.Text();
  {
    TextEngine::BusyScope busy(text);
    text.Current() = std::move(texts);
    text.EngineBuildEditorText();
    for (std::int32_t i = 1; i <= text.PreviewGetTextCount(); ++i) {
      if (text.Current()[static_cast<std::size_t>(i - 1)].TextType == "Dictionary") {
        text.PreviewLoadDictionary(i, false);
        text.PreviewResetDictionaryCounter(i);
      }
    }
  }
  form_.SyncTextLabels();
  if (text.PreviewGetTextCount() > 0)
    form_.SelectText(1);
  else
    form_.TextSelected = TextObject{};
  ApplyGlobal(form_, global);
  kept_ = std::move(doc);
  form_.Modified = false;
  return true;
}

bool ShowFile::EngineFileSave(const std::string& path, std::string& error) {
  XmlDocument doc;
  XmlNewDocument(doc);
  pugi::xml_node root = doc.Root();
  const pugi::xml_node keptRoot = kept_ ? kept_->Root() : pugi::xml_node();

  XmlWriteHeader(root, form_.Text().Context().clock.LocalTime());
  XmlWriteGlobal(root, form_, Child(keptRoot, "Global"));
  XmlWriteText(root, form_.Text().Current());

  // The blocks of other parts, in the format's order, then any this build does not know at all.
  for (std::size_t i = 3; i < kRootOrder.size(); ++i) {
    if (kRootOrder[i] == "LastBackGroundMesh" && form_.Backgrounds != nullptr)
      XmlWriteLastBackGroundMesh(root, form_.Backgrounds->CurrentMesh());
    else if (const pugi::xml_node n = keptRoot.child(std::string(kRootOrder[i]).c_str()))
      root.append_copy(n);
  }
  for (pugi::xml_node n = keptRoot.first_child(); n; n = n.next_sibling()) {
    const std::string_view name = XmlDocument::FileName(n.name());
    if (!In(kRootOrder, name)) root.append_copy(n);
  }
  const bool saved = XmlSaveDocument(doc, path, error);
  XmlCloseDocument(doc);
  if (!saved) return false;
  form_.Modified = false;
  return true;
}

void ShowFile::Forget() { kept_.reset(); }

}  // namespace lumivane
