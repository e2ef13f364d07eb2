#pragma once

#include "fuzz/ModelRecipe.h"
#include "fuzz/Trajectory.h"

namespace fuzz {

/// Runs a model on the engine, through its command line and a binary result file, which is left behind. It may be called
/// again and again in one process.
/// Failure  a model that the engine ends the process for ends it.
[[nodiscard]] Trajectory runOnEngine(const ModelRecipe& model, const char* resultFile);

}  // namespace fuzz
