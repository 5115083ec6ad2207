#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/Color.h"
#include "forms/EffectsForm.h"
#include "render/TextureImage.h"
#include "render/FrameRenderer.h"
#include "support/EngineFixture.h"
#include "support/RenderFixture.h"

namespace lumivane {
namespace {

constexpr int kWidth = 160, kHeight = 90;

int Red(std::uint32_t p) { return static_cast<int>(p >> 16); }
int Green(std::uint32_t p) { return static_cast<int>((p >> 8) & 0xFF); }
int Blue(std::uint32_t p) { return static_cast<int>(p & 0xFF); }

// The background, effect and output stage passes of whole frames, on a fake clock, the device
// headless. Pictures are decoded before each frame, as in offline renders.
class FrameLayersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    device = CreateHeadlessDevice(kWidth, kHeight, error);
    ASSERT_NE(device, nullptr) << error;
    ASSERT_TRUE(renderer.Initialize(device.get(), "", error)) << error;
    renderer.Pictures().WaitForImages = true;
    ASSERT_TRUE(folder.isValid());
    args.Text.BackBufferWidth = kWidth;
    args.Text.BackBufferHeight = kHeight;
  }
  void TearDown() override { renderer.Destroy(); }

  // A picture file: `paint` gives each pixel's 0xRRGGBB from its place.
  template <class Paint>
  std::string Picture(const char* name, int w, int h, Paint paint) {
    QImage image(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) image.setPixel(x, y, 0xFF000000u | paint(x, y));
    const std::string path = folder.filePath(name).toStdString();
    EXPECT_TRUE(image.save(QString::fromStdString(path), "PNG"));
    return path;
  }
  std::string Solid(const char* name, std::uint32_t rgb) {
    return Picture(name, 8, 8, [rgb](int, int) { return rgb; });
  }

  std::vector<std::uint8_t> Frame() {
    renderer.RenderFrame(args);
    std::vector<std::uint8_t> rgba;
    EXPECT_TRUE(device->ReadBackNow(rgba));
    return rgba;
  }
  std::uint32_t Centre() { return test::Pixel(Frame(), kWidth, kWidth / 2, kHeight / 2); }

  test::EngineFixture engine;
  std::unique_ptr<RenderDevice> device;
  FrameRenderer renderer{engine.text};
  FrameArguments args;
  QTemporaryDir folder;
};

TEST_F(FrameLayersTest, FadesScaleTheTintByTheTimeSinceTheChangeAndTheTimeLeft) {
  renderer.Backgrounds().InitializeBackground(Solid("white.png", 0xFFFFFF), true, 8, 8);
  args.Background.FadeIn = args.Background.FadeOut = true;
  args.Background.TimerInterval = 3000;  // fades of a second each
  Frame();                               // the change
  engine.clock.Advance(500);
  EXPECT_EQ(Centre(), 0x7F7F7Fu) << "half way through the fade in: 255 x 0.5, truncated";
  engine.clock.Advance(1000);
  EXPECT_EQ(Centre(), 0x7F7F7Fu) << "between the fades the colour stays as the last one left it";
  engine.clock.Advance(1250);
  EXPECT_EQ(Red(Centre()), 63) << "250 ms before the change, a quarter";

  // From 10001 ms on the fade time is held at 3 s, while the fade out still starts a third of the
  // interval before the change: its first part saturates.
  args.Background.TimerInterval = 12000;
  renderer.Backgrounds().InitializeBackground(folder.filePath("white.png").toStdString(), true, 8, 8);
  Frame();  // the change
  engine.clock.Advance(8500);
  EXPECT_EQ(Red(Centre()), 255) << "3500 ms left of a 3000 ms fade: above 255, held there";
  engine.clock.Advance(1500);
  EXPECT_EQ(Red(Centre()), 170) << "2000 ms left: two thirds";
}

