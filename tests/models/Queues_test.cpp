#include <gtest/gtest.h>

#include <cmath>

#include "Simulator/UserDistributions.h"
#include "models/ModelKit.h"
#include "models/MultiServerModel.h"
#include "models/QueueModel.h"

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

/// A machine that fails and is repaired: two places, two activities.
class OnOffModel : public kit::AtomicModel {
 public:
  static constexpr double kFailureRate = 0.5;
  static constexpr double kRepairRate = 1.5;

  OnOffModel() {
    Place& up = place("up", 1);
    Place& down = place("down", 0);
    activity("fail", {&up}, {&up, &down},
             {.enabled = [&up] { return up.Mark() > 0; },
              .delay = [] { return TheDistribution->Exponential(kFailureRate); },
              .fire =
                  [&up, &down] {
                    --up.Mark();
                    ++down.Mark();
                  }});
    activity("repair", {&down}, {&up, &down},
             {.enabled = [&down] { return down.Mark() > 0; },
              .delay = [] { return TheDistribution->Exponential(kRepairRate); },
              .fire =
                  [&up, &down] {
                    --down.Mark();
                    ++up.Mark();
                  }});
    finish("machine");
    up_ = &up;
  }

  [[nodiscard]] double isUp() const { return up_->Mark(); }

 private:
  Place* up_;
};

RateReward machineIsUp() {
  return {"machine", [](ModelInstances models) { return static_cast<OnOffModel*>(models[0])->isUp(); }};
}

// P(up at t) = a + b exp(-s t), with s the sum of the rates, a the share of the repair rate and b that of the failure
// rate.
constexpr double kSum = OnOffModel::kFailureRate + OnOffModel::kRepairRate;
constexpr double kUpShare = OnOffModel::kRepairRate / kSum;
constexpr double kDownShare = OnOffModel::kFailureRate / kSum;

double upTimeBy(double time) {
  return kUpShare * time + kDownShare * (1.0 - std::exp(-kSum * time)) / kSum;
}

class QueuesTest : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(EachGenerator, QueuesTest, testing::Values(0, 1, 2));

TEST_P(QueuesTest, TwoPlacesAndTwoActivitiesGiveTheTransientOfATwoStateChain) {
  const kit::Variable window{"later", INTERVAL_OF_TIME, {1.0}, {2.0}, {machineIsUp()}, {}};
  const Experiment experiment{
      [] { return new OnOffModel; },
      {instant("up", 1.0, machineIsUp()), interval("upTime", 2.0, machineIsUp()), window,
       timeAveraged("availability", 2.0, machineIsUp()), firings("failures", 2.0, "fail", "machine")}};
  const Observations seen = kit::run(experiment, {.batches = 60000, .seed = 11, .generator = GetParam()});
  expectMean(seen[0], kUpShare + kDownShare * std::exp(-kSum), "up at 1");
  expectMean(seen[1], upTimeBy(2.0), "time up in [0,2]");
  expectMean(seen[2], upTimeBy(2.0) - upTimeBy(1.0), "time up in [1,2]");
  expectMean(seen[3], upTimeBy(2.0) / 2.0, "availability over [0,2]");
  expectMean(seen[4], OnOffModel::kFailureRate * upTimeBy(2.0), "failures in [0,2]");
}

Experiment queueExperiment(double arrivalRate, int capacity) {
  return {[=] { return new QueueModel(arrivalRate, capacity); },
          {instant("atTen", 10.0, QueueModel::numberInSystem()), instant("emptyAtTen", 10.0, QueueModel::isEmpty()),
           timeAveraged("average", 10.0, QueueModel::numberInSystem()), firings("served", 10.0, "serve", "queue"),
           interval("busy", 10.0, QueueModel::isBusy())}};
}

TEST_P(QueuesTest, QueueOfFivePlacesGivesItsTransientMeans) {
  const Observations seen = kit::run(queueExperiment(1.0, 5), {.batches = 170000, .seed = 5, .generator = GetParam()});
  expectMean(seen[0], 2.34075885612, "number in system at 10");
  expectMean(seen[1], 0.188012284898, "empty at 10");
  expectMean(seen[2], 1.68442960385, "average number in system over [0,10]");
  expectVariance(seen[2], 0.936478091441, "average number in system over [0,10]");
  expectMean(seen[3], 6.88518747748, "served in [0,10]");
  expectVariance(seen[3], 5.44110031527, "served in [0,10]");
  // The service rate is 1, so that the time busy has the mean of the firings.
  expectMean(seen[4], 6.88518747748, "time busy in [0,10]");
}

TEST_P(QueuesTest, QueueOfTenPlacesGivesItsTransientMeans) {
  const Observations seen =
      kit::run(queueExperiment(0.8, 10), {.batches = 100000, .seed = 77, .generator = GetParam()});
  expectMean(seen[0], 2.02211792552, "number in system at 10");
  expectVariance(seen[0], 4.30820141938, "number in system at 10");
  expectMean(seen[1], 0.286424008515, "empty at 10");
  expectMean(seen[2], 1.35027307143, "average number in system over [0,10]");
  expectVariance(seen[2], 1.15271181766, "average number in system over [0,10]");
  expectMean(seen[3], 5.96971718973, "served in [0,10]");
  expectVariance(seen[3], 4.92286811149, "served in [0,10]");
}

constexpr double kLoad = 2.0;
constexpr int kServers = 5;

Experiment lossExperiment(bool reactivates) {
  return {[=] { return new MultiServerModel(kLoad, kServers, kServers, reactivates); },
          {instant("busy", 3.0, MultiServerModel::numberBusy())}};
}

double exactNumberBusy(double time) {
  return MultiServerModel::exact(kLoad, kServers, kServers).at(time, [](const auto& marking) { return marking[0]; });
}

TEST_P(QueuesTest, ReactivatedServiceFollowsTheMarking) {
  const Observations seen = kit::run(lossExperiment(true), {.batches = 40000, .seed = 3, .generator = GetParam()});
  expectMean(seen[0], exactNumberBusy(3.0), "busy servers at 3");
}

TEST(QueuesTest, ServiceThatIsNotReactivatedKeepsItsOldTimeAndMissesTheExactMean) {
  const Observations seen = kit::run(lossExperiment(false), {.batches = 40000, .seed = 3});
  double sum = 0.0;
  double squares = 0.0;
  for (const double value : seen[0]) {
    sum += value;
    squares += value * value;
  }
  const auto n = static_cast<double>(seen[0].size());
  const double mean = sum / n;
  const double standardError = std::sqrt((squares / n - mean * mean) / n);
  // Services begun with one customer present are not sped up by later ones, so that more customers are present.
  EXPECT_GT(mean - exactNumberBusy(3.0), 10.0 * standardError) << mean << " against " << exactNumberBusy(3.0);
}

}  // namespace
