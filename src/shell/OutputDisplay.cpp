#include "shell/OutputDisplay.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QSaveFile>
#include <thread>
#include <QKeyEvent>
#include <QOpenGLContext>
#include <QOpenGLPaintDevice>
#include <QPainter>
#include <QScreen>

#include "lumivane/Version.h"
#include "render/FrameImage.h"

namespace lumivane {

namespace {

QSurfaceFormat OutputFormat() {
  QSurfaceFormat format;
  format.setSwapInterval(1);  // vsync
  format.setSwapBehavior(QSurfaceFormat::DoubleBuffer);
  format.setDepthBufferSize(24);
  return format;
}

}  // namespace

OutputDisplay::OutputDisplay(TextEngine& text, std::string applicationFolder)
    : renderer_(text), applicationFolder_(std::move(applicationFolder)) {
  setObjectName("frmDisplay");
  setSurfaceType(QSurface::OpenGLSurface);
  setFormat(OutputFormat());
  setTitle(QStringLiteral("%1 Output").arg(kAppTitle));
  timer_.setInterval(1);
  timer_.setTimerType(Qt::PreciseTimer);
}

OutputDisplay::~OutputDisplay() { DestroyContext(); }

bool OutputDisplay::MakeContext(std::string& reason) {
  if (context_) return true;
  if (!handle()) create();
  auto context = std::make_unique<QOpenGLContext>();
  context->setFormat(requestedFormat());
  if (!context->create()) {
    reason = "No OpenGL context could be created for the output window.";
    return false;
  }
  const QSurfaceFormat got = context->format();
  if (got.version() < qMakePair(3, 3)) {
    reason = QStringLiteral("OpenGL 3.3 is needed; the driver offers %1.%2.")
                 .arg(got.majorVersion())
                 .arg(got.minorVersion())
                 .toStdString();
    return false;
  }
  context_ = std::move(context);
  return true;
}

bool OutputDisplay::MakeCurrent() { return context_ && isExposed() && context_->makeCurrent(this); }

void OutputDisplay::PaintCountdown(int number) {
  std::string ignored;
  if (!MakeContext(ignored) || !MakeCurrent()) return;
  const QSize pixels = size() * devicePixelRatio();
  QOpenGLPaintDevice device(pixels);
  device.setDevicePixelRatio(devicePixelRatio());
  QPainter p(&device);
  p.fillRect(QRect(QPoint(0, 0), size()), Qt::black);
  p.setPen(Qt::white);
  int y = 40;
  auto line = [&](const QString& text, int pointSize) {
    QFont font(QStringLiteral("Arial"));
    font.setPointSize(pointSize);
    p.setFont(font);
    p.drawText(QPoint(30, y), text);
    y += QFontMetrics(font).lineSpacing();
  };
  line(kAppTitle, 22);
  line(QStringLiteral("Version %1.%2.%3").arg(kVersionMajor).arg(kVersionMinor).arg(kVersionRevision), 16);
  y += 8;
  line(QStringLiteral("Output Window Commands:"), 12);
  const char* const keys[][2] = {{"[F]", "Full Screen"},           {"[T]", "Always on Top"},
                                 {"[Right Click]", "Align Screen"}, {"[Space Bar]", "Play/Pause"},
                                 {"[Enter]", "Manual Feed"},        {"[CTRL + S]", "Save Frame"}};
  // Label and function in two columns, as a tab between them would set them.
  QFont small(QStringLiteral("Arial"));
  small.setPointSize(12);
  p.setFont(small);
  const QFontMetrics metrics(small);
  const int column = 30 + metrics.horizontalAdvance(QStringLiteral("[Right Click]")) + 24;
  auto command = [&](const char* key, const char* function) {
    p.drawText(QPoint(30, y), QString::fromLatin1(key));
    p.drawText(QPoint(column, y), QString::fromLatin1(function));
    y += metrics.lineSpacing();
  };
  for (const auto& k : keys) command(k[0], k[1]);
  y += metrics.lineSpacing();
  command("[Escape]", "Stop");

  QFont huge(QStringLiteral("Arial"));
  huge.setPointSize(150);
  p.setFont(huge);
  const QRect box(QPoint(0, 0), size());
  const int radius = std::min(box.width(), box.height()) / 3;
  p.setRenderHint(QPainter::Antialiasing);
  p.drawEllipse(box.center(), radius, radius);
  p.drawText(box, Qt::AlignCenter, QString::number(number));
  p.end();
  context_->swapBuffers(this);
}

bool OutputDisplay::MakeDevice(int width, int height, std::string& reason) {
  if (!MakeContext(reason)) return false;
  if (!context_->makeCurrent(this)) {
    reason = "The OpenGL context of the output window cannot be made current.";
    return false;
  }
  device_ = CreateDeviceOnCurrentContext(width, height, reason);
  if (device_ && !renderer_.Initialize(device_.get(), applicationFolder_, reason)) device_.reset();
  return device_ != nullptr;
}

bool OutputDisplay::BeginFrame() { return device_ && MakeCurrent(); }

void OutputDisplay::EndFrame() {
  if (!device_ || !MakeCurrent()) return;
  if (!grabPath_.isEmpty()) {
    // Ctrl+S: this frame, read back now; encoding the PNG takes longer than a frame, so it is
    // done beside the loop, and the file is written whole or not at all.
    QImage frame = ReadFrameImage(*device_);
    std::thread([image = std::move(frame), path = grabPath_] {
      QDir().mkpath(QFileInfo(path).path());
      QSaveFile file(path);
      if (!image.isNull() && file.open(QIODevice::WriteOnly) && image.save(&file, "PNG")) file.commit();
    }).detach();
    grabPath_.clear();
  }
  const QSize pixels = size() * devicePixelRatio();
  device_->Present(pixels.width(), pixels.height(), context_->defaultFramebufferObject());
  if (const int number = IdentifyNumber ? IdentifyNumber() : -1; number >= 0) identify_.Paint(pixels, number);
  context_->swapBuffers(this);
}

void OutputDisplay::DestroyContext() {
  // The device's objects belong to the context: free them while it is current.
  if (context_ && context_->makeCurrent(this)) {
    renderer_.Destroy();
    device_.reset();
    context_->doneCurrent();
  }
  renderer_.Destroy();
  device_.reset();
  context_.reset();
}

void OutputDisplay::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_F: emit KeyCommand(OutputKey::FullScreen); break;
    case Qt::Key_T: emit KeyCommand(OutputKey::AlwaysOnTop); break;
    case Qt::Key_Space: emit KeyCommand(OutputKey::PlayPause); break;
    case Qt::Key_Return:
    case Qt::Key_Enter: emit KeyCommand(OutputKey::ManualFeed); break;
    case Qt::Key_Escape: emit KeyCommand(OutputKey::Stop); break;
    case Qt::Key_S:
      if (event->modifiers() & Qt::ControlModifier) emit KeyCommand(OutputKey::SaveFrame);
      break;
    default: QWindow::keyPressEvent(event); return;
  }
  event->accept();
}