TEST_F(FrameLayersTest, TheTimerTurnsThroughTheVisiblePicturesAndNoneShowsTheClearColour) {
  const std::string red = Solid("red.png", 0xFF0000), blue = Solid("blue.png", 0x0000FF);
  renderer.Backgrounds().InitializeBackground(red, true, 8, 8);
  renderer.Backgrounds().InitializeBackground(blue, false, 8, 8);
  renderer.Backgrounds().InitializeBackground(red, false, 8, 8);  // known: no second texture, the turn starts here
  EXPECT_EQ(renderer.Backgrounds().BackgroundCount(), 2);
  args.Background.TimerInterval = 100;
  args.ClearColor = ProgramColor(0, 255, 0);
  EXPECT_EQ(Centre(), 0xFF0000u);
  engine.clock.Advance(50);
  EXPECT_EQ(Centre(), 0xFF0000u);
  engine.clock.Advance(60);
  EXPECT_EQ(Centre(), 0x0000FFu);
  engine.clock.Advance(110);
  EXPECT_EQ(Centre(), 0xFF0000u) << "round again";

  renderer.Backgrounds().InitializeBackground({}, true, 0, 0);  // every picture hidden
  engine.clock.Advance(110);
  EXPECT_EQ(Centre(), 0x00FF00u);
  EXPECT_EQ(renderer.Backgrounds().BackgroundIndex(), 0);
}

TEST_F(FrameLayersTest, TilesRepeatThePictureAndAPictureThatWillNotLoadShowsTheTint) {
  // Left half red, right half blue: each tile is one red and one blue run across a row.
  renderer.Backgrounds().InitializeBackground(Picture("halves.png", 8, 8, [](int x, int) { return x < 4 ? 0xFF0000u : 0x0000FFu; }),
                               true, 8, 8);
  args.Background.TileX = 3;
  const std::vector<std::uint8_t> rgba = Frame();
  int runs = 0;
  bool wasRed = false;
  for (int x = 0; x < kWidth; ++x) {
    const bool red = Red(test::Pixel(rgba, kWidth, x, kHeight / 2)) > Blue(test::Pixel(rgba, kWidth, x, kHeight / 2));
    if (x == 0 || red != wasRed) ++runs;
    wasRed = red;
  }
  EXPECT_EQ(runs, 6);

  renderer.Backgrounds().InitializeBackground(folder.filePath("missing.png").toStdString(), true, 8, 8);
  args.Background.FilterColor = ProgramColor(0, 0, 200);
  EXPECT_EQ(Centre(), 0x0000C8u);
}

TEST_F(FrameLayersTest, PictureSizesComeFromTheHeaderAndAbsurdOnesAreRefused) {
  std::int32_t w = 0, h = 0;
  std::string error;
  EXPECT_TRUE(ReadImageSize(Picture("wide.png", 12, 5, [](int, int) { return 0u; }), w, h, error));
  EXPECT_EQ(w, 12);
  EXPECT_EQ(h, 5);
  // A PNG whose header claims 20000 x 20000 pixels and that holds none: refused before any decode,
  // with a reason an operator can read.
  auto crc32 = [](const QByteArray& bytes) {
    std::uint32_t c = 0xFFFFFFFFu;
    for (const char byte : bytes) {
      c ^= static_cast<std::uint8_t>(byte);
      for (int k = 0; k < 8; ++k) c = (c >> 1) ^ (0xEDB88320u & (0u - (c & 1u)));
    }
    return ~c;
  };
  auto big = [](std::uint32_t v) {
    const char bytes[4] = {static_cast<char>(v >> 24), static_cast<char>(v >> 16), static_cast<char>(v >> 8),
                           static_cast<char>(v)};
    return QByteArray(bytes, 4);
  };
  const QByteArray ihdr = QByteArray("IHDR") + big(20000) + big(20000) + QByteArray("\x08\x02\x00\x00\x00", 5);
  QFile huge(folder.filePath("huge.png"));
  ASSERT_TRUE(huge.open(QIODevice::WriteOnly));
  huge.write(QByteArray("\x89PNG\r\n\x1a\n", 8) + big(13) + ihdr + big(crc32(ihdr)));
  huge.close();
  EXPECT_FALSE(ReadImageSize(huge.fileName().toStdString(), w, h, error));
  EXPECT_EQ(error.find("Unknown"), std::string::npos) << error;
  EXPECT_FALSE(ReadImageSize(folder.filePath("none.png").toStdString(), w, h, error));
}

