#pragma once

#include "core/Clock.h"
#include "core/EngineContext.h"
#include "core/RandomSource.h"
#include "core/TextEngine.h"

namespace lumivane::test {

// An engine on a fake clock and a seeded random source.
struct EngineFixture {
  FakeClock clock{100000};
  SeededRandom random{1};
  EngineContext context{clock, random};
  TextEngine text{context};

  // Appends a default text whose counter shows `shown`.
  std::int32_t AddText(const std::string& shown = {}) {
    TextObject t = NewTextObject(TextFont{"DejaVu Sans", 12.0f});
    t.CurrentText = shown;
    return text.TextAppend(t);
  }
};

}  // namespace lumivane::test
