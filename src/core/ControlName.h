#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace lumivane {

// A control that is not a member of a control array has no index.
inline constexpr std::int32_t kNoIndex = -1;

// The name a control is stored under in files: its name, or for a member of a control array the
// decimal index followed directly by the name ("3Text" is index 3 of array "Text").
std::string FormatControlName(std::string_view name, std::int32_t index);

// Whether a control called `name` with array index `index` answers to the stored `controlName`:
// by its plain name, or by index and name when it is an array member. Case-sensitive.
bool ControlNameMatches(std::string_view controlName, std::string_view name, std::int32_t index) noexcept;

}  // namespace lumivane
