#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Process/ResultFile.h"
#include "Statistics/SteadyStateDiagnosis.h"
#include "Statistics/StoppingRule.h"
#include "Study/Experiment.h"
#include "Study/StudyGoal.h"

namespace controller {

/// Where one experiment stands: what its units, counted in their order, say under a goal. It depends on the units and the
/// goal alone, and not on when, where and in which order the units were made.
/// Memory  constant, however many units are counted
class ExperimentStanding {
 public:
  ExperimentStanding(const StudyIdentity& study, const Experiment& experiment, const StudyGoal& goal);

  /// Counts the next unit. Requires: verdict() is GoOn.
  void count(const UnitObservations& unit);

  [[nodiscard]] const std::vector<std::int32_t>& variables() const { return variables_; }  ///< those that count
  [[nodiscard]] std::int64_t units() const { return units_; }
  [[nodiscard]] Verdict verdict() const { return rule_.verdict(); }
  [[nodiscard]] const StoppingRule& rule() const { return rule_; }
  /// What the batches of a steady-state study say of themselves, a sentence each.
  [[nodiscard]] std::vector<std::string> remarks() const;
  /// The unit's observations of the variables that count, as they are counted.
  [[nodiscard]] std::vector<std::vector<double>> observationsOf(const UnitObservations& unit) const;

 private:
  bool isTerminating_;
  StudyGoal goal_;
  std::vector<std::int32_t> variables_;
  std::int64_t units_ = 0;
  StoppingRule rule_;
  std::vector<SteadyStateDiagnosis> diagnoses_;  // for each variable that counts, in a steady-state study
};

}  // namespace controller
