#include "forms/Shape3DForm.h"

#include <gtest/gtest.h>

#include "forms/MainForm.h"
#include "support/EngineFixture.h"
#include "support/FakeMsgBox.h"

namespace lumivane {
namespace {

class ShapeFormTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  ControlModel model;
  test::FakeMsgBox msg;
  MainForm main{model, text, msg};
  Shape3DForm form{model, main};
  const Shape3DForm::ShapeControls& c = form.Controls();

  TextObject Stored(std::int32_t index) { return text.TextRecordRead(index); }
  static int Value(ControlHandle h) { return ControlModel::Value(h); }
  static bool Enabled(ControlHandle h) { return ControlModel::Enabled(h); }
};

TEST_F(ShapeFormTest, TheShapesAreExclusiveAndEachEnablesOnlyItsOwnFrame) {
  main.AddText();
  int saves = 0;
  main.AfterSave = [&] { ++saves; };
  EXPECT_FALSE(Enabled(c.fraCircle) || Enabled(c.fraWave) || Enabled(c.fraSpiral) || Enabled(c.fraCustom));

  model.SetValue(c.chkWave, 1, Origin::Widget);
  EXPECT_EQ(Stored(1).Shape3DType, "Wave");
  EXPECT_TRUE(Enabled(c.fraWave));
  EXPECT_FALSE(Enabled(c.fraCircle));

  ASSERT_TRUE(model.Drive(c.chkSpiral, "1", Origin::Midi));
  EXPECT_EQ(Value(c.chkWave), 0);
  EXPECT_EQ(Stored(1).Shape3DType, "Spiral");
  EXPECT_TRUE(Enabled(c.fraSpiral));
  EXPECT_FALSE(Enabled(c.fraWave));

  model.SetValue(c.chkCustom, 1, Origin::File);
  EXPECT_EQ(Value(c.chkSpiral), 0);
  EXPECT_EQ(Stored(1).Shape3DType, "Custom");

  model.SetValue(c.chkCustom, 0, Origin::Widget);  // none ticked: the plain quad
  EXPECT_EQ(Stored(1).Shape3DType, "");
  EXPECT_FALSE(Enabled(c.fraCircle) || Enabled(c.fraWave) || Enabled(c.fraSpiral) || Enabled(c.fraCustom));
  // Unticking the previous shape rides on the tick's own save.
  EXPECT_EQ(saves, 4);
}

TEST_F(ShapeFormTest, EverySliderWritesItsOwnFieldOfTheSelectedText) {
  main.AddText();
  main.AddText();
  main.SelectText(1);

  model.SetValue(c.SliderCircleRadius, 7, Origin::Widget);
  model.SetValue(c.SliderCircleSmoothness, 45, Origin::Widget);
  ASSERT_TRUE(model.DriveNumber(c.SliderCircleTiling, 4, Origin::Audio));
  model.SetValue(c.SliderWaveAmplitude, 2, Origin::Widget);
  model.SetValue(c.SliderWaveSize, 540, Origin::Widget);
  model.SetValue(c.SliderWavePhase, 30, Origin::Widget);
  model.SetValue(c.SliderWaveTiling, 3, Origin::Widget);
  model.SetValue(c.SliderSpiralRadius, 9, Origin::Widget);
  model.SetValue(c.SliderSpiralRevolutionCount, 6, Origin::Widget);
  model.SetValue(c.SliderSpiralSmoothness, 15, Origin::Widget);
  ASSERT_TRUE(model.Drive(c.SliderSpiralTiling, "2", Origin::Animation));
  model.SetValue(c.SliderCustomMeshZ, -75, Origin::Widget);
  model.SetValue(c.chkCustomMeshPreserveTextures, 1, Origin::Widget);
  ASSERT_TRUE(model.Drive(c.chkShowMesh, "1", Origin::Midi));

  const TextObject t = Stored(1);
  EXPECT_EQ(t.Circle3D, (Circle3D{7, 45, 4}));
  EXPECT_EQ(t.Wave3D, (Wave3D{2, 540, 30, 0, 3}));  // the running phase is the renderer's
  EXPECT_EQ(t.Spiral3D, (Spiral3D{9, 6, 15, 2}));
  EXPECT_EQ(t.Mesh3DZ, -75.0f);
  EXPECT_EQ(t.Mesh3DPreserveTextures, 1);
  EXPECT_EQ(t.Shape3DRenderMesh, 1);
  // Only the selected text.
  EXPECT_NE(Stored(2).Circle3D.Radius, 7);
  EXPECT_EQ(Stored(2).Mesh3DPreserveTextures, 0);
}

TEST_F(ShapeFormTest, AShapeTheTextNeverHadTakesVisibleDefaultsWhenTicked) {
  AddText();  // straight into the engine, as a show made before shapes existed holds it
  main.SelectText(1);
  ASSERT_EQ(Stored(1).Circle3D, Circle3D{});
  model.SetValue(c.chkCircle, 1, Origin::Widget);
  EXPECT_EQ(Stored(1).Circle3D, Shape3DForm::kCircleDefaults);
  model.SetValue(c.chkSpiral, 1, Origin::Widget);
  EXPECT_EQ(Stored(1).Spiral3D, Shape3DForm::kSpiralDefaults);

  // A text with a wave of its own keeps it; a value beyond a slider shows at its end.
  main.AddText();
  TextObject t = Stored(2);
  t.Wave3D = Wave3D{0, 90, 0, 0, 40};
  text.TextRecordWrite(2, t);
  main.SelectText(2);
  EXPECT_EQ(Value(c.SliderWaveTiling), 20);
  model.SetValue(c.chkWave, 1, Origin::Widget);
  EXPECT_EQ(Stored(2).Wave3D.Size, 90);
  EXPECT_EQ(Stored(2).Wave3D.Tiling, 20);
}

TEST_F(ShapeFormTest, TheMeshZoomKeepsTheStoredDistanceUntilTheSliderMoves) {
  main.AddText();
  main.AddText();
  TextObject t = Stored(2);
  t.Mesh3DZ = -12.5f;
  text.TextRecordWrite(2, t);

  main.SelectText(1);
  EXPECT_EQ(Value(c.SliderCustomMeshZ), Shape3DForm::kMeshZDefault);
  model.SetValue(c.SliderCircleRadius, 5, Origin::Widget);
  EXPECT_EQ(Stored(1).Mesh3DZ, 0.0f);  // still unset: the renderer keeps its own camera

  main.SelectText(2);
  EXPECT_EQ(Value(c.SliderCustomMeshZ), -12);
  model.SetValue(c.SliderCircleRadius, 5, Origin::Widget);
  EXPECT_EQ(Stored(2).Mesh3DZ, -12.5f);
  model.SetValue(c.SliderCustomMeshZ, -13, Origin::Widget);
  EXPECT_EQ(Stored(2).Mesh3DZ, -13.0f);
}

// A picture in place of the string: for the selected text, or for every text with operate-on-all;
// the way back clears it.
TEST_F(ShapeFormTest, APictureGoesToTheSelectedTextOrToAllAndBack) {
  main.AddText();
  main.AddText();
  main.SelectText(1);
  std::string answer = "/shows/TextBoxTextures/star.png";
  form.ChooseTextBoxTexture = [&] { return answer; };
  model.Press(c.cmdLoadTextBoxTexture, Origin::Widget);
  EXPECT_EQ(Stored(1).TextBoxTextureFileName, answer);
  EXPECT_EQ(Stored(2).TextBoxTextureFileName, "");
  EXPECT_EQ(c.lblTextBoxTexture.get()->Caption, answer);

  model.SetValue(main.chkOperateOnAllTexts(), 1, Origin::Widget);
  answer = "/shows/TextBoxTextures/moon.png";
  model.Press(c.cmdLoadTextBoxTexture, Origin::Widget);
  EXPECT_EQ(Stored(1).TextBoxTextureFileName, answer);
  EXPECT_EQ(Stored(2).TextBoxTextureFileName, answer);

  model.SetValue(main.chkOperateOnAllTexts(), 0, Origin::Widget);
  model.Press(c.cmdClearTextBoxTexture, Origin::Widget);
  EXPECT_EQ(Stored(1).TextBoxTextureFileName, "");
  EXPECT_EQ(Stored(2).TextBoxTextureFileName, answer);
  EXPECT_EQ(c.lblTextBoxTexture.get()->Caption, "");
}

}  // namespace
}  // namespace lumivane
