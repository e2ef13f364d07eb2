#pragma once

#include "Performance_Variables/PVModel.h"

/// Reward model of the railway: how many trains have left the line up to a given time.
/// Owns     the composed model and the nodes, through its base.
class rewardPVModel : public PVModel {
 public:
  /// Builds the composed model, and one node for each of the eleven time points when `expandTimeArrays`, otherwise one
  /// for the first alone. Requires: the global variables have their final values.
  explicit rewardPVModel(bool expandTimeArrays);

 protected:
  /// A new node of the one variable; null for any other `pvIndex`.
  PerformanceVariableNode* createPVNode(int pvIndex, int timeIndex) override;
};
