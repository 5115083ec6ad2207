#pragma once

#include <iosfwd>

namespace lumivane {

struct AppOptions;

// Plays a show without any window, on the virtual clock and the seeded random source, through the
// same frame path as the output window. Answers the process exit code: 0 after the last frame,
// non-zero after a one-line reason on `err`.
int RunHeadless(const AppOptions& options, std::ostream& out, std::ostream& err);

}  // namespace lumivane
