#include "core/TextGenerators.h"

#include <gtest/gtest.h>

#include "core/Clock.h"
#include "core/Encoding.h"
#include "core/RandomSource.h"
#include "core/TextCase.h"

namespace lumivane {
namespace {

class GeneratorTest : public ::testing::Test {
 protected:
  FakeClock clock{50000};
  SeededRandom random{3};

  TextObject Counting(const char* type, const char* direction, int minDigits = 0, int maxDigits = 9) {
    TextObject t = NewTextObject(TextFont{"DejaVu Sans", 12});
    t.Counter.ValueType = type;
    t.Counter.Direction = direction;
    t.Counter.MinDigits = minDigits;
    t.Counter.MaxDigits = maxDigits;
    return t;
  }
};

TEST_F(GeneratorTest, CounterStepWrapsExceptThatDecrementStopsAtTheEnds) {
  Counter c;
  c.MinValue = 1;
  c.MaxValue = 3;
  c.Offset = 1;
  c.Value = 3;
  c.Direction = "Increment (+)";
  CounterStep(c, random);
  EXPECT_EQ(c.Value, 1);  // wrapped to the bottom
  c.Direction = "Decrement (-)";
  CounterStep(c, random);
  EXPECT_EQ(c.Value, 1);  // stays at the bottom: no wrap
  c.Value = 9;
  c.Direction = "Hold";
  CounterStep(c, random);
  EXPECT_EQ(c.Value, 1);  // above the top reads as the bottom
  c.Direction = "Random";
  for (int i = 0; i < 200; ++i) {
    CounterStep(c, random);
    ASSERT_GE(c.Value, 1);
    ASSERT_LE(c.Value, 3);
  }
}

TEST_F(GeneratorTest, IntegerCountersWrapBetweenPowersOfTen) {
  TextObject t = Counting("Integer", "Decrement (-)");
  t.Counter.Value = 1;
  EXPECT_EQ(GenerateCounterText(t, random, clock), "1000000000");  // below 1: the top power
  t = Counting("Integer", "Increment (+)", 2, 3);
  t.Counter.Value = 1000;
  EXPECT_EQ(GenerateCounterText(t, random, clock), "100");  // above 10^3: 10^2
  t.Counter.LineBreak = 0;  // rows below 1 are one row
  EXPECT_EQ(GenerateCounterText(t, random, clock), "101");
  t.Counter.LineBreak = 3;
  EXPECT_EQ(GenerateCounterText(t, random, clock), "102\r\n102\r\n102");
  t = Counting("Real", "Increment (+)", 0, 4);
  t.Counter.Value = 1233;
  EXPECT_EQ(GenerateCounterText(t, random, clock), "12.34");
}

TEST_F(GeneratorTest, HexadecimalAndBinaryFormatsAndTheirOverflow) {
  EXPECT_EQ(FormatHexCounter(255, 4, random), "FF");
  EXPECT_EQ(FormatHexCounter(-1, 4, random), "FFFFFFFF");
  const std::string wide = FormatHexCounter(1e12, 6, random);  // beyond 32 bits: random characters
  ASSERT_EQ(wide.size(), 6u);
  EXPECT_EQ(wide.find_first_not_of("0123456789ABCDEF"), std::string::npos);
  EXPECT_EQ(FormatBinaryCounter(5, 8, random), "00000101");
  EXPECT_EQ(FormatBinaryCounter(5.9, 2, random), "101");
  const std::string bits = FormatBinaryCounter(1e12, 10, random);
  ASSERT_EQ(bits.size(), 10u);
  EXPECT_EQ(bits.find_first_not_of("01"), std::string::npos);
  // A held hexadecimal counter keeps its text.
  TextObject t = Counting("Hexadecimal", "Hold");
  t.CurrentText = "BEEF";
  EXPECT_EQ(GenerateCounterText(t, random, clock), "BEEF");
}

TEST_F(GeneratorTest, RandomStringsReseedFromTheClockAndUseTheirTables) {
  const std::string a = RandomAlphanumericString(40, false, random, clock);
  const std::string b = RandomAlphanumericString(40, false, random, clock);
  EXPECT_EQ(a, b);  // same millisecond, same string
  clock.Advance(1);
  EXPECT_NE(RandomAlphanumericString(40, false, random, clock), a);
  EXPECT_LE(a.size(), 40u);
  EXPECT_EQ(a.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYabcdefghijklmnopqrstuvwxy012345678"), std::string::npos);
  const std::string letters = RandomAlphanumericString(200, true, random, clock);
  EXPECT_EQ(letters.find_first_of("0123456789z"), std::string::npos);
  EXPECT_GT(letters.size(), 180u);  // only the draws of 0 drop out

  const std::u32string special = ToCodePoints(RandomSpecialString(300, random, clock));
  const std::u32string& table = SpecialCharacters();
  ASSERT_EQ(table.size(), 154u);
  for (char32_t c : special) EXPECT_NE(table.find(c), std::u32string::npos);
  for (char32_t c : std::u32string(U"\"0A[\\]^_`")) EXPECT_EQ(table.find(c), std::u32string::npos);
  EXPECT_EQ(table.back(), U'\u00FF');
  EXPECT_EQ(table[25], U'\u007F');
  EXPECT_EQ(table[26], U'\u20AC');  // 128 as Windows-1252 shows it
}

TEST_F(GeneratorTest, ClockCountersStepSecondsStopAtTheEndAndStartAtTheWallClock) {
  clock.SetLocalTime({2026, 11, 23, 14, 5, 9});
  TextObject t = Counting("HH:MM:SS", "Increment (+)");
  t.Counter.Offset = 1;
  EXPECT_EQ(GenerateCounterText(t, random, clock), "14:05:09");  // nothing to go on: the wall clock
  t.CurrentText = "14:05:09";
  EXPECT_EQ(GenerateCounterText(t, random, clock), "14:05:10");
  t.CurrentText = "23:59:59";
  EXPECT_EQ(GenerateCounterText(t, random, clock), "23:59:59");  // stays
  t.Counter.Direction = "Decrement (-)";
  t.CurrentText = "00:00:00";
  EXPECT_EQ(GenerateCounterText(t, random, clock), "00:00:00");
  t.CurrentText = "00:00:05\r\n00:00:05";  // rows: goes on from the first
  EXPECT_EQ(GenerateCounterText(t, random, clock), "00:00:04");
}

TEST_F(GeneratorTest, DateCountersStepDaysAndFallBackToToday) {
  clock.SetLocalTime({2026, 11, 23, 0, 0, 0});
  TextObject t = Counting("YYYY-MM-DD", "Increment (+)");
  t.Counter.Offset = 10;
  t.CurrentText = "2026-12-25";
  EXPECT_EQ(GenerateCounterText(t, random, clock), "2027-01-04");
  t.Counter.ValueType = "DD.MM.YYYY";
  t.CurrentText = "2024-02-28";
  t.Counter.Offset = 1;
  EXPECT_EQ(GenerateCounterText(t, random, clock), "29.02.2024");
  t.CurrentText = "not a date";
  EXPECT_EQ(GenerateCounterText(t, random, clock), "23.11.2026");
}

class DictionaryTest : public GeneratorTest {
 protected:
  TextObject Words(std::vector<std::string> words, const char* direction) {
    TextObject t = NewTextObject(TextFont{"DejaVu Sans", 12});
    t.TextType = "Dictionary";
    t.DictionaryWordCount = static_cast<std::int32_t>(words.size());
    t.DictionaryWords = StringList(std::move(words));
    t.DictionaryCounter.Direction = direction;
    t.DictionaryCounter.Offset = 1;
    t.DictionaryCounter.Value = 1;
    return t;
  }
};

TEST_F(DictionaryTest, DefaultModeShowsAFreshSetOfWordsPerUpdate) {
  TextObject t = Words({"alpha", "beta", "gamma", "delta"}, "Increment (+)");
  t.WordsPerRow = 2;
  t.LineBreak = 2;
  EXPECT_EQ(GenerateDictionaryText(t, random), "beta gamma\r\ndelta alpha");
  EXPECT_EQ(GenerateDictionaryText(t, random), "beta gamma\r\ndelta alpha");
  t.DictionaryCounter.Direction = "Hold";
  t.CurrentText = "kept";
  EXPECT_EQ(GenerateDictionaryText(t, random), "kept");
}

TEST_F(DictionaryTest, TitleModeScrollsByOneRow) {
  TextObject t = Words({"a", "b", "c", "d", "e", "f"}, "Increment (+)");
  t.TextTitleMode = true;
  t.WordsPerRow = 1;
  t.LineBreak = 3;
  t.DictionaryCounter.Value = 3;
  EXPECT_EQ(GenerateDictionaryText(t, random), "b\r\nc\r\nd");
  EXPECT_EQ(GenerateDictionaryText(t, random), "c\r\nd\r\ne");
}

TEST_F(DictionaryTest, TickerRunsByCharactersAndMovesOnAWordWhenThePositionPassesIt) {
  TextObject t = Words({"ab", "cd"}, "Increment (+)");
  t.TextTickerMode = true;
  t.WordsPerRow = 1;
  t.DictionaryCounter.Value = 2;
  t.TickerPosition = 1;
  // Line "ab " with next word "cd": each update shows one more character of "cd".
  EXPECT_EQ(GenerateDictionaryText(t, random), "ab  c");
  EXPECT_EQ(t.AlignX, "Left Justify");
  EXPECT_EQ(GenerateDictionaryText(t, random), "b  cd");
  // Past the next word's length: the line moves on by one word.
  EXPECT_EQ(GenerateDictionaryText(t, random), "  cd");
  EXPECT_EQ(t.TickerPosition, 1);
  EXPECT_EQ(GenerateDictionaryText(t, random), "cd  a");

  // One word wraps on itself.
  TextObject one = Words({"solo"}, "Increment (+)");
  one.TextTickerMode = true;
  one.TickerPosition = 1;
  EXPECT_EQ(GenerateDictionaryText(one, random), "solo  s");
  EXPECT_EQ(GenerateDictionaryText(one, random), "olo  so");
}

TEST_F(GeneratorTest, CustomInputWalksItsLinesAndCaseModesApplyInOrder) {
  TextObject t = NewTextObject(TextFont{"DejaVu Sans", 12});
  t.TextType = "CustomInput";
  t.Words = StringList({"one", "two", "three"});
  t.WordCount = 3;
  t.DictionaryCounter.Direction = "Increment (+)";
  t.DictionaryCounter.Value = 3;
  EXPECT_EQ(BuildText(t, random, clock), "one");
  t.DictionaryCounter.Direction = "Decrement (-)";
  EXPECT_EQ(BuildText(t, random, clock), "three");
  t.DictionaryCounter.Direction = "Random";
  for (int i = 0; i < 50; ++i) EXPECT_NE(BuildText(t, random, clock), "");

  t.DictionaryCounter.Direction = "Hold";
  t.Words = StringList({"lumivane élan"});
  t.WordCount = 1;
  t.DictionaryCounter.Value = 1;
  t.UpperCase = true;
  t.MixedCase1 = true;  // the later mode wins
  EXPECT_EQ(BuildText(t, random, clock), "LuMiVaNe éLaN");  // the blank counts as a position
  t.MixedCase1 = false;
  EXPECT_EQ(BuildText(t, random, clock), "LUMIVANE ÉLAN");
  EXPECT_EQ(t.CurrentText, "LUMIVANE ÉLAN");
  t.Vertical = true;  // stacked for display, not stored
  EXPECT_EQ(BuildText(t, random, clock).substr(0, 5), "L\r\nU\r");
  EXPECT_EQ(t.CurrentText, "LUMIVANE ÉLAN");
  EXPECT_EQ(MixedCase2String("lumivane"), "lUmIvAnE");
}

TEST(CharacterSet, BuildsTheEditorsSetsWithOrWithoutLineBreaks) {
  EXPECT_EQ(BuildCharacterSet(false, true, false, false), "0123456789");
  EXPECT_EQ(BuildCharacterSet(true, true, false, false).substr(0, 7), "0\r\n1\r\n2");
  const std::string letters = BuildCharacterSet(false, false, true, false);
  EXPECT_EQ(letters.size(), 52u);
  EXPECT_EQ(letters.substr(24, 4), "YZab");
  const std::u32string specials = ToCodePoints(BuildCharacterSet(false, false, false, true));
  EXPECT_EQ(specials.size(), 32u + 133u);
  EXPECT_EQ(specials[15], U'0');  // this set holds the digits
}

}  // namespace
}  // namespace lumivane
