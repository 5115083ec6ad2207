#include "persistence/TextBlock.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <type_traits>

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

// ---- Writing ---------------------------------------------------------------------------------------

struct Writer {
  pugi::xml_node node;
  void Text(std::string_view name, std::string_view value) const { AppendValue(node, name, value); }
  void Number(std::string_view name, double value) const { Text(name, FormatNumber(value)); }
  void Flag(std::string_view name, bool value) const { Text(name, value ? "1" : "0"); }
  Writer Block(std::string_view name) const {
    pugi::xml_node parent = node;  // a handle: the copy appends to the same element
    return {parent.append_child(XmlDocument::ChildName(name).c_str())};
  }
};

void WriteCounter(const Writer& parent, const Counter& c) {
  const Writer w = parent.Block("Counter");
  w.Number("Value", c.Value);
  w.Number("Offset", c.Offset);
  w.Text("ValueType", c.ValueType);
  w.Text("Direction", c.Direction);
  w.Number("MinDigits", c.MinDigits);
  w.Number("MaxDigits", c.MaxDigits);
  w.Number("LineBreak", c.LineBreak);
}

void WritePhase(const Writer& w, std::string_view name, const PhaseParameter& p) {
  const std::string n(name);
  w.Number(n, p.Value);
  w.Number(n + "Start", p.Start);
  w.Number(n + "Length", p.Length);
  w.Number(n + "Direction", p.Direction);
  w.Text(n + "PlayBackMode", p.PlayBackMode);
}

void WriteParticle(const Writer& parent, const ParticleSystem& p) {
  const Writer w = parent.Block("Particle");
  w.Number("Count", p.Count);
  w.Number("SelfTime", p.SelfTime);
  w.Number("LifeTime", p.LifeTime);
  w.Text("LifeMode", p.LifeMode);
  w.Text("SpreadMode", p.SpreadMode);
  w.Flag("SpreadInitialized", p.SpreadInitialized);
  w.Flag("SpreadUniform", p.SpreadUniform);
  w.Flag("AngleUnfiorm", p.AngleUniform);
  w.Flag("PhaseSizeUniform", p.PhaseSizeUniform);
  w.Flag("PhaseRotateUniform", p.PhaseRotateUniform);
  WritePhase(w, "SpreadX", p.SpreadX);
  WritePhase(w, "SpreadY", p.SpreadY);
  WritePhase(w, "AngleTheta", p.AngleTheta);
  WritePhase(w, "AnglePhi", p.AnglePhi);
  WritePhase(w, "PhaseSize", p.PhaseSize);
  WritePhase(w, "PhaseRotate", p.PhaseRotate);
  const Writer coords = w.Block("SpreadCoords");
  coords.Number("Count", static_cast<double>(p.SpreadCoords.size()));
  for (std::size_t i = 0; i < p.SpreadCoords.size(); ++i) {
    const Writer c = coords.Block(std::to_string(i + 1) + "SpreadCoord");
    c.Number("X", p.SpreadCoords[i].X);
    c.Number("Y", p.SpreadCoords[i].Y);
  }
}

