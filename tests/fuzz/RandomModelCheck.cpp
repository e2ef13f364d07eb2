#include "fuzz/Checks.h"
#include "fuzz/Comparison.h"
#include "fuzz/ModelRecipe.h"
#include "fuzz/PlainInterpreter.h"

namespace fuzz {

std::string checkRandomModel(Input input) {
  const ModelRecipe model = modelOf(input);
  const PlainRun plain = interpret(model);
  // Models that end the process are for tests that run each in a process of its own.
  if (plain.end != PlainRun::End::kOrderly) {
    return "";
  }
  const std::string difference = differenceOnEngine(model, plain);
  return difference.empty() ? "" : difference + '\n' + describe(model);
}

}  // namespace fuzz
