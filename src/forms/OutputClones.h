#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/BlitSource.h"

namespace lumivane {

class OutputConfigurationForm;

// A window's place on the desktop, frame included, in screen pixels.
struct WindowRect {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  friend bool operator==(const WindowRect&, const WindowRect&) = default;
};

// A further output window that shows the main output's frame. The windowed program implements it
// with a Qt window drawn by the output's OpenGL context; tests with a fake. Calls may throw: the
// clones catch, report and skip that window for the step.
class CloneWindow {
 public:
  virtual ~CloneWindow() = default;
  // The clone's number: 1 for the first clone (the main output is 0).
  virtual void SetCloneRenderTargetIndex(int index) = 0;
  // Geometry, frame included.
  virtual WindowRect Geometry() const = 0;
  virtual void SetGeometry(const WindowRect& outer) = 0;
  virtual void SetOuterSize(int width, int height) = 0;
  virtual bool IsVisible() const = 0;
  virtual void SetVisible(bool visible) = 0;
  virtual void SetFullScreen(bool on) = 0;
  virtual void SetAlwaysOnTop(bool on) = 0;
  // The mirror strings, "X" or "" and "Y" or "", for the window to keep.
  virtual void SetMirror(std::string_view mirrorX, std::string_view mirrorY) = 0;
  // The monitor that holds the window's centre, else the primary one; empty when there is none.
  virtual WindowRect Monitor() const = 0;
  // Draws the output's finished frame read through `source`, scaled to the whole window, then
  // `identifyNumber` on top when it is 0 or more. Once a frame: must not allocate in steady state.
  virtual void Draw(const BlitSource& source, int identifyNumber) = 0;
  // Hides and lets the window go; nothing is asked of it afterwards.
  virtual void Unload() = 0;
};

// The clone outputs: made when playback starts from the count in OutputConfigurationForm, drawn
// after the main output each frame, mirrored as their rows in ListOutputs say, and put back where
// the operator left them through "LastOutputPosition.LMVNUIP" in the application folder.
//
// Constructing it makes it the form's CloneSetup; the form must outlive it.
class OutputClones {
 public:
  static constexpr std::string_view kPositionFileName = "LastOutputPosition.LMVNUIP";
  // The window name clone records carry in the positions file: clones are output windows.
  static constexpr std::string_view kCloneWindowName = "frmDisplay";

  struct CloneRecord {
    std::unique_ptr<CloneWindow> Window;  // none when it could not be made
    std::string MirrorX;                  // "X" or empty
    std::string MirrorY;                  // "Y" or empty
  };

  explicit OutputClones(OutputConfigurationForm& form);
  ~OutputClones();
  OutputClones(const OutputClones&) = delete;
  OutputClones& operator=(const OutputClones&) = delete;

  // Playback starts: drops any clones, makes count - 1 new ones (the main output counts as one)
  // at the back buffer's size, lists them in ListOutputs, and, when there is at least one, puts
  // them where the positions file says.
  void CloneRenderInitialize(int backBufferWidth, int backBufferHeight);
  // Playback ends: saves the positions file, then unloads every clone and empties ListOutputs.
  void CloneDestroy();
  // Sets clone `index`'s mirror strings; an index without a clone is ignored.
  void CloneSetup(int index, std::string_view mirrorX, std::string_view mirrorY);
  // Full screen: each clone fills its monitor. Otherwise each takes the main output's outer size,
  // centred on its monitor.
  void CloneResolution(bool fullScreen);
  void CloneSetTopMostWindow(bool onTop);
  // Once a frame, after the main output was presented: each clone draws the finished frame of
  // `outputWidth` x `outputHeight`, mirrored, with its number while chkIdentify is ticked.
  // Allocates nothing; a clone whose call fails is skipped and the others still draw.
  void CloneRender(int outputWidth, int outputHeight);

  int CloneCount() const noexcept { return static_cast<int>(clones_.size()); }
  // Clone `index`, one-based; nullptr out of range.
  const CloneRecord* Clones(int index) const noexcept;
  // What the main output shows for identify: 0 while chkIdentify is ticked, else -1 (nothing).
  int MainIdentifyNumber() const;
  // A position read from the file for clone `index`: its geometry, visibility and mirrors, and
  // the mirror letters in its row. False when there is no such clone.
  bool ApplyPosition(int index, const WindowRect& outer, bool visible, std::string_view mirrorX,
                     std::string_view mirrorY);
  // "LastOutputPosition.LMVNUIP" in ApplicationFolder.
  std::string PositionFilePath() const;

  std::string ApplicationFolder;
  // Supplied by the application.
  std::function<std::unique_ptr<CloneWindow>()> CreateCloneWindow;
  std::function<void()> Yield;
  // The main output window's outer size, for CloneResolution; the back buffer's when unset.
  std::function<WindowRect()> MainOutputGeometry;
  // The clone variant of the positions file (persistence supplies both).
  std::function<void(const std::string& path)> LoadPositions;
  std::function<void(const std::string& path)> SavePositions;
  // Where a clone's failed call is reported (the --log file); nothing when unset.
  std::function<void(const std::string& failure)> ReportFailure;

 private:
  // Runs `step` on clone `index`'s window, if it has one; a throw is reported and skipped.
  template <class Step>
  void OnWindow(int index, const char* what, Step&& step);
  void DropClones();

  OutputConfigurationForm& form_;
  std::vector<CloneRecord> clones_;
  unsigned generation_ = 0;  // counts drops, so a yield that destroyed the clones is noticed
  int backBufferWidth_ = 0;
  int backBufferHeight_ = 0;
};

// The font size of the identify number: 50, grown by 50 while the text at the next size still fits
// `width` x `height`. `measure(size)` answers the text's width and height at that size.
template <class Measure>
int IdentifyFontSize(int width, int height, Measure&& measure) {
  constexpr int kStart = 50;
  constexpr int kStep = 50;
  constexpr int kLargest = 100000;  // a measure that never grows must not keep us here
  int size = kStart;
  while (size + kStep <= kLargest) {
    const auto [w, h] = measure(size + kStep);
    if (w > width || h > height) break;
    size += kStep;
  }
  return size;
}

}  // namespace lumivane