void WriteOne(const Writer& w, const TextObject& t) {
  w.Number("Index", t.Index);
  w.Number("Color", t.Color);
  w.Text("AlignX", t.AlignX);
  w.Text("TextType", t.TextType);
  w.Number("SelfTime", t.SelfTime);
  w.Flag("Vertical", t.Vertical);
  w.Flag("Clip", t.Clip);
  w.Number("RandomizeX", t.RandomizeX);
  w.Number("RandomizeY", t.RandomizeY);
  // For old readers: the sum as one range, and RandomizeY once more, as the old writer did.
  w.Number("RandomizeXY", std::floor(static_cast<double>(t.RandomizeX) + t.RandomizeY));
  w.Number("RandomizeXYManual", t.RandomizeXYManual);
  w.Number("RandomizeY", t.RandomizeY);
  w.Number("RandomizeFontSize", t.RandomizeFontSize);
  w.Number("RandomizeFontSizeManual", t.RandomizeFontSizeManual);
  w.Flag("PulseFontSize", t.PulseFontSize);
  w.Number("RadomizeColor", t.RandomizeColor);
  w.Flag("PulseFontColor", t.PulseFontColor);
  w.Number("FONT_SIZE_ZERO", t.FONT_SIZE_ZERO);
  w.Flag("FlashText", t.FlashText);
  w.Flag("TextTitleMode", t.TextTitleMode);
  w.Flag("TextTickerMode", t.TextTickerMode);
  w.Number("SequenceCounter", t.SequenceCounter);
  w.Flag("SequenceText", t.SequenceText);
  w.Number("SequenceTime", t.SequenceTime);
  WriteParticle(w, t.Particle);
  const Writer position = w.Block("Position");
  position.Number("Top", t.Top);
  position.Number("Bottom", t.Bottom);
  position.Number("Left", t.Left);
  position.Number("Right", t.Right);
  w.Flag("Text3D", t.Text3D);
  w.Number("BackGroundColor", t.BackGroundColor);
  w.Flag("AlphaBlend", t.AlphaBlend);
  w.Number("Extrude3D", t.Extrude3D);
  w.Flag("RandomizeFont", t.RandomizeFont);
  const Writer dictionary = w.Block("Dictionary");
  dictionary.Text("FileName", t.FileName);
  dictionary.Number("WordLength", t.WordLength);
  dictionary.Text("ExcludeCharacters", t.ExcludeCharacters);
  dictionary.Flag("ExactWordLength", t.ExactWordLength);
  dictionary.Flag("Cut", t.Cut);
  dictionary.Flag("LowerCase", t.LowerCase);
  dictionary.Flag("UpperCase", t.UpperCase);
  dictionary.Flag("MixedCase1", t.MixedCase1);
  dictionary.Flag("MixedCase2", t.MixedCase2);
  dictionary.Number("LineBreak", t.LineBreak);
  dictionary.Number("WordsPerRow", t.WordsPerRow);
  dictionary.Flag("Binary", t.Binary);
  dictionary.Flag("EditorSplitLines", t.EditorSplitLines);
  dictionary.Text("WordStart", t.WordStart);
  dictionary.Text("WordEnd", t.WordEnd);
  WriteCounter(dictionary, t.DictionaryCounter);
  w.Text("CurrentText", t.CurrentText);
  WriteCounter(w, t.Counter);
  const Writer words = w.Block("Words");
  words.Number("WordCount", static_cast<double>(t.Words.size()));
  for (std::size_t i = 0; i < t.Words.size(); ++i)
    words.Text(std::to_string(i + 1) + "Word", ReplaceAll(t.Words[i], "\r\n", kCrLfMarker));
  const Writer font = w.Block("Font");
  font.Text("FontName", t.Font.Name);
  font.Number("FontSize", t.Font.Size);
  font.Flag("FontBold", t.Font.Bold);
  font.Flag("FontItalic", t.Font.Italic);
  font.Flag("FontUnderLine", t.Font.Underline);
  font.Flag("FontStrikeTrough", t.Font.Strikethrough);
  const Writer rotation = w.Block("Rotation");
  rotation.Number("AngleX", t.Rotation.AngleX);
  rotation.Number("AngleY", t.Rotation.AngleY);
  rotation.Number("AngleZ", t.Rotation.AngleZ);
  rotation.Flag("World", t.Rotation.World);
  rotation.Flag("LoopX", t.Rotation.LoopX);
  rotation.Flag("LoopY", t.Rotation.LoopY);
  rotation.Flag("LoopZ", t.Rotation.LoopZ);
  rotation.Number("CurrentAngleX", t.Rotation.CurrentAngleX);
  rotation.Number("CurrentAngleY", t.Rotation.CurrentAngleY);
  rotation.Number("CurrentAngleZ", t.Rotation.CurrentAngleZ);
  rotation.Number("FineTuneRotationAngle", t.Rotation.FineTuneRotationAngle);
  w.Text("Shape3DType", t.Shape3DType);
  w.Number("Shape3DRenderMesh", t.Shape3DRenderMesh);
  const Writer circle = w.Block("Circle3D");
  circle.Number("Radius", t.Circle3D.Radius);
  circle.Number("Smoothness", t.Circle3D.Smoothness);
  circle.Number("Tiling", t.Circle3D.Tiling);
  const Writer wave = w.Block("Wave3D");
  wave.Number("Amplitude", t.Wave3D.Amplitude);
  wave.Number("Size", t.Wave3D.Size);
  wave.Number("Phase", t.Wave3D.Phase);
  wave.Number("Tiling", t.Wave3D.Tiling);
  const Writer spiral = w.Block("Spiral3D");
  spiral.Number("Radius", t.Spiral3D.Radius);
  spiral.Number("RevolutionCount", t.Spiral3D.RevolutionCount);
  spiral.Number("Smoothness", t.Spiral3D.Smoothness);
  spiral.Number("Tiling", t.Spiral3D.Tiling);
  w.Text("TextBoxTextureFileName", t.TextBoxTextureFileName);
  w.Number("VideoLockToTextBox", t.VideoLockToTextBox);
  w.Text("Mesh3DFileName", t.Mesh3DFileName);
  w.Number("Mesh3DZ", t.Mesh3DZ);
  w.Text("Mesh3DInfo", ReplaceAll(t.Mesh3DInfo, "\r\n", kCrLfMarker));
  w.Number("Mesh3DPreserveTextures", t.Mesh3DPreserveTextures);
  w.Number("EnableRender", t.EnableRender);
}

