#pragma once

#include "BaseClasses/BaseGroupClass.h"

/// Leaf of the action tree: it has a firing delay, an enabling predicate and a firing function that changes the
/// marking. It is a group without members that has selected itself, for good.
///
/// A concrete activity overrides Enabled, Weight, Rate, ReactivationPredicate, ReactivationFunction,
/// SampleDistribution, ReturnDistributionParameters, Rank, Fire and LinkVariables: the inherited answers would ask the
/// activity itself again. Its Enabled first copies NewEnabled to OldEnabled, then computes the predicate into
/// NewEnabled and returns it.
class Activity : public BaseGroupClass {
 public:
  Activity();
  Activity(const char* ActName, int GID, Distribution DistType, ExecutionPolicyType ExPolicy, int ASV, int ESV,
           bool TheReactivation);

  /// Changes the marking and returns this activity.
  BaseActionClass* Fire() override = 0;

  /// The enabling of this activity; there is nothing to choose, and no number is drawn.
  bool SelectAction() override;

  /// Whether the marking now and the marking at the last call of Enabled, whoever made it, differ in the predicate.
  bool EnablingChange() override;

  /// 1.0 for this activity, 0.0 for any other action.
  double Probability(BaseActionClass* TheAction) override;

  /// Writes the activity's own number.
  void setGroupId(int TheNewID) override;

  /// Registers every cached mark pointer with its state variable, so that the pointers follow sharing.
  virtual void LinkVariables() = 0;

  /// Forwards to BaseGroupClassInitialize.
  void ActivityInitialize(const char* ActName, int GID, Distribution DistType, ExecutionPolicyType ExPolicy, int ASV,
                          int ESV, bool TheReactivation);

  /// Whether a firing may change the variable.
  bool IsAnAffectingStateVariable(BaseStateVariableClass* TheSV);

  bool NewEnabled = false;  // result of the latest Enabled
  bool OldEnabled = false;  // result of the one before

 protected:
  double* TheDistributionParameters = nullptr;  // the concrete activity's: it allocates, fills and frees the array
};
