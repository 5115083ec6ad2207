// Entry point. Until the main window exists, the windowed program reports its version and what it
// can do; --headless plays a show without windows.
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "app/HeadlessRunner.h"
#include "app/Options.h"
#include "lumivane/Version.h"

namespace {

void PrintVersion() {
  std::printf("%s Version %d.%d.%d\n", lumivane::kAppTitle, lumivane::kVersionMajor, lumivane::kVersionMinor,
              lumivane::kVersionRevision);
}

void PrintCapabilities() {
  std::printf(
      "What works today:\n"
      "  - the control model: forms, named controls and control arrays (\"3Text\"), change handlers\n"
      "    that fire alike for every writer, echo-guarded widget bindings, focus tracking\n"
      "  - the program clock (32-bit ticks, fake and virtual clocks) and the seeded random source\n"
      "  - the text engine: text records, live and locked lists, list operations, renderer and\n"
      "    editor accessors, the editor's Save write-through\n"
      "  - the render timer (frame limiter, frame-rate statistics) and the headless runner's frame\n"
      "    loop: lumivane --headless SHOW.xml --frames N --stats\n"
      "The main window and the output window follow.\n");
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> args(argv + 1, argv + argc);
  const lumivane::ParsedOptions parsed = lumivane::ParseOptions(args);
  if (!parsed.error.empty()) {
    std::fprintf(stderr, "lumivane: %s\n", parsed.error.c_str());
    return 2;
  }
  const lumivane::AppOptions& options = parsed.options;
  if (options.help) {
    std::fputs(lumivane::UsageText(), stdout);
    return 0;
  }
  if (options.version) {
    PrintVersion();
    return 0;
  }
  if (options.headless) return lumivane::RunHeadless(options, std::cout, std::cerr);
  PrintVersion();
  PrintCapabilities();
  return 0;
}
