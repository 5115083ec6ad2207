#include "persistence/UIPositionFile.h"

#include <fstream>
#include <optional>
#include <set>

#include <pugixml.hpp>

#include "core/Numbers.h"
#include "forms/OutputClones.h"
#include "forms/OutputConfigurationForm.h"
#include "persistence/XmlDocument.h"

namespace lumivane {

namespace {

constexpr const char* kRoot = "UIPosition";
constexpr const char* kForm = "Form";
// A positions file holds a handful of windows; anything near this size is not one.
constexpr std::streamoff kMaxBytes = 1 << 20;

// The document of a positions file, or nothing when it cannot be read as one.
bool LoadDocument(const std::string& fileName, pugi::xml_document& dom) {
  std::ifstream in(fileName, std::ios::binary);
  if (!in) return false;
  in.seekg(0, std::ios::end);
  const std::streamoff size = in.tellg();
  if (size <= 0 || size > kMaxBytes) return false;
  in.seekg(0);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  if (!in.read(bytes.data(), size)) return false;
  if (bytes.find('\0') != std::string::npos) return false;
  if (!dom.load_buffer(bytes.data(), bytes.size())) return false;
  return static_cast<bool>(dom.child(kRoot));
}

std::optional<int> Number(pugi::xml_node form, const char* name) {
  const pugi::xml_node node = form.child(name);
  if (!node) return std::nullopt;
  const auto value = ParseNumber(node.text().get());
  return value ? ToInt32(*value) : std::nullopt;
}

}  // namespace

UIPositionList UIPositionRead(const std::string& fileName) {
  UIPositionList records;
  pugi::xml_document dom;
  if (!LoadDocument(fileName, dom)) return records;
  for (pugi::xml_node form : dom.child(kRoot).children(kForm)) {
    const auto top = Number(form, "Top");
    const auto left = Number(form, "Left");
    const auto width = Number(form, "Width");
    const auto height = Number(form, "Height");
    if (!top || !left || !width || !height || *width <= 0 || *height <= 0) continue;
    UIPositionRecord r;
    r.Name = form.child("Name").text().get();
    r.Top = *top;
    r.Left = *left;
    r.Width = *width;
    r.Height = *height;
    r.Visible = Number(form, "Visible").value_or(1) != 0;
    r.CloneRenderTargetIndex = Number(form, "CloneRenderTargetIndex").value_or(0);
    r.MirrorX = form.child("MirrorX").text().get();
    r.MirrorY = form.child("MirrorY").text().get();
    records.push_back(std::move(r));
  }
  return records;
}

bool UIPositionWrite(const std::string& fileName, const UIPositionList& records, bool cloneOnly, std::string& error) {
  XmlDocument doc;
  pugi::xml_node root = doc.Dom().append_child(kRoot);
  for (const UIPositionRecord& r : records) {
    pugi::xml_node form = root.append_child(kForm);
    AppendValue(form, "Name", r.Name);
    AppendValue(form, "Top", std::to_string(r.Top));
    AppendValue(form, "Left", std::to_string(r.Left));
    AppendValue(form, "Width", std::to_string(r.Width));
    AppendValue(form, "Height", std::to_string(r.Height));
    AppendValue(form, "Visible", r.Visible ? "1" : "0");
    if (cloneOnly) {
      AppendValue(form, "CloneRenderTargetIndex", std::to_string(r.CloneRenderTargetIndex));
      AppendValue(form, "MirrorX", r.MirrorX);
      AppendValue(form, "MirrorY", r.MirrorY);
    }
  }
  return doc.Save(fileName, error);
}

int UIPositionCount(const std::string& fileName) {
  pugi::xml_document dom;
  if (!LoadDocument(fileName, dom)) return 0;
  int count = 0;
  for ([[maybe_unused]] pugi::xml_node form : dom.child(kRoot).children(kForm)) ++count;
  return count;
}

bool UIPositionSave(const std::string& fileName, bool cloneOnly, const UIPositionWindows& windows, std::string& error) {
  return UIPositionWrite(fileName, windows.Positions(cloneOnly), cloneOnly, error);
}

void UIPositionLoad(const std::string& fileName, bool cloneOnly, UIPositionWindows& windows) {
  std::set<std::string> seenNames;
  std::set<int> seenClones;
  for (const UIPositionRecord& r : UIPositionRead(fileName)) {
    const bool first = cloneOnly ? r.CloneRenderTargetIndex > 0 && seenClones.insert(r.CloneRenderTargetIndex).second
                                 : seenNames.insert(r.Name).second;
    if (first) windows.Apply(r, cloneOnly);
  }
}

// ---- The clones ---------------------------------------------------------------------------------

UIPositionList ClonePositions::Positions(bool cloneOnly) const {
  UIPositionList records;
  for (int i = 1; i <= clones_.CloneCount(); ++i) {
    const OutputClones::CloneRecord* clone = clones_.Clones(i);
    if (clone == nullptr || !clone->Window) continue;
    UIPositionRecord r;
    try {
      const WindowRect g = clone->Window->Geometry();
      r.Visible = clone->Window->IsVisible();
      r.Top = g.top;
      r.Left = g.left;
      r.Width = g.width;
      r.Height = g.height;
    } catch (...) {
      continue;  // a window that cannot say where it is keeps its old place out of the file
    }
    r.Name = OutputClones::kCloneWindowName;
    if (cloneOnly) {
      r.CloneRenderTargetIndex = i;
      r.MirrorX = clone->MirrorX;
      r.MirrorY = clone->MirrorY;
    }
    records.push_back(std::move(r));
  }
  return records;
}

bool ClonePositions::Apply(const UIPositionRecord& record, bool cloneOnly) {
  // Clones are known by their number only.
  if (!cloneOnly) return false;
  return clones_.ApplyPosition(record.CloneRenderTargetIndex,
                               WindowRect{record.Left, record.Top, record.Width, record.Height}, record.Visible,
                               record.MirrorX == "X" ? "X" : "", record.MirrorY == "Y" ? "Y" : "");
}

void ConnectClonePositions(OutputClones& clones, std::function<void(const std::string&)> reportFailure) {
  clones.LoadPositions = [&clones](const std::string& path) {
    ClonePositions windows(clones);
    UIPositionLoad(path, true, windows);
  };
  clones.SavePositions = [&clones, report = std::move(reportFailure)](const std::string& path) {
    ClonePositions windows(clones);
    std::string error;
    if (!UIPositionSave(path, true, windows, error) && report) report(error);
  };
}

void InitializeOutputCount(OutputConfigurationForm& form, const std::string& applicationFolder) {
  std::string path = applicationFolder;
  if (!path.empty() && path.back() != '/') path += '/';
  form.InitializeOutputCount(UIPositionCount(path + std::string(OutputClones::kPositionFileName)));
}

}  // namespace lumivane
