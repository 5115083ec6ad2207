#include "forms/RenderTimer.h"

#include <gtest/gtest.h>

namespace lumivane {
namespace {

class RenderTimerTest : public ::testing::Test {
 protected:
  FakeClock clock{10000};
  bool limiter = false;
  bool paused = false;
  int frames = 0;
  int renderCost = 0;  // ms the fake frame takes
  std::vector<std::string> captions;
  std::function<void()> onYield;
  RenderTimer timer{clock, Hooks()};

  void SetUp() override { timer.LastFpsUpdate = clock.Now(); }  // a statistics period just began

  RenderTimer::Hooks Hooks() {
    RenderTimer::Hooks h;
    h.paused = [this] { return paused; };
    h.limiterOn = [this] { return limiter; };
    h.yield = [this] {
      if (onYield) onYield();
    };
    h.render = [this] {
      ++frames;
      clock.Advance(static_cast<std::uint32_t>(renderCost));
    };
    h.showRate = [this](const std::string& s) { captions.push_back(s); };
    return h;
  }
};

TEST_F(RenderTimerTest, TheLimiterSkipsTicks42MsAfterTheLastFrameAndRendersAt43) {
  limiter = true;
  ASSERT_TRUE(timer.Tick());  // long after start-up: the gate is open
  const Tick end = timer.LastFrameEnd;
  clock.Set(end + 42);
  EXPECT_FALSE(timer.Tick());
  EXPECT_EQ(timer.FrameStart, end);  // a gated tick measures from the last frame end
  clock.Set(end + 43);
  const std::int16_t sumBefore = timer.FrameTimeSum;
  EXPECT_TRUE(timer.Tick());
  EXPECT_EQ(frames, 2);
  // The limited frame's measured time includes its idle wait: 43 ms.
  EXPECT_EQ(timer.FrameTimeSum, sumBefore + 43);
  // Without the limiter every tick renders.
  limiter = false;
  clock.Advance(1);
  EXPECT_TRUE(timer.Tick());
  EXPECT_EQ(frames, 3);
}

TEST_F(RenderTimerTest, ThePeriodReportsTheRateAndResets) {
  renderCost = 20;
  for (int i = 0; i < 25; ++i) timer.Tick();  // 25 frames of 20 ms: 500 ms, not yet past the period
  ASSERT_TRUE(captions.empty()) << captions.front();
  clock.Advance(1);
  timer.Tick();
  ASSERT_EQ(captions.size(), 1u);
  EXPECT_EQ(captions[0], " [FPS: 50.0]");
  EXPECT_EQ(timer.FrameTimeSum, 0);
  EXPECT_EQ(timer.FrameCount, 0);
  EXPECT_EQ(timer.LastFpsUpdate, clock.Now());
}

TEST_F(RenderTimerTest, APeriodWithoutFramesLeavesTheCaptionButStillResets) {
  limiter = true;
  for (int i = 0; i < 26; ++i) {  // 26 ticks 20 ms apart: the period ends at the last
    clock.Advance(20);
    timer.LastFrameEnd = clock.Now();  // a frame end always just now: the gate never opens
    EXPECT_FALSE(timer.Tick());
  }
  EXPECT_EQ(frames, 0);
  EXPECT_TRUE(captions.empty());
  EXPECT_EQ(timer.LastFpsUpdate, clock.Now());
  EXPECT_EQ(timer.FrameCount, 0);
}

TEST_F(RenderTimerTest, SixteenBitSumsStopGrowingInsteadOfOverflowing) {
  timer.LastFpsUpdate = clock.Now();
  timer.FrameTimeSum = 32700;
  renderCost = 100;  // would pass 32767
  timer.Tick();
  EXPECT_EQ(timer.FrameTimeSum, 32700);
  EXPECT_EQ(timer.FrameCount, 1);
  timer.FrameCount = 32767;
  renderCost = 10;
  timer.Tick();
  EXPECT_EQ(timer.FrameCount, 32767);
  EXPECT_EQ(timer.FrameTimeSum, 32710);
  // The rate then shows too high a figure, never an error.
  EXPECT_EQ(RenderTimer::FormatRate(32710, 32767), " [FPS: 1001.7]");
  EXPECT_EQ(RenderTimer::FormatRate(0, 5), "");
  EXPECT_EQ(RenderTimer::FormatRate(100, 0), "");
}

TEST_F(RenderTimerTest, APausedTickSpinsOnEventsUntilThePauseIsLifted) {
  paused = true;
  int spins = 0;
  onYield = [&] {
    if (++spins == 3) paused = false;  // the event that lifts the pause runs inside the spin
  };
  EXPECT_TRUE(timer.Tick());
  EXPECT_EQ(spins, 3);
  EXPECT_EQ(frames, 1);
}

}  // namespace
}  // namespace lumivane
