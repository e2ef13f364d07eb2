#pragma once

#include <concepts>
#include <cstring>

namespace support {

/// The value types that a state image can hold.
template <typename T>
concept StateValue = std::same_as<T, bool> || std::same_as<T, char> || std::same_as<T, double> ||
    std::same_as<T, float> || std::same_as<T, int> || std::same_as<T, short>;

}  // namespace support

/// Reads a value from any place of a state image, aligned or not: sizeof(T) bytes in the machine's own byte order.
template <support::StateValue T>
inline void readMemory2(const void* from, T* to) {
  if constexpr (std::same_as<T, bool>) {
    // A byte other than 0 or 1 is no bool; every non-zero one means true.
    unsigned char byte = 0;
    std::memcpy(&byte, from, sizeof byte);
    *to = byte != 0;
  } else {
    std::memcpy(to, from, sizeof(T));
  }
}

/// Writes a value to any place of a state image, aligned or not: sizeof(T) bytes in the machine's own byte order.
template <support::StateValue T>
inline void writeMemory(T value, void* to) {
  std::memcpy(to, &value, sizeof(T));
}
