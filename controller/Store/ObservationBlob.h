#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace controller {

/// Observations as bytes, and back without the loss of a bit. The first byte tells the form, the next eight the number of
/// observations; all numbers have their least significant byte first.
///
///   0  each observation as a binary64
///   1  one binary64, which is every observation
///   2  a byte for each observation, which is that integer from 0 to 255
[[nodiscard]] std::vector<std::byte> packObservations(std::span<const double> observations);

/// Throws std::runtime_error for bytes of no such form, and for more than `most` observations, which bounds the memory, as
/// one value may stand for any number of them.
[[nodiscard]] std::vector<double> unpackObservations(std::span<const std::byte> bytes, std::size_t most);

/// Observations of one variable in one unit, at most: what the greatest result file has room for.
inline constexpr std::size_t kGreatestCount = std::size_t{1} << 27;

}  // namespace controller
