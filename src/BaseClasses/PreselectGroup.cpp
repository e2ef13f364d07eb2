#include "BaseClasses/PreselectGroup.h"

namespace {

constexpr const char* kSourceName = "PreselectGroup";

}  // namespace

PreselectGroup::PreselectGroup() = default;

PreselectGroup::PreselectGroup(int NumMembers) {
  initialize(NumMembers, ActionName);
  NumActions = NumMembers;
}

bool PreselectGroup::SelectAction() {
  const bool selected = BaseGroupClass::SelectAction();
  NeedToReselect = !selected;
  return selected;
}

bool PreselectGroup::Enabled() {
  selectIfDue();
  return BaseGroupClass::Enabled();
}

bool PreselectGroup::ReactivationPredicate() {
  selectIfDue();
  support::require(SelectedAction != nullptr, kSourceName);
  return SelectedAction->ReactivationPredicate();
}

bool PreselectGroup::ReactivationFunction() {
  selectIfDue();
  support::require(SelectedAction != nullptr, kSourceName);
  return SelectedAction->ReactivationFunction();
}

double PreselectGroup::SampleDistribution() {
  selectIfDue();
  support::require(!NeedToReselect, kSourceName);
  support::require(SelectedAction != nullptr, kSourceName);
  return SelectedAction->SampleDistribution();
}

int PreselectGroup::Rank() {
  selectIfDue();
  support::require(SelectedAction != nullptr, kSourceName);
  return SelectedAction->Rank();
}

BaseActionClass* PreselectGroup::Fire() {
  support::require(SelectedAction != nullptr, kSourceName);
  NeedToReselect = true;
  return SelectedAction->Fire();
}
