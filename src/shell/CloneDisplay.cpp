#include "shell/CloneDisplay.h"

#include <QEvent>
#include <QFont>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QOpenGLContext>
#include <QOpenGLPaintDevice>
#include <QPainter>
#include <QScreen>
#include <algorithm>
#include <utility>

#include "lumivane/Version.h"

namespace lumivane {

namespace {

// The output window's format, less vsync: the main output already waits for it once a frame.
QSurfaceFormat CloneFormat() {
  QSurfaceFormat format;
  format.setSwapInterval(0);
  format.setSwapBehavior(QSurfaceFormat::DoubleBuffer);
  format.setDepthBufferSize(24);
  return format;
}

QFont IdentifyFont(int pixelSize) {
  QFont font(QStringLiteral("Arial"));
  font.setBold(true);
  font.setPixelSize(pixelSize);
  return font;
}

}  // namespace

// ---- IdentifyPainter ----------------------------------------------------------------------------

void IdentifyPainter::Paint(QSize pixels, int number) {
  if (number < 0 || pixels.isEmpty() || QOpenGLContext::currentContext() == nullptr) return;
  const QString text = QString::number(number);
  if (pixels != pixels_ || number != number_) {
    fontSize_ = IdentifyFontSize(pixels.width(), pixels.height(), [&text](int size) {
      const QFontMetrics metrics(IdentifyFont(size));
      return std::pair{metrics.horizontalAdvance(text), metrics.height()};
    });
    pixels_ = pixels;
    number_ = number;
  }
  const QFont font = IdentifyFont(fontSize_);
  const QFontMetrics metrics(font);
  const int width = metrics.horizontalAdvance(text);
  // Made for each paint: the device belongs to the context current when it is made.
  QOpenGLPaintDevice device(pixels);
  QPainter painter(&device);
  painter.setFont(font);
  painter.setPen(Qt::white);
  painter.drawText(QRect(pixels.width() / 2 - width / 2, 0, width, metrics.height()), Qt::AlignLeft | Qt::AlignTop,
                   text);
}

// ---- CloneDisplay -------------------------------------------------------------------------------

CloneDisplay::CloneDisplay(int cloneRenderTargetIndex) {
  setObjectName(QString::fromUtf8(OutputClones::kCloneWindowName.data(),
                                  static_cast<qsizetype>(OutputClones::kCloneWindowName.size())));
  setSurfaceType(QSurface::OpenGLSurface);
  setFormat(CloneFormat());
  SetCloneRenderTargetIndex(cloneRenderTargetIndex);
}

void CloneDisplay::SetCloneRenderTargetIndex(int index) {
  index_ = index;
  // Numbered as its row in the output list and its identify number.
  setTitle(QStringLiteral("%1 Clone %2").arg(kAppTitle).arg(index));
}

void CloneDisplay::SetMirror(std::string mirrorX, std::string mirrorY) {
  mirrorX_ = std::move(mirrorX);
  mirrorY_ = std::move(mirrorY);
}

bool CloneDisplay::Draw(QOpenGLContext& context, const Present& present, int identifyNumber) {
  if (!isExposed() || !context.makeCurrent(this)) return false;
  const QSize pixels = size() * devicePixelRatio();
  if (present) present(pixels.width(), pixels.height(), context.defaultFramebufferObject());
  if (identifyNumber >= 0) identify_.Paint(pixels, identifyNumber);
  context.swapBuffers(this);
  return true;
}

bool CloneDisplay::event(QEvent* event) {
  // Clones come and go with playback; the window manager's close would pull one out from under
  // a frame, so it is refused.
  if (event->type() == QEvent::Close) {
    event->ignore();
    return true;
  }
  return QWindow::event(event);
}

// ---- CloneOutput --------------------------------------------------------------------------------

CloneOutput::CloneOutput(DrawFunction draw, CloneDisplay* window)
    : window_(window != nullptr ? window : new CloneDisplay), draw_(std::move(draw)) {}

CloneOutput::~CloneOutput() { Unload(); }

void CloneOutput::SetCloneRenderTargetIndex(int index) {
  if (window_) window_->SetCloneRenderTargetIndex(index);
}

WindowRect CloneOutput::Geometry() const {
  if (!window_) return {};
  const QRect g = window_->frameGeometry();
  return WindowRect{g.x(), g.y(), g.width(), g.height()};
}

void CloneOutput::SetGeometry(const WindowRect& outer) {
  if (!window_) return;
  window_->setFramePosition(QPoint(outer.left, outer.top));
  SetOuterSize(outer.width, outer.height);
}

void CloneOutput::SetOuterSize(int width, int height) {
  if (!window_) return;
  // The frame is known only once the window manager has framed the window; until then it is none.
  const QMargins frame = window_->frameMargins();
  window_->resize(std::max(1, width - frame.left() - frame.right()),
                  std::max(1, height - frame.top() - frame.bottom()));
}

bool CloneOutput::IsVisible() const { return window_ && window_->isVisible(); }

void CloneOutput::SetVisible(bool visible) {
  if (window_) window_->setVisible(visible);
}

void CloneOutput::SetFullScreen(bool on) {
  if (!window_) return;
  if (window_->isVisible()) {
    if (on)
      window_->showFullScreen();
    else
      window_->showNormal();
  } else {
    // A hidden clone stays hidden; it takes the state when it is shown.
    window_->setWindowStates(on ? Qt::WindowFullScreen : Qt::WindowNoState);
  }
}

void CloneOutput::SetAlwaysOnTop(bool on) {
  if (!window_) return;
  const bool visible = window_->isVisible();
  window_->setFlag(Qt::WindowStaysOnTopHint, on);
  // Some platforms make the native window afresh for a new flag; it must come back as it was.
  if (visible) window_->setVisible(true);
}

void CloneOutput::SetMirror(std::string_view mirrorX, std::string_view mirrorY) {
  if (window_) window_->SetMirror(std::string(mirrorX), std::string(mirrorY));
}

WindowRect CloneOutput::Monitor() const {
  if (!window_) return {};
  const QPoint centre = window_->frameGeometry().center();
  QScreen* found = nullptr;
  for (QScreen* screen : QGuiApplication::screens()) {
    if (screen->geometry().contains(centre)) {
      found = screen;
      break;
    }
  }
  if (found == nullptr) found = QGuiApplication::primaryScreen();
  if (found == nullptr) return {};
  const QRect g = found->geometry();
  return WindowRect{g.x(), g.y(), g.width(), g.height()};
}

void CloneOutput::Draw(const BlitSource& source, int identifyNumber) {
  if (window_ && draw_) draw_(*window_, source, identifyNumber);
}

void CloneOutput::Unload() {
  if (!window_) return;
  window_->hide();
  window_->deleteLater();
  window_ = nullptr;
}

}  // namespace lumivane
