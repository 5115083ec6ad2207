#pragma once

#include <QDialog>

#include "forms/MsgBox.h"

class QLabel;

namespace lumivane {

// The program's own message window: a message and OK, or Yes and No.
class MessageWindow final : public QDialog, public MsgBox {
  Q_OBJECT

 public:
  explicit MessageWindow(QWidget* parent = nullptr);
  int Show(std::string_view message, int buttons = OKOnly) override;

 private:
  QLabel* message_;
};

}  // namespace lumivane
