#include "core/Calendar.h"

#include <cstdio>

namespace lumivane {

std::int64_t DaysFromCivil(int year, int month, int day) noexcept {
  // Howard Hinnant's days_from_civil.
  const std::int64_t y = static_cast<std::int64_t>(year) - (month <= 2 ? 1 : 0);
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const std::int64_t yoe = y - era * 400;
  const std::int64_t doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

CivilTime CivilFromDays(std::int64_t z) noexcept {
  z += 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const std::int64_t doe = z - era * 146097;
  const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const std::int64_t mp = (5 * doy + 2) / 153;
  CivilTime t;
  t.Day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  t.Month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  t.Year = static_cast<int>(yoe + era * 400 + (t.Month <= 2 ? 1 : 0));
  return t;
}

namespace {

// Reads exactly `count`... or up to `maxDigits` digits at `pos`; answers -1 when there are none.
int Digits(std::string_view s, std::size_t& pos, std::size_t minDigits, std::size_t maxDigits) noexcept {
  int value = 0;
  std::size_t n = 0;
  while (pos < s.size() && n < maxDigits && s[pos] >= '0' && s[pos] <= '9') {
    value = value * 10 + (s[pos] - '0');
    ++pos;
    ++n;
  }
  return n >= minDigits ? value : -1;
}

bool Expect(std::string_view s, std::size_t& pos, char c) noexcept {
  if (pos >= s.size() || s[pos] != c) return false;
  ++pos;
  return true;
}

std::string_view Trim(std::string_view s) noexcept {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

bool ValidDate(int y, int m, int d) noexcept {
  if (y < 100 || y > 9999 || m < 1 || m > 12 || d < 1) return false;
  return CivilFromDays(DaysFromCivil(y, m, d)).Day == d;
}

}  // namespace

std::optional<int> ParseTimeOfDay(std::string_view text) noexcept {
  text = Trim(text);
  std::size_t pos = 0;
  const int h = Digits(text, pos, 1, 2);
  if (h < 0 || !Expect(text, pos, ':')) return std::nullopt;
  const int m = Digits(text, pos, 2, 2);
  if (m < 0) return std::nullopt;
  int s = 0;
  if (pos < text.size()) {
    if (!Expect(text, pos, ':')) return std::nullopt;
    s = Digits(text, pos, 2, 2);
    if (s < 0) return std::nullopt;
  }
  if (pos != text.size() || h > 23 || m > 59 || s > 59) return std::nullopt;
  return h * 3600 + m * 60 + s;
}

std::string FormatTimeOfDay(int seconds) {
  seconds %= 86400;
  if (seconds < 0) seconds += 86400;
  char buf[16];
  std::snprintf(buf, sizeof buf, "%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
  return buf;
}

std::optional<std::int64_t> ParseDate(std::string_view text) noexcept {
  text = Trim(text);
  std::size_t pos = 0;
  int y = 0, m = 0, d = 0;
  const int first = Digits(text, pos, 1, 4);
  if (first < 0) return std::nullopt;
  if (pos == 4 && Expect(text, pos, '-')) {
    y = first;
    m = Digits(text, pos, 1, 2);
    if (m < 0 || !Expect(text, pos, '-')) return std::nullopt;
    d = Digits(text, pos, 1, 2);
  } else if (pos <= 2 && Expect(text, pos, '.')) {
    d = first;
    m = Digits(text, pos, 1, 2);
    if (m < 0 || !Expect(text, pos, '.')) return std::nullopt;
    y = Digits(text, pos, 4, 4);
  } else {
    return std::nullopt;
  }
  if (pos != text.size() || !ValidDate(y, m, d)) return std::nullopt;
  return DaysFromCivil(y, m, d);
}

std::optional<std::string> FormatDate(std::int64_t days, std::string_view mask) {
  const CivilTime t = CivilFromDays(days);
  if (t.Year < 100 || t.Year > 9999) return std::nullopt;
  char buf[16];
  if (mask == "DD.MM.YYYY")
    std::snprintf(buf, sizeof buf, "%02d.%02d.%04d", t.Day, t.Month, t.Year);
  else
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", t.Year, t.Month, t.Day);
  return std::string(buf);
}

}  // namespace lumivane
