#include "shell/WidgetBinding.h"

#include <QAbstractSlider>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>

#include "core/Color.h"

namespace lumivane {

QColor ToQColor(std::int32_t programColor) {
  const auto c = static_cast<std::uint32_t>(programColor);
  return QColor(static_cast<int>(c & 0xFF), static_cast<int>((c >> 8) & 0xFF), static_cast<int>((c >> 16) & 0xFF));
}

std::int32_t ToProgramColor(const QColor& colour) {
  return ProgramColor(static_cast<std::uint8_t>(colour.red()), static_cast<std::uint8_t>(colour.green()),
                      static_cast<std::uint8_t>(colour.blue()));
}

namespace {

constexpr const char* kBindingProperty = "lumivaneBinding";

// The editor widgets end lines with LF; the model keeps CR LF as show files do.
std::string ToModelText(const QString& text) {
  QString copy = text;
  copy.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  copy.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
  return copy.toStdString();
}

QString ToWidgetText(const std::string& text) {
  QString s = ToQString(text);
  s.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  return s;
}

bool Fits(ControlKind kind, QWidget* w) {
  switch (kind) {
    case ControlKind::Slider: return qobject_cast<QAbstractSlider*>(w) != nullptr;
    case ControlKind::ComboBox: return qobject_cast<QComboBox*>(w) != nullptr;
    case ControlKind::CheckBox: return qobject_cast<QCheckBox*>(w) != nullptr;
    case ControlKind::CommandButton: return qobject_cast<QAbstractButton*>(w) != nullptr;
    case ControlKind::Label: return qobject_cast<QLabel*>(w) != nullptr;
    case ControlKind::PictureBox: return w != nullptr;
    case ControlKind::ListView: return qobject_cast<QListWidget*>(w) != nullptr;
    case ControlKind::TextBox:
      return qobject_cast<QLineEdit*>(w) != nullptr || qobject_cast<QPlainTextEdit*>(w) != nullptr;
    case ControlKind::OptionButton: return qobject_cast<QRadioButton*>(w) != nullptr;
    case ControlKind::Frame: return qobject_cast<QGroupBox*>(w) != nullptr;
  }
  return false;
}

}  // namespace

WidgetBinding* WidgetBinding::Bind(ControlModel& model, ControlHandle control, QWidget* widget) {
  const lumivane::Control* c = control.get();
  if (c == nullptr || widget == nullptr || !Fits(c->Kind, widget)) return nullptr;
  if (WidgetBinding* old = Of(widget)) delete old;
  return new WidgetBinding(model, control, widget);
}

WidgetBinding* WidgetBinding::Of(const QWidget* widget) {
  if (widget == nullptr) return nullptr;
  return qobject_cast<WidgetBinding*>(widget->property(kBindingProperty).value<QObject*>());
}

WidgetBinding::WidgetBinding(ControlModel& model, ControlHandle control, QWidget* widget)
    : QObject(widget), model_(model), control_(control), widget_(widget) {
  widget->setProperty(kBindingProperty, QVariant::fromValue<QObject*>(this));
  widget->setObjectName(ToQString(control->StoredName));
  listener_ = model_.Observe(control_, [this](const ControlEvent& e) {
    Show(e.change == ChangeKind::Properties || e.change == ChangeKind::Items);
  });
  Show(true);
  ConnectWidget();
}

WidgetBinding::~WidgetBinding() {
  model_.Disconnect(control_, listener_);
  if (widget_) widget_->setProperty(kBindingProperty, QVariant());
}

void WidgetBinding::ConnectWidget() {
  QWidget* w = widget_;
  const ControlHandle h = control_;
  // Each operator action writes the model with this binding as the source, so the model tells
  // everyone but us.
  auto guard = [this] { return showing_ || !control_; };
  switch (h->Kind) {
    case ControlKind::Slider:
      connect(qobject_cast<QAbstractSlider*>(w), &QAbstractSlider::valueChanged, this, [this, guard](int v) {
        if (!guard()) model_.SetValue(control_, v, Origin::Widget, listener_);
      });
      break;
    case ControlKind::ComboBox: {
      auto* combo = qobject_cast<QComboBox*>(w);
      connect(combo, &QComboBox::currentTextChanged, this, [this, guard](const QString& text) {
        if (!guard()) model_.SetText(control_, text.toStdString(), Origin::Widget, listener_);
      });
      break;
    }
    case ControlKind::CheckBox:
      connect(qobject_cast<QCheckBox*>(w), &QCheckBox::stateChanged, this, [this, guard](int state) {
        if (!guard()) model_.SetValue(control_, state == Qt::Checked ? 1 : state == Qt::PartiallyChecked ? 2 : 0,
                                      Origin::Widget, listener_);
      });
      break;
    case ControlKind::CommandButton: {
      auto* button = qobject_cast<QAbstractButton*>(w);
      if (h->Toggle) {
        connect(button, &QAbstractButton::toggled, this, [this, guard](bool on) {
          if (!guard()) model_.SetValue(control_, on ? 1 : 0, Origin::Widget, listener_);
        });
      } else {
        connect(button, &QAbstractButton::clicked, this, [this, guard] {
          if (!guard()) model_.Press(control_, Origin::Widget, listener_);
        });
      }
      break;
    }
    case ControlKind::OptionButton:
      connect(qobject_cast<QRadioButton*>(w), &QRadioButton::toggled, this, [this, guard](bool on) {
        if (!guard() && on) model_.SetValue(control_, 1, Origin::Widget, listener_);
      });
      break;
    case ControlKind::TextBox:
      if (auto* line = qobject_cast<QLineEdit*>(w)) {
        connect(line, &QLineEdit::textEdited, this, [this, guard](const QString& text) {
          if (!guard()) model_.SetText(control_, ToModelText(text), Origin::Widget, listener_);
        });
      } else if (auto* edit = qobject_cast<QPlainTextEdit*>(w)) {
        connect(edit, &QPlainTextEdit::textChanged, this, [this, guard, edit] {
          if (!guard()) model_.SetText(control_, ToModelText(edit->toPlainText()), Origin::Widget, listener_);
        });
      }
      break;
    case ControlKind::ListView:
      connect(qobject_cast<QListWidget*>(w), &QListWidget::currentRowChanged, this, [this, guard](int row) {
        if (!guard()) model_.SelectItem(control_, row + 1, Origin::Widget, listener_);
      });
      break;
    case ControlKind::Label:
    case ControlKind::PictureBox:
    case ControlKind::Frame: break;  // shown, not edited through the widget itself
  }
}

void WidgetBinding::Show(bool all) {
  const lumivane::Control* c = control_.get();
  QWidget* w = widget_;
  if (c == nullptr || w == nullptr) return;
  showing_ = true;
  const QSignalBlocker block(w);
  if (all) {
    w->setEnabled(c->Enabled);
    if (!c->ToolTipText.empty()) w->setToolTip(ToQString(c->ToolTipText));
  }
  switch (c->Kind) {
    case ControlKind::Slider: {
      auto* s = qobject_cast<QAbstractSlider*>(w);
      if (all) {
        s->setRange(std::min(c->Min, c->Max), std::max(c->Min, c->Max));
        s->setInvertedAppearance(c->Min > c->Max);
        s->setSingleStep(c->SmallChange);
        s->setPageStep(c->LargeChange);
        s->setOrientation(c->Orientation == SliderOrientation::Vertical ? Qt::Vertical : Qt::Horizontal);
      }
      s->setValue(c->Value);
      break;
    }
    case ControlKind::ComboBox: {
      auto* combo = qobject_cast<QComboBox*>(w);
      if (all) {
        combo->clear();
        for (const auto& item : c->Items) combo->addItem(ToQString(item));
      }
      if (c->ListIndex >= 0)
        combo->setCurrentIndex(c->ListIndex);
      else if (combo->isEditable())
        combo->setEditText(ToQString(c->Text));
      else
        combo->setCurrentIndex(-1);
      break;
    }
    case ControlKind::CheckBox:
      qobject_cast<QCheckBox*>(w)->setCheckState(c->Value == 1   ? Qt::Checked
                                                 : c->Value == 2 ? Qt::PartiallyChecked
                                                                 : Qt::Unchecked);
      if (all && !c->Caption.empty()) qobject_cast<QCheckBox*>(w)->setText(ToQString(c->Caption));
      break;
    case ControlKind::CommandButton: {
      auto* b = qobject_cast<QAbstractButton*>(w);
      b->setCheckable(c->Toggle);
      if (c->Toggle) b->setChecked(c->Value != 0);
      if (all && !c->Caption.empty()) b->setText(ToQString(c->Caption));
      break;
    }
    case ControlKind::OptionButton:
      qobject_cast<QRadioButton*>(w)->setChecked(c->Value != 0);
      if (all && !c->Caption.empty()) qobject_cast<QRadioButton*>(w)->setText(ToQString(c->Caption));
      break;
    case ControlKind::Label: {
      auto* label = qobject_cast<QLabel*>(w);
      label->setText(ToQString(c->Caption));
      // Labels that stand on a pane take their place from the model.
      if (c->Width > 0 && c->Height > 0) label->setGeometry(c->Left, c->Top, c->Width, c->Height);
      break;
    }
    case ControlKind::PictureBox: {
      QPalette palette = w->palette();
      palette.setColor(QPalette::Window, ToQColor(c->BackColor));
      w->setAutoFillBackground(true);
      w->setPalette(palette);
      break;
    }
    case ControlKind::ListView: {
      auto* list = qobject_cast<QListWidget*>(w);
      if (all) {
        list->clear();
        for (const auto& item : c->ListItems) list->addItem(ToQString(item.Text));
      }
      list->setSelectionMode(c->MultiSelect ? QAbstractItemView::MultiSelection : QAbstractItemView::SingleSelection);
      for (int i = 0; i < list->count() && i < static_cast<int>(c->ListItems.size()); ++i)
        list->item(i)->setSelected(c->ListItems[static_cast<std::size_t>(i)].Selected);
      list->setCurrentRow(c->SelectedItem - 1);
      break;
    }
    case ControlKind::TextBox:
      if (auto* line = qobject_cast<QLineEdit*>(w)) {
        if (line->text().toStdString() != c->Text) line->setText(ToWidgetText(c->Text));
      } else if (auto* edit = qobject_cast<QPlainTextEdit*>(w)) {
        const QString text = ToWidgetText(c->Text);
        if (edit->toPlainText() != text) edit->setPlainText(text);
      }
      break;
    case ControlKind::Frame:
      if (all) qobject_cast<QGroupBox*>(w)->setTitle(ToQString(c->Caption));
      break;
  }
  // A widget without a parent is a window of its own: showing it is its owner's decision.
  if (all && w->parentWidget() != nullptr) w->setVisible(c->Visible);
  showing_ = false;
}

}  // namespace lumivane
