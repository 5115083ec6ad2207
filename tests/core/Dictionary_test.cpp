#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "core/TextEngine.h"
#include "support/EngineFixture.h"

namespace lumivane {
namespace {

class DictionaryLoadTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  // One file per test: CTest runs the tests of this suite side by side.
  std::string path = ::testing::TempDir() + "lumivane_words_" +
                     ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".txt";
  void TearDown() override { std::remove(path.c_str()); }
  void Write(const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }
  std::vector<std::string> Load(const std::function<void(TextObject&)>& setup, bool force = true) {
    if (text.PreviewGetTextCount() == 0) AddText();
    TextObject t = NewTextObject(TextFont{"DejaVu Sans", 12});  // each load from the default rules
    t.FileName = path;
    setup(t);
    text.TextRecordWrite(1, t);
    text.PreviewLoadDictionary(1, force);
    const TextObject& loaded = text.Current()[0];
    EXPECT_EQ(loaded.DictionaryWordCount, static_cast<std::int32_t>(loaded.DictionaryWords.size()));
    return {loaded.DictionaryWords.begin(), loaded.DictionaryWords.end()};
  }
};

TEST_F(DictionaryLoadTest, ReadsUtf8AndFallsBackToWindows1252) {
  Write("  café \r\nnaïve\n\nlast");
  EXPECT_EQ(Load([](TextObject&) {}), (std::vector<std::string>{"café", "naïve", "", "last"}));
  Write("caf\xE9\r\n\x80uro\r\n");  // not UTF-8: Windows-1252
  EXPECT_EQ(Load([](TextObject&) {}), (std::vector<std::string>{"café", "€uro"}));
}

TEST_F(DictionaryLoadTest, AMissingFileGivesOneWordAndNothingBreaks) {
  path = ::testing::TempDir() + "no/such/dictionary.txt";
  EXPECT_EQ(Load([](TextObject&) {}), (std::vector<std::string>{"file not found"}));
}

TEST_F(DictionaryLoadTest, WordRulesFilterLengthCutExclusionAndEnds) {
  Write("sun\nmoon\nstars\nSunday\nthe quick brown fox jumps\nzebra\n");
  EXPECT_EQ(Load([](TextObject& t) {
              t.ExactWordLength = true;
              t.WordLength = 4;
            }),
            (std::vector<std::string>{"moon"}));
  // Too long: refused without Cut, packed into lines of at most the length with it.
  EXPECT_EQ(Load([](TextObject& t) {
              t.WordLength = 10;
              t.Cut = false;
            }),
            (std::vector<std::string>{"sun", "moon", "stars", "Sunday", "zebra"}));
  EXPECT_EQ(Load([](TextObject& t) {
              t.WordLength = 10;
              t.Cut = true;
              t.WordStart = "";
            })
                .at(4),
            "the quick");
  EXPECT_EQ(Load([](TextObject& t) {
              t.WordLength = 1024;
              t.ExcludeCharacters = "O";  // case-insensitive: drops "moon", "brown fox"
              t.WordStart = "S";
            }),
            (std::vector<std::string>{"sun", "stars", "Sunday"}));
  EXPECT_EQ(Load([](TextObject& t) {
              t.WordLength = 1024;
              t.WordEnd = "AY";
            }),
            (std::vector<std::string>{"Sunday"}));
}

TEST_F(DictionaryLoadTest, BinaryFilesAreCutIntoCleanPieces) {
  Write(std::string("ab\x01 cd\tef\xE9g", 11));
  EXPECT_EQ(Load([](TextObject& t) {
              t.Binary = true;
              t.WordLength = 4;
            }),
            (std::vector<std::string>{"ab", "cde", "fég"}));
}

TEST_F(DictionaryLoadTest, TheCacheServesUntilForcedAndTheCounterStartsInRange) {
  Write("one\ntwo\n");
  Load([](TextObject&) {});
  Write("three\n");
  EXPECT_EQ(Load([](TextObject&) {}, /*force=*/false), (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(Load([](TextObject&) {}, /*force=*/true), (std::vector<std::string>{"three"}));

  Write("a\nb\nc\nd\n");
  Load([](TextObject& t) { t.DictionaryCounter.Direction = "Increment (+)"; });
  for (int i = 0; i < 20; ++i) {
    text.PreviewResetDictionaryCounter(1);
    const TextObject& t = text.Current()[0];
    EXPECT_GE(t.DictionaryCounter.Value, 1);
    EXPECT_LE(t.DictionaryCounter.Value, 4);
    EXPECT_EQ(t.TickerPosition, 0);
  }
}

}  // namespace
}  // namespace lumivane
