#pragma once

#include <memory>
#include <string>

#include "Store/StudyStore.h"
#include "Study/ExperimentStanding.h"
#include "Study/StudyGoal.h"

namespace controller {

/// The files of a study, in its folder.
[[nodiscard]] std::string storePath(const std::string& folder);
[[nodiscard]] std::string lockPath(const std::string& folder);
[[nodiscard]] std::string reportPath(const std::string& folder);
[[nodiscard]] std::string scratchPath(const std::string& folder);

/// Opens the store of a study to read it. Throws StoreError where there is none.
[[nodiscard]] std::unique_ptr<StudyStore> openStudy(const std::string& folder);
/// The goal that the study was last run with. Throws StoreError.
[[nodiscard]] StudyGoal storedGoal(StudyStore& store);

/// Counts the stored units of one experiment until its verdict or the first that is missing, and shows each to `visit`.
template <typename Visit>
[[nodiscard]] ExperimentStanding standingOf(StudyStore& store, std::size_t experiment, const StudyGoal& goal,
                                            Visit visit) {
  ExperimentStanding standing(store.identity(), store.identity().experiments[experiment], goal);
  const auto number = static_cast<std::int64_t>(experiment);
  while (standing.verdict() == Verdict::GoOn && store.hasUnit(number, standing.units())) {
    const UnitObservations unit = store.observations(number, standing.units());
    standing.count(unit);
    visit(standing, unit);
  }
  return standing;
}
[[nodiscard]] ExperimentStanding standingOf(StudyStore& store, std::size_t experiment, const StudyGoal& goal);

/// "reached", "stopped short" or "cannot be reached".
[[nodiscard]] const char* nameOf(Verdict verdict);

}  // namespace controller
