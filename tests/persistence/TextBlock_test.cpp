#include "persistence/TextBlock.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "persistence/XmlDocument.h"

namespace lumivane {
namespace {

// A text with a distinct value in every field the file keeps.
TextObject Everything() {
  TextObject t;
  t.Color = 0x00102030;
  t.AlignX = "Right Justify";
  t.TextType = "Dictionary";
  t.SelfTime = 321;
  t.Vertical = true;
  t.Clip = true;
  t.RandomizeX = 12.5f;
  t.RandomizeY = -7;
  t.RandomizeXYManual = 1;
  t.RandomizeFontSize = 3.25f;
  t.RandomizeFontSizeManual = 1;
  t.PulseFontSize = true;
  t.RandomizeColor = 40;
  t.PulseFontColor = true;
  t.FONT_SIZE_ZERO = 48;
  t.FlashText = true;
  t.TextTitleMode = true;
  t.TextTickerMode = true;
  t.SequenceCounter = 4;
  t.SequenceText = true;
  t.SequenceTime = 90;
  t.Particle.Count = 5;
  t.Particle.SelfTime = 11;
  t.Particle.LifeTime = 1200;
  t.Particle.LifeMode = "O";
  t.Particle.SpreadMode = "Spiral";
  t.Particle.SpreadInitialized = true;
  t.Particle.SpreadCoords = {{1, -2}, {30, 40}};
  t.Particle.SpreadUniform = true;
  t.Particle.AngleUniform = true;
  t.Particle.PhaseSizeUniform = true;
  t.Particle.PhaseRotateUniform = true;
  t.Particle.SpreadX = {100, 1, 10, 20, "L"};
  t.Particle.SpreadY = {101, -1, 11, 21, "I"};
  t.Particle.AngleTheta = {30, 1, 3, 60, "O"};
  t.Particle.AnglePhi = {45, -1, 0, 90, "I"};
  t.Particle.PhaseSize = {8, 1, 2, 3, "L"};
  t.Particle.PhaseRotate = {7, 0, 1, 2, "O"};
  t.Left = 10;
  t.Top = 20;
  t.Right = 110;
  t.Bottom = 70;
  t.Text3D = true;
  t.BackGroundColor = 0x00FF00FF;
  t.AlphaBlend = true;
  t.Extrude3D = 0.25f;
  t.RandomizeFont = true;
  t.FileName = "/shows/words.txt";
  t.WordLength = 12;
  t.ExcludeCharacters = "xyz";
  t.ExactWordLength = true;
  t.Cut = true;
  t.LowerCase = t.UpperCase = t.MixedCase1 = t.MixedCase2 = true;
  t.LineBreak = 3;
  t.WordsPerRow = 2;
  t.Binary = true;
  t.EditorSplitLines = true;
  t.WordStart = "a";
  t.WordEnd = "z";
  t.DictionaryCounter = {17, 1, "Integer", "Decrement (-)", 1, 4, 0, 0, 2};
  t.CurrentText = "two\r\nlines";
  t.Counter = {123.5, 0.5, "Real", "Increment (+)", 0, 9, 0, 0, 3};
  t.Words = StringList({"one", "line\r\nbreak", "Grüße"});
  t.WordCount = 3;
  t.Font = {"DejaVu Serif", 18.5f, true, true, true, true};
  t.Rotation = {1, 2, 3, true, false, true, true, 4, 5, 6, 1};
  t.Shape3DType = "Wave";
  t.Shape3DRenderMesh = 1;
  t.Circle3D = {1, 2, 3};
  t.Wave3D = {4, 5, 6, 0, 7};
  t.Spiral3D = {8, 9, 10, 11};
  t.TextBoxTextureFileName = "/shows/box.png";
  t.VideoLockToTextBox = 1;
  t.Mesh3DFileName = "/shows/mesh.3ds";
  t.Mesh3DZ = -1.5f;
  t.Mesh3DInfo = "faces: 12\r\nvertices: 8";
  t.Mesh3DPreserveTextures = 1;
  t.EnableRender = 0;
  return t;
}

std::string WriteTexts(const std::vector<TextObject>& texts) {
  XmlDocument doc;
  doc.New();
  XmlWriteText(doc.Root(), texts);
  return doc.ToString();
}

std::vector<TextObject> ReadTexts(const std::string& xml) {
  XmlDocument doc;
  std::string error;
  EXPECT_TRUE(doc.Parse(xml, error)) << error;
  std::vector<TextObject> texts;
  XmlReadText(doc.Root(), texts);
  return texts;
}

TEST(TextBlock, EveryKeptFieldRoundTrips) {
  std::vector<TextObject> texts{Everything(), NewTextObject(TextFont{"DejaVu Sans", 12})};
  texts[0].Index = 1;
  texts[1].Index = 2;
  // What the file does not keep: runtime state, drawn values, loaded words.
  texts[0].LastUpdateTick = 99;
  texts[0].CurrentColor = 5;
  texts[0].DictionaryWords = StringList({"loaded"});
  texts[0].Particle.Particles.resize(5);

  XmlDocument doc;
  doc.New();
  XmlWriteText(doc.Root(), texts);
  std::string error;
  XmlDocument reread;
  ASSERT_TRUE(reread.Parse(doc.ToString(), error)) << error;
  std::vector<TextObject> read;
  XmlReadText(reread.Root(), read);
  ASSERT_EQ(read.size(), 2u);

  TextObject expected = Everything();
  expected.Index = 1;
  EXPECT_EQ(read[0], expected);
  TextObject plain = NewTextObject(TextFont{"DejaVu Sans", 12});
  plain.Index = 2;
  plain.Particle.Particles.clear();
  plain.DictionaryCounter.LineBreak = 1;
  EXPECT_EQ(read[1].Counter, plain.Counter);
  EXPECT_EQ(read[1].Font, plain.Font);
  EXPECT_EQ(read[1].SelfTime, 500);

  // The old readers' extras are there: RandomizeXY and the doubled RandomizeY.
  const std::string xml = doc.ToString();
  EXPECT_NE(xml.find("<RandomizeXY>5</RandomizeXY>"), std::string::npos);
  EXPECT_NE(xml.find("<RandomizeXYManual>1</RandomizeXYManual>\n      <RandomizeY>-7</RandomizeY>"),
            std::string::npos);
  EXPECT_NE(xml.find("<2Word>line$CRLF$break</2Word>"), std::string::npos);
  EXPECT_NE(xml.find("<TextCount>2</TextCount>"), std::string::npos);
  // Nothing is lost on the way: what was read writes the same file again.
  EXPECT_EQ(WriteTexts(read), xml);
}

// An element's place in the file: each step the element's name and which of its namesakes it is.
using Path = std::vector<std::pair<std::string, int>>;

void Leaves(pugi::xml_node node, Path& path, std::vector<Path>& out) {
  if (!node.first_child() || node.first_child().type() != pugi::node_element) {
    out.push_back(path);
    return;
  }
  for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
    int namesakes = 0;
    for (pugi::xml_node n = child.previous_sibling(child.name()); n; n = n.previous_sibling(child.name())) ++namesakes;
    path.emplace_back(child.name(), namesakes);
    Leaves(child, path, out);
    path.pop_back();
  }
}

pugi::xml_node At(pugi::xml_node node, const Path& path) {
  for (const auto& [name, namesakes] : path) {
    node = node.child(name.c_str());
    for (int i = 0; i < namesakes && node; ++i) node = node.next_sibling(name.c_str());
  }
  return node;
}

std::string Describe(const Path& path) {
  std::string s;
  for (const auto& step : path) {
    s += '/';
    s += XmlDocument::FileName(step.first);
  }
  return s;
}

// Every element the writer puts out is read back: each one in turn is changed in the file, and
// the change must come back in the next write. The exceptions are the elements kept for readers of
// older files and the list position.
TEST(TextBlock, EveryWrittenElementIsRead) {
  // The second text has its defaults, and a list item so that its counts are not all of a list.
  std::vector<TextObject> texts{Everything(), NewTextObject(TextFont{"DejaVu Sans", 12})};
  texts[1].Words = StringList({"solo"});
  texts[1].Particle.SpreadCoords = {{0, 0}};
  const std::string xml = WriteTexts(texts);
  XmlDocument doc;
  std::string error;
  ASSERT_TRUE(doc.Parse(xml, error)) << error;
  std::vector<Path> leaves;
  Path path;
  Leaves(doc.Root(), path, leaves);
  ASSERT_GT(leaves.size(), 250u);

  // Changes the element to `value` and answers whether the next write has it too.
  auto comesBack = [&](const Path& leaf, const std::string& value) {
    XmlDocument changed;
    EXPECT_TRUE(changed.Parse(xml, error)) << error;
    At(changed.Root(), leaf).text().set(value.c_str());
    XmlDocument rewritten;
    EXPECT_TRUE(rewritten.Parse(WriteTexts(ReadTexts(changed.ToString())), error)) << error;
    const pugi::xml_node again = At(rewritten.Root(), leaf);
    return again && again.text().get() == value;
  };
  std::set<std::string> unread;
  for (const Path& leaf : leaves) {
    // Read when two different values both come back: one alone may be what a record without the
    // element holds. Flags take only 0 and 1; a count of words a row reads 0 as 1.
    int back = 0;
    for (const std::string value : {"0", "1", "2"})
      if (back < 2 && comesBack(leaf, value)) ++back;
    if (back < 2) unread.insert(Describe(leaf) + (leaf.back().second > 0 ? "#2" : ""));
  }
  const std::set<std::string> expected = {
      "/Text/1Text/Index", "/Text/2Text/Index",                // the list's order decides
      "/Text/1Text/RandomizeXY", "/Text/2Text/RandomizeXY",    // read only when RandomizeX is missing
      "/Text/1Text/RandomizeY#2", "/Text/2Text/RandomizeY#2",  // doubled for old readers
  };
  EXPECT_EQ(unread, expected);
}

TEST(TextBlock, OldFilesAreServedByTheirFallbacks) {
  const std::string old = R"(<File><Text><TextCount>3</TextCount>
    <1Text>
      <RandomizeXY>30</RandomizeXY>
      <FONT_SIZE_ZERO>52,5</FONT_SIZE_ZERO>
      <Extrude3D>0,5</Extrude3D>
      <OutputMultiplier>0</OutputMultiplier>
      <Dictionary><WordsPerRow>0</WordsPerRow><Counter><Value>2</Value></Counter></Dictionary>
      <CurrentText>a
b</CurrentText>
      <Rotation><X><Angle>15</Angle><Loop>1</Loop><CurrentAngle>2</CurrentAngle></X><AngleY>9</AngleY></Rotation>
    </1Text>
    <2Text><OutputMultiplier>4</OutputMultiplier><SelfTime>not a number</SelfTime></2Text>
  </Text></File>)";
  XmlDocument doc;
  std::string error;
  ASSERT_TRUE(doc.Parse(old, error)) << error;
  std::vector<TextObject> read;
  XmlReadText(doc.Root(), read);
  ASSERT_EQ(read.size(), 2u);  // the count promised three; two are there
  const TextObject& t = read[0];
  EXPECT_EQ(t.RandomizeX, 30.0f);
  EXPECT_EQ(t.RandomizeY, 30.0f);
  EXPECT_EQ(t.FONT_SIZE_ZERO, 52.0f);  // read the plain way, as it always was
  EXPECT_EQ(t.Extrude3D, 0.5f);
  EXPECT_EQ(t.Particle.Count, 1);      // at least one copy
  EXPECT_EQ(t.WordsPerRow, 1);
  EXPECT_EQ(t.DictionaryCounter.LineBreak, 1);
  EXPECT_EQ(t.Counter.LineBreak, 1);
  EXPECT_EQ(t.CurrentText, "a\r\nb");
  EXPECT_EQ(t.Rotation.AngleX, 15.0f);
  EXPECT_TRUE(t.Rotation.LoopX);
  EXPECT_EQ(t.Rotation.CurrentAngleX, 2.0f);
  EXPECT_EQ(t.Rotation.AngleY, 9.0f);
  EXPECT_EQ(t.EnableRender, 1);
  EXPECT_EQ(read[1].Particle.Count, 4);
  EXPECT_EQ(read[1].SelfTime, 0);  // what does not parse keeps the empty record's value
  EXPECT_EQ(read[1].Index, 2);

  XmlDocument empty;
  ASSERT_TRUE(empty.Parse("<File><Text><TextCount>0</TextCount></Text></File>", error));
  XmlReadText(empty.Root(), read);
  EXPECT_TRUE(read.empty());
}

}  // namespace
}  // namespace lumivane
