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

/// Owned from GenerateStudy to DestructStudy. Not by an object that the end of the process destroys: a run that ends in an
/// error leaves a simulator behind that still refers to the model.
BaseStudyClass* theStudy = nullptr;

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
    theStudy = studyMaker()().release();
  }
  return theStudy;
}

void DestructStudy() {
  delete modelling::theStudy;
  modelling::theStudy = nullptr;
}
