#include "Modelling/Modelling.h"

// Two queues one behind the other, each with room for a limited number of customers; the second one, when it is full,
// blocks the first.

namespace {

using namespace modelling;

Parameter<Short> capacity{"capacity"};           // customers that each queue has room for
Parameter<Double> arrivalRate{"arrivalRate"};    // customers per time unit, while the first queue has room
Parameter<Double> phaseRate{"phaseRate"};        // phases of the first service per time unit
Parameter<Double> secondChance{"secondChance"};  // probability that a first service has a second phase
Parameter<Double> serviceRate{"serviceRate"};    // second services per time unit
Parameter<Short> stopWhen{"stopWhen"};           // 0: never, 1: first queue full, 2: all full, in the second phase
Parameter<Double> observedTime{"observedTime"};  // of a terminating run

class Tandem : public AtomicModel {
 public:
  Variable<Place> first{*this, "first"};    // customers in the first queue
  Variable<Place> phase{*this, "phase"};    // 1 while the first server is in its second phase
  Variable<Place> second{*this, "second"};  // customers in the second queue
  Variable<Place> hit{*this, "hit"};        // 1 once what stopWhen names has been seen; nothing happens from then on

  Tandem() : AtomicModel("tandem") {
    activity("arrive")
        .enabledBy({first, hit}, [this] { return goesOn() && first.Mark() < capacity; })
        .exponential(arrivalRate)
        .fires({first, hit}, [this] {
          ++first.Mark();
          look();
        });
    activity("phase1")
        .enabledBy({first, phase, second, hit}, [this] { return serves(0) && second.Mark() < capacity; })
        .exponential(phaseRate)
        .withCase([] { return 1.0 - secondChance; }, {first, second, hit}, [this] { handOver(); })
        .withCase(secondChance, {phase, hit}, [this] { goIntoSecondPhase(); });
    activity("blockedPhase1")
        .enabledBy({first, phase, second, hit}, [this] { return serves(0) && second.Mark() == capacity; })
        .exponential([] { return phaseRate * secondChance; })
        .fires({phase, hit}, [this] { goIntoSecondPhase(); });
    activity("phase2")
        .enabledBy({first, phase, second, hit}, [this] { return serves(1) && second.Mark() < capacity; })
        .exponential(phaseRate)
        .fires({first, phase, second, hit}, [this] {
          phase.Mark() = 0;
          handOver();
        });
    activity("serve2")
        .enabledBy({second, hit}, [this] { return goesOn() && second.Mark() > 0; })
        .exponential(serviceRate)
        .fires({second}, [this] { --second.Mark(); });
  }

  [[nodiscard]] int customers() { return first.Mark() + second.Mark(); }

 private:
  bool goesOn() { return hit.Mark() == 0; }
  bool serves(short inPhase) { return goesOn() && first.Mark() > 0 && phase.Mark() == inPhase; }

  void handOver() {
    --first.Mark();
    ++second.Mark();
    look();
  }
  void goIntoSecondPhase() {
    phase.Mark() = 1;
    look();
  }
  void look() {
    const bool isFirstFull = first.Mark() == capacity;
    const bool isAllFull = isFirstFull && second.Mark() == capacity && phase.Mark() == 1;
    if ((stopWhen == 1 && isFirstFull) || (stopWhen == 2 && isAllFull)) {
      hit.Mark() = 1;
    }
  }
};

/// In the results: 0 to 2 belong to terminating runs, 3 to 5 to steady-state runs.
void measure(RewardModel& rewards) {
  rewards.model<Tandem>();

  rewards.instantOfTime("customers", observedTime).rate("tandem", [](Tandem& tandem) { return tandem.customers(); });
  rewards.instantOfTime("stopped", observedTime).rate("tandem", [](Tandem& tandem) { return tandem.hit.Mark(); });
  rewards.intervalOfTime("timeGoingOn", 0.0, observedTime).rate("tandem", [](Tandem& tandem) {
    return 1 - tandem.hit.Mark();
  });

  constexpr double kTransient = 20.0;
  constexpr double kBatchLength = 50.0;
  rewards.steadyState("customers", kTransient, kBatchLength).rate("tandem", [](Tandem& tandem) {
    return tandem.customers();
  });
  rewards.steadyState("throughput", kTransient, kBatchLength).impulse("serve2", "tandem");
  rewards.steadyState("twoPhases", kTransient, kBatchLength).impulse("phase2", "tandem");
}

const StudyEntry study{"tandem",
                       Experiments(capacity, arrivalRate, phaseRate, secondChance, serviceRate, stopWhen, observedTime)
                           .row(5, 20.0, 2.0, 0.1, 4.0, 0, 0.2)
                           .row(5, 20.0, 2.0, 0.1, 4.0, 1, 0.2)
                           .row(5, 20.0, 2.0, 0.1, 4.0, 2, 1000.0)
                           .row(3, 1.5, 2.0, 0.4, 2.0, 0, 1.0),
                       measure};

}  // namespace
