#include "Modelling/Modelling.h"

// A queue with room for a limited number of customers, from empty and in the long run: M/M/1/K.

namespace {

using namespace modelling;

Parameter<Double> arrivalRate{"arrivalRate"};  // customers per time unit
Parameter<Double> serviceRate{"serviceRate"};  // customers per time unit, while there is one to serve
Parameter<Short> capacity{"capacity"};         // customers that there is room for, the one in service included
Parameter<Double> batchLength{"batchLength"};  // of a steady-state run; a tenth of it is thrown away first

class Queue : public AtomicModel {
 public:
  Variable<Place> q{*this, "q"};  // customers in the queue

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

/// In the results: 0 to 3 belong to terminating runs, 4 to 7 to steady-state runs.
void measure(RewardModel& rewards) {
  rewards.model<Queue>();

  const auto number = [](Queue& queue) { return queue.q.Mark(); };
  rewards.instantOfTime("number", 10.0).rate("queue", number);
  rewards.instantOfTime("empty", 10.0).rate("queue", [](Queue& queue) { return queue.q.Mark() == 0; });
  rewards.timeAveraged("number", 0.0, 10.0).rate("queue", number);
  rewards.intervalOfTime("served", 0.0, 10.0).impulse("serve", "queue");

  const double transient = batchLength / 10.0;
  rewards.steadyState("number", transient, batchLength).rate("queue", number);
  rewards.steadyState("full", transient, batchLength).rate("queue", [](Queue& queue) {
    return queue.q.Mark() == capacity;
  });
  // The throughput in both its forms: the services counted, and their rate while there is somebody to serve.
  rewards.steadyState("served", transient, batchLength).impulse("serve", "queue");
  rewards.steadyState("serving", transient, batchLength).rate("queue", [](Queue& queue) {
    return queue.q.Mark() > 0 ? static_cast<double>(serviceRate) : 0.0;
  });
}

const StudyEntry study{"mm1k",
                       Experiments(arrivalRate, serviceRate, capacity, batchLength)
                           .row(0.8, 1.0, 10, 8000.0)
                           .row(0.9, 1.0, 20, 26000.0)
                           .row(1.0, 1.0, 5, 800.0),
                       measure};

}  // namespace
