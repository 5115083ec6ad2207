#include <gtest/gtest.h>

#include "forms/MainForm.h"
#include "support/EngineFixture.h"
#include "support/FakeMsgBox.h"

namespace lumivane {
namespace {

// Logs what the engine asks of the output window.
struct FakeOutput final : OutputWindow {
  std::vector<std::string>& log;
  bool deviceWorks;
  explicit FakeOutput(std::vector<std::string>& l, bool works) : log(l), deviceWorks(works) {}
  void Open(int monitor, int w, int h) override {
    log.push_back("open " + std::to_string(monitor) + " " + std::to_string(w) + "x" + std::to_string(h));
  }
  void PaintCountdown(int n) override { log.push_back("countdown " + std::to_string(n)); }
  bool InitializeDevice(std::string& reason) override {
    log.push_back("device");
    if (!deviceWorks) reason = "no OpenGL 3.3 context";
    return deviceWorks;
  }
  void DestroyDevice() override { log.push_back("destroy"); }
  bool BeginFrame() override {
    log.push_back("frame");
    return true;
  }
  void EndFrame() override { log.push_back("present"); }
  RenderDevice* Device() override { return nullptr; }
  void SaveFrame(const std::string& path) override { log.push_back("save " + path); }
  void SetFullScreen(bool on) override { log.push_back(on ? "fullscreen on" : "fullscreen off"); }
  void SetAlwaysOnTop(bool on) override { log.push_back(on ? "ontop on" : "ontop off"); }
  void SetTimerEnabled(bool on) override { log.push_back(on ? "timer on" : "timer off"); }
  void Close() override { log.push_back("close"); }
};

class PlaybackTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  // Declared before the form: the form stops a running output as it goes, and logs it.
  std::vector<std::string> log;
  bool deviceWorks = true;
  ControlModel model;
  test::FakeMsgBox msg;
  int yields = 0;
  std::function<void(int)> duringYield;  // an event arriving at the n-th yield
  std::function<void(bool restart, bool savePositions)> quit;
  int previews = 0;

  // The program around playback: each yield lets 10 ms pass. Declared before the form, which
  // yields as it stops its output on the way out.
  struct Host final : PlaybackHost {
    PlaybackTest& t;
    explicit Host(PlaybackTest& test) : t(test) {}
    std::unique_ptr<OutputWindow> CreateOutputWindow() override {
      return std::make_unique<FakeOutput>(t.log, t.deviceWorks);
    }
    void Yield() override {
      t.clock.Advance(10);
      ++t.yields;
      if (t.duringYield) t.duringYield(t.yields);
    }
    void Quit(bool restart, bool savePositions) override {
      if (t.quit) t.quit(restart, savePositions);
    }
    void RenderPreview() override { ++t.previews; }
  } host{*this};
  MainForm form{model, text, msg};
  const MainForm::PlaybackControls& p = form.Playback();

