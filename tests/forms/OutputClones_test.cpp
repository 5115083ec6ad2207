#include "forms/OutputClones.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "forms/OutputConfigurationForm.h"

namespace lumivane {
namespace {

std::string Rect(int x, int y, int w, int h) {
  return std::to_string(x) + "," + std::to_string(y) + " " + std::to_string(w) + "x" + std::to_string(h);
}

// Logs what the clones ask of their windows, each line prefixed with the window's number.
struct FakeCloneWindow final : CloneWindow {
  std::vector<std::string>& log;
  int id;
  bool visible = false, failDraw = false;
  FakeCloneWindow(std::vector<std::string>& l, int n) : log(l), id(n) {}
  void Log(const std::string& s) const { log.push_back(std::to_string(id) + " " + s); }
  void SetCloneRenderTargetIndex(int index) override { Log("index " + std::to_string(index)); }
  WindowRect Geometry() const override { return {}; }
  void SetGeometry(const WindowRect& r) override { Log("geometry " + Rect(r.left, r.top, r.width, r.height)); }
  void SetOuterSize(int w, int h) override { Log("size " + std::to_string(w) + "x" + std::to_string(h)); }
  bool IsVisible() const override { return visible; }
  void SetVisible(bool v) override { Log((visible = v) ? "show" : "hide"); }
  void SetFullScreen(bool on) override { Log(on ? "fullscreen" : "windowed"); }
  void SetAlwaysOnTop(bool on) override { Log(on ? "ontop" : "not ontop"); }
  void SetMirror(std::string_view x, std::string_view y) override {
    Log("mirror '" + std::string(x) + "' '" + std::string(y) + "'");
  }
  WindowRect Monitor() const override { return {1920, 0, 1280, 1024}; }
  void Draw(const BlitSource& s, int identify) override {
    if (failDraw) throw std::runtime_error("context lost");
    Log("draw " + Rect(s.x, s.y, s.width, s.height) + " #" + std::to_string(identify));
  }
  void Unload() override { Log("unload"); }
};

class OutputClonesTest : public ::testing::Test {
 protected:
  std::vector<std::string> log;
  std::vector<FakeCloneWindow*> windows;
  std::vector<std::string> loaded, saved, failures;
  int yields = 0;
  ControlModel model;
  OutputConfigurationForm form{model};
  OutputClones clones{form};
  const OutputConfigurationForm::OutputControls& c = form.Controls();

