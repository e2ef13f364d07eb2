#include "Performance_Variables/TimeAveragedIntervalOfTimeWorker.h"

void TimeAveragedIntervalOfTimeWorker::Accumulate(double new_time, double last_event_time) {
  IntervalOfTimeWorker::Accumulate(new_time, last_event_time);
  if (Stop > Start) {  // else no step has a part in the window, and 0 times an infinite weight would be no number
    RewardFraction = 1.0 / (Stop - Start);
  }
}