  void SetUp() override { form.Host = &host; }
  bool Logged(const std::string& entry) const { return std::find(log.begin(), log.end(), entry) != log.end(); }
};

TEST_F(PlaybackTest, StartCountsDownMakesTheDeviceAndStopUndoesItInOrder) {
  model.SetText(p.cboResolution, "800x600");
  model.SetBackColor(form.BackgroundColor, 0x00102030);
  const Tick before = clock.Now();
  ASSERT_TRUE(form.StartRender());
  EXPECT_TRUE(form.Running());
  EXPECT_GE(clock.Now() - before, 3 * MainForm::kCountdownStepMs);
  EXPECT_EQ(std::vector<std::string>(log.begin(), log.begin() + 6),
            (std::vector<std::string>{"open 0 800x600", "countdown 3", "countdown 2", "countdown 1", "device",
                                      "ontop off"}));
  EXPECT_EQ(log.back(), "timer on");
  EXPECT_FALSE(ControlModel::Enabled(p.cmdPlay));
  EXPECT_FALSE(ControlModel::Enabled(p.cboResolution));

  form.TimerRender();
  EXPECT_EQ(log.back(), "present");
  EXPECT_EQ(log[log.size() - 2], "frame");

  log.clear();
  model.Press(p.CmdStop, Origin::Widget);
  EXPECT_FALSE(form.Running());
  EXPECT_EQ(std::vector<std::string>(log.begin(), log.begin() + 3),
            (std::vector<std::string>{"timer off", "destroy", "close"}));
  EXPECT_TRUE(ControlModel::Enabled(p.cmdPlay));
  EXPECT_TRUE(ControlModel::Enabled(p.cboResolution));
  EXPECT_EQ(form.Caption(), "Lumivane");
  form.TimerRender();  // a late tick after the stop draws nothing
  EXPECT_EQ(std::count_if(log.begin(), log.end(), [](const std::string& s) { return s.rfind("frame", 0) == 0; }), 0);
}

TEST_F(PlaybackTest, AStopDuringTheCountdownAbortsTheStart) {
  duringYield = [this](int n) {
    if (n == 30) form.HotKey(OutputKey::Stop);  // Escape on the output, in the first number
  };
  EXPECT_FALSE(form.StartRender());
  EXPECT_FALSE(form.Running());
  EXPECT_FALSE(Logged("device"));
  EXPECT_FALSE(Logged("countdown 2"));
  EXPECT_TRUE(Logged("close"));
  EXPECT_TRUE(ControlModel::Enabled(p.cboResolution));
  EXPECT_TRUE(ControlModel::Enabled(p.cmdPlay));
}

// The output window is closed by the window manager while a frame is being drawn: the close lands
// inside the frame (the frame lets events run), the stop takes the window away, and the rest of the
// frame must neither present on it nor touch it (under ASan a touch would be a use after free).
TEST_F(PlaybackTest, AWindowClosedUnderARunningFrameEndsThePlaybackCleanly) {
  ASSERT_TRUE(form.StartRender());
  int frames = 0;
  form.RenderFrame = [this, &frames] {
    if (++frames == 2) form.HotKey(OutputKey::Stop);  // the close request, arriving mid-frame
  };
  log.clear();
  form.TimerRender();
  EXPECT_EQ(log, (std::vector<std::string>{"frame", "present"}));
  log.clear();
  form.TimerRender();
  EXPECT_FALSE(form.Running());
  EXPECT_TRUE(Logged("close"));
  EXPECT_FALSE(Logged("present"));
  form.TimerRender();  // a tick still queued behind the close
  EXPECT_EQ(frames, 2);
}

TEST_F(PlaybackTest, ADeviceThatCannotBeMadeTellsTheOperatorAndStaysIdle) {
  deviceWorks = false;
  EXPECT_FALSE(form.StartRender());
  EXPECT_FALSE(form.Running());
  ASSERT_EQ(msg.shown.size(), 1u);
  EXPECT_EQ(msg.shown[0], "Error initializing OpenGL.\nno OpenGL 3.3 context");
  EXPECT_TRUE(Logged("close"));
  EXPECT_FALSE(Logged("timer on"));
}

TEST_F(PlaybackTest, ClosingDuringPlaybackOnlyStopsAndClosingWhenIdleAsksToQuit) {
  int quits = 0;
  quit = [&](bool restart, bool savePositions) {
    EXPECT_FALSE(restart);
    EXPECT_TRUE(savePositions);
    ++quits;
  };
  ASSERT_TRUE(form.StartRender());
  msg.answers = {MsgBox::No};
  EXPECT_FALSE(form.RequestClose());
  EXPECT_TRUE(form.Running());
  EXPECT_EQ(msg.shown.back(), "Lumivane is currently running. Are you sure you want to Stop?");
  msg.answers = {MsgBox::Yes};
  EXPECT_FALSE(form.RequestClose());  // stops, but the close itself is cancelled
  EXPECT_FALSE(form.Running());
  EXPECT_EQ(quits, 0);

  msg.answers = {MsgBox::No};
  EXPECT_FALSE(form.RequestClose());
  EXPECT_EQ(msg.shown.back(), "Are you sure you want to Quit Lumivane?");
  EXPECT_EQ(quits, 0);
  msg.answers = {MsgBox::Yes};
  EXPECT_TRUE(form.RequestClose());
  EXPECT_EQ(quits, 1);
}

TEST_F(PlaybackTest, PauseSpinsTheTimerAndTheCaptionShowsTheRate) {
  ASSERT_TRUE(form.StartRender());
  form.HotKey(OutputKey::PlayPause);
  EXPECT_TRUE(form.Paused());
  int frames = 0;
  form.RenderFrame = [&] {
    ++frames;
    clock.Advance(20);
  };
  // While paused the tick spins on events; the event that lifts the pause arrives in the spin.
  duringYield = [this](int) {
    if (form.Paused()) form.HotKey(OutputKey::PlayPause);
  };
  form.TimerRender();
  EXPECT_FALSE(form.Paused());
  EXPECT_EQ(frames, 1);
  duringYield = nullptr;
  for (int i = 0; i < 30; ++i) form.TimerRender();
  EXPECT_EQ(form.Caption(), "Lumivane [FPS: 50.0]");
}

TEST_F(PlaybackTest, ThePreviewMonitorFollowsItsPanelAndRate) {
  ASSERT_TRUE(form.StartRender());
  form.RenderFrame = [&] { clock.Advance(20); };
  for (int i = 0; i < 50; ++i) form.TimerRender();  // one second, panel hidden
  EXPECT_EQ(previews, 0);
  model.Press(p.cmdPreview, Origin::Widget);
  for (int i = 0; i < 50; ++i) form.TimerRender();
  EXPECT_GE(previews, 4);
  EXPECT_LE(previews, 5);
  previews = 0;
  model.SetValue(p.optPreview8FPS, 1, Origin::Widget);
  for (int i = 0; i < 50; ++i) form.TimerRender();
  EXPECT_GE(previews, 8);
  EXPECT_LE(previews, 9);
}

TEST_F(PlaybackTest, OutputKeysReachTheirControls) {
  ASSERT_TRUE(form.StartRender());
  form.HotKey(OutputKey::FullScreen);
  EXPECT_EQ(ControlModel::Value(p.cmdFullScreen), 1);
  EXPECT_EQ(log.back(), "fullscreen on");
  form.HotKey(OutputKey::AlwaysOnTop);
  EXPECT_EQ(log.back(), "ontop on");
  // Ctrl+S: numbered shots, skipping numbers already taken.
  form.ScreenshotFolder = "/shots";
  form.FileExists = [](const std::string& path) { return path == "/shots/frame_00001.png"; };
  form.HotKey(OutputKey::SaveFrame);
  EXPECT_EQ(log.back(), "save /shots/frame_00002.png");
  form.HotKey(OutputKey::SaveFrame);
  EXPECT_EQ(log.back(), "save /shots/frame_00003.png");
  // Enter feeds custom texts by hand.
  TextObject custom = NewTextObject(TextFont{});
  custom.TextType = "CustomInput";
  text.TextAppend(custom);
  form.HotKey(OutputKey::ManualFeed);
  EXPECT_TRUE(text.Live().back().SynchronizeText);
  form.HotKey(OutputKey::Stop);
  EXPECT_FALSE(form.Running());
  EXPECT_EQ(ControlModel::Value(p.cmdFullScreen), 0);  // the output is gone, so is full screen
}

// The size is read in any case and with blanks around the numbers; an entry that does not read is
// told, and the last good size stands.
TEST_F(PlaybackTest, TheResolutionReadsLooselyAndABadEntryChangesNothing) {
  EXPECT_EQ(MainForm::ParseResolution("800X600"), (std::pair<int, int>{800, 600}));
  EXPECT_EQ(MainForm::ParseResolution(" 800 x 600 "), (std::pair<int, int>{800, 600}));
  for (const char* bad : {"axb", "800", "800x", "x600", "800x600x2", "0x600", "big"})
    EXPECT_FALSE(MainForm::ParseResolution(bad)) << bad;

  model.SetText(p.cboResolution, "1920X1080");
  EXPECT_TRUE(form.Resolution());
  model.SetText(p.cboResolution, "wide");
  EXPECT_FALSE(form.Resolution());
  EXPECT_EQ(msg.shown.back(), std::string(MainForm::kResolutionMessage));
  EXPECT_EQ(form.OutputWidth, 1920);
  EXPECT_EQ(form.OutputHeight, 1080);
}

}  // namespace
}  // namespace lumivane
