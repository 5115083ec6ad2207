#include "core/TextGenerators.h"

#include <cmath>
#include <cstdio>
#include <optional>
#include <limits>

#include "core/Calendar.h"
#include "core/Clock.h"
#include "core/Encoding.h"
#include "core/Numbers.h"
#include "core/RandomSource.h"
#include "core/StringOps.h"
#include "core/TextCase.h"

namespace lumivane {

namespace {

constexpr std::string_view kIncrement = "Increment (+)";
constexpr std::string_view kDecrement = "Decrement (-)";
constexpr std::string_view kRandom = "Random";
constexpr std::string_view kHold = "Hold";

// The whole part, as the old program's Int: towards minus infinity.
double WholePart(double v) { return std::floor(v); }

double PowerOfTen(double exponent) { return std::pow(10.0, exponent); }

// Round half to even into 64 bits, for indices into word lists.
std::int64_t RoundIndex(double v) {
  if (!std::isfinite(v) || std::fabs(v) > 9e18) return 0;
  return static_cast<std::int64_t>(std::nearbyint(v));
}

std::string Repeat(const std::string& row, int rows) {
  if (rows < 1) rows = 1;
  std::string out;
  out.reserve((row.size() + 2) * static_cast<std::size_t>(rows));
  for (int i = 0; i < rows; ++i) {
    if (i > 0) out.append(kCrLf);
    out.append(row);
  }
  return out;
}

// Characters `from` (1-based) to the end, as the old Mid$; a start below 1 fails.
bool MidFrom(const std::u32string& s, std::int64_t from, std::u32string& out) {
  if (from < 1) return false;
  out = from - 1 < static_cast<std::int64_t>(s.size()) ? s.substr(static_cast<std::size_t>(from - 1)) : U"";
  return true;
}

const std::string& Word(const TextObject& t, double value) {
  return t.DictionaryWords[static_cast<std::size_t>(RoundIndex(value) - 1)];  // out of range reads empty
}

int DigitCount(std::int32_t n) {
  int digits = 1;
  for (n = n < 0 ? -n : n; n >= 10; n /= 10) ++digits;
  return digits;
}

}  // namespace

const std::u32string& SpecialCharacters() {
  static const std::u32string table = [] {
    std::string bytes = "!#$%&'()*+,-./:;<=>?@{|}~";
    for (int c = 127; c <= 255; ++c) bytes.push_back(static_cast<char>(c));
    return ToCodePoints(Cp1252ToUtf8(bytes));
  }();
  return table;
}

void CounterStep(Counter& c, RandomSource& random) {
  if (c.Direction == kIncrement) {
    c.Value += c.Offset;
    if (c.Value > c.MaxValue) c.Value = c.MinValue;
    if (c.Value < c.MinValue) c.Value = c.MaxValue;
  } else if (c.Direction == kDecrement) {
    // Stops at the ends, unlike the other directions.
    c.Value -= c.Offset;
    if (c.Value > c.MaxValue) c.Value = c.MaxValue;
    if (c.Value < c.MinValue) c.Value = c.MinValue;
  } else if (c.Direction == kRandom) {
    c.Value = WholePart(random.Rnd() * c.MaxValue);
    if (c.Value > c.MaxValue) c.Value = c.MinValue;
    if (c.Value < c.MinValue) c.Value = c.MaxValue;
  } else {
    if (c.Value > c.MaxValue) c.Value = c.MinValue;
    if (c.Value < c.MinValue) c.Value = c.MaxValue;
  }
}

void PulseStep(Counter& c, RandomSource& random) {
  if (c.Direction == kIncrement)
    c.Value += c.Offset;
  else if (c.Direction == kDecrement)
    c.Value -= c.Offset;
  else if (c.Direction == kRandom)
    c.Value = WholePart(random.Rnd() * PowerOfTen(c.MaxDigits));
}

std::string RandomAlphanumericString(int length, bool lettersOnly, RandomSource& random, const Clock& clock) {
  random.ReseedFromClock(clock);
  std::string out;
  for (int i = 0; i < length; ++i) {
    if (lettersOnly || WholePart(random.Rnd() + 0.5) != 0.0) {
      // One-based position; the draw 0 names no letter and the place is dropped (and so "z",
      // position 52, never comes).
      const auto pos = static_cast<std::size_t>(WholePart(random.Rnd() * 52));
      if (pos >= 1) out.push_back(kAlphabet[pos - 1]);
    } else {
      out.push_back(static_cast<char>('0' + static_cast<int>(WholePart(random.Rnd() * 9))));
    }
  }
  return out;  // never longer than `length`: one byte a character here
}

std::string RandomSpecialString(int length, RandomSource& random, const Clock& clock) {
  random.ReseedFromClock(clock);
  const std::u32string& table = SpecialCharacters();
  std::u32string out;
  for (int i = 0; i < length; ++i) {
    const auto pos = static_cast<std::size_t>(WholePart(random.Rnd() * static_cast<double>(table.size())));
    if (pos >= 1) out.push_back(table[pos - 1]);
  }
  return FromCodePoints(out);
}

std::string FormatHexCounter(double value, int digits, RandomSource& random) {
  if (const auto v = ToInt32(value)) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%X", static_cast<std::uint32_t>(*v));
    return buf;
  }
  std::string out;
  for (int i = 0; i < digits; ++i) {
    if (random.Rnd() < 0.5)
      out.push_back(static_cast<char>('A' + static_cast<int>(WholePart(random.Rnd() * 6))));
    else
      out.push_back(static_cast<char>('0' + static_cast<int>(WholePart(random.Rnd() * 10))));
  }
  return out;
}

