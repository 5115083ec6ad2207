#include "persistence/TextBlock.h"

#include <gtest/gtest.h>

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
  t.Particle.SpreadX = {100, 1, 10, 20, "L"};
  t.Particle.AnglePhi = {45, -1, 0, 90, "I"};
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
