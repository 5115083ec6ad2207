#include "app/Options.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include <QImage>

#include "app/HeadlessRunner.h"
#include "core/TextEngine.h"

namespace lumivane {
namespace {

ParsedOptions Parse(std::vector<std::string> args) { return ParseOptions(args); }

TEST(Options, HeadlessOptionsAreParsedAndChecked) {
  const auto p = Parse({"--headless", "show.xml", "--frames", "600", "--fps", "29.97", "--seed", "7", "--size",
                        "1920x1080", "--stats"});
  ASSERT_EQ(p.error, "");
  EXPECT_TRUE(p.options.headless);
  EXPECT_EQ(p.options.showFile, "show.xml");
  EXPECT_EQ(p.options.frames, 600);
  EXPECT_DOUBLE_EQ(p.options.fps, 29.97);
  EXPECT_EQ(p.options.seed, 7u);
  EXPECT_EQ(p.options.width, 1920);
  EXPECT_EQ(p.options.height, 1080);
  EXPECT_TRUE(p.options.stats);

  const auto defaults = Parse({"--headless", "show.xml"});
  EXPECT_EQ(defaults.options.width, 1280);
  EXPECT_EQ(defaults.options.height, 720);
  EXPECT_EQ(defaults.options.FrameCount(), 60);

  for (const std::vector<std::string>& bad : std::vector<std::vector<std::string>>{
           {"--headless"},
           {"--headless", "s.xml", "--frames", "-1"},
           {"--headless", "s.xml", "--frames", "ten"},
           {"--headless", "s.xml", "--fps", "0"},
           {"--headless", "s.xml", "--fps", "nan"},
           {"--headless", "s.xml", "--size", "1920"},
           {"--headless", "s.xml", "--size", "0x100"},
           {"--headless", "s.xml", "--size", "99999x100"},
           {"--headless", "s.xml", "--seed", "-3"},
           {"--headless", "s.xml", "extra;positional"},
           {"--frames", "10"},
           {"--bogus"},
       }) {
    EXPECT_NE(Parse(bad).error, "") << ::testing::PrintToString(bad);
  }
}

TEST(Options, ThePositionalCommandLineIsKeptWhole) {
  const auto p = Parse({"--app-folder", "/tmp/lv", "list.LMVNPL;2;1;1920x1080;1"});
  ASSERT_EQ(p.error, "");
  EXPECT_EQ(p.options.appFolder, "/tmp/lv");
  EXPECT_EQ(p.options.commandLine, "list.LMVNPL;2;1;1920x1080;1");
  // A shell that split at blanks: the words come back together.
  EXPECT_EQ(Parse({"my", "list.LMVNPL;2"}).options.commandLine, "my list.LMVNPL;2");
}

class HeadlessRunnerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // One file per test: CTest runs the tests side by side.
    showPath = ::testing::TempDir() + "headless_show_" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".xml";
    std::ofstream(showPath) << "<File><Text><TextCount>1</TextCount><1Text><TextType>CustomInput</TextType>"
                               "<Words><WordCount>1</WordCount><1Word>hi</1Word></Words></1Text></Text></File>\n";
  }
  void TearDown() override { std::remove(showPath.c_str()); }
  int Run(std::vector<std::string> args) {
    out.str("");
    err.str("");
    const auto p = ParseOptions(args);
    EXPECT_EQ(p.error, "");
    return RunHeadless(p.options, out, err);
  }
  std::string showPath;
  std::ostringstream out, err;
};

TEST_F(HeadlessRunnerTest, PlaysTheFramesOnTheVirtualClockAndReportsStats) {
  EXPECT_EQ(Run({"--headless", showPath, "--frames", "90", "--fps", "30", "--stats"}), 0) << err.str();
  EXPECT_NE(out.str().find("frames 90\n"), std::string::npos) << out.str();
  EXPECT_NE(out.str().find("virtual_ms 2966\n"), std::string::npos) << out.str();  // frame 89 at 89*1000/30
  EXPECT_EQ(err.str(), "");
}

TEST_F(HeadlessRunnerTest, WhatCannotBeDoneYetOrCannotBeReadEndsWithOneLineAndNonZero) {
  EXPECT_NE(Run({"--headless", showPath, "--out", "show.webm"}), 0);  // no container of ours
  EXPECT_NE(err.str().find("--out"), std::string::npos);
  EXPECT_NE(Run({"--headless", showPath, "--out", "frames.png"}), 0);  // no number in the pattern
  EXPECT_NE(Run({"--headless", showPath, "--midi", "take.mid"}), 0);
  EXPECT_NE(Run({"--headless", showPath, "--text-log", "/nonexistent/dir/t.log"}), 0);
  EXPECT_NE(Run({"--headless", "/nonexistent/show.xml"}), 0);
  EXPECT_NE(err.str().find("cannot be opened"), std::string::npos);
  const std::string message = err.str();
  EXPECT_EQ(std::count(message.begin(), message.end(), '\n'), 1) << message;
  // A file that is no show: one line that says so.
  std::ofstream(showPath) << "<NotAShow/>";
  EXPECT_NE(Run({"--headless", showPath}), 0);
  EXPECT_NE(err.str().find("is not a show file"), std::string::npos);
}

