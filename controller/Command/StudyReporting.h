#pragma once

#include <string>
#include <vector>

#include "Store/StudyStore.h"
#include "Study/ExperimentStanding.h"
#include "Study/StudyGoal.h"

namespace controller {

/// Writes the report of a study to a file. Reads each unit once; memory for some of them.
void writeReport(StudyStore& store, const StudyGoal& goal, const std::string& path);

/// A table of the estimates for people, with the verdict of each experiment.
[[nodiscard]] std::string tableOfEstimates(const StudyIdentity& study,
                                           const std::vector<ExperimentStanding>& standings);

}  // namespace controller
