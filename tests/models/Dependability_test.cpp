#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "Simulator/UserDistributions.h"
#include "models/ModelKit.h"

using kit::expectMean;
using kit::Experiment;
using kit::instant;
using kit::interval;
using kit::ModelInstances;
using kit::Observations;
using kit::RateReward;

namespace {

/// Two units of which one repairs; a failure of one of two is covered with probability c, and otherwise takes the whole
/// system down for good.
class DuplexModel : public kit::AtomicModel {
 public:
  DuplexModel(double failureRate, double repairRate, double coverage) {
    Place& n = place("n", 2);
    Place& f = place("f", 0);
    const auto both = [&n] { return n.Mark() == 2; };
    const auto firstFailure = [failureRate] { return TheDistribution->Exponential(2.0 * failureRate); };
    Activity& covered = member("fail2_case1", {&n}, {&n},
                               {.enabled = both,
                                .delay = firstFailure,
                                .fire = [&n] { --n.Mark(); },
                                .weight = [coverage] { return coverage; }});
    Activity& uncovered = member("fail2_case2", {&n}, {&n, &f},
                                 {.enabled = both,
                                  .delay = firstFailure,
                                  .fire =
                                      [&n, &f] {
                                        f.Mark() = 1;
                                        n.Mark() = 0;
                                      },
                                  .weight = [coverage] { return 1.0 - coverage; }});
    group<PostselectGroup>("fail2", {&covered, &uncovered});
    activity("fail1", {&n}, {&n, &f},
             {.enabled = [&n] { return n.Mark() == 1; },
              .delay = [failureRate] { return TheDistribution->Exponential(failureRate); },
              .fire =
                  [&n, &f] {
                    f.Mark() = 1;
                    n.Mark() = 0;
                  }});
    activity("repair", {&n}, {&n},
             {.enabled = [&n] { return n.Mark() == 1; },
              .delay = [repairRate] { return TheDistribution->Exponential(repairRate); },
              .fire = [&n] { ++n.Mark(); }});
    finish("duplex");
    f_ = &f;
  }

  static RateReward failed() {
    return {"duplex", [](ModelInstances models) { return static_cast<DuplexModel*>(models[0])->f_->Mark(); }};
  }
  static RateReward working() {
    return {"duplex", [](ModelInstances models) { return 1.0 - static_cast<DuplexModel*>(models[0])->f_->Mark(); }};
  }

 private:
  Place* f_;
};

/// Three units, each failing once after a delay given by `life`; the system works while two of them do.
class TwoOfThreeModel : public kit::AtomicModel {
 public:
  explicit TwoOfThreeModel(const std::function<double()>& life) {
    Place& failures = place("failures", 0);
    for (int i = 0; i < 3; ++i) {
      Place& up = place(("up" + std::to_string(i)).c_str(), 1);
      activity(("fail" + std::to_string(i)).c_str(), {&up}, {&up, &failures},
               {.enabled = [&up] { return up.Mark() > 0; },
                .delay = life,
                .fire =
                    [&up, &failures] {
                      --up.Mark();
                      ++failures.Mark();
                    }});
    }
    finish("voter");
    failures_ = &failures;
  }

  static RateReward working() {
    return {"voter", [](ModelInstances models) {
              return static_cast<TwoOfThreeModel*>(models[0])->failures_->Mark() <= 1 ? 1.0 : 0.0;
            }};
  }

 private:
  Place* failures_;
};

/// A job of exponential length against a timeout: whichever ends first ends both.
class TimeoutModel : public kit::AtomicModel {
 public:
  TimeoutModel() {
    Place& state = place("state", 0);  // 0 while both run, 1 after the job's end, 2 after the timeout
    const auto running = [&state] { return state.Mark() == 0; };
    activity("job", {&state}, {&state},
             {.enabled = running,
              .delay = [] { return TheDistribution->Exponential(0.5); },
              .fire = [&state] { state.Mark() = 1; }});
    activity("timeout", {&state}, {&state},
             {.enabled = running,
              .delay = [] { return TheDistribution->Deterministic(3.0); },
              .fire = [&state] { state.Mark() = 2; }});
    finish("job");
    state_ = &state;
  }

  static RateReward inState(short wanted) {
    return {"job", [wanted](ModelInstances models) {
              return static_cast<TimeoutModel*>(models[0])->state_->Mark() == wanted ? 1.0 : 0.0;
            }};
  }

 private:
  Place* state_;
};

class DependabilityTest : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(EachGenerator, DependabilityTest, testing::Values(0, 1, 2));

TEST_P(DependabilityTest, CoveredDuplexFailsWithTheExactProbability) {
  const Experiment experiment{
      [] { return new DuplexModel(0.01, 1.0, 0.9); },
      {instant("failed", 1000.0, DuplexModel::failed()), interval("lifetime", 15000.0, DuplexModel::working())}};
  const Observations seen = kit::run(experiment, {.batches = 45000, .seed = 43, .generator = GetParam()});
  expectMean(seen[0], 0.882372595665, "failed at 1000");
  // The mean beyond 15,000 is below 467 exp(-32), far under what the test resolves.
  expectMean(seen[1], 467.272727273, "mean time to failure");
}

TEST_P(DependabilityTest, TripleModularRedundancySurvivesWithTheExactProbability) {
  const auto life = [] { return TheDistribution->Exponential(0.001); };
  const Experiment experiment{[life] { return new TwoOfThreeModel(life); },
                              {instant("reliability", 500.0, TwoOfThreeModel::working()),
                               interval("lifetime", 30000.0, TwoOfThreeModel::working())}};
  const Observations seen = kit::run(experiment, {.batches = 30000, .seed = 47, .generator = GetParam()});
  expectMean(seen[0], 3.0 * std::exp(-1.0) - 2.0 * std::exp(-1.5), "works at 500");
  expectMean(seen[1], 1.0 / 0.003 + 1.0 / 0.002, "mean time to failure");
}

TEST_P(DependabilityTest, TwoOfThreeUnitsOfWeibullLivesSurviveWithTheExactProbability) {
  const auto life = [] { return TheDistribution->Weibull(2.0, 1000.0); };
  const Experiment experiment{[life] { return new TwoOfThreeModel(life); },
                              {instant("reliability", 500.0, TwoOfThreeModel::working()),
                               interval("lifetime", 10000.0, TwoOfThreeModel::working())}};
  const Observations seen = kit::run(experiment, {.batches = 30000, .seed = 53, .generator = GetParam()});
  expectMean(seen[0], 0.874858873656, "works at 500");
  expectMean(seen[1], 856.644498027, "mean time to failure");
}

TEST_P(DependabilityTest, DeterministicTimeoutBeatsAnExponentialJobWithTheExactProbability) {
  const Experiment experiment{
      [] { return new TimeoutModel; },
      {instant("timedOut", 4.0, TimeoutModel::inState(2)), interval("firstEnd", 4.0, TimeoutModel::inState(0))}};
  const Observations seen = kit::run(experiment, {.batches = 150000, .seed = 59, .generator = GetParam()});
  expectMean(seen[0], std::exp(-1.5), "timeout first");
  expectMean(seen[1], 2.0 * (1.0 - std::exp(-1.5)), "earlier of the two ends");
}

}  // namespace
