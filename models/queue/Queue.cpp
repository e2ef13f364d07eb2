#include "Modelling/Modelling.h"

// A queue with room for a limited number of customers, who arrive at random and are served one at a time: M/M/1/K.

namespace {

using namespace modelling;

Parameter<Double> arrivalRate{"arrivalRate"};  // customers per time unit
Parameter<Double> serviceRate{"serviceRate"};  // customers per time unit, while there is one to serve
Parameter<Short> capacity{"capacity"};         // customers that there is room for, the one in service included

class Queue : public AtomicModel {
 public:
  Variable<Place> q{*this, "q"};  // customers in the queue, from none

  Queue() : AtomicModel("queue") {
    activity("arrive")
        .enabledBy({q}, [this] { return q.Mark() < capacity; })
        .exponential(arrivalRate)
        .fires({q}, [this] { ++q.Mark(); });
    activity("serve").enabledBy({q}, [this] { return q.Mark() > 0; }).exponential(serviceRate).fires({q}, [this] {
      --q.Mark();
    });
  }
};

/// The customers at times 1, 5 and 10, and those served by time 10. The results number them 0, 1, 2 and 3.
void measure(RewardModel& rewards) {
  rewards.model<Queue>();
  rewards.instantOfTime("numberInQueue", {1.0, 5.0, 10.0}).rate("queue", [](Queue& queue) { return queue.q.Mark(); });
  rewards.intervalOfTime("numberServed", 0.0, 10.0).impulse("serve", "queue");
}

const StudyEntry study{
    "queue", Experiments(arrivalRate, serviceRate, capacity).row(0.8, 1.0, 10).row(0.9, 1.0, 20).row(1.0, 1.0, 5),
    measure};

}  // namespace
