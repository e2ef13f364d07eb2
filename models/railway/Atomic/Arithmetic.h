#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

/// The integer arithmetic of the railway's marks. Every result is defined for every argument, as any parameter may be
/// overridden with any value.
namespace support {

/// `value` without its fraction, toward zero. A value outside the 32-bit range, an infinity among them, gives the
/// nearest end of the range; NaN gives 0.
[[nodiscard]] inline std::int32_t truncateToInt32(double value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (std::isnan(value)) {
    return 0;
  }
  if (value >= static_cast<double>(Limits::max())) {
    return Limits::max();
  }
  if (value <= static_cast<double>(Limits::min())) {
    return Limits::min();
  }
  return static_cast<std::int32_t>(value);
}

/// The low 16 bits of `value`.
[[nodiscard]] constexpr std::int16_t keepLow16(std::int32_t value) {
  return static_cast<std::int16_t>(value);
}

/// a + b with wrap-around in 32 bits.
[[nodiscard]] constexpr std::int32_t sum32(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

/// a - b with wrap-around in 32 bits.
[[nodiscard]] constexpr std::int32_t difference32(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

}  // namespace support
