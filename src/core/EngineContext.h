#pragma once

namespace lumivane {

class Clock;
class RandomSource;

// What the engine needs from outside to run its timers and draws. One instance belongs to the
// application object and is passed in explicitly; tests build their own with a fake clock and a
// seeded random source.
struct EngineContext {
  Clock& clock;
  RandomSource& random;
  // Multiplies every timer of the engine and the pipeline; 1.0 except while recording slower
  // than real time.
  float TimeScale = 1.0f;
};

}  // namespace lumivane
