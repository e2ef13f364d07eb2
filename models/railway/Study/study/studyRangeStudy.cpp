#include "railway/Study/study/studyRangeStudy.h"

#include <cstddef>
#include <cstring>
#include <iostream>
#include <type_traits>

#include "BaseClasses/OwnedText.h"
#include "Performance_Variables/PVModel.h"
#include "railway/Reward/reward/rewardPVModel.h"
#include "railway/Study/study/GlobalVariables.h"

namespace {

constexpr std::uint32_t kNumVariables = 12;
constexpr std::uint32_t kNumExperiments = 1;

/// The text of a variable's type, from the type of its values.
template <typename T>
constexpr const char* typeText() {
  if constexpr (std::is_same_v<T, double>) {
    return "double";
  } else if constexpr (std::is_same_v<T, std::int32_t>) {
    return "int";
  } else {
    static_assert(std::is_same_v<T, std::int16_t>);
    return "short";
  }
}

void reportUnknownName(const char* operation, const char* name) {
  std::cerr << "!! studyRangeStudy::" << operation << ": Global Variable " << name << " does not exist." << std::endl;
}

}  // namespace

BaseStudyClass* GlobalStudyPtr = nullptr;

template <typename Visitor>
void studyRangeStudy::forEachGV(Visitor visit) {
  visit("MAnetDelay", MAnetDelay, MAnetDelayValues, &studyRangeStudy::SetValues_MAnetDelay);
  visit("RBCprocessingTime", RBCprocessingTime, RBCprocessingTimeValues, &studyRangeStudy::SetValues_RBCprocessingTime);
  visit("TPRUpdatePeriod", TPRUpdatePeriod, TPRUpdatePeriodValues, &studyRangeStudy::SetValues_TPRUpdatePeriod);
  visit("TPRnetDelay", TPRnetDelay, TPRnetDelayValues, &studyRangeStudy::SetValues_TPRnetDelay);
  visit("integrityNotConfirmedProb", integrityNotConfirmedProb, integrityNotConfirmedProbValues,
        &studyRangeStudy::SetValues_integrityNotConfirmedProb);
  visit("lineLength", lineLength, lineLengthValues, &studyRangeStudy::SetValues_lineLength);
  visit("maxTrainSpeed", maxTrainSpeed, maxTrainSpeedValues, &studyRangeStudy::SetValues_maxTrainSpeed);
  visit("nTrains", nTrains, nTrainsValues, &studyRangeStudy::SetValues_nTrains);
  visit("netNotDeliveryProb", netNotDeliveryProb, netNotDeliveryProbValues,
        &studyRangeStudy::SetValues_netNotDeliveryProb);
  visit("positionUpdatePeriod", positionUpdatePeriod, positionUpdatePeriodValues,
        &studyRangeStudy::SetValues_positionUpdatePeriod);
  visit("safetyMargin", safetyMargin, safetyMarginValues, &studyRangeStudy::SetValues_safetyMargin);
  visit("trainLength", trainLength, trainLengthValues, &studyRangeStudy::SetValues_trainLength);
}

studyRangeStudy::studyRangeStudy() {
  NumGVs = kNumVariables;
  NumExps = kNumExperiments;
  GVNames = new char* [NumGVs] {};
  GVTypes = new char* [NumGVs] {};
  std::uint32_t index = 0;
  forEachGV([&](const char* name, auto& /*variable*/, auto*& values, auto /*setValues*/) {
    using Value = std::remove_reference_t<decltype(*values)>;
    GVNames[index] = support::mallocCopyOfText(name);
    GVTypes[index] = support::mallocCopyOfText(typeText<Value>());
    values = new Value[NumExps]{};
    ++index;
  });
  forEachGV(
      [this](const char* /*name*/, auto& /*variable*/, auto* /*values*/, auto setValues) { (this->*setValues)(); });
}

studyRangeStudy::~studyRangeStudy() {
  forEachGV([](const char* /*name*/, auto& /*variable*/, auto*& values, auto /*setValues*/) { delete[] values; });
  delete ThePVModel;
}

