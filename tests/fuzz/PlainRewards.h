#pragma once

#include <vector>

#include "fuzz/ModelRecipe.h"
#include "fuzz/PlainInterpreter.h"

namespace fuzz {

/// What the performance variables must be, by variable and then by batch, from the definitions: the value of a function at
/// a time, its integral over a window, the sum over the firings in a window. They are worked out from the finished
/// trajectory, so that sums are made in another order than the engine's: compare with a tolerance.
/// Requires  an orderly run whose time never runs back and is always a number.
[[nodiscard]] std::vector<std::vector<double>> rewardsOf(const ModelRecipe& model, const PlainRun& run);

/// Whether the run is of that kind.
[[nodiscard]] bool timeRunsForward(const PlainRun& run);

}  // namespace fuzz
