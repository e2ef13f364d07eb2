#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "fuzz/ModelRecipe.h"
#include "fuzz/PlainInterpreter.h"

namespace fuzz {

/// Runs a model whose plain run is at hand, and came to an orderly end, on the engine, silently, and compares the two.
/// Gives what differs first, in words, or nothing: firings (activity, time bit by bit, marks), the numbers drawn, and the
/// observations.
[[nodiscard]] std::string differenceOnEngine(const ModelRecipe& model, const PlainRun& plain);

}  // namespace fuzz
