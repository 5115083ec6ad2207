#include "core/Clock.h"

#include "core/Calendar.h"

#include <chrono>
#include <cmath>
#include <ctime>

namespace lumivane {

Tick SystemClock::Now() const noexcept {
  const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now().time_since_epoch());
  return static_cast<Tick>(static_cast<std::uint64_t>(ms.count()));
}

CivilTime SystemClock::LocalTime() const noexcept {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  localtime_r(&now, &parts);
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
}

CivilTime VirtualClock::LocalTime() const noexcept {
  const std::uint64_t seconds = now_ / 1000u;
  CivilTime t = CivilFromDays(DaysFromCivil(2000, 1, 1) + static_cast<std::int64_t>(seconds / 86400u));
  t.Hour = static_cast<int>(seconds / 3600u % 24u);
  t.Minute = static_cast<int>(seconds / 60u % 60u);
  t.Second = static_cast<int>(seconds % 60u);
  return t;
}

VirtualClock::VirtualClock(double framesPerSecond) noexcept
    : fps_(framesPerSecond > 0.0 ? framesPerSecond : 60.0) {}

void VirtualClock::SetFrame(std::uint64_t frame) noexcept {
  frame_ = frame;
  now_ = FrameTime(frame, fps_);
}

Tick VirtualClock::FrameTime(std::uint64_t frame, double framesPerSecond) noexcept {
  if (!(framesPerSecond > 0.0)) return 0;
  // Whole frame rates take the exact integer path; others go through double with a small
  // allowance so 1000*k/F that is mathematically whole does not land one millisecond short.
  const double rounded = std::round(framesPerSecond);
  if (rounded == framesPerSecond && rounded < 1e9) {
    const auto f = static_cast<std::uint64_t>(rounded);
    return static_cast<Tick>(frame * 1000u / f);
  }
  const double ms = static_cast<double>(frame) * 1000.0 / framesPerSecond;
  return static_cast<Tick>(static_cast<std::uint64_t>(std::floor(ms + 1e-7)));
}

}  // namespace lumivane
