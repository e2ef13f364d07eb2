#pragma once

#include "Performance_Variables/PerformanceVariableNode.h"
#include "railway/Reward/reward/rewardPV0Impulse0.h"

class modelRJ;

/// The variable "numberOfTrains" at one of its time points: the number of firings of trainExits, in any train, from
/// time 0 to that point.
class rewardPV0 : public PerformanceVariableNode {
 public:
  /// `timeIndex` is the position of the time point, 0 to 10.
  explicit rewardPV0(int timeIndex);

  /// There is no rate reward, and so no worker.
  void CreateWorkerList() override;

  modelRJ* ThemodelRJ = nullptr;  // borrowed from the reward model, which stores it through TheModelPtr
  rewardPV0Impulse0 Impulse0;
};
