#include "shell/OutputConfigurationWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QTreeWidget>

#include "forms/OutputClones.h"
#include "forms/OutputConfigurationForm.h"
#include "shell/CloneDisplay.h"

namespace lumivane {
namespace {

void Click(QTreeWidget* tree, int row) {
  QWidget* viewport = tree->viewport();
  const QPoint at = tree->visualItemRect(tree->topLevelItem(row)).center();
  const QPointF global = viewport->mapToGlobal(QPointF(at));
  QMouseEvent press(QEvent::MouseButtonPress, QPointF(at), global, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
  QMouseEvent release(QEvent::MouseButtonRelease, QPointF(at), global, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
  QApplication::sendEvent(viewport, &press);
  QApplication::sendEvent(viewport, &release);
}

class OutputConfigurationWindowTest : public ::testing::Test {
 protected:
  ControlModel model;
  OutputConfigurationForm form{model};
  OutputClones clones{form};
  OutputConfigurationWindow window{form};
  const OutputConfigurationForm::OutputControls& c = form.Controls();
  QTreeWidget* tree = window.Outputs();

  void SetUp() override {
    clones.CreateCloneWindow = [] { return std::make_unique<CloneOutput>(nullptr); };
    model.SetText(c.cboOutputCount, "3");
    clones.CloneRenderInitialize(320, 240);
    window.show();
    QApplication::processEvents();
  }
  void TearDown() override { clones.CloneDestroy(); }
};

TEST_F(OutputConfigurationWindowTest, TheWindowShowsTheFormsControlsAndFollowsTheModel) {
  EXPECT_EQ(window.objectName(), "frmOutputConfiguration");
  EXPECT_EQ(window.windowTitle(), "Output Configuration");
  EXPECT_EQ(window.findChild<QPushButton*>("cmdX")->text(), "Mirror X");
  EXPECT_EQ(window.findChild<QPushButton*>("cmdY")->text(), "Mirror Y");
  EXPECT_EQ(window.findChild<QPushButton*>("cmdReset")->text(), "Reset");
  EXPECT_EQ(window.findChild<QCheckBox*>("chkIdentify")->text(), "Identify");
  auto* count = window.findChild<QComboBox*>("cboOutputCount");
  ASSERT_NE(count, nullptr);
  EXPECT_EQ(count->count(), 8);
  EXPECT_EQ(count->currentText(), "3");

  ASSERT_EQ(tree->topLevelItemCount(), 5);
  EXPECT_EQ(tree->topLevelItem(0)->text(0), "Output");
  EXPECT_EQ(tree->topLevelItem(0)->text(2), "Y");
  EXPECT_EQ(tree->topLevelItem(2)->text(0), "Main");
  EXPECT_EQ(tree->topLevelItem(4)->text(0), "2# ");

  form.SelectOutput(1);
  EXPECT_EQ(tree->indexOfTopLevelItem(tree->currentItem()), 3);
  clones.ApplyPosition(1, WindowRect{0, 0, 100, 100}, true, "X", "Y");
  EXPECT_EQ(tree->topLevelItem(3)->text(1), "X");
  EXPECT_EQ(tree->topLevelItem(3)->text(2), "Y");
  EXPECT_EQ(tree->indexOfTopLevelItem(tree->currentItem()), 3);  // a rewritten row stays selected

  clones.CloneDestroy();
  EXPECT_EQ(tree->topLevelItemCount(), 0);
}

TEST_F(OutputConfigurationWindowTest, AClickOnARowSelectsItAndTheMirrorButtonsActOnIt) {
  Click(tree, 4);
  EXPECT_EQ(c.ListOutputs->SelectedItem, 5);
  window.findChild<QPushButton*>("cmdY")->click();
  EXPECT_EQ(tree->topLevelItem(4)->text(2), "Y");
  EXPECT_EQ(clones.Clones(2)->MirrorY, "Y");
  auto* display = static_cast<CloneOutput*>(clones.Clones(2)->Window.get())->Window();
  EXPECT_EQ(display->MirrorY(), "Y");
  EXPECT_EQ(display->title(), "Lumivane Clone 2");

  Click(tree, 2);  // "Main": no mirror of its own
  EXPECT_EQ(c.ListOutputs->SelectedItem, 3);
  window.findChild<QPushButton*>("cmdX")->click();
  EXPECT_EQ(tree->topLevelItem(2)->text(1), " ");
  EXPECT_EQ(clones.Clones(1)->MirrorX, "");
}

TEST(CloneOutput, TheWindowManagersCloseIsRefusedAndUnloadLetsTheWindowGo) {
  auto clone = std::make_unique<CloneOutput>(nullptr);
  QPointer<CloneDisplay> window = clone->Window();
  clone->SetVisible(true);
  QApplication::processEvents();
  EXPECT_FALSE(window->close());
  EXPECT_TRUE(clone->IsVisible());

  clone->Unload();
  EXPECT_FALSE(clone->IsVisible());
  clone->Draw(BlitSource{0, 0, 1, 1}, 1);  // after unload: nothing, and no crash
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(window.isNull());
}

}  // namespace
}  // namespace lumivane
