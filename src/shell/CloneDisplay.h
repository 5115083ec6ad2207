#pragma once

#include <QPointer>
#include <QSize>
#include <QWindow>
#include <cstdint>
#include <functional>
#include <string>

#include "forms/OutputClones.h"

class QOpenGLContext;

namespace lumivane {

// Paints an output's identify number over what is drawn on the OpenGL context current now: white
// bold Arial, as large as fits (see IdentifyFontSize), centred across the top. The size is found
// again only when the window's size or the number changes. The main output uses one too.
class IdentifyPainter {
 public:
  // `pixels`: the target's size in device pixels.
  void Paint(QSize pixels, int number);

 private:
  QSize pixels_;
  int number_ = -1;
  int fontSize_ = 0;
};

// A clone output on screen: a native window with an OpenGL surface like the output window's, drawn
// by the output's own context so it can show the output's frame without a copy. It swaps without
// waiting for vsync, so several clones do not each hold up the frame.
class CloneDisplay final : public QWindow {
  Q_OBJECT

 public:
  explicit CloneDisplay(int cloneRenderTargetIndex = 0);

  int CloneRenderTargetIndex() const noexcept { return index_; }
  // Sets the number and the title that shows it.
  void SetCloneRenderTargetIndex(int index);
  const std::string& MirrorX() const noexcept { return mirrorX_; }
  const std::string& MirrorY() const noexcept { return mirrorY_; }
  void SetMirror(std::string mirrorX, std::string mirrorY);

  // Makes `context` current on this window, lets `present` draw the frame into the window's
  // framebuffer at its size in device pixels, paints the identify number on top when
  // `identifyNumber` is 0 or more, and swaps. False, drawing nothing, while the window is not
  // exposed or the context cannot be made current here. The context stays current on this window.
  using Present = std::function<void(int width, int height, std::uint32_t framebuffer)>;
  bool Draw(QOpenGLContext& context, const Present& present, int identifyNumber);

 protected:
  bool event(QEvent* event) override;

 private:
  int index_ = 0;
  std::string mirrorX_;
  std::string mirrorY_;
  IdentifyPainter identify_;
};

// CloneDisplay as the engine's clone window. Owns the window and lets Qt delete it once the events
// in flight are done with it. The per-frame draw is the application's: it knows the output's
// context and device.
class CloneOutput final : public CloneWindow {
 public:
  using DrawFunction = std::function<void(CloneDisplay& window, const BlitSource& source, int identifyNumber)>;

  explicit CloneOutput(DrawFunction draw, CloneDisplay* window = nullptr);
  ~CloneOutput() override;
  CloneDisplay* Window() const { return window_; }

  void SetCloneRenderTargetIndex(int index) override;
  WindowRect Geometry() const override;
  void SetGeometry(const WindowRect& outer) override;
  void SetOuterSize(int width, int height) override;
  bool IsVisible() const override;
  void SetVisible(bool visible) override;
  void SetFullScreen(bool on) override;
  void SetAlwaysOnTop(bool on) override;
  void SetMirror(std::string_view mirrorX, std::string_view mirrorY) override;
  WindowRect Monitor() const override;
  void Draw(const BlitSource& source, int identifyNumber) override;
  void Unload() override;

 private:
  QPointer<CloneDisplay> window_;
  DrawFunction draw_;
};

}  // namespace lumivane
