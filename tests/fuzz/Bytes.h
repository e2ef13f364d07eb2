#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "fuzz/SplitMix.h"

namespace fuzz {

/// A fuzzer's bytes as a source of small choices. Behind the last byte every choice is 0, so that each string of bytes, the
/// empty one included, stands for something.
class Bytes {
 public:
  explicit Bytes(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  /// A number from 0 to `count` - 1; `count` is from 1 to 256.
  int choose(int count) { return next() % count; }

  /// True for about one choice in `count`; false behind the last byte.
  bool oneIn(int count) { return choose(count) == count - 1; }

  /// One of these values.
  template <typename Value, std::size_t kCount>
  const Value& among(const Value (&values)[kCount]) {
    return values[static_cast<std::size_t>(choose(static_cast<int>(kCount)))];
  }

 private:
  int next() { return position_ < bytes_.size() ? bytes_[position_++] : 0; }

  std::span<const std::uint8_t> bytes_;  // borrowed
  std::size_t position_ = 0;
};

/// `count` bytes that depend on `seed` alone.
inline std::vector<std::uint8_t> bytesOfSeed(std::uint64_t seed, std::size_t count) {
  SplitMix random(seed);
  std::vector<std::uint8_t> bytes(count);
  for (std::uint8_t& byte : bytes) {
    byte = static_cast<std::uint8_t>(random.next());
  }
  return bytes;
}

}  // namespace fuzz
