#pragma once

#include <string>
#include <string_view>

namespace lumivane {

bool IsValidUtf8(std::string_view text) noexcept;
// Each byte as its Windows-1252 character, in UTF-8.
std::string Cp1252ToUtf8(std::string_view bytes);
// Text files are UTF-8; a file that is not valid UTF-8 is read as Windows-1252.
std::string DecodeTextFile(std::string_view bytes);
void AppendUtf8(std::string& out, char32_t codePoint);
// Code points of UTF-8 text; a malformed byte stands for itself as U+FFFD.
std::u32string ToCodePoints(std::string_view text);
std::string FromCodePoints(std::u32string_view text);

}  // namespace lumivane