void OutputDisplay::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton) emit KeyCommand(OutputKey::AlignScreen);
}

bool OutputDisplay::event(QEvent* event) {
  if (event->type() == QEvent::Close) {
    // Closing the output from the window manager stops playback; the engine closes the window.
    event->ignore();
    emit CloseRequested();
    return true;
  }
  return QWindow::event(event);
}

// ---- DisplayOutput ------------------------------------------------------------------------------

DisplayOutput::~DisplayOutput() {
  if (window_) {
    window_->TimerRender().stop();
    window_->hide();
    window_->deleteLater();
  }
}

void DisplayOutput::Open(int monitorIndex, int width, int height) {
  if (!window_) return;
  const auto screens = QGuiApplication::screens();
  QScreen* screen = monitorIndex >= 0 && monitorIndex < screens.size() ? screens[monitorIndex]
                                                                       : QGuiApplication::primaryScreen();
  if (screen != nullptr) {
    window_->setScreen(screen);
    window_->setPosition(screen->geometry().topLeft());
  }
  window_->resize(width, height);
  windowed_ = QRect(window_->position(), QSize(width, height));
  backBuffer_ = QSize(width, height);
  window_->show();
}

void DisplayOutput::PaintCountdown(int number) {
  if (window_) window_->PaintCountdown(number);
}

bool DisplayOutput::InitializeDevice(std::string& reason) {
  if (!window_) {
    reason = "The output window is gone.";
    return false;
  }
  return window_->MakeDevice(backBuffer_.width(), backBuffer_.height(), reason);
}

void DisplayOutput::DestroyDevice() {
  if (window_) window_->DestroyContext();
}

bool DisplayOutput::BeginFrame() { return window_ && window_->BeginFrame(); }

void DisplayOutput::EndFrame() {
  if (window_) window_->EndFrame();
}

RenderDevice* DisplayOutput::Device() { return window_ ? window_->Device() : nullptr; }

void DisplayOutput::SaveFrame(const std::string& path) {
  if (window_) window_->GrabNextFrame(QString::fromStdString(path));
}

void DisplayOutput::SetFullScreen(bool on) {
  if (!window_) return;
  if (on) {
    windowed_ = window_->geometry();
    window_->showFullScreen();
  } else {
    window_->showNormal();
    window_->setGeometry(windowed_);
  }
}

void DisplayOutput::SetAlwaysOnTop(bool on) {
  if (!window_) return;
  const bool visible = window_->isVisible();
  window_->setFlag(Qt::WindowStaysOnTopHint, on);
  if (visible) window_->show();
}

void DisplayOutput::SetTimerEnabled(bool on) {
  if (!window_) return;
  if (on)
    window_->TimerRender().start();
  else
    window_->TimerRender().stop();
}

void DisplayOutput::Close() {
  if (window_) window_->hide();
}

}  // namespace lumivane
