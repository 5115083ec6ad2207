#include <gtest/gtest.h>

#include <string>

#include "core/TextObject.h"
#include "render/RenderDevice.h"
#include "render/TextDrawer.h"
#include "render/FrameRenderer.h"
#include "support/EngineFixture.h"
#include "support/RenderFixture.h"

namespace lumivane {
namespace {

const TextFont kMono{"DejaVu Sans Mono", 12};
const TextFont kSans{"DejaVu Sans", 12};

// The table that places counters' characters without the shaper must put every glyph exactly
// where the shaper does, or counters would jitter against other texts.
TEST(TextLayout, TheFastPathAgreesWithTheShaper) {
  GlyphAtlas atlas;
  TextLayout layout(atlas);
  for (const TextFont& font : {kMono, kSans}) {
    for (float size : {12.0f, 36.0f, 53.3f}) {
      for (const char* text : {"0123456789", "-12.5", "10:42:07", "1 000 000", "7\r\n42", "100% (3)", "  8 "}) {
        if (!layout.FastPathServes(text, font, size)) continue;
        std::vector<TextLayout::Quad> fast, shaped;
        std::vector<TextLayout::Line> fastLines, shapedLines;
        layout.Layout(text, font, size, fast, fastLines);
        layout.LayoutShaped(text, font, size, shaped, shapedLines);
        ASSERT_EQ(fast.size(), shaped.size()) << font.Name << " " << size << " \"" << text << "\"";
        for (std::size_t i = 0; i < fast.size(); ++i) {
          EXPECT_EQ(fast[i].x0, shaped[i].x0) << font.Name << " " << size << " \"" << text << "\" glyph " << i;
          EXPECT_EQ(fast[i].y0, shaped[i].y0) << font.Name << " " << size << " \"" << text << "\" glyph " << i;
          EXPECT_EQ(fast[i].u0, shaped[i].u0);
        }
        ASSERT_EQ(fastLines.size(), shapedLines.size());
        for (std::size_t i = 0; i < fastLines.size(); ++i) {
          EXPECT_NEAR(fastLines[i].width, shapedLines[i].width, 0.01) << "\"" << text << "\"";
          EXPECT_NEAR(fastLines[i].height, shapedLines[i].height, 0.01);
        }
      }
    }
  }
  // Letters take the shaper: kerning and ligatures are its business.
  EXPECT_FALSE(layout.FastPathServes("AVATAR", kSans, 12));
  EXPECT_TRUE(layout.FastPathServes("0123", kMono, 12));
}

class TextDrawerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    device = CreateHeadlessDevice(200, 100, error);
    ASSERT_NE(device, nullptr) << error;
    drawer = std::make_unique<TextDrawer>(*device);
  }
  // Draws and answers the columns and rows where text pixels (red above half) are.
  void Draw(std::string_view text, TextRect rect, std::uint32_t format) {
    device->BeginScene();
    device->Clear(0xFF000000);
    drawer->DrawText(kSans, 30, 0xFFFF0000, text, rect, format);
    device->EndScene();
    ASSERT_TRUE(device->ReadBackNow(rgba));
    minX = minY = 1 << 20;
    maxX = maxY = -1;
    for (int y = 0; y < 100; ++y)
      for (int x = 0; x < 200; ++x)
        if ((test::Pixel(rgba, 200, x, y) >> 16) > 128) {
          minX = std::min(minX, x), maxX = std::max(maxX, x);
          minY = std::min(minY, y), maxY = std::max(maxY, y);
        }
  }
  std::unique_ptr<RenderDevice> device;
  std::unique_ptr<TextDrawer> drawer;
  std::vector<std::uint8_t> rgba;
  int minX = 0, maxX = 0, minY = 0, maxY = 0;
};

TEST_F(TextDrawerTest, AlignsEachLineInItsBox) {
  TextRect measure{0, 0, 0, 0};
  drawer->DrawText(kSans, 30, 0xFFFF0000, "HH", measure, kTextCalcRect);
  const float width = measure.right - measure.left;
  ASSERT_GT(width, 20);
  EXPECT_GT(measure.bottom - measure.top, 25);

  Draw("HH", TextRect{20, 10, 180, 90}, kTextLeft);
  EXPECT_NEAR(minX, 20, 4);
  Draw("HH", TextRect{20, 10, 180, 90}, kTextRight);
  EXPECT_NEAR(maxX, 179, 4);
  Draw("HH", TextRect{20, 10, 180, 90}, kTextCenter);
  EXPECT_NEAR((minX + maxX) / 2.0, 100, 2);
  // Vertical centring takes effect on a single line only, as the flag's meaning has it.
  Draw("HH", TextRect{20, 10, 180, 90}, kTextLeft | kTextVCenter);
  const int top = minY;
  Draw("HH", TextRect{20, 10, 180, 90}, kTextLeft | kTextVCenter | kTextSingleLine);
  EXPECT_GT(minY, top + 10);
  EXPECT_NEAR((minY + maxY) / 2.0, 50, 4);
}

