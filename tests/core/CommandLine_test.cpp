#include "core/CommandLine.h"

#include <gtest/gtest.h>

namespace lumivane {
namespace {

// Records every effect in order.
class RecordingTarget final : public CommandLineTarget {
 public:
  std::vector<std::string> log;
  void ShowStatus(std::string_view s) override { log.push_back("status " + std::string(s)); }
  void LoadPlayList(const std::string& f) override { log.push_back("playlist " + f); }
  void LoadPreset(int n) override { log.push_back("preset " + std::to_string(n)); }
  void SelectMonitor(int i) override { log.push_back("monitor " + std::to_string(i)); }
  void StartRender() override { log.push_back("start"); }
  void SetFullScreen(int v) override { log.push_back("fullscreen " + std::to_string(v)); }
  void SetResolution(const std::string& r) override { log.push_back("resolution " + r); }
  void SetAlwaysOnTop(int v) override { log.push_back("ontop " + std::to_string(v)); }
};

TEST(CommandLine, FieldsAreSplitAtSemicolonsTrimmedAndCappedAtFive) {
  const auto f = SplitCommandLine(" a.LMVNPL ; 2 ;3;1920x1080;1;extra");
  EXPECT_EQ(*f[0], "a.LMVNPL");
  EXPECT_EQ(*f[1], "2");
  EXPECT_EQ(*f[3], "1920x1080");
  EXPECT_EQ(*f[4], "1");
  const auto two = SplitCommandLine("a;b");
  EXPECT_TRUE(two[1].has_value());
  EXPECT_FALSE(two[2].has_value());
  EXPECT_FALSE(SplitCommandLine("   ")[0].has_value());
}

TEST(CommandLine, ThreeFieldsWithTheSecondEmptySetTheMonitorWithoutPlayback) {
  RecordingTarget t;
  CommandLineProcess("show.LMVNPL;;2", t);
  EXPECT_EQ(t.log, (std::vector<std::string>{"status Processing Command Line (Playlist)", "playlist show.LMVNPL",
                                             "status Processing Command Line (Output Monitor)", "monitor 1"}));
}

TEST(CommandLine, FiveFieldsStartPlaybackAtFieldThreeAndPutOnTopAfterwards) {
  RecordingTarget t;
  CommandLineProcess("list.LMVNPL;4;2;1;1", t);
  EXPECT_EQ(t.log, (std::vector<std::string>{
                       "status Processing Command Line (Playlist)", "playlist list.LMVNPL",
                       "status Processing Command Line (Requested Preset)", "preset 4",
                       "status Processing Command Line (Output Monitor)", "monitor 1",
                       "status Processing Command Line (Starting Playback)", "start", "fullscreen 1",
                       "status Processing Command Line (Always on Top)", "ontop 1"}));
}

TEST(CommandLine, AResolutionFieldLocksItBeforeStarting) {
  RecordingTarget t;
  CommandLineProcess(";;;800x600", t);
  EXPECT_EQ(t.log, (std::vector<std::string>{"status Processing Command Line (Starting Playback)",
                                             "resolution 800x600", "start"}));
}

}  // namespace
}  // namespace lumivane
