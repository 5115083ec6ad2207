#include "forms/OutputClones.h"

#include <algorithm>
#include <exception>

#include "forms/OutputConfigurationForm.h"

namespace lumivane {

OutputClones::OutputClones(OutputConfigurationForm& form) : form_(form) {
  form_.CloneSetup = [this](int index, const std::string& x, const std::string& y) { CloneSetup(index, x, y); };
}

OutputClones::~OutputClones() {
  form_.CloneSetup = nullptr;
  DropClones();
}

template <class Step>
void OutputClones::OnWindow(int index, const char* what, Step&& step) {
  if (index < 1 || index > CloneCount()) return;
  CloneWindow* window = clones_[static_cast<std::size_t>(index - 1)].Window.get();
  if (window == nullptr) return;
  try {
    step(*window);
  } catch (const std::exception& e) {
    if (ReportFailure) ReportFailure("Clone " + std::to_string(index) + ": " + what + ": " + e.what());
  } catch (...) {
    if (ReportFailure) ReportFailure("Clone " + std::to_string(index) + ": " + what + " failed");
  }
}

void OutputClones::DropClones() {
  for (int i = 1; i <= CloneCount(); ++i) OnWindow(i, "unload", [](CloneWindow& w) { w.Unload(); });
  clones_.clear();
  ++generation_;
}

void OutputClones::CloneRenderInitialize(int backBufferWidth, int backBufferHeight) {
  backBufferWidth_ = backBufferWidth;
  backBufferHeight_ = backBufferHeight;
  // The main output is number 1 in the box.
  const int count = std::max(0, form_.OutputCount() - 1);

  DropClones();
  form_.ClearOutputs();
  form_.AddOutput("Output\tX\tY");
  form_.AddOutput("------\t--\t--");
  form_.AddOutput("Main\t \t ");

  clones_.reserve(static_cast<std::size_t>(count));
  const unsigned generation = generation_;
  for (int i = 1; i <= count; ++i) {
    CloneRecord record;
    try {
      if (CreateCloneWindow) record.Window = CreateCloneWindow();
    } catch (const std::exception& e) {
      if (ReportFailure) ReportFailure("Clone " + std::to_string(i) + ": create: " + e.what());
    } catch (...) {
      if (ReportFailure) ReportFailure("Clone " + std::to_string(i) + ": create failed");
    }
    // A clone without a window still takes its number, so the rows and the file stay in step.
    clones_.push_back(std::move(record));
    OnWindow(i, "show", [&](CloneWindow& w) {
      w.SetCloneRenderTargetIndex(i);
      w.SetOuterSize(backBufferWidth, backBufferHeight);
      w.SetVisible(true);
    });
    if (Yield) Yield();
    if (generation != generation_) return;  // the events dropped or remade the clones meanwhile
    form_.AddOutput(std::to_string(i) + "# \t \t ");
  }

  if (count >= 1 && LoadPositions) LoadPositions(PositionFilePath());
}

void OutputClones::CloneDestroy() {
  if (SavePositions) SavePositions(PositionFilePath());
  DropClones();
  form_.ClearOutputs();
}

void OutputClones::CloneSetup(int index, std::string_view mirrorX, std::string_view mirrorY) {
  if (index < 1 || index > CloneCount()) return;
  CloneRecord& clone = clones_[static_cast<std::size_t>(index - 1)];
  clone.MirrorX = mirrorX;
  clone.MirrorY = mirrorY;
  OnWindow(index, "mirror", [&](CloneWindow& w) { w.SetMirror(clone.MirrorX, clone.MirrorY); });
}

void OutputClones::CloneResolution(bool fullScreen) {
  WindowRect main{0, 0, backBufferWidth_, backBufferHeight_};
  if (!fullScreen && MainOutputGeometry) main = MainOutputGeometry();
  for (int i = 1; i <= CloneCount(); ++i) {
    OnWindow(i, "resolution", [&](CloneWindow& w) {
      const WindowRect monitor = w.Monitor();
      if (monitor.width <= 0 || monitor.height <= 0) return;  // no monitor to size against
      if (fullScreen) {
        w.SetGeometry(monitor);
        w.SetFullScreen(true);
      } else {
        w.SetFullScreen(false);
        w.SetGeometry(WindowRect{monitor.left + monitor.width / 2 - main.width / 2,
                                 monitor.top + monitor.height / 2 - main.height / 2, main.width, main.height});
      }
    });
  }
}

void OutputClones::CloneSetTopMostWindow(bool onTop) {
  for (int i = 1; i <= CloneCount(); ++i)
    OnWindow(i, "always on top", [&](CloneWindow& w) { w.SetAlwaysOnTop(onTop); });
}

void OutputClones::CloneRender(int outputWidth, int outputHeight) {
  const bool identify = form_.Identify();
  for (int i = 1; i <= CloneCount(); ++i) {
    const CloneRecord& clone = clones_[static_cast<std::size_t>(i - 1)];
    const BlitSource source = CloneSourceRect(outputWidth, outputHeight, clone.MirrorX, clone.MirrorY);
    OnWindow(i, "draw", [&](CloneWindow& w) { w.Draw(source, identify ? i : -1); });
  }
}

const OutputClones::CloneRecord* OutputClones::Clones(int index) const noexcept {
  if (index < 1 || index > CloneCount()) return nullptr;
  return &clones_[static_cast<std::size_t>(index - 1)];
}

int OutputClones::MainIdentifyNumber() const { return form_.Identify() ? 0 : -1; }

bool OutputClones::ApplyPosition(int index, const WindowRect& outer, bool visible, std::string_view mirrorX,
                                 std::string_view mirrorY) {
  if (index < 1 || index > CloneCount()) return false;
  OnWindow(index, "position", [&](CloneWindow& w) {
    w.SetGeometry(outer);
    w.SetVisible(visible);
  });
  CloneSetup(index, mirrorX, mirrorY);
  form_.SetSetup(form_.RowOf(index), index, mirrorX, mirrorY);
  return true;
}

std::string OutputClones::PositionFilePath() const {
  if (ApplicationFolder.empty()) return std::string(kPositionFileName);
  std::string path = ApplicationFolder;
  if (path.back() != '/') path += '/';
  return path + std::string(kPositionFileName);
}

}  // namespace lumivane
