#include "BaseClasses/BaseGroupClass.h"

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <iostream>
#include <string>

#include "BaseClasses/DebugLines.h"
#include "BaseClasses/StandardErrors.h"
#include "Simulator/UserDistributions.h"

namespace {

constexpr const char* kSourceName = "BaseGroupClass";
constexpr double kNoneEnabled = -1.0;  // total weight when no member is enabled

}  // namespace

BaseGroupClass::BaseGroupClass() = default;

BaseGroupClass::BaseGroupClass(const char* ActName, int GID, Distribution DistType, ExecutionPolicyType ExPolicy,
                               int ASV, int ESV, bool TheReactivation, int NumMembers) {
  replaceArrays(NumMembers, 0);
  BaseGroupClassInitialize(ActName, GID, DistType, ExPolicy, ASV, ESV, TheReactivation);
}

BaseGroupClass::~BaseGroupClass() {
  delete[] GroupArray;
  delete[] ActionWeights;
}

bool BaseGroupClass::Enabled() {
  bool anyEnabled = false;
  for (int i = 0; i < NumActions; ++i) {
    if (GroupArray[i]->Enabled()) {
      anyEnabled = true;
    }
  }
  return anyEnabled;
}

double BaseGroupClass::Weight() {
  return SelectedAction->Weight();
}

double BaseGroupClass::Rate() {
  return SelectedAction->Rate();
}

int BaseGroupClass::Rank() {
  return SelectedAction->Rank();
}

double BaseGroupClass::SampleDistribution() {
  return SelectedAction->SampleDistribution();
}

bool BaseGroupClass::EnablingChange() {
  bool anyChange = false;
  for (int i = 0; i < NumActions; ++i) {
    if (GroupArray[i]->EnablingChange()) {
      anyChange = true;
    }
  }
  return anyChange;
}

BaseActionClass* BaseGroupClass::Fire() {
  BaseActionClass* const fired = SelectedAction->Fire();
  SelectedAction = nullptr;
  return fired;
}

bool BaseGroupClass::ReactivationPredicate() {
  return false;
}

bool BaseGroupClass::ReactivationFunction() {
  return false;
}

bool BaseGroupClass::IsAMember(BaseActionClass* TheAction) {
  return std::find(GroupArray, GroupArray + NumActions, TheAction) != GroupArray + NumActions;
}

double BaseGroupClass::Probability(BaseActionClass* TheAction) {
  support::require(NumActions >= 1, kSourceName);
  double totalWeight = 0.0;
  int highestRank = 0;
  BaseGroupClass* holdingGroup = nullptr;
  for (int i = 0; i < NumActions; ++i) {
    BaseGroupClass* const member = GroupArray[i];
    if (member->Enabled()) {
      if (member->Rank() > highestRank) {
        highestRank = member->Rank();
        totalWeight = 0.0;
      }
      if (member->Rank() == highestRank) {
        totalWeight += member->Weight();
      }
    }
    if (member == TheAction || member->IsAMember(TheAction)) {
      holdingGroup = member;
    }
  }
  if (holdingGroup == nullptr || holdingGroup->Rank() < highestRank) {
    return 0.0;
  }
  if (totalWeight == 0.0) {
    std::cout << "BaseGroupClass::Probability() TotalWeight is zero.\n";
  }
  return holdingGroup->Weight() / totalWeight * holdingGroup->Probability(TheAction);
}

void BaseGroupClass::printEnablingState(std::ostream* strm) {
  getPrintedAction()->BaseActionClass::printEnablingState(strm);
}

BaseActionClass* BaseGroupClass::getPrintedAction() {
  if (NumActions == 0) {
    return this;
  }
  return GroupArray[0];
}

bool BaseGroupClass::SelectAction() {
  const double u = TheDistribution->RNG->rnd();
  const double totalWeight = CalculateWeightDistribution();
  const double rand_num = u * totalWeight;
  support::debugLine(2, "rand_num", " = ", rand_num);
  // A draw of exactly 0 makes the product a negative zero, which is not below 0: hence the second test.
  if (0.0 > rand_num || totalWeight == kNoneEnabled) {
    return false;
  }
  // First row whose weight is above rand_num; the last row if there is none.
  int min = 0;
  int max = NumSelectableActions - 1;
  while (min < max) {
    const int middle = (min + max) / 2;
    if (ActionWeights[middle].Weight > rand_num) {
      max = middle;
    } else {
      min = middle + 1;
    }
  }
  BaseGroupClass* const selectedGroup = ActionWeights[min].AssociatedAction;
  support::debugLine(3, "The selected action is a group");
  selectedGroup->SelectAction();
  SelectedAction = selectedGroup->SelectedAction;
  support::debugLine(2, "Selected Action", " = ", SelectedAction != nullptr ? SelectedAction->ActionName : "none");
  return true;
}

void BaseGroupClass::setGroupId(int TheNewID) {
  for (int i = 0; i < NumActions; ++i) {
    GroupArray[i]->setGroupId(TheNewID);
  }
}

void BaseGroupClass::BaseGroupClassInitialize(const char* ActName, int GID, Distribution DistType,
                                              ExecutionPolicyType ExPolicy, int ASV, int ESV, bool TheReactivation) {
  BaseActionClassInitialize(ActName, GID, DistType, ExPolicy, ASV, ESV, TheReactivation);
}

