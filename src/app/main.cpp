// Entry point. Until the main window exists, the program reports its version and what it can do.
#include <cstdio>
#include <cstring>

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
      "The main window, the output and the headless runner follow.\n");
}

void PrintHelp() {
  std::printf(
      "Usage: lumivane [OPTIONS]\n"
      "  --help      show this help\n"
      "  --version   show the version\n");
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--version") == 0) {
      PrintVersion();
      return 0;
    }
    if (std::strcmp(argv[i], "--help") == 0) {
      PrintHelp();
      return 0;
    }
    std::fprintf(stderr, "lumivane: unknown option %s (try --help)\n", argv[i]);
    return 2;
  }
  PrintVersion();
  PrintCapabilities();
  return 0;
}
