#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "Store/ObservationBlob.h"
#include "controller/fuzz/AllocatedBytes.h"
#include "controller/fuzz/ReaderChecks.h"

namespace fuzz {

namespace {

using Bits = std::vector<std::uint64_t>;

constexpr std::size_t kHead = 9;
constexpr std::uint8_t kConstant = 1;
/// A byte may stand for a binary64, so that eight bytes come of it.
constexpr std::size_t kFactor = 8;
/// Observations that are asked for at most, which one value may stand for.
constexpr std::size_t kMost = 1024;

std::uint64_t number(Input bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    value |= std::uint64_t{bytes[i]} << (8 * i);
  }
  return value;
}

/// The observations by the table of forms; nothing where the bytes are of none.
std::optional<Bits> plainObservations(Input input) {
  if (input.size() < kHead) {
    return {};
  }
  const std::uint64_t count = number(input.subspan(1, 8));
  const Input rest = input.subspan(kHead);
  Bits bits;
  switch (input[0]) {
    case 0:
      for (std::size_t at = 0; at + 8 <= rest.size(); at += 8) {
        bits.push_back(number(rest.subspan(at, 8)));
      }
      return bits.size() == count && count <= kMost && rest.size() % 8 == 0 ? std::optional(bits) : std::nullopt;
    case kConstant:
      return count > 0 && count <= kMost && rest.size() == 8 ? std::optional(Bits(count, number(rest))) : std::nullopt;
    case 2:
      for (const std::uint8_t byte : rest) {
        bits.push_back(std::bit_cast<std::uint64_t>(static_cast<double>(byte)));
      }
      return bits.size() == count && count <= kMost ? std::optional(bits) : std::nullopt;
    default:
      return {};
  }
}

Bits bitsOf(std::span<const double> values) {
  Bits bits;
  for (const double value : values) {
    bits.push_back(std::bit_cast<std::uint64_t>(value));
  }
  return bits;
}

}  // namespace

std::string checkObservations(Input input) {
  const std::optional<Bits> expected = plainObservations(input);
  std::optional<std::vector<double>> found;
  const AllocatedBytes allocated;
  try {
    found = controller::unpackObservations(std::as_bytes(input), kMost);
  } catch (const std::runtime_error&) {
  }
  std::string excess = allocated.excess(input.size() + kMost, kFactor);
  if (!excess.empty()) {
    return excess;
  }
  if (expected.has_value() != found.has_value()) {
    return expected ? "sound observations were refused" : "damaged observations were read";
  }
  if (!found) {
    return "";
  }
  if (bitsOf(*found) != *expected) {
    return "other observations were read";
  }
  return bitsOf(controller::unpackObservations(controller::packObservations(*found), kMost)) == *expected
             ? ""
             : "observations change when they are stored again";
}

}  // namespace fuzz
