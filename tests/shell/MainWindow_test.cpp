#include "shell/MainWindow.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>

#include "forms/MainForm.h"
#include "support/EngineFixture.h"
#include "support/FakeMsgBox.h"

namespace lumivane {
namespace {

// The main window's widgets are views of MainForm's controls: an operator's hand edits the text.
TEST(MainWindow, TheTextEditorAndPaneActOnTheSelectedText) {
  test::EngineFixture engine;
  ControlModel model;
  test::FakeMsgBox msg;
  MainForm form(model, engine.text, msg);
  MainWindow window(form);

  window.findChild<QPushButton*>("cmdAddText")->click();
  ASSERT_EQ(engine.text.PreviewGetTextCount(), 1);
  auto* marker = window.findChild<QLabel*>("1Text");
  ASSERT_NE(marker, nullptr);  // the pane shows the new text
  EXPECT_EQ(marker->text(), "1Text");

  window.findChild<QCheckBox*>("chkFlashText")->click();
  EXPECT_TRUE(engine.text.Live()[0].FlashText);
  window.findChild<QComboBox*>("cboCounterType")->setCurrentText("Integer");
  EXPECT_EQ(engine.text.Live()[0].Counter.ValueType, "Integer");

  window.findChild<QPushButton*>("cmdClone")->click();
  ASSERT_EQ(engine.text.PreviewGetTextCount(), 2);
  EXPECT_NE(window.findChild<QLabel*>("2Text"), nullptr);
  window.findChild<QPushButton*>("cmdDelete")->click();
  EXPECT_EQ(engine.text.PreviewGetTextCount(), 1);
  EXPECT_EQ(window.findChild<QLabel*>("2Text"), nullptr);
}

}  // namespace
}  // namespace lumivane
