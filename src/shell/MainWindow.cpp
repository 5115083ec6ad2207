#include "shell/MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QScreen>
#include <QVBoxLayout>

#include "forms/MainForm.h"
#include "lumivane/Version.h"
#include "shell/FormBuilder.h"
#include "shell/TextEditorPanel.h"
#include "shell/TextPane.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

MainWindow::MainWindow(MainForm& form, QWidget* parent) : QMainWindow(parent), form_(form) {
  setObjectName(ToQString(MainForm::kFormName));
  setWindowTitle(kAppTitle);
  ControlModel& model = form.Model();
  const MainForm::PlaybackControls& p = form.Playback();

  auto* central = new QWidget(this);
  auto* panel = new TextEditorPanel(form, central);
  auto* left = new QVBoxLayout;
  left->addWidget(new TextPane(form, central), 1);

  // The output monitor; it shows the frame once the render device can read it back.
  monitor_ = new QLabel;
  monitor_->setAlignment(Qt::AlignCenter);
  monitor_->setMinimumSize(320, 180);
  monitor_->setAutoFillBackground(true);
  QPalette black = monitor_->palette();
  black.setColor(QPalette::Window, Qt::black);
  monitor_->setPalette(black);

  FormBuilder b(model);
  left->addLayout(b.Rows(central, {
      Field::Line({p.cmdPlay, p.cmdPause, p.CmdStop, p.cmdReset, p.chkFPSLimiter, Field::Stretch()}),
      // A resolution may be typed as well as picked.
      Field::Line({{p.cboResolution, Look::Editable}, p.cmdLockResolution, p.cboMonitors, p.cmdFullScreen,
                   p.chkAlwaysOnTop, Field::Stretch()}),
      Field::Line({p.cmdPreview, p.optPreview4FPS, p.optPreview8FPS, Field::Stretch()}),
      Field::Group(p.framePreview, {monitor_}),
  }));

  auto* columns = new QHBoxLayout(central);
  columns->addLayout(left, 3);
  columns->addWidget(panel, 2);
  setCentralWidget(central);

  form.CaptionChanged = [this](const std::string& caption) { setWindowTitle(QString::fromStdString(caption)); };
  RefreshMonitors();
  connect(qApp, &QGuiApplication::screenAdded, this, &MainWindow::RefreshMonitors);
  connect(qApp, &QGuiApplication::screenRemoved, this, &MainWindow::RefreshMonitors);
}

void MainWindow::RefreshMonitors() {
  // One entry per screen, by its index, with what the system says of it.
  std::vector<std::string> items;
  int i = 0;
  for (QScreen* s : QGuiApplication::screens()) {
    items.push_back(QStringLiteral("Output to Monitor %1 %2 (%3x%4)")
                        .arg(i++)
                        .arg(s->name())
                        .arg(s->geometry().width())
                        .arg(s->geometry().height())
                        .toStdString());
  }
  ControlModel& model = form_.Model();
  const ControlHandle monitors = form_.Playback().cboMonitors;
  const int selected = std::max(0, ControlModel::ListIndex(monitors));
  model.SetItems(monitors, items);
  if (!items.empty()) model.SetListIndex(monitors, std::min(selected, static_cast<int>(items.size()) - 1));
}

void MainWindow::ShowPreview(const QImage& frame) {
  if (monitor_ == nullptr || frame.isNull()) return;
  monitor_->setPixmap(QPixmap::fromImage(
      frame.scaled(monitor_->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (form_.RequestClose())
    event->accept();
  else
    event->ignore();
}

}  // namespace lumivane
