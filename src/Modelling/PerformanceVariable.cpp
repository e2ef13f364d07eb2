#include "Modelling/PerformanceVariable.h"

#include <algorithm>

#include "BaseClasses/List.h"
#include "Modelling/ModelFault.h"

namespace modelling {

std::vector<BaseModelClass*> PerformanceVariable::modelsNamed(BaseModelClass& topModel, const std::string& name) {
  List<BaseModelClass> found;
  topModel.listModels(name.c_str(), &found);
  return {found.getList(), found.getList() + found.getNumItems()};
}

void PerformanceVariable::setRate(const std::vector<std::string>& models, const std::vector<IsModel>& tests,
                                  MakeWorker makeWorker) {
  if (!rateModels_.empty()) {
    failModel("performance variable \"" + name_ + "\" has two rate rewards: put both into one function");
  }
  if (models.empty() || models.size() != tests.size()) {
    failModel("performance variable \"" + name_ + "\" names " + std::to_string(models.size()) +
              " models, and its rate function takes " + std::to_string(tests.size()));
  }
  for (std::size_t i = 0; i < models.size(); ++i) {
    if (std::ranges::any_of(rateModels_, [&](const RateModel& earlier) { return earlier.name == models[i]; })) {
      failModel("performance variable \"" + name_ + "\" names model \"" + models[i] +
                "\" twice: rateOfAll has all models of one name");
    }
    rateModels_.push_back({models[i], tests[i]});
  }
  makeWorker_ = std::move(makeWorker);
}

}  // namespace modelling
