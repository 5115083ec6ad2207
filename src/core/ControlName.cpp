#include "core/ControlName.h"

#include <charconv>

namespace lumivane {

std::string FormatControlName(std::string_view name, std::int32_t index) {
  if (index < 0) return std::string(name);
  char digits[16];
  const auto [end, ec] = std::to_chars(digits, digits + sizeof digits, index);
  (void)ec;
  std::string out(digits, end);
  out.append(name);
  return out;
}

bool ControlNameMatches(std::string_view controlName, std::string_view name, std::int32_t index) noexcept {
  if (controlName == name) return true;
  if (index < 0 || controlName.size() <= name.size()) return false;
  const std::size_t digitCount = controlName.size() - name.size();
  if (controlName.substr(digitCount) != name) return false;
  std::int32_t parsed = 0;
  const char* first = controlName.data();
  const char* last = first + digitCount;
  // Only plain decimal digits: "+3Text" or "03Text" are not index 3 of "Text".
  if (*first < '0' || *first > '9' || (digitCount > 1 && *first == '0')) return false;
  const auto [ptr, ec] = std::from_chars(first, last, parsed);
  return ec == std::errc() && ptr == last && parsed == index;
}

}  // namespace lumivane
