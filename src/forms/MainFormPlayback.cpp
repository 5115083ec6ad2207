// The main window's playback side: start and stop of the output, the render timer, reset and the
// close request.
#include <cctype>
#include <cstdio>

#include "core/EngineContext.h"
#include "forms/MsgBox.h"
#include "core/Numbers.h"
#include "forms/OutputClones.h"
#include "core/RandomSource.h"
#include "core/TextEngine.h"
#include "forms/MainForm.h"
#include "lumivane/Version.h"

namespace lumivane {

namespace {

const std::vector<std::string> kResolutions = {"200x160",   "320x240",   "640x480",   "720x576",
                                               "720x480",   "800x600",   "1024x768",  "1280x720",
                                               "1280x1024", "1600x1200", "1920x1080", "1920x1200"};

}  // namespace

void MainForm::RegisterPlaybackControls() {
  ControlModel& m = model_;
  const std::string_view f = kFormName;
  auto button = [&](std::string_view name, std::string_view caption, bool toggle) {
    ControlHandle h = m.Add(f, ControlKind::CommandButton, name);
    m.SetCaption(h, caption);
    m.SetToggle(h, toggle);
    return h;
  };
  PlaybackControls& p = p_;
  p.cmdPlay = button("cmdPlay", "Play", false);
  p.cmdPause = button("cmdPause", "Pause", true);
  p.CmdStop = button("CmdStop", "Stop", false);
  p.cmdReset = button("cmdReset", "Reset", false);
  p.cmdRecord = button("cmdRecord", "Record", true);
  p.chkFPSLimiter = m.Add(f, ControlKind::CheckBox, "chkFPSLimiter");
  m.SetCaption(p.chkFPSLimiter, "Limit to max. 24 FPS");
  p.cboResolution = m.Add(f, ControlKind::ComboBox, "cboResolution");
  m.SetCaption(p.cboResolution, "Output:");
  m.SetItems(p.cboResolution, kResolutions);
  m.SetText(p.cboResolution, "1024x768");
  p.cboMonitors = m.Add(f, ControlKind::ComboBox, "cboMonitors");
  p.cmdFullScreen = button("cmdFullScreen", "Full Screen", true);
  p.chkAlwaysOnTop = m.Add(f, ControlKind::CheckBox, "chkAlwaysOnTop");
  m.SetCaption(p.chkAlwaysOnTop, "Always on Top");
  p.cmdLockResolution = button("cmdLockResolution", "Lock", true);
  p.cmdPreview = button("cmdPreview", "Preview", true);
  p.optPreview4FPS = m.Add(f, ControlKind::OptionButton, "optPreview4FPS");
  m.SetCaption(p.optPreview4FPS, "4 FPS");
  p.optPreview8FPS = m.Add(f, ControlKind::OptionButton, "optPreview8FPS");
  m.SetCaption(p.optPreview8FPS, "8 FPS");
  m.SetGroup(p.optPreview4FPS, "PreviewRate");
  m.SetGroup(p.optPreview8FPS, "PreviewRate");
  m.SetValue(p.optPreview4FPS, 1);
  p.framePreview = m.Add(f, ControlKind::Frame, "framePreview");
  m.SetCaption(p.framePreview, "Output");
  m.SetVisible(p.framePreview, false);

  // The clear colour of every frame, black.
  BackgroundColor = m.Add(f, ControlKind::PictureBox, "picBackGroundColor");
  m.SetCaption(BackgroundColor, "Clear colour");
}

void MainForm::ConnectPlayback() {
  ControlModel& m = model_;
  const PlaybackControls& p = p_;
  m.OnChange(p.cmdPlay, [this](const ControlEvent&) {
    if (!running_) StartRender();
  });
  m.OnChange(p.CmdStop, [this](const ControlEvent&) {
    if (running_) StopRender();
  });
  m.OnChange(p.cmdPause, [this](const ControlEvent&) { paused_ = running_ && model_.Value(p_.cmdPause) == 1; });
  m.OnChange(p.cmdReset, [this](const ControlEvent&) {
    if (msgBox_.Show(kResetQuestion, MsgBox::YesNo) == MsgBox::Yes) Reset();
  });
  m.OnChange(p.cmdFullScreen, [this](const ControlEvent&) {
    const bool on = model_.Value(p_.cmdFullScreen) == 1;
    if (output_) output_->SetFullScreen(on);
    if (Clones != nullptr && deviceReady_) Clones->CloneResolution(on);
  });
  m.OnChange(p.chkAlwaysOnTop, [this](const ControlEvent&) {
    const bool on = model_.Checked(p_.chkAlwaysOnTop);
    if (output_) output_->SetAlwaysOnTop(on);
    if (Clones != nullptr && deviceReady_) Clones->CloneSetTopMostWindow(on);
  });
  m.OnChange(p.cmdPreview, [this](const ControlEvent&) {
    model_.SetVisible(p_.framePreview, model_.Value(p_.cmdPreview) == 1);
  });
}

void MainForm::SetCaption(const std::string& caption) {
  caption_ = caption;
  if (CaptionChanged) CaptionChanged(caption_);
}

std::optional<std::pair<int, int>> MainForm::ParseResolution(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const auto x = lower.find('x');
  if (x == std::string::npos) return std::nullopt;
  const auto number = [](std::string_view part) -> std::optional<std::int32_t> {
    const auto value = ParseNumber(part);  // blanks around the number are fine: "800 x 600"
    return value ? ToInt32(*value) : std::nullopt;
  };
  const auto w = number(std::string_view(lower).substr(0, x));
  const auto h = number(std::string_view(lower).substr(x + 1));
  // A size of nothing is no output either.
  if (!w || !h || *w < 1 || *h < 1) return std::nullopt;
  return std::pair<int, int>{*w, *h};
}

bool MainForm::Resolution() {
  const auto size = ParseResolution(model_.Text(p_.cboResolution));
  if (!size) {
    msgBox_.Show(kResolutionMessage, MsgBox::OKOnly);
    return false;
  }
  OutputWidth = size->first;
  OutputHeight = size->second;
  return true;
}

bool MainForm::StartRender() {
  if (running_ || Host == nullptr) return false;
  text_.Context().TimeScale = 1.0f;

  Resolution();  // a bad entry is told and the last good size stands
  const int width = OutputWidth, height = OutputHeight;
  BackBufferWidth = width;
  BackBufferHeight = height;
  output_ = Host->CreateOutputWindow();
  if (!output_) return false;
  output_->Open(std::max(0, model_.ListIndex(p_.cboMonitors)), width, height);
  running_ = true;
  stopRequested_ = false;
  model_.SetEnabled(p_.cboResolution, false);

  // The countdown lets events run, so a stop (Escape, CmdStop, the close request) lands inside it.
  countingDown_ = true;
  const Clock& clock = text_.Context().clock;
  for (int n = 3; n >= 1 && running_ && !stopRequested_; --n) {
    if (output_) output_->PaintCountdown(n);
    const Tick start = clock.Now();
    while (running_ && !stopRequested_ && TicksSince(clock.Now(), start) < kCountdownStepMs) DoYield();
  }
  countingDown_ = false;
  if (!running_) {
    model_.SetEnabled(p_.cboResolution, true);
    return false;
  }

  std::string reason;
  if (!output_->InitializeDevice(reason)) {
    // The one failure that changes state: the program stays Idle.
    StopRender();
    std::string message(kDeviceError);
    if (!reason.empty()) message += "\n" + reason;
    msgBox_.Show(message, MsgBox::OKOnly);
    return false;
  }
  deviceReady_ = true;
  if (AfterDeviceInitialize) AfterDeviceInitialize();
  // Clone outputs, always on top, the output's placement.
  if (Clones != nullptr) Clones->CloneRenderInitialize(BackBufferWidth, BackBufferHeight);
  if (!running_ || !output_) return false;  // a stop arrived while the clones opened
  output_->SetAlwaysOnTop(model_.Checked(p_.chkAlwaysOnTop));
  if (Clones != nullptr) Clones->CloneSetTopMostWindow(model_.Checked(p_.chkAlwaysOnTop));
  if (model_.Value(p_.cmdFullScreen) == 1) {
    output_->SetFullScreen(true);
    if (Clones != nullptr) Clones->CloneResolution(true);
  }
  text_.Context().random.ReseedFromClock(clock);
  model_.SetEnabled(p_.cboMonitors, false);
  model_.SetEnabled(p_.cmdPlay, false);
  output_->SetTimerEnabled(true);
  DoYield();
  return running_;
}

void MainForm::StopRender() {
  running_ = false;
  paused_ = false;
  stopRequested_ = true;
  // The device first: a timer tick that still arrives finds nothing to draw.
  const bool hadDevice = deviceReady_;
  deviceReady_ = false;
  if (output_) output_->SetTimerEnabled(false);
  // The clones draw with the output's device: they go before it.
  if (Clones != nullptr && hadDevice) Clones->CloneDestroy();
  if (output_) output_->DestroyDevice();
  model_.SetValue(p_.cmdPlay, 0);
  model_.SetValue(p_.cmdPause, 0);
  model_.SetValue(p_.cmdRecord, 0);
  model_.SetEnabled(p_.cmdPlay, true);
  // Closing may run events that reach us again: take the window out of reach first.
  if (std::unique_ptr<OutputWindow> window = std::move(output_)) window->Close();
  model_.SetValue(p_.cmdFullScreen, 0);
  model_.SetEnabled(p_.cmdFullScreen, true);
  model_.SetEnabled(p_.cboResolution, true);
  model_.SetEnabled(p_.cboMonitors, true);
  SetCaption(kAppTitle);
  DoYield();
}

void MainForm::TimerRender() {
  if (!running_) return;
  timer_.Tick();
}

void MainForm::Render() {
  OutputWindow* output = deviceReady_ ? output_.get() : nullptr;
  if (output != nullptr && !output->BeginFrame()) output = nullptr;  // the texts still step
  if (RenderFrame) RenderFrame();
  if (output != nullptr && output_.get() == output) {  // a stop inside the frame took it away
    output->EndFrame();
    if (Clones != nullptr && deviceReady_) Clones->CloneRender(BackBufferWidth, BackBufferHeight);
  }
}

RenderDevice* MainForm::OutputDevice() { return deviceReady_ && output_ ? output_->Device() : nullptr; }

TextFrameInput MainForm::FrameInput() const {
  TextFrameInput input;
  input.BackBufferWidth = BackBufferWidth;
  input.BackBufferHeight = BackBufferHeight;
  if (const Control* x = c_.SliderRandomizeX.get()) input.RandomizeXMin = x->Min;
  if (const Control* y = c_.SliderRandomizeY.get()) input.RandomizeYMin = y->Min;
  return input;
}

void MainForm::Reset() {
  ResetTexts();
  if (LoadFactoryShow) LoadFactoryShow();
}

void MainForm::TakeScreenShot() {
  if (!deviceReady_ || !output_ || ScreenshotFolder.empty()) return;
  // Numbered, not dated: the next free number, so shots sort in the order they were taken.
  std::string path;
  do {
    char name[32];
    std::snprintf(name, sizeof name, "/frame_%05d.png", ++screenshotNumber_);
    path = ScreenshotFolder + name;
  } while (FileExists && FileExists(path) && screenshotNumber_ < 99999);
  output_->SaveFrame(path);
}

bool MainForm::RequestClose() {
  if (running_) {
    if (output_) output_->SetAlwaysOnTop(false);
    if (msgBox_.Show(kStopQuestion, MsgBox::YesNo) == MsgBox::Yes) StopRender();
    return false;  // the first close only stops
  }
  if (msgBox_.Show(kQuitQuestion, MsgBox::YesNo) == MsgBox::No) return false;
  if (Host != nullptr) Host->Quit(false, true);
  return true;
}

void MainForm::HotKey(OutputKey key) {
  switch (key) {
    case OutputKey::FullScreen: model_.Press(p_.cmdFullScreen, Origin::Widget); break;
    case OutputKey::AlwaysOnTop:
      model_.SetValue(p_.chkAlwaysOnTop, model_.Checked(p_.chkAlwaysOnTop) ? 0 : 1, Origin::Widget);
      break;
    case OutputKey::PlayPause:
      if (running_) model_.Press(p_.cmdPause, Origin::Widget);
      break;
    case OutputKey::Stop:
      if (running_) StopRender();
      break;
    case OutputKey::SaveFrame: TakeScreenShot(); break;
    case OutputKey::ManualFeed:
      // Enter feeds the custom texts by hand: each steps to its next line now.
      for (std::int32_t i = 1; i <= text_.RenderGetTextCount(); ++i)
        if (text_.Live()[static_cast<std::size_t>(i - 1)].TextType == "CustomInput") text_.RenderSynchronizeText(i);
      break;
    case OutputKey::AlignScreen:  // projection mapping's alignment, once it exists
      break;
  }
}

}  // namespace lumivane
