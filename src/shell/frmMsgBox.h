#pragma once

#include <QDialog>

#include "core/MsgBox.h"

class QLabel;

namespace lumivane {

// The program's own message window: a message and OK, or Yes and No.
class frmMsgBox final : public QDialog, public MsgBox {
  Q_OBJECT

 public:
  explicit frmMsgBox(QWidget* parent = nullptr);
  int Show(std::string_view message, int buttons = OKOnly) override;

 private:
  QLabel* message_;
};

}  // namespace lumivane