std::string FormatBinaryCounter(double value, int digits, RandomSource& random) {
  const auto v = ToInt32(WholePart(value));
  if (!v) {
    std::string out;
    for (int i = 0; i < digits; ++i) out.push_back(random.Rnd() < 0.5 ? '0' : '1');
    return out;
  }
  std::string bits;
  for (std::int64_t n = *v; n > 0; n /= 2) bits.insert(bits.begin(), static_cast<char>('0' + n % 2));
  if (static_cast<int>(bits.size()) < digits) bits.insert(0, static_cast<std::size_t>(digits) - bits.size(), '0');
  return bits;
}

std::string BuildCharacterSet(bool withLineBreaks, bool numbers, bool letters, bool specials) {
  std::string bytes;  // Windows-1252, one byte an item
  if (numbers)
    for (char c = '0'; c <= '9'; ++c) bytes.push_back(c);
  if (letters) {
    for (char c = 'A'; c <= 'Z'; ++c) bytes.push_back(c);
    for (char c = 'a'; c <= 'z'; ++c) bytes.push_back(c);
  }
  if (specials) {
    // Unlike the counters' table this one holds digits and letters' neighbours: 33 to 64, then
    // 123 to 255.
    for (int c = 33; c <= 64; ++c) bytes.push_back(static_cast<char>(c));
    for (int c = 123; c <= 255; ++c) bytes.push_back(static_cast<char>(c));
  }
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i > 0 && withLineBreaks) out.append(kCrLf);
    out.append(Cp1252ToUtf8(bytes.substr(i, 1)));
  }
  return out;
}

// ---- Counter ----------------------------------------------------------------------------------

namespace {

std::string ClockText(const TextObject& t, RandomSource& random, const Clock& clock) {
  const Counter& c = t.Counter;
  if (c.Direction == kHold) return t.CurrentText;
  std::string result;
  if (const auto now = ParseTimeOfDay(t.CurrentText)) {
    int seconds = *now;
    if (c.Direction == kIncrement) {
      if (t.CurrentText != "23:59:59") seconds += static_cast<int>(WholePart(c.Offset));
    } else if (c.Direction == kDecrement) {
      if (t.CurrentText != "00:00:00") seconds -= static_cast<int>(WholePart(c.Offset));
    } else if (c.Direction == kRandom) {
      const int delta = static_cast<int>(std::fmod(WholePart(c.Value), 86400.0));
      seconds += random.Rnd() < 0.5 ? delta : -delta;
    }
    result = FormatTimeOfDay(seconds).substr(0, 8);
  }
  if (result.empty()) {
    // A new clock (or one that holds no time) starts at the wall clock.
    const CivilTime local = clock.LocalTime();
    result = FormatTimeOfDay(local.Hour * 3600 + local.Minute * 60 + local.Second);
  }
  return result;
}

std::string DateText(TextObject& t, RandomSource& random, const Clock& clock) {
  Counter& c = t.Counter;
  if (c.Direction == kHold) return t.CurrentText;
  std::optional<std::string> result;
  if (auto days = ParseDate(t.CurrentText)) {
    if (c.Direction == kIncrement) {
      *days += static_cast<std::int64_t>(WholePart(c.Offset));
    } else if (c.Direction == kDecrement) {
      *days -= static_cast<std::int64_t>(WholePart(c.Offset));
    } else if (c.Direction == kRandom) {
      if (c.Value > 1e6) c.Value = WholePart(random.Rnd() * 1e6);
      const auto delta = static_cast<std::int64_t>(WholePart(c.Value));
      *days += random.Rnd() < 0.5 ? delta : -delta;
    }
    result = FormatDate(*days, c.ValueType);
  }
  if (!result || result->empty()) {
    const CivilTime today = clock.LocalTime();
    result = FormatDate(DaysFromCivil(today.Year, today.Month, today.Day), c.ValueType);
  }
  return result.value_or(std::string());
}

}  // namespace

