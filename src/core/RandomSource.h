#pragma once

#include <cstdint>
#include <deque>

namespace lumivane {

class Clock;

// The one source of random numbers for the program. Nothing else draws random numbers, so a run
// with a given seed (and clock) repeats exactly.
class RandomSource {
 public:
  virtual ~RandomSource() = default;
  // Uniform in [0, 1).
  virtual double Rnd() noexcept = 0;
  virtual void Seed(std::uint64_t seed) noexcept = 0;
  // Reseeds from the clock's tick: two reseeds within the same millisecond give the same sequence,
  // which some generators rely on.
  void ReseedFromClock(const Clock& clock) noexcept;
};

// xoshiro256** seeded through splitmix64: fast, small, and the same on every platform.
class SeededRandom final : public RandomSource {
 public:
  explicit SeededRandom(std::uint64_t seed = 0x4C756D6976616E65ull) noexcept { Seed(seed); }
  double Rnd() noexcept override;
  void Seed(std::uint64_t seed) noexcept override;

 private:
  std::uint64_t s_[4];
};

// Hands out queued values, then falls back to a seeded sequence: for tests that need a coin to
// land a given way.
class ScriptedRandom final : public RandomSource {
 public:
  void Push(double value) { queued_.push_back(value); }
  double Rnd() noexcept override;
  void Seed(std::uint64_t seed) noexcept override { fallback_.Seed(seed); }
  std::size_t Remaining() const noexcept { return queued_.size(); }

 private:
  std::deque<double> queued_;
  SeededRandom fallback_;
};

}  // namespace lumivane
