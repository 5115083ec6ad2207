#pragma once

#include <functional>
#include <string>
#include <vector>

namespace lumivane {

class OutputClones;
class OutputConfigurationForm;

// One window in a window positions file (".LMVNUIP"): the root UIPosition holds one Form per
// window. Sizes are pixels, frame included. The clone fields are written only in the clone
// variant ("LastOutputPosition.LMVNUIP").
struct UIPositionRecord {
  std::string Name;  // the window's object name
  int Top = 0;
  int Left = 0;
  int Width = 0;
  int Height = 0;
  bool Visible = true;
  int CloneRenderTargetIndex = 0;  // 1 for the first clone; 0 when not a clone
  std::string MirrorX;             // "X" or empty
  std::string MirrorY;             // "Y" or empty
  friend bool operator==(const UIPositionRecord&, const UIPositionRecord&) = default;
};
using UIPositionList = std::vector<UIPositionRecord>;

// The Form records of a positions file, in file order. A file that is missing or unreadable reads
// as an empty document; a Form without a whole geometry (four numbers, width and height above
// 0) is left out.
UIPositionList UIPositionRead(const std::string& fileName);
// Writes the records whole or not at all (temporary file, synced, renamed); the clone fields only
// with `cloneOnly`. False, with the reason, when the file cannot be written.
bool UIPositionWrite(const std::string& fileName, const UIPositionList& records, bool cloneOnly, std::string& error);
// The number of UIPosition/Form nodes; 0 for a missing or unreadable file.
int UIPositionCount(const std::string& fileName);

// The windows whose places a positions file keeps.
class UIPositionWindows {
 public:
  virtual ~UIPositionWindows() = default;
  // The windows to save, in order (the clones only, with their clone fields, for `cloneOnly`).
  virtual UIPositionList Positions(bool cloneOnly) const = 0;
  // Puts the window a record names where it says: by CloneRenderTargetIndex for `cloneOnly`,
  // else by Name. False when no window here answers to the record; it is skipped.
  virtual bool Apply(const UIPositionRecord& record, bool cloneOnly) = 0;
};

bool UIPositionSave(const std::string& fileName, bool cloneOnly, const UIPositionWindows& windows, std::string& error);
// Only the windows the file names move, each to the first record that names it; the others keep
// their places.
void UIPositionLoad(const std::string& fileName, bool cloneOnly, UIPositionWindows& windows);

// The clones as windows of the clone positions file.
class ClonePositions final : public UIPositionWindows {
 public:
  explicit ClonePositions(OutputClones& clones) : clones_(clones) {}
  UIPositionList Positions(bool cloneOnly) const override;
  bool Apply(const UIPositionRecord& record, bool cloneOnly) override;

 private:
  OutputClones& clones_;
};

// Points the clones' LoadPositions and SavePositions at the clone variant of the positions file.
// A save that fails goes to `reportFailure` (the --log file), if given.
void ConnectClonePositions(OutputClones& clones, std::function<void(const std::string&)> reportFailure = {});
// At start: cboOutputCount from the clone positions file in `applicationFolder`.
void InitializeOutputCount(OutputConfigurationForm& form, const std::string& applicationFolder);

}  // namespace lumivane
