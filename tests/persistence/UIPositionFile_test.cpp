#include "persistence/UIPositionFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "forms/OutputClones.h"
#include "forms/OutputConfigurationForm.h"

namespace lumivane {
namespace {

namespace fs = std::filesystem;

void WriteFile(const fs::path& p, const std::string& text) { std::ofstream(p, std::ios::binary) << text; }

std::string ReadAll(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// A clone window that only remembers where it is and how it is mirrored.
struct PlacedWindow final : CloneWindow {
  WindowRect geometry{0, 0, 800, 600};
  bool visible = false;
  std::string mirrorX, mirrorY;
  int moves = 0;
  void SetCloneRenderTargetIndex(int) override {}
  WindowRect Geometry() const override { return geometry; }
  void SetGeometry(const WindowRect& r) override {
    geometry = r;
    ++moves;
  }
  void SetOuterSize(int w, int h) override {
    geometry.width = w;
    geometry.height = h;
  }
  bool IsVisible() const override { return visible; }
  void SetVisible(bool v) override { visible = v; }
  void SetFullScreen(bool) override {}
  void SetAlwaysOnTop(bool) override {}
  void SetMirror(std::string_view x, std::string_view y) override {
    mirrorX = x;
    mirrorY = y;
  }
  WindowRect Monitor() const override { return {}; }
  void Draw(const BlitSource&, int) override {}
  void Unload() override {}
};

class UIPositionFileTest : public ::testing::Test {
 protected:
  fs::path dir = fs::path(::testing::TempDir()) /
                 (std::string("lumivane_uip_") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
  fs::path file = dir / "LastOutputPosition.LMVNUIP";
  ControlModel model;
  OutputConfigurationForm form{model};
  OutputClones clones{form};
  std::vector<PlacedWindow*> windows;

  void SetUp() override {
    fs::remove_all(dir);
    fs::create_directories(dir);
    clones.ApplicationFolder = dir.string();
    clones.CreateCloneWindow = [this] {
      auto w = std::make_unique<PlacedWindow>();
      windows.push_back(w.get());
      return w;
    };
    ConnectClonePositions(clones);
  }
  void TearDown() override { fs::remove_all(dir); }
  void Start(const std::string& outputs) {
    windows.clear();
    model.SetText(form.Controls().cboOutputCount, outputs);
    clones.CloneRenderInitialize(800, 600);
  }
  std::string Row(int row) const {
    return form.Controls().ListOutputs->ListItems.at(static_cast<std::size_t>(row - 1)).Text;
  }
};

TEST_F(UIPositionFileTest, RecordsRoundTripAndOnlyTheCloneVariantCarriesTheCloneFields) {
  const UIPositionList records = {{"frmDisplay", 10, -1920, 1280, 720, true, 1, "X", ""},
                                  {"frmDisplay", 0, 1920, 800, 600, false, 2, "", "Y"}};
  std::string error;
  ASSERT_TRUE(UIPositionWrite(file.string(), records, true, error)) << error;
  EXPECT_EQ(UIPositionRead(file.string()), records);
  EXPECT_EQ(UIPositionCount(file.string()), 2);
  const std::string text = ReadAll(file);
  EXPECT_NE(text.find("<UIPosition>"), std::string::npos);
  EXPECT_NE(text.find("<CloneRenderTargetIndex>2</CloneRenderTargetIndex>"), std::string::npos);
  EXPECT_NE(text.find("<Left>-1920</Left>"), std::string::npos);

  ASSERT_TRUE(UIPositionWrite(file.string(), records, false, error)) << error;
  const std::string plain = ReadAll(file);
  EXPECT_EQ(plain.find("CloneRenderTargetIndex"), std::string::npos);
  EXPECT_EQ(plain.find("Mirror"), std::string::npos);
  EXPECT_EQ(UIPositionRead(file.string())[0].CloneRenderTargetIndex, 0);
}

TEST_F(UIPositionFileTest, UnreadableFilesReadAsEmptyAndBadFormsAreLeftOut) {
  EXPECT_TRUE(UIPositionRead((dir / "missing.LMVNUIP").string()).empty());
  EXPECT_EQ(UIPositionCount((dir / "missing.LMVNUIP").string()), 0);
  const std::string broken[] = {"<UIPosition><Form><Top>1</Top>", "", "<File><Form/></File>",
                                std::string("<UIPosition>\0<Form/></UIPosition>", 33)};
  for (const std::string& text : broken) {
    WriteFile(file, text);
    EXPECT_TRUE(UIPositionRead(file.string()).empty()) << text;
    EXPECT_EQ(UIPositionCount(file.string()), 0) << text;
  }
  // The count is of the nodes; reading leaves out a Form that cannot place a window.
  WriteFile(file,
            "<UIPosition><Form><Name>a</Name><Top>1</Top><Left>2</Left><Width>3</Width><Height>4</Height></Form>"
            "<Form><Name>b</Name><Top>x</Top><Left>2</Left><Width>3</Width><Height>4</Height></Form>"
            "<Form><Name>c</Name><Top>1</Top><Left>2</Left><Width>0</Width><Height>4</Height></Form></UIPosition>");
  EXPECT_EQ(UIPositionCount(file.string()), 3);
  const UIPositionList read = UIPositionRead(file.string());
  ASSERT_EQ(read.size(), 1u);
  EXPECT_EQ(read[0].Name, "a");
  EXPECT_TRUE(read[0].Visible);  // no Visible: shown
}

TEST_F(UIPositionFileTest, LoadMovesTheWindowsTheFileNamesOnceAndIgnoresUnknownNames) {
  struct Windows final : UIPositionWindows {
    std::vector<std::string> applied;
    UIPositionList Positions(bool) const override { return {}; }
    bool Apply(const UIPositionRecord& r, bool) override {
      if (r.Name != "frmMain") return false;
      applied.push_back(r.Name + " " + std::to_string(r.Left));
      return true;
    }
  } windows;
  const UIPositionList records = {{"frmMain", 0, 5, 10, 10, true, 0, "", ""},
                                  {"frmGone", 0, 6, 10, 10, true, 0, "", ""},
                                  {"frmMain", 0, 7, 10, 10, true, 0, "", ""}};
  std::string error;
  ASSERT_TRUE(UIPositionWrite(file.string(), records, false, error)) << error;
  UIPositionLoad(file.string(), false, windows);
  EXPECT_EQ(windows.applied, (std::vector<std::string>{"frmMain 5"}));
}

TEST_F(UIPositionFileTest, ClonePositionsAndMirrorsComeBackToTheCloneOfTheSameNumber) {
  Start("3");
  windows[0]->geometry = {100, 50, 640, 480};
  windows[0]->visible = true;
  windows[1]->geometry = {2000, 10, 1280, 720};
  windows[1]->visible = false;
  clones.CloneSetup(2, "X", "Y");
  clones.CloneDestroy();
  EXPECT_EQ(form.Controls().ListOutputs->ListItems.size(), 0u);
  ASSERT_EQ(UIPositionCount(file.string()), 2);

  // The file's order is not the clones' order: a record goes to the clone it names.
  UIPositionList records = UIPositionRead(file.string());
  std::swap(records[0], records[1]);
  records.push_back({"frmDisplay", 1, 1, 50, 50, true, 9, "X", ""});  // no such clone: ignored
  std::string error;
  ASSERT_TRUE(UIPositionWrite(file.string(), records, true, error)) << error;

  Start("3");
  ASSERT_EQ(windows.size(), 2u);
  EXPECT_EQ(windows[0]->geometry, (WindowRect{100, 50, 640, 480}));
  EXPECT_TRUE(windows[0]->visible);
  EXPECT_EQ(windows[0]->mirrorX + windows[0]->mirrorY, "");
  EXPECT_EQ(windows[1]->geometry, (WindowRect{2000, 10, 1280, 720}));
  EXPECT_FALSE(windows[1]->visible);
  EXPECT_EQ(windows[1]->mirrorX, "X");
  EXPECT_EQ(clones.Clones(2)->MirrorY, "Y");
  EXPECT_EQ(Row(5), "2# \tX\tY");
  EXPECT_EQ(Row(4), "1# \t\t");
}

TEST_F(UIPositionFileTest, AMissingOrBrokenPositionFileChangesNothing) {
  Start("2");
  EXPECT_EQ(windows[0]->moves, 0);
  WriteFile(file, "<UIPosition><Form><CloneRenderTargetIndex>1</CloneRenderTargetIndex><Top>5");
  Start("2");
  EXPECT_EQ(windows[0]->moves, 0);
  EXPECT_EQ(windows[0]->geometry, (WindowRect{0, 0, 800, 600}));
  EXPECT_EQ(Row(4), "1# \t \t ");
}

TEST_F(UIPositionFileTest, TheStartCountIsTheNumberOfSavedClonesAndOneWithoutAFile) {
  InitializeOutputCount(form, dir.string());
  EXPECT_EQ(ControlModel::Text(form.Controls().cboOutputCount), "1");
  Start("4");
  clones.CloneDestroy();
  model.SetText(form.Controls().cboOutputCount, "8");
  InitializeOutputCount(form, dir.string());
  EXPECT_EQ(ControlModel::Text(form.Controls().cboOutputCount), "3");
}

}  // namespace
}  // namespace lumivane
