#include <gtest/gtest.h>

#include <cstddef>

#include "Simulator/UserDistributions.h"
#include "models/CycleModel.h"
#include "models/KanbanModel.h"
#include "models/ModelKit.h"
#include "models/ShopModel.h"
#include "models/TandemModel.h"
#include "support/MarkovChain.h"

using kit::Cut;
using kit::expectSteadyMean;
using kit::Experiment;
using kit::firingsInBatch;
using kit::longRunAverage;
using kit::Observations;
using kit::throughput;

namespace {

constexpr int kBatches = 1600;

TEST(SteadyStateNetworksTest, TandemHoldsAndServesItsLongRunMeans) {
  const Cut cut{20.0, 30.0};
  const Experiment experiment{
      [] { return new TandemModel(false); },
      {longRunAverage("n", cut, TandemModel::customers()), throughput("served", cut, "serve2", "tandem")}};
  const Observations seen = kit::runSteadyState(experiment, {.batches = kBatches, .seed = 201, .generator = 0});
  expectSteadyMean(seen[0], 5.679249959967679, "customers");
  expectSteadyMean(seen[1], 1.79925468651, "served for a unit of time");
}

TEST(SteadyStateNetworksTest, KanbanLineHasOneThroughputAndItsPartsInEachCell) {
  constexpr double kThroughput = 0.0925846346333826;
  const Cut cut{500.0, 550.0};
  const Experiment experiment{
      [] { return new KanbanModel; },
      {longRunAverage("takesIn", cut, KanbanModel::takesIn()), throughput("in", cut, "in", "kanban"),
       throughput("s1", cut, "s1", "kanban"), throughput("s2", cut, "s2", "kanban"),
       throughput("out", cut, "out", "kanban"), longRunAverage("cell1", cut, KanbanModel::partsIn(1)),
       longRunAverage("cell2", cut, KanbanModel::partsIn(2)), longRunAverage("cell3", cut, KanbanModel::partsIn(3)),
       longRunAverage("cell4", cut, KanbanModel::partsIn(4))}};
  const Observations seen = kit::runSteadyState(experiment, {.batches = kBatches, .seed = 203, .generator = 2});
  expectSteadyMean(seen[0], kThroughput, "throughput of in, by the rate of 1 while enabled");
  expectSteadyMean(seen[1], kThroughput, "throughput of in");
  expectSteadyMean(seen[2], kThroughput, "throughput of s1");
  expectSteadyMean(seen[3], kThroughput, "throughput of s2");
  expectSteadyMean(seen[4], kThroughput, "throughput of out");
  expectSteadyMean(seen[5], 0.907415365367, "parts in cell 1");
  expectSteadyMean(seen[6], 0.671357104198, "parts in cell 2");
  expectSteadyMean(seen[7], 0.671357104198, "parts in cell 3");
  expectSteadyMean(seen[8], 0.355375365259, "parts in cell 4");
}

// ---- A closed network -----------------------------------------------------------------------------------------------

/// Product form of a closed network of single exponential servers, visited alike.
/// Source  J. P. Buzen, Computational algorithms for closed queueing networks with exponential servers, Communications
///         of the ACM 16(9), 1973
class ClosedNetwork {
 public:
  explicit ClosedNetwork(int customers) : sums_(static_cast<std::size_t>(customers) + 1, 0.0) {
    sums_[0] = 1.0;
    for (const double rate : cycle::kRates) {
      for (std::size_t n = 1; n < sums_.size(); ++n) {
        sums_[n] += sums_[n - 1] / rate;
      }
    }
  }

  [[nodiscard]] double throughput() const { return sums_[sums_.size() - 2] / sums_.back(); }
  [[nodiscard]] double numberAt(int station) const {
    double number = 0.0;
    double load = 1.0;
    for (std::size_t n = 1; n < sums_.size(); ++n) {
      load /= cycle::kRates[station];
      number += load * sums_[sums_.size() - 1 - n];
    }
    return number / sums_.back();
  }

