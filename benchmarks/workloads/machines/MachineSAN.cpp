#include "workloads/machines/MachineSAN.h"

#include <array>

#include "Simulator/UserDistributions.h"

void MachineSAN::MachineActivity::LinkVariables() {
  up->Register(&up_Quorva_Mark);
  down->Register(&down_Quorva_Mark);
}

bool MachineSAN::FailActivity::Enabled() {
  OldEnabled = NewEnabled;
  NewEnabled = *up_Quorva_Mark > 0;
  return NewEnabled;
}

double MachineSAN::FailActivity::SampleDistribution() {
  return TheDistribution->Exponential(failureRate);
}

BaseActionClass* MachineSAN::FailActivity::Fire() {
  *up_Quorva_Mark = 0;
  ++*down_Quorva_Mark;
  return this;
}

bool MachineSAN::RepairActivity::Enabled() {
  OldEnabled = NewEnabled;
  NewEnabled = *up_Quorva_Mark == 0;
  return NewEnabled;
}

double MachineSAN::RepairActivity::SampleDistribution() {
  return TheDistribution->Exponential(repairRate);
}

BaseActionClass* MachineSAN::RepairActivity::Fire() {
  *up_Quorva_Mark = 1;
  --*down_Quorva_Mark;
  return this;
}

MachineSAN::MachineSAN() {
  std::array<BaseStateVariableClass*, 2> variables{&up, &down};
  std::array<Activity*, 2> activities{&fail, &repair};
  std::array<BaseGroupClass*, 2> groups{&fail, &repair};
  initializeSANModelNow("machine", 2, variables.data(), 0, nullptr, 2, activities.data(), 2, groups.data());
  for (MachineActivity* activity : {static_cast<MachineActivity*>(&fail), static_cast<MachineActivity*>(&repair)}) {
    AddAffectArc(&up, activity);
    AddAffectArc(&down, activity);
  }
  for (MachineActivity* activity : {static_cast<MachineActivity*>(&fail), static_cast<MachineActivity*>(&repair)}) {
    AddEnableArc(&up, activity);
    activity->up = &up;
    activity->down = &down;
    activity->LinkVariables();
  }
}
