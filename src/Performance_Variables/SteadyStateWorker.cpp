#include "Performance_Variables/SteadyStateWorker.h"

void SteadyStateWorker::Accumulate(double new_time, double last_event_time) {
  IntervalOfTimeWorker::Accumulate(new_time, last_event_time);
  RewardFraction = 1.0 / window_.batchLength(Start, Stop);
}

void SteadyStateWorker::Reset() {
  IntervalOfTimeWorker::Reset();
  window_.slide(Start, Stop);
}
