// The frame's layers at 1920x1080: a frame with every pass on, and frames while pictures never
// seen before are sent to the output, which must decode off the frame path: the longest of those
// frames against their median.
#include <benchmark/benchmark.h>

#include <QImage>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdlib>
#include <chrono>
#include <thread>
#include <cmath>
#include <string>
#include <vector>

#include "forms/MsgBox.h"
#include "core/Stopwatch.h"
#include "forms/BackgroundsForm.h"
#include "forms/EffectsForm.h"
#include "forms/MainForm.h"
#include "forms/ReadFrameArguments.h"
#include "persistence/ShowFile.h"
#include "app/Stage.h"
#include "render/FrameRenderer.h"
#include "../tests/support/EngineFixture.h"

namespace lumivane {
namespace {

constexpr int kWidth = 1920, kHeight = 1080;

// A 1920x1080 photograph-like JPEG (smooth colour and fine noise, so it does not compress away).
std::string Photo(const QTemporaryDir& folder, int n) {
  QImage image(kWidth, kHeight, QImage::Format_RGB32);
  std::uint32_t seed = 12345u + static_cast<std::uint32_t>(n);
  for (int y = 0; y < kHeight; ++y) {
    auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < kWidth; ++x) {
      seed = seed * 1664525u + 1013904223u;
      const int noise = static_cast<int>(seed >> 28);
      row[x] = qRgb((x / 8 + n * 40 + noise) & 0xFF, (y / 5 + noise) & 0xFF, ((x + y) / 12 + n * 90) & 0xFF);
    }
  }
  const QString path = folder.filePath(QStringLiteral("photo%1.jpg").arg(n));
  image.save(path, "JPEG", 90);
  return path.toStdString();
}

// A headless output at 1920x1080. Each frame is read back to memory as the headless runner's
// --out - does, or (readBack false) presented to nothing, as a window's frames would be, with a
// wait for the device every 60 frames so that queued work is counted.
struct Output {
  test::EngineFixture engine;
  std::unique_ptr<RenderDevice> device;
  std::unique_ptr<FrameRenderer> owned;
  FrameRenderer& renderer;
  RenderDevice::FrameSink discard = [](const std::uint8_t*, std::ptrdiff_t) {};
  int presented = 0;

