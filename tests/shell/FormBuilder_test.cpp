#include "shell/FormBuilder.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>

#include "support/QtWait.h"

namespace lumivane {
namespace {

// Where a widget stands in a grid: row, column and columns spanned.
struct Cell {
  int row = -1, column = -1, span = 0;
  bool operator==(const Cell&) const = default;
};

Cell CellOf(QGridLayout* grid, QWidget* w) {
  const int index = grid->indexOf(w);
  if (index < 0) return {};
  int row = 0, column = 0, rows = 0, columns = 0;
  grid->getItemPosition(index, &row, &column, &rows, &columns);
  return {row, column, columns};
}

class FormBuilderTest : public ::testing::Test {
 protected:
  static constexpr std::string_view kForm = "frmTest";
  ControlModel model;
  QWidget window;

  template <class W>
  W* Find(const char* name) { return test::Child<W>(window, name); }

  ControlHandle Add(ControlKind kind, std::string_view name, std::string_view caption = {}) {
    ControlHandle h = model.Add(kForm, kind, name);
    model.SetCaption(h, caption);
    return h;
  }
};

// A registration becomes its widget: caption, range, steps, items and tooltip from the model, a
// hand on the widget writes the control, and any other writer shows on it, caption included.
TEST_F(FormBuilderTest, ARegistrationBecomesItsWidgetBoundBothWays) {
  ControlHandle fade = Add(ControlKind::Slider, "SliderFadeOut", "Brightness");
  model.SetRange(fade, 0, 255);
  model.SetSteps(fade, 1, 16);
  model.SetValue(fade, 200);
  model.SetToolTip(fade, "Output brightness: 0 is black");
  ControlHandle blend = Add(ControlKind::ComboBox, "cboSourceBlend", "Source blend");
  model.SetItems(blend, {"ONE", "ZERO"});
  model.SetText(blend, "ONE");
  ControlHandle flash = Add(ControlKind::CheckBox, "chkFlashText", "Flash");
  ControlHandle feedback = Add(ControlKind::CommandButton, "cmdFeedBack", "Feedback");
  model.SetToggle(feedback, true);
  ControlHandle info = Add(ControlKind::TextBox, "txtMeshInfo");
  model.SetText(info, "12 faces\r\n8 vertices");
  ControlHandle tint = Add(ControlKind::PictureBox, "piCFilterColor", "Tint");

  FormBuilder b(model);
  auto* grid =
      b.Rows(&window, {fade, {blend, Look::Editable}, flash, feedback, {info, Look::Lines | Look::ReadOnly}, tint});
  window.setLayout(grid);

  auto* slider = Find<QSlider>("SliderFadeOut");
  EXPECT_EQ(b.Made<QSlider>(fade), slider);
  EXPECT_EQ(slider->maximum(), 255);
  EXPECT_EQ(slider->pageStep(), 16);
  EXPECT_EQ(slider->value(), 200);
  EXPECT_EQ(slider->toolTip(), "Output brightness: 0 is black");
  auto* caption = Find<QLabel>("SliderFadeOutCaption");
  auto* value = Find<QLabel>("SliderFadeOutValue");
  EXPECT_EQ(caption->text(), "Brightness");
  EXPECT_EQ(caption->buddy(), slider);
  EXPECT_EQ(value->text(), "200");
  EXPECT_EQ(CellOf(grid, caption), (Cell{0, 0, 1}));
  EXPECT_EQ(CellOf(grid, slider), (Cell{0, 1, 1}));
  EXPECT_EQ(CellOf(grid, value), (Cell{0, 2, 1}));
  slider->setValue(30);  // the operator's hand
  EXPECT_EQ(ControlModel::Value(fade), 30);
  EXPECT_EQ(value->text(), "30");
  model.Drive(fade, "90", Origin::Midi);
  EXPECT_EQ(slider->value(), 90);
  EXPECT_EQ(value->text(), "90");
  model.SetCaption(fade, "Fade");
  EXPECT_EQ(caption->text(), "Fade");
  model.SetEnabled(fade, false);
  EXPECT_FALSE(caption->isEnabled());
  EXPECT_FALSE(value->isEnabled());

  auto* combo = Find<QComboBox>("cboSourceBlend");
  EXPECT_EQ(Find<QLabel>("cboSourceBlendCaption")->text(), "Source blend");
  EXPECT_EQ(CellOf(grid, combo), (Cell{1, 1, 2}));
  ASSERT_TRUE(combo->isEditable());
  EXPECT_EQ(combo->count(), 2);
  combo->setEditText("SRC_ALPHA");  // typed and entered: the control's text, not a new item
  QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
  QApplication::sendEvent(combo->lineEdit(), &enter);
  EXPECT_EQ(ControlModel::Text(blend), "SRC_ALPHA");
  EXPECT_EQ(combo->count(), 2);

  // Check boxes and buttons show their own caption and stand across the row.
  auto* check = Find<QCheckBox>("chkFlashText");
  EXPECT_EQ(check->text(), "Flash");
  EXPECT_EQ(window.findChild<QLabel*>("chkFlashTextCaption"), nullptr);
  EXPECT_EQ(CellOf(grid, check), (Cell{2, 0, 3}));
  check->click();
  EXPECT_EQ(ControlModel::Value(flash), 1);
  auto* button = Find<QPushButton>("cmdFeedBack");
  EXPECT_EQ(button->text(), "Feedback");
  EXPECT_TRUE(button->isCheckable());
  button->click();
  EXPECT_EQ(ControlModel::Value(feedback), 1);

  // Without a caption a widget takes the caption's column too.
  auto* text = Find<QPlainTextEdit>("txtMeshInfo");
  EXPECT_TRUE(text->isReadOnly());
  EXPECT_EQ(text->toPlainText(), "12 faces\n8 vertices");
  EXPECT_EQ(CellOf(grid, text), (Cell{4, 0, 3}));

  auto* swatch = Find<ColourSwatch>("piCFilterColor");
  swatch->PickColour = [](const QColor&) { return QColor(255, 128, 0); };
  QMouseEvent press(QEvent::MouseButtonPress, QPointF(2, 2), swatch->mapToGlobal(QPointF(2, 2)), Qt::LeftButton,
                    Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(swatch, &press);
  EXPECT_EQ(ControlModel::BackColor(tint), 0x0080FF);
  EXPECT_EQ(Find<QLabel>("piCFilterColorCaption")->text(), "Tint");
}

// Lines, groups and pages: a frame control titles and enables its box, a caption goes in front
// of its control in a line, the window's own widgets are placed as declared, and a dead control
// is left out.
TEST_F(FormBuilderTest, LinesGroupsAndTheWindowsOwnWidgets) {
  ControlHandle frame = Add(ControlKind::Frame, "fraWave", "Wave");
  ControlHandle amplitude = Add(ControlKind::Slider, "SliderWaveAmplitude", "Amplitude");
  ControlHandle count = Add(ControlKind::ComboBox, "cboOutputCount", "Outputs:");
  ControlHandle identify = Add(ControlKind::CheckBox, "chkIdentify", "Identify");
  ControlHandle mask = Add(ControlKind::Label, "lblMaskFileName", "mask.png");
  ControlHandle gone = Add(ControlKind::CheckBox, "chkGone", "Gone");
  model.Remove(gone);
  auto* own = new QPushButton(QStringLiteral("Browse..."));

  FormBuilder b(model);
  QWidget* page = b.Page(&window, {Field::Group(frame, {amplitude, own}),
                                   Field::Line({count, Field::Stretch(), identify, mask}), gone});

  auto* box = b.Made<QGroupBox>(frame);
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->title(), "Wave");
  EXPECT_EQ(own->parentWidget(), box);
  EXPECT_EQ(box->findChild<QSlider*>("SliderWaveAmplitude"), b.Made<QSlider>(amplitude));
  model.SetEnabled(frame, false);
  EXPECT_FALSE(b.Made<QSlider>(amplitude)->isEnabled());

  auto* grid = qobject_cast<QGridLayout*>(page->layout());
  ASSERT_NE(grid, nullptr);
  EXPECT_EQ(CellOf(grid, box), (Cell{0, 0, 3}));
  QHBoxLayout* line = nullptr;
  for (int i = 0; i < grid->count() && line == nullptr; ++i)
    line = qobject_cast<QHBoxLayout*>(grid->itemAt(i)->layout());
  ASSERT_NE(line, nullptr);
  // "Outputs:", the combo box, room, the check box, and the label taking what is left.
  ASSERT_EQ(line->count(), 5);
  EXPECT_EQ(line->itemAt(0)->widget(), page->findChild<QLabel*>("cboOutputCountCaption"));
  EXPECT_EQ(line->itemAt(1)->widget(), b.Made(count));
  EXPECT_NE(line->itemAt(2)->spacerItem(), nullptr);
  EXPECT_EQ(line->itemAt(3)->widget(), b.Made(identify));
  EXPECT_EQ(line->itemAt(4)->widget(), b.Made(mask));
  EXPECT_EQ(line->stretch(4), 1);
  EXPECT_EQ(qobject_cast<QLabel*>(b.Made(mask))->text(), "mask.png");
  EXPECT_EQ(page->findChild<QCheckBox*>("chkGone"), nullptr);
  EXPECT_EQ(b.Made(gone), nullptr);
  EXPECT_FALSE(qobject_cast<QComboBox*>(b.Made(count))->isEditable());
}

// A slider whose value its text box shows: no value label, and the text box stands under the
// slider rather than across the caption's column; a text of several lines takes the spare height.
TEST_F(FormBuilderTest, ASliderWithItsTextBoxAndATextOfLines) {
  ControlHandle timer = Add(ControlKind::Slider, "SliderSelfTime", "Timer [ms]");
  ControlHandle typed = Add(ControlKind::TextBox, "txtSelfTime");
  ControlHandle editor = Add(ControlKind::TextBox, "txtEditor", "Custom Text");

  FormBuilder b(model);
  QWidget* page = b.Page(&window, {{timer, Look::NoValue}, {typed, Look::Indented}, {editor, Look::Lines}});

  auto* grid = qobject_cast<QGridLayout*>(page->layout());
  ASSERT_NE(grid, nullptr);
  EXPECT_EQ(page->findChild<QLabel*>("SliderSelfTimeValue"), nullptr);
  EXPECT_EQ(CellOf(grid, b.Made(timer)), (Cell{0, 1, 2}));
  EXPECT_EQ(CellOf(grid, b.Made(typed)), (Cell{1, 1, 2}));
  ASSERT_NE(b.Made<QPlainTextEdit>(editor), nullptr);
  EXPECT_EQ(grid->rowStretch(2), 1);
}

}  // namespace
}  // namespace lumivane
