#include <gtest/gtest.h>

#include <QImage>
#include <QTemporaryDir>
#include <cmath>
#include <cstdio>

#include "render/FrameRenderer.h"
#include "support/EngineFixture.h"
#include "support/RenderFixture.h"

namespace lumivane {
namespace {

constexpr int kWidth = 320, kHeight = 180;  // the preview's 480 x 270, at two thirds
constexpr std::uint32_t kRed = 0xFF0000, kWhite = 0xFFFFFF, kBlack = 0;

// A 3D text on its shape through the whole frame: the engine on a fake clock, the device headless.
class Render3DTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    device = CreateHeadlessDevice(kWidth, kHeight, error);
    ASSERT_NE(device, nullptr) << error;
    ASSERT_TRUE(renderer.Initialize(device.get(), "", error)) << error;
    args.Text.BackBufferWidth = kWidth;
    args.Text.BackBufferHeight = kHeight;
  }
  void TearDown() override { renderer.Destroy(); }

  // A text that shows `shown` and does not update on its own: white on red, its box centred on
  // (cx, cy) of the preview.
  std::int32_t AddText(std::string_view shown, float cx, float cy, int width, int height, std::string shape = {}) {
    TextObject t = NewTextObject(TextFont{"DejaVu Sans", 30.0f});
    t.CurrentText = shown;
    t.SelfTime = 1000000;
    t.LastUpdateTick = engine.clock.Now();
    t.RenderFont.Font = t.Font;  // as its last update left it
    t.FontScale = 1;
    t.AlphaBlend = false;
    t.Color = 0xFFFFFF;
    t.BackGroundColor = 0x0000FF;  // red, program order
    t.Left = static_cast<std::int32_t>(cx) - width / 2;
    t.Right = t.Left + width;
    t.Top = static_cast<std::int32_t>(cy) - height / 2;
    t.Bottom = t.Top + height;
    t.Shape3DType = std::move(shape);
    return engine.text.TextAppend(t);
  }
  TextObject& Text(std::int32_t index) { return *engine.text.LiveRecord(index); }

  std::vector<std::uint8_t> Frame() {
    renderer.RenderFrame(args);
    std::vector<std::uint8_t> rgba;
    EXPECT_TRUE(device->ReadBackNow(rgba));
    return rgba;
  }
  // The centre and count of the pixels of one colour.
  struct Blob {
    double x = 0, y = 0;
    int count = 0;
  };
  // White is found by its green: filtered glyph edges are not pure white, the red box has none.
  static Blob Find(const std::vector<std::uint8_t>& rgba, std::uint32_t color) {
    Blob b;
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        const std::uint32_t p = test::Pixel(rgba, kWidth, x, y);
        if (color == kWhite ? ((p >> 8) & 0xFF) > 160 : p == color) b.x += x, b.y += y, ++b.count;
      }
    if (b.count > 0) b.x /= b.count, b.y /= b.count;
    return b;
  }

  test::EngineFixture engine;
  std::unique_ptr<RenderDevice> device;
  FrameRenderer renderer{engine.text};
  FrameArguments args;
};

// The box stands where its flat text would: the preview's right quarter and top quarter land on
// the screen's, the texture square (a world unit is as wide as high), and a right-justified string
// sits on the box's right.
TEST_F(Render3DTest, AFlatBoxLandsWhereItsTextStandsInThePreview) {
  AddText("I", 360, 67.5f, 60, 14);
  Text(1).AlignX = "Right Justify";
  const auto rgba = Frame();
  const Blob box = Find(rgba, kRed);
  ASSERT_GT(box.count, 100);
  // A 64 x 16 texture over a 320 x 180 back buffer is 2 x 0.89 world units a half, 67 x 30 pixels
  // a half through a camera that shows 2.7 units above the centre: the plain quad is not widened.
  int left = kWidth, right = 0, top = kHeight, bottom = 0;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      if (test::Pixel(rgba, kWidth, x, y) == kRed)
        left = std::min(left, x), right = std::max(right, x), top = std::min(top, y), bottom = std::max(bottom, y);
  EXPECT_NEAR((left + right) / 2.0, 0.75 * kWidth, 2);
  EXPECT_NEAR((top + bottom) / 2.0, 0.25 * kHeight, 2);
  EXPECT_NEAR(right - left + 1, 2 * 64.0 / kWidth * 10 * kHeight / 2 / 2.7, 3);
  EXPECT_NEAR(bottom - top + 1, 2 * 16.0 / kHeight * 10 * kHeight / 2 / 2.7, 3);
  const Blob glyph = Find(rgba, kWhite);
  ASSERT_GT(glyph.count, 10);
  EXPECT_GT(glyph.x, box.x + (right - left) / 4.0);
  EXPECT_EQ(test::Pixel(rgba, kWidth, 20, 170), kBlack);  // the clear colour around it
}

