#include "shell/MainWindow.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QApplication>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QVBoxLayout>

#include "forms/MainForm.h"
#include "lumivane/Version.h"
#include "shell/TextEditorPanel.h"
#include "shell/TextPane.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

MainWindow::MainWindow(MainForm& form, QWidget* parent) : QMainWindow(parent), form_(form) {
  setObjectName("frmMain");
  setWindowTitle(kAppTitle);
  ControlModel& model = form.Model();
  const MainForm::PlaybackControls& p = form.Playback();

  auto* central = new QWidget(this);
  auto* columns = new QHBoxLayout(central);
  auto* left = new QVBoxLayout;
  columns->addLayout(left, 3);
  columns->addWidget(new TextEditorPanel(form, central), 2);
  left->addWidget(new TextPane(form, central), 1);
  auto* layout = left;
  auto bind = [&](QWidget* widget, ControlHandle control) {
    WidgetBinding::Bind(model, control, widget);
    return widget;
  };

  auto* transport = new QHBoxLayout;
  for (ControlHandle h : {p.cmdPlay, p.cmdPause, p.CmdStop, p.cmdReset}) transport->addWidget(bind(new QPushButton(central), h));
  transport->addWidget(bind(new QCheckBox(central), p.chkFPSLimiter));
  transport->addStretch();
  layout->addLayout(transport);

  auto* output = new QHBoxLayout;
  output->addWidget(new QLabel(tr("Output:"), central));
  auto* resolution = new QComboBox(central);
  resolution->setEditable(true);
  output->addWidget(bind(resolution, p.cboResolution));
  output->addWidget(bind(new QPushButton(central), p.cmdLockResolution));
  output->addWidget(bind(new QComboBox(central), p.cboMonitors));
  output->addWidget(bind(new QPushButton(central), p.cmdFullScreen));
  output->addWidget(bind(new QCheckBox(central), p.chkAlwaysOnTop));
  output->addStretch();
  layout->addLayout(output);

  auto* preview = new QHBoxLayout;
  preview->addWidget(bind(new QPushButton(central), p.cmdPreview));
  preview->addWidget(bind(new QRadioButton(central), p.optPreview4FPS));
  preview->addWidget(bind(new QRadioButton(central), p.optPreview8FPS));
  preview->addStretch();
  layout->addLayout(preview);

  // The output monitor; it shows the frame once the render device can read it back.
  auto* frame = new QGroupBox(central);
  auto* monitor = new QLabel(frame);
  monitor_ = monitor;
  monitor->setAlignment(Qt::AlignCenter);
  monitor->setMinimumSize(320, 180);
  monitor->setAutoFillBackground(true);
  QPalette black = monitor->palette();
  black.setColor(QPalette::Window, Qt::black);
  monitor->setPalette(black);
  (new QVBoxLayout(frame))->addWidget(monitor);
  layout->addWidget(bind(frame, p.framePreview));
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