  // Draws the texts of `text`, or of its own engine.
  Output(benchmark::State& state, bool readBack = true, TextEngine* text = nullptr)
      : owned(std::make_unique<FrameRenderer>(text != nullptr ? *text : engine.text)), renderer(*owned) {
    std::string error;
    device = CreateHeadlessDevice(kWidth, kHeight, error);
    if (!device || !renderer.Initialize(device.get(), "", error)) {
      state.SkipWithError(error.c_str());
      return;
    }
    state.SetLabel(device->Renderer());
    renderer.Present = [this, readBack] {
      if (readBack) {
        device->QueueReadBack();
        device->TakeReadBack(discard);
      } else if (++presented % 60 == 0) {
        device->ReadBackNow(discard);
      }
    };
  }
  ~Output() { renderer.Destroy(); }
};

// Every pass of the frame on: a picture with random tint, placement and size, the effect layer
// capturing the output, feedback at 25 copies a second, invert, mask and fade; and a text.
void BM_EveryPass(benchmark::State& state) {
  Output out(state);
  if (!out.device) return;
  QTemporaryDir folder;
  const std::string photo = Photo(folder, 0);
  out.renderer.Pictures().WaitForImages = true;
  out.renderer.Backgrounds().InitializeBackground(photo, true, kWidth, kHeight);
  out.renderer.Output().CreateMaskTexture(photo);
  FrameArguments args;
  args.Text.BackBufferWidth = kWidth;
  args.Text.BackBufferHeight = kHeight;
  args.Background.TimerInterval = 500;
  args.Background.FadeIn = args.Background.FadeOut = true;
  args.Background.FilterRandom = 40;
  args.Background.Position = PlacementBlock{500, 500, 1000, false};
  args.Background.Size = PlacementBlock{500, 500, 1000, true};
  args.Background.Feedback = true;
  args.Effect.Enabled = args.Effect.Capture = true;
  args.Effect.Timer = 200;
  args.Effect.SourceBlend = Blend::SrcColor;
  args.Effect.TargetBlend = Blend::InvSrcColor;
  args.MaskEnabled = args.Invert = true;
  args.Fade = 230;
  out.engine.AddText("LUMIVANE 000000");
  for (auto _ : state) {
    out.engine.clock.Advance(16);
    out.renderer.RenderFrame(args);
  }
  state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_EveryPass)->Unit(benchmark::kMillisecond)->MinTime(3.0)->UseRealTime();

// The background demo show as the program plays it, read from its file through the forms: as it
// stands (first arg 0), or with every pass on (1: feedback, effect capture, mask and invert, its
// pictures changing every 400 ms); each frame read back (second arg 1) or not. The frame step is
// 16 ms of the show's clock.
void BM_DemoShow(benchmark::State& state) {
  struct Quiet final : MsgBox {
    int Show(std::string_view, int) override { return OK; }
  } quiet;
  FakeClock clock{100000};
  SeededRandom random{1};
  Stage stage(clock, random, quiet, "");
  Output out(state, state.range(1) == 1, &stage.Text);
  if (!out.device) return;
  struct Host final : OutputHost {
    FrameRenderer* renderer;
    FrameRenderer* RunningRenderer() override { return renderer; }
  } host;
  host.renderer = &out.renderer;
  stage.SetOutputHost(&host);
  ControlModel& model = stage.Model;
  BackgroundsForm& backgrounds = stage.Backgrounds;
  EffectsForm& effects = stage.Effects;
  stage.Main.BackBufferWidth = kWidth;
  stage.Main.BackBufferHeight = kHeight;
  out.renderer.Pictures().WaitForImages = true;
  ShowFile& show = stage.Show;
  std::string error;
  // LUMIVANE_BENCH_SHOW plays another show the same way (those bench/make_*_show.sh write).
  const char* other = std::getenv("LUMIVANE_BENCH_SHOW");
  const std::string path = other != nullptr ? other : LUMIVANE_SOURCE_RESOURCES "/Demo Backgrounds.xml";
  if (!show.EngineFileLoad(path, error)) {
    state.SkipWithError(error.c_str());
    return;
  }
  if (state.range(0) == 1) {
    const BackgroundsForm::Controls& c = backgrounds.C();
    model.SetValue(c.cmdFeedBack, 1);
    model.SetValue(c.cmdEnableMask, 1);
    model.SetValue(c.chkInvertOutput, 1);
    model.SetValue(effects.C().chkCaptureEffect, 1);
    model.SetText(c.txtTimerInterval, "400");
  }
  stage.AttachOutput(out.renderer);
  for (auto _ : state) {
    clock.Advance(16);
    stage.RenderFrame();
  }
  state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_DemoShow)->Args({0, 1})->Args({0, 0})->Args({1, 1})->Args({1, 0})->Unit(benchmark::kMillisecond)->MinTime(3.0)->UseRealTime();

// Pictures the output has not seen, one every half second (arg 1), sent while frames go on at 60
// a second as in the live program (each frame's spare time is slept, as the output waits for the
// display): their decode runs on the loader's thread and their texture comes in a slice a frame.
// Arg 0 shows the first picture throughout: the machine's own jitter, to compare with. Reports
// the frames' median and longest working time, and their ratio (the target: at most 2).
void BM_SwitchToNewPictures(benchmark::State& state) {
  const bool sends = state.range(0) == 1;
  Output out(state);
  if (!out.device) return;
  QTemporaryDir folder;
  std::vector<std::string> photos;
  for (int n = 0; n < 8; ++n) photos.push_back(Photo(folder, n));
  FrameArguments args;
  args.Text.BackBufferWidth = kWidth;
  args.Text.BackBufferHeight = kHeight;
  args.Background.TimerInterval = 100000;
  out.engine.AddText("000000");
  std::vector<double> frameMs;
  int sent = 0;
  for (auto _ : state) {
    // A fresh list each round: every picture is new to the output.
    out.renderer.Backgrounds().ResetBackGrounds();
    for (int frame = 0; frame < 240; ++frame) {
      out.engine.clock.Advance(16);
      // The send is the operator's, on the same thread as the frames: it is timed with them.
      Stopwatch watch;
      if (frame % 30 == 0 && (sends || frame == 0)) {
        out.renderer.Backgrounds().InitializeBackground(photos[static_cast<std::size_t>(sent % 8)], true, kWidth, kHeight);
        ++sent;
      }
      out.renderer.RenderFrame(args);
      const std::int64_t ns = watch.ElapsedNs();
      frameMs.push_back(static_cast<double>(ns) / 1e6);
      if (ns < 16'666'667) std::this_thread::sleep_for(std::chrono::nanoseconds(16'666'667 - ns));
    }
    out.renderer.Pictures().FinishImages();
  }
  std::sort(frameMs.begin(), frameMs.end());
  const double median = frameMs[frameMs.size() / 2], longest = frameMs.back();
  state.counters["median_ms"] = median;
  state.counters["p99_ms"] = frameMs[frameMs.size() * 99 / 100];
  state.counters["max_ms"] = longest;
  state.counters["max_over_median"] = longest / median;
  state.counters["pictures"] = sent;
}
BENCHMARK(BM_SwitchToNewPictures)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();

}  // namespace
}  // namespace lumivane
