// The text engine's per-frame cost: the step of texts whose update is not due (the common case in
// every frame), and one due update of a counter.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "core/Clock.h"
#include "core/EngineContext.h"
#include "core/RandomSource.h"
#include "core/TextEngine.h"

// Counts every allocation of the process, so a benchmark can show that a loop allocates nothing.
namespace {
std::atomic<std::uint64_t> allocations{0};
}
void* operator new(std::size_t size) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace lumivane {
namespace {

struct Engine {
  FakeClock clock{1000};
  SeededRandom random{1};
  EngineContext context{clock, random};
  TextEngine text{context};
  TextFrameInput input;
};

TextObject CounterText(std::int32_t selfTime) {
  TextObject t = NewTextObject(TextFont{"DejaVu Sans", 12});
  t.Text3D = false;
  t.Counter.ValueType = "Integer";
  t.Counter.Direction = "Increment (+)";
  t.Counter.MaxDigits = 9;
  t.SelfTime = selfTime;
  return t;
}

// 10,000 texts, none due: what every frame pays for texts that only show what they showed.
void BM_TextFrameStepNotDue(benchmark::State& state) {
  const auto count = static_cast<std::int32_t>(state.range(0));
  Engine e;
  for (int i = 0; i < count; ++i) e.text.TextAppend(CounterText(1000000));
  for (std::int32_t i = 1; i <= count; ++i) e.text.TextFrameStep(i, 1, e.input);  // first updates
  e.clock.Advance(1);
  const std::uint64_t before = allocations.load();
  for (auto _ : state) {
    std::size_t shown = 0;
    for (std::int32_t i = 1; i <= count; ++i) shown += e.text.TextFrameStep(i, 1, e.input).Text.size();
    benchmark::DoNotOptimize(shown);
  }
  state.counters["allocs_per_frame"] =
      static_cast<double>(allocations.load() - before) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_TextFrameStepNotDue)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);

// One due update of an integer counter: step, format, case modes, store.
void BM_TextFrameStepDueCounter(benchmark::State& state) {
  Engine e;
  e.text.TextAppend(CounterText(0));
  for (auto _ : state) {
    e.clock.Advance(1);
    benchmark::DoNotOptimize(e.text.TextFrameStep(1, 1, e.input).Text.data());
  }
}
BENCHMARK(BM_TextFrameStepDueCounter);

}  // namespace
}  // namespace lumivane
