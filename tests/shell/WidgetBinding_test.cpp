#include "shell/WidgetBinding.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>

#include "shell/FocusTracker.h"

namespace lumivane {
namespace {

class WidgetBindingTest : public ::testing::Test {
 protected:
  ControlModel model;
  QWidget window;
};

TEST_F(WidgetBindingTest, AHandOnTheSliderAndAMidiMessageFireTheHandlerOnceEach) {
  ControlHandle h = model.Add("frmMain", ControlKind::Slider, "SliderRandomizeColor");
  model.SetRange(h, 0, 255);
  auto* slider = new QSlider(&window);
  ASSERT_NE(WidgetBinding::Bind(model, h, slider), nullptr);
  EXPECT_EQ(slider->maximum(), 255);
  EXPECT_EQ(slider->objectName(), "SliderRandomizeColor");

  std::vector<Origin> heard;
  model.OnChange(h, [&](const ControlEvent& e) { heard.push_back(e.origin); });

  slider->setValue(30);  // as the operator's hand does
  EXPECT_EQ(ControlModel::Value(h), 30);
  model.Drive(h, "90", Origin::Midi);
  EXPECT_EQ(slider->value(), 90);  // shown, and not written back as a second change
  model.SetRange(h, 0, 50);  // the range shrinks past the value: the widget follows
  EXPECT_EQ(slider->maximum(), 50);
  EXPECT_EQ(slider->value(), 50);
  EXPECT_EQ(heard, (std::vector<Origin>{Origin::Widget, Origin::Midi, Origin::Program}));
}

TEST_F(WidgetBindingTest, ComboCheckButtonAndTextFollowTheModelAndWriteIt) {
  ControlHandle combo = model.Add("frmMain", ControlKind::ComboBox, "cboAlignX");
  model.SetItems(combo, {"Centered", "Left Justify", "Right Justify"});
  model.SetText(combo, "Centered");
  auto* box = new QComboBox(&window);
  WidgetBinding::Bind(model, combo, box);
  EXPECT_EQ(box->count(), 3);
  box->setCurrentIndex(2);
  EXPECT_EQ(ControlModel::Text(combo), "Right Justify");
  model.Drive(combo, "Left Justify", Origin::Animation);
  EXPECT_EQ(box->currentText(), "Left Justify");

  ControlHandle check = model.Add("frmMain", ControlKind::CheckBox, "chkFlashText");
  auto* tick = new QCheckBox(&window);
  WidgetBinding::Bind(model, check, tick);
  int changes = 0;
  model.OnChange(check, [&](const ControlEvent&) { ++changes; });
  tick->click();
  EXPECT_EQ(ControlModel::Value(check), 1);
  model.SetValue(check, 0, Origin::Midi);
  EXPECT_FALSE(tick->isChecked());
  EXPECT_EQ(changes, 2);

  ControlHandle press = model.Add("frmMain", ControlKind::CommandButton, "cmdTimeShuffle");
  auto* button = new QPushButton(&window);
  WidgetBinding::Bind(model, press, button);
  int presses = 0;
  model.OnChange(press, [&](const ControlEvent&) { ++presses; });
  button->click();
  model.SetEnabled(press, false);
  EXPECT_FALSE(button->isEnabled());
  EXPECT_EQ(presses, 1);

  ControlHandle toggle = model.Add("frmMain", ControlKind::CommandButton, "cmdLockVideoToTextBox");
  model.SetToggle(toggle, true);
  auto* toggleButton = new QPushButton(&window);
  WidgetBinding::Bind(model, toggle, toggleButton);
  EXPECT_TRUE(toggleButton->isCheckable());
  toggleButton->click();
  EXPECT_EQ(ControlModel::Value(toggle), 1);
  model.Press(toggle, Origin::Midi);
  EXPECT_FALSE(toggleButton->isChecked());

  // The editor's line ends become CR LF in the model, and back.
  ControlHandle editor = model.Add("frmMain", ControlKind::TextBox, "txtEditor");
  auto* edit = new QPlainTextEdit(&window);
  WidgetBinding::Bind(model, editor, edit);
  edit->setPlainText("one\ntwo");
  EXPECT_EQ(ControlModel::Text(editor), "one\r\ntwo");
  model.SetText(editor, "a\r\nb", Origin::File);
  EXPECT_EQ(edit->toPlainText(), "a\nb");

  // A widget of the wrong kind is not bound.
  EXPECT_EQ(WidgetBinding::Bind(model, check, new QLabel(&window)), nullptr);
}

TEST_F(WidgetBindingTest, UnloadingTheControlOrDeletingTheWidgetLeavesNoDanglingLink) {
  ControlHandle h = model.Add("frmMain", ControlKind::TextBox, "txtSelfTime");
  auto* line = new QLineEdit(&window);
  WidgetBinding::Bind(model, h, line);
  delete line;  // the binding goes with its widget and unhooks from the model
  EXPECT_TRUE(model.SetText(h, "100", Origin::Midi));

  auto* second = new QLineEdit(&window);
  WidgetBinding::Bind(model, h, second);
  model.Remove(h);
  second->setText("typed");
  emit second->textEdited("typed");  // nothing to write into any more; must not crash
  SUCCEED();
}

TEST_F(WidgetBindingTest, TheFocusedWidgetBecomesTheActiveControl) {
  FocusTracker tracker(model);
  ControlHandle a = model.Add("frmMain", ControlKind::Slider, "SliderRandomizeX");
  ControlHandle b = model.Add("frmMain", ControlKind::ComboBox, "cboCounterType");
  auto* slider = new QSlider(&window);
  auto* combo = new QComboBox(&window);
  combo->setEditable(true);
  WidgetBinding::Bind(model, a, slider);
  WidgetBinding::Bind(model, b, combo);
  window.show();
  QApplication::setActiveWindow(&window);

  slider->setFocus();
  QApplication::processEvents();
  EXPECT_EQ(model.ActiveControl(), a);
  combo->lineEdit()->setFocus();  // an inner part of the combo box
  QApplication::processEvents();
  EXPECT_EQ(model.ActiveControl(), b);
  EXPECT_EQ(model.ActiveForm(), "frmMain");
}

}  // namespace
}  // namespace lumivane

int main(int argc, char** argv) {
  // Widgets without a display; also when CTest lists the tests.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  // Settings (recent shows) go to a scratch organisation, not the user's.
  QCoreApplication::setOrganizationName(QStringLiteral("Lumivane Tests"));
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
