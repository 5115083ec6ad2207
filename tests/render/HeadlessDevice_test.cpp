#include <gtest/gtest.h>

#include "render/RenderDevice.h"

namespace lumivane {
namespace {

std::uint32_t Pixel(const std::vector<std::uint8_t>& rgba, int width, int x, int y) {
  const std::size_t i = (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 4;
  return (static_cast<std::uint32_t>(rgba[i]) << 16) | (static_cast<std::uint32_t>(rgba[i + 1]) << 8) | rgba[i + 2];
}

// On Mesa's software renderer: frames come back in order, whole and in the colour they were given,
// while each read back overlaps the next frame.
TEST(HeadlessDevice, FramesComeBackInOrderAndInTheirColours) {
  std::string error;
  auto device = CreateHeadlessDevice(64, 48, error);
  ASSERT_NE(device, nullptr) << error;
  EXPECT_EQ(device->BackBufferWidth(), 64);
  EXPECT_FALSE(device->Renderer().empty());

  std::vector<std::uint8_t> rgba;
  device->BeginScene();
  device->Clear(0xFFFF0000);
  device->EndScene();
  device->QueueReadBack();
  EXPECT_FALSE(device->TakeReadBack(rgba));  // nothing is older than the first frame

  device->BeginScene();
  device->Clear(0xFF00FF80);
  device->EndScene();
  device->QueueReadBack();
  ASSERT_TRUE(device->TakeReadBack(rgba));  // the first frame, while the second is on its way
  ASSERT_EQ(rgba.size(), 64u * 48u * 4u);
  EXPECT_EQ(Pixel(rgba, 64, 0, 0), 0xFF0000u);
  EXPECT_EQ(Pixel(rgba, 64, 63, 47), 0xFF0000u);
  EXPECT_EQ(rgba[3], 255);  // the back buffer's alpha reads as 1
  ASSERT_TRUE(device->FlushReadBack(rgba));
  EXPECT_EQ(Pixel(rgba, 64, 10, 10), 0x00FF80u);
  EXPECT_FALSE(device->FlushReadBack(rgba));  // each frame is delivered once
}

TEST(HeadlessDevice, AnImpossibleBackBufferIsRefusedWithAReason) {
  std::string error;
  EXPECT_EQ(CreateHeadlessDevice(1 << 20, 1 << 20, error), nullptr);
  EXPECT_FALSE(error.empty());
}

}  // namespace
}  // namespace lumivane
