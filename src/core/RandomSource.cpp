#include "core/RandomSource.h"

#include "core/Clock.h"

namespace lumivane {

namespace {

constexpr std::uint64_t Rotl(std::uint64_t x, int k) noexcept { return (x << k) | (x >> (64 - k)); }

std::uint64_t SplitMix64(std::uint64_t& state) noexcept {
  std::uint64_t z = (state += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}

}  // namespace

void RandomSource::ReseedFromClock(const Clock& clock) noexcept { Seed(clock.Now()); }

void SeededRandom::Seed(std::uint64_t seed) noexcept {
  std::uint64_t st = seed;
  for (auto& word : s_) word = SplitMix64(st);
}

double SeededRandom::Rnd() noexcept {
  const std::uint64_t result = Rotl(s_[1] * 5, 7) * 9;
  const std::uint64_t t = s_[1] << 17;
  s_[2] ^= s_[0];
  s_[3] ^= s_[1];
  s_[1] ^= s_[2];
  s_[0] ^= s_[3];
  s_[2] ^= t;
  s_[3] = Rotl(s_[3], 45);
  // The top 53 bits give every double in [0, 1) that is a multiple of 2^-53.
  return static_cast<double>(result >> 11) * 0x1.0p-53;
}

double ScriptedRandom::Rnd() noexcept {
  if (queued_.empty()) return fallback_.Rnd();
  const double v = queued_.front();
  queued_.pop_front();
  return v;
}

}  // namespace lumivane