// A ring of known radius about the centre: the box's height thick, round on a wide screen, with
// the string's texture once around it, so a centred glyph lands half way round (on the left).
TEST_F(Render3DTest, ACircleIsARoundRingWithItsGlyphHalfWayRound) {
  AddText("I", 240, 135, 64, 8, "Circle");
  Text(1).Circle3D = Circle3D{2, 5, 1};
  const auto rgba = Frame();
  // Camera 2.7 / tan(pi / 8) units back: 90 pixels show 2.7 units, so the ring runs from 2 to
  // 2 + 8 / 180 * 10 units, 66.7 to 81.5 pixels from the centre, in x as in y.
  const double unit = 90 / 2.7;
  for (double angle : {0.0, 90.0, 270.0}) {
    const double radians = angle * M_PI / 180;
    auto at = [&](double r) {
      return test::Pixel(rgba, kWidth, static_cast<int>(std::lround(160 + r * unit * std::cos(radians))),
                         static_cast<int>(std::lround(90 - r * unit * std::sin(radians))));
    };
    EXPECT_EQ(at(2.22), kRed) << angle;
    EXPECT_EQ(at(1.6), kBlack) << angle;
    EXPECT_EQ(at(2.6), kBlack) << angle;
  }
  const Blob glyph = Find(rgba, kWhite);
  ASSERT_GT(glyph.count, 3);
  EXPECT_NEAR(glyph.x, 160 - 2.22 * unit, 6);
  EXPECT_NEAR(glyph.y, 90, 6);
}

// What runs on from frame to frame: a looping axis from the text's current angle (the fine switch
// slows the first copy's loop by 49), a fixed axis at its angle, the wave's phase stored back, and
// a particle larger than the text's size holding the scale at 0, so nothing shows.
TEST_F(Render3DTest, RotationWaveAndScaleRunAsTheTextSays) {
  AddText("I", 240, 135, 64, 32, "Wave");
  TextObject& t = Text(1);
  t.Rotation.AngleZ = 49;
  t.Rotation.LoopZ = true;
  t.Rotation.FineTuneRotationAngle = 1;
  t.Rotation.AngleX = 14;
  t.Rotation.LoopX = false;
  t.Wave3D = Wave3D{1, 40, 200, 0, 1};
  Frame();
  EXPECT_FLOAT_EQ(Text(1).Rotation.CurrentAngleZ, 1.0f);
  EXPECT_FLOAT_EQ(Text(1).Rotation.CurrentAngleX, 2.0f);  // fixed: 14 / 7
  EXPECT_EQ(Text(1).Wave3D.CurrentPhase, 200);
  Frame();
  EXPECT_FLOAT_EQ(Text(1).Rotation.CurrentAngleZ, 2.0f);
  EXPECT_FLOAT_EQ(Text(1).Rotation.CurrentAngleX, 2.0f);
  EXPECT_EQ(Text(1).Wave3D.CurrentPhase, 40);  // 400 folds back by |360 - 400|
  EXPECT_GT(Find(Frame(), kRed).count, 100);

  Text(1).Particle.Particles.assign(1, ParticleState{});
  Text(1).Particle.Particles[0].Size = 100;
  const auto rgba = Frame();
  EXPECT_EQ(renderer.TextBoxes().TextBoxRecord(1)->ScaleX, 0.0f);
  EXPECT_EQ(Find(rgba, kRed).count, 0);
}

