#pragma once

#include <string>

#include "Modelling/ExperimentTable.h"
#include "Modelling/RewardModel.h"

namespace modelling {

/// The study of a program, as an object at file scope:
///
///   const modelling::StudyEntry study{"queue", Experiments(arrivalRate, capacity).row(0.8, 10), measure};
///
/// With it come GenerateStudy and DestructStudy, through which the engine gets at the study. A program has one; a second
/// one is reported and ends the process with status 1.
class StudyEntry {
 public:
  StudyEntry(std::string name, ExperimentTable experiments, RewardModel::Describe describe);
};

}  // namespace modelling
