#pragma once

#include <memory>
#include <string>

#include "Modelling/ExperimentTable.h"
#include "Modelling/RewardModel.h"
#include "Study/BaseStudyClass.h"

namespace modelling {

/// A study made of a table of experiments and a description of what is simulated and measured. StudyEntry gives it to
/// the engine.
/// Faults  a table that has variables and no row is reported and ends the process with status 1. A table without
///         variables and rows is one experiment.
class Study : public BaseStudyClass {
 public:
  /// `name` stands in front of what the study reports, and names the reward model.
  Study(std::string name, ExperimentTable experiments, RewardModel::Describe describe);
  ~Study() override;

  Study(const Study&) = delete;
  Study& operator=(const Study&) = delete;

  /// Builds a new reward model and with it a new model; an earlier one is deleted first.
  PVModel* GetPVModel(bool expandTimeArrays) override;
  void SetGVs(int experiment) override;
  /// Writes the experiment's values into the variables and prints them, a line for each: name, type and value with tabs
  /// between.
  void PrintGlobalValues(int experiment) override;
  /// A name that does not exist is reported on standard error, and the run goes on.
  void* GetGVValue(const char* name) override;
  void OverrideGVValue(const char* name, void* value) override;

 private:
  /// Null, behind a message, if there is no variable of that name.
  GlobalVariable* find(const char* name) const;

  std::string name_;
  ExperimentTable experiments_;
  RewardModel::Describe describe_;
};

}  // namespace modelling
