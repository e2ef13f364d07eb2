#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "Composer/Join.h"
#include "Simulator/UserDistributions.h"
#include "models/ModelKit.h"
#include "models/ShopModel.h"
#include "support/MarkovChain.h"

using kit::expectMean;
using kit::expectVariance;
using kit::Experiment;
using kit::firings;
using kit::instant;
using kit::interval;
using kit::ModelInstances;
using kit::Observations;
using kit::RateReward;
using kit::timeAveraged;

namespace {

constexpr int kMachines = 3;

double numberUp(const support::MarkovChain::Marking& marking) {
  return marking[0];
}

class ComposedTest : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(EachGenerator, ComposedTest, testing::Values(0, 1, 2));

TEST_P(ComposedTest, RepairShopOfThreeReplicasGivesItsTransient) {
  const Experiment experiment{
      [] { return new ShopModel(kMachines); },
      {instant("up", 4.0, ShopModel::machinesUp()), interval("upTime", 4.0, ShopModel::machinesUp()),
       timeAveraged("averageUp", 4.0, ShopModel::machinesUp()), firings("repairs", 4.0, "repair", "machine")}};
  const Observations seen = kit::run(experiment, {.batches = 40000, .seed = 71, .generator = GetParam()});
  const support::MarkovChain exact = ShopModel::exact(kMachines);
  const double upTime = exact.over(4.0, numberUp);
  expectMean(seen[0], exact.at(4.0, numberUp), "machines up at 4");
  expectMean(seen[1], upTime, "machine time up in [0,4]");
  expectMean(seen[2], upTime / 4.0, "machines up on average over [0,4]");
  const double repairs = MachineModel::kRepairRate *
                         exact.over(4.0, [](const auto& marking) { return marking[0] < kMachines ? 1.0 : 0.0; });
  expectMean(seen[3], repairs, "repairs in [0,4]");
}

/// The two halves of a queue: arrivals, and service, which meet in a shared place.
class ArrivalsModel : public kit::AtomicModel {
 public:
  explicit ArrivalsModel(int capacity) : q(place("q", 0)) {
    activity("arrive", {&q}, {&q},
             {.enabled = [this, capacity] { return q.Mark() < capacity; },
              .delay = [] { return TheDistribution->Exponential(1.0); },
              .fire = [this] { ++q.Mark(); }});
    finish("arrivals");
  }
  Place& q;
};

class ServiceModel : public kit::AtomicModel {
 public:
  ServiceModel() : q(place("queued", 0)) {
    activity("serve", {&q}, {&q},
             {.enabled = [this] { return q.Mark() > 0; },
              .delay = [] { return TheDistribution->Exponential(1.0); },
              .fire = [this] { --q.Mark(); }});
    finish("service");
  }
  Place& q;
};

const char* const kQueueNames[] = {"q"};

class JoinedQueueModel : public Join {
 public:
  explicit JoinedQueueModel(int capacity) : Join("queue", 2, 1, kQueueNames), arrivals_(capacity), q_("q") {
    ModelArray[0] = &arrivals_;
    ModelArray[1] = &service_;
    SetupActions();
    addSharedPtr(&q_, "q");
    q_.ShareWith(&arrivals_.q);
    addSharingInfo(&arrivals_.q, &q_, &arrivals_);
    q_.ShareWith(&service_.q);
    addSharingInfo(&service_.q, &q_, &service_);
    Setup();
  }

 private:
  ArrivalsModel arrivals_;
  ServiceModel service_;
  Place q_;
};

TEST_P(ComposedTest, QueueJoinedFromItsTwoHalvesIsTheWholeQueue) {
  const RateReward numberInSystem{
      {"service"}, [](ModelInstances models) { return static_cast<ServiceModel*>(models[0])->q.Mark(); }};
  const Experiment experiment{[] { return new JoinedQueueModel(5); },
                              {instant("atTen", 10.0, numberInSystem), timeAveraged("average", 10.0, numberInSystem),
                               firings("served", 10.0, "serve", "service")}};
  const Observations seen = kit::run(experiment, {.batches = 40000, .seed = 79, .generator = GetParam()});
  // Those of the queue with room for 5, arrivals and service at rate 1.
  expectMean(seen[0], 2.34075885612, "number in system at 10");
  expectMean(seen[1], 1.68442960385, "average number in system over [0,10]");
  expectVariance(seen[1], 0.936478091441, "average number in system over [0,10]");
  expectMean(seen[2], 6.88518747748, "served in [0,10]");
  expectVariance(seen[2], 5.44110031527, "served in [0,10]");
}

}  // namespace
