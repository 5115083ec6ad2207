#include "shell/MessageWindow.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "lumivane/Version.h"

namespace lumivane {

MessageWindow::MessageWindow(QWidget* parent) : QDialog(parent), message_(new QLabel(this)) {
  setObjectName("frmMsgBox");
  setWindowTitle(kAppTitle);
  setModal(true);
  message_->setWordWrap(true);
  message_->setMinimumWidth(320);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(message_);
}

int MessageWindow::Show(std::string_view message, int buttons) {
  message_->setText(QString::fromUtf8(message.data(), static_cast<qsizetype>(message.size())));
  auto* box = new QDialogButtonBox(this);
  int answer = buttons == YesNo ? No : OK;
  if (buttons == YesNo) {
    connect(box->addButton(QDialogButtonBox::Yes), &QPushButton::clicked, this, [this, &answer] {
      answer = Yes;
      accept();
    });
    connect(box->addButton(QDialogButtonBox::No), &QPushButton::clicked, this, [this, &answer] {
      answer = No;
      reject();
    });
  } else {
    connect(box->addButton(QDialogButtonBox::Ok), &QPushButton::clicked, this, [this] { accept(); });
  }
  layout()->addWidget(box);
  exec();
  delete box;
  return answer;
}

}  // namespace lumivane
