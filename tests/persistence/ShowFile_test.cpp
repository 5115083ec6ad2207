#include "persistence/ShowFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "forms/MainForm.h"
#include "persistence/XmlDocument.h"
#include "support/EngineFixture.h"
#include "support/FakeMsgBox.h"

namespace lumivane {
namespace {

namespace fs = std::filesystem;

class ShowFileTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  fs::path dir = fs::path(::testing::TempDir()) /
                 (std::string("lumivane_show_") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
  ControlModel model;
  test::FakeMsgBox msg;
  MainForm form{model, text, msg};
  ShowFile show{form};
  std::string error;

  void SetUp() override { fs::create_directories(dir); }
  void TearDown() override { fs::remove_all(dir); }
  std::string Write(const std::string& name, const std::string& content) {
    const fs::path p = dir / name;
    std::ofstream(p, std::ios::binary) << content;
    return p.string();
  }
  static std::string Node(const XmlDocument& doc, const char* path) {
    std::ostringstream out;
    doc.Root().first_element_by_path(path).print(out);
    return out.str();
  }
};

TEST_F(ShowFileTest, ASavedShowLoadsBackWithItsTextsAndSettings) {
  form.AddText(100, 100);
  form.AddText(300, 200);
  model.SetText(form.Controls().cboTextType, "CustomInput");
  model.SetText(form.Controls().txtEditor, "hello");
  model.SetText(form.Playback().cboResolution, "1920x1080");
  model.SetBackColor(form.BackgroundColor, 0x00203040);
  const std::vector<TextObject> before = text.Current();
  const std::string path = (dir / "show.xml").string();
  ASSERT_TRUE(show.EngineFileSave(path, error)) << error;

  form.ResetTexts();
  model.SetText(form.Playback().cboResolution, "640x480");
  model.SetBackColor(form.BackgroundColor, 0);
  ASSERT_TRUE(show.EngineFileLoad(path, error)) << error;
  ASSERT_EQ(text.PreviewGetTextCount(), 2);
  EXPECT_EQ(text.Current()[1].Words[0], "hello");
  EXPECT_EQ(text.Current()[1].EditorText, "hello");
  EXPECT_EQ(text.Current()[0].Left, before[0].Left);
  EXPECT_EQ(text.Current()[1].Bottom, before[1].Bottom);
  EXPECT_EQ(ControlModel::Text(form.Playback().cboResolution), "1920x1080");
  EXPECT_EQ(ControlModel::BackColor(form.BackgroundColor), 0x00203040);
  EXPECT_TRUE(model.Resolve("frmMain", "2Text"));  // the markers are back
  EXPECT_EQ(form.getSelectedTextIndex(), 1);
}

TEST_F(ShowFileTest, BlocksThisBuildDoesNotReadSurviveASave) {
  const std::string path = Write("foreign.xml", R"(<?xml version="1.0"?>
<File>
  <Header><ApplicationName>Lumivane</ApplicationName></Header>
  <Global><Resolution>1024x768</Resolution><RecordFramesPerSecond>25</RecordFramesPerSecond>
    <Backgrounds><BackgroundCount>1</BackgroundCount><1Background>C:\shows\bg.jpg</1Background></Backgrounds>
    <BackGroundColor>255</BackGroundColor><FadeOut>3</FadeOut></Global>
  <Text><TextCount>0</TextCount></Text>
  <Future><Thing a="1">kept &amp; sound</Thing></Future>
  <Controllers><Global><Device>MIDI 1</Device></Global><1Controller><TargetForm>frmMain</TargetForm></1Controller></Controllers>
  <AnimatedControls><AnimatedControlCount>0</AnimatedControlCount></AnimatedControls>
</File>)");
  ASSERT_TRUE(show.EngineFileLoad(path, error)) << error;
  const std::string saved = (dir / "saved.xml").string();
  ASSERT_TRUE(show.EngineFileSave(saved, error)) << error;

  XmlDocument original, written;
  ASSERT_TRUE(original.Open(path, error));
  ASSERT_TRUE(written.Open(saved, error)) << error;
  for (const char* block : {"Controllers", "AnimatedControls", "Future", "Global/Backgrounds",
                            "Global/RecordFramesPerSecond", "Global/FadeOut", "Global/BackGroundColor"})
    EXPECT_EQ(Node(written, block), Node(original, block)) << block;
  // In the format's order: the known blocks first, then what no version of it names.
  std::vector<std::string> order;
  for (pugi::xml_node n = written.Root().first_child(); n; n = n.next_sibling()) order.push_back(n.name());
  EXPECT_EQ(order, (std::vector<std::string>{"Header", "Global", "Text", "Controllers", "AnimatedControls", "Future"}));
}

TEST_F(ShowFileTest, ABadFileChangesNothingInMemory) {
  form.AddText(100, 100);
  const std::vector<TextObject> before = text.Current();
  for (const std::string& bad :
       {std::string("<File><Text>"), std::string("<NotAShow/>"), std::string(""), std::string("\x89PNG\r\n\x1a\n\0\0", 10)}) {
    EXPECT_FALSE(show.EngineFileLoad(Write("bad.xml", bad), error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(text.Current(), before);
  }
  EXPECT_FALSE(show.EngineFileLoad((dir / "missing.xml").string(), error));
  EXPECT_EQ(text.PreviewGetTextCount(), 1);
}

TEST_F(ShowFileTest, ALoadUnderTheLockReplacesOnlyTheLockedCopy) {
  form.AddText(100, 100);
  const std::string path = Write("two.xml",
                                 "<File><Text><TextCount>2</TextCount><1Text><SelfTime>1</SelfTime></1Text>"
                                 "<2Text><SelfTime>2</SelfTime></2Text></Text></File>");
  model.SetValue(form.chkLockTextUpdate(), 1);
  ASSERT_TRUE(show.EngineFileLoad(path, error)) << error;
  EXPECT_EQ(text.RenderGetTextCount(), 1);  // the output shows what it showed
  EXPECT_EQ(text.PreviewGetTextCount(), 2);
  model.SetValue(form.chkLockTextUpdate(), 0);
  EXPECT_EQ(text.RenderGetTextCount(), 2);
}

}  // namespace
}  // namespace lumivane
