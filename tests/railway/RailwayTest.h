#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/List.h"
#include "BaseClasses/SAN/SANModel.h"
#include "BaseClasses/state/SharableSV.h"
#include "Study/BaseStudyClass.h"

namespace support {

/// Values by qualified name, of each single value of a marking.
using Marking = std::map<std::string, int>;

/// The single values behind a variable, in order.
inline std::vector<BaseStateVariableClass*> leavesOf(BaseStateVariableClass* variable) {
  List<BaseStateVariableClass>* const leaves = variable->getLeafNodes();
  const std::vector<BaseStateVariableClass*> result(leaves->getList(), leaves->getList() + leaves->getNumItems());
  delete leaves;
  return result;
}

inline int valueOf(BaseStateVariableClass* leaf) {
  if (auto* const narrow = dynamic_cast<SharableSV<short>*>(leaf)) {
    return narrow->getState();
  }
  auto* const wide = dynamic_cast<SharableSV<int>*>(leaf);
  return wide != nullptr ? wide->getState() : throw std::invalid_argument("a leaf that is neither short nor int");
}

inline std::vector<BaseStateVariableClass*> variablesOf(SANModel& model) {
  BaseStateVariableClass** const variables = model.GetLocalStateVariables(nullptr);
  return {variables, variables + model.getNumStateVariables()};
}

inline Marking markingOf(SANModel& model) {
  Marking marking;
  for (BaseStateVariableClass* variable : variablesOf(model)) {
    for (BaseStateVariableClass* leaf : leavesOf(variable)) {
      marking[leaf->getFullyQualifiedName()] = valueOf(leaf);
    }
  }
  return marking;
}

/// The values of `model` that `change` changed, as they are afterwards.
template <typename Change>
Marking changesOf(SANModel& model, Change&& change) {
  const Marking before = markingOf(model);
  change();
  Marking changes;
  for (const auto& [name, value] : markingOf(model)) {
    if (before.at(name) != value) {
      changes[name] = value;
    }
  }
  return changes;
}

/// Fires an activity, which must give itself back, and tells what that changed.
inline Marking firingOf(SANModel& model, BaseActionClass& activity) {
  return changesOf(model, [&] { EXPECT_EQ(activity.Fire(), &activity) << activity.ActionName; });
}

/// Qualified names of the single values in an action's list.
inline std::vector<std::string> affectedLeaves(BaseActionClass& action) {
  std::vector<std::string> names;
  for (int i = 0; i < action.getNumAffectedSVs(); ++i) {
    names.emplace_back(action.getAffectedSV(i)->getFullyQualifiedName());
  }
  return names;
}

inline std::vector<std::string> enablingLeaves(BaseActionClass& action) {
  std::vector<std::string> names;
  for (int i = 0; i < action.getNumEnablingSVs(); ++i) {
    names.emplace_back(action.getEnablingSV(i)->getFullyQualifiedName());
  }
  return names;
}

/// One row of an arc table: an action and its variables in order.
using ArcRow = std::pair<BaseActionClass*, std::vector<BaseStateVariableClass*>>;

/// Qualified names of the single values of a row's variables, in order.
inline std::vector<std::string> leafNames(const ArcRow& row) {
  std::vector<std::string> names;
  for (BaseStateVariableClass* variable : row.second) {
    for (BaseStateVariableClass* leaf : leavesOf(variable)) {
      names.emplace_back(leaf->getFullyQualifiedName());
    }
  }
  return names;
}

/// Tests of the railway's parts, with the experiment's values in the global variables.
class RailwayTest : public ::testing::Test {
 protected:
  RailwayTest() { GenerateStudy()->SetGVs(0); }
  ~RailwayTest() override {
    DestructStudy();
    BaseModelClass::LastActionTime = 0.0;
  }

  RailwayTest(const RailwayTest&) = delete;
  RailwayTest& operator=(const RailwayTest&) = delete;

  static void setParameters(const std::string& overrides) { GenerateStudy()->overrideGVs(overrides.c_str()); }
  static void setTrains(int count) { setParameters("s:nTrains:" + std::to_string(count)); }
};

}  // namespace support
