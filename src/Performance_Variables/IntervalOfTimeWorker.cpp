#include "Performance_Variables/IntervalOfTimeWorker.h"

#include <algorithm>

void IntervalOfTimeWorker::Accumulate(double new_time, double last_event_time) {
  const double overlap = std::min(new_time, Stop) - std::max(last_event_time, Start);
  take(overlap > 0.0 ? Reward_Function() * overlap : 0.0);
}
