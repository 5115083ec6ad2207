#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "core/ControlModel.h"

namespace lumivane {

// The output configuration form as the engine sees it: how many outputs playback opens, the list
// of outputs with their mirror letters, and the identify switch. The Qt window is a view over
// these controls.
//
// ListOutputs holds one row per line, its fields separated by tabs ("Output", "X", "Y"): two
// header rows, "Main", then one row per clone, "i# " followed by its mirror letters.
class OutputConfigurationForm {
 public:
  static constexpr std::string_view kFormName = "frmOutputConfiguration";
  static constexpr int kMaxOutputs = 8;

  struct OutputControls {
    ControlHandle ListOutputs, cmdX, cmdY, cmdReset, cboOutputCount, chkIdentify;
  };

  explicit OutputConfigurationForm(ControlModel& model);
  OutputConfigurationForm(const OutputConfigurationForm&) = delete;
  OutputConfigurationForm& operator=(const OutputConfigurationForm&) = delete;

  ControlModel& Model() noexcept { return model_; }
  const OutputControls& Controls() const noexcept { return c_; }

  // Reads a clone's row: its index and mirror strings (blanks trimmed). A row whose first field
  // does not begin with a clone's digit (1 to 9), or that has no "#", answers false with index 0
  // and empty strings: the header rows and "Main".
  static bool GetSetup(std::string_view row, int& index, std::string& mirrorX, std::string& mirrorY);
  // The text of clone `index`'s row.
  static std::string SetupRow(int index, std::string_view mirrorX, std::string_view mirrorY);
  // Writes clone `index`'s row into row `row` (one-based) of ListOutputs; the selection stays.
  void SetSetup(int row, int index, std::string_view mirrorX, std::string_view mirrorY);
  // The one-based row of clone `index` in ListOutputs; 0 when it has none.
  int RowOf(int index) const;
  // Selects the row of clone `index`; nothing is selected when it has none.
  void SelectOutput(int index);
  // Toggles the selected clone's mirror along `axis` ("X" or "Y") between the letter and empty,
  // rewrites its row and hands the pair to CloneSetup. Nothing happens unless a clone's row is
  // selected.
  void Mirror(std::string_view axis);

  // The rows of ListOutputs, as the clones are made and dropped.
  void ClearOutputs();
  void AddOutput(std::string row);

  // The number chosen in cboOutputCount, the main output included; 0 when it is no number.
  int OutputCount() const;
  // Whether the outputs show their numbers (chkIdentify ticked).
  bool Identify() const { return ControlModel::Value(c_.chkIdentify) == 1; }
  // At start: the count becomes the number of windows the clone positions file holds, "1" when
  // it holds none.
  void InitializeOutputCount(int positionFormCount);

  // Supplied by the owner of the clones: a mirror change for clone `index`.
  std::function<void(int index, const std::string& mirrorX, const std::string& mirrorY)> CloneSetup;
  // cmdReset stops rendering, which unloads the clones; the next start makes them afresh at the
  // count chosen then (OutputClones::CloneRenderInitialize).
  std::function<void()> StopRendering;

 private:
  ControlModel& model_;
  OutputControls c_;
};

}  // namespace lumivane
