#include "shell/Shape3DWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>

#include "forms/Shape3DForm.h"
#include "forms/MainForm.h"
#include "support/EngineFixture.h"
#include "support/FakeMsgBox.h"

namespace lumivane {
namespace {

class ShapeWindowTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  ControlModel model;
  test::FakeMsgBox msg;
  MainForm main{model, text, msg};
  Shape3DForm form{model, main};
  const Shape3DForm::ShapeControls& c = form.Controls();

  template <class W>
  W* Find(const char* name) {
    W* w = window->findChild<W*>(QString::fromLatin1(name));
    EXPECT_NE(w, nullptr) << name;
    return w;
  }

  void SetUp() override {
    main.AddText();
    window = std::make_unique<Shape3DWindow>(form);
    window->show();
    QApplication::processEvents();
  }

  std::unique_ptr<Shape3DWindow> window;
};

TEST_F(ShapeWindowTest, TickingAShapeInTheWindowChoosesItForTheSelectedText) {
  EXPECT_EQ(window->windowTitle(), "3D Shape");
  EXPECT_EQ(Find<QCheckBox>("chkCustom")->text(), "Custom Mesh Import (3DS)");
  EXPECT_EQ(Find<QPushButton>("cmdLoadCustomMesh")->text(), "Load Custom Mesh (3DS)");
  EXPECT_TRUE(Find<QPlainTextEdit>("txtMeshInfo")->isReadOnly());
  auto* waveFrame = Find<QGroupBox>("fraWave");
  auto* waveSize = Find<QSlider>("SliderWaveSize");
  ASSERT_TRUE(waveFrame != nullptr && waveSize != nullptr);
  EXPECT_FALSE(waveSize->isEnabled());  // its frame is off until the wave is ticked

  Find<QCheckBox>("chkWave")->click();
  EXPECT_EQ(ControlModel::Value(c.chkWave), 1);
  EXPECT_EQ(text.TextRecordRead(1).Shape3DType, "Wave");
  EXPECT_TRUE(waveFrame->isEnabled());
  EXPECT_TRUE(waveSize->isEnabled());

  Find<QCheckBox>("chkCircle")->click();
  EXPECT_FALSE(Find<QCheckBox>("chkWave")->isChecked());
  EXPECT_FALSE(waveFrame->isEnabled());
  EXPECT_TRUE(Find<QGroupBox>("fraCircle")->isEnabled());
  EXPECT_EQ(text.TextRecordRead(1).Shape3DType, "Circle");
}

}  // namespace
}  // namespace lumivane
