#pragma once

#include "BaseClasses/BaseActionClass.h"
#include "Simulator/Event.h"

/// The tie of the event list: equal times and equal ranks. As in EventEarlier, Rank is asked only at equal times, of
/// `a` and then of `b`.
struct EventEqual {
  [[nodiscard]] bool operator()(const Event* a, const Event* b) const {
    if (a->exec_time == b->exec_time) {
      const int rankOfA = a->action_ptr->Rank();
      const int rankOfB = b->action_ptr->Rank();
      return rankOfA == rankOfB;
    }
    return false;
  }
};
