#pragma once

#include <chrono>
#include <cstdint>

namespace lumivane {

// Real elapsed time in nanoseconds, for performance figures only (frame-time statistics,
// benchmarks). Behaviour never depends on it: that is the program clock's job.
class Stopwatch {
 public:
  Stopwatch() noexcept : start_(std::chrono::steady_clock::now()) {}
  void Restart() noexcept { start_ = std::chrono::steady_clock::now(); }
  std::int64_t ElapsedNs() const noexcept {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_;
};

}  // namespace lumivane
