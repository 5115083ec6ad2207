// Dictionary files: reading, caching and the word rules of a text.
#include <algorithm>
#include <fstream>
#include <iterator>

#include "core/EngineContext.h"
#include "core/Encoding.h"
#include "core/RandomSource.h"
#include "core/TextCase.h"
#include "core/TextGenerators.h"
#include "core/TextEngine.h"

namespace lumivane {

namespace {

constexpr const char* kFileNotFound = "file not found";

bool ReadWholeFile(const std::string& name, std::string& bytes) {
  std::ifstream in(name, std::ios::binary);
  if (!in) {
    // Shows made on Windows name their files with backslashes.
    std::string alternative = name;
    std::replace(alternative.begin(), alternative.end(), '\\', '/');
    if (alternative == name) return false;
    in.open(alternative, std::ios::binary);
    if (!in) return false;
  }
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return !in.bad();
}

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (end < text.size() || !line.empty()) lines.push_back(std::move(line));
    start = end + 1;
  }
  return lines;
}

std::u32string Trimmed(const std::string& line) {
  std::u32string s = ToCodePoints(line);
  const auto notBlank = [](char32_t c) { return c != U' ' && c != U'\t'; };
  s.erase(s.begin(), std::find_if(s.begin(), s.end(), notBlank));
  s.erase(std::find_if(s.rbegin(), s.rend(), notBlank).base(), s.end());
  return s;
}

// Packs the words of a long line into lines of at most `width` characters.
std::vector<std::u32string> CutLine(const std::u32string& line, std::size_t width) {
  std::vector<std::u32string> out;
  std::u32string current;
  std::size_t start = 0;
  while (start <= line.size()) {
    std::size_t end = line.find(U' ', start);
    if (end == std::u32string::npos) end = line.size();
    const std::u32string word = line.substr(start, end - start);
    if (!word.empty()) {
      if (!current.empty() && current.size() + 1 + word.size() > width) {
        out.push_back(current);
        current.clear();
      }
      if (!current.empty()) current.push_back(U' ');
      current += word;
    }
    start = end + 1;
  }
  if (!current.empty()) out.push_back(current);
  return out;
}

}  // namespace

const TextEngine::DictionaryCacheEntry& TextEngine::CachedDictionary(const TextObject& t, bool force) {
  const std::int32_t pieceLength = t.Binary ? std::max(1, t.WordLength) : 0;
  auto it = std::find_if(dictionaryCache_.begin(), dictionaryCache_.end(), [&](const DictionaryCacheEntry& e) {
    return e.FileName == t.FileName && e.Binary == t.Binary && e.PieceLength == pieceLength;
  });
  if (it != dictionaryCache_.end() && !force) return *it;

  DictionaryCacheEntry entry{t.FileName, t.Binary, pieceLength, {}};
  std::string bytes;
  if (!ReadWholeFile(t.FileName, bytes)) {
    entry.Lines = {kFileNotFound};
  } else if (t.Binary) {
    // Raw bytes in pieces of the word length, each cleaned of blanks and control characters.
    for (std::size_t i = 0; i < bytes.size(); i += static_cast<std::size_t>(pieceLength)) {
      std::string piece;
      for (char c : std::string_view(bytes).substr(i, static_cast<std::size_t>(pieceLength)))
        if (static_cast<unsigned char>(c) > 32) piece.push_back(c);
      entry.Lines.push_back(Cp1252ToUtf8(piece));
    }
  } else {
    entry.Lines = SplitLines(DecodeTextFile(bytes));
  }
  if (it != dictionaryCache_.end()) {
    *it = std::move(entry);
    return *it;
  }
  dictionaryCache_.push_back(std::move(entry));
  return dictionaryCache_.back();
}

void TextEngine::PreviewLoadDictionary(std::int32_t index, bool force) {
  TextObject* t = At(Current(), index);
  if (t == nullptr || t->FileName.empty()) return;
  BusyScope busy(*this);
  const DictionaryCacheEntry& entry = CachedDictionary(*t, force);

  const auto width = static_cast<std::size_t>(std::max(0, t->WordLength));
  const std::u32string exclude = ToCodePoints(LowerCaseString(t->ExcludeCharacters));
  const std::u32string start = ToCodePoints(LowerCaseString(t->WordStart));
  const std::u32string end = ToCodePoints(LowerCaseString(t->WordEnd));
  auto accepted = [&](const std::u32string& word) {
    const std::u32string lower = ToCodePoints(LowerCaseString(FromCodePoints(word)));
    if (!exclude.empty() && lower.find_first_of(exclude) != std::u32string::npos) return false;
    if (!start.empty() && lower.compare(0, start.size(), start) != 0) return false;
    if (!end.empty() && (lower.size() < end.size() || lower.compare(lower.size() - end.size(), end.size(), end) != 0))
      return false;
    return true;
  };

  std::vector<std::string> words;
  for (const std::string& raw : entry.Lines) {
    const std::u32string line = Trimmed(raw);
    std::vector<std::u32string> pieces;
    if (t->ExactWordLength) {
      if (line.size() == width) pieces.push_back(line);
    } else if (line.size() > width) {
      if (t->Cut) pieces = CutLine(line, width);
    } else {
      pieces.push_back(line);
    }
    for (const auto& piece : pieces)
      if (accepted(piece)) words.push_back(FromCodePoints(piece));
  }
  t->DictionaryWordCount = static_cast<std::int32_t>(words.size());
  t->DictionaryWords = StringList(std::move(words));
}

void TextEngine::PreviewResetDictionaryCounter(std::int32_t index) {
  TextObject* t = At(Current(), index);
  if (t == nullptr) return;
  Counter& c = t->DictionaryCounter;
  c.MinValue = 1;
  c.MaxValue = t->DictionaryWordCount;
  c.Value = 1 + static_cast<double>(static_cast<std::int64_t>(context_.random.Rnd() * t->DictionaryWordCount));
  CounterStep(c, context_.random);
  t->TickerPosition = 0;
}

}  // namespace lumivane