std::string GenerateCounterText(TextObject& t, RandomSource& random, const Clock& clock) {
  // The date and time types go on from the first row.
  if (const auto crlf = t.CurrentText.find(kCrLf); crlf != std::string::npos) t.CurrentText.resize(crlf);
  Counter& c = t.Counter;
  PulseStep(c, random);  // the same step as a pulse's: limits follow

  // Wraps between powers of ten, not digit counts: with MinDigits 0 and MaxDigits 9, going below 1
  // jumps to 1,000,000,000, and 0 is never stable.
  if (std::fabs(c.Value) > PowerOfTen(c.MaxDigits)) c.Value = PowerOfTen(c.MinDigits);
  if (PowerOfTen(c.MinDigits) > std::fabs(c.Value)) c.Value = PowerOfTen(c.MaxDigits);

  const bool hold = c.Direction == kHold;
  const std::string& type = c.ValueType;
  std::string s;
  if (type == "Integer")
    s = FormatNumber(c.Value);
  else if (type == "Real")
    s = hold ? t.CurrentText : FormatNumber(c.Value / PowerOfTen(c.MaxDigits / 2.0));
  else if (type == "Hexadecimal")
    s = hold ? t.CurrentText : FormatHexCounter(c.Value, c.MaxDigits, random);
  else if (type == "Binary")
    s = hold ? t.CurrentText : FormatBinaryCounter(c.Value, c.MaxDigits, random);
  else if (type == "Alphanumeric")
    s = hold ? t.CurrentText : RandomAlphanumericString(c.MaxDigits, false, random, clock);
  else if (type == "Alpha")
    s = hold ? t.CurrentText : RandomAlphanumericString(c.MaxDigits, true, random, clock);
  else if (type == "Special Characters")
    s = hold ? t.CurrentText : RandomSpecialString(c.MaxDigits, random, clock);
  else if (type == "HH:MM:SS")
    s = ClockText(t, random, clock);
  else if (type == "YYYY-MM-DD" || type == "DD.MM.YYYY")
    s = DateText(t, random, clock);
  return Repeat(s, c.LineBreak);
}

// ---- Dictionary ---------------------------------------------------------------------------------

