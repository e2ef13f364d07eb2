#pragma once

#include "Performance_Variables/ImpulseNodeClass.h"
#include "Performance_Variables/RewardTypes.h"

/// Sum of Impulse_Function over the firings in the window [Start, Stop], both ends included; divided by the part of the
/// window that the batch covered when it is time-averaged.
/// Units    reward of the function, or reward per unit of simulated time when averaged.
///
/// On purpose: only the end of a batch divides the sum. A node whose window closed earlier keeps the plain sum.
class IntervalOfTimeImpulse : public ImpulseNodeClass {
 public:
  IntervalOfTimeImpulse() = default;
  explicit IntervalOfTimeImpulse(bool IsTimeAveraged) : TimeAveraged(IsTimeAveraged) {}

  /// Divides a time-averaged sum by min(doneTime, Stop) - Start; a window without length divides by zero.
  void completeAccumulation(double doneTime) override;
  /// Adds Impulse_Function(last_event_time) when that time lies in the window. `new_time` plays no part in it.
  void Accumulate(double new_time, double last_event_time) override;
  /// Puts Impulse_Function(0.0) in place of the sum.
  void CurrentImpulse() override;
  /// Zeroes the sum; ImpulseSqr stays as it is.
  void Reset() override;

  AccumulationState Accumulating = acc_later;  // for derived classes: nothing here changes it
  bool TimeAveraged = false;
};
