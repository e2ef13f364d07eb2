#include "workloads/WorkloadStudy.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <type_traits>
#include <utility>

#include "BaseClasses/OwnedText.h"
#include "Performance_Variables/PVModel.h"

namespace {

std::unique_ptr<BaseStudyClass>& theStudy() {
  static std::unique_ptr<BaseStudyClass> study;
  return study;
}

}  // namespace

WorkloadStudy::WorkloadStudy(std::vector<Parameter> parameters, RewardModelMaker makeRewardModel)
    : parameters_(std::move(parameters)), makeRewardModel_(std::move(makeRewardModel)) {
  NumExps = 1;
  NumGVs = static_cast<std::uint32_t>(parameters_.size());
  GVNames = new char*[parameters_.size()];
  GVTypes = new char*[parameters_.size()];
  for (std::size_t i = 0; i < parameters_.size(); ++i) {
    GVNames[i] = support::mallocCopyOfText(parameters_[i].name);
    GVTypes[i] = support::mallocCopyOfText(std::holds_alternative<Double*>(parameters_[i].variable) ? "double" : "int");
  }
}

WorkloadStudy::~WorkloadStudy() {
  delete ThePVModel;
}

PVModel* WorkloadStudy::GetPVModel(bool expandTimeArrays) {
  delete ThePVModel;
  ThePVModel = nullptr;
  ThePVModel = makeRewardModel_(expandTimeArrays).release();
  return ThePVModel;
}

void WorkloadStudy::SetGVs(int /*experiment*/) {
  for (const Parameter& parameter : parameters_) {
    if (Double* const* const real = std::get_if<Double*>(&parameter.variable)) {
      SetGvValue(**real, parameter.value);
    } else {
      SetGvValue(*std::get<Int*>(parameter.variable), static_cast<std::int32_t>(parameter.value));
    }
  }
}

void* WorkloadStudy::GetGVValue(const char* name) {
  const Parameter* const parameter = find(name);
  if (parameter == nullptr) {
    std::cerr << "there is no global variable " << name << '\n';
    return nullptr;
  }
  return std::visit([](auto* variable) -> void* { return variable; }, parameter->variable);
}

void WorkloadStudy::OverrideGVValue(const char* name, void* value) {
  const Parameter* const parameter = find(name);
  if (parameter == nullptr) {
    std::cerr << "there is no global variable " << name << '\n';
  } else if (Double* const* const real = std::get_if<Double*>(&parameter->variable)) {
    SetGvValue(**real, *static_cast<double*>(value));
  } else {
    SetGvValue(*std::get<Int*>(parameter->variable), *static_cast<std::int32_t*>(value));
  }
}

const WorkloadStudy::Parameter* WorkloadStudy::find(std::string_view name) const {
  const auto found = std::ranges::find(parameters_, name, &Parameter::name);
  return found == parameters_.end() ? nullptr : &*found;
}

BaseStudyClass* GenerateStudy() {
  if (theStudy() == nullptr) {
    theStudy() = makeWorkloadStudy();
  }
  return theStudy().get();
}

void DestructStudy() {
  theStudy().reset();
}
