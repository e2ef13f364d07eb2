#pragma once

#include "Performance_Variables/RateRewardWorker.h"

/// Rate reward of an INSTANT_OF_TIME variable: the value of Reward_Function at time Stop.
///
/// The value is taken at every step whose time has reached Stop, and the node reads it from the step that closes the
/// window: the first one past Stop, or the end of the batch. The state in that step is the one that holds at Stop after
/// all firings at exactly Stop. No earlier step evaluates the function.
class InstantOfTimeWorker : public RateRewardWorker {
 public:
  explicit InstantOfTimeWorker(int numModels = 0) : RateRewardWorker(numModels) {}

  void Accumulate(double new_time, double last_event_time) override;
};
