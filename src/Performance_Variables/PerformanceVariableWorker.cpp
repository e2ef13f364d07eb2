#include "Performance_Variables/PerformanceVariableWorker.h"

#include <iostream>

#include "BaseClasses/OwnedText.h"

PerformanceVariableWorker::~PerformanceVariableWorker() {
  if (listEntry_ != nullptr) {
    *listEntry_ = nullptr;
  }
  delete[] Name;
}

void PerformanceVariableWorker::CurrentReward() {
  std::cerr << "!! Calling PerformanceVariableWorker::CurrentReward()" << std::endl;
}

void PerformanceVariableWorker::Reset() {
  Reward = 0.0;
  RewardSqr = 0.0;
}

void PerformanceVariableWorker::DefineName(const char* TheName, int TheNumber) {
  support::replaceText(Name, TheName);
  Number = TheNumber;
}
