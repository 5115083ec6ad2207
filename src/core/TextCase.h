#pragma once

#include <string>
#include <string_view>

namespace lumivane {

struct TextObject;

std::string UpperCaseString(std::string_view text);
std::string LowerCaseString(std::string_view text);
// Odd character positions (counting from 1) upper case, even lower: "LuMiVaNe".
std::string MixedCase1String(std::string_view text);
// Odd positions lower, even upper: "lUmIvAnE".
std::string MixedCase2String(std::string_view text);
// The case modes of a text in their order: upper, lower, mixed 1, mixed 2; with several set the
// last one wins.
std::string ApplyCaseModes(const TextObject& text, std::string s);

}  // namespace lumivane