 private:
  std::vector<double> sums_;  // normalising constants for 0, 1 and more customers
};

TEST(SteadyStateNetworksTest, CycleOfThreeStationsHasItsProductForm) {
  constexpr int kCustomers = 5;
  const ClosedNetwork exact(kCustomers);
  const Cut cut{100.0, 400.0};
  const Experiment experiment{
      [] { return new cycle::CycleModel(kCustomers); },
      {longRunAverage("n0", cut, cycle::CycleModel::numberAt(0)),
       longRunAverage("n1", cut, cycle::CycleModel::numberAt(1)),
       longRunAverage("n2", cut, cycle::CycleModel::numberAt(2)), throughput("served0", cut, "serve0", "cycle"),
       throughput("served2", cut, "serve2", "cycle")}};
  const Observations seen = kit::runSteadyState(experiment, {.batches = kBatches, .seed = 205, .generator = 1});
  expectSteadyMean(seen[0], exact.numberAt(0), "customers at station 0");
  expectSteadyMean(seen[1], exact.numberAt(1), "customers at station 1");
  expectSteadyMean(seen[2], exact.numberAt(2), "customers at station 2");
  expectSteadyMean(seen[3], exact.throughput(), "throughput of station 0");
  expectSteadyMean(seen[4], exact.throughput(), "throughput of station 2");
}

// ---- A composed model -----------------------------------------------------------------------------------------------

TEST(SteadyStateNetworksTest, RepairShopOfTenReplicasGivesItsLongRunMeans) {
  constexpr int kMachines = 10;
  const support::MarkovChain exact = ShopModel::exact(kMachines);
  const double up = exact.longRun([](const auto& marking) { return marking[0]; });
  const double busy = exact.longRun([](const auto& marking) { return marking[0] < kMachines ? 1.0 : 0.0; });

  const Cut cut{50.0, 100.0};
  const Experiment experiment{
      [] { return new ShopModel(kMachines); },
      {longRunAverage("up", cut, ShopModel::machinesUp()), longRunAverage("busy", cut, ShopModel::machinesInRepair()),
       throughput("repairs", cut, "repair", "machine"), firingsInBatch("failures", cut, "fail", "machine")}};
  const Observations seen = kit::runSteadyState(experiment, {.batches = kBatches, .seed = 206, .generator = 2});
  expectSteadyMean(seen[0], up, "machines up");
  expectSteadyMean(seen[1], busy, "repairer busy");
  expectSteadyMean(seen[2], MachineModel::kRepairRate * busy, "repairs for a unit of time");
  expectSteadyMean(seen[3], MachineModel::kFailureRate * up * cut.length, "failures in a batch");
}

// ---- Rewards of both forms ------------------------------------------------------------------------------------------

/// A machine that fails after an exponential time and is repaired in a fixed one.
class FixedRepairModel : public kit::AtomicModel {
 public:
  static constexpr double kFailureRate = 0.5;
  static constexpr double kRepairTime = 0.75;

  FixedRepairModel() {
    Place& up = place("up", 1);
    activity("fail", {&up}, {&up},
             {.enabled = [&up] { return up.Mark() == 1; },
              .delay = kit::exponential(kFailureRate),
              .fire = [&up] { up.Mark() = 0; }});
    activity("repair", {&up}, {&up},
             {.enabled = [&up] { return up.Mark() == 0; },
              .delay = [] { return TheDistribution->Deterministic(kRepairTime); },
              .fire = [&up] { up.Mark() = 1; }});
    finish("machine");
    up_ = &up;
  }

  [[nodiscard]] bool isUp() const { return up_->Mark() == 1; }

 private:
  Place* up_;
};

/// A machine earns 5 for a unit of time while it is up, costs 1 while it is down, and 2 for each repair. By renewal
/// theory the long-run gain is that of one cycle over its mean length, 1 / rate + repair time.
TEST(SteadyStateNetworksTest, MachineOfFixedRepairTimeEarnsTheGainOfACycle) {
  constexpr double kUpTime = 1.0 / FixedRepairModel::kFailureRate;
  constexpr double kDownTime = FixedRepairModel::kRepairTime;
  constexpr double kCycle = kUpTime + kDownTime;
  const Cut cut{10.0, 100.0};
  const kit::RateReward isUp{"machine", [](kit::ModelInstances models) {
                               return static_cast<FixedRepairModel*>(models[0])->isUp() ? 1.0 : 0.0;
                             }};
  kit::Variable gain = throughput("gain", cut, "repair", "machine");
  gain.impulses[0].function = [] { return -2.0; };
  gain.rates.push_back({"machine", [](kit::ModelInstances models) {
                          return static_cast<FixedRepairModel*>(models[0])->isUp() ? 5.0 : -1.0;
                        }});
  const Experiment experiment{
      [] { return new FixedRepairModel; },
      {longRunAverage("availability", cut, isUp), throughput("repairs", cut, "repair", "machine"), gain}};
  const Observations seen = kit::runSteadyState(experiment, {.batches = kBatches, .seed = 207, .generator = 0});
  expectSteadyMean(seen[0], kUpTime / kCycle, "availability");
  expectSteadyMean(seen[1], 1.0 / kCycle, "repairs for a unit of time");
  expectSteadyMean(seen[2], (5.0 * kUpTime - kDownTime - 2.0) / kCycle, "gain for a unit of time");
}

// ---- The solver that some of these are compared with ----------------------------------------------------------------

TEST(MarkovChainTest, LongRunExpectationsAreThoseOfABirthDeathChain) {
  // Three machines, rates of failure 0.4 each and of repair 1: with 3, 2, 1 and none up in proportion to 1, 1.2, 0.96
  // and 0.384.
  const support::MarkovChain chain = ShopModel::exact(3);
  const double sum = 1.0 + 1.2 + 0.96 + 0.384;
  EXPECT_NEAR(chain.longRun([](const auto& marking) { return marking[0]; }), (3.0 + 2.0 * 1.2 + 0.96) / sum, 1e-14);
}

TEST(MarkovChainTest, LongRunExpectationsAreTheProductFormOfAClosedNetwork) {
  const support::MarkovChain chain = cycle::exactCycle(5);
  const ClosedNetwork exact(5);
  for (const int station : {0, 1, 2}) {
    const auto at = static_cast<std::size_t>(station);
    EXPECT_NEAR(chain.longRun([at](const auto& marking) { return marking[at]; }), exact.numberAt(station), 1e-13);
  }
}

}  // namespace