TEST_F(FrameLayersTest, EachBlendPairOfTheEffectOverThePicture) {
  // No picture for the effect: its rectangle blends in its colour alone.
  const double s[3] = {0.8, 0.4, 0.2}, d[3] = {0.25, 0.5, 1.0};
  args.ClearColor = ProgramColor(64, 128, 255);
  args.Effect.Enabled = true;
  args.Effect.Color = ProgramColor(204, 102, 51);
  struct Factor {
    const char* name;
    double (*f)(double s, double d);
  };
  const Factor factors[] = {{"ZERO", [](double, double) { return 0.0; }},
                            {"ONE", [](double, double) { return 1.0; }},
                            {"SRC_COLOR", [](double s, double) { return s; }},
                            {"INV_SRC_COLOR", [](double s, double) { return 1 - s; }},
                            {"DEST_COLOR", [](double, double d) { return d; }},
                            {"INV_DEST_COLOR", [](double, double d) { return 1 - d; }}};
  for (const Factor& source : factors)
    for (const Factor& target : factors) {
      args.Effect.SourceBlend = EffectBlendCode(source.name, true);
      args.Effect.TargetBlend = EffectBlendCode(target.name, false);
      const std::uint32_t p = Centre();
      const int got[3] = {Red(p), Green(p), Blue(p)};
      for (int c = 0; c < 3; ++c) {
        const double expected = std::min(1.0, s[c] * source.f(s[c], d[c]) + d[c] * target.f(s[c], d[c])) * 255;
        EXPECT_NEAR(got[c], expected, 2.5) << source.name << " over " << target.name << ", channel " << c;
      }
    }
  // A name only a show file brings: both factors from the source's alpha, so the effect covers.
  args.Effect.SourceBlend = EffectBlendCode("BOTH_SRC_ALPHA", true);
  args.Effect.TargetBlend = EffectBlendCode("ANYTHING", false);
  EXPECT_EQ(args.Effect.TargetBlend, static_cast<int>(Blend::DestColor));
  EXPECT_EQ(Centre(), 0xCC6633u);
}

TEST_F(FrameLayersTest, TheEffectColourDriftsOnItsTimerAndHoldKeepsTheLayout) {
  std::vector<std::int32_t> drift;
  renderer.Effect().EffectColorChanged = [&drift](std::int32_t c) { drift.push_back(c); };
  args.Effect.Enabled = true;
  args.Effect.Color = ProgramColor(128, 128, 128);
  args.Effect.ColorRandom = 100;
  args.Effect.Timer = 200;
  args.Effect.SourceBlend = Blend::One;
  args.Effect.TargetBlend = Blend::Zero;
  Frame();
  ASSERT_EQ(drift.size(), 1u);
  args.Effect.Color = drift.back();  // the control takes it
  engine.clock.Advance(150);
  Frame();
  EXPECT_EQ(drift.size(), 1u) << "inside its period the layout stays";
  engine.clock.Advance(100);
  args.Effect.HoldTimer = true;
  Frame();
  EXPECT_EQ(drift.size(), 1u) << "held";
  args.Effect.HoldTimer = false;
  Frame();
  EXPECT_EQ(drift.size(), 2u);
}

TEST_F(FrameLayersTest, OutputStageInvertMaskAndFade) {
  args.ClearColor = 0;
  args.Invert = true;
  EXPECT_EQ(Centre(), 0xFFFFFFu) << "black turns white";
  args.ClearColor = ProgramColor(128, 128, 128);
  EXPECT_NEAR(Red(Centre()), 191, 2) << "the same blend on both sides: 1 - d + d (1 - d)";
  args.Invert = false;

  args.ClearColor = ProgramColor(255, 255, 255);
  args.Fade = 0;
  EXPECT_EQ(Centre(), 0u) << "fade 0 is black whatever ran";
  args.Fade = 128;
  EXPECT_NEAR(Red(Centre()), 128, 1);
  args.Fade = 255;

  // A mask of another size is scaled over the whole output: its left half black.
  renderer.Output().CreateMaskTexture(Picture("mask.png", 10, 6, [](int x, int) { return x < 5 ? 0u : 0xFFFFFFu; }));
  args.MaskEnabled = true;
  const std::vector<std::uint8_t> masked = Frame();
  EXPECT_EQ(test::Pixel(masked, kWidth, kWidth / 4, kHeight / 2), 0u);
  EXPECT_EQ(test::Pixel(masked, kWidth, kWidth * 3 / 4, kHeight / 2), 0xFFFFFFu);
  args.Fade = 128;  // folded into the mask's draw: the same product
  EXPECT_NEAR(Red(test::Pixel(Frame(), kWidth, kWidth * 3 / 4, kHeight / 2)), 128, 1);
  args.Fade = 255;
  renderer.Output().CreateMaskTexture(folder.filePath("no-mask.png").toStdString());
  EXPECT_EQ(Centre(), 0xFFFFFFu) << "a mask that will not load multiplies with white";
}

