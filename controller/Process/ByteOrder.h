#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace controller {

/// The eight bytes of a number in the given order, from and to a place of any alignment.
template <std::endian kOrder>
[[nodiscard]] inline std::uint64_t readEight(const std::byte* place) {
  std::uint64_t number = 0;
  std::memcpy(&number, place, sizeof number);
  return kOrder == std::endian::native ? number : __builtin_bswap64(number);
}

template <std::endian kOrder>
inline void writeEight(std::byte* place, std::uint64_t number) {
  const std::uint64_t ordered = kOrder == std::endian::native ? number : __builtin_bswap64(number);
  std::memcpy(place, &ordered, sizeof ordered);
}

}  // namespace controller
