#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include <pugixml.hpp>

#include "core/Numbers.h"

namespace lumivane {

// A show file's DOM. Every value is an element with text; names that begin with a digit ("1Text",
// "2Word"), which XML itself refuses, are accepted on reading and written back as they were: in the
// DOM they carry a prefix, which ChildName() adds for code that looks them up.
class XmlDocument {
 public:
  static constexpr const char* kRootName = "File";
  // Larger files are refused: no show comes near it, and a runaway file must not eat the memory.
  static constexpr std::size_t kMaxFileBytes = 256u << 20;

  // The name an element has in the DOM: `name` itself, or with the prefix when it begins with a
  // digit.
  static std::string ChildName(std::string_view name);
  // The name as files write it.
  static std::string_view FileName(std::string_view domName);

  // An empty show: the root and nothing under it.
  void New();
  // Reads a show file. On failure the document is left empty and the answer says why in one line.
  bool Open(const std::string& path, std::string& error);
  bool Parse(std::string_view text, std::string& error);
  void Close() { dom_.reset(); }

  // Writes the document whole or not at all: a temporary file in the same folder, flushed and
  // synced, then renamed over `path`. A failed save leaves any old file untouched.
  bool Save(const std::string& path, std::string& error) const;
  std::string ToString() const;

  pugi::xml_node Root() const { return dom_.child(kRootName); }
  pugi::xml_document& Dom() { return dom_; }

 private:
  pugi::xml_document dom_;
};

// The document's life as the readers and writers of the format know it.
inline void XmlNewDocument(XmlDocument& doc) { doc.New(); }
inline bool XmlOpenDocument(XmlDocument& doc, const std::string& path, std::string& error) {
  return doc.Open(path, error);
}
inline bool XmlSaveDocument(const XmlDocument& doc, const std::string& path, std::string& error) {
  return doc.Save(path, error);
}
inline void XmlCloseDocument(XmlDocument& doc) { doc.Close(); }

// Small helpers over the DOM's element-with-text values.
pugi::xml_node Child(pugi::xml_node parent, std::string_view name);
pugi::xml_node EnsureChild(pugi::xml_node parent, std::string_view name);
// Appends `name` with `value` as its text.
pugi::xml_node AppendValue(pugi::xml_node parent, std::string_view name, std::string_view value);
// Numbers in the shortest plain decimal that reads back the same; flags as 1 or 0.
pugi::xml_node AppendNumber(pugi::xml_node parent, std::string_view name, double value);
pugi::xml_node AppendFlag(pugi::xml_node parent, std::string_view name, bool value);

// Whether a number may have been written with a decimal comma, as old writers in some locales did.
enum class Decimal : std::uint8_t { Point, PointOrComma };
// The number `name` holds; nothing when it is missing or does not read as one.
std::optional<double> ChildNumber(pugi::xml_node parent, std::string_view name, Decimal decimal = Decimal::Point);

// Puts a number into a field of its type: whole numbers round half to even and must fit in 32 bits,
// a flag is set by anything but 0. False, the field unchanged, when there is no number or it does
// not fit.
template <class T>
bool StoreNumber(std::optional<double> value, T& field) {
  if (!value) return false;
  if constexpr (std::is_same_v<T, bool>) {
    field = *value != 0.0;
  } else if constexpr (std::is_integral_v<T>) {
    static_assert(sizeof(T) <= sizeof(std::int32_t), "whole numbers are stored in 32 bits");
    const auto whole = ToInt32(*value);
    if (!whole) return false;
    field = static_cast<T>(*whole);
  } else {
    field = static_cast<T>(*value);
  }
  return true;
}

}  // namespace lumivane
