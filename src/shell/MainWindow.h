#pragma once

#include <QMainWindow>

class QLabel;
class QImage;

namespace lumivane {

class MainForm;

// The main window as the operator sees it: a view over MainForm's controls in the control model.
class MainWindow final : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(MainForm& form, QWidget* parent = nullptr);
  // Lists the screens in cboMonitors as "Output to Monitor 0 NAME (WxH)", the first selected unless
  // another still exists.
  void RefreshMonitors();
  // Shows a frame of the output in the preview panel, scaled to fit.
  void ShowPreview(const QImage& frame);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  MainForm& form_;
  QLabel* monitor_ = nullptr;
};

}  // namespace lumivane
