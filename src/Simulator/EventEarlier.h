#pragma once

#include "BaseClasses/BaseActionClass.h"
#include "Simulator/Event.h"

/// The order of the event list: the earlier time first, and at equal times the higher rank. A time that is not a number
/// is neither earlier nor later than any other.
///
/// Rank is asked only at equal times, of `a` and then of `b`, each once: a preselect group may draw a random number to
/// answer it, so that the calls themselves belong to a run's random stream.
struct EventEarlier {
  [[nodiscard]] bool operator()(const Event* a, const Event* b) const {
    if (a->exec_time < b->exec_time) {
      return true;
    }
    if (a->exec_time == b->exec_time) {
      const int rankOfA = a->action_ptr->Rank();
      const int rankOfB = b->action_ptr->Rank();
      return rankOfA > rankOfB;
    }
    return false;
  }
};