// ---- Reading ---------------------------------------------------------------------------------------

// Reads values from one element's children; each read leaves the field alone when the element is
// missing or does not hold a number.
struct Reader {
  pugi::xml_node node;
  pugi::xml_node Node(std::string_view name) const { return Child(node, name); }
  bool Has(std::string_view name) const { return static_cast<bool>(Node(name)); }
  Reader Block(std::string_view name) const { return {Node(name)}; }
  bool Text(std::string_view name, std::string& out) const {
    const pugi::xml_node n = Node(name);
    if (!n) return false;
    out = n.text().get();
    return true;
  }
  // Numbers as the old writer's locale wrote them: a decimal comma reads as a point.
  std::optional<double> Value(std::string_view name) const {
    const pugi::xml_node n = Node(name);
    if (!n) return std::nullopt;
    std::string s = n.text().get();
    std::replace(s.begin(), s.end(), ',', '.');
    return ParseNumber(s);
  }
  template <class T>
  bool Number(std::string_view name, T& out) const {
    const auto v = Value(name);
    if (!v) return false;
    if constexpr (std::is_same_v<T, bool>) {
      out = *v != 0.0;
    } else if constexpr (std::is_integral_v<T>) {
      const auto i = ToInt32(*v);
      if (!i) return false;
      out = static_cast<T>(*i);
    } else {
      out = static_cast<T>(*v);
    }
    return true;
  }
};

void ReadCounter(const Reader& parent, Counter& c) {
  const Reader r = parent.Block("Counter");
  r.Number("Value", c.Value);
  r.Number("Offset", c.Offset);
  r.Text("ValueType", c.ValueType);
  r.Text("Direction", c.Direction);
  r.Number("MinDigits", c.MinDigits);
  r.Number("MaxDigits", c.MaxDigits);
  if (!r.Number("LineBreak", c.LineBreak)) c.LineBreak = 1;
}

void ReadPhase(const Reader& r, std::string_view name, PhaseParameter& p) {
  const std::string n(name);
  r.Number(n, p.Value);
  r.Number(n + "Start", p.Start);
  r.Number(n + "Length", p.Length);
  r.Number(n + "Direction", p.Direction);
  r.Text(n + "PlayBackMode", p.PlayBackMode);
}

void ReadParticle(const Reader& text, ParticleSystem& p) {
  if (!text.Has("Particle")) {
    // Older files: the copies as OutputMultiplier, the particle set at its defaults.
    std::int32_t copies = 1;
    text.Number("OutputMultiplier", copies);
    p = ParticleSystem{};
    p.Count = std::max(1, copies);
    p.Particles.assign(1, ParticleState{});
    return;
  }
  const Reader r = text.Block("Particle");
  r.Number("Count", p.Count);
  r.Number("SelfTime", p.SelfTime);
  r.Number("LifeTime", p.LifeTime);
  r.Text("LifeMode", p.LifeMode);
  r.Text("SpreadMode", p.SpreadMode);
  r.Number("SpreadInitialized", p.SpreadInitialized);
  r.Number("SpreadUniform", p.SpreadUniform);
  r.Number("AngleUnfiorm", p.AngleUniform);
  r.Number("PhaseSizeUniform", p.PhaseSizeUniform);
  r.Number("PhaseRotateUniform", p.PhaseRotateUniform);
  ReadPhase(r, "SpreadX", p.SpreadX);
  ReadPhase(r, "SpreadY", p.SpreadY);
  ReadPhase(r, "AngleTheta", p.AngleTheta);
  ReadPhase(r, "AnglePhi", p.AnglePhi);
  ReadPhase(r, "PhaseSize", p.PhaseSize);
  ReadPhase(r, "PhaseRotate", p.PhaseRotate);
  const Reader coords = r.Block("SpreadCoords");
  std::int32_t count = 0;
  coords.Number("Count", count);
  p.SpreadCoords.clear();
  for (std::int32_t i = 1; i <= std::clamp(count, 0, 1 << 20); ++i) {
    const Reader c = coords.Block(std::to_string(i) + "SpreadCoord");
    if (!c.node) break;
    SpreadCoord xy;
    c.Number("X", xy.X);
    c.Number("Y", xy.Y);
    p.SpreadCoords.push_back(xy);
  }
}