PVModel* studyRangeStudy::GetPVModel(bool expandTimeArrays) {
  delete ThePVModel;
  ThePVModel = nullptr;
  ThePVModel = new rewardPVModel(expandTimeArrays);
  return ThePVModel;
}

void studyRangeStudy::SetGVs(int experiment) {
  const std::uint32_t index = experimentIndex(experiment);
  forEachGV([this, index](const char* /*name*/, auto& variable, const auto* values, auto /*setValues*/) {
    SetGvValue(variable, values[index]);
  });
}

void studyRangeStudy::PrintGlobalValues(int experiment) {
  if (NumGVs == 0) {
    std::cout << "There are no global variables." << std::endl;
    return;
  }
  SetGVs(experiment);
  std::cout << "The Global Variable values for experiment " << GetExpName(experiment) << " are:" << std::endl;
  forEachGV([](const char* name, const auto& variable, const auto* values, auto /*setValues*/) {
    using Value = std::remove_cvref_t<decltype(*values)>;
    std::cout << name << '\t' << typeText<Value>() << '\t' << static_cast<Value>(variable) << std::endl;
  });
}

void* studyRangeStudy::GetGVValue(const char* name) {
  void* address = nullptr;
  forEachGV([&](const char* candidate, auto& variable, const auto* /*values*/, auto /*setValues*/) {
    if (std::strcmp(candidate, name) == 0) {
      address = &variable;
    }
  });
  if (address == nullptr) {
    reportUnknownName("GetGVValue", name);
  }
  return address;
}

void studyRangeStudy::OverrideGVValue(const char* name, void* value) {
  bool found = false;
  forEachGV([&](const char* candidate, auto& variable, const auto* values, auto /*setValues*/) {
    if (std::strcmp(candidate, name) == 0) {
      std::remove_cvref_t<decltype(*values)> newValue{};
      std::memcpy(&newValue, value, sizeof newValue);
      SetGvValue(variable, newValue);
      found = true;
    }
  });
  if (!found) {
    reportUnknownName("OverrideGVValue", name);
  }
}

std::uint32_t studyRangeStudy::experimentIndex(int experiment) const {
  const auto index = static_cast<std::uint32_t>(experiment);
  if (index < NumExps) {
    return index;
  }
  std::cerr << "!! studyRangeStudy::SetGVs: experiment number " << experiment << " does not exist, the last of the "
            << NumExps << " is number " << NumExps - 1 << " and stands in for it." << std::endl;
  return NumExps - 1;
}

void studyRangeStudy::SetValues_MAnetDelay() {
  MAnetDelayValues[0] = 0.5;
}

void studyRangeStudy::SetValues_RBCprocessingTime() {
  RBCprocessingTimeValues[0] = 1.0;
}

void studyRangeStudy::SetValues_TPRUpdatePeriod() {
  TPRUpdatePeriodValues[0] = 5.0;
}

void studyRangeStudy::SetValues_TPRnetDelay() {
  TPRnetDelayValues[0] = 0.5;
}

void studyRangeStudy::SetValues_integrityNotConfirmedProb() {
  integrityNotConfirmedProbValues[0] = 0.0;
}

void studyRangeStudy::SetValues_lineLength() {
  lineLengthValues[0] = 8000;
}

void studyRangeStudy::SetValues_maxTrainSpeed() {
  maxTrainSpeedValues[0] = 80;
}

void studyRangeStudy::SetValues_nTrains() {
  nTrainsValues[0] = 1;
}

void studyRangeStudy::SetValues_netNotDeliveryProb() {
  netNotDeliveryProbValues[0] = 0.0;
}

void studyRangeStudy::SetValues_positionUpdatePeriod() {
  positionUpdatePeriodValues[0] = 1.0;
}

void studyRangeStudy::SetValues_safetyMargin() {
  safetyMarginValues[0] = 0;
}

void studyRangeStudy::SetValues_trainLength() {
  trainLengthValues[0] = 300;
}

BaseStudyClass* GenerateStudy() {
  if (GlobalStudyPtr == nullptr) {
    GlobalStudyPtr = new studyRangeStudy;
  }
  return GlobalStudyPtr;
}

void DestructStudy() {
  delete GlobalStudyPtr;
  GlobalStudyPtr = nullptr;
}
