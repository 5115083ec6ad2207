#include "shell/SplashWindow.h"

#include <QCoreApplication>
#include <QLabel>
#include <QVBoxLayout>

#include "lumivane/Version.h"

namespace lumivane {

SplashWindow::SplashWindow(QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::WindowStaysOnTopHint | Qt::FramelessWindowHint),
      lblVersion_(new QLabel(this)),
      lblInfo_(new QLabel(this)) {
  setObjectName("frmSplash");
  setWindowTitle(QStringLiteral("%1 Splash").arg(kAppTitle));
  lblInfo_->setObjectName("lblInfo");
  auto* title = new QLabel(kAppTitle, this);
  QFont big = title->font();
  big.setPointSize(28);
  big.setBold(true);
  title->setFont(big);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(32, 24, 32, 24);
  layout->addWidget(title);
  layout->addWidget(lblVersion_);
  layout->addSpacing(16);
  layout->addWidget(lblInfo_);
  setMinimumWidth(420);
}

void SplashWindow::Initialize() {
  lblVersion_->setText(QStringLiteral("Version %1.%2.%3").arg(kVersionMajor).arg(kVersionMinor).arg(kVersionRevision));
}

void SplashWindow::SetStatus(const QString& text) {
  lblInfo_->setText(text);
  if (isVisible()) {
    repaint();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  }
}

QString SplashWindow::Status() const { return lblInfo_->text(); }

}  // namespace lumivane