TEST_F(HeadlessRunnerTest, OutWritesEveryFrameAsAPngInTheShowsBackgroundColour) {
  std::ofstream(showPath) << "<File><Global><BackGroundColor>16711680</BackGroundColor></Global></File>";  // blue
  const std::string pattern = ::testing::TempDir() + "lumivane_out_%03d.png";
  ASSERT_EQ(Run({"--headless", showPath, "--frames", "3", "--size", "32x16", "--out", pattern}), 0) << err.str();
  for (int k = 0; k < 3; ++k) {
    char name[512];
    std::snprintf(name, sizeof name, pattern.c_str(), k);
    const QImage frame(QString::fromUtf8(name));
    ASSERT_FALSE(frame.isNull()) << name;
    EXPECT_EQ(frame.size(), QSize(32, 16));
    EXPECT_EQ(frame.pixelColor(5, 5), QColor(0, 0, 255));
    std::remove(name);
  }
  EXPECT_EQ(Run({"--headless", showPath, "--frames", "3", "--out", "-"}), 0) << err.str();  // read back, kept nowhere
}

// Text lands inside its box in its colour, and nowhere else.
TEST_F(HeadlessRunnerTest, TextIsDrawnInItsColourInsideItsBoxOnly) {
  std::ofstream(showPath) << "<File><Text><TextCount>1</TextCount><1Text><Color>65280</Color>"  // green
                             "<AlignX>Centered</AlignX><TextType>CustomInput</TextType><FONT_SIZE_ZERO>40</FONT_SIZE_ZERO>"
                             "<Particle><Count>1</Count></Particle>"
                             "<Position><Top>100</Top><Bottom>160</Bottom><Left>120</Left><Right>360</Right></Position>"
                             "<Dictionary><Counter><Value>1</Value><Direction>Hold</Direction></Counter></Dictionary>"
                             "<Words><WordCount>1</WordCount><1Word>MWM</1Word></Words>"
                             "<Font><FontName>DejaVu Sans</FontName><FontBold>1</FontBold></Font></1Text></Text></File>";
  const std::string pattern = ::testing::TempDir() + "lumivane_text_%d.png";
  ASSERT_EQ(Run({"--headless", showPath, "--frames", "1", "--size", "480x270", "--out", pattern}), 0) << err.str();
  char name[512];
  std::snprintf(name, sizeof name, pattern.c_str(), 0);
  const QImage frame = QImage(QString::fromUtf8(name)).convertToFormat(QImage::Format_RGB32);
  std::remove(name);
  ASSERT_EQ(frame.size(), QSize(480, 270));  // the pane is 480x270 too: boxes land 1:1
  int inside = 0, outside = 0;
  for (int y = 0; y < frame.height(); ++y) {
    for (int x = 0; x < frame.width(); ++x) {
      const QColor c = frame.pixelColor(x, y);
      if (c.green() < 128) continue;
      EXPECT_LT(c.red(), 40);
      EXPECT_LT(c.blue(), 40);
      if (x >= 120 && x < 360 && y >= 100 && y < 160) ++inside; else ++outside;
    }
  }
  EXPECT_GT(inside, 200);  // three bold capitals at about 53 pixels
  EXPECT_EQ(outside, 0);
}

// A small show built in code, played through the runner's frame loop, checked by its text log.
TEST(HeadlessTextLog, LogsEveryDrawnTextAndCopyFrameByFrame) {
  const auto parsed = ParseOptions({"--headless", "show.xml", "--fps", "10", "--seed", "5"});
  std::ostringstream err;
  HeadlessSession session(parsed.options, err);
  TextEngine& text = session.Text();

  TextObject counter = NewTextObject(TextFont{"DejaVu Sans", 12});
  counter.Counter.ValueType = "Integer";
  counter.Counter.Direction = "Increment (+)";
  counter.Counter.MaxDigits = 3;
  counter.Counter.Value = 0;
  counter.SelfTime = 250;  // at 10 fps: updates at 0, 300, 600 ms
  counter.Particle.Count = 2;  // drawn twice: the text and one copy
  text.TextAppend(counter);

  TextObject flash = NewTextObject(TextFont{"DejaVu Sans", 12});
  flash.TextType = "CustomInput";
  flash.Words = StringList({"on"});
  flash.WordCount = 1;
  flash.DictionaryCounter.Direction = "Hold";
  flash.DictionaryCounter.Value = 1;
  flash.SelfTime = 450;
  flash.FlashText = true;
  flash.Vertical = true;
  text.TextAppend(flash);

  std::ostringstream log;
  session.Play(7, &log, false);
  EXPECT_EQ(log.str(),
            "0\t0\t1\t0\t1\n0\t0\t1\t1\t1\n0\t0\t2\t0\to\\nn\n"
            "1\t100\t1\t0\t1\n1\t100\t1\t1\t1\n"
            "2\t200\t1\t0\t1\n2\t200\t1\t1\t1\n"
            "3\t300\t1\t0\t2\n3\t300\t1\t1\t2\n"
            "4\t400\t1\t0\t2\n4\t400\t1\t1\t2\n"
            "5\t500\t1\t0\t2\n5\t500\t1\t1\t2\n5\t500\t2\t0\to\\nn\n"
            "6\t600\t1\t0\t3\n6\t600\t1\t1\t3\n");
  EXPECT_EQ(err.str(), "");
}

}  // namespace
}  // namespace lumivane
