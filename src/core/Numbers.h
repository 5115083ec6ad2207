#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lumivane {

// Strict: the whole string, blanks around it allowed, must be a decimal number; "True" and
// "False" (any case) read as 1 and 0. Empty or anything else gives nothing.
std::optional<double> ParseNumber(std::string_view text) noexcept;

// Lenient, for values typed into text boxes: the longest leading decimal number, after leading
// blanks; 0 when there is none ("12 ms" is 12, "abc" is 0).
double LeadingNumber(std::string_view text) noexcept;

// Rounds half to even into 32 bits; nothing when out of range or not a number.
std::optional<std::int32_t> ToInt32(double value) noexcept;

// The shortest plain decimal text that reads back as the same double, without grouping or
// exponent for ordinary magnitudes ("12", "-0.5", "1000000000").
std::string FormatNumber(double value);

// The smallest 2^n, n at least 1, not below `value`: the sizes of textures. Values beyond 2^30
// answer 2^30.
constexpr std::int32_t NextPowerOfTwo(std::int32_t value) noexcept {
  std::int32_t p = 2;
  while (p < value && p < (1 << 30)) p <<= 1;
  return p;
}

}  // namespace lumivane
