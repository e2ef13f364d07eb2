#include "workloads/queue/QueueSAN.h"

#include <array>

#include "Simulator/UserDistributions.h"

bool QueueSAN::ArriveActivity::Enabled() {
  OldEnabled = NewEnabled;
  NewEnabled = *q_Quorva_Mark < capacity;
  return NewEnabled;
}

double QueueSAN::ArriveActivity::SampleDistribution() {
  return TheDistribution->Exponential(arrivalRate);
}

BaseActionClass* QueueSAN::ArriveActivity::Fire() {
  ++*q_Quorva_Mark;
  return this;
}

bool QueueSAN::ServeActivity::Enabled() {
  OldEnabled = NewEnabled;
  NewEnabled = *q_Quorva_Mark > 0;
  return NewEnabled;
}

double QueueSAN::ServeActivity::SampleDistribution() {
  return TheDistribution->Exponential(serviceRate);
}

BaseActionClass* QueueSAN::ServeActivity::Fire() {
  --*q_Quorva_Mark;
  return this;
}

QueueSAN::QueueSAN() {
  std::array<BaseStateVariableClass*, 1> variables{&q};
  std::array<Activity*, 2> activities{&arrive, &serve};
  std::array<BaseGroupClass*, 2> groups{&arrive, &serve};
  initializeSANModelNow("queue", 1, variables.data(), 0, nullptr, 2, activities.data(), 2, groups.data());
  AddAffectArc(&q, &arrive);
  AddAffectArc(&q, &serve);
  AddEnableArc(&q, &arrive);
  AddEnableArc(&q, &serve);
  for (QueueActivity* activity : {static_cast<QueueActivity*>(&arrive), static_cast<QueueActivity*>(&serve)}) {
    activity->q = &q;
    activity->LinkVariables();
  }
}
