#pragma once

#include <QPointer>
#include <QTimer>
#include <QWindow>
#include <memory>

#include "forms/OutputWindow.h"
#include "render/RenderDevice.h"
#include "render/FrameRenderer.h"
#include "shell/CloneDisplay.h"

class QOpenGLContext;

namespace lumivane {

// The output window: a native window with an OpenGL context that presents with vsync, paints the
// start countdown and carries the render timer (interval 1 ms, so frames come as fast as events
// are delivered, or as vsync allows).
class OutputDisplay final : public QWindow {
  Q_OBJECT

 public:
  // `text` and the application folder serve the render object made with the device.
  OutputDisplay(TextEngine& text, std::string applicationFolder);
  ~OutputDisplay() override;

  bool MakeContext(std::string& reason);
  // The render device on the window's context, with a back buffer of the output size.
  bool MakeDevice(int width, int height, std::string& reason);
  RenderDevice* Device() { return device_.get(); }
  // The render object of this playback; nullptr until the device is made.
  FrameRenderer* Renderer() { return device_ ? &renderer_ : nullptr; }
  QOpenGLContext* Context() { return context_.get(); }
  void PaintCountdown(int number);
  bool BeginFrame();
  void EndFrame();
  void DestroyContext();
  // The next presented frame is read back and written to `path` as PNG on a worker thread.
  void GrabNextFrame(const QString& path) { grabPath_ = path; }
  QTimer& TimerRender() { return timer_; }
  // The number the output shows while the outputs identify themselves; below 0 for none.
  std::function<int()> IdentifyNumber;

 signals:
  // Keys and clicks are handed on queued: what they do may close this very window.
  void KeyCommand(lumivane::OutputKey key);
  void CloseRequested();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  bool event(QEvent* event) override;

 private:
  bool MakeCurrent();
  std::unique_ptr<QOpenGLContext> context_;
  std::unique_ptr<RenderDevice> device_;
  FrameRenderer renderer_;
  std::string applicationFolder_;
  QTimer timer_;
  QString grabPath_;
  IdentifyPainter identify_;
};

// OutputDisplay as the engine's output window. Owns the window and lets Qt delete it once the
// events in flight are done with it.
class DisplayOutput final : public OutputWindow {
 public:
  explicit DisplayOutput(OutputDisplay* window) : window_(window) {}
  ~DisplayOutput() override;
  void Open(int monitorIndex, int width, int height) override;
  void PaintCountdown(int number) override;
  bool InitializeDevice(std::string& reason) override;
  void DestroyDevice() override;
  bool BeginFrame() override;
  void EndFrame() override;
  RenderDevice* Device() override;
  void SaveFrame(const std::string& path) override;
  void SetFullScreen(bool on) override;
  void SetAlwaysOnTop(bool on) override;
  void SetTimerEnabled(bool on) override;
  void Close() override;

 private:
  QPointer<OutputDisplay> window_;
  QRect windowed_;
  QSize backBuffer_;
};

}  // namespace lumivane
