#pragma once

#include <cstdint>

namespace lumivane {

// Milliseconds as a 32-bit counter that wraps after about 49.7 days, as the timers of the
// engine and its files count them.
using Tick = std::uint32_t;

// Milliseconds from `then` to `now`, right across a wrap of the counter (as long as the real
// interval is below 2^32 ms).
constexpr std::uint32_t TicksSince(Tick now, Tick then) noexcept { return now - then; }

// Signed distance from `then` to `now`; negative when `then` lies ahead of `now`. Right across a
// wrap as long as the real distance is below 2^31 ms.
constexpr std::int32_t TickDiff(Tick now, Tick then) noexcept {
  return static_cast<std::int32_t>(now - then);
}

// A wall-clock date and time of day, for the generators that show the time or the date.
struct CivilTime {
  int Year = 2000;
  int Month = 1;  // 1..12
  int Day = 1;    // 1..31
  int Hour = 0;
  int Minute = 0;
  int Second = 0;
  friend bool operator==(const CivilTime&, const CivilTime&) = default;
};

// The one source of time for the program. Nothing else reads the system time, so tests and
// offline renders can run on a clock they drive themselves.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual Tick Now() const noexcept = 0;
  // The local date and time of day.
  virtual CivilTime LocalTime() const noexcept = 0;
};

// Monotonic milliseconds of the machine, truncated to 32 bits.
class SystemClock final : public Clock {
 public:
  Tick Now() const noexcept override;
  CivilTime LocalTime() const noexcept override;
};

// A clock that only moves when told: for tests.
class FakeClock final : public Clock {
 public:
  explicit FakeClock(Tick start = 0) noexcept : now_(start) {}
  Tick Now() const noexcept override { return now_; }
  CivilTime LocalTime() const noexcept override { return local_; }
  void Set(Tick t) noexcept { now_ = t; }
  void Advance(std::uint32_t ms) noexcept { now_ += ms; }
  void SetLocalTime(const CivilTime& t) noexcept { local_ = t; }

 private:
  Tick now_;
  CivilTime local_;
};

// The clock of a headless run: frame k of a run at F frames per second is at k*1000/F ms, as a
// whole number, so an offline render is frame-exact and repeatable.
class VirtualClock final : public Clock {
 public:
  explicit VirtualClock(double framesPerSecond = 60.0) noexcept;
  Tick Now() const noexcept override { return now_; }
  // A headless run's wall clock starts at 2000-01-01 00:00:00 and runs with the frames, so shows
  // that display the time render the same every time.
  CivilTime LocalTime() const noexcept override;
  void SetFrame(std::uint64_t frame) noexcept;
  std::uint64_t Frame() const noexcept { return frame_; }
  double FramesPerSecond() const noexcept { return fps_; }

  // The tick of frame `frame` at `framesPerSecond`.
  static Tick FrameTime(std::uint64_t frame, double framesPerSecond) noexcept;

 private:
  double fps_;
  std::uint64_t frame_ = 0;
  Tick now_ = 0;
};

}  // namespace lumivane
