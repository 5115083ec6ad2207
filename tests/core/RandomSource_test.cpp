#include "core/RandomSource.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/Clock.h"

namespace lumivane {
namespace {

std::vector<double> Draw(RandomSource& r, int n) {
  std::vector<double> v;
  for (int i = 0; i < n; ++i) v.push_back(r.Rnd());
  return v;
}

TEST(SeededRandom, SameSeedSameSequenceAndAlwaysInUnitInterval) {
  SeededRandom a(42), b(42), c(43);
  const auto va = Draw(a, 1000);
  EXPECT_EQ(va, Draw(b, 1000));
  EXPECT_NE(va, Draw(c, 1000));
  double sum = 0;
  for (double x : va) {
    ASSERT_GE(x, 0.0);
    ASSERT_LT(x, 1.0);
    sum += x;
  }
  EXPECT_NEAR(sum / 1000.0, 0.5, 0.05);  // not stuck at one end
}

TEST(SeededRandom, ReseedFromTheSameTickRepeatsTheSequence) {
  FakeClock clock(5000);
  SeededRandom r;
  r.ReseedFromClock(clock);
  const auto first = Draw(r, 8);
  r.ReseedFromClock(clock);
  EXPECT_EQ(first, Draw(r, 8));
  clock.Advance(1);
  r.ReseedFromClock(clock);
  EXPECT_NE(first, Draw(r, 8));
}

TEST(ScriptedRandom, HandsOutQueuedValuesThenFallsBack) {
  ScriptedRandom r;
  r.Push(0.25);
  r.Push(0.75);
  EXPECT_EQ(r.Rnd(), 0.25);
  EXPECT_EQ(r.Rnd(), 0.75);
  const double next = r.Rnd();
  EXPECT_GE(next, 0.0);
  EXPECT_LT(next, 1.0);
}

}  // namespace
}  // namespace lumivane
