#include "app/HeadlessRunner.h"

#include <QGuiApplication>
#include <QImage>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <string>

#include "app/Options.h"
#include "app/Stage.h"
#include "core/Clock.h"
#include "forms/MsgBox.h"
#include "core/RandomSource.h"
#include "forms/RenderTimer.h"
#include "core/Stopwatch.h"
#include "core/Color.h"
#include "render/FrameImage.h"
#include "render/RenderDevice.h"
#include "render/FrameRenderer.h"
#include "media/VideoFileWriter.h"

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
bool EndsWith(const std::string& s, std::string_view suffix) {
  return s.size() >= suffix.size() && s.compare(s.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool IsVideo(const std::string& out) { return EndsWith(out, ".avi") || EndsWith(out, ".mp4") || EndsWith(out, ".mkv"); }

// A frame file pattern holds one whole-number conversion: %d, %5d, %05d.
bool ValidPattern(const std::string& pattern) {
  const std::size_t at = pattern.find('%');
  if (at == std::string::npos || pattern.find('%', at + 1) != std::string::npos) return false;
  std::size_t i = at + 1;
  while (i < pattern.size() && pattern[i] >= '0' && pattern[i] <= '9') ++i;
  return i < pattern.size() && pattern[i] == 'd';
}

const char* Unsupported(const AppOptions& o) {
  if (!o.out.empty() && !IsVideo(o.out) && o.out != "-" && !ValidPattern(o.out))
    return "--out wants a frame pattern with one number in it (frame_%05d.png), a video name or -";
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

struct HeadlessSession::State final : OutputHost {
  State(const AppOptions& o, std::ostream& err)
      : clock(o.fps), random(o.seed), msgBox(err), stage(clock, random, msgBox, o.appFolder), timer(clock, {}),
        renderer(stage.Text) {}
  // Without a device the renderer still walks the frame: the texts step and reach the text log.
  FrameRenderer* RunningRenderer() override { return device ? &renderer : nullptr; }
  FrameRenderer* FrameRendererForFrame() override { return &renderer; }

  VirtualClock clock;
  SeededRandom random;
  HeadlessMsgBox msgBox;
  Stage stage;
  RenderTimer timer;
  std::ostream* textLog = nullptr;
  std::string line;
  // With --out: the device, the frames' destination and the frame being delivered.
  std::unique_ptr<RenderDevice> device;
  FrameRenderer renderer;
  std::string out;
  std::int64_t framesOut = 0;
  std::string outError;
  RenderDevice::FrameSink sink;
  VideoFileWriter video;

  void LogText(std::int32_t index, std::int32_t copy, const TextFrame& frame) {
    if (textLog == nullptr) return;
    std::string& l = line;
    l.clear();
    l.append(std::to_string(clock.Frame())).push_back('\t');
    l.append(std::to_string(clock.Now())).push_back('\t');
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
    textLog->write(l.data(), static_cast<std::streamsize>(l.size()));
  }
  // Takes a finished frame where the device holds it; "-" lets it go, like a null output.
  void Deliver(const std::uint8_t* top, std::ptrdiff_t stride) {
    const std::int64_t frame = framesOut++;
    if (out == "-" || !outError.empty()) return;
    if (video.IsOpen()) {
      if (!video.WriteFrame(top, stride)) outError = "the video \"" + out + "\" could not be written";
      return;
    }
    char name[4096];
    std::snprintf(name, sizeof name, out.c_str(), static_cast<int>(frame));
    const QImage image = FrameToImage(top, stride, device->BackBufferWidth(), device->BackBufferHeight());
    if (!image.save(QString::fromUtf8(name), "PNG")) outError = std::string("cannot write the frame \"") + name + "\"";
  }
};

HeadlessSession::HeadlessSession(const AppOptions& options, std::ostream& err)
    : state_(std::make_unique<State>(options, err)) {
  State& s = *state_;
  s.stage.Main.BackBufferWidth = options.width;
  s.stage.Main.BackBufferHeight = options.height;
  s.stage.SetOutputHost(&s);
  s.sink = [&s](const std::uint8_t* top, std::ptrdiff_t stride) { s.Deliver(top, stride); };
  s.renderer.TextDrawn = [&s](std::int32_t index, std::int32_t copy, const TextFrame& frame) {
    s.LogText(index, copy, frame);
  };
  s.renderer.Present = [&s] {
    if (!s.device) return;
    // The frame before this one is ready now: its read back ran while this one was drawn.
    s.device->QueueReadBack();
    s.device->TakeReadBack(s.sink);
  };
  // A render from a file is the same every time: no frame goes out without the models and
  // pictures it shows.
  s.renderer.TextBoxes().WaitForModels = true;
  s.renderer.Pictures().WaitForImages = true;
  RenderTimer::Hooks hooks;
  hooks.render = [&s] { s.stage.Main.Render(); };
  s.timer.SetHooks(std::move(hooks));
}

HeadlessSession::~HeadlessSession() = default;

bool HeadlessSession::OpenOutput(const std::string& out, int width, int height, double fps, std::string& error) {
  // Text layout needs Qt's font database, which lives in a GUI application: one without a screen.
  if (QCoreApplication::instance() == nullptr) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "lumivane";
    static char* argv[] = {name, nullptr};
    static QGuiApplication* app = new QGuiApplication(argc, argv);  // lives as long as the process
    (void)app;
  }
  State& s = *state_;
  s.device = CreateHeadlessDevice(width, height, error);
  if (!s.device || !s.renderer.Initialize(s.device.get(), s.stage.ApplicationFolder(), error)) {
    s.renderer.Destroy();
    s.device.reset();
    error = "Error initializing OpenGL. " + error;
    return false;
  }
  s.stage.AttachOutput(s.renderer);
  s.out = out;
  if (IsVideo(out) && !s.video.Open(out, width, height, fps, error)) return false;
  return true;
}

bool HeadlessSession::FinishOutput(std::string& error) {
  State& s = *state_;
  if (s.device)
    while (s.device->FlushReadBack(s.sink)) {
    }
  std::string videoError;
  if (s.video.IsOpen() && !s.video.Close(videoError) && s.outError.empty()) s.outError = videoError;
  error = s.outError;
  return error.empty();
}

bool HeadlessSession::LoadShow(const std::string& path, std::string& error) {
  return state_->stage.Show.EngineFileLoad(path, error);
}

Stage& HeadlessSession::GetStage() { return state_->stage; }
MainForm& HeadlessSession::Main() { return state_->stage.Main; }
TextEngine& HeadlessSession::Text() { return state_->stage.Text; }
ControlModel& HeadlessSession::Model() { return state_->stage.Model; }
FrameRenderer& HeadlessSession::Renderer() { return state_->renderer; }

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
  if (std::string error; !options.out.empty() && !session.OpenOutput(options.out, options.width, options.height, options.fps, error)) {
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
  std::string outError;
  const bool outWritten = session.FinishOutput(outError);
  const std::int64_t wallNs = wall.ElapsedNs();
  if (!outWritten) {
    err << "lumivane: " << outError << '\n';
    return 2;
  }
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
