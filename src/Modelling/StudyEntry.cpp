#include "Modelling/StudyEntry.h"

#include <functional>
#include <memory>
#include <utility>

#include "Modelling/ModelFault.h"
#include "Modelling/Study.h"

namespace modelling {
namespace {

/// Makes the program's study. Inside a function, as objects at file scope are made in no certain order.
std::function<std::unique_ptr<BaseStudyClass>()>& studyMaker() {
  static std::function<std::unique_ptr<BaseStudyClass>()> maker;
  return maker;
}

std::unique_ptr<BaseStudyClass> theStudy;

}  // namespace

StudyEntry::StudyEntry(std::string name, ExperimentTable experiments, RewardModel::Describe describe) {
  if (studyMaker()) {
    failModel("the program has two studies; the second is " + name);
  }
  studyMaker() = [name = std::move(name), experiments = std::move(experiments), describe = std::move(describe)] {
    return std::make_unique<Study>(name, experiments, describe);
  };
}

}  // namespace modelling

BaseStudyClass* GenerateStudy() {
  using namespace modelling;
  if (theStudy == nullptr) {
    theStudy = studyMaker()();
  }
  return theStudy.get();
}

void DestructStudy() {
  modelling::theStudy.reset();
}