// The same frames with the output stage run as one compute pass, which the device otherwise keeps
// to GPUs.
class OutputPassTest : public FrameLayersTest {
 protected:
  void SetUp() override {
    setenv("LUMIVANE_OUTPUT_PASS", "compute", 1);
    FrameLayersTest::SetUp();
  }
  void TearDown() override {
    FrameLayersTest::TearDown();
    unsetenv("LUMIVANE_OUTPUT_PASS");
  }
  // The largest difference of any channel of any pixel between the frame made in one pass and
  // the frame made by the rectangles.
  int OnePassAgainstRectangles() {
    Frame();  // any new layout is made here, and both frames below keep it
    renderer.Output().FinishInOnePass = true;
    const std::vector<std::uint8_t> one = Frame();
    renderer.Output().FinishInOnePass = false;
    const std::vector<std::uint8_t> drawn = Frame();
    int most = 0;
    for (std::size_t i = 0; i < one.size(); ++i)
      if (i % 4 != 3) most = std::max(most, std::abs(one[i] - drawn[i]));
    return most;
  }
};

TEST_F(OutputPassTest, TheOnePassMakesThePictureTheRectanglesMake) {
  ASSERT_TRUE(device->FinishOutput({})) << "the compute pass is offered here";
  // Every level of each channel under the passes, and a mask of another size stretched over it,
  // point-sampled as the frame leaves the stage.
  renderer.Backgrounds().InitializeBackground(Picture("ramp.png", 256, 4, [](int x, int y) {
    return static_cast<std::uint32_t>(x << 16 | (255 - x) << 8 | ((x * (y + 1) * 37) & 0xFF));
  }), true, 256, 4);
  renderer.Output().CreateMaskTexture(Picture("mask-ramp.png", 37, 11, [](int x, int y) {
    return static_cast<std::uint32_t>((x * 7) << 16 | (y * 23) << 8 | ((x + y) * 5));
  }));
  const std::vector<std::uint8_t> plain = Frame();
  struct Case {
    bool invert, mask;
    std::int32_t fade;
  };
  for (const Case c : {Case{true, false, 255}, Case{false, false, 128}, Case{false, true, 255}, Case{true, true, 100},
                       Case{true, false, 0}}) {
    args.Invert = c.invert;
    args.MaskEnabled = c.mask;
    args.Fade = c.fade;
    EXPECT_LE(OnePassAgainstRectangles(), 1) << "invert " << c.invert << ", mask " << c.mask << ", fade " << c.fade;
    EXPECT_NE(Frame(), plain) << "the passes changed the picture";
  }
  renderer.Output().CreateMaskTexture(folder.filePath("no-mask.png").toStdString());
  args.Invert = false;
  args.Fade = 200;
  EXPECT_LE(OnePassAgainstRectangles(), 1) << "a mask that will not load multiplies with white both ways";
}

