#include "workloads/clocks/ClocksSAN.h"

#include "Simulator/UserDistributions.h"

bool ClocksSAN::TickActivity::Enabled() {
  OldEnabled = NewEnabled;
  NewEnabled = *ticked_Quorva_Mark >= 0;
  return NewEnabled;
}

double ClocksSAN::TickActivity::SampleDistribution() {
  return TheDistribution->Exponential(1.0);
}

BaseActionClass* ClocksSAN::TickActivity::Fire() {
  *ticked_Quorva_Mark ^= 1;
  return this;
}

ClocksSAN::ClocksSAN() {
  std::vector<BaseStateVariableClass*> variables;
  std::vector<Activity*> activities;
  std::vector<BaseGroupClass*> groups;
  for (int i = 0; i < clocks * (1 + sparePlaces); ++i) {
    ticked_.push_back(std::make_unique<Place>("ticked"));
    variables.push_back(ticked_.back().get());
  }
  for (int i = 0; i < clocks; ++i) {
    tick_.push_back(std::make_unique<TickActivity>(i, *ticked_[static_cast<std::size_t>(i)]));
    activities.push_back(tick_.back().get());
    groups.push_back(tick_.back().get());
  }
  initializeSANModelNow("clocks", static_cast<int>(variables.size()), variables.data(), 0, nullptr, clocks,
                        activities.data(), clocks, groups.data());
  for (std::size_t i = 0; i < activities.size(); ++i) {
    AddAffectArc(variables[i], activities[i]);
    AddEnableArc(variables[i], activities[i]);
    activities[i]->LinkVariables();
  }
}
