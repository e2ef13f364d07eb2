#include "Study/UnitSeed.h"

#include <stdexcept>

namespace controller {
namespace {

constexpr std::uint64_t kGolden = 0x9e3779b97f4a7c15;
constexpr std::uint64_t kHalf = 15;
constexpr std::uint64_t kHalfMask = (1U << kHalf) - 1;
constexpr std::uint64_t kRounds = 8;

constexpr std::uint64_t mix(std::uint64_t value) {
  value = (value ^ value >> 30) * 0xbf58476d1ce4e5b9;
  value = (value ^ value >> 27) * 0x94d049bb133111eb;
  return value ^ value >> 31;
}

std::uint64_t permuted(std::uint64_t value, std::uint64_t key) {
  std::uint64_t left = value >> kHalf;
  std::uint64_t right = value & kHalfMask;
  for (std::uint64_t round = 0; round < kRounds; ++round) {
    const std::uint64_t next = left ^ (mix(key + (round + 1) * kGolden + right) & kHalfMask);
    left = right;
    right = next;
  }
  return left << kHalf | right;
}

}  // namespace

std::uint64_t fnvHash(std::string_view bytes) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char byte : bytes) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  }
  return hash;
}

std::uint32_t unitSeed(std::uint64_t studySeed, std::string_view experiment, std::int64_t unit) {
  if (unit < 0 || unit >= kGreatestSeed) {
    throw std::out_of_range("an experiment has no more than 1073741821 units");
  }
  const std::uint64_t key = mix(mix(studySeed) ^ fnvHash(experiment));
  std::uint64_t seed = static_cast<std::uint64_t>(unit) + 1;
  do {
    seed = permuted(seed, key);
  } while (seed < 1 || seed > static_cast<std::uint64_t>(kGreatestSeed));
  return static_cast<std::uint32_t>(seed);
}

}  // namespace controller
