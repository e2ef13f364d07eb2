#include "BaseClasses/PostselectGroup.h"

#include "BaseClasses/DebugLines.h"

PostselectGroup::PostselectGroup() = default;

PostselectGroup::PostselectGroup(int NumMembers) {
  initialize(NumMembers, ActionName);
  NumActions = NumMembers;
}

BaseActionClass* PostselectGroup::Fire() {
  SelectAction();
  support::debugLine(1, "Postselect group has selected", " = ", SelectedAction->ActionName);
  BaseActionClass* const fired = SelectedAction->Fire();
  SelectedAction = nullptr;
  return fired;
}

bool PostselectGroup::ReactivationPredicate() {
  return getMember(0)->ReactivationPredicate();
}

bool PostselectGroup::ReactivationFunction() {
  return getMember(0)->ReactivationFunction();
}

double PostselectGroup::SampleDistribution() {
  return getMember(0)->SampleDistribution();
}

int PostselectGroup::Rank() {
  return 1;
}

double PostselectGroup::Weight() {
  return 1.0;
}