void BaseGroupClass::initialize(int NumMembers, const char* TheGroupName) {
  replaceArrays(NumMembers, 0);
  defineName(TheGroupName);
  SelectedAction = nullptr;
  HighestRank = 0;
  NumSelectableActions = 0;
}

void BaseGroupClass::appendGroup(BaseGroupClass* TheNewMember) {
  support::require(ArraySize >= NumActions, kSourceName);
  if (ArraySize == NumActions) {
    enlargeArrays(ArraySize + 1);
  }
  GroupArray[NumActions] = TheNewMember;
  ++NumActions;
}

void BaseGroupClass::appendMembers(BaseGroupClass* TheNewMember) {
  support::require(NumActions <= ArraySize, kSourceName);
  const int added = TheNewMember->getNumMembers();
  if (NumActions + added > ArraySize) {
    enlargeArrays(NumActions + added);
  }
  for (int i = 0; i < added; ++i) {
    GroupArray[NumActions] = TheNewMember->getMember(i);
    ++NumActions;
  }
}

void BaseGroupClass::setMember(BaseGroupClass* TheMemberGroup, int TheIndex) {
  if (TheIndex < 0 || TheIndex >= NumActions) {
    ArrayOutOfBoundsError("Array out of bounds (BaseGroupClass::setMember()");
    return;
  }
  GroupArray[TheIndex] = TheMemberGroup;
}

void BaseGroupClass::replaceMember(BaseActionClass* theOld, BaseActionClass* theNew) {
  if (SelectedAction == theOld) {
    SelectedAction = theNew;
  }
  for (int i = 0; i < NumActions; ++i) {
    if (GroupArray[i] == theOld) {
      GroupArray[i] = static_cast<BaseGroupClass*>(theNew);
    }
  }
}

double BaseGroupClass::CalculateWeightDistribution() {
  if (NumActions > 0 && GroupArray == nullptr) [[unlikely]] {
    support::failAssertion(kSourceName, __builtin_LINE());
  }
  int i = 0;
  while (i < NumActions && !GroupArray[i]->Enabled()) {
    GroupArray[i]->Disabled = true;
    ++i;
  }
  if (i == NumActions) {
    return kNoneEnabled;
  }
  support::debugLine(2, "First enabled action at", " = ", i);
  BaseGroupClass* const first = GroupArray[i];
  HighestRank = first->Rank();
  first->Disabled = false;
  ActionWeights[0] = {first->Weight(), first};

  int j = 0;
  for (++i; i < NumActions; ++i) {
    BaseGroupClass* const member = GroupArray[i];
    if (!member->Enabled() || member->Rank() < HighestRank) {
      member->Disabled = true;
    } else if (member->Rank() == HighestRank) {
      ++j;
      member->Disabled = false;
      ActionWeights[j] = {ActionWeights[j - 1].Weight + member->Weight(), member};
    } else {
      // On purpose: the members that drop out here keep their Disabled.
      HighestRank = member->Rank();
      ActionWeights[0] = {member->Weight(), member};
      member->Disabled = false;
      j = 0;
      support::debugLine(1, "Newest higest ranked group", " = ", member->ActionName);
    }
  }
  NumSelectableActions = j + 1;
  return ActionWeights[j].Weight;
}

void BaseGroupClass::Check() {
  support::require(NumActions != 0, kSourceName);
  support::require(GroupArray != nullptr, kSourceName);
  support::debugLine(1, "NumActions", " = ", NumActions);
  support::debugLine(1, "GroupArray ", " = ", static_cast<const void*>(GroupArray));
}

void BaseGroupClass::PrintInfo() {
  std::cout << "************ Group: " << ActionName << " ****************\n";
  std::cout << "Contains the following actions:\n";
  for (int i = 0; i < NumActions; ++i) {
    std::cout << "  " << GroupArray[i]->ActionName << '\n';
  }
  std::cout << "Selected Action = " << SelectedAction->ActionName << std::endl;
}

void BaseGroupClass::printGroup() {
  std::cout << "** Members of Group " << ActionName << '\n';
  printGroup("", 0);
  std::cout.flush();
}

void BaseGroupClass::printGroup(const char* ThePrefix, int IndentSpace) {
  for (int i = 0; i < NumActions; ++i) {
    BaseGroupClass* const member = GroupArray[i];
    std::cout << std::string(static_cast<std::size_t>(IndentSpace), ' ') << '[' << ThePrefix << i << "] "
              << member->ActionName << '\n';
    if (member->getNumMembers() > 1) {
      const std::string prefix = ThePrefix + std::to_string(i) + '.';
      member->printGroup(prefix.c_str(), IndentSpace + 2);
    }
  }
}

void BaseGroupClass::enlargeArrays(int TheNewSize) {
  support::require(ArraySize < TheNewSize, kSourceName);
  replaceArrays(TheNewSize, NumActions);
}

void BaseGroupClass::replaceArrays(int newSize, int membersToKeep) {
  const auto capacity = static_cast<std::size_t>(newSize);
  BaseGroupClass** const members = new BaseGroupClass*[capacity]();
  delete[] ActionWeights;
  ActionWeights = nullptr;  // stays null should the next allocation fail
  ActionWeights = new GroupWeight[capacity];
  std::copy_n(GroupArray, membersToKeep, members);
  delete[] GroupArray;
  GroupArray = members;
  ArraySize = newSize;
}
