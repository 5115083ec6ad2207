#include "persistence/TextBlock.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "core/Numbers.h"
#include "persistence/XmlDocument.h"

namespace lumivane {

namespace {

constexpr std::string_view kCrLfMarker = "$CRLF$";

std::string ReplaceAll(std::string s, std::string_view from, std::string_view to) {
  for (std::size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size()))
    s.replace(at, from.size(), to);
  return s;
}

std::string Numbered(std::size_t number, std::string_view item) { return std::to_string(number) + std::string(item); }

struct Writer {
  pugi::xml_node node;
  void Text(std::string_view name, std::string_view value) const { AppendValue(node, name, value); }
  void Number(std::string_view name, double value) const { AppendNumber(node, name, value); }
  void Flag(std::string_view name, bool value) const { AppendFlag(node, name, value); }
  Writer Block(std::string_view name) const {
    pugi::xml_node parent = node;  // a handle: the copy appends to the same element
    return {parent.append_child(XmlDocument::ChildName(name).c_str())};
  }
};

// Reads values from one element's children; each read leaves the field alone when the element is
// missing or does not hold a number.
struct Reader {
  pugi::xml_node node;
  pugi::xml_node Node(std::string_view name) const { return Child(node, name); }
  Reader Block(std::string_view name) const { return {Node(name)}; }
  bool Text(std::string_view name, std::string& out) const {
    const pugi::xml_node n = Node(name);
    if (!n) return false;
    out = n.text().get();
    return true;
  }
  // Numbers as the old writer's locale wrote them: a decimal comma reads as a point.
  template <class T>
  bool Number(std::string_view name, T& out) const {
    return StoreNumber(ChildNumber(node, name, Decimal::PointOrComma), out);
  }
};

// Lists are a count, then items named 1Word, 2Word, ... Reading stops at the first item missing,
// whatever the count promised, and never goes past `most`.
template <class Each>
void WriteNumbered(const Writer& list, std::string_view count, std::string_view item, std::size_t size, Each each) {
  list.Number(count, static_cast<double>(size));
  for (std::size_t i = 0; i < size; ++i) each(list.Block(Numbered(i + 1, item)), i);
}

template <class Each>
void ReadNumbered(const Reader& list, std::string_view count, std::string_view item, std::int32_t most, Each each) {
  std::int32_t size = 0;
  list.Number(count, size);
  for (std::int32_t i = 1; i <= std::clamp(size, 0, most); ++i) {
    const Reader one = list.Block(Numbered(static_cast<std::size_t>(i), item));
    if (!one.node) break;
    each(one, i);
  }
}

// ---- The field table -------------------------------------------------------------------------------

template <class R>
using Member = std::variant<std::monostate, std::int32_t R::*, float R::*, double R::*, bool R::*, std::string R::*>;

// One stored element of a record R: its name as files spell it and the member it holds, written
// and read by the same entry. Numbers are written in the shortest plain decimal, flags as 1 or 0,
// text as it is. Nested blocks, lists and what old files need are said by the builders below.
template <class R>
struct Field {
  using Record = R;
  using Write = void (*)(const Writer&, std::string_view name, const R&);
  using Read = void (*)(const Reader&, std::string_view name, R&);

  std::string_view name;
  Member<R> member;
  Write write = nullptr;  // instead of writing the member
  Read read = nullptr;    // instead of reading the member
  // What a file without the element, or with one that does not read, gives.
  std::optional<double> missing;
  // Where older files kept the value, as "Block/Element"; tried when the element is not there.
  std::string_view old;
  bool lines = false;      // text whose CR LF is stored as $CRLF$
  bool writeOnly = false;  // read with another entry, or only there for readers of older files

  constexpr Field Missing(double value) const { return With([&](Field& f) { f.missing = value; }); }
  constexpr Field Old(std::string_view path) const { return With([&](Field& f) { f.old = path; }); }
  constexpr Field Lines() const { return With([](Field& f) { f.lines = true; }); }
  constexpr Field Reads(Read how) const { return With([&](Field& f) { f.read = how; }); }
  constexpr Field WriteOnly() const { return With([](Field& f) { f.writeOnly = true; }); }

