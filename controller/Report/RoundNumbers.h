#pragma once

#include <string>
#include <vector>

namespace controller {

/// A round width, 1, 2 or 5 times a power of ten, of which `steps` or somewhat fewer go from `from` to `to`. Where that can't
/// be told (from >= to, or a difference that is lost beside the numbers) it is 1, or as much as tells `from` from its
/// neighbours.
[[nodiscard]] double roundStep(double from, double to, int steps);

/// The multiples of roundStep() between `from` and `to`, ascending.
[[nodiscard]] std::vector<double> roundNumbers(double from, double to, int steps);

/// A number for people: six digits, or decimals down to the first of `step`, in which ticks or the digits that an interval
/// tells of stand below each other; with a power of ten where that would be long. "–" for NaN, "∞" for infinity.
[[nodiscard]] std::string numberInWords(double number, double step = 0.0);

}  // namespace controller
