#include "forms/RenderTimer.h"

#include <cmath>
#include <cstdio>
#include <limits>

namespace lumivane {

namespace {

// Adds to a 16-bit sum unless the result would leave the 16-bit range: a very slow period then
// shows too high a rate instead of failing.
void AddWithin16Bits(std::int16_t& sum, std::int64_t amount) {
  const std::int64_t result = static_cast<std::int64_t>(sum) + amount;
  if (result < std::numeric_limits<std::int16_t>::min() || result > std::numeric_limits<std::int16_t>::max()) return;
  sum = static_cast<std::int16_t>(result);
}

}  // namespace

RenderTimer::RenderTimer(const Clock& clock, Hooks hooks) : clock_(clock), hooks_(std::move(hooks)) {}

std::string RenderTimer::FormatRate(std::int32_t frameTimeSum, std::int32_t frameCount) {
  // Both divisions fail (and the caption stays) when no frame or no time was counted.
  if (frameCount == 0 || frameTimeSum == 0) return {};
  const double average = static_cast<double>(frameTimeSum) / frameCount;
  const double fps = 1000.0 / average;
  if (!std::isfinite(fps)) return {};
  char text[48];
  std::snprintf(text, sizeof text, " [FPS: %.1f]", fps);
  return text;
}

bool RenderTimer::Tick() {
  while (hooks_.paused && hooks_.paused()) {
    if (hooks_.yield) hooks_.yield();
  }

  bool rendered = false;
  const bool limiter = hooks_.limiterOn && hooks_.limiterOn();
  const std::int32_t elapsed = TickDiff(clock_.Now(), LastFrameEnd);
  if (limiter && elapsed <= kLimiterGateMs) {
    // Gate closed (a negative distance is a clock that went back: closed too). The next frame that
    // passes measures from here, so its time includes the wait.
    FrameStart = LastFrameEnd;
  } else {
    if (!limiter) FrameStart = clock_.Now();
    if (hooks_.beforeRender) hooks_.beforeRender();
    if (hooks_.render) hooks_.render();
    if (hooks_.afterRender) hooks_.afterRender();
    const ::lumivane::Tick now = clock_.Now();
    LastFrameEnd = now;
    AddWithin16Bits(FrameTimeSum, TickDiff(now, FrameStart));
    AddWithin16Bits(FrameCount, 1);
    rendered = true;
  }

  if (TicksSince(clock_.Now(), LastFpsUpdate) <= kStatisticsPeriodMs) return rendered;
  if (hooks_.yield) hooks_.yield();
  const std::string rate = FormatRate(FrameTimeSum, FrameCount);
  if (!rate.empty() && hooks_.showRate) hooks_.showRate(rate);
  FrameTimeSum = 0;
  FrameCount = 0;
  LastFpsUpdate = clock_.Now();
  return rendered;
}

}  // namespace lumivane
