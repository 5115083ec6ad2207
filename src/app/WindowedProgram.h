#pragma once

namespace lumivane {

struct AppOptions;

// The windowed program: the start-up sequence on the splash window, then the event loop.
// Answers the process exit code.
int RunWindowedProgram(int& argc, char** argv, const AppOptions& options);

}  // namespace lumivane
