// The per-frame reads: a control by its resolved handle and the renderer's accessors of the text
// list. Both run hundreds of times in every frame.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "core/Clock.h"
#include "core/ControlModel.h"
#include "core/EngineContext.h"
#include "core/RandomSource.h"
#include "forms/RenderTimer.h"
#include "core/TextEngine.h"

namespace lumivane {
namespace {

// A model the size of the real program's: a few hundred controls over a dozen forms.
void FillModel(ControlModel& model) {
  for (int f = 0; f < 12; ++f) {
    const std::string form = "frmForm" + std::to_string(f);
    for (int i = 0; i < 40; ++i) {
      ControlHandle h = model.Add(form, ControlKind::Slider, "Slider" + std::to_string(i));
      model.SetRange(h, 0, 1000);
      model.SetValue(h, i);
    }
  }
}

void BM_ControlReadByHandle(benchmark::State& state) {
  ControlModel model;
  FillModel(model);
  const ControlHandle h = model.Resolve("frmForm7", "Slider23");
  for (auto _ : state) {
    benchmark::DoNotOptimize(h);
    std::int32_t v = ControlModel::Value(h);
    benchmark::DoNotOptimize(v);
  }
}
BENCHMARK(BM_ControlReadByHandle);

// A frame reads about a hundred controls; this walks 100 handles spread over the model.
void BM_HundredControlReadsByHandle(benchmark::State& state) {
  ControlModel model;
  FillModel(model);
  std::vector<ControlHandle> handles;
  for (int i = 0; i < 100; ++i)
    handles.push_back(model.Resolve("frmForm" + std::to_string(i % 12), "Slider" + std::to_string((i * 7) % 40)));
  for (auto _ : state) {
    std::int64_t sum = 0;
    for (const ControlHandle& h : handles) sum += ControlModel::Value(h);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * 100);
}
BENCHMARK(BM_HundredControlReadsByHandle);

// For contrast: what a name lookup would cost if the frame did it.
void BM_ControlResolveByName(benchmark::State& state) {
  ControlModel model;
  FillModel(model);
  for (auto _ : state) {
    ControlHandle h = model.Resolve("frmForm7", "Slider23");
    benchmark::DoNotOptimize(h);
  }
}
BENCHMARK(BM_ControlResolveByName);

struct TextListFixture {
  FakeClock clock{1000};
  SeededRandom random{1};
  EngineContext context{clock, random};
  TextEngine text{context};
  explicit TextListFixture(int count) {
    for (int i = 0; i < count; ++i) {
      TextObject t = NewTextObject(TextFont{"DejaVu Sans", 12.0f});
      t.CurrentText = "text " + std::to_string(i);
      t.Color = i;
      text.TextAppend(t);
    }
  }
};

// One accessor, walking a 500-text list so the reads do not sit on one record.
template <class Read>
void RunAccessor(benchmark::State& state, Read read) {
  TextListFixture f(500);
  std::int32_t index = 1;
  for (auto _ : state) {
    auto v = read(f.text, index);
    benchmark::DoNotOptimize(v);
    index = index == 500 ? 1 : index + 1;
  }
}

void BM_RenderGetCurrentText(benchmark::State& state) {
  RunAccessor(state, [](const TextEngine& t, std::int32_t i) { return t.RenderGetCurrentText(i).data(); });
}
BENCHMARK(BM_RenderGetCurrentText);

void BM_RenderGetDXTextColor(benchmark::State& state) {
  RunAccessor(state, [](const TextEngine& t, std::int32_t i) { return t.RenderGetDXTextColor(i); });
}
BENCHMARK(BM_RenderGetDXTextColor);

void BM_RenderGetClip(benchmark::State& state) {
  RunAccessor(state, [](const TextEngine& t, std::int32_t i) { return t.RenderGetClip(i); });
}
BENCHMARK(BM_RenderGetClip);

// The flat text pass asks several fields of every text in every frame.
void BM_RenderFieldsOfAllTexts(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  TextListFixture f(count);
  for (auto _ : state) {
    std::uint64_t acc = 0;
    for (std::int32_t i = 1; i <= f.text.RenderGetTextCount(); ++i) {
      acc += f.text.RenderGetCurrentText(i).size();
      acc += f.text.RenderGetDXTextColor(i);
      acc += f.text.RenderGetAlignX(i).size();
      acc += static_cast<std::uint64_t>(f.text.RenderGetClip(i));
      acc += static_cast<std::uint64_t>(f.text.RenderGetOutputMultiplier(i));
    }
    benchmark::DoNotOptimize(acc);
  }
  state.SetItemsProcessed(state.iterations() * count * 5);
}
BENCHMARK(BM_RenderFieldsOfAllTexts)->Arg(100)->Arg(10000);

// One render timer tick around an empty frame: the limiter test, the clock reads, the 16-bit
// statistics and, twice a second, the caption text. What the tick itself adds to every frame.
void BM_EmptyRenderTimerTick(benchmark::State& state) {
  SystemClock clock;
  std::int64_t frames = 0;
  std::string caption;
  RenderTimer::Hooks hooks;
  hooks.paused = [] { return false; };
  hooks.limiterOn = [] { return false; };
  hooks.yield = [] {};
  hooks.render = [&frames] { ++frames; };
  hooks.showRate = [&caption](const std::string& s) { caption = s; };
  RenderTimer timer(clock, std::move(hooks));
  for (auto _ : state) benchmark::DoNotOptimize(timer.Tick());
  benchmark::DoNotOptimize(frames);
}
BENCHMARK(BM_EmptyRenderTimerTick);

}  // namespace
}  // namespace lumivane
