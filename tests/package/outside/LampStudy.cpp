#include <array>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "LampSAN.h"
#include "Performance_Variables/InstantOfTimeWorker.h"
#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/PerformanceVariableNode.h"
#include "Study/BaseStudyClass.h"

Double failureRate;

namespace {

class AlightWorker : public InstantOfTimeWorker {
 public:
  AlightWorker() : InstantOfTimeWorker(1) {}
  double Reward_Function() override { return modelAt<LampSAN>(0)->alight.Mark(); }
};

/// Variable 0: whether the lamp is alight at time 1.
class Alight : public PerformanceVariableNode {
 public:
  explicit Alight(int timeIndex) {
    constexpr std::array<double, 1> kTime{1.0};
    Initialize("alight", INSTANT_OF_TIME, 1, kTime.data(), kTime.data(), timeIndex, 0, 1, 1);
    AddModelDependency("lamp");
    AddVariableDependency("alight", "lamp");
  }
  void CreateWorkerList() override { fillWorkerList<AlightWorker>(); }
};

class LightWorker : public IntervalOfTimeWorker {
 public:
  LightWorker() : IntervalOfTimeWorker(1) {}
  double Reward_Function() override { return modelAt<LampSAN>(0)->alight.Mark(); }
};

/// Variable 1: for how long the lamp is alight up to time 2.
class Light : public PerformanceVariableNode {
 public:
  explicit Light(int timeIndex) {
    constexpr std::array<double, 1> kStart{0.0};
    constexpr std::array<double, 1> kStop{2.0};
    Initialize("light", INTERVAL_OF_TIME, 1, kStart.data(), kStop.data(), timeIndex, 0, 1, 1);
    AddModelDependency("lamp");
    AddVariableDependency("alight", "lamp");
  }
  void CreateWorkerList() override { fillWorkerList<LightWorker>(); }
};

class LampRewards : public PVModel {
 public:
  explicit LampRewards(bool expandTimeArrays) {
    TheModel = new LampSAN;
    DefineName("LampRewards");
    StateMode = 1;
    CreatePVList(2, expandTimeArrays);
    Initialize();
  }
  PerformanceVariableNode* createPVNode(int pvIndex, int timeIndex) override {
    if (pvIndex == 0) {
      return new Alight(timeIndex);
    }
    return new Light(timeIndex);
  }
};

/// A copy that the base class will release with free.
char* mallocCopy(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  auto* copy = static_cast<char*>(std::malloc(size));
  return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}

class LampStudy : public BaseStudyClass {
 public:
  LampStudy() {
    NumGVs = 1;
    NumExps = 1;
    GVNames = new char* [1] { mallocCopy("failureRate") };
    GVTypes = new char* [1] { mallocCopy("double") };
  }
  LampStudy(const LampStudy&) = delete;
  LampStudy& operator=(const LampStudy&) = delete;
  ~LampStudy() override { delete ThePVModel; }

  PVModel* GetPVModel(bool expandTimeArrays) override {
    delete ThePVModel;
    ThePVModel = nullptr;
    ThePVModel = new LampRewards(expandTimeArrays);
    return ThePVModel;
  }
  void SetGVs(int /*experiment*/) override { SetGvValue(failureRate, 1.0); }
  void* GetGVValue(const char* name) override {
    if (std::strcmp(name, "failureRate") == 0) {
      return &failureRate;
    }
    std::cerr << "lamp: there is no global variable " << name << '\n';
    return nullptr;
  }
  void OverrideGVValue(const char* name, void* value) override {
    if (GetGVValue(name) != nullptr) {
      SetGvValue(failureRate, *static_cast<double*>(value));
    }
  }
};

BaseStudyClass* theStudy = nullptr;  // owned

}  // namespace

BaseStudyClass* GenerateStudy() {
  if (theStudy == nullptr) {
    theStudy = new LampStudy;
  }
  return theStudy;
}

void DestructStudy() {
  delete theStudy;
  theStudy = nullptr;
}