TEST_F(OutputPassTest, TheEffectsRectangleJoinsThePass) {
  renderer.Backgrounds().InitializeBackground(Picture("ramp.png", 256, 4, [](int x, int) {
    return static_cast<std::uint32_t>(x << 16 | (255 - x) << 8 | 0x80);
  }), true, 256, 4);
  // A picture of another size, tiled twice across rectangles laid out at random, some smaller
  // and some larger than the output, with fractional edges.
  renderer.Effect().SetEffectTexture(Picture("effect.png", 24, 16, [](int x, int y) {
    return static_cast<std::uint32_t>((x * 10) << 16 | (y * 15) << 8 | 0x40);
  }));
  args.Effect.Enabled = true;
  args.Effect.Size = {60, 30, 0, false};
  args.Effect.Position = {20, 10, 0, false};
  args.Effect.TileX = 2;
  args.Effect.Timer = 100;
  args.Effect.Color = ProgramColor(200, 150, 255);
  args.Invert = true;
  args.Fade = 180;
  for (const auto& [source, target] : {std::pair{"SRC_COLOR", "DEST_COLOR"}, std::pair{"ONE", "INV_SRC_COLOR"},
                                       std::pair{"INV_DEST_COLOR", "SRC_COLOR"}, std::pair{"BOTH_SRC_ALPHA", "ZERO"}}) {
    args.Effect.SourceBlend = EffectBlendCode(source, true);
    args.Effect.TargetBlend = EffectBlendCode(target, false);
    for (int layout = 0; layout < 3; ++layout) {
      engine.clock.Advance(150);
      // A step of 8 bits in the blend can be two after the inversion, whose slope is up to 2.
      EXPECT_LE(OnePassAgainstRectangles(), 2) << source << " over " << target << ", layout " << layout;
    }
  }
  renderer.Effect().ResetEffectTexture();
  EXPECT_LE(OnePassAgainstRectangles(), 2) << "without a picture, the colour alone";
}

TEST_F(OutputPassTest, AFeedbackCopyDueTakesTheEffectWithIt) {
  // The first frame's copy is the only one: the effect's colour replaces the whole picture, and
  // the next frame shows the copy as its background.
  args.Background.Feedback = true;
  args.FeedbackRate = 0;
  args.Effect.Enabled = true;
  args.Effect.Color = ProgramColor(255, 0, 0);
  args.Effect.SourceBlend = EffectBlendCode("ONE", true);
  args.Effect.TargetBlend = EffectBlendCode("ZERO", false);
  args.Invert = true;
  EXPECT_EQ(Centre(), 0x00FFFFu) << "red, inverted after the copy";
  args.Effect.Enabled = false;
  args.Invert = false;
  EXPECT_EQ(Centre(), 0xFF0000u) << "the copy was taken after the effect, before the inversion";
}

TEST_F(FrameLayersTest, TheFeedbackCopyRunsAtItsRate) {
  // Feeding back with the size slider 20 pixels below its middle: the last copy shrinks inside a
  // border of the clear colour, so just inside the border shows the clear colour of the frame
  // that was copied last.
  args.Background.Feedback = true;
  args.Background.Size = PlacementBlock{480, 500, 1000, false};
  args.Background.TimerInterval = 50000;  // the first frame lays it out, then it holds
  auto copied = [&](int frame) {
    args.ClearColor = ProgramColor(static_cast<std::uint8_t>(10 * frame), 0, 0);
    const std::vector<std::uint8_t> rgba = Frame();
    engine.clock.Advance(20);
    return Red(test::Pixel(rgba, kWidth, 14, kHeight / 2)) / 10;
  };
  args.FeedbackRate = 10;  // 100 ms apart, frames every 20 ms: every sixth frame
  copied(1);
  std::vector<int> last;
  for (int frame = 2; frame <= 14; ++frame) last.push_back(copied(frame));
  EXPECT_EQ(last, (std::vector<int>{1, 1, 1, 1, 1, 1, 7, 7, 7, 7, 7, 7, 13}));

  // A rate of 0 copies once, the first time, and never again.
  FrameRenderer once{engine.text};
  std::string error;
  renderer.Destroy();
  ASSERT_TRUE(once.Initialize(device.get(), "", error));
  args.FeedbackRate = 0;
  args.ClearColor = ProgramColor(50, 0, 0);
  once.RenderFrame(args);
  for (int frame = 0; frame < 3; ++frame) {
    engine.clock.Advance(500);
    args.ClearColor = ProgramColor(100, 0, 0);
    once.RenderFrame(args);
  }
  std::vector<std::uint8_t> rgba;
  ASSERT_TRUE(device->ReadBackNow(rgba));
  EXPECT_EQ(Red(test::Pixel(rgba, kWidth, 14, kHeight / 2)), 50);
  once.Destroy();
}

