#include "queue/QueueSAN.h"

#include <array>

#include "Simulator/UserDistributions.h"
#include "queue/QueueParameters.h"

// The last three arguments: each activity changes one variable and reads one, and is not to be sampled anew while it
// stays enabled.
QueueSAN::QueueActivity::QueueActivity(const char* name, int groupId) {
  ActivityInitialize(name, groupId, Exponential, RaceEnabled, 1, 1, false);
}

double QueueSAN::QueueActivity::SampleDistribution() {
  return TheDistribution->Exponential(Rate());
}

double* QueueSAN::QueueActivity::ReturnDistributionParameters() {
  rateParameter_ = Rate();
  return &rateParameter_;
}

bool QueueSAN::QueueActivity::shiftEnabled(bool holds) {
  OldEnabled = NewEnabled;
  NewEnabled = holds;
  return NewEnabled;
}

bool QueueSAN::ArriveActivity::Enabled() {
  return shiftEnabled(*q_Quorva_Mark < capacity);
}

double QueueSAN::ArriveActivity::Rate() {
  return arrivalRate;
}

BaseActionClass* QueueSAN::ArriveActivity::Fire() {
  ++*q_Quorva_Mark;
  return this;
}

bool QueueSAN::ServeActivity::Enabled() {
  return shiftEnabled(*q_Quorva_Mark > 0);
}

double QueueSAN::ServeActivity::Rate() {
  return serviceRate;
}

BaseActionClass* QueueSAN::ServeActivity::Fire() {
  --*q_Quorva_Mark;
  return this;
}

QueueSAN::QueueSAN() {
  // 1. Name the model and hand over its variables, activities and groups. Each activity is a group of itself, and its
  //    group number is its position in the list of groups.
  std::array<BaseStateVariableClass*, 1> variables{&q};
  std::array<Activity*, 2> activities{&arrive, &serve};
  std::array<BaseGroupClass*, 2> groups{&arrive, &serve};
  initializeSANModelNow("queue", 1, variables.data(), 0, nullptr, 2, activities.data(), 2, groups.data());

  // 2. Draw the arcs: what a firing changes, then what enabling depends on. A firing that an arc does not tell is not
  //    noticed by the activities that it should wake.
  AddAffectArc(&q, &arrive);
  AddAffectArc(&q, &serve);
  AddEnableArc(&q, &arrive);
  AddEnableArc(&q, &serve);

  // 3. Give the activities their places and link the cached pointers.
  for (QueueActivity* activity : {static_cast<QueueActivity*>(&arrive), static_cast<QueueActivity*>(&serve)}) {
    activity->q = &q;
    activity->LinkVariables();
  }
}
