#include "Modelling/Study.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "BaseClasses/OwnedText.h"
#include "Modelling/ModelFault.h"

namespace modelling {

Study::Study(std::string name, ExperimentTable experiments, RewardModel::Describe describe)
    : name_(std::move(name)), experiments_(std::move(experiments)), describe_(std::move(describe)) {
  const auto& variables = experiments_.variables();
  NumGVs = static_cast<std::uint32_t>(variables.size());
  NumExps = std::max<std::uint32_t>(static_cast<std::uint32_t>(experiments_.rows().size()), NumGVs == 0 ? 1 : 0);
  if (NumExps == 0) {
    failModel(name_ + ": the study has no experiment");
  }
  GVNames = new char*[variables.size()];
  GVTypes = new char*[variables.size()];
  for (std::size_t i = 0; i < variables.size(); ++i) {
    GVNames[i] = support::mallocCopyOfText(variables[i]->name().c_str());
    GVTypes[i] = support::mallocCopyOfText(variables[i]->typeName());
  }
}

Study::~Study() {
  delete ThePVModel;
}

PVModel* Study::GetPVModel(bool expandTimeArrays) {
  delete ThePVModel;
  ThePVModel = nullptr;
  ThePVModel = new RewardModel(name_, describe_, expandTimeArrays);
  return ThePVModel;
}

void Study::SetGVs(int experiment) {
  const auto& variables = experiments_.variables();
  for (std::size_t i = 0; i < variables.size(); ++i) {
    variables[i]->assign(experiments_.rows().at(static_cast<std::size_t>(experiment))[i].value());
  }
}

void Study::PrintGlobalValues(int experiment) {
  if (experiments_.variables().empty()) {
    std::cout << "There are no global variables.\n";
    return;
  }
  SetGVs(experiment);
  std::cout << "The Global Variable values for experiment " << GetExpName(experiment) << " are:\n";
  for (const GlobalVariable* const variable : experiments_.variables()) {
    std::cout << variable->name() << '\t' << variable->typeName() << '\t';
    variable->print(std::cout);
    std::cout << '\n';
  }
}

GlobalVariable* Study::find(const char* name) const {
  const auto& variables = experiments_.variables();
  const auto found = std::ranges::find_if(variables, [name](const auto* one) { return one->name() == name; });
  if (found == variables.end()) {
    std::cerr << name_ << ": there is no global variable " << name << '\n';
    return nullptr;
  }
  return *found;
}

void* Study::GetGVValue(const char* name) {
  GlobalVariable* const variable = find(name);
  return variable == nullptr ? nullptr : variable->address();
}

void Study::OverrideGVValue(const char* name, void* value) {
  if (GlobalVariable* const variable = find(name); variable != nullptr) {
    variable->assign(value);
  }
}

}  // namespace modelling
