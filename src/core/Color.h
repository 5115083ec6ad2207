#pragma once

#include <cstdint>

namespace lumivane {

// Program colours are 0x00BBGGRR words (red in the low byte); the device wants 0xAARRGGBB.
constexpr std::uint32_t ToDeviceColor(std::int32_t programColor, std::uint8_t alpha = 255) noexcept {
  const auto c = static_cast<std::uint32_t>(programColor);
  const std::uint32_t r = c & 0xFFu, g = (c >> 8) & 0xFFu, b = (c >> 16) & 0xFFu;
  return (static_cast<std::uint32_t>(alpha) << 24) | (r << 16) | (g << 8) | b;
}

constexpr std::int32_t ProgramColor(std::uint8_t r, std::uint8_t g, std::uint8_t b) noexcept {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(r) | (static_cast<std::uint32_t>(g) << 8) |
                                   (static_cast<std::uint32_t>(b) << 16));
}

}  // namespace lumivane
