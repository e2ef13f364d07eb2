#include "Study/ExperimentStanding.h"

#include <algorithm>
#include <span>

namespace controller {
namespace {

std::vector<std::int32_t> countedVariables(const Experiment& experiment, const StudyGoal& goal) {
  std::vector<std::int32_t> variables;
  std::copy_if(experiment.variables.begin(), experiment.variables.end(), std::back_inserter(variables),
               [&](std::int32_t variable) { return goal.counts(variable); });
  return variables;
}

std::vector<std::string> namesOf(const std::vector<std::int32_t>& variables, const StudyGoal& goal) {
  std::vector<std::string> names;
  names.reserve(variables.size());
  for (const std::int32_t variable : variables) {
    names.push_back(goal.nameOf(variable));
  }
  return names;
}

}  // namespace

ExperimentStanding::ExperimentStanding(const StudyIdentity& study, const Experiment& experiment, const StudyGoal& goal)
    : isTerminating_(study.isTerminating),
      goal_(goal),
      variables_(countedVariables(experiment, goal)),
      rule_(goal.goal, namesOf(variables_, goal)) {
  if (!isTerminating_) {
    diagnoses_.assign(variables_.size(), SteadyStateDiagnosis(goal.batchesTogether));
  }
}

std::vector<std::vector<double>> ExperimentStanding::observationsOf(const UnitObservations& unit) const {
  std::vector<std::vector<double>> observations(variables_.size());
  for (const VariableObservations& row : unit.variables) {
    const auto found = std::find(variables_.begin(), variables_.end(), row.variable);
    if (found != variables_.end()) {
      observations[static_cast<std::size_t>(found - variables_.begin())] = observed(row.values, goal_);
    }
  }
  return observations;
}

void ExperimentStanding::count(const UnitObservations& unit) {
  const auto observations = observationsOf(unit);
  const std::vector<std::span<const double>> spans(observations.begin(), observations.end());
  rule_.addUnit(spans);
  for (std::size_t i = 0; i < diagnoses_.size(); ++i) {
    diagnoses_[i].addUnit(observations[i]);
  }
  ++units_;
  rule_.checkpoint();
}

std::vector<std::string> ExperimentStanding::remarks() const {
  std::vector<std::string> remarks;
  for (std::size_t i = 0; i < diagnoses_.size(); ++i) {
    for (const std::string& word : diagnoses_[i].words()) {
      remarks.push_back(goal_.nameOf(variables_[i]) + ": " + word);
    }
  }
  return remarks;
}

}  // namespace controller
