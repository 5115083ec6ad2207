#pragma once

#include <QColor>
#include <QFrame>
#include <QPointer>
#include <QString>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <utility>
#include <vector>

#include "core/ControlModel.h"

class QGridLayout;
class QHBoxLayout;
class QLabel;

// The form windows are declarations: which controls go where. The widget of each control, its
// caption, tooltip, range and items come from the control's registration in the model.
namespace lumivane {

// A PictureBox control as a colour swatch, bound to it: the binding shows the colour, a click
// asks for another and writes it as the operator's.
class ColourSwatch final : public QFrame {
  Q_OBJECT

 public:
  ColourSwatch(ControlModel& model, ControlHandle control, QWidget* parent);

  // Asks for a colour, starting from the current one; an invalid colour is a cancel. A colour
  // dialog unless replaced.
  std::function<QColor(const QColor& current)> PickColour;

 protected:
  void mousePressEvent(QMouseEvent* event) override;

 private:
  ControlModel& model_;
  ControlHandle control_;
};

// What a control's kind leaves open about its widget.
enum class Look : std::uint8_t {
  Plain = 0,
  Editable = 1 << 0,  // a combo box that shows and takes any text, not only its items
  Lines = 1 << 1,     // a text box of several lines
  ReadOnly = 1 << 2,  // a text box that only shows
  Indented = 1 << 3,  // without a caption, under the widget of the row above (a slider's text box)
  NoValue = 1 << 4,   // a slider whose value a text box beside it shows
};
constexpr Look operator|(Look a, Look b) noexcept {
  return static_cast<Look>(static_cast<std::uint8_t>(a) | static_cast<std::uint8_t>(b));
}
constexpr bool Has(Look set, Look flag) noexcept {
  return (static_cast<std::uint8_t>(set) & static_cast<std::uint8_t>(flag)) != 0;
}

// One entry of a form's declaration: a control, made by its kind; a widget the window made itself
// (a file button, a preview); several entries side by side; a box of rows; or room to spare.
class Field {
 public:
  Field(ControlHandle control, Look look = Look::Plain) : control_(control), look_(look) {}
  Field(QWidget* own) : type_(Type::Own), own_(own) {}

  // Side by side; combo boxes, text boxes, sliders and swatches get their caption in front, and a
  // label takes the room the others leave.
  static Field Line(std::initializer_list<Field> fields);
  // A box of rows, titled by the window, or a Frame control, which titles, enables and shows it.
  static Field Group(const QString& title, std::initializer_list<Field> rows);
  static Field Group(ControlHandle frame, std::initializer_list<Field> rows);
  // In a line or among rows: what room is left goes here.
  static Field Stretch();

 private:
  friend class FormBuilder;
  enum class Type : std::uint8_t { Control, Own, Line, Group, Stretch };
  explicit Field(Type type) : type_(type) {}

  Type type_ = Type::Control;
  ControlHandle control_;
  Look look_ = Look::Plain;
  QWidget* own_ = nullptr;
  QString title_;
  std::vector<Field> fields_;
};

// Makes the widgets of declared controls, binds them (WidgetBinding) and lays them out.
//
// Rows have three columns: caption, widget, and a slider's live value. Check boxes, buttons,
// option buttons, labels and frames show their caption themselves and stand alone across the row,
// as does a control without a caption. Caption and value labels are named after the control
// ("SliderFadeOutCaption", "SliderFadeOutValue") and follow it as its widget does: its caption,
// whether it is enabled and shown.
class FormBuilder {
 public:
  // `defaults` is added to every field's look (the text editor's lists all take typed values).
  explicit FormBuilder(ControlModel& model, Look defaults = Look::Plain) : model_(model), defaults_(defaults) {}

  // The control's widget by its kind, bound to it; nullptr for a dead handle.
  QWidget* Make(ControlHandle control, QWidget* parent, Look look = Look::Plain);
  // Rows for a layout of `owner`, which holds their widgets.
  QGridLayout* Rows(QWidget* owner, std::initializer_list<Field> rows);
  QHBoxLayout* Line(QWidget* owner, std::initializer_list<Field> fields);
  // A widget of rows from the top, for a tab.
  QWidget* Page(QWidget* parent, std::initializer_list<Field> rows);

  // The widget made for a control (the last, if it was made twice); nullptr if none or not a W.
  template <class W = QWidget>
  W* Made(ControlHandle control) const {
    return qobject_cast<W*>(MadeWidget(control));
  }

 private:
  QWidget* MadeWidget(ControlHandle control) const;
  // Answers the row after the last.
  int AddRows(QGridLayout* grid, QWidget* owner, const std::vector<Field>& rows);
  void AddRow(QGridLayout* grid, int row, QWidget* owner, const Field& field);
  void AddToLine(QHBoxLayout* line, QWidget* owner, const Field& field);
  QHBoxLayout* MakeLine(QWidget* owner, const std::vector<Field>& fields);
  QWidget* MakeGroup(QWidget* owner, const Field& group);
  // The caption beside a control; nullptr when it has none.
  QLabel* CaptionFor(ControlHandle control, QWidget* owner, QWidget* buddy);
  QLabel* ValueFor(ControlHandle control, QWidget* owner);

  ControlModel& model_;
  Look defaults_;
  std::vector<std::pair<ControlHandle, QPointer<QWidget>>> made_;
};

}  // namespace lumivane
