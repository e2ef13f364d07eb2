#pragma once

#include "Performance_Variables/IntervalOfTimeWorker.h"

/// Rate reward of a TIMEAVE_INTERVAL_OF_TIME variable: the integral of Reward_Function over the window [Start, Stop],
/// divided by the window's length through RewardFraction. A window without length contributes 0.
class TimeAveragedIntervalOfTimeWorker : public IntervalOfTimeWorker {
 public:
  explicit TimeAveragedIntervalOfTimeWorker(int numModels = 0) : IntervalOfTimeWorker(numModels) {}

  void Accumulate(double new_time, double last_event_time) override;
};
