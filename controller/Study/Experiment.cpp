#include "Study/Experiment.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace controller {
namespace {

std::string namesOf(const std::vector<Experiment>& experiments) {
  std::string names;
  for (const Experiment& experiment : experiments) {
    names += fmt::format("{}\"{}\"", names.empty() ? "" : ", ", experiment.name);
  }
  return names;
}

}  // namespace

bool Experiment::has(std::int32_t variable) const {
  return std::find(variables.begin(), variables.end(), variable) != variables.end();
}

const char* modeOf(const StudyIdentity& study) {
  return study.isTerminating ? "terminating" : "steady";
}

const char* kindOf(const StudyIdentity& study) {
  return study.isTerminating ? "terminating" : "steady state";
}

std::string differenceOf(const StudyIdentity& stored, const StudyIdentity& wanted) {
  const auto differ = [](const char* what, const auto& there, const auto& here) {
    return there == here ? std::string() : fmt::format("its {} is {}, and {} is asked for", what, there, here);
  };
  for (const std::string& difference :
       {differ("simulator", stored.simulator, wanted.simulator),
        differ("executable's SHA-256", stored.simulatorDigest, wanted.simulatorDigest),
        differ("kind of run", std::string(modeOf(stored)), std::string(modeOf(wanted))),
        differ("generator", stored.generator, wanted.generator), differ("seed", stored.seed, wanted.seed),
        differ("number of batches in a unit", stored.batchesPerUnit, wanted.batchesPerUnit),
        differ("list of experiments", namesOf(stored.experiments), namesOf(wanted.experiments))}) {
    if (!difference.empty()) {
      return difference;
    }
  }
  for (std::size_t i = 0; i < stored.experiments.size(); ++i) {
    const Experiment& there = stored.experiments[i];
    const Experiment& here = wanted.experiments[i];
    if (there.overrides != here.overrides || there.number != here.number) {
      return fmt::format("experiment \"{}\" has the values \"{}\", and \"{}\" are asked for", there.name,
                         there.overrides, here.overrides);
    }
    if (there.variables != here.variables) {
      return fmt::format("experiment \"{}\" has the variables {}, and the simulator now has {}", there.name,
                         fmt::join(there.variables, ","), fmt::join(here.variables, ","));
    }
  }
  return "";
}

}  // namespace controller
