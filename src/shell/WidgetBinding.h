#pragma once

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <cstdint>
#include <string_view>

#include "core/ControlModel.h"

namespace lumivane {

inline QString ToQString(std::string_view s) {
  return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

// Program colours are 0x00BBGGRR; these convert to and from what Qt shows.
QColor ToQColor(std::int32_t programColor);
std::int32_t ToProgramColor(const QColor& colour);

// Ties one Qt widget to one control of the model, both ways: a hand on the widget writes the
// control (and so runs its change handlers), and any other writer's value shows on the widget.
// Echo is guarded twice: the model does not tell a binding of its own write, and a write into
// the widget from the model does not travel back. The binding lives as long as its widget.
//
// Widgets by kind: QAbstractSlider (Slider), QComboBox (ComboBox), QCheckBox (CheckBox),
// QAbstractButton (CommandButton; checkable for a toggle button), QLabel (Label), any QWidget
// (PictureBox: its background shows the colour), QListWidget (ListView), QLineEdit and
// QPlainTextEdit (TextBox), QRadioButton (OptionButton), QGroupBox (Frame).
class WidgetBinding final : public QObject {
  Q_OBJECT

 public:
  // Answers nullptr when the widget does not fit the control's kind.
  static WidgetBinding* Bind(ControlModel& model, ControlHandle control, QWidget* widget);
  // The binding of a widget, if it has one.
  static WidgetBinding* Of(const QWidget* widget);

  ~WidgetBinding() override;
  ControlHandle Control() const noexcept { return control_; }
  QWidget* Widget() const noexcept { return widget_; }

 private:
  WidgetBinding(ControlModel& model, ControlHandle control, QWidget* widget);
  void ConnectWidget();
  // Model to widget; `all` refreshes properties and items as well as the value.
  void Show(bool all);

  ControlModel& model_;
  ControlHandle control_;
  QPointer<QWidget> widget_;
  ListenerId listener_ = 0;
  bool showing_ = false;  // writing into the widget: its signals are ours, not the operator's
};

}  // namespace lumivane
