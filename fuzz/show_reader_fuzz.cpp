// Feeds arbitrary bytes to the show file reader: parse, read the text list, write it back.
// Nothing may crash, hang or leak, whatever the bytes.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "persistence/TextBlock.h"
#include "persistence/XmlDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  lumivane::XmlDocument doc;
  std::string error;
  if (!doc.Parse(std::string_view(reinterpret_cast<const char*>(data), size), error)) return 0;
  std::vector<lumivane::TextObject> texts;
  lumivane::XmlReadText(doc.Root(), texts);
  lumivane::XmlDocument out;
  out.New();
  lumivane::XmlWriteText(out.Root(), texts);
  (void)out.ToString();
  return 0;
}
