#include "core/CommandLine.h"

#include "core/Numbers.h"

namespace lumivane {

namespace {

std::string Trim(std::string_view s) {
  const auto first = s.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  const auto last = s.find_last_not_of(" \t\r\n");
  return std::string(s.substr(first, last - first + 1));
}

}  // namespace

std::array<std::optional<std::string>, 5> SplitCommandLine(std::string_view line) {
  std::array<std::optional<std::string>, 5> fields;
  if (Trim(line).empty()) return fields;
  std::size_t start = 0;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::size_t end = line.find(';', start);
    fields[i] = Trim(line.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
    if (end == std::string_view::npos) break;
    start = end + 1;
  }
  return fields;
}

void CommandLineProcess(std::string_view line, CommandLineTarget& target) {
  const auto fields = SplitCommandLine(line);
  auto present = [&](std::size_t i) { return fields[i].has_value() && !fields[i]->empty(); };

  if (present(0)) {
    target.ShowStatus("Processing Command Line (Playlist)");
    target.LoadPlayList(*fields[0]);
  }
  if (present(1)) {
    target.ShowStatus("Processing Command Line (Requested Preset)");
    if (const auto n = ParseNumber(*fields[1]))
      if (const auto number = ToInt32(*n)) target.LoadPreset(*number);
  }
  if (present(2)) {
    target.ShowStatus("Processing Command Line (Output Monitor)");
    if (const auto n = ParseNumber(*fields[2]))
      if (const auto number = ToInt32(*n)) target.SelectMonitor(*number - 1);
  }
  if (present(3)) {
    target.ShowStatus("Processing Command Line (Starting Playback)");
    const auto n = ParseNumber(*fields[3]);
    const auto number = n ? ToInt32(*n) : std::nullopt;
    if (number) {
      target.StartRender();
      target.SetFullScreen(*number);
    } else {
      target.SetResolution(*fields[3]);
      target.StartRender();
    }
  }
  if (present(4)) {
    target.ShowStatus("Processing Command Line (Always on Top)");
    if (const auto n = ParseNumber(*fields[4]))
      if (const auto number = ToInt32(*n)) target.SetAlwaysOnTop(*number);
  }
}

}  // namespace lumivane
