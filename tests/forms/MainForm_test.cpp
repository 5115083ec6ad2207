#include "forms/MainForm.h"

#include <gtest/gtest.h>

#include "support/EngineFixture.h"
#include "support/FakeMsgBox.h"

namespace lumivane {
namespace {

class MainFormTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  ControlModel model;
  test::FakeMsgBox msg;
  MainForm form{model, text, msg};
  const MainForm::TextControls& c = form.Controls();

  const TextObject& Stored(std::int32_t index) { return text.Current()[static_cast<std::size_t>(index - 1)]; }
};

TEST_F(MainFormTest, AddTextMakesADefaultTextWithItsLabelAndSelectsIt) {
  const std::int32_t index = form.AddText(300, 200);
  ASSERT_EQ(index, 1);
  EXPECT_EQ(form.getSelectedTextIndex(), 1);
  const TextObject& t = Stored(1);
  EXPECT_EQ(t.TextType, "Counter");
  EXPECT_EQ(t.Counter.ValueType, "Alphanumeric");
  EXPECT_EQ(t.Counter.Direction, "Random");
  EXPECT_EQ(t.Counter.MaxDigits, 9);
  EXPECT_EQ(t.SelfTime, 500);
  EXPECT_EQ(t.SequenceTime, 125);
  EXPECT_EQ(t.FONT_SIZE_ZERO, 52.0f);
  EXPECT_TRUE(t.Text3D);
  EXPECT_EQ(t.WordLength, 1024);
  EXPECT_EQ(t.WordsPerRow, 1);
  EXPECT_EQ(t.EnableRender, 1);
  EXPECT_EQ(t.Font.Name, form.TemplateFont().Name);

  ControlHandle label = model.Resolve("frmMain", "1Text");
  ASSERT_TRUE(label);
  EXPECT_EQ(label->Caption, "1Text");
  // Centred on the pane position it was asked for, and the box follows the label.
  EXPECT_EQ(label->Left + label->Width / 2, 300);
  EXPECT_EQ(label->Top + label->Height / 2, 200);
  EXPECT_EQ(t.Left, label->Left);
  EXPECT_EQ(t.Right, label->Left + label->Width);
}

TEST_F(MainFormTest, EveryWriterOfAControlWritesThroughToTheRecord) {
  form.AddText();
  ASSERT_TRUE(model.Drive(c.chkFlashText, "1", Origin::Midi));
  EXPECT_TRUE(Stored(1).FlashText);
  ASSERT_TRUE(model.DriveNumber(c.SliderRandomizeColor, 40, Origin::Audio));
  EXPECT_EQ(Stored(1).RandomizeColor, 40);
  ASSERT_TRUE(model.Drive(c.cboAlignX, "Right Justify", Origin::Animation));
  EXPECT_EQ(Stored(1).AlignX, "Right Justify");
  ASSERT_TRUE(model.Drive(c.picTextColor, "255", Origin::Osc));
  EXPECT_EQ(Stored(1).Color, 255);
  ASSERT_TRUE(model.SetText(c.cboCounterType, "Integer", Origin::File));
  EXPECT_EQ(Stored(1).Counter.ValueType, "Integer");
  // The timer slider reaches the record through its typed value.
  ASSERT_TRUE(model.Drive(c.SliderSelfTime, "250", Origin::Headless));
  EXPECT_EQ(ControlModel::Text(c.txtSelfTime), "250");
  EXPECT_EQ(Stored(1).SelfTime, 250);
  ASSERT_TRUE(model.SetText(c.txtSequenceTimer, "80", Origin::Widget));
  EXPECT_EQ(ControlModel::Value(c.SliderSequenceTimer), 80);
  EXPECT_EQ(Stored(1).SequenceTime, 80);
}

TEST_F(MainFormTest, EditingNeverResetsARunningCounter) {
  form.AddText();
  TextObject running = text.TextRecordRead(1);
  running.Counter.Value = 4711;
  running.LastUpdateTick = 99;
  running.CurrentText = "4711";
  text.TextRecordWrite(1, running);

  model.SetValue(c.chkUpperCase, 1, Origin::Widget);
  EXPECT_TRUE(Stored(1).UpperCase);
  EXPECT_EQ(Stored(1).Counter.Value, 4711);
  EXPECT_EQ(Stored(1).LastUpdateTick, 99u);
  EXPECT_EQ(Stored(1).CurrentText, "4711");
}

TEST_F(MainFormTest, SelectingATextFillsTheControlsWithoutSaving) {
  form.AddText();
  form.AddText();
  TextObject second = text.TextRecordRead(2);
  second.FlashText = true;
  second.AlignX = "Left Justify";
  second.SelfTime = 1500;
  text.TextRecordWrite(2, second);
  int saves = 0;
  form.AfterSave = [&] { ++saves; };

  form.SelectText(2);
  EXPECT_EQ(saves, 0);
  EXPECT_EQ(ControlModel::Value(c.chkFlashText), 1);
  EXPECT_EQ(ControlModel::Text(c.cboAlignX), "Left Justify");
  EXPECT_EQ(ControlModel::Text(c.txtSelfTime), "1500");
  EXPECT_EQ(ControlModel::Value(c.SliderSelfTime), 1500);
  // Text 1 was not touched by filling the controls from text 2.
  EXPECT_FALSE(Stored(1).FlashText);
  EXPECT_EQ(Stored(1).SelfTime, 500);

  model.SetValue(c.chkClipText, 1, Origin::Widget);
  EXPECT_EQ(saves, 1);
  EXPECT_TRUE(Stored(2).Clip);
  EXPECT_FALSE(Stored(1).Clip);
}

TEST_F(MainFormTest, OperateOnAllKeepsEachTextsOwnPlaceAndRunningState) {
  form.AddText(100, 100);
  form.AddText(400, 300);
  TextObject first = text.TextRecordRead(1);
  first.Counter.Value = 5;
  text.TextRecordWrite(1, first);
  const TextObject before1 = Stored(1), before2 = Stored(2);

  model.SetValue(form.chkOperateOnAllTexts(), 1);
  model.SetValue(c.chkFlashText, 1, Origin::Widget);

  for (std::int32_t i : {1, 2}) {
    const TextObject& before = i == 1 ? before1 : before2;
    EXPECT_TRUE(Stored(i).FlashText) << i;
    EXPECT_EQ(Stored(i).Index, i);
    EXPECT_EQ(Stored(i).Left, before.Left) << i;
    EXPECT_EQ(Stored(i).Top, before.Top) << i;
    EXPECT_EQ(Stored(i).Right, before.Right) << i;
    EXPECT_EQ(Stored(i).Bottom, before.Bottom) << i;
    EXPECT_EQ(Stored(i).Counter.Value, before.Counter.Value) << i;
  }
}

TEST_F(MainFormTest, LockRefusesAddAndCloneWithTheMessageAndRemoveDoesNothing) {
  form.AddText();
  model.SetValue(form.chkLockTextUpdate(), 1, Origin::Widget);
  ASSERT_TRUE(text.IsLocked());

  EXPECT_EQ(form.AddText(), 0);
  form.CloneText();
  ASSERT_EQ(msg.shown.size(), 2u);
  EXPECT_EQ(msg.shown[0], "Text Objects cannot be Added/ Cloned while Output is Locked.");
  EXPECT_EQ(msg.shown[1], msg.shown[0]);
  form.RemoveText();
  EXPECT_EQ(text.PreviewGetTextCount(), 1);

  // Edits under the lock reach the output only at unlock.
  model.SetValue(c.chkFlashText, 1, Origin::Widget);
  EXPECT_FALSE(text.Live()[0].FlashText);
  model.SetValue(form.chkLockTextUpdate(), 0, Origin::Widget);
  EXPECT_TRUE(text.Live()[0].FlashText);
}

TEST_F(MainFormTest, RemovingShiftsLabelsAndTheLastRemovalEmptiesTheList) {
  form.AddText(100, 100);
  form.AddText(200, 200);
  form.AddText(300, 300);
  const std::int32_t thirdLeft = Stored(3).Left;
  form.SelectText(2);
  form.RemoveText();
  ASSERT_EQ(text.PreviewGetTextCount(), 2);
  EXPECT_EQ(model.Resolve("frmMain", "2Text")->Left, thirdLeft);
  EXPECT_FALSE(model.Resolve("frmMain", "3Text"));
  EXPECT_EQ(form.getSelectedTextIndex(), 2);

  form.RemoveText();
  form.RemoveText();
  EXPECT_EQ(text.PreviewGetTextCount(), 0);
  EXPECT_FALSE(model.Resolve("frmMain", "1Text"));
  EXPECT_EQ(form.getSelectedTextIndex(), 0);
  form.RemoveText();  // nothing left: nothing happens
  EXPECT_TRUE(model.Resolve("frmMain", "0Text"));  // the template stays
}

TEST_F(MainFormTest, ACloneStartsWithItsSourcesCurrentCounterValue) {
  form.AddText(100, 100);
  TextObject running = text.TextRecordRead(1);
  running.Counter.Value = 321;
  running.CurrentText = "321";
  text.TextRecordWrite(1, running);

  form.CloneText();
  ASSERT_EQ(text.PreviewGetTextCount(), 2);
  EXPECT_EQ(Stored(2).Counter.Value, 321);
  EXPECT_EQ(Stored(2).CurrentText, "321");
  EXPECT_EQ(Stored(2).Index, 2);
  EXPECT_GT(Stored(2).Left, Stored(1).Left);  // offset from the source
  EXPECT_EQ(form.getSelectedTextIndex(), 2);
}

TEST_F(MainFormTest, CustomTextIsSplitIntoLinesAndWordsPerRowIsNeverZero) {
  form.AddText();
  model.SetText(c.cboTextType, "CustomInput", Origin::Widget);
  model.SetValue(c.chkEditorSplitLines, 1, Origin::Widget);
  model.SetText(c.txtEditor, "one\r\ntwo\nthree", Origin::Widget);
  EXPECT_EQ(Stored(1).WordCount, 3);
  EXPECT_EQ(Stored(1).Words[2], "three");
  EXPECT_EQ(Stored(1).EditorText, "one\r\ntwo\nthree");

  model.SetValue(c.chkEditorSplitLines, 0, Origin::Widget);
  EXPECT_EQ(Stored(1).WordCount, 1);
  EXPECT_EQ(Stored(1).Words[0], "one\r\ntwo\nthree");

  model.SetText(c.cboWordsPerRow, "0", Origin::Widget);
  EXPECT_EQ(Stored(1).WordsPerRow, 1);
}

TEST_F(MainFormTest, SplitMakesOneTextPerCharacterAfterAskingAndRemovesTheSource) {
  form.AddText(100, 100);
  text.PreviewSetTextCounter(1, "Aé1");
  msg.answers.push_back(MsgBox::No);
  form.SplitText();
  EXPECT_EQ(text.PreviewGetTextCount(), 1);

  form.SplitText();  // answered Yes
  EXPECT_EQ(msg.shown.back(), "Do you really want to split the selected Text into single Characters?");
  ASSERT_EQ(text.PreviewGetTextCount(), 3);
  EXPECT_EQ(text.PreviewGetCurrentText(1), "A");
  EXPECT_EQ(text.PreviewGetCurrentText(2), "é");
  EXPECT_EQ(text.PreviewGetCurrentText(3), "1");
  EXPECT_EQ(Stored(2).Counter.MaxDigits, 1);
  EXPECT_LT(Stored(1).Left, Stored(2).Left);
  EXPECT_LT(Stored(2).Left, Stored(3).Left);
  EXPECT_EQ(form.getSelectedTextIndex(), 1);
}

TEST_F(MainFormTest, ZOrderMovesTheLabelsWithTheTexts) {
  form.AddText(100, 100);
  form.AddText(500, 100);
  const std::int32_t firstLeft = Stored(1).Left;
  form.TextZOrder(1, /*toBack=*/false);
  EXPECT_EQ(Stored(2).Left, firstLeft);
  EXPECT_EQ(model.Resolve("frmMain", "2Text")->Left, firstLeft);
  EXPECT_EQ(form.getSelectedTextIndex(), 2);
}

TEST_F(MainFormTest, TimerDefaultsCharacterSetsAndAllTextButtons) {
  form.AddText();
  model.SetValue(c.SliderSelfTime, 900);
  model.Press(c.cmdTimerDefault, Origin::Midi);  // keeps 900, sets the defaults
  EXPECT_EQ(Stored(1).SelfTime, 500);
  EXPECT_EQ(ControlModel::Value(c.SliderSequenceTimer), 125);
  model.Press(c.cmdTimerDefault, Origin::Midi);  // brings 900 back
  EXPECT_EQ(Stored(1).SelfTime, 900);

  model.SetText(c.cboTextType, "CustomInput");
  model.SetValue(c.chkEditorSplitLines, 1);
  model.SetValue(c.chkEditorCharacterLines, 1);
  model.Press(c.cmdEditorNumbers);
  EXPECT_EQ(Stored(1).WordCount, 10);  // one digit a line, each a word of the feed
  EXPECT_EQ(Stored(1).Words[9], "9");

  form.AddText();
  model.SetValue(c.SliderRandomizeColor, 30);
  model.Press(c.cmdRandomizeOff);
  EXPECT_EQ(Stored(2).RandomizeColor, 0);
  EXPECT_EQ(ControlModel::Value(c.SliderRandomizeColor), 0);  // the controls show it
  model.Press(c.cmdFlashAll);
  EXPECT_TRUE(Stored(1).FlashText);
  EXPECT_TRUE(Stored(2).FlashText);
  EXPECT_EQ(ControlModel::Value(c.chkFlashText), 1);
}

}  // namespace
}  // namespace lumivane
