#include "LampSAN.h"

#include <array>

#include "Simulator/UserDistributions.h"

bool LampSAN::BurnOutActivity::Enabled() {
  OldEnabled = NewEnabled;
  NewEnabled = *alight_Quorva_Mark > 0;
  return NewEnabled;
}

double LampSAN::BurnOutActivity::SampleDistribution() {
  return TheDistribution->Exponential(Rate());
}

double* LampSAN::BurnOutActivity::ReturnDistributionParameters() {
  rateParameter_ = Rate();
  return &rateParameter_;
}

BaseActionClass* LampSAN::BurnOutActivity::Fire() {
  *alight_Quorva_Mark = 0;
  return this;
}

LampSAN::LampSAN() {
  std::array<BaseStateVariableClass*, 1> variables{&alight};
  std::array<Activity*, 1> activities{&burnOut};
  std::array<BaseGroupClass*, 1> groups{&burnOut};
  initializeSANModelNow("lamp", 1, variables.data(), 0, nullptr, 1, activities.data(), 1, groups.data());
  AddAffectArc(&alight, &burnOut);
  AddEnableArc(&alight, &burnOut);
  burnOut.alight = &alight;
  burnOut.LinkVariables();
}
