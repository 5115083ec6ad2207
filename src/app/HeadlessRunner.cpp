#include "app/HeadlessRunner.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <string>

#include "app/Options.h"
#include "core/Clock.h"
#include "core/ControlModel.h"
#include "core/EngineContext.h"
#include "core/MsgBox.h"
#include "core/RandomSource.h"
#include "core/RenderTimer.h"
#include "core/Stopwatch.h"
#include "core/TextPass.h"
#include "core/clsText.h"
#include "core/frmMain.h"
#include "persistence/ShowFile.h"

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
  if (!o.midi.empty()) return "--midi needs MIDI control, which this build does not have yet";
  if (!o.audio.empty()) return "--audio needs audio analysis, which this build does not have yet";
  return nullptr;
}

void PrintStats(std::ostream& out, std::vector<std::int64_t> frameNs, std::int64_t wallNs, Tick virtualMs) {
  const std::size_t n = frameNs.size();
  std::sort(frameNs.begin(), frameNs.end());
  auto ms = [](std::int64_t ns) { return static_cast<double>(ns) / 1e6; };
  auto at = [&](double q) {
    return n == 0 ? 0 : frameNs[std::min(n - 1, static_cast<std::size_t>(q * static_cast<double>(n)))];
  };
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

struct HeadlessSession::State {
  State(const AppOptions& o, std::ostream& err)
      : clock(o.fps), random(o.seed), context{clock, random}, text(context), msgBox(err), main(model, text, msgBox),
        timer(clock, {}) {}
  VirtualClock clock;
  SeededRandom random;
  EngineContext context;
  ControlModel model;
  clsText text;
  HeadlessMsgBox msgBox;
  frmMain main;
  RenderTimer timer;
  TextPass textPass;
  std::ostream* textLog = nullptr;
  std::string line;
};

HeadlessSession::HeadlessSession(const AppOptions& options, std::ostream& err)
    : state_(std::make_unique<State>(options, err)) {
  State& s = *state_;
  s.main.BackBufferWidth = options.width;
  s.main.BackBufferHeight = options.height;
  s.main.RenderFrame = [&s] {
    const TextFrameInput input = s.main.FrameInput();
    s.textPass.Run(s.text, input, [&s](std::int32_t index, std::int32_t copy, const TextFrame& frame) {
      if (s.textLog == nullptr) return;
      std::string& l = s.line;
      l.clear();
      l.append(std::to_string(s.clock.Frame())).push_back('\t');
      l.append(std::to_string(s.clock.Now())).push_back('\t');
      l.append(std::to_string(index)).push_back('\t');
      l.append(std::to_string(copy)).push_back('\t');
      for (std::size_t i = 0; i < frame.Text.size(); ++i) {
        if (frame.Text[i] == '\r' && i + 1 < frame.Text.size() && frame.Text[i + 1] == '\n') {
          l.append("\\n");
          ++i;
        } else {
          l.push_back(frame.Text[i]);
        }
      }
      l.push_back('\n');
      s.textLog->write(l.data(), static_cast<std::streamsize>(l.size()));
    });
  };
  RenderTimer::Hooks hooks;
  hooks.render = [&s] { s.main.Render(); };
  s.timer.SetHooks(std::move(hooks));
}

HeadlessSession::~HeadlessSession() = default;

bool HeadlessSession::LoadShow(const std::string& path, std::string& error) {
  ShowFile show(state_->main);
  return show.EngineFileLoad(path, error);
}

frmMain& HeadlessSession::Main() { return state_->main; }
clsText& HeadlessSession::Text() { return state_->text; }
ControlModel& HeadlessSession::Model() { return state_->model; }

std::vector<std::int64_t> HeadlessSession::Play(std::int64_t frames, std::ostream* textLog, bool timeFrames) {
  State& s = *state_;
  s.textLog = textLog;
  std::vector<std::int64_t> frameNs;
  if (timeFrames) frameNs.reserve(static_cast<std::size_t>(std::clamp<std::int64_t>(frames, 0, 1 << 24)));
  for (std::int64_t k = 0; k < frames; ++k) {
    s.clock.SetFrame(static_cast<std::uint64_t>(k));
    Stopwatch frame;
    // Every frame of a headless run is drawn: the limiter belongs to the live output.
    s.timer.Tick();
    if (timeFrames && frameNs.size() < frameNs.capacity()) frameNs.push_back(frame.ElapsedNs());
  }
  s.textLog = nullptr;
  return frameNs;
}

int RunHeadless(const AppOptions& options, std::ostream& out, std::ostream& err) {
  if (const char* reason = Unsupported(options)) {
    err << "lumivane: " << reason << '\n';
    return 3;
  }
  std::ofstream textLog;
  if (!options.textLog.empty()) {
    textLog.open(options.textLog, std::ios::binary | std::ios::trunc);
    if (!textLog) {
      err << "lumivane: cannot write the text log \"" << options.textLog << "\"\n";
      return 2;
    }
  }

  HeadlessSession session(options, err);
  if (std::string error; !session.LoadShow(options.showFile, error)) {
    err << "lumivane: " << error << '\n';
    return 2;
  }
  std::ofstream log;
  if (!options.logFile.empty()) {
    log.open(options.logFile, std::ios::app);
    if (!log) {
      err << "lumivane: cannot write the log file \"" << options.logFile << "\"\n";
      return 2;
    }
    session.Model().SetFailureSink([&log](const std::string& line) { log << line << '\n'; });
  }

  Stopwatch wall;
  std::vector<std::int64_t> frameNs =
      session.Play(options.FrameCount(), options.textLog.empty() ? nullptr : &textLog, options.stats);
  const std::int64_t wallNs = wall.ElapsedNs();
  if (textLog.is_open()) {
    textLog.flush();
    if (!textLog) {
      err << "lumivane: the text log \"" << options.textLog << "\" could not be written whole\n";
      return 2;
    }
  }
  if (options.stats) {
    const auto frames = options.FrameCount();
    const Tick lastMs = frames > 0 ? VirtualClock::FrameTime(static_cast<std::uint64_t>(frames - 1), options.fps) : 0;
    PrintStats(out, std::move(frameNs), wallNs, lastMs);
  }
  return 0;
}

}  // namespace lumivane