 private:
  template <class Change>
  constexpr Field With(Change change) const {
    Field f = *this;
    change(f);
    return f;
  }
};

template <class R, class V>
constexpr Field<R> F(std::string_view name, V R::*member) {
  Field<R> f{};
  f.name = name;
  // Copied from a built variant: converting assignment is not constant-evaluable under clang.
  f.member = Member<R>(member);
  return f;
}

// An element whose writing and reading are its own: lists and values derived from others.
template <class R>
constexpr Field<R> Special(std::string_view name, typename Field<R>::Write write, typename Field<R>::Read read) {
  Field<R> f{};
  f.name = name;
  f.write = write;
  f.read = read;
  return f;
}

template <class Fields>
using RecordOf = typename std::remove_cvref_t<decltype(std::declval<const Fields&>()[0])>::Record;

template <class Value>
void WriteValue(const Writer& w, std::string_view name, const Value& value, bool lines) {
  if constexpr (std::is_same_v<Value, bool>)
    w.Flag(name, value);
  else if constexpr (std::is_same_v<Value, std::string>)
    lines ? w.Text(name, ReplaceAll(value, "\r\n", kCrLfMarker)) : w.Text(name, value);
  else
    w.Number(name, static_cast<double>(value));
}

template <class Value>
bool ReadValue(const Reader& r, std::string_view name, Value& value, bool lines) {
  if constexpr (std::is_same_v<Value, std::string>) {
    if (!r.Text(name, value)) return false;
    if (lines) value = ReplaceAll(value, kCrLfMarker, "\r\n");
    return true;
  } else {
    return r.Number(name, value);
  }
}

// `prefix` goes before every name: the fields of a group (SpreadX, SpreadXStart, ...).
template <class Fields, class R = RecordOf<Fields>>
void WriteFields(const Writer& w, const Fields& fields, const R& record, std::string_view prefix = {}) {
  for (const Field<R>& f : fields) {
    std::string joined;  // only a group's names are built; a save writes thousands of fields
    const std::string_view name = prefix.empty() ? f.name : (joined = std::string(prefix) + std::string(f.name));
    if (f.write != nullptr) {
      f.write(w, name, record);
      continue;
    }
    std::visit(
        [&](auto member) {
          if constexpr (!std::is_same_v<decltype(member), std::monostate>) WriteValue(w, name, record.*member, f.lines);
        },
        f.member);
  }
}

template <class Fields, class R = RecordOf<Fields>>
void ReadFields(const Reader& r, const Fields& fields, R& record, std::string_view prefix = {}) {
  for (const Field<R>& f : fields) {
    if (f.writeOnly) continue;
    std::string joined;  // only a group's names are built; a save writes thousands of fields
    const std::string_view name = prefix.empty() ? f.name : (joined = std::string(prefix) + std::string(f.name));
    if (f.read != nullptr) {
      f.read(r, name, record);
      continue;
    }
    std::visit(
        [&](auto member) {
          if constexpr (!std::is_same_v<decltype(member), std::monostate>) {
            auto& value = record.*member;
            bool read = ReadValue(r, name, value, f.lines);
            if (!read && !f.old.empty()) {
              const std::size_t slash = f.old.find('/');
              read = ReadValue(r.Block(f.old.substr(0, slash)), f.old.substr(slash + 1), value, f.lines);
            }
            if constexpr (std::is_arithmetic_v<std::remove_reference_t<decltype(value)>>) {
              if (!read && f.missing) value = static_cast<std::remove_reference_t<decltype(value)>>(*f.missing);
            }
          }
        },
        f.member);
  }
}

// A child element holding more fields of the same record.
template <const auto& Table>
constexpr auto Block(std::string_view name) {
  using R = RecordOf<decltype(Table)>;
  return Special<R>(
      name, [](const Writer& w, std::string_view n, const R& r) { WriteFields(w.Block(n), Table, r); },
      [](const Reader& rd, std::string_view n, R& r) { ReadFields(rd.Block(n), Table, r); });
}

template <class Part>
struct PartOf;
template <class R, class V>
struct PartOf<V R::*> {
  using Record = R;
};

// A child element holding a part of the record (its font, its counter, ...).
template <auto Part, const auto& Table>
constexpr auto Block(std::string_view name) {
  using R = typename PartOf<decltype(Part)>::Record;
  return Special<R>(
      name, [](const Writer& w, std::string_view n, const R& r) { WriteFields(w.Block(n), Table, r.*Part); },
      [](const Reader& rd, std::string_view n, R& r) { ReadFields(rd.Block(n), Table, r.*Part); });
}

// A part of the record stored beside its other fields, every name after the group's own.
template <auto Part, const auto& Table>
constexpr auto Group(std::string_view name) {
  using R = typename PartOf<decltype(Part)>::Record;
  return Special<R>(
      name, [](const Writer& w, std::string_view n, const R& r) { WriteFields(w, Table, r.*Part, n); },
      [](const Reader& rd, std::string_view n, R& r) { ReadFields(rd, Table, r.*Part, n); });
}

// ---- The text record, in the writer's order ------------------------------------------------------------

constexpr Field<Counter> kCounter[] = {
    F("Value", &Counter::Value),
    F("Offset", &Counter::Offset),
    F("ValueType", &Counter::ValueType),
    F("Direction", &Counter::Direction),
    F("MinDigits", &Counter::MinDigits),
    F("MaxDigits", &Counter::MaxDigits),
    F("LineBreak", &Counter::LineBreak).Missing(1),
};

// The particle editor's sliders: SpreadX, SpreadXStart, SpreadXLength, ...
constexpr Field<PhaseParameter> kPhase[] = {
    F("", &PhaseParameter::Value),
    F("Start", &PhaseParameter::Start),
    F("Length", &PhaseParameter::Length),
    F("Direction", &PhaseParameter::Direction),
    F("PlayBackMode", &PhaseParameter::PlayBackMode),
};

constexpr Field<SpreadCoord> kSpreadCoord[] = {
    F("X", &SpreadCoord::X),
    F("Y", &SpreadCoord::Y),
};

void WriteSpreadCoords(const Writer& w, std::string_view name, const ParticleSystem& p) {
  WriteNumbered(w.Block(name), "Count", "SpreadCoord", p.SpreadCoords.size(),
                [&](const Writer& coord, std::size_t i) { WriteFields(coord, kSpreadCoord, p.SpreadCoords[i]); });
}

void ReadSpreadCoords(const Reader& r, std::string_view name, ParticleSystem& p) {
  p.SpreadCoords.clear();
  ReadNumbered(r.Block(name), "Count", "SpreadCoord", 1 << 20,
               [&](const Reader& coord, std::int32_t) { ReadFields(coord, kSpreadCoord, p.SpreadCoords.emplace_back()); });
}

using P = ParticleSystem;
constexpr Field<P> kParticle[] = {
    F("Count", &P::Count),
    F("SelfTime", &P::SelfTime),
    F("LifeTime", &P::LifeTime),
    F("LifeMode", &P::LifeMode),
    F("SpreadMode", &P::SpreadMode),
    F("SpreadInitialized", &P::SpreadInitialized),
    F("SpreadUniform", &P::SpreadUniform),
    F("AngleUnfiorm", &P::AngleUniform),
    F("PhaseSizeUniform", &P::PhaseSizeUniform),
    F("PhaseRotateUniform", &P::PhaseRotateUniform),
    Group<&P::SpreadX, kPhase>("SpreadX"),
    Group<&P::SpreadY, kPhase>("SpreadY"),
    Group<&P::AngleTheta, kPhase>("AngleTheta"),
    Group<&P::AnglePhi, kPhase>("AnglePhi"),
    Group<&P::PhaseSize, kPhase>("PhaseSize"),
    Group<&P::PhaseRotate, kPhase>("PhaseRotate"),
    Special<P>("SpreadCoords", WriteSpreadCoords, ReadSpreadCoords),
};

constexpr Field<TextFont> kFont[] = {
    F("FontName", &TextFont::Name),
    F("FontSize", &TextFont::Size),
    F("FontBold", &TextFont::Bold),
    F("FontItalic", &TextFont::Italic),
    F("FontUnderLine", &TextFont::Underline),
    F("FontStrikeTrough", &TextFont::Strikethrough),
};

// Older files kept each axis in its own element: X/Angle, X/Loop, X/CurrentAngle.
constexpr Field<Rotation> kRotation[] = {
    F("AngleX", &Rotation::AngleX).Old("X/Angle"),
    F("AngleY", &Rotation::AngleY).Old("Y/Angle"),
    F("AngleZ", &Rotation::AngleZ).Old("Z/Angle"),
    F("World", &Rotation::World),
    F("LoopX", &Rotation::LoopX).Old("X/Loop"),
    F("LoopY", &Rotation::LoopY).Old("Y/Loop"),
    F("LoopZ", &Rotation::LoopZ).Old("Z/Loop"),
    F("CurrentAngleX", &Rotation::CurrentAngleX).Old("X/CurrentAngle"),
    F("CurrentAngleY", &Rotation::CurrentAngleY).Old("Y/CurrentAngle"),
    F("CurrentAngleZ", &Rotation::CurrentAngleZ).Old("Z/CurrentAngle"),
    F("FineTuneRotationAngle", &Rotation::FineTuneRotationAngle),
};

constexpr Field<Circle3D> kCircle3D[] = {
    F("Radius", &Circle3D::Radius),
    F("Smoothness", &Circle3D::Smoothness),
    F("Tiling", &Circle3D::Tiling),
};

constexpr Field<Wave3D> kWave3D[] = {
    F("Amplitude", &Wave3D::Amplitude),
    F("Size", &Wave3D::Size),
    F("Phase", &Wave3D::Phase),
    F("Tiling", &Wave3D::Tiling),
};

constexpr Field<Spiral3D> kSpiral3D[] = {
    F("Radius", &Spiral3D::Radius),
    F("RevolutionCount", &Spiral3D::RevolutionCount),
    F("Smoothness", &Spiral3D::Smoothness),
    F("Tiling", &Spiral3D::Tiling),
};

// The exceptions of the text record, each for what old files hold or old readers expect.

// Old files keep one range for both axes, RandomizeXY; RandomizeY counts only beside RandomizeX.
void ReadRandomizeXY(const Reader& r, std::string_view name, TextObject& t) {
  if (r.Number(name, t.RandomizeX)) {
    r.Number("RandomizeY", t.RandomizeY);
  } else if (float both = 0; r.Number("RandomizeXY", both)) {
    t.RandomizeX = t.RandomizeY = both;
  }
}

// For old readers: the two ranges as one.
void WriteRandomizeXYSum(const Writer& w, std::string_view name, const TextObject& t) {
  w.Number(name, std::floor(static_cast<double>(t.RandomizeX) + t.RandomizeY));
}

// The base size is read the plain way: the number before any decimal comma.
void ReadFontSizeZero(const Reader& r, std::string_view name, TextObject& t) {
  if (const pugi::xml_node size = r.Node(name)) t.FONT_SIZE_ZERO = static_cast<float>(LeadingNumber(size.text().get()));
}

// A row of no words, or a file without the setting, shows one word a row.
void ReadWordsPerRow(const Reader& r, std::string_view name, TextObject& t) {
  if (!r.Number(name, t.WordsPerRow) || t.WordsPerRow == 0) t.WordsPerRow = 1;
}

// Line ends come back as LF from the file: CR LF again.
void ReadCurrentText(const Reader& r, std::string_view name, TextObject& t) {
  if (r.Text(name, t.CurrentText)) t.CurrentText = ReplaceAll(ReplaceAll(t.CurrentText, "\r\n", "\n"), "\n", "\r\n");
}

// Older files have no Particle block: the copies as OutputMultiplier, the particles at their
// defaults.
void ReadParticle(const Reader& r, std::string_view name, TextObject& t) {
  if (r.Node(name)) {
    ReadFields(r.Block(name), kParticle, t.Particle);
    return;
  }
  std::int32_t copies = 1;
  r.Number("OutputMultiplier", copies);
  t.Particle = ParticleSystem{};
  t.Particle.Count = std::max(1, copies);
  t.Particle.Particles.assign(1, ParticleState{});
}

void WriteWords(const Writer& w, std::string_view name, const TextObject& t) {
  WriteNumbered(w.Block(name), "WordCount", "Word", t.Words.size(), [&](const Writer& word, std::size_t i) {
    word.node.text().set(ReplaceAll(t.Words[i], "\r\n", kCrLfMarker).c_str());
  });
}

void ReadWords(const Reader& r, std::string_view name, TextObject& t) {
  std::vector<std::string> words;
  ReadNumbered(r.Block(name), "WordCount", "Word", 1 << 24, [&](const Reader& word, std::int32_t) {
    words.push_back(ReplaceAll(word.node.text().get(), kCrLfMarker, "\r\n"));
  });
  t.WordCount = static_cast<std::int32_t>(words.size());
  t.Words = StringList(std::move(words));
}

using T = TextObject;

constexpr Field<T> kPosition[] = {
    F("Top", &T::Top),
    F("Bottom", &T::Bottom),
    F("Left", &T::Left),
    F("Right", &T::Right),
};

constexpr Field<T> kDictionary[] = {
    F("FileName", &T::FileName),
    F("WordLength", &T::WordLength),
    F("ExcludeCharacters", &T::ExcludeCharacters),
    F("ExactWordLength", &T::ExactWordLength),
    F("Cut", &T::Cut),
    F("LowerCase", &T::LowerCase),
    F("UpperCase", &T::UpperCase),
    F("MixedCase1", &T::MixedCase1),
    F("MixedCase2", &T::MixedCase2),
    F("LineBreak", &T::LineBreak),
    F("WordsPerRow", &T::WordsPerRow).Reads(ReadWordsPerRow),
    F("Binary", &T::Binary),
    F("EditorSplitLines", &T::EditorSplitLines),
    F("WordStart", &T::WordStart),
    F("WordEnd", &T::WordEnd),
    Block<&T::DictionaryCounter, kCounter>("Counter"),
};

// The fallbacks to 0 are what a new record holds anyway; they stand for the old files without the
// element.
constexpr Field<T> kText[] = {
    F("Index", &T::Index),
    F("Color", &T::Color),
    F("AlignX", &T::AlignX),
    F("TextType", &T::TextType),
    F("SelfTime", &T::SelfTime),
    F("Vertical", &T::Vertical),
    F("Clip", &T::Clip),
    F("RandomizeX", &T::RandomizeX).Reads(ReadRandomizeXY),
    F("RandomizeY", &T::RandomizeY).WriteOnly(),  // read with RandomizeX
    Special<T>("RandomizeXY", WriteRandomizeXYSum, nullptr).WriteOnly(),  // read only when RandomizeX is not there
    F("RandomizeXYManual", &T::RandomizeXYManual).Missing(0),
    F("RandomizeY", &T::RandomizeY).WriteOnly(),  // once more, as the old writer did, for old readers
    F("RandomizeFontSize", &T::RandomizeFontSize),
    F("RandomizeFontSizeManual", &T::RandomizeFontSizeManual).Missing(0),
    F("PulseFontSize", &T::PulseFontSize),
    F("RadomizeColor", &T::RandomizeColor),
    F("PulseFontColor", &T::PulseFontColor),
    F("FONT_SIZE_ZERO", &T::FONT_SIZE_ZERO).Reads(ReadFontSizeZero),
    F("FlashText", &T::FlashText),
    F("TextTitleMode", &T::TextTitleMode),
    F("TextTickerMode", &T::TextTickerMode),
    F("SequenceCounter", &T::SequenceCounter),
    F("SequenceText", &T::SequenceText),
    F("SequenceTime", &T::SequenceTime),
    Block<&T::Particle, kParticle>("Particle").Reads(ReadParticle),
    Block<kPosition>("Position"),
    F("Text3D", &T::Text3D),
    F("BackGroundColor", &T::BackGroundColor),
    F("AlphaBlend", &T::AlphaBlend),
    F("Extrude3D", &T::Extrude3D),
    F("RandomizeFont", &T::RandomizeFont),
    Block<kDictionary>("Dictionary"),
    F("CurrentText", &T::CurrentText).Reads(ReadCurrentText),
    Block<&T::Counter, kCounter>("Counter"),
    Special<T>("Words", WriteWords, ReadWords),
    Block<&T::Font, kFont>("Font"),
    Block<&T::Rotation, kRotation>("Rotation"),
    F("Shape3DType", &T::Shape3DType),
    F("Shape3DRenderMesh", &T::Shape3DRenderMesh),
    Block<&T::Circle3D, kCircle3D>("Circle3D"),
    Block<&T::Wave3D, kWave3D>("Wave3D"),
    Block<&T::Spiral3D, kSpiral3D>("Spiral3D"),
    F("TextBoxTextureFileName", &T::TextBoxTextureFileName),
    F("VideoLockToTextBox", &T::VideoLockToTextBox).Missing(0),
    F("Mesh3DFileName", &T::Mesh3DFileName),
    F("Mesh3DZ", &T::Mesh3DZ),
    F("Mesh3DInfo", &T::Mesh3DInfo).Lines(),
    F("Mesh3DPreserveTextures", &T::Mesh3DPreserveTextures),
    F("EnableRender", &T::EnableRender).Missing(1),
};

}  // namespace

void XmlWriteText(pugi::xml_node root, const std::vector<TextObject>& texts) {
  WriteNumbered(Writer{root}.Block("Text"), "TextCount", "Text", texts.size(), [&](const Writer& one, std::size_t i) {
    TextObject t = texts[i];
    t.Index = static_cast<std::int32_t>(i + 1);
    WriteFields(one, kText, t);
  });
}

void XmlReadText(pugi::xml_node root, std::vector<TextObject>& texts) {
  texts.clear();
  ReadNumbered(Reader{Child(root, "Text")}, "TextCount", "Text", 1 << 16, [&](const Reader& one, std::int32_t i) {
    TextObject& t = texts.emplace_back();
    ReadFields(one, kText, t);
    t.Index = i;
  });
}

}  // namespace lumivane
