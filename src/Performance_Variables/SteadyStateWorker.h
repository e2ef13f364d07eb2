#pragma once

#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/SlidingWindow.h"

/// Rate reward of a STEADY_STATE variable: the time average of Reward_Function over each batch.
///
/// The window is that of its node, and moves on with it at each Reset, so that every batch has its own average. The
/// node's Type must be steady_state.
class SteadyStateWorker : public IntervalOfTimeWorker {
 public:
  explicit SteadyStateWorker(int numModels = 0) : IntervalOfTimeWorker(numModels) {}

  void Accumulate(double new_time, double last_event_time) override;
  /// Zeroes the reward and goes on to the window of the next batch.
  void Reset() override;

 private:
  support::SlidingWindow window_;
};