TEST_F(FrameLayersTest, APictureComingInSlicesLeavesTheLastOneOnShow) {
  renderer.Backgrounds().InitializeBackground(Solid("red.png", 0xFF0000), true, 8, 8);
  EXPECT_EQ(Centre(), 0xFF0000u);
  renderer.Pictures().WaitForImages = false;
  renderer.Pictures().UploadPixelsPerFrame = 64 * 16;  // a 64 x 64 picture takes four frames
  renderer.Backgrounds().InitializeBackground(Solid("blue.png", 0x0000FF), true, 64, 64);
  int frames = 0;
  std::uint32_t shown = 0xFF0000u;
  while (shown == 0xFF0000u && frames < 500) {
    shown = Centre();
    ++frames;
  }
  EXPECT_EQ(shown, 0x0000FFu);
  EXPECT_GE(frames, 4) << "never the untextured tint while the picture comes in";

  // An effect picture coming in shows nothing until it is whole: not a plain white rectangle
  // covering the output.
  args.Effect.Enabled = true;
  args.Effect.SourceBlend = Blend::One;  // the effect alone
  args.Effect.TargetBlend = Blend::Zero;
  renderer.Effect().SetEffectTexture(Solid("green.png", 0x00FF00));
  shown = Centre();
  EXPECT_EQ(shown, 0x0000FFu);
  for (frames = 0; shown == 0x0000FFu && frames < 500; ++frames) shown = Centre();
  EXPECT_EQ(shown, 0x00FF00u);
}

TEST_F(FrameLayersTest, TheFinishedPictureGoesToABitmapAndToATexture) {
  args.ClearColor = ProgramColor(200, 100, 50);
  Frame();
  const std::string path = folder.filePath("out.bmp").toStdString();
  std::string error;
  ASSERT_TRUE(renderer.Output().RenderToFile(path, error)) << error;
  const QImage written(QString::fromStdString(path), "BMP");
  ASSERT_EQ(written.size(), QSize(kWidth, kHeight));
  EXPECT_EQ(written.pixel(3, kHeight - 2) & 0xFFFFFFu, 0xC86432u) << "rows bottom first, BGR";
  EXPECT_FALSE(renderer.Output().RenderToFile(folder.filePath("no/such/folder/out.bmp").toStdString(), error));
  EXPECT_FALSE(error.empty());

  float rx = 0, ry = 0;
  const TextureId texture = renderer.Output().GetCurrentOutputTexture(rx, ry);
  ASSERT_NE(texture, 0u);
  EXPECT_EQ(renderer.Output().GetCurrentOutputTexture(rx, ry), texture) << "one texture, refilled";
  EXPECT_FLOAT_EQ(rx, 1.0f);
  EXPECT_FLOAT_EQ(ry, 1.0f);
  std::uint32_t corner = 0;
  ASSERT_TRUE(device->ReadTexture(texture, [&](const std::uint8_t* top, std::ptrdiff_t) {
    corner = (static_cast<std::uint32_t>(top[0]) << 16) | (top[1] << 8) | top[2];
  }));
  EXPECT_EQ(corner, 0xC86432u);
}

TEST_F(FrameLayersTest, ThePresetOverlayFadesOverItsFrames) {
  args.ClearColor = ProgramColor(255, 255, 255);
  Frame();
  renderer.Output().InitializeMachineStateOverlay(0);
  args.ClearColor = ProgramColor(0, 0, 100);
  EXPECT_EQ(Centre(), 0x000064u) << "an overlay of 0 frames draws nothing";
  args.ClearColor = ProgramColor(255, 255, 255);
  Frame();
  renderer.Output().InitializeMachineStateOverlay(4);
  args.ClearColor = 0;
  // The old white times its share, blended with itself (SRC_COLOR), over black (the destination
  // times itself stays black): grey g of 255 shows g x g / 255.
  for (const int grey : {255, 191, 127, 63}) EXPECT_NEAR(Red(Centre()), grey * grey / 255, 1.5) << grey;
  EXPECT_EQ(Centre(), 0u);
}

}  // namespace
}  // namespace lumivane
