#pragma once

#include <algorithm>

#include "Performance_Variables/RateRewardWorker.h"

/// Rate reward of an INTERVAL_OF_TIME variable: the integral of Reward_Function over the window [Start, Stop].
///
/// The contribution of a step is the rate of its constant state times the part of the step that lies in the window. A
/// step without such a part contributes 0 and does not evaluate the function.
class IntervalOfTimeWorker : public RateRewardWorker {
 public:
  explicit IntervalOfTimeWorker(int numModels = 0) : RateRewardWorker(numModels) {}

  void Accumulate(double new_time, double last_event_time) override {
    const double overlap = std::min(new_time, Stop) - std::max(last_event_time, Start);
    take(overlap > 0.0 ? Reward_Function() * overlap : 0.0);
  }
};
