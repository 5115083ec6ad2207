#include <gtest/gtest.h>

#include "forms/BackgroundsForm.h"
#include "forms/EffectsForm.h"
#include "forms/MainForm.h"
#include "support/EngineFixture.h"
#include "support/FakeMsgBox.h"
#include "support/RecordingLayerOutput.h"

namespace lumivane {
namespace {

// The background and effect forms against a recording output: what reaches it, in what order.
class LayerFormsTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  void SetUp() override {
    // "bad" files cannot be read; the others are 640 x 360.
    backgrounds.ReadImageSize = [](const std::string& file, std::int32_t& w, std::int32_t& h, std::string& error) {
      if (file.find("bad") != std::string::npos) {
        error = "not a picture";
        return false;
      }
      w = 640;
      h = 360;
      return true;
    };
    output.markHideAll = true;
    backgrounds.Output = &output;
    effects.Output = &output;
  }

  ControlModel model;
  test::FakeMsgBox msg;
  MainForm main{model, text, msg};
  BackgroundsForm backgrounds{model, msg, main.BackgroundColor};
  EffectsForm effects{model};
  const BackgroundsForm::Controls& c = backgrounds.C();
  test::RecordingLayerOutput output;
  std::vector<std::string>& sent = output.shown;
  std::vector<std::string>& masks = output.masks;
};

TEST_F(LayerFormsTest, TheListTakesEachReadablePictureOnceAndTellsOfTheOthers) {
  backgrounds.LoadBackground({"/p/a.jpg", "/p/bad.png", "/p/a.jpg", "/p/b.png"});
  ASSERT_EQ(backgrounds.Items().size(), 2u);
  const Control* list = c.ListBackgrounds.get();
  ASSERT_EQ(list->ListItems.size(), 2u);
  EXPECT_EQ(list->ListItems[1].Text, "b.png");
  EXPECT_EQ(list->ListItems[1].SubItems, (std::vector<std::string>{"640", "360"}));
  ASSERT_EQ(msg.shown.size(), 1u);
  EXPECT_EQ(msg.shown[0], "The image could not be read: bad.png (not a picture)");

  // A show's pictures stay listed even when missing, so saving loses none; still told nothing.
  backgrounds.LoadBackground({"/p/bad2.png"}, true);
  EXPECT_EQ(backgrounds.Items().size(), 3u);
  EXPECT_EQ(backgrounds.Items()[2].Width, 0);
  EXPECT_EQ(msg.shown.size(), 1u);
}

TEST_F(LayerFormsTest, PlayingSendsTheWholeListAndAPickSendsOnePicture) {
  backgrounds.LoadBackground({"/p/a.jpg", "/p/b.jpg", "/p/c.jpg"});
  model.Press(c.cmdPlay, Origin::Widget);
  // All visible, the first shown first: only the first send hides what was there.
  EXPECT_EQ(sent, (std::vector<std::string>{"hide+/p/a.jpg", "/p/b.jpg", "/p/c.jpg", "/p/a.jpg"}));

  sent.clear();
  model.SelectItem(c.ListBackgrounds, 2, Origin::Widget);
  EXPECT_TRUE(sent.empty()) << "while playing, a pick by hand changes nothing";
  model.SelectItem(c.ListBackgrounds, 3, Origin::Midi);
  EXPECT_EQ(sent, (std::vector<std::string>{"hide+/p/c.jpg"})) << "a controller's pick goes out";

  sent.clear();
  model.Press(c.cmdPlay, Origin::Widget);  // stop: the selected picture alone stays
  EXPECT_EQ(sent, (std::vector<std::string>{"hide+/p/c.jpg"}));
  sent.clear();
  model.Press(c.cmdEraseBackgroundOtput, Origin::Widget);
  EXPECT_EQ(sent, (std::vector<std::string>{"hide+"}));
}

TEST_F(LayerFormsTest, ALockedMaskIsKeptWhenAShowIsRead) {
  backgrounds.SetMaskFileName("/m/one.png", false);
  model.SetValue(c.cmdLockMask, 1);
  backgrounds.SetMaskFileName("/m/two.png", true);
  EXPECT_EQ(backgrounds.MaskFileName(), "/m/one.png");
  backgrounds.SetMaskFileName("/m/three.png", false);  // by hand it changes all the same
  EXPECT_EQ(masks, (std::vector<std::string>{"/m/one.png", "/m/three.png"}));
}

TEST_F(LayerFormsTest, BlendButtonsSetBothBoxesAndUnknownNamesFallBack) {
  const EffectsForm::Controls& e = effects.C();
  model.Press(e.cmdEffectBlending2, Origin::Widget);
  EXPECT_EQ(ControlModel::Text(e.cboSourceBlend), "DEST_COLOR");
  EXPECT_EQ(ControlModel::Text(e.cboTargetBlend), "SRC_COLOR");
  model.Press(e.cmdEffectBlending4, Origin::Widget);
  EXPECT_EQ(ControlModel::Text(e.cboSourceBlend), "INV_DEST_COLOR");
  EXPECT_EQ(ControlModel::Text(e.cboTargetBlend), "INV_DEST_COLOR");
  EXPECT_EQ(EffectBlendCode("BOTH_INV_SRC_ALPHA", true), 13);
  EXPECT_EQ(EffectBlendCode("nonsense", true), 3);
  EXPECT_EQ(EffectBlendCode("", false), 9);
}

}  // namespace
}  // namespace lumivane
