#include "core/Encoding.h"

namespace lumivane {

namespace {

// Windows-1252 bytes 0x80 to 0x9F; the five it leaves undefined keep their C1 code point.
constexpr char32_t kCp1252High[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// Length of the well-formed UTF-8 sequence at s[i], or 0.
std::size_t Sequence(std::string_view s, std::size_t i, char32_t& cp) noexcept {
  const auto b0 = static_cast<unsigned char>(s[i]);
  if (b0 < 0x80) {
    cp = b0;
    return 1;
  }
  std::size_t n;
  char32_t min;
  if ((b0 & 0xE0) == 0xC0) {
    n = 2, cp = b0 & 0x1F, min = 0x80;
  } else if ((b0 & 0xF0) == 0xE0) {
    n = 3, cp = b0 & 0x0F, min = 0x800;
  } else if ((b0 & 0xF8) == 0xF0) {
    n = 4, cp = b0 & 0x07, min = 0x10000;
  } else {
    return 0;
  }
  if (i + n > s.size()) return 0;
  for (std::size_t k = 1; k < n; ++k) {
    const auto b = static_cast<unsigned char>(s[i + k]);
    if ((b & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (b & 0x3F);
  }
  if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  return n;
}

}  // namespace

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

bool IsValidUtf8(std::string_view text) noexcept {
  char32_t cp;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t n = Sequence(text, i, cp);
    if (n == 0) return false;
    i += n;
  }
  return true;
}

std::string Cp1252ToUtf8(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size() + bytes.size() / 4);
  for (const char ch : bytes) {
    const auto b = static_cast<unsigned char>(ch);
    AppendUtf8(out, b >= 0x80 && b < 0xA0 ? kCp1252High[b - 0x80] : static_cast<char32_t>(b));
  }
  return out;
}

std::string DecodeTextFile(std::string_view bytes) {
  if (bytes.size() >= 3 && bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);  // a BOM says nothing
  if (IsValidUtf8(bytes)) return std::string(bytes);
  return Cp1252ToUtf8(bytes);
}

std::u32string ToCodePoints(std::string_view text) {
  std::u32string out;
  out.reserve(text.size());
  char32_t cp;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t n = Sequence(text, i, cp);
    out.push_back(n == 0 ? U'\uFFFD' : cp);
    i += n == 0 ? 1 : n;
  }
  return out;
}

std::string FromCodePoints(std::u32string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char32_t cp : text) AppendUtf8(out, cp);
  return out;
}

}  // namespace lumivane
