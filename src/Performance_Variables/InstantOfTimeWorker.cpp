#include "Performance_Variables/InstantOfTimeWorker.h"

void InstantOfTimeWorker::Accumulate(double new_time, double /*last_event_time*/) {
  if (new_time >= Stop) {
    take(Reward_Function());
  }
}
