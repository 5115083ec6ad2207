#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/Clock.h"

namespace lumivane {

// Days since 1970-01-01 of a proleptic Gregorian date, and back.
std::int64_t DaysFromCivil(int year, int month, int day) noexcept;
CivilTime CivilFromDays(std::int64_t days) noexcept;

// A time of day from "H:MM:SS" or "HH:MM:SS" (also "HH:MM"), as seconds after midnight.
std::optional<int> ParseTimeOfDay(std::string_view text) noexcept;
std::string FormatTimeOfDay(int secondsAfterMidnight);

// A date written "YYYY-MM-DD" or "DD.MM.YYYY", as days since 1970-01-01; years 100 to 9999.
std::optional<std::int64_t> ParseDate(std::string_view text) noexcept;
// Writes a date with one of the two masks "YYYY-MM-DD" or "DD.MM.YYYY"; nothing outside
// years 100 to 9999.
std::optional<std::string> FormatDate(std::int64_t days, std::string_view mask);

}  // namespace lumivane
