#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace lumivane {

class RenderDevice;

// The output window (OutputDisplay) as the engine drives it. The windowed program implements it with
// a Qt window and an OpenGL context; tests with a fake.
class OutputWindow {
 public:
  virtual ~OutputWindow() = default;
  // Opens the window at the output size on the monitor with that list index.
  virtual void Open(int monitorIndex, int width, int height) = 0;
  // Paints one card of the start countdown: title, version, the output window's keys, and the
  // number in a circle.
  virtual void PaintCountdown(int number) = 0;
  // Makes the render device; false, with the reason, when none can be made.
  virtual bool InitializeDevice(std::string& reason) = 0;
  virtual void DestroyDevice() = 0;
  // A frame: BeginFrame readies the device (false when it cannot draw now); the passes draw
  // through Device(); EndFrame presents the back buffer and feeds the clones.
  virtual bool BeginFrame() = 0;
  virtual void EndFrame() = 0;
  // The device the passes draw through; none before InitializeDevice succeeded.
  virtual RenderDevice* Device() = 0;
  // Writes the next finished frame to `path` as PNG, without holding up the frame loop.
  virtual void SaveFrame(const std::string& path) = 0;
  virtual void SetFullScreen(bool on) = 0;
  virtual void SetAlwaysOnTop(bool on) = 0;
  // Enables or disables the window's render timer.
  virtual void SetTimerEnabled(bool on) = 0;
  virtual void Close() = 0;
};

// What playback needs from the program around it. The windowed program answers (Qt's event loop,
// the output window, the preview panel); tests answer with fakes.
class PlaybackHost {
 public:
  virtual ~PlaybackHost() = default;
  // The window a new playback draws into.
  virtual std::unique_ptr<OutputWindow> CreateOutputWindow() = 0;
  // Lets waiting events run: the countdown and a pause wait through it.
  virtual void Yield() = 0;
  // Ends the program, after the operator asked and agreed.
  virtual void Quit(bool restart, bool savePositions) = 0;
  // Shows the output's last frame in the preview panel.
  virtual void RenderPreview() = 0;
};

// The keys of the output window; the main window's hot keys share the handler.
enum class OutputKey { FullScreen, AlwaysOnTop, AlignScreen, PlayPause, ManualFeed, SaveFrame, Stop };

}  // namespace lumivane
