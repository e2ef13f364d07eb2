#include "Performance_Variables/SteadyStateImpulse.h"

void SteadyStateImpulse::completeAccumulation(double /*doneTime*/) {}

void SteadyStateImpulse::Accumulate(double /*new_time*/, double last_event_time) {
  if (last_event_time < Start || last_event_time >= Stop) {
    return;
  }
  const double reward = Impulse_Function(last_event_time);
  Impulse += TimeAveraged ? reward / window_.batchLength(Start, Stop) : reward;
}

void SteadyStateImpulse::Reset() {
  IntervalOfTimeImpulse::Reset();
  window_.slide(Start, Stop);
}
