#pragma once

#include <cstdint>

#include "core/Clock.h"

namespace lumivane {

// Whether a period of `periodMs`, stretched by `timeScale`, has run out between `last` and `now`.
// Strict: exactly one period after `last` is not yet due. Elapsed time is taken modulo 2^32, so a
// wrap of the tick counter costs nothing.
constexpr bool PeriodElapsed(Tick now, Tick last, std::int32_t periodMs, float timeScale) noexcept {
  return static_cast<double>(TicksSince(now, last)) >
         static_cast<double>(periodMs) * static_cast<double>(timeScale);
}

}  // namespace lumivane
