#include <gtest/gtest.h>

#include <algorithm>

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

// Every pair of blend codes against its formula: a source of one colour over a cleared destination,
// each pair in its own cell of one frame.
TEST(HeadlessDevice, EachBlendCodePairFollowsItsFormula) {
  constexpr int kCell = 4, kCodes = 13;
  std::string error;
  auto device = CreateHeadlessDevice(kCell * kCodes, kCell * kCodes, error);
  ASSERT_NE(device, nullptr) << error;
  const double S[3] = {0xCC / 255.0, 0x66 / 255.0, 0x33 / 255.0}, Sa = 0x99 / 255.0;
  const double D[3] = {0x4D / 255.0, 0x80 / 255.0, 0xE6 / 255.0}, Da = 1.0;
  device->BeginScene();
  device->Clear(0xFF4D80E6);
  for (int src = 1; src <= kCodes; ++src) {
    for (int dst = 1; dst <= kCodes; ++dst) {
      device->SetBlend(src, dst);
      const float cell[4] = {static_cast<float>((src - 1) * kCell), static_cast<float>((dst - 1) * kCell),
                             static_cast<float>(src * kCell), static_cast<float>(dst * kCell)};
      device->DrawQuads(cell, 1, 0x99CC6633);
    }
  }
  device->EndScene();
  std::vector<std::uint8_t> rgba;
  device->QueueReadBack();
  ASSERT_TRUE(device->FlushReadBack(rgba));

  auto factor = [&](int code, int channel, bool source) -> double {
    switch (code) {
      case 1: return 0;
      case 3: return S[channel];
      case 4: return 1 - S[channel];
      case 5: return Sa;
      case 6: return 1 - Sa;
      case 7: return Da;
      case 8: return 1 - Da;
      case 9: return D[channel];
      case 10: return 1 - D[channel];
      case 11: return source ? std::min(Sa, 1 - Da) : 1;
      default: return 1;
    }
  };
  for (int src = 1; src <= kCodes; ++src) {
    for (int dst = 1; dst <= kCodes; ++dst) {
      const int x = (src - 1) * kCell + 1, y = (dst - 1) * kCell + 1;
      const std::size_t at = (static_cast<std::size_t>(y) * kCell * kCodes + static_cast<std::size_t>(x)) * 4;
      for (int ch = 0; ch < 3; ++ch) {
        double fs = factor(src, ch, true), fd = factor(dst, ch, false);
        if (src == 12) fs = Sa, fd = 1 - Sa;
        if (src == 13) fs = 1 - Sa, fd = Sa;
        const double want = std::clamp(S[ch] * fs + D[ch] * fd, 0.0, 1.0) * 255.0;
        EXPECT_NEAR(rgba[at + static_cast<std::size_t>(ch)], want, 2.5) << "codes " << src << "," << dst << " channel " << ch;
      }
      EXPECT_EQ(rgba[at + 3], 255) << "codes " << src << "," << dst;  // the destination alpha stays 1
    }
  }
}

TEST(HeadlessDevice, AnImpossibleBackBufferIsRefusedWithAReason) {
  std::string error;
  EXPECT_EQ(CreateHeadlessDevice(1 << 20, 1 << 20, error), nullptr);
  EXPECT_FALSE(error.empty());
}

}  // namespace
}  // namespace lumivane
