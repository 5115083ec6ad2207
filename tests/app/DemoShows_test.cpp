// The factory show and the demo shows, played headless: what their texts say, frame by frame.
#include <gtest/gtest.h>

#include <sstream>

#include "app/HeadlessRunner.h"
#include "app/Options.h"
#include "core/TextEngine.h"
#include "forms/BackgroundsForm.h"
#include "forms/EffectsForm.h"
#include "forms/MainForm.h"
#include "render/FrameRenderer.h"

namespace lumivane {
namespace {

std::string Play(const std::string& show, int frames) {
  const std::string path = std::string(LUMIVANE_SOURCE_RESOURCES) + "/" + show;
  const auto parsed = ParseOptions({"--headless", path, "--fps", "10", "--frames", std::to_string(frames),
                                    "--text-log", "/dev/null"});
  std::ostringstream err, log;
  HeadlessSession session(parsed.options, err);
  std::string error;
  EXPECT_TRUE(session.LoadShow(path, error)) << error;
  session.Play(frames, &log, false);
  EXPECT_EQ(err.str(), "") << show;
  return log.str();
}

std::vector<std::string> Column(const std::string& log, int textIndex) {
  std::vector<std::string> said;
  std::istringstream lines(log);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::string frame, ms, index, copy, text;
    std::getline(fields, frame, '\t');
    std::getline(fields, ms, '\t');
    std::getline(fields, index, '\t');
    std::getline(fields, copy, '\t');
    std::getline(fields, text);
    if (std::stoi(index) == textIndex) said.push_back(text);
  }
  return said;
}

TEST(DemoShows, TheFactoryShowSaysItsName) {
  EXPECT_EQ(Column(Play("Reset.xml", 3), 1), (std::vector<std::string>{"LUMIVANE", "LUMIVANE", "LUMIVANE"}));
}

TEST(DemoShows, CountersCountAndTheSequenceBuildsUp) {
  const std::string log = Play("Demo Counters.xml", 6);
  EXPECT_EQ(Column(log, 1), (std::vector<std::string>{"1", "1", "2", "2", "3", "3"}));  // every 100 ms, strictly
  EXPECT_EQ(Column(log, 2), (std::vector<std::string>{"2", "2", "2", "3", "3", "3"}));  // hexadecimal, 250 ms
  const auto sequence = Column(log, 3);
  ASSERT_GE(sequence.size(), 3u);
  EXPECT_EQ(sequence[1].substr(0, 1), sequence[0]);  // "f", "fa", ...
  EXPECT_EQ(sequence[1].size(), 2u);
}

TEST(DemoShows, TheTickerRunsThroughItsWordsAndTheCustomTextWalksItsLines) {
  const std::string log = Play("Demo Words.xml", 14);
  const auto ticker = Column(log, 1);
  ASSERT_GE(ticker.size(), 4u);
  EXPECT_NE(ticker.front().find("light"), std::string::npos);  // the word list was found beside the show
  EXPECT_NE(ticker.back(), ticker.front());                     // and it moves
  const auto custom = Column(log, 2);
  EXPECT_EQ(custom.front(), "one");
  EXPECT_EQ(custom.back(), "two");  // 600 ms on, the next line
}

// The model is found in the collection folder beside the show, read before the first frame that
// shows it, and its counts reach the text.
TEST(DemoShows, TheThreeDDemoFindsItsModelBesideTheShow) {
  const std::string path = std::string(LUMIVANE_SOURCE_RESOURCES) + "/Demo 3D Text.xml";
  const auto parsed = ParseOptions({"--headless", path, "--frames", "2", "--out", "-"});
  std::ostringstream err;
  HeadlessSession session(parsed.options, err);
  std::string error;
  ASSERT_TRUE(session.LoadShow(path, error)) << error;
  ASSERT_TRUE(session.OpenOutput("-", 320, 180, 30, error)) << error;
  session.Play(1, nullptr, false);
  EXPECT_TRUE(session.FinishOutput(error)) << error;
  EXPECT_EQ(session.Text().LiveRecord(4)->Mesh3DInfo, "gem.obj\r\nF: 8\r\nV: 24");
}

TEST(DemoShows, TheBackgroundDemoFindsItsPicturesBesideTheShowAndPlaysThem) {
  const std::string path = std::string(LUMIVANE_SOURCE_RESOURCES) + "/Demo Backgrounds.xml";
  const auto parsed = ParseOptions({"--headless", path, "--frames", "2", "--out", "-"});
  std::ostringstream err;
  HeadlessSession session(parsed.options, err);
  std::string error;
  ASSERT_TRUE(session.LoadShow(path, error)) << error;
  const BackgroundsForm& backgrounds = *session.Main().Backgrounds;
  ASSERT_EQ(backgrounds.Items().size(), 3u);
  EXPECT_EQ(backgrounds.Items()[1].Width, 640);
  EXPECT_EQ(backgrounds.Items()[1].Height, 360);
  EXPECT_TRUE(backgrounds.isBackGroundPlaying());
  ASSERT_TRUE(session.OpenOutput("-", 320, 180, 30, error)) << error;
  session.Play(2, nullptr, false);
  EXPECT_TRUE(session.FinishOutput(error)) << error;
  // Every picture is on the device, the first one shows, and the effect's and mask's pictures are in.
  const FrameRenderer& renderer = session.Renderer();
  ASSERT_EQ(renderer.Backgrounds().BackgroundCount(), 3);
  for (std::int32_t i = 1; i <= 3; ++i) EXPECT_NE(renderer.Backgrounds().GetBackGroundTexture(i), 0u) << i;
  EXPECT_EQ(renderer.Backgrounds().BackgroundIndex(), 1);
  EXPECT_NE(renderer.Effect().GetEffectTexture(), 0u);
  EXPECT_NE(renderer.Output().MaskTexture(), 0u);
  EXPECT_EQ(err.str(), "");
}

TEST(DemoShows, TheFactoryShowPutsEveryLayerBack) {
  const std::string demo = std::string(LUMIVANE_SOURCE_RESOURCES) + "/Demo Backgrounds.xml";
  const auto parsed = ParseOptions({"--headless", demo, "--frames", "1"});
  std::ostringstream err;
  HeadlessSession session(parsed.options, err);
  std::string error;
  ASSERT_TRUE(session.LoadShow(demo, error)) << error;
  ASSERT_TRUE(session.LoadShow(std::string(LUMIVANE_SOURCE_RESOURCES) + "/Reset.xml", error)) << error;
  const BackgroundsForm& backgrounds = *session.Main().Backgrounds;
  EXPECT_TRUE(backgrounds.Items().empty());
  EXPECT_FALSE(backgrounds.isBackGroundPlaying());
  EXPECT_EQ(backgrounds.MaskFileName(), "");
  EXPECT_EQ(ControlModel::Value(backgrounds.C().SliderFadeOut), 255);
  EXPECT_FALSE(ControlModel::Checked(session.Main().Effects->C().chkEnableEffect));
  EXPECT_EQ(session.Main().Effects->EffectFileName(), "");
}

}  // namespace
}  // namespace lumivane
