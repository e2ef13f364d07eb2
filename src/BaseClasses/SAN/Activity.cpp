#include "BaseClasses/SAN/Activity.h"

Activity::Activity() {
  Disabled = true;
  Reactivation = false;
  SelectedAction = this;
}

Activity::Activity(const char* ActName, int GID, Distribution DistType, ExecutionPolicyType ExPolicy, int ASV, int ESV,
                   bool TheReactivation)
    : Activity() {
  ActivityInitialize(ActName, GID, DistType, ExPolicy, ASV, ESV, TheReactivation);
}

bool Activity::SelectAction() {
  return Enabled();
}

bool Activity::EnablingChange() {
  Enabled();
  return NewEnabled != OldEnabled;
}

double Activity::Probability(BaseActionClass* TheAction) {
  return TheAction == this ? 1.0 : 0.0;
}

void Activity::setGroupId(int TheNewID) {
  GroupID = TheNewID;
}

void Activity::ActivityInitialize(const char* ActName, int GID, Distribution DistType, ExecutionPolicyType ExPolicy,
                                  int ASV, int ESV, bool TheReactivation) {
  BaseGroupClassInitialize(ActName, GID, DistType, ExPolicy, ASV, ESV, TheReactivation);
}

bool Activity::IsAnAffectingStateVariable(BaseStateVariableClass* TheSV) {
  return AffectedStateVariables.contains(TheSV);
}
