#pragma once

#include <string>
#include <string_view>

#include "core/TextObject.h"

namespace lumivane {

class Clock;
class RandomSource;

inline constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
// "!", then #$%&'()*+,-./:;<=>?@{|}~, then the characters 127 to 255 (as Windows-1252 shows
// them): 154 in all.
const std::u32string& SpecialCharacters();

// Steps a counter by its direction, wrapping between MinValue and MaxValue; a decrement stops at
// the ends instead of wrapping.
void CounterStep(Counter& counter, RandomSource& random);
// A pulse step: the same without limits.
void PulseStep(Counter& counter, RandomSource& random);

// Both reseed the random source from the clock first, so two calls in the same millisecond give
// the same string; fast counters rely on that look.
std::string RandomAlphanumericString(int length, bool lettersOnly, RandomSource& random, const Clock& clock);
std::string RandomSpecialString(int length, RandomSource& random, const Clock& clock);
// Hexadecimal text of a 32-bit value; out of range, `digits` random hexadecimal characters.
std::string FormatHexCounter(double value, int digits, RandomSource& random);
// Binary text padded to `digits`; out of range, `digits` random bits.
std::string FormatBinaryCounter(double value, int digits, RandomSource& random);

// Numbers, letters and special characters for the editor, joined by CR LF or by nothing.
std::string BuildCharacterSet(bool withLineBreaks, bool numbers, bool letters, bool specials);

// The string of a text at one of its updates, by its TextType, before case and vertical
// treatment. Works on the record: counters step, tickers move.
std::string GenerateCounterText(TextObject& text, RandomSource& random, const Clock& clock);
std::string GenerateDictionaryText(TextObject& text, RandomSource& random);
std::string GenerateCustomText(TextObject& text, RandomSource& random);

// One whole update of a text's string: the generator, the case modes, CurrentText (when the
// string is not empty), and the vertical treatment, which is not stored. Answers what is shown.
std::string BuildText(TextObject& text, RandomSource& random, const Clock& clock);

}  // namespace lumivane
