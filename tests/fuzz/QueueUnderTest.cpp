#include "fuzz/QueueUnderTest.h"

#include <memory>
#include <utility>

#include "Modelling/Modelling.h"
#include "Simulator/LaggedFibonacci.h"
#include "Simulator/UserDistributions.h"
#include "support/TestStudy.h"

namespace fuzz {

namespace {

class Queue : public modelling::AtomicModel {
 public:
  modelling::Variable<Place> customers{*this, "customers"};

  Queue() : AtomicModel("queue") {
    constexpr int kRoom = 3;
    activity("arrive")
        .enabledBy({customers}, [this] { return customers.Mark() < kRoom; })
        .exponential(1.0)
        .fires({customers}, [this] { ++customers.Mark(); });
    activity("serve")
        .enabledBy({customers}, [this] { return customers.Mark() > 0; })
        .uniform(0.5, 1.0)
        .fires({customers}, [this] { --customers.Mark(); });
  }
};

void measure(modelling::RewardModel& rewards) {
  rewards.model<Queue>();
  rewards.intervalOfTime("served", 0.0, 4.0).impulse("serve", "queue");
  rewards.steadyState("waiting", 1.0, 4.0).rate("queue", [](Queue& queue) { return queue.customers.Mark(); });
}

}  // namespace

void useQueue() {
  // An earlier run's choice of a generator must not outlive it.
  delete std::exchange(TheDistribution->RNG, new LaggedFibonacci);
  support::setModelFactory([](bool expandTimeArrays) -> std::unique_ptr<PVModel> {
    return std::make_unique<modelling::RewardModel>("queue", measure, expandTimeArrays);
  });
}

}  // namespace fuzz
