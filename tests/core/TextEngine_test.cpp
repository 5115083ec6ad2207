#include "core/TextEngine.h"

#include <gtest/gtest.h>

#include "support/EngineFixture.h"

namespace lumivane {
namespace {

class TextListTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  std::vector<std::string> Shown(const std::vector<TextObject>& list) {
    std::vector<std::string> out;
    for (const auto& t : list) out.push_back(t.CurrentText);
    return out;
  }
  void ExpectIndicesInOrder(const std::vector<TextObject>& list) {
    for (std::size_t i = 0; i < list.size(); ++i) EXPECT_EQ(list[i].Index, static_cast<std::int32_t>(i + 1));
  }
};

TEST_F(TextListTest, IndicesAreRewrittenByAppendRemoveAndZOrder) {
  for (const char* s : {"a", "b", "c", "d"}) AddText(s);
  ExpectIndicesInOrder(text.Live());

  text.TextRemove(2);
  EXPECT_EQ(Shown(text.Live()), (std::vector<std::string>{"a", "c", "d"}));
  ExpectIndicesInOrder(text.Live());

  text.PreviewTextZOrder(1, /*toBack=*/false);  // to the front: the end of the list
  EXPECT_EQ(Shown(text.Live()), (std::vector<std::string>{"c", "d", "a"}));
  ExpectIndicesInOrder(text.Live());

  text.PreviewTextZOrder(3, /*toBack=*/true);  // to the back: position 1
  EXPECT_EQ(Shown(text.Live()), (std::vector<std::string>{"a", "c", "d"}));
  ExpectIndicesInOrder(text.Live());

  // A record written back keeps its list position as its index whatever it carried.
  TextObject r = text.TextRecordRead(2);
  r.Index = 99;
  text.TextRecordWrite(2, r);
  EXPECT_EQ(text.Live()[1].Index, 2);

  text.TextRemove(1);
  text.TextRemove(1);
  text.TextRemove(1);
  EXPECT_EQ(text.PreviewGetTextCount(), 0);
  EXPECT_EQ(text.RenderGetTextCount(), 0);
}

TEST_F(TextListTest, OutOfRangeReadsAreEmptyAndWritesAreSkipped) {
  AddText("only");
  for (std::int32_t bad : {0, -1, 2, 1000000, INT32_MIN}) {
    EXPECT_EQ(text.RenderGetCurrentText(bad), "") << bad;
    EXPECT_EQ(text.RenderGetFont(bad).Name, "") << bad;
    EXPECT_EQ(text.RenderGetDXTextColor(bad), 0u) << bad;
    EXPECT_EQ(text.RenderGetOutputMultiplier(bad), 0) << bad;
    EXPECT_FALSE(text.RenderGetClip(bad)) << bad;
    EXPECT_EQ(text.RenderGetRotationCurrentAngleZ(bad), 0.0f) << bad;
    EXPECT_EQ(text.PreviewGetTextBoxSize(bad).Width, 0) << bad;
    EXPECT_EQ(text.TextRecordRead(bad), TextObject{}) << bad;
    text.TextRecordWrite(bad, TextObject{});
    text.TextRemove(bad);
    text.PreviewTextZOrder(bad, true);
    text.PreviewSetPosition(bad, 1, 2, 3, 4);
    text.PreviewSetTextCounter(bad, "5");
    text.RenderSetRotationCurrentAngle(bad, 1, 2, 3);
  }
  ASSERT_EQ(text.RenderGetTextCount(), 1);
  EXPECT_EQ(text.RenderGetCurrentText(1), "only");
}

TEST_F(TextListTest, LockFreezesTheOutputAndUnlockHandsTheEditsOver) {
  AddText("live");
  text.EngineLock();
  ASSERT_TRUE(text.IsLocked());

  // Edits land in the locked copy; the renderer still sees the live list.
  text.PreviewSetTextColor(1, 0x0000FF);
  text.PreviewSetPosition(1, 10, 20, 110, 70);
  EXPECT_EQ(text.TextRecordRead(1).Color, 0x0000FF);
  EXPECT_EQ(text.Live()[0].Color, 0);
  EXPECT_EQ(text.RenderGetDXTextColor(1), 0xFF000000u);
  // Render-side state written meanwhile stays on the live record.
  text.RenderSetRotationCurrentAngle(1, 5, 6, 7);
  EXPECT_EQ(text.TextRecordRead(1).Rotation.CurrentAngleX, 0.0f);
  // A second lock does not overwrite the edits with the live list.
  text.EngineLock();
  EXPECT_EQ(text.TextRecordRead(1).Color, 0x0000FF);

  text.EngineUnlock();
  EXPECT_FALSE(text.IsLocked());
  EXPECT_EQ(text.RenderGetDXTextColor(1), 0xFFFF0000u);  // red, in device order
  EXPECT_EQ(text.PreviewGetTextBoxSize(1).Width, 100);
  EXPECT_EQ(text.PreviewGetTextBoxSize(1).Height, 50);
  text.EngineUnlock();  // a second unlock changes nothing
  EXPECT_EQ(text.RenderGetTextCount(), 1);
}

TEST_F(TextListTest, UnlockTakesOverACountChangedUnderTheLockAndRestartsParticles) {
  AddText("one");
  text.EngineLock();
  // What a preset load under the lock does: the locked copy gets a different list.
  AddText("two");
  AddText("three");
  EXPECT_EQ(text.RenderGetTextCount(), 1);
  EXPECT_EQ(text.PreviewGetTextCount(), 3);

  TextObject withParticles = text.TextRecordRead(3);
  withParticles.Particle.Count = 5;
  withParticles.Particle.SpreadInitialized = true;
  withParticles.Particle.Particles.resize(5);
  text.TextRecordWrite(3, withParticles);

  text.EngineUnlock();
  ASSERT_EQ(text.RenderGetTextCount(), 3);
  EXPECT_EQ(text.RenderGetCurrentText(3), "three");
  EXPECT_EQ(text.Live()[2].Index, 3);
  EXPECT_FALSE(text.Live()[2].Particle.SpreadInitialized);
  EXPECT_EQ(text.Live()[2].Particle.Particles.size(), 1u);
  EXPECT_EQ(text.RenderGetOutputMultiplier(3), 5);

  // And the other way: texts removed under the lock are gone from the output after unlock.
  text.EngineLock();
  text.TextRemove(1);
  text.TextRemove(1);
  EXPECT_EQ(text.RenderGetTextCount(), 3);
  text.EngineUnlock();
  EXPECT_EQ(text.RenderGetTextCount(), 1);
  EXPECT_EQ(text.RenderGetCurrentText(1), "three");
}

TEST_F(TextListTest, PreserveRuntimeFieldsKeepsRunningStateButTakesEdits) {
  AddText("running");
  TextObject stored = text.TextRecordRead(1);
  stored.Counter.Value = 77;
  stored.DictionaryCounter.Value = 12;
  stored.LastUpdateTick = 4242;
  stored.PulseLastTick = 4100;  // a pulse mid-way must not jump when the text is edited
  stored.SequenceCounter = 3;
  stored.SequenceBuffer = "fatal";
  stored.TickerPosition = 9;
  stored.DictionaryWords = StringList({"alpha", "beta"});
  stored.DictionaryWordCount = 2;
  stored.Particle.Particles.resize(4);
  text.TextRecordWrite(1, stored);

  TextObject edited = NewTextObject(TextFont{"Serif", 20.0f});
  edited.FlashText = true;
  edited.Counter.MaxDigits = 4;
  text.PreserveRuntimeFields(1, edited);

  EXPECT_EQ(edited.Counter.Value, 77);
  EXPECT_EQ(edited.Counter.MaxDigits, 4);  // the edit stays
  EXPECT_EQ(edited.DictionaryCounter.Value, 12);
  EXPECT_EQ(edited.LastUpdateTick, 4242u);
  EXPECT_EQ(edited.PulseLastTick, 4100u);
  EXPECT_EQ(edited.SequenceCounter, 3);
  EXPECT_EQ(edited.SequenceBuffer, "fatal");
  EXPECT_EQ(edited.TickerPosition, 9);
  EXPECT_EQ(edited.CurrentText, "running");
  EXPECT_TRUE(edited.DictionaryWords.SharesWith(stored.DictionaryWords));  // shared, not copied
  EXPECT_EQ(edited.Particle.Particles.size(), 4u);
  EXPECT_TRUE(edited.FlashText);
  EXPECT_EQ(edited.Font.Name, "Serif");
}

TEST_F(TextListTest, CounterValuesSetFromTheEditor) {
  AddText();
  text.PreviewSetTextCounter(1, "1234");
  EXPECT_EQ(text.TextRecordRead(1).Counter.Value, 1234);
  EXPECT_EQ(text.PreviewGetCurrentText(1), "1234");

  TextObject hex = text.TextRecordRead(1);
  hex.Counter.ValueType = "Hexadecimal";
  text.TextRecordWrite(1, hex);
  text.PreviewSetTextCounter(1, "FF");
  EXPECT_EQ(text.TextRecordRead(1).Counter.Value, 255);
  text.PreviewSetTextCounter(1, "FFFFFFFF");
  EXPECT_EQ(text.TextRecordRead(1).Counter.Value, -1);
  // Not hexadecimal, or beyond 32 bits: skipped, the counter stays.
  text.PreviewSetTextCounter(1, "XYZ");
  text.PreviewSetTextCounter(1, "123456789");
  EXPECT_EQ(text.TextRecordRead(1).Counter.Value, -1);
  EXPECT_EQ(text.PreviewGetCurrentText(1), "FFFFFFFF");
}

TEST_F(TextListTest, RendererAnswersForTheLiveRecord) {
  AddText("Grüße");
  TextObject t = text.TextRecordRead(1);
  t.Clip = false;
  t.Vertical = true;
  t.Color = 0x00336699;
  text.TextRecordWrite(1, t);

  EXPECT_EQ(text.RenderGetDXTextColor(1), 0xFF996633u);
  EXPECT_FALSE(text.RenderGetClip(1));
  text.EngineSetGlobalPerformanceClip(true);
  EXPECT_TRUE(text.RenderGetClip(1));  // the global clip wins
  EXPECT_EQ(text.PreviewBuildText(1, "Grüße"), "G\r\nr\r\nü\r\nß\r\ne");
  EXPECT_FALSE(text.RenderGetLockVideoToTexture());
  t = text.TextRecordRead(1);
  t.VideoLockToTextBox = 1;
  text.TextRecordWrite(1, t);
  EXPECT_TRUE(text.RenderGetLockVideoToTexture());
}

TEST_F(TextListTest, EditorTextIsRebuiltFromWordsAndFontsAreListedOnce) {
  AddText();
  AddText();
  TextObject t = text.TextRecordRead(1);
  t.Words = StringList({"first line", "second"});
  t.Font.Name = "Serif";
  text.TextRecordWrite(1, t);
  text.EngineBuildEditorText();
  EXPECT_EQ(text.TextRecordRead(1).EditorText, "first line\r\nsecond");
  EXPECT_EQ(text.TextRecordRead(2).EditorText, "");
  EXPECT_EQ(text.PreviewGetFontsUsed(), (std::vector<std::string>{"Serif", "DejaVu Sans"}));
}

}  // namespace
}  // namespace lumivane
