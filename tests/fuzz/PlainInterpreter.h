#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "fuzz/FlatModel.h"
#include "fuzz/ModelRecipe.h"
#include "fuzz/Trajectory.h"

namespace fuzz {

/// What the plain interpreter makes of a model.
struct PlainRun {
  enum class End {
    kOrderly,
    kFatal,      ///< the simulator must end with status 1 and exactly `words` on standard error
    kAssertion,  ///< it must abort behind `words`: a model broke a rule of the engine
    kEndless     ///< too long a run to be worth comparing: the engine must not be given it
  };

  End end = End::kOrderly;
  std::string words;
  Trajectory trajectory;            // without observations
  std::vector<Instance> instances;  // the tree's atomic models
  std::vector<int> initialMarks;
  std::vector<std::size_t> batchEnds;  // number of firings up to the end of each batch; a steady-state run is one
  double stopTime = 0.0;               // of each batch of a terminating run
  std::vector<std::size_t> finished;   // by variable, in a steady-state run: batches that it has finished
};

/// Runs a model from the rules alone, one vector and one loop at a time: no event list with back pointers, no chains built
/// ahead, no shared storage. Where the rules leave the choice to the order in which things are looked at, that order is
/// followed.
[[nodiscard]] PlainRun interpret(const ModelRecipe& model);

}  // namespace fuzz
