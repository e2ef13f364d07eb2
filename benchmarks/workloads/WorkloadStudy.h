#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <variant>
#include <vector>

#include "Study/BaseStudyClass.h"

/// The study of a workload: one experiment, whose values option -O may replace.
/// Owns     the reward model it has built last.
class WorkloadStudy : public BaseStudyClass {
 public:
  struct Parameter {
    const char* name;
    std::variant<Double*, Int*> variable;  // borrowed: a global variable
    double value;                          // of the experiment; an Int takes its whole part
  };
  using RewardModelMaker = std::function<std::unique_ptr<PVModel>(bool expandTimeArrays)>;

  WorkloadStudy(std::vector<Parameter> parameters, RewardModelMaker makeRewardModel);
  ~WorkloadStudy() override;

  PVModel* GetPVModel(bool expandTimeArrays) override;
  void SetGVs(int experiment) override;
  void* GetGVValue(const char* name) override;
  void OverrideGVValue(const char* name, void* value) override;

 private:
  /// The parameter of that name, or null.
  [[nodiscard]] const Parameter* find(std::string_view name) const;

  std::vector<Parameter> parameters_;
  RewardModelMaker makeRewardModel_;
};

/// The study that GenerateStudy gives the engine. Each workload defines it.
std::unique_ptr<BaseStudyClass> makeWorkloadStudy();
