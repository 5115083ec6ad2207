#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace lumivane {

// The positional command line: one string of up to five fields split at ";", each trimmed.
// Fields beyond the fifth are ignored; missing trailing fields are absent.
std::array<std::optional<std::string>, 5> SplitCommandLine(std::string_view line);

// What the fields act on. The start-up wires these to the forms that own them.
class CommandLineTarget {
 public:
  virtual ~CommandLineTarget() = default;
  virtual void ShowStatus(std::string_view status) = 0;
  virtual void LoadPlayList(const std::string& file) = 0;
  virtual void LoadPreset(int number) = 0;  // deselect all, select `number`, load it
  virtual void SelectMonitor(int listIndex) = 0;
  virtual void StartRender() = 0;
  virtual void SetFullScreen(int value) = 0;
  virtual void SetResolution(const std::string& widthByHeight) = 0;  // and lock it
  virtual void SetAlwaysOnTop(int value) = 0;
};

// Carries out the fields in their order, each after its status line; an empty field is skipped.
// Playback starts at field 3, so always-on-top (field 4) arrives once the output exists.
void CommandLineProcess(std::string_view line, CommandLineTarget& target);

}  // namespace lumivane
