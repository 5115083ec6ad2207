// Entry point: the windowed program, or with --headless a show played without windows.
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "app/HeadlessRunner.h"
#include "app/Options.h"
#include "app/WindowedProgram.h"
#include "lumivane/Version.h"

namespace {

void PrintVersion() {
  std::printf("%s Version %d.%d.%d\n", lumivane::kAppTitle, lumivane::kVersionMajor, lumivane::kVersionMinor,
              lumivane::kVersionRevision);
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
  return lumivane::RunWindowedProgram(argc, argv, options);
}