// One record per text, the texture the box's size rounded up to a power of two (at least 2);
// records leave and move with their texts, taking their textures along.
TEST_F(Render3DTest, RecordsFollowTheTextsAtPowerOfTwoSizes) {
  const int sizes[][2] = {{1, 2}, {2, 2}, {3, 4}, {0, 2}, {-5, 2}, {64, 64}, {65, 128}};
  for (const auto& s : sizes) {
    const std::int32_t i = AddText("A", 240, 135, 10, 10);
    Text(i).Right = Text(i).Left + s[0];
    Text(i).Bottom = Text(i).Top + s[0];
  }
  Frame();
  ASSERT_EQ(renderer.TextBoxes().TextBoxCount(), 7);
  std::vector<TextureId> textures;
  for (std::int32_t i = 1; i <= 7; ++i) {
    const TextBox* box = renderer.TextBoxes().TextBoxRecord(i);
    EXPECT_EQ(box->Width, sizes[i - 1][1]) << i;
    EXPECT_EQ(box->Height, sizes[i - 1][1]) << i;
    EXPECT_NE(box->Texture, 0u);
    textures.push_back(box->Texture);
  }
  renderer.TextBoxes().TextBoxRemove(2);
  renderer.TextBoxes().TextFrameZOrder(5, true);   // the old 6th to the first place
  renderer.TextBoxes().TextFrameZOrder(2, false);  // the old 1st to the last
  std::vector<TextureId> now;
  for (std::int32_t i = 1; i <= renderer.TextBoxes().TextBoxCount(); ++i) now.push_back(renderer.TextBoxes().TextBoxRecord(i)->Texture);
  EXPECT_EQ(now, (std::vector<TextureId>{textures[5], textures[2], textures[3], textures[4], textures[6], textures[0]}));
}

// A picture in place of the string: pure black turns transparent, one texture serves every text
// it is given to, and a file that is not there leaves the text untextured without failing.
TEST_F(Render3DTest, APictureKeysOutItsBlackAndIsShared) {
  QTemporaryDir dir;
  QImage picture(8, 8, QImage::Format_RGB32);
  picture.fill(Qt::black);
  for (int y = 0; y < 8; ++y) picture.setPixel(4, y, qRgb(255, 255, 255));
  const std::string path = (dir.path() + "/stripe.png").toStdString();
  ASSERT_TRUE(picture.save(QString::fromStdString(path)));
  AddText("A", 240, 135, 64, 64);
  AddText("B", 100, 135, 64, 64);
  args.ClearColor = 0x00FF00;  // green
  Frame();
  TextObject settings = Text(1);
  settings.TextBoxTextureFileName = path;
  renderer.TextBoxes().TextBoxSetTexture(1, settings, true, true);
  Text(1).TextBoxTextureFileName = Text(2).TextBoxTextureFileName = path;
  const TextureId shared = renderer.TextBoxes().TextBoxRecord(1)->Texture;
  ASSERT_NE(shared, 0u);
  EXPECT_EQ(renderer.TextBoxes().TextBoxRecord(2)->Texture, shared);
  const auto rgba = Frame();
  EXPECT_EQ(renderer.TextBoxes().TextBoxRecord(1)->Texture, shared);  // the frame keeps what was loaded
  EXPECT_EQ(Find(rgba, kRed).count, 0);                  // no string background
  EXPECT_GT(Find(rgba, kWhite).count, 20);
  EXPECT_EQ(test::Pixel(rgba, kWidth, 150, 90), 0x00FF00u);  // black keyed out: the frame shows through

  Text(2).TextBoxTextureFileName = dir.path().toStdString() + "\\missing.png";
  Frame();
  EXPECT_EQ(renderer.TextBoxes().TextBoxRecord(2)->Texture, 0u);
  EXPECT_EQ(renderer.TextBoxes().TextBoxRecord(1)->Texture, shared);
  Text(2).TextBoxTextureFileName.clear();  // back to the string
  EXPECT_GT(Find(Frame(), kRed).count, 100);
  EXPECT_NE(renderer.TextBoxes().TextBoxRecord(2)->Texture, 0u);
}

