#include "workloads/cycle/CycleSAN.h"

#include <cstddef>
#include <string>

#include "Simulator/UserDistributions.h"

CycleSAN::ServeActivity::ServeActivity(const char* name, int groupId, Place& from, Place& to) : from_(from), to_(to) {
  ActivityInitialize(name, groupId, Exponential, RaceEnabled, 2, 1, false);
}

bool CycleSAN::ServeActivity::Enabled() {
  OldEnabled = NewEnabled;
  NewEnabled = *from_Quorva_Mark > 0;
  return NewEnabled;
}

double CycleSAN::ServeActivity::SampleDistribution() {
  return TheDistribution->Exponential(serviceRate);
}

BaseActionClass* CycleSAN::ServeActivity::Fire() {
  --*from_Quorva_Mark;
  ++*to_Quorva_Mark;
  return this;
}

void CycleSAN::ServeActivity::LinkVariables() {
  from_.Register(&from_Quorva_Mark);
  to_.Register(&to_Quorva_Mark);
}

CycleSAN::CycleSAN() {
  const auto count = static_cast<std::size_t>(stations);
  std::vector<BaseStateVariableClass*> variables;
  std::vector<Activity*> activities;
  std::vector<BaseGroupClass*> groups;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string name = "customers" + std::to_string(i);
    customers_.push_back(std::make_unique<Place>(name.c_str(), static_cast<short>(customersEach)));
    variables.push_back(customers_.back().get());
  }
  for (std::size_t i = 0; i < count; ++i) {
    const std::string name = "serve" + std::to_string(i);
    serve_.push_back(std::make_unique<ServeActivity>(name.c_str(), static_cast<int>(i), *customers_[i],
                                                     *customers_[(i + 1) % count]));
    activities.push_back(serve_.back().get());
    groups.push_back(serve_.back().get());
  }
  initializeSANModelNow("cycle", stations, variables.data(), 0, nullptr, stations, activities.data(), stations,
                        groups.data());
  for (std::size_t i = 0; i < count; ++i) {
    AddAffectArc(variables[i], activities[i]);
    AddAffectArc(variables[(i + 1) % count], activities[i]);
  }
  for (std::size_t i = 0; i < count; ++i) {
    AddEnableArc(variables[i], activities[i]);
    activities[i]->LinkVariables();
  }
}
