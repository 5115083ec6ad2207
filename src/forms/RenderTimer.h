#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "core/Clock.h"

namespace lumivane {

// One tick of the output's render timer: pause spinning, the frame limiter, the frame itself and
// the frame-rate statistics shown in the main window's caption. The output window's timer and
// the headless runner both drive frames through it.
class RenderTimer {
 public:
  // A frame that ends 42 ms or less after the last is skipped while the limiter is on: a fixed
  // 43 ms gate, though 24 frames a second would be 41.67 ms.
  static constexpr std::int32_t kLimiterGateMs = 42;
  // The caption is refreshed when more than this has passed since the last refresh.
  static constexpr std::uint32_t kStatisticsPeriodMs = 500;

  struct Hooks {
    // Lets pending events run (the event that clears a pause among them).
    std::function<void()> yield;
    std::function<bool()> paused;
    std::function<bool()> limiterOn;
    // Steps 3 to 6 of a frame: focus marker timer, preview monitor, the frame, mask cursor keys.
    std::function<void()> beforeRender;
    std::function<void()> render;
    std::function<void()> afterRender;
    // Receives the new caption suffix " [FPS: x.x]".
    std::function<void(const std::string& fpsSuffix)> showRate;
  };

  RenderTimer(const Clock& clock, Hooks hooks);
  void SetHooks(Hooks hooks) { hooks_ = std::move(hooks); }

  // Runs one tick. Answers whether a frame was rendered.
  bool Tick();

  // The statistics as the output window keeps them; 16-bit sums like the caption's arithmetic.
  ::lumivane::Tick FrameStart = 0;
  ::lumivane::Tick LastFrameEnd = 0;
  ::lumivane::Tick LastFpsUpdate = 0;
  std::int16_t FrameTimeSum = 0;
  std::int16_t FrameCount = 0;

  // " [FPS: 23.3]" for an average frame time in ms; empty when there is no rate to show.
  static std::string FormatRate(std::int32_t frameTimeSum, std::int32_t frameCount);

 private:
  const Clock& clock_;
  Hooks hooks_;
};

}  // namespace lumivane