std::string GenerateDictionaryText(TextObject& t, RandomSource& random) {
  Counter& c = t.DictionaryCounter;
  c.MinDigits = 1;
  c.MaxDigits = DigitCount(t.DictionaryWordCount);
  c.MinValue = 1;
  c.MaxValue = t.DictionaryWordCount;
  const int rows = t.LineBreak < 1 ? 1 : t.LineBreak;
  const int perRow = t.WordsPerRow < 1 ? 1 : t.WordsPerRow;

  auto readRows = [&](bool holdSteps) {
    std::string out;
    for (int r = 0; r < rows; ++r) {
      std::string row;
      for (int w = 0; w < perRow; ++w) {
        if (holdSteps) {
          c.Value += 1;
          if (c.Value > t.DictionaryWordCount) c.Value = 1;
        } else {
          CounterStep(c, random);
        }
        if (w > 0) row.push_back(' ');
        row.append(Word(t, c.Value));
      }
      if (r > 0) out.append(kCrLf);
      out.append(row);
    }
    return out;
  };

  if (t.TextTickerMode) {
    // One line of words runs through the box a character at a time.
    t.AlignX = "Left Justify";
    if (c.Direction == kHold) return t.CurrentText;
    std::u32string line;
    for (int w = 0; w < perRow; ++w) {
      CounterStep(c, random);
      const std::u32string word = ToCodePoints(Word(t, c.Value));
      if (c.Direction == kDecrement)
        line = word + U" " + line;
      else
        line += word + U" ";
    }
    std::u32string shown;
    if (c.Direction == kIncrement) {
      double nextValue = c.Value + 1;
      if (nextValue > t.DictionaryWordCount) nextValue = 1;
      const std::u32string next = ToCodePoints(Word(t, nextValue));
      std::u32string rest;
      if (t.TickerPosition <= static_cast<std::int32_t>(next.size())) {
        if (MidFrom(line, t.TickerPosition, rest))
          shown = rest + U" " + next.substr(0, static_cast<std::size_t>(std::max(0, t.TickerPosition)));
        c.Value -= perRow;  // the same words again at the next update
        t.TickerPosition += 1;
      } else {
        if (MidFrom(line, t.TickerPosition, rest)) shown = rest + U" " + next;
        t.TickerPosition = 1;
        c.Value = c.Value - perRow + 1;  // the line has moved on by one word
      }
    } else if (c.Direction == kDecrement) {
      double previousValue = c.Value - 1;
      if (previousValue < 1) previousValue = t.DictionaryWordCount;
      const std::u32string previous = ToCodePoints(Word(t, previousValue));
      t.TickerPosition += 1;
      const auto pos = static_cast<std::size_t>(std::max(0, t.TickerPosition));
      if (t.TickerPosition < static_cast<std::int32_t>(previous.size())) {
        const std::size_t keep = line.size() > pos ? line.size() - pos : 0;
        shown = previous.substr(previous.size() - pos) + U" " + line.substr(0, keep);
        c.Value += perRow;
      } else {
        t.TickerPosition = 0;
        shown = U" " + previous + U" " + line;
        c.Value = c.Value + perRow - 1;
      }
      if (c.Value < 1) c.Value = t.DictionaryWordCount;
    } else {
      shown = line;  // "Random": the words were drawn while building the line
    }
    return Repeat(FromCodePoints(shown), rows);
  }

  if (t.TextTitleMode) {
    // The window of rows scrolls by one row at each update, as credits do.
    const int page = perRow * rows;
    if (c.Direction == kIncrement) {
      c.Value = c.Value - page + perRow;
    } else if (c.Direction == kHold) {
      c.Value -= page;
    } else if (c.Direction == kRandom) {
      CounterStep(c, random);
    } else if (c.Direction == kDecrement) {
      c.Value = c.Value + page + perRow;
      if (c.Value >= t.DictionaryWordCount) c.Value = 1;
    }
    return readRows(c.Direction == kHold);
  }

  if (c.Direction == kHold) return t.CurrentText;
  return readRows(false);
}

// ---- Custom input -------------------------------------------------------------------------------

std::string GenerateCustomText(TextObject& t, RandomSource& random) {
  Counter& c = t.DictionaryCounter;
  const double count = t.WordCount;
  if (c.Direction == kDecrement) {
    c.Value -= 1;
    if (c.Value < 1) c.Value = count;
  } else if (c.Direction == kIncrement) {
    c.Value += 1;
    if (c.Value > count) c.Value = 1;
  } else if (c.Direction == kRandom) {
    c.Value = WholePart(random.Rnd() * count + 1);
    if (c.Value == 0) c.Value = 1;
    if (c.Value > count) c.Value = count;
  }
  return t.Words[static_cast<std::size_t>(RoundIndex(c.Value) - 1)];
}

std::string BuildText(TextObject& t, RandomSource& random, const Clock& clock) {
  std::string s;
  if (t.TextType == "Counter")
    s = GenerateCounterText(t, random, clock);
  else if (t.TextType == "Dictionary")
    s = GenerateDictionaryText(t, random);
  else if (t.TextType == "CustomInput")
    s = GenerateCustomText(t, random);
  s = ApplyCaseModes(t, std::move(s));
  if (!s.empty()) t.CurrentText = s;
  return t.Vertical ? VerticalizeString(s) : s;
}

}  // namespace lumivane
