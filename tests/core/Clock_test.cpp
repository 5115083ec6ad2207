#include "core/Clock.h"

#include <gtest/gtest.h>

#include "core/TimeScale.h"

namespace lumivane {
namespace {

TEST(Ticks, DifferencesHoldAcrossTheWrapOfTheCounter) {
  const Tick beforeWrap = 0xFFFFFFF0u;
  const Tick afterWrap = 0x00000010u;
  EXPECT_EQ(TicksSince(afterWrap, beforeWrap), 0x20u);
  EXPECT_EQ(TickDiff(afterWrap, beforeWrap), 0x20);
  EXPECT_EQ(TickDiff(beforeWrap, afterWrap), -0x20);
  // The same across the signed boundary, where a signed 32-bit subtraction would overflow.
  EXPECT_EQ(TicksSince(0x80000005u, 0x7FFFFFFBu), 10u);
}

TEST(Ticks, PeriodElapsedIsStrictAndScaled) {
  EXPECT_FALSE(PeriodElapsed(1500, 1000, 500, 1.0f));  // exactly one period: not yet
  EXPECT_TRUE(PeriodElapsed(1501, 1000, 500, 1.0f));
  // TimeScale 2 halves the speed: the period doubles.
  EXPECT_FALSE(PeriodElapsed(1900, 1000, 500, 2.0f));
  EXPECT_TRUE(PeriodElapsed(2001, 1000, 500, 2.0f));
  // A period 0 is due on every tick that moves, and across the wrap too.
  EXPECT_TRUE(PeriodElapsed(0x00000002u, 0xFFFFFFFFu, 0, 1.0f));
  // A text never updated (tick 0) is due at once on a clock that has run a while.
  EXPECT_TRUE(PeriodElapsed(123456, 0, 500, 1.0f));
}

TEST(VirtualClock, FrameKIsAtKTimes1000OverFpsAsAWholeNumber) {
  VirtualClock clock(60.0);
  const Tick expected[] = {0, 16, 33, 50, 66, 83, 100};
  for (std::uint64_t k = 0; k < std::size(expected); ++k) {
    clock.SetFrame(k);
    EXPECT_EQ(clock.Now(), expected[k]) << "frame " << k;
  }
  // A fractional rate lands on whole milliseconds without drifting short.
  EXPECT_EQ(VirtualClock::FrameTime(2997, 29.97), 100000u);
  EXPECT_EQ(VirtualClock::FrameTime(1, 29.97), 33u);
  // Long runs keep exact: ten hours at 60 fps.
  EXPECT_EQ(VirtualClock::FrameTime(60ull * 36000, 60.0), 36000000u);
}

TEST(FakeClock, MovesOnlyWhenToldAndWraps) {
  FakeClock clock(0xFFFFFFFEu);
  EXPECT_EQ(clock.Now(), 0xFFFFFFFEu);
  clock.Advance(3);
  EXPECT_EQ(clock.Now(), 1u);
}

}  // namespace
}  // namespace lumivane
