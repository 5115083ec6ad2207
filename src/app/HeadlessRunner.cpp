#include "app/HeadlessRunner.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <vector>

#include "app/Options.h"
#include "core/Clock.h"
#include "core/ControlModel.h"
#include "core/EngineContext.h"
#include "core/MsgBox.h"
#include "core/RandomSource.h"
#include "core/RenderTimer.h"
#include "core/Stopwatch.h"
#include "core/clsText.h"
#include "core/frmMain.h"

namespace lumivane {

namespace {

// Nobody is there to answer: messages go to the error stream, questions are answered No so that
// nothing is dropped or overwritten unasked.
class HeadlessMsgBox final : public MsgBox {
 public:
  explicit HeadlessMsgBox(std::ostream& err) : err_(err) {}
  int Show(std::string_view message, int buttons) override {
    err_ << "lumivane: " << message << '\n';
    return buttons == YesNo ? No : OK;
  }

 private:
  std::ostream& err_;
};

// What this build cannot do yet, by option; each names the part of the program it waits for.
const char* Unsupported(const AppOptions& o) {
  if (!o.out.empty()) return "--out needs the render device, which this build does not have yet";
  if (!o.textLog.empty()) return "--text-log needs text timing, which this build does not have yet";
  if (!o.midi.empty()) return "--midi needs MIDI control, which this build does not have yet";
  if (!o.audio.empty()) return "--audio needs audio analysis, which this build does not have yet";
  return nullptr;
}

void PrintStats(std::ostream& out, std::vector<std::int64_t> frameNs, std::int64_t wallNs, Tick virtualMs) {
  const std::size_t n = frameNs.size();
  std::sort(frameNs.begin(), frameNs.end());
  auto ms = [](std::int64_t ns) { return static_cast<double>(ns) / 1e6; };
  auto at = [&](double q) { return n == 0 ? 0 : frameNs[std::min(n - 1, static_cast<std::size_t>(q * static_cast<double>(n)))]; };
  std::int64_t sum = 0;
  for (std::int64_t v : frameNs) sum += v;
  char line[256];
  std::snprintf(line, sizeof line,
                "frames %zu\nvirtual_ms %u\nwall_ms %.3f\nfps %.1f\n"
                "frame_ms_mean %.4f\nframe_ms_median %.4f\nframe_ms_p99 %.4f\nframe_ms_max %.4f\n",
                n, virtualMs, ms(wallNs), wallNs > 0 ? static_cast<double>(n) * 1e9 / static_cast<double>(wallNs) : 0.0,
                n ? ms(sum) / static_cast<double>(n) : 0.0, ms(at(0.5)), ms(at(0.99)), n ? ms(frameNs.back()) : 0.0);
  out << line;
}

}  // namespace

int RunHeadless(const AppOptions& options, std::ostream& out, std::ostream& err) {
  if (const char* reason = Unsupported(options)) {
    err << "lumivane: " << reason << '\n';
    return 3;
  }
  {
    std::ifstream show(options.showFile, std::ios::binary);
    if (!show) {
      err << "lumivane: cannot read the show file \"" << options.showFile << "\"\n";
      return 2;
    }
  }

  VirtualClock clock(options.fps);
  SeededRandom random(options.seed);
  EngineContext context{clock, random};
  ControlModel model;
  std::ofstream log;
  if (!options.logFile.empty()) {
    log.open(options.logFile, std::ios::app);
    if (!log) {
      err << "lumivane: cannot write the log file \"" << options.logFile << "\"\n";
      return 2;
    }
    model.SetFailureSink([&log, &clock](const std::string& line) { log << clock.Now() << " ms " << line << '\n'; });
  }
  clsText text(context);
  HeadlessMsgBox msgBox(err);
  frmMain main(model, text, msgBox);

  RenderTimer::Hooks hooks;
  hooks.render = [&main] { main.Render(); };
  RenderTimer timer(clock, std::move(hooks));

  const std::int64_t frames = options.FrameCount();
  std::vector<std::int64_t> frameNs;
  if (options.stats) frameNs.reserve(static_cast<std::size_t>(std::min<std::int64_t>(frames, 1 << 24)));
  Stopwatch wall;
  for (std::int64_t k = 0; k < frames; ++k) {
    clock.SetFrame(static_cast<std::uint64_t>(k));
    Stopwatch frame;
    // Every frame of a headless run is drawn: the limiter belongs to the live output.
    timer.Tick();
    if (options.stats && frameNs.size() < frameNs.capacity()) frameNs.push_back(frame.ElapsedNs());
  }
  const std::int64_t wallNs = wall.ElapsedNs();
  if (options.stats) PrintStats(out, std::move(frameNs), wallNs, clock.Now());
  return 0;
}

}  // namespace lumivane
