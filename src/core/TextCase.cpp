#include "core/TextCase.h"

#include <QChar>

#include "core/Encoding.h"
#include "core/TextObject.h"

namespace lumivane {

namespace {

template <class Map>
std::string MapCharacters(std::string_view text, Map map) {
  std::u32string cps = ToCodePoints(text);
  for (std::size_t i = 0; i < cps.size(); ++i) cps[i] = map(cps[i], i + 1);
  return FromCodePoints(cps);
}

char32_t Upper(char32_t c) { return QChar::toUpper(c); }
char32_t Lower(char32_t c) { return QChar::toLower(c); }

}  // namespace

std::string UpperCaseString(std::string_view text) {
  return MapCharacters(text, [](char32_t c, std::size_t) { return Upper(c); });
}

std::string LowerCaseString(std::string_view text) {
  return MapCharacters(text, [](char32_t c, std::size_t) { return Lower(c); });
}

std::string MixedCase1String(std::string_view text) {
  return MapCharacters(text, [](char32_t c, std::size_t pos) { return pos % 2 == 1 ? Upper(c) : Lower(c); });
}

std::string MixedCase2String(std::string_view text) {
  return MapCharacters(text, [](char32_t c, std::size_t pos) { return pos % 2 == 1 ? Lower(c) : Upper(c); });
}

std::string ApplyCaseModes(const TextObject& t, std::string s) {
  if (t.UpperCase) s = UpperCaseString(s);
  if (t.LowerCase) s = LowerCaseString(s);
  if (t.MixedCase1) s = MixedCase1String(s);
  if (t.MixedCase2) s = MixedCase2String(s);
  return s;
}

}  // namespace lumivane
