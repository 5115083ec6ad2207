#include <gtest/gtest.h>

#include "core/TextEngine.h"
#include "support/EngineFixture.h"

namespace lumivane {
namespace {

class TextTimingTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  TextFrameInput input;

  // A custom text that always shows `words` (Hold), updating every `selfTime` ms.
  std::int32_t AddFixed(const std::string& words, std::int32_t selfTime) {
    TextObject t = NewTextObject(TextFont{"DejaVu Sans", 12});
    t.TextType = "CustomInput";
    t.Words = StringList({words});
    t.WordCount = 1;
    t.DictionaryCounter.Direction = "Hold";
    t.DictionaryCounter.Value = 1;
    t.SelfTime = selfTime;
    t.Text3D = false;
    return text.TextAppend(t);
  }
  TextObject& Live(std::int32_t i) { return *text.LiveRecord(i); }
  std::string Step(std::int32_t i = 1, std::int32_t copy = 1) {
    return std::string(text.TextFrameStep(i, copy, input).Text);
  }
  // Plays `frames` frames `ms` apart and answers how many showed something.
  int ShownFrames(int frames, std::uint32_t ms) {
    int shown = 0;
    for (int f = 0; f < frames; ++f) {
      clock.Advance(ms);
      if (!Step().empty()) ++shown;
    }
    return shown;
  }
};

TEST_F(TextTimingTest, UpdatesComeWhenTheSelfTimeRunsOutStretchedByTimeScale) {
  TextObject counter = NewTextObject(TextFont{"DejaVu Sans", 12});
  counter.Counter.ValueType = "Integer";
  counter.Counter.Direction = "Increment (+)";
  counter.Counter.MinDigits = 0;
  counter.Counter.MaxDigits = 6;
  counter.Counter.Value = 0;
  counter.SelfTime = 100;
  text.TextAppend(counter);

  EXPECT_EQ(Step(), "1");  // a new text is due at once
  clock.Advance(100);
  EXPECT_EQ(Step(), "1");  // exactly one period: not yet
  clock.Advance(1);
  EXPECT_EQ(Step(), "2");
  context.TimeScale = 2.0f;  // half the speed
  clock.Advance(150);
  EXPECT_EQ(Step(), "2");
  clock.Advance(51);
  EXPECT_EQ(Step(), "3");
  // Copies only read what the update left; they never step the counter.
  clock.Advance(1000);
  EXPECT_EQ(Step(1, 2), "3");
  EXPECT_EQ(Step(1, 1), "4");
}

TEST_F(TextTimingTest, SelfTimeZeroUpdatesEveryFrameAndRandomTimeWithNoCeilingIsZero) {
  AddFixed("x", 0);
  Live(1).RandomizeTime = true;
  Live(1).SelfTimeMax = 0;
  Step();
  EXPECT_EQ(Live(1).SelfTime, 0);
  for (int i = 0; i < 5; ++i) {
    clock.Advance(1);
    EXPECT_TRUE(text.TextFrameStep(1, 1, input).Updated);
  }
}

TEST_F(TextTimingTest, AFlashingTextLightsUpOnlyInItsUpdateFrame) {
  AddFixed("flash", 500);
  Live(1).FlashText = true;
  Step();                                // the first update
  EXPECT_EQ(ShownFrames(60, 16), 1);     // 960 ms at 60 fps: one more update, at 512 ms
  EXPECT_EQ(ShownFrames(32, 16), 1);
}

TEST_F(TextTimingTest, SequenceBuildsTheStringUpACharacterAtATime) {
  AddFixed("fatal", 10000);
  Live(1).SequenceText = true;
  Live(1).SequenceTime = 100;
  std::vector<std::string> seen;
  seen.push_back(Step());
  for (int i = 0; i < 7; ++i) {
    clock.Advance(50);
    seen.push_back(Step());  // between steps the same prefix stays
    clock.Advance(51);
    seen.push_back(Step());
  }
  // The whole word stays for two steps (the counter goes one past its length), then the build-up
  // starts again.
  EXPECT_EQ(seen, (std::vector<std::string>{"f", "f", "fa", "fa", "fat", "fat", "fata", "fata", "fatal", "fatal",
                                            "fatal", "fatal", "fatal", "", "f"}));

  // An empty string has nothing to build: nothing shows and the counter stays 0.
  AddFixed("", 100000);
  Live(2).SequenceText = true;
  Live(2).SequenceTime = 0;
  for (int i = 0; i < 3; ++i) {
    clock.Advance(10);
    EXPECT_EQ(Step(2), "");
    EXPECT_EQ(Live(2).SequenceCounter, 0);
  }
}

TEST_F(TextTimingTest, TheWrapOfTheTickCounterCostsNothing) {
  clock.Set(0xFFFFFF00u);
  AddFixed("w", 500);
  Step();
  clock.Set(0x000000F5u);  // 501 ms later, across the wrap
  EXPECT_TRUE(text.TextFrameStep(1, 1, input).Updated);
  clock.Advance(100);
  EXPECT_FALSE(text.TextFrameStep(1, 1, input).Updated);
}

TEST_F(TextTimingTest, PositionsAreDrawnWithinTheirRangeOrFollowTheSliders) {
  AddFixed("p", 0);
  Live(1).RandomizeX = 100;
  Live(1).RandomizeY = -50;  // the sign of the range does not matter
  for (int i = 0; i < 100; ++i) {
    clock.Advance(1);
    const TextFrame f = text.TextFrameStep(1, 1, input);
    ASSERT_LE(std::abs(f.OffsetX), 100.0f);
    ASSERT_LE(std::abs(f.OffsetY), 50.0f);
    ASSERT_EQ(f.Left, static_cast<float>(Live(1).Left) + f.OffsetX);
  }
  // Manual: the slider's range maps onto the back buffer, also between updates.
  Live(1).RandomizeXYManual = 1;
  Live(1).SelfTime = 100000;
  Live(1).RandomizeX = 1000;  // the slider's top end, with a minimum of -1000
  Live(1).RandomizeY = 0;
  clock.Advance(1);
  const TextFrame f = text.TextFrameStep(1, 1, input);
  EXPECT_FALSE(f.Updated);
  EXPECT_FLOAT_EQ(f.OffsetX, 1280.0f);
  EXPECT_FLOAT_EQ(f.OffsetY, 720.0f);
}

TEST_F(TextTimingTest, ColourVariesWithinItsRangeAndStaysPutWithoutOne) {
  AddFixed("c", 0);
  Live(1).Color = 0x00808080;
  Live(1).RandomizeColor = 20;
  for (int i = 0; i < 50; ++i) {
    clock.Advance(1);
    const auto c = static_cast<std::uint32_t>(text.TextFrameStep(1, 1, input).Color);
    for (int shift : {0, 8, 16}) {
      const int channel = static_cast<int>((c >> shift) & 0xFF);
      ASSERT_GE(channel, 0x80 - 20);
      ASSERT_LE(channel, 0x80 + 20);
    }
  }
  Live(1).RandomizeColor = 0;
  Live(1).SelfTime = 100000;
  clock.Advance(1);
  EXPECT_EQ(text.TextFrameStep(1, 1, input).Color, 0x00808080);
}

TEST_F(TextTimingTest, CaptionsForTheEditorAreThinnedTo250Ms) {
  AddFixed("cap", 0);
  int captions = 0;
  text.PreviewCaption = [&](std::int32_t, std::string_view s, std::int32_t) {
    ++captions;
    EXPECT_EQ(s, "cap");
  };
  for (int i = 0; i < 60; ++i) {  // one second at 60 fps
    clock.Advance(16);
    Step();
  }
  EXPECT_GE(captions, 3);
  EXPECT_LE(captions, 4);
}

// Between updates a step may answer from its cache; every way of changing a text must still show
// in the very next frame.
TEST_F(TextTimingTest, ChangesReachTheNextFrameEvenBetweenUpdates) {
  AddFixed("steady", 100000);
  Step();
  clock.Advance(16);
  EXPECT_EQ(Step(), "steady");
  EXPECT_EQ(Step(), "steady");  // cached now

  TextObject edited = text.TextRecordRead(1);  // an edit from the editor
  edited.FlashText = true;
  text.TextRecordWrite(1, edited);
  clock.Advance(16);
  EXPECT_EQ(Step(), "");
  text.PreviewFlashOff();  // an operation on all texts
  clock.Advance(16);
  EXPECT_EQ(Step(), "steady");

  text.RenderSynchronizeText(1);  // a motion path event forces an update
  clock.Advance(16);
  EXPECT_TRUE(text.TextFrameStep(1, 1, input).Updated);

  context.TimeScale = 0.0001f;  // time scale shortens the period at once, cached or not
  clock.Advance(16);
  EXPECT_TRUE(text.TextFrameStep(1, 1, input).Updated);
  context.TimeScale = 1.0f;

  text.EngineLock();  // edits under the lock leave the output alone until unlock
  text.PreviewSetTextColor(1, 0x0000FF);
  clock.Advance(16);
  EXPECT_NE(text.TextFrameStep(1, 1, input).Color, 0x0000FF);
  text.EngineUnlock();
  clock.Advance(16);
  EXPECT_EQ(text.TextFrameStep(1, 1, input).Color, 0x0000FF);
}

TEST_F(TextTimingTest, AllTextOperations) {
  AddFixed("a", 100);
  AddFixed("b", 300);
  Live(1).FlashText = true;
  text.PreviewFlashInvert();
  EXPECT_FALSE(Live(1).FlashText);
  EXPECT_TRUE(Live(1).SequenceText);
  EXPECT_TRUE(Live(2).FlashText);
  EXPECT_FALSE(Live(2).SequenceText);
  text.PreviewFlashOff();
  EXPECT_FALSE(Live(2).FlashText);

  text.PreviewTimeSynchronize();
  EXPECT_EQ(Live(1).SelfTime, 200);
  EXPECT_EQ(Live(2).SelfTime, 200);

  // Shuffling under the lock leaves the particles' timers alone.
  Live(1).Particle.Count = 3;
  Live(1).Particle.SelfTime = 77;
  Live(1).Particle.LifeTime = 88;
  text.EngineLock();
  text.PreviewTimeShuffle();
  EXPECT_EQ(text.LockedCopy()[0].Particle.SelfTime, 77);
  EXPECT_EQ(text.LockedCopy()[0].Particle.LifeTime, 88);
  text.EngineUnlock();
  text.PreviewTimeShuffle();
  EXPECT_LT(Live(1).SelfTime, 1000);
  EXPECT_LT(Live(1).Particle.LifeTime, 3000);
}

}  // namespace
}  // namespace lumivane