  void SetUp() override {
    clones.ApplicationFolder = "/data/lumivane";
    clones.CreateCloneWindow = [this] {
      auto w = std::make_unique<FakeCloneWindow>(log, static_cast<int>(windows.size()) + 1);
      windows.push_back(w.get());
      return w;
    };
    clones.Yield = [this] { ++yields; };
    clones.LoadPositions = [this](const std::string& path) { loaded.push_back(path); };
    clones.SavePositions = [this](const std::string& path) {
      saved.push_back(path);
      log.push_back("save");
    };
    clones.ReportFailure = [this](const std::string& f) { failures.push_back(f); };
  }
  std::vector<std::string> Rows() const {
    std::vector<std::string> rows;
    for (const ListItem& item : c.ListOutputs->ListItems) rows.push_back(item.Text);
    return rows;
  }
  void Start(const std::string& outputs) {
    model.SetText(c.cboOutputCount, outputs);
    clones.CloneRenderInitialize(800, 600);
    log.clear();
  }
};

TEST_F(OutputClonesTest, OneOutputMakesNoClonesAndLeavesThePositionFileUnread) {
  EXPECT_EQ(ControlModel::Text(c.cboOutputCount), "1");
  EXPECT_EQ(c.cboOutputCount->Items.size(), 8u);
  clones.CloneRenderInitialize(800, 600);
  EXPECT_EQ(clones.CloneCount(), 0);
  EXPECT_TRUE(windows.empty());
  EXPECT_TRUE(loaded.empty());
  EXPECT_EQ(Rows(), (std::vector<std::string>{"Output\tX\tY", "------\t--\t--", "Main\t \t "}));
}

TEST_F(OutputClonesTest, EachCloneIsNumberedSizedShownAndListedThenPositionsAreLoaded) {
  model.SetText(c.cboOutputCount, "3");
  clones.CloneRenderInitialize(800, 600);
  ASSERT_EQ(clones.CloneCount(), 2);
  EXPECT_EQ(log, (std::vector<std::string>{"1 index 1", "1 size 800x600", "1 show", "2 index 2", "2 size 800x600",
                                           "2 show"}));
  EXPECT_EQ(yields, 2);
  EXPECT_EQ(Rows(),
            (std::vector<std::string>{"Output\tX\tY", "------\t--\t--", "Main\t \t ", "1# \t \t ", "2# \t \t "}));
  EXPECT_EQ(loaded, (std::vector<std::string>{"/data/lumivane/LastOutputPosition.LMVNUIP"}));

  // Playing again starts from scratch: the old clones go, the list is not doubled.
  log.clear();
  model.SetText(c.cboOutputCount, "2");
  clones.CloneRenderInitialize(640, 480);
  EXPECT_EQ(clones.CloneCount(), 1);
  EXPECT_EQ(log.front(), "1 unload");
  EXPECT_EQ(log.back(), "3 show");
  EXPECT_EQ(Rows().size(), 4u);
}

TEST_F(OutputClonesTest, GetSetupReadsOnlyCloneRows) {
  int index = 7;
  std::string x = "junk", y = "junk";
  for (const char* row : {"Output\tX\tY", "------\t--\t--", "Main\t \t ", "1 \tX\tY", "0# \tX\tY", "", "#\tX\tY"}) {
    EXPECT_FALSE(OutputConfigurationForm::GetSetup(row, index, x, y)) << row;
    EXPECT_EQ(index, 0) << row;
    EXPECT_EQ(x + y, "") << row;
  }
  EXPECT_TRUE(OutputConfigurationForm::GetSetup("2# \tX\tY", index, x, y));
  EXPECT_EQ(index, 2);
  EXPECT_EQ(x, "X");
  EXPECT_EQ(y, "Y");
  EXPECT_TRUE(OutputConfigurationForm::GetSetup("3# \t \t ", index, x, y));
  EXPECT_EQ(index, 3);
  EXPECT_EQ(x + y, "");
  EXPECT_EQ(OutputConfigurationForm::SetupRow(4, "X", ""), "4# \tX\t");
}

TEST_F(OutputClonesTest, MirrorTogglesTheSelectedCloneAndRewritesItsRow) {
  Start("3");
  form.Mirror("X");                    // nothing selected
  model.SelectItem(c.ListOutputs, 3);  // "Main"
  model.Press(c.cmdX, Origin::Widget);
  EXPECT_TRUE(log.empty());

  form.SelectOutput(2);
  EXPECT_EQ(c.ListOutputs->SelectedItem, 5);
  model.Press(c.cmdX, Origin::Widget);
  EXPECT_EQ(Rows()[4], "2# \tX\t");
  model.Press(c.cmdY, Origin::Midi);
  EXPECT_EQ(Rows()[4], "2# \tX\tY");
  EXPECT_EQ(clones.Clones(2)->MirrorX, "X");
  EXPECT_EQ(clones.Clones(2)->MirrorY, "Y");
  model.Press(c.cmdX, Origin::Widget);
  EXPECT_EQ(Rows()[4], "2# \t\tY");
  EXPECT_EQ(c.ListOutputs->SelectedItem, 5);  // the rewritten row stays selected
  EXPECT_EQ(log, (std::vector<std::string>{"2 mirror 'X' ''", "2 mirror 'X' 'Y'", "2 mirror '' 'Y'"}));
  EXPECT_EQ(Rows()[3], "1# \t \t ");
  EXPECT_EQ(clones.Clones(1)->MirrorX, "");
}

TEST_F(OutputClonesTest, RenderDrawsEachCloneMirroredAndNumberedWhileIdentifying) {
  Start("3");
  clones.CloneSetup(2, "X", "Y");
  log.clear();
  clones.CloneRender(1280, 720);
  EXPECT_EQ(log, (std::vector<std::string>{"1 draw 0,0 1280x720 #-1", "2 draw 1279,719 -1280x-720 #-1"}));
  EXPECT_EQ(clones.MainIdentifyNumber(), -1);

  model.SetValue(c.chkIdentify, 1);
  log.clear();
  clones.CloneRender(1280, 720);
  EXPECT_EQ(log, (std::vector<std::string>{"1 draw 0,0 1280x720 #1", "2 draw 1279,719 -1280x-720 #2"}));
  EXPECT_EQ(clones.MainIdentifyNumber(), 0);

  model.SetValue(c.chkIdentify, 0);
  log.clear();
  clones.CloneRender(1280, 720);
  EXPECT_EQ(log.back(), "2 draw 1279,719 -1280x-720 #-1");
}

TEST_F(OutputClonesTest, AFailingCloneIsSkippedAndTheOthersStillDraw) {
  Start("4");
  windows[1]->failDraw = true;
  clones.CloneRender(640, 480);
  EXPECT_EQ(log, (std::vector<std::string>{"1 draw 0,0 640x480 #-1", "3 draw 0,0 640x480 #-1"}));
  ASSERT_EQ(failures.size(), 1u);
  EXPECT_NE(failures[0].find("Clone 2"), std::string::npos);

  // A window that could not be made keeps its number and is left out of every step.
  int made = 0;
  clones.CreateCloneWindow = [&]() -> std::unique_ptr<CloneWindow> {
    if (++made == 1) return nullptr;
    return std::make_unique<FakeCloneWindow>(log, 10 + made);
  };
  Start("3");
  clones.CloneRender(640, 480);
  clones.CloneSetup(1, "X", "");
  EXPECT_EQ(log, (std::vector<std::string>{"12 draw 0,0 640x480 #-1"}));
  EXPECT_EQ(Rows().back(), "2# \t \t ");
}

TEST_F(OutputClonesTest, DestroySavesFirstThenUnloadsAndEmptiesTheList) {
  Start("3");
  clones.CloneDestroy();
  EXPECT_EQ(saved, (std::vector<std::string>{"/data/lumivane/LastOutputPosition.LMVNUIP"}));
  EXPECT_EQ(log, (std::vector<std::string>{"save", "1 unload", "2 unload"}));
  EXPECT_EQ(clones.CloneCount(), 0);
  EXPECT_EQ(clones.Clones(1), nullptr);
  EXPECT_TRUE(Rows().empty());
}

TEST_F(OutputClonesTest, AStopWhileTheClonesOpenEndsTheBuildQuietly) {
  model.SetText(c.cboOutputCount, "4");
  clones.Yield = [this] {
    if (++yields == 1) clones.CloneDestroy();
  };
  clones.CloneRenderInitialize(800, 600);
  EXPECT_EQ(clones.CloneCount(), 0);
  EXPECT_TRUE(Rows().empty());
  EXPECT_TRUE(loaded.empty());
}

TEST_F(OutputClonesTest, ResolutionFillsOrCentresOnEachClonesMonitor) {
  Start("2");
  clones.CloneResolution(true);
  EXPECT_EQ(log, (std::vector<std::string>{"1 geometry 1920,0 1280x1024", "1 fullscreen"}));

  log.clear();
  clones.MainOutputGeometry = [] { return WindowRect{0, 0, 808, 630}; };
  clones.CloneResolution(false);
  EXPECT_EQ(log, (std::vector<std::string>{"1 windowed", "1 geometry 2156,197 808x630"}));

  log.clear();
  clones.CloneSetTopMostWindow(true);
  EXPECT_EQ(log, (std::vector<std::string>{"1 ontop"}));
}

TEST(IdentifyFontSize, GrowsInFiftiesWhileTheNextSizeFits) {
  auto square = [](int size) { return std::pair{size, size}; };
  EXPECT_EQ(IdentifyFontSize(230, 1000, square), 200);
  EXPECT_EQ(IdentifyFontSize(1000, 250, square), 250);
  EXPECT_EQ(IdentifyFontSize(20, 20, square), 50);  // never below the start, even when it does not fit
  EXPECT_EQ(IdentifyFontSize(10, 10, [](int) { return std::pair{0, 0}; }), 100000);  // and never endless
}

}  // namespace
}  // namespace lumivane
