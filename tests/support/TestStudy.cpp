#include "support/TestStudy.h"

#include <gtest/gtest.h>

#include <utility>

#include "Performance_Variables/PVModel.h"

namespace {

support::StudyFactory& installedFactory() {
  static support::StudyFactory factory;
  return factory;
}

/// Not destroyed at the process's end: a process that ends in the middle of a run keeps its model, as with any model.
std::unique_ptr<BaseStudyClass>& theStudy() {
  static auto* const study = new std::unique_ptr<BaseStudyClass>;
  return *study;
}

}  // namespace

BaseStudyClass* GenerateStudy() {
  if (theStudy() == nullptr && installedFactory() != nullptr) {
    theStudy() = installedFactory()();
  }
  if (theStudy() == nullptr) {
    ADD_FAILURE() << "a test built a simulator without support::setStudyFactory";
  }
  return theStudy().get();
}

void DestructStudy() {
  theStudy().reset();
}

namespace support {

void setStudyFactory(StudyFactory factory) {
  DestructStudy();
  installedFactory() = std::move(factory);
}

TestStudy::TestStudy(ModelFactory factory, std::uint32_t numberOfExperiments) : factory_(std::move(factory)) {
  NumExps = numberOfExperiments;
}

TestStudy::~TestStudy() {
  delete ThePVModel;
}

PVModel* TestStudy::GetPVModel(bool expandTimeArrays) {
  delete ThePVModel;
  ThePVModel = nullptr;
  ThePVModel = factory_(expandTimeArrays).release();
  return ThePVModel;
}

void setModelFactory(TestStudy::ModelFactory factory) {
  setStudyFactory([factory = std::move(factory)] { return std::make_unique<TestStudy>(factory); });
}

}  // namespace support