TEST_F(TextDrawerTest, ClipsToTheBoxUnlessToldNotTo) {
  const std::string wide = "HHHHHHHHHHHHHHHH";
  Draw(wide, TextRect{40, 20, 120, 80}, kTextLeft);
  EXPECT_GE(minX, 40);
  EXPECT_LE(maxX, 119);
  EXPECT_GE(minY, 20);
  Draw(wide, TextRect{40, 20, 120, 80}, kTextLeft | kTextNoClip);
  EXPECT_GT(maxX, 150);
  // A box smaller than a line cuts the glyphs in height too.
  Draw("HH", TextRect{40, 20, 120, 30}, kTextLeft);
  EXPECT_LE(maxY, 29);
}

}  // namespace
}  // namespace lumivane

namespace lumivane {
namespace {

TEST(FrameRenderer, TellsItsCapabilitiesAndBitDepthInItsOwnWords) {
  DeviceCaps caps;
  caps.MaxTextureWidth = caps.MaxTextureHeight = 16384;
  caps.MaxSimultaneousTextures = 8;
  caps.MaxVertexCount = 3000;
  const std::string info = FrameRenderer::DevicePropertyInfo(caps);
  EXPECT_EQ(info.substr(0, info.find("\r\n")),
            "Display Adapater Capabilities                                               ");
  EXPECT_NE(info.find("\r\nMax Texture Height: 16384\r\nMax Texture Width: 16384\r\n"), std::string::npos);
  EXPECT_NE(info.find("Max Simultaneous TextureCount: 8\r\nMax VertexCount: 3000\r\n"), std::string::npos);
  EXPECT_NE(info.find("Non-Square Textures\r\nProjection Mapping is possible at all Resolutions"), std::string::npos);
  caps.SquareTexturesOnly = true;
  EXPECT_NE(FrameRenderer::DevicePropertyInfo(caps).find("Projection Mapping is possible only at square Resolutions"),
            std::string::npos);
  EXPECT_EQ(FrameRenderer::BitDepthOf(21), 32);
  EXPECT_EQ(FrameRenderer::BitDepthOf(22), 32);
  EXPECT_EQ(FrameRenderer::BitDepthOf(23), 24);  // R5G6B5 is really 16-bit, and still reports 24
}


// Character by character: each character where the one before ended, each line back at the left
// and one character's height lower.
TEST(FrameRenderer, DrawsVisibleTextCharacterByCharacter) {
  test::EngineFixture engine;
  std::string error;
  auto device = CreateHeadlessDevice(120, 80, error);
  ASSERT_NE(device, nullptr) << error;
  FrameRenderer renderer(engine.text);
  ASSERT_TRUE(renderer.Initialize(device.get(), "", error)) << error;
  device->BeginScene();
  device->Clear(0xFF000000);
  const float height = renderer.FlatTexts().RenderVisibleText(kSans, 20, 0xFF00FF00, "MM\r\nMM", TextRect{10, 5, 10, 5}, kTextNoClip);
  device->EndScene();
  std::vector<std::uint8_t> rgba;
  ASSERT_TRUE(device->ReadBackNow(rgba));
  ASSERT_GT(height, 15);
  int left[2] = {1000, 1000}, right[2] = {-1, -1}, count[2] = {0, 0};
  for (int y = 0; y < 80; ++y)
    for (int x = 0; x < 120; ++x)
      if (((test::Pixel(rgba, 120, x, y) >> 8) & 0xFF) > 128) {
        const int line = y < 5 + height ? 0 : 1;
        ++count[line];
        left[line] = std::min(left[line], x), right[line] = std::max(right[line], x);
      }
  for (int line : {0, 1}) {
    EXPECT_GT(count[line], 40) << line;
    EXPECT_NEAR(left[line], 11, 3) << line;
    EXPECT_GT(right[line], 35) << line;  // two characters side by side
  }
  renderer.Destroy();
}

}  // namespace
}  // namespace lumivane
