#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lumivane {

// The program's own options, beside the positional command line of five ";" fields.
struct AppOptions {
  bool help = false;
  bool version = false;
  std::string appFolder;  // --app-folder DIR
  std::string logFile;    // --log FILE

  // --headless SHOW.xml and its options.
  bool headless = false;
  std::string showFile;
  std::int64_t frames = -1;  // -1: one second's worth at the frame rate
  double fps = 60.0;
  std::uint64_t seed = 0;
  int width = 1280;
  int height = 720;
  std::string out;
  std::string textLog;
  std::string midi;
  std::string audio;
  bool stats = false;

  // Whatever is not an option: the positional command line, words joined by blanks.
  std::string commandLine;

  std::int64_t FrameCount() const;
};

struct ParsedOptions {
  AppOptions options;
  std::string error;  // one line; empty when the arguments were good
};

ParsedOptions ParseOptions(const std::vector<std::string>& args);

const char* UsageText();

}  // namespace lumivane
