#include "core/Numbers.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace lumivane {

namespace {

std::string_view Trim(std::string_view s) noexcept {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

bool EqualsNoCase(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

}  // namespace

std::optional<double> ParseNumber(std::string_view text) noexcept {
  text = Trim(text);
  if (text.empty()) return std::nullopt;
  if (EqualsNoCase(text, "true")) return 1.0;
  if (EqualsNoCase(text, "false")) return 0.0;
  if (text.front() == '+') text.remove_prefix(1);
  double value = 0.0;
  const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || ptr != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

double LeadingNumber(std::string_view text) noexcept {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  bool negative = false;
  if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  double value = 0.0;
  const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  if (ec != std::errc() || !std::isfinite(value)) return 0.0;
  (void)ptr;
  return negative ? -value : value;
}

std::optional<std::int32_t> ToInt32(double value) noexcept {
  if (!std::isfinite(value)) return std::nullopt;
  const double r = std::nearbyint(value);
  if (r < static_cast<double>(std::numeric_limits<std::int32_t>::min()) ||
      r > static_cast<double>(std::numeric_limits<std::int32_t>::max()))
    return std::nullopt;
  return static_cast<std::int32_t>(r);
}

std::string FormatNumber(double value) {
  if (value == 0.0) return "0";  // no "-0"
  char buf[64];
  const bool plain = std::fabs(value) < 1e15 && std::fabs(value) >= 1e-5;
  const auto [ptr, ec] = plain ? std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed)
                               : std::to_chars(buf, buf + sizeof buf, value);
  if (ec != std::errc()) return "0";
  return std::string(buf, ptr);
}

}  // namespace lumivane
