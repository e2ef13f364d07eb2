#pragma once

#include "Performance_Variables/IntervalOfTimeImpulse.h"
#include "Performance_Variables/SlidingWindow.h"

/// Impulse reward of a STEADY_STATE variable: the sum of Impulse_Function over the firings of each batch, or, when it
/// is time-averaged, that sum for a unit of simulated time.
///
/// The window is that of its node, and moves on with it at each Reset. Its start belongs to it and its stop to the next
/// one: a firing counts once, in the batch of its time, though the step that closes a batch and the first step of the
/// next both carry it. The node's Type must be steady_state.
class SteadyStateImpulse : public IntervalOfTimeImpulse {
 public:
  SteadyStateImpulse() = default;
  explicit SteadyStateImpulse(bool IsTimeAveraged) : IntervalOfTimeImpulse(IsTimeAveraged) {}

  /// Nothing is left to do at the end of a batch: a time average is kept as such throughout.
  void completeAccumulation(double doneTime) override;
  /// Adds the firing at `last_event_time` if that lies in [Start, Stop).
  void Accumulate(double new_time, double last_event_time) override;
  /// Zeroes the sum and goes on to the window of the next batch.
  void Reset() override;

 private:
  support::SlidingWindow window_;
};
