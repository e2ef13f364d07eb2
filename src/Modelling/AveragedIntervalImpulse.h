#pragma once

#include "Performance_Variables/IntervalOfTimeImpulse.h"

namespace modelling {

/// An interval's impulse for a unit of time: the sum over the window, divided by the window's length. It holds at every
/// moment, while IntervalOfTimeImpulse itself divides only if the window is closed by the end of the batch; there the
/// two agree to the last bit.
class AveragedIntervalImpulse : public IntervalOfTimeImpulse {
 public:
  explicit AveragedIntervalImpulse(bool /*isTimeAveraged*/) {}

  void Accumulate(double new_time, double last_event_time) override {
    Impulse = sum_;
    IntervalOfTimeImpulse::Accumulate(new_time, last_event_time);
    sum_ = Impulse;
    Impulse = sum_ / (Stop - Start);
  }

  void Reset() override {
    IntervalOfTimeImpulse::Reset();
    sum_ = 0.0;
  }

 private:
  double sum_ = 0.0;
};

}  // namespace modelling
