#pragma once

#include <QWidget>

class QLabel;

namespace lumivane {

// The start-up window: the title, the version and one status line (lblInfo).
class SplashWindow final : public QWidget {
  Q_OBJECT

 public:
  explicit SplashWindow(QWidget* parent = nullptr);
  // Fills the version label: "Version " major "." minor "." revision.
  void Initialize();
  // Shows a status line and lets the window paint it before the step runs.
  void SetStatus(const QString& text);
  QString Status() const;

 private:
  QLabel* lblVersion_;
  QLabel* lblInfo_;
};

}  // namespace lumivane
