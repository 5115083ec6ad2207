#pragma once

#include <QMainWindow>

class QLabel;
class QImage;

namespace lumivane {

class frmMain;

// The main window as the operator sees it: a view over frmMain's controls in the control model.
class MainWindow final : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(frmMain& form, QWidget* parent = nullptr);
  // Lists the screens in cboMonitors as "1: NAME (WxH)".
  void RefreshMonitors();
  // Shows a frame of the output in the preview panel, scaled to fit.
  void ShowPreview(const QImage& frame);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  frmMain& form_;
  QLabel* monitor_ = nullptr;
};

}  // namespace lumivane
