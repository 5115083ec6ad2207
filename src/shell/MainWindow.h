#pragma once

#include <QMainWindow>

namespace lumivane {

class frmMain;

// The main window as the operator sees it: a view over frmMain's controls in the control model.
class MainWindow final : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(frmMain& form, QWidget* parent = nullptr);
  // Lists the screens in cboMonitors as "1: NAME (WxH)".
  void RefreshMonitors();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  frmMain& form_;
};

}  // namespace lumivane
