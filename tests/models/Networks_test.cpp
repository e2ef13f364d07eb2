#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "models/ClusterModel.h"
#include "models/ModelKit.h"
#include "models/PollingModel.h"
#include "models/TandemModel.h"

using kit::expectMean;
using kit::expectVariance;
using kit::Experiment;
using kit::firings;
using kit::instant;
using kit::interval;
using kit::ModelInstances;
using kit::Observations;
using kit::RateReward;

namespace {

class NetworksTest : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(EachGenerator, NetworksTest, testing::Values(0, 1, 2));

TEST_P(NetworksTest, TandemHoldsItsTransientNumberOfCustomers) {
  const Experiment experiment{[] { return new TandemModel(false); }, {instant("n", 0.2, TandemModel::customers())}};
  const Observations seen = kit::run(experiment, {.batches = 30000, .seed = 19, .generator = GetParam()});
  expectMean(seen[0], 3.576667592270, "customers at 0.2");
  expectVariance(seen[0], 2.140797, "customers at 0.2");
}

TEST_P(NetworksTest, TandemFillsItsFirstStationAtTheExactPace) {
  const Experiment experiment{[] { return new TandemModel(true); }, {instant("full", 0.2, TandemModel::wasFull())}};
  const Observations seen = kit::run(experiment, {.batches = 80000, .seed = 23, .generator = GetParam()});
  expectMean(seen[0], 0.335260561862, "first station full by 0.2");
}

TEST(NetworksTest, PollingServerKeepsTheFirstStationWaitingForTheExactTime) {
  const Experiment experiment{
      [] { return new PollingModel; },
      {interval("waiting", 16.0, PollingModel::firstWaits()), firings("served", 16.0, "serve_1", "polling")}};
  const Observations seen = kit::run(experiment, {.batches = 35000, .seed = 29, .generator = 2});
  expectMean(seen[0], 1.84887137055, "time waiting in [0,16]");
  expectVariance(seen[0], 3.03300290200, "time waiting in [0,16]");
  expectMean(seen[1], 3.27671064504, "served in [0,16]");
  expectVariance(seen[1], 1.92578782826, "served in [0,16]");
}

TEST_P(NetworksTest, ClusterIsRepairedAtTheExactPace) {
  kit::Variable repairs = firings("repairs", 2000.0, "repair_L", "cluster");
  for (const char* name : {"repair_R", "repair_TL", "repair_TR", "repair_B"}) {
    repairs.impulses.push_back({name, "cluster"});
  }
  const Experiment experiment{[] { return new ClusterModel; },
                              {instant("percent", 20.0, ClusterModel::percentOfStations()), repairs}};
  const Observations seen = kit::run(experiment, {.batches = 40000, .seed = 31, .generator = GetParam()});
  expectMean(seen[0], 99.8764355825, "percent of stations at 20");
  expectVariance(seen[0], 3.09716216, "percent of stations at 20");
  expectMean(seen[1], 17.3697782838, "repairs in [0,2000]");
}

/// Dining philosophers, all rates 1: every one takes one fork, then the other. All waiting is a deadlock.
class PhilosophersModel : public kit::AtomicModel {
 public:
  static constexpr std::size_t kPhilosophers = 4;

  PhilosophersModel() {
    std::array<Place*, kPhilosophers> forks{};
    for (std::size_t i = 0; i < kPhilosophers; ++i) {
      forks[i] = &place(("fork_" + std::to_string(i)).c_str(), 1);
    }
    for (std::size_t i = 0; i < kPhilosophers; ++i) {
      const std::string number = std::to_string(i);
      Place& left = *forks[i];
      Place& right = *forks[(i + 1) % kPhilosophers];
      Place& think = place(("think_" + number).c_str(), 1);
      Place& wait = place(("wait_" + number).c_str(), 0);
      Place& eat = place(("eat_" + number).c_str(), 0);
      take(("take1_" + number).c_str(), {&think, &left}, {&wait});
      take(("take2_" + number).c_str(), {&wait, &right}, {&eat});
      take(("put_" + number).c_str(), {&eat}, {&think, &left, &right});
      waiting_[i] = &wait;
    }
    finish("table");
  }

  [[nodiscard]] bool isDeadlocked() const {
    for (Place* place : waiting_) {
      if (place->Mark() == 0) {
        return false;
      }
    }
    return true;
  }

  static RateReward deadlocked() {
    return {"table", [](ModelInstances models) { return of(models) ? 1.0 : 0.0; }};
  }
  static RateReward alive() {
    return {"table", [](ModelInstances models) { return of(models) ? 0.0 : 1.0; }};
  }

 private:
  static bool of(ModelInstances models) { return static_cast<PhilosophersModel*>(models[0])->isDeadlocked(); }

  /// Moves one token from each of `from` to each of `to`.
  void take(const char* name, const std::vector<Place*>& from, const std::vector<Place*>& to) {
    std::vector<BaseStateVariableClass*> enabling(from.begin(), from.end());
    std::vector<BaseStateVariableClass*> affected = enabling;
    affected.insert(affected.end(), to.begin(), to.end());
    activity(name, enabling, affected,
             {.enabled =
                  [from] {
                    for (Place* one : from) {
                      if (one->Mark() == 0) {
                        return false;
                      }
                    }
                    return true;
                  },
              .delay = kit::exponential(1.0),
              .fire =
                  [from, to] {
                    for (Place* one : from) {
                      --one->Mark();
                    }
                    for (Place* one : to) {
                      ++one->Mark();
                    }
                  }});
  }

  std::array<Place*, kPhilosophers> waiting_{};
};

TEST_P(NetworksTest, PhilosophersReachTheirDeadlockAtTheExactPace) {
  const Experiment experiment{
      [] { return new PhilosophersModel; },
      {interval("timeToDeadlock", 200.0, PhilosophersModel::alive()),
       instant("by5", 5.0, PhilosophersModel::deadlocked()), instant("by10", 10.0, PhilosophersModel::deadlocked())}};
  const Observations seen = kit::run(experiment, {.batches = 40000, .seed = 37, .generator = GetParam()});
  expectMean(seen[0], 550.0 / 101.0, "time to deadlock");
  expectVariance(seen[0], 23.797556612, "time to deadlock");
  expectMean(seen[1], 0.592642676804, "deadlock by 5");
  expectMean(seen[2], 0.854778662395, "deadlock by 10");
}

TEST(NetworksTest, PhilosophersDeadlockEarlyWithTheExactProbability) {
  const Experiment experiment{[] { return new PhilosophersModel; },
                              {instant("by1", 1.0, PhilosophersModel::deadlocked())}};
  const Observations seen = kit::run(experiment, {.batches = 400000, .seed = 41});
  expectMean(seen[0], 0.0912394078297, "deadlock by 1");
}

}  // namespace
