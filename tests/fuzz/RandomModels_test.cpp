#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <set>
#include <string>

#include "fuzz/Bytes.h"
#include "fuzz/Comparison.h"
#include "fuzz/EngineRun.h"
#include "fuzz/ModelRecipe.h"
#include "fuzz/PlainInterpreter.h"
#include "support/TemporaryFile.h"

namespace {

using fuzz::ModelRecipe;
using fuzz::PlainRun;

constexpr std::size_t kBytes = 400;
constexpr std::uint64_t kSeedsInOneTest = 100;

/// Calls `look` with every model of `count` seeds from `first` on and its plain run.
void forSeeds(std::uint64_t first, std::uint64_t count,
              const std::function<void(std::uint64_t, const ModelRecipe&, const PlainRun&)>& look) {
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    const ModelRecipe model = fuzz::modelOf(fuzz::bytesOfSeed(seed, kBytes));
    look(seed, model, fuzz::interpret(model));
  }
}

/// Runs a model in a process of its own, which ends with status 0 if the engine comes back.
[[noreturn]] void runAndExit(const ModelRecipe& model, const char* resultFile) {
  std::cout.rdbuf(nullptr);
  static_cast<void>(fuzz::runOnEngine(model, resultFile));
  std::exit(0);
}

class RandomModels : public testing::TestWithParam<std::uint64_t> {};

TEST_P(RandomModels, runOnTheEngineAsThePlainInterpreterSays) {
  int compared = 0;
  forSeeds(GetParam(), kSeedsInOneTest, [&](std::uint64_t seed, const ModelRecipe& model, const PlainRun& plain) {
    if (plain.end == PlainRun::End::kOrderly) {
      EXPECT_EQ(fuzz::differenceOnEngine(model, plain), "") << "seed " << seed << '\n' << fuzz::describe(model);
      ++compared;
    }
  });
  EXPECT_GT(compared, static_cast<int>(kSeedsInOneTest) / 2);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomModels, testing::Values(0, 100, 200, 300, 400, 500));

TEST(RandomModelFaults, endTheProcessAsThePlainInterpreterSays) {
  const support::TemporaryFile results("random_model_fault");
  int refused = 0;
  int asserted = 0;
  forSeeds(0, 1500, [&](std::uint64_t seed, const ModelRecipe& model, const PlainRun& plain) {
    if (plain.end == PlainRun::End::kFatal) {
      ++refused;
      EXPECT_EXIT(runAndExit(model, results.name()), testing::ExitedWithCode(1), testing::Eq(plain.words))
          << "seed " << seed;
    } else if (plain.end == PlainRun::End::kAssertion && asserted < 10) {
      ++asserted;
      EXPECT_EXIT(runAndExit(model, results.name()), testing::KilledBySignal(SIGABRT), testing::StartsWith(plain.words))
          << "seed " << seed;
    }
  });
  EXPECT_GT(refused, 5);
  EXPECT_EQ(asserted, 10);
}

TEST(RandomModelSeeds, reachEveryDistributionAndEveryWayOfComposing) {
  std::set<int> distributions;
  std::set<int> simTests;
  std::size_t firings = 0;
  int shared = 0;
  int replicated = 0;
  int inGroups = 0;
  forSeeds(0, 600, [&](std::uint64_t /*seed*/, const ModelRecipe& model, const PlainRun& plain) {
    if (plain.end != PlainRun::End::kOrderly) {
      return;
    }
    firings += plain.trajectory.firings.size();
    simTests.insert(model.simTest);
    shared += model.top.shared.empty() ? 0 : 1;
    std::set<std::string> leaves;
    for (const fuzz::Instance& instance : plain.instances) {
      replicated += leaves.insert(instance.leaf->name).second ? 0 : 1;
      for (const fuzz::EntryRecipe& entry : instance.leaf->entries) {
        inGroups += entry.members.empty() ? 0 : 1;
      }
      for (const fuzz::Firing& firing : plain.trajectory.firings) {
        const auto local = static_cast<std::size_t>(firing.activity - instance.firstActivity);
        if (firing.activity >= instance.firstActivity && local < instance.leaf->activities.size()) {
          distributions.insert(instance.leaf->activities[local].delay.distribution);
        }
      }
    }
  });
  EXPECT_EQ(distributions.size(), static_cast<std::size_t>(fuzz::kInstantaneous));
  EXPECT_EQ(simTests, (std::set<int>{0, 1, 2}));
  EXPECT_GT(firings, 10000U);
  EXPECT_GT(shared, 50);
  EXPECT_GT(replicated, 100);
  EXPECT_GT(inGroups, 100);
}

TEST(RandomModelSeeds, reachSteadyStateWithEveryWayOfCuttingATrajectory) {
  int inSteadyState = 0;
  int withTransient = 0;
  int withBatchesOfDifferentLengths = 0;
  int withAFasterVariable = 0;
  int withVariablesOfBothKinds = 0;
  int withMoreThanOneReport = 0;
  int endedEarly = 0;
  std::size_t batches = 0;
  forSeeds(0, 600, [&](std::uint64_t /*seed*/, const ModelRecipe& model, const PlainRun& plain) {
    if (plain.end != PlainRun::End::kOrderly || !model.isSteadyState) {
      return;
    }
    ++inSteadyState;
    std::set<double> lengths;
    std::size_t fewest = plain.finished.front();
    std::size_t most = 0;
    for (std::size_t i = 0; i < model.rewards.size(); ++i) {
      const fuzz::RewardRecipe& reward = model.rewards[i];
      if (reward.isSteadyState()) {
        lengths.insert(reward.stop - reward.start);
        fewest = std::min(fewest, plain.finished[i]);
        most = std::max(most, plain.finished[i]);
        withTransient += reward.start > 0.0 && plain.finished[i] > 0 ? 1 : 0;
        batches += plain.finished[i];
      } else {
        ++withVariablesOfBothKinds;
      }
    }
    withBatchesOfDifferentLengths += lengths.size() > 1 ? 1 : 0;
    withAFasterVariable += most > fewest && fewest > 0 ? 1 : 0;
    withMoreThanOneReport += most > static_cast<std::size_t>(model.reportSize) ? 1 : 0;
    endedEarly += fewest < static_cast<std::size_t>(model.batches) ? 1 : 0;
  });
  EXPECT_GT(inSteadyState, 100);
  EXPECT_GT(withTransient, 40);
  EXPECT_GT(withBatchesOfDifferentLengths, 40);
  EXPECT_GT(withAFasterVariable, 40);
  EXPECT_GT(withVariablesOfBothKinds, 20);
  EXPECT_GT(withMoreThanOneReport, 40);
  EXPECT_GT(endedEarly, 20);
  EXPECT_GT(batches, 1000U);
}

}  // namespace