// The rotation's axes, flat or in the old child form (X/Angle, X/CurrentAngle, X/Loop).
void ReadAxis(const Reader& rotation, char axis, float& angle, float& current, bool& loop) {
  const std::string a(1, axis);
  const Reader old = rotation.Block(a);
  if (!rotation.Number("Angle" + a, angle) && !old.Number("Angle", angle)) angle = 0;
  if (!rotation.Number("CurrentAngle" + a, current) && !old.Number("CurrentAngle", current)) current = 0;
  if (!rotation.Number("Loop" + a, loop)) old.Number("Loop", loop);
}

TextObject ReadOne(const Reader& r) {
  TextObject t;
  r.Number("Index", t.Index);
  r.Number("Color", t.Color);
  r.Text("AlignX", t.AlignX);
  r.Text("TextType", t.TextType);
  r.Number("SelfTime", t.SelfTime);
  r.Number("Vertical", t.Vertical);
  r.Number("Clip", t.Clip);
  if (!r.Number("RandomizeX", t.RandomizeX)) {
    // Old files keep one range for both axes.
    float both = 0;
    if (r.Number("RandomizeXY", both)) t.RandomizeX = t.RandomizeY = both;
  } else {
    r.Number("RandomizeY", t.RandomizeY);
  }
  if (!r.Number("RandomizeXYManual", t.RandomizeXYManual)) t.RandomizeXYManual = 0;
  r.Number("RandomizeFontSize", t.RandomizeFontSize);
  if (!r.Number("RandomizeFontSizeManual", t.RandomizeFontSizeManual)) t.RandomizeFontSizeManual = 0;
  r.Number("PulseFontSize", t.PulseFontSize);
  r.Number("RadomizeColor", t.RandomizeColor);
  r.Number("PulseFontColor", t.PulseFontColor);
  // The base size is read the plain way: the number before any decimal comma.
  if (const pugi::xml_node size = r.Node("FONT_SIZE_ZERO"))
    t.FONT_SIZE_ZERO = static_cast<float>(LeadingNumber(size.text().get()));
  r.Number("FlashText", t.FlashText);
  r.Number("TextTitleMode", t.TextTitleMode);
  r.Number("TextTickerMode", t.TextTickerMode);
  r.Number("SequenceCounter", t.SequenceCounter);
  r.Number("SequenceText", t.SequenceText);
  r.Number("SequenceTime", t.SequenceTime);
  ReadParticle(r, t.Particle);
  const Reader position = r.Block("Position");
  position.Number("Top", t.Top);
  position.Number("Bottom", t.Bottom);
  position.Number("Left", t.Left);
  position.Number("Right", t.Right);
  r.Number("Text3D", t.Text3D);
  r.Number("BackGroundColor", t.BackGroundColor);
  r.Number("AlphaBlend", t.AlphaBlend);
  r.Number("Extrude3D", t.Extrude3D);
  r.Number("RandomizeFont", t.RandomizeFont);
  const Reader dictionary = r.Block("Dictionary");
  dictionary.Text("FileName", t.FileName);
  dictionary.Number("WordLength", t.WordLength);
  dictionary.Text("ExcludeCharacters", t.ExcludeCharacters);
  dictionary.Number("ExactWordLength", t.ExactWordLength);
  dictionary.Number("Cut", t.Cut);
  dictionary.Number("LowerCase", t.LowerCase);
  dictionary.Number("UpperCase", t.UpperCase);
  dictionary.Number("MixedCase1", t.MixedCase1);
  dictionary.Number("MixedCase2", t.MixedCase2);
  dictionary.Number("LineBreak", t.LineBreak);
  if (!dictionary.Number("WordsPerRow", t.WordsPerRow) || t.WordsPerRow == 0) t.WordsPerRow = 1;
  dictionary.Number("Binary", t.Binary);
  dictionary.Number("EditorSplitLines", t.EditorSplitLines);
  dictionary.Text("WordStart", t.WordStart);
  dictionary.Text("WordEnd", t.WordEnd);
  ReadCounter(dictionary, t.DictionaryCounter);
  if (r.Text("CurrentText", t.CurrentText)) {
    // Line ends come back as LF from the file: CR LF again.
    t.CurrentText = ReplaceAll(ReplaceAll(t.CurrentText, "\r\n", "\n"), "\n", "\r\n");
  }
  ReadCounter(r, t.Counter);
  const Reader words = r.Block("Words");
  std::int32_t wordCount = 0;
  words.Number("WordCount", wordCount);
  std::vector<std::string> list;
  for (std::int32_t i = 1; i <= std::clamp(wordCount, 0, 1 << 24); ++i) {
    std::string word;
    if (!words.Text(std::to_string(i) + "Word", word)) break;
    list.push_back(ReplaceAll(word, kCrLfMarker, "\r\n"));
  }
  t.WordCount = static_cast<std::int32_t>(list.size());
  t.Words = StringList(std::move(list));
  const Reader font = r.Block("Font");
  font.Text("FontName", t.Font.Name);
  font.Number("FontSize", t.Font.Size);
  font.Number("FontBold", t.Font.Bold);
  font.Number("FontItalic", t.Font.Italic);
  font.Number("FontUnderLine", t.Font.Underline);
  font.Number("FontStrikeTrough", t.Font.Strikethrough);
  const Reader rotation = r.Block("Rotation");
  Rotation& rot = t.Rotation;
  ReadAxis(rotation, 'X', rot.AngleX, rot.CurrentAngleX, rot.LoopX);
  ReadAxis(rotation, 'Y', rot.AngleY, rot.CurrentAngleY, rot.LoopY);
  ReadAxis(rotation, 'Z', rot.AngleZ, rot.CurrentAngleZ, rot.LoopZ);
  rotation.Number("World", rot.World);
  rotation.Number("FineTuneRotationAngle", rot.FineTuneRotationAngle);
  r.Text("Shape3DType", t.Shape3DType);
  r.Number("Shape3DRenderMesh", t.Shape3DRenderMesh);
  const Reader circle = r.Block("Circle3D");
  circle.Number("Radius", t.Circle3D.Radius);
  circle.Number("Smoothness", t.Circle3D.Smoothness);
  circle.Number("Tiling", t.Circle3D.Tiling);
  const Reader wave = r.Block("Wave3D");
  wave.Number("Amplitude", t.Wave3D.Amplitude);
  wave.Number("Size", t.Wave3D.Size);
  wave.Number("Phase", t.Wave3D.Phase);
  wave.Number("Tiling", t.Wave3D.Tiling);
  const Reader spiral = r.Block("Spiral3D");
  spiral.Number("Radius", t.Spiral3D.Radius);
  spiral.Number("RevolutionCount", t.Spiral3D.RevolutionCount);
  spiral.Number("Smoothness", t.Spiral3D.Smoothness);
  spiral.Number("Tiling", t.Spiral3D.Tiling);
  r.Text("TextBoxTextureFileName", t.TextBoxTextureFileName);
  if (!r.Number("VideoLockToTextBox", t.VideoLockToTextBox)) t.VideoLockToTextBox = 0;
  r.Text("Mesh3DFileName", t.Mesh3DFileName);
  r.Number("Mesh3DZ", t.Mesh3DZ);
  if (r.Text("Mesh3DInfo", t.Mesh3DInfo)) t.Mesh3DInfo = ReplaceAll(t.Mesh3DInfo, kCrLfMarker, "\r\n");
  r.Number("Mesh3DPreserveTextures", t.Mesh3DPreserveTextures);
  if (!r.Number("EnableRender", t.EnableRender)) t.EnableRender = 1;
  return t;
}

}  // namespace

void XmlWriteText(pugi::xml_node root, const std::vector<TextObject>& texts) {
  const Writer block = Writer{root}.Block("Text");
  block.Number("TextCount", static_cast<double>(texts.size()));
  for (std::size_t i = 0; i < texts.size(); ++i) {
    TextObject t = texts[i];
    t.Index = static_cast<std::int32_t>(i + 1);
    WriteOne(block.Block(std::to_string(i + 1) + "Text"), t);
  }
}

void XmlReadText(pugi::xml_node root, std::vector<TextObject>& texts) {
  texts.clear();
  const Reader block{Child(root, "Text")};
  std::int32_t count = 0;
  block.Number("TextCount", count);
  for (std::int32_t i = 1; i <= std::clamp(count, 0, 1 << 16); ++i) {
    const Reader one = block.Block(std::to_string(i) + "Text");
    if (!one.node) break;  // a count larger than the texts there
    texts.push_back(ReadOne(one));
    texts.back().Index = i;
  }
}

}  // namespace lumivane
