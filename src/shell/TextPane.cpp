#include "shell/TextPane.h"

#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>

#include "forms/MainForm.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

TextPane::TextPane(MainForm& form, QWidget* parent) : QWidget(parent), form_(form) {
  setObjectName("PicContainer");
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(480, 270);
  setAutoFillBackground(true);
  QPalette p = palette();
  p.setColor(QPalette::Window, QColor(16, 16, 20));
  setPalette(p);
  setToolTip(tr("Double click: add a text here"));
  form_.TextLabelsChanged = [this] { Rebuild(); };
  form_.SelectionChanged = [this] { update(); };
  Rebuild();
}

// The form outlives its window: it must not call back into a pane that is gone.
TextPane::~TextPane() {
  form_.TextLabelsChanged = nullptr;
  form_.SelectionChanged = nullptr;
}

void TextPane::Rebuild() {
  // Later, not now: the label may be the one whose event led here.
  for (auto& label : labels_) {
    if (!label) continue;
    label->hide();
    label->setObjectName(QString());
    label->deleteLater();
  }
  labels_.clear();
  for (std::int32_t i = 1;; ++i) {
    const ControlHandle control = form_.TextLabel(i);
    if (!control) break;
    auto* label = new QLabel(this);
    label->setFrameShape(QFrame::Box);
    label->setAlignment(Qt::AlignCenter);
    label->setStyleSheet(QStringLiteral("QLabel { color: #e8e8e8; border: 1px solid #5a6a8a; }"));
    label->setCursor(Qt::SizeAllCursor);
    label->installEventFilter(this);
    WidgetBinding::Bind(form_.Model(), control, label);
    label->show();
    labels_.emplace_back(label);
  }
  update();
}

int TextPane::IndexOf(QObject* label) const {
  for (std::size_t i = 0; i < labels_.size(); ++i)
    if (labels_[i] == label) return static_cast<int>(i + 1);
  return 0;
}

bool TextPane::eventFilter(QObject* watched, QEvent* event) {
  const int index = IndexOf(watched);
  if (index == 0) return QWidget::eventFilter(watched, event);
  auto* label = labels_[static_cast<std::size_t>(index - 1)].data();
  switch (event->type()) {
    case QEvent::MouseButtonPress: {
      auto* e = static_cast<QMouseEvent*>(event);
      setFocus();
      form_.SelectText(index);
      if (e->button() == Qt::LeftButton) {
        dragging_ = index;
        dragStart_ = e->globalPosition().toPoint();
        labelStart_ = label->pos();
      }
      return true;
    }
    case QEvent::MouseMove:
      if (dragging_ == index) {
        const QPoint to = labelStart_ + (static_cast<QMouseEvent*>(event)->globalPosition().toPoint() - dragStart_);
        form_.Model().SetPosition(form_.TextLabel(index), to.x(), to.y(), Origin::Widget);
        form_.SetPosition(index);
        update();
      }
      return true;
    case QEvent::MouseButtonRelease:
      dragging_ = 0;
      return true;
    default: return QWidget::eventFilter(watched, event);
  }
}

void TextPane::mouseDoubleClickEvent(QMouseEvent* event) {
  const QPoint at = event->position().toPoint();
  form_.AddText(at.x() == 0 ? 1 : at.x(), at.y());
}

void TextPane::keyPressEvent(QKeyEvent* event) {
  const std::int32_t selected = form_.getSelectedTextIndex();
  switch (event->key()) {
    case Qt::Key_B: form_.TextZOrder(selected, true); break;
    case Qt::Key_F: form_.TextZOrder(selected, false); break;
    case Qt::Key_Delete: form_.RemoveText(); break;
    default: QWidget::keyPressEvent(event); return;
  }
  update();
}

void TextPane::paintEvent(QPaintEvent* event) {
  QWidget::paintEvent(event);
  // The focus rectangle around the selected text.
  const std::int32_t selected = form_.getSelectedTextIndex();
  if (selected < 1 || static_cast<std::size_t>(selected) > labels_.size()) return;
  const QLabel* label = labels_[static_cast<std::size_t>(selected - 1)];
  if (label == nullptr) return;
  QPainter p(this);
  p.setPen(QPen(QColor(255, 200, 0), 2, Qt::DashLine));
  p.drawRect(label->geometry().adjusted(-3, -3, 3, 3));
}

}  // namespace lumivane
