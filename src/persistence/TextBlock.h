#pragma once

#include <vector>

#include <pugixml.hpp>

#include "core/TextObject.h"

namespace lumivane {

// The `Text` block of a show file: `TextCount`, then `1Text`, `2Text`, ... in the writer's order,
// with the old spellings and doubled elements that old readers expect.
void XmlWriteText(pugi::xml_node root, const std::vector<TextObject>& texts);
// Reads the `Text` block into `texts` (replacing them). A missing element leaves the field as an
// empty record has it, except where old files need a fallback. Never fails: what cannot be read
// is skipped.
void XmlReadText(pugi::xml_node root, std::vector<TextObject>& texts);

}  // namespace lumivane
