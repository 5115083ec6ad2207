#include "core/StringOps.h"

namespace lumivane {

namespace {

// Bytes of the UTF-8 sequence that starts at s[i]; 1 for a malformed or truncated one.
std::size_t SequenceLength(std::string_view s, std::size_t i) noexcept {
  const auto lead = static_cast<unsigned char>(s[i]);
  std::size_t n = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 1;
  if (i + n > s.size()) return 1;
  for (std::size_t k = 1; k < n; ++k) {
    if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) return 1;
  }
  return n;
}

}  // namespace

std::string VerticalizeString(std::string_view text) {
  std::string out;
  VerticalizeInto(text, out);
  return out;
}

void VerticalizeInto(std::string_view text, std::string& out) {
  out.clear();
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t n = SequenceLength(text, i);
    if (!out.empty()) out.append(kCrLf);
    out.append(text.substr(i, n));
    i += n;
  }
}

std::string_view Utf8Prefix(std::string_view text, std::size_t count) noexcept {
  std::size_t i = 0;
  for (std::size_t k = 0; k < count && i < text.size(); ++k) i += SequenceLength(text, i);
  return text.substr(0, i);
}

std::size_t CharacterCount(std::string_view text) noexcept {
  std::size_t count = 0;
  for (std::size_t i = 0; i < text.size(); i += SequenceLength(text, i)) ++count;
  return count;
}

}  // namespace lumivane
