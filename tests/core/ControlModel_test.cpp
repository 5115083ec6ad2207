#include "core/ControlModel.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "core/DriveRules.h"

namespace lumivane {
namespace {

TEST(ControlNames, ArrayMembersAreStoredAsIndexFollowedByName) {
  EXPECT_EQ(FormatControlName("Text", 3), "3Text");
  EXPECT_EQ(FormatControlName("Text", 0), "0Text");
  EXPECT_EQ(FormatControlName("SliderSelfTime", kNoIndex), "SliderSelfTime");

  EXPECT_TRUE(ControlNameMatches("3Text", "Text", 3));
  EXPECT_TRUE(ControlNameMatches("12Text", "Text", 12));
  EXPECT_TRUE(ControlNameMatches("Text", "Text", 3));  // an array member answers its plain name too
  EXPECT_FALSE(ControlNameMatches("13Text", "Text", 3));
  EXPECT_FALSE(ControlNameMatches("03Text", "Text", 3));
  EXPECT_FALSE(ControlNameMatches("+3Text", "Text", 3));
  EXPECT_FALSE(ControlNameMatches("3Text", "Text", kNoIndex));  // no index, no indexed name
  EXPECT_FALSE(ControlNameMatches("3text", "Text", 3));         // names are case-sensitive
  EXPECT_FALSE(ControlNameMatches("3Tex", "Text", 3));
  EXPECT_FALSE(ControlNameMatches("Text3", "Text", 3));
}

class ControlModelTest : public ::testing::Test {
 protected:
  ControlModel model;
};

TEST_F(ControlModelTest, ResolvesArrayMembersByStoredNameAndPlainNameByFirstRegistered) {
  ControlHandle t1 = model.Add("frmMain", ControlKind::Label, "Text", 1);
  ControlHandle t3 = model.Add("frmMain", ControlKind::Label, "Text", 3);
  ControlHandle other = model.Add("frmVideo", ControlKind::Label, "Text", 3);

  EXPECT_EQ(model.Resolve("frmMain", "3Text"), t3);
  EXPECT_EQ(model.Resolve("frmMain", "1Text"), t1);
  EXPECT_EQ(model.Resolve("frmVideo", "3Text"), other);
  EXPECT_EQ(model.Resolve("frmMain", "Text"), t1);  // the first member of the array
  EXPECT_FALSE(model.Resolve("frmMain", "2Text"));
  EXPECT_FALSE(model.Resolve("frmMissing", "3Text"));
  EXPECT_EQ(t3->StoredName, "3Text");
  // Registering the same control twice answers the first.
  EXPECT_EQ(model.Add("frmMain", ControlKind::Label, "Text", 3), t3);
}

TEST_F(ControlModelTest, AnUnloadedControlsHandleStaysDeadEvenWhenItsSlotIsReused) {
  ControlHandle slider = model.Add("frmMain", ControlKind::Slider, "SliderRandomizeX");
  model.SetRange(slider, 0, 100);
  model.SetValue(slider, 40);
  const ControlHandle copy = slider;
  model.Remove(slider);

  EXPECT_FALSE(copy);
  EXPECT_EQ(ControlModel::Value(copy), 0);
  EXPECT_EQ(ControlModel::Text(copy), "");
  EXPECT_FALSE(model.SetValue(copy, 5));
  EXPECT_FALSE(model.Drive(copy, "5", Origin::Midi));
  EXPECT_FALSE(model.Resolve("frmMain", "SliderRandomizeX"));

  ControlHandle again = model.Add("frmMain", ControlKind::Slider, "SliderRandomizeX");
  EXPECT_TRUE(again);
  EXPECT_FALSE(copy);  // the old handle does not come back to life in the reused slot
  EXPECT_EQ(ControlModel::Value(again), 0);
}

TEST_F(ControlModelTest, AHandlerFiresExactlyOncePerChangeFromEveryKindOfWriter) {
  ControlHandle slider = model.Add("frmMain", ControlKind::Slider, "SliderRandomizeColor");
  model.SetRange(slider, 0, 255);
  int fired = 0;
  Origin lastOrigin = Origin::Program;
  model.OnChange(slider, [&](const ControlEvent& e) {
    ++fired;
    lastOrigin = e.origin;
    EXPECT_EQ(e.change, ChangeKind::Value);
  });

  int expected = 0;
  auto check = [&](bool wrote, Origin origin) {
    ASSERT_TRUE(wrote);
    EXPECT_EQ(fired, ++expected);
    EXPECT_EQ(lastOrigin, origin);
  };
  check(model.SetValue(slider, 10, Origin::Widget), Origin::Widget);
  check(model.SetValue(slider, 11, Origin::File), Origin::File);
  check(model.Drive(slider, "12", Origin::Midi), Origin::Midi);
  check(model.DriveNumber(slider, 13, Origin::Audio), Origin::Audio);
  check(model.Drive(slider, "14", Origin::Animation), Origin::Animation);
  check(model.Drive(slider, "15", Origin::Osc), Origin::Osc);
  check(model.SetValue(slider, 16, Origin::Headless), Origin::Headless);

  // The same value again is no change; out of range is refused; neither fires.
  EXPECT_TRUE(model.SetValue(slider, 16, Origin::Midi));
  EXPECT_FALSE(model.SetValue(slider, 256));
  EXPECT_FALSE(model.Drive(slider, "not a number", Origin::Osc));
  EXPECT_EQ(fired, expected);
  EXPECT_EQ(ControlModel::Value(slider), 16);
}

TEST_F(ControlModelTest, EchoIsGuarded) {
  ControlHandle a = model.Add("frmMain", ControlKind::Slider, "SliderSelfTime");
  ControlHandle b = model.Add("frmMain", ControlKind::TextBox, "txtSelfTime");
  model.SetRange(a, 0, 1000);

  // Two controls that follow each other settle instead of bouncing.
  int aFired = 0, bFired = 0;
  model.OnChange(a, [&](const ControlEvent&) {
    ++aFired;
    model.SetText(b, std::to_string(ControlModel::Value(a)));
  });
  model.OnChange(b, [&](const ControlEvent&) {
    ++bFired;
    model.SetValue(a, std::stoi(ControlModel::Text(b)));
  });
  model.SetValue(a, 300, Origin::Midi);
  EXPECT_EQ(ControlModel::Text(b), "300");
  EXPECT_EQ(aFired, 1);
  EXPECT_EQ(bFired, 1);

  // A handler that writes its own control lands the value without starting over.
  int selfFired = 0;
  ControlHandle c = model.Add("frmMain", ControlKind::CheckBox, "chkFlashText");
  model.OnChange(c, [&](const ControlEvent&) {
    ++selfFired;
    model.SetValue(c, ControlModel::Value(c) == 1 ? 0 : 1);
  });
  model.SetValue(c, 1);
  EXPECT_EQ(selfFired, 1);
  EXPECT_EQ(ControlModel::Value(c), 0);

  // A view is not told of its own write, but of everybody else's, properties included.
  int viewHeard = 0;
  ListenerId view = model.Observe(a, [&](const ControlEvent&) { ++viewHeard; });
  model.SetValue(a, 400, Origin::Widget, view);
  EXPECT_EQ(viewHeard, 0);
  model.SetValue(a, 500, Origin::Midi);
  model.SetEnabled(a, false);
  EXPECT_EQ(viewHeard, 2);
}

TEST_F(ControlModelTest, AFailingHandlerDoesNotSilenceTheOthers) {
  ControlHandle c = model.Add("frmMain", ControlKind::CheckBox, "chkClipText");
  int after = 0;
  std::vector<std::string> logged;
  model.SetFailureSink([&](const std::string& line) { logged.push_back(line); });
  model.OnChange(c, [](const ControlEvent&) { throw std::runtime_error("broken"); });
  model.OnChange(c, [&](const ControlEvent&) { ++after; });
  EXPECT_NO_THROW(model.SetValue(c, 1));
  EXPECT_EQ(after, 1);
  EXPECT_EQ(logged, (std::vector<std::string>{"change handler of frmMain.chkClipText failed: broken"}));
}

TEST_F(ControlModelTest, UndrivableNamesAndKindsAreRefused) {
  for (const char* name : {"cmdPlay", "CmdStop", "cboResolution", "cmdLockResolution", "optPreview8FPS",
                           "SliderFreeFrameQuality", "cmdFreeFrame", "chkLoop"}) {
    ControlHandle h = model.Add("frmMain", ControlKind::CommandButton, name);
    int pressed = 0;
    model.OnChange(h, [&](const ControlEvent&) { ++pressed; });
    EXPECT_FALSE(h->Drivable) << name;
    EXPECT_FALSE(model.Drive(h, "1", Origin::Midi)) << name;
    EXPECT_EQ(pressed, 0) << name;
    // The operator's own hand still works.
    EXPECT_TRUE(model.Press(h, Origin::Widget)) << name;
    EXPECT_EQ(pressed, 1) << name;
  }
  // A drivable name on a kind that is no controlled parameter is refused too.
  ControlHandle box = model.Add("frmMain", ControlKind::TextBox, "txtSelfTime");
  EXPECT_FALSE(box->Drivable);
  EXPECT_FALSE(model.Drive(box, "100", Origin::Animation));
  EXPECT_TRUE(model.Add("frmMain", ControlKind::Slider, "SliderSelfTime")->Drivable);
  // The list is taken as it stands, missing separators and all.
  EXPECT_TRUE(IsUndriveableControlName("cmdSetGuidePictureoptPreview4FPS"));
  EXPECT_FALSE(IsUndriveableControlName("cmdTimeShuffle"));
}

TEST_F(ControlModelTest, DrivingFollowsEachKindsRules) {
  // A slider with a selection range moves the selection start; a disabled slider keeps its value.
  ControlHandle slider = model.Add("frmParticles", ControlKind::Slider, "SliderPhaseSize");
  model.SetRange(slider, 0, 100);
  model.SetSelection(slider, true, 10, 30);
  EXPECT_TRUE(model.Drive(slider, "40", Origin::Midi));
  EXPECT_EQ(slider->SelStart, 40);
  EXPECT_EQ(slider->SelLength, 0);
  EXPECT_EQ(slider->Value, 40);
  model.SetEnabled(slider, false);
  EXPECT_FALSE(model.Drive(slider, "60", Origin::Midi));
  EXPECT_EQ(slider->SelStart, 60);
  EXPECT_EQ(slider->Value, 40);

  // A button fires only for a true value and only while enabled.
  ControlHandle button = model.Add("frmMain", ControlKind::CommandButton, "cmdTimeShuffle");
  int presses = 0;
  model.OnChange(button, [&](const ControlEvent& e) {
    EXPECT_EQ(e.change, ChangeKind::Press);
    ++presses;
  });
  EXPECT_TRUE(model.Drive(button, "1", Origin::Midi));
  EXPECT_FALSE(model.Drive(button, "0", Origin::Midi));
  model.SetEnabled(button, false);
  EXPECT_FALSE(model.Drive(button, "1", Origin::Midi));
  EXPECT_EQ(presses, 1);

  // A label moves to "left,top"; a list view selects one item only.
  ControlHandle label = model.Add("frmMain", ControlKind::Label, "Text", 2);
  EXPECT_TRUE(model.Drive(label, "120,-40", Origin::Animation));
  EXPECT_EQ(ControlModel::ValueText(label), "120,-40");
  EXPECT_FALSE(model.Drive(label, "120", Origin::Animation));

  ControlHandle list = model.Add("frmBackgrounds", ControlKind::ListView, "ListBackgrounds");
  model.SetListItems(list, {{"a", {}, true}, {"b", {}, false}, {"c", {}, true}});
  EXPECT_TRUE(model.Drive(list, "2", Origin::Midi));
  EXPECT_EQ(list->SelectedItem, 2);
  EXPECT_FALSE(list->ListItems[0].Selected);
  EXPECT_TRUE(list->ListItems[1].Selected);
  EXPECT_FALSE(list->ListItems[2].Selected);
  EXPECT_FALSE(model.Drive(list, "4", Origin::Midi));

  // A combo box takes any text and finds its item when there is one.
  ControlHandle combo = model.Add("frmMain", ControlKind::ComboBox, "cboAlignX");
  model.SetItems(combo, {"Centered", "Left Justify", "Right Justify"});
  EXPECT_TRUE(model.Drive(combo, "Right Justify", Origin::Animation));
  EXPECT_EQ(combo->ListIndex, 2);
  EXPECT_TRUE(model.Drive(combo, "Sideways", Origin::Animation));
  EXPECT_EQ(combo->ListIndex, -1);
  EXPECT_EQ(ControlModel::Text(combo), "Sideways");

  // Colours keep their bits whether written signed or unsigned.
  ControlHandle swatch = model.Add("frmMain", ControlKind::PictureBox, "picTextColor");
  EXPECT_TRUE(model.Drive(swatch, "16711680", Origin::Midi));
  EXPECT_EQ(ControlModel::BackColor(swatch), 0x00FF0000);
}

TEST_F(ControlModelTest, OptionButtonsOfAGroupAreExclusive) {
  ControlHandle four = model.Add("frmMain", ControlKind::OptionButton, "optPreview4FPS");
  ControlHandle eight = model.Add("frmMain", ControlKind::OptionButton, "optPreview8FPS");
  model.SetGroup(four, "preview");
  model.SetGroup(eight, "preview");
  int fourClicks = 0;
  model.OnChange(four, [&](const ControlEvent&) { ++fourClicks; });
  model.SetValue(four, 1);
  model.SetValue(eight, 1);
  EXPECT_EQ(ControlModel::Value(four), 0);
  EXPECT_EQ(ControlModel::Value(eight), 1);
  EXPECT_EQ(fourClicks, 1);  // dropping out is no click
}

TEST_F(ControlModelTest, TracksTheActiveFormAndControl) {
  ControlHandle a = model.Add("frmMain", ControlKind::Slider, "SliderRandomizeX");
  model.Add("frmVideo", ControlKind::Slider, "SliderVideoRate");
  model.SetFocus(a);
  EXPECT_EQ(model.ActiveControl(), a);
  EXPECT_EQ(model.ActiveForm(), "frmMain");
  model.SetActiveForm("frmVideo");
  EXPECT_FALSE(model.ActiveControl());
  EXPECT_EQ(model.ActiveForm(), "frmVideo");
  model.SetFocus(a);
  model.Remove(a);
  EXPECT_FALSE(model.ActiveControl());
}

TEST_F(ControlModelTest, AHandlerMayUnloadItsOwnControl) {
  ControlHandle c = model.Add("frmMain", ControlKind::CheckBox, "chkSequenceText");
  int second = 0;
  model.OnChange(c, [&](const ControlEvent& e) { model.Remove(e.control); });
  model.OnChange(c, [&](const ControlEvent&) { ++second; });
  model.SetValue(c, 1);
  EXPECT_FALSE(c);
  EXPECT_EQ(second, 0);
  ControlHandle reused = model.Add("frmMain", ControlKind::CheckBox, "chkSequenceText");
  EXPECT_TRUE(model.SetValue(reused, 1));
}

}  // namespace
}  // namespace lumivane