// An extruded "O": its front lit by the text's light (red squared, times N.L of 0.707) with its
// hole kept, the size of the same text drawn flat, and its mesh built again only when the string
// changes.
TEST_F(Render3DTest, AnExtrudedTextIsLitHollowAndBuiltOnlyOnChange) {
  AddText("O", 240, 135, 200, 100);
  TextObject& t = Text(1);
  t.Extrude3D = 0.3f;
  t.Color = 0x0000FF;  // red, program order
  t.BackGroundColor = 0;
  t.Font.Size = t.RenderFont.Font.Size = t.FONT_SIZE_ZERO = 150;
  auto rgba = Frame();
  const Blob lit = Find(rgba, 0xB40000);
  ASSERT_GT(lit.count, 300);
  EXPECT_NEAR(lit.x, 160, 2);
  EXPECT_NEAR(lit.y, 90, 2);
  EXPECT_EQ(test::Pixel(rgba, kWidth, 160, 90), kBlack);  // the hole
  // 150 points at the preview's 270 lines are 75 preview pixels an em, 50 of them to the unit
  // placed 90 screen pixels over 2.7 units: the O's outer height, 0.75 em, is about 37 pixels.
  int top = kHeight, bottom = 0;
  for (int y = 0; y < kHeight; ++y)
    if (test::Pixel(rgba, kWidth, 160, y) != kBlack) top = std::min(top, y), bottom = std::max(bottom, y);
  EXPECT_NEAR(bottom - top + 1, 0.75 * 75 / 50 * 90 / 2.7, 4);
  const MeshId* built = renderer.TextBoxes().TextBoxRecord(1)->TextMesh.get();
  ASSERT_NE(built, nullptr);
  Frame();
  EXPECT_EQ(renderer.TextBoxes().TextBoxRecord(1)->TextMesh.get(), built);
  Text(1).CurrentText = "8";
  rgba = Frame();
  EXPECT_NE(renderer.TextBoxes().TextBoxRecord(1)->TextMesh.get(), built);
  EXPECT_GT(Find(rgba, 0xB40000).count, 300);
  Text(1).Extrude3D = 0;  // back on its box: the mesh goes
  Frame();
  EXPECT_EQ(renderer.TextBoxes().TextBoxRecord(1)->TextMesh, nullptr);
}

// A "Custom" model read off the frame's thread: its info goes to the text, it is drawn centred on
// the text's place in the text's colour; a broken file reports why and draws nothing.
TEST_F(Render3DTest, ACustomModelIsCentredAndABrokenOneReportsWhy) {
  QTemporaryDir dir;
  const std::string cube = (dir.path() + "/cube.obj").toStdString();
  {
    std::FILE* f = std::fopen(cube.c_str(), "w");
    ASSERT_NE(f, nullptr);
    // A cube of side 2 standing off the origin at (5, 5, 5).
    std::fputs("v 4 4 4\nv 6 4 4\nv 6 6 4\nv 4 6 4\nv 4 4 6\nv 6 4 6\nv 6 6 6\nv 4 6 6\n"
               "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nf 3 4 8 7\nf 2 3 7 6\nf 1 5 8 4\n",
               f);
    std::fclose(f);
  }
  AddText("A", 240, 135, 64, 64, "Custom");
  Text(1).Mesh3DFileName = cube;
  Text(1).Color = 0x0000FF;
  renderer.TextBoxes().WaitForModels = true;
  auto rgba = Frame();
  EXPECT_NE(Text(1).Mesh3DInfo.find("\r\nF: 12\r\nV: "), std::string::npos) << Text(1).Mesh3DInfo;
  const std::uint32_t centre = test::Pixel(rgba, kWidth, 160, 90);
  EXPECT_GT(centre >> 16, 120u);
  EXPECT_LT((centre >> 8) & 0xFF, (centre >> 16) - 60);
  // Twenty units back a unit is 90 / (20 tan(pi / 8)) = 10.9 pixels: the cube's face 22 wide.
  EXPECT_NE(test::Pixel(rgba, kWidth, 160 + 9, 90), kBlack);
  EXPECT_EQ(test::Pixel(rgba, kWidth, 160 + 14, 90), kBlack);

  const std::string broken = (dir.path() + "/broken.gltf").toStdString();
  {
    std::FILE* f = std::fopen(broken.c_str(), "w");
    std::fputs("{\"asset\": {\"version\": \"2.0\"}, \"meshes\": [{\"primitives\": [", f);
    std::fclose(f);
  }
  Text(1).Mesh3DFileName = broken;
  rgba = Frame();
  EXPECT_NE(Text(1).Mesh3DInfo.find("F: Error\r\nV: Error\r\n"), std::string::npos) << Text(1).Mesh3DInfo;
  EXPECT_EQ(test::Pixel(rgba, kWidth, 160, 90), kBlack);
}

}  // namespace
}  // namespace lumivane
