#pragma once

#include <string>
#include <string_view>

namespace lumivane {

inline constexpr std::string_view kCrLf = "\r\n";

// Stacks the characters one per line: CR LF after each character (a whole UTF-8 sequence), the
// last one cut.
std::string VerticalizeString(std::string_view text);

// Length in characters (UTF-8 code points); a malformed byte counts as one character.
std::size_t CharacterCount(std::string_view text) noexcept;

// The first `count` characters of UTF-8 text, as a view into it.
std::string_view Utf8Prefix(std::string_view text, std::size_t count) noexcept;

// Stacks `text` one character per line into `out`, reusing its storage.
void VerticalizeInto(std::string_view text, std::string& out);

}  // namespace lumivane
