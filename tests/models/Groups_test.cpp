#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "Simulator/UserDistributions.h"
#include "models/ModelKit.h"
#include "support/MarkovChain.h"

using kit::expectMean;
using kit::Experiment;
using kit::firings;
using kit::instant;
using kit::interval;
using kit::ModelInstances;
using kit::Observations;
using kit::RateReward;

namespace {

/// A machine whose failure is of one of two kinds, chosen when it happens (postselect: minor with weight 3, major with
/// weight 1), and whose repair after a major failure is of one of two lengths, chosen when it begins (preselect: quick
/// with weight 2, slow with weight 3).
class MachineModel : public kit::AtomicModel {
 public:
  static constexpr double kFailureRate = 0.8;
  static constexpr double kMinorRepairRate = 2.0;
  static constexpr double kQuickRepairRate = 4.0;
  static constexpr double kSlowRepairRate = 0.5;

  enum State : short { kUp, kMinor, kMajor };

  MachineModel() {
    Place& state = place("state", kUp);
    const auto in = [&state](State wanted) { return [&state, wanted] { return state.Mark() == wanted; }; };
    const auto goTo = [&state](State next) { return [&state, next] { state.Mark() = next; }; };
    const auto after = [](double rate) { return [rate] { return TheDistribution->Exponential(rate); }; };
    const auto weighing = [](double weight) { return [weight] { return weight; }; };

    Activity& minor =
        member("fail_case1", {&state}, {&state}, {in(kUp), after(kFailureRate), goTo(kMinor), weighing(3.0)});
    Activity& major =
        member("fail_case2", {&state}, {&state}, {in(kUp), after(kFailureRate), goTo(kMajor), weighing(1.0)});
    group<PostselectGroup>("fail", {&minor, &major});
    activity("patch", {&state}, {&state}, {in(kMinor), after(kMinorRepairRate), goTo(kUp)});
    Activity& quick =
        member("repair_case1", {&state}, {&state}, {in(kMajor), after(kQuickRepairRate), goTo(kUp), weighing(2.0)});
    Activity& slow =
        member("repair_case2", {&state}, {&state}, {in(kMajor), after(kSlowRepairRate), goTo(kUp), weighing(3.0)});
    group<PreselectGroup>("repair", {&quick, &slow});
    finish("machine");
    state_ = &state;
  }

  static RateReward is(State wanted) {
    return {"machine", [wanted](ModelInstances models) {
              return static_cast<MachineModel*>(models[0])->state_->Mark() == wanted ? 1.0 : 0.0;
            }};
  }

 private:
  Place* state_;
};

/// The repair that a preselect group has chosen and not yet carried out when a batch ends, by its number here, or none.
enum Chosen : int { kNone, kQuick, kSlow };

/// The same machine as a chain of (state, choice carried over from the batch before). State 2 is a quick major repair,
/// state 3 a slow one.
support::MarkovChain machineStartingWith(Chosen carried) {
  return {{0, carried}, [](const support::MarkovChain::Marking& marking) -> support::MarkovChain::Moves {
            const int choice = marking[1];
            const double majorRate = MachineModel::kFailureRate * 0.25;
            const double quickShare = choice == kNone ? 0.4 : (choice == kQuick ? 1.0 : 0.0);
            switch (marking[0]) {
              case 0:
                return {{{1, choice}, MachineModel::kFailureRate * 0.75},
                        {{2, kNone}, majorRate * quickShare},
                        {{3, kNone}, majorRate * (1.0 - quickShare)}};
              case 1:
                return {{{0, choice}, MachineModel::kMinorRepairRate}};
              case 2:
                return {{{0, kNone}, MachineModel::kQuickRepairRate}};
              default:
                return {{{0, kNone}, MachineModel::kSlowRepairRate}};
            }
          }};
}

int choiceLeftBy(const support::MarkovChain::Marking& marking) {
  return marking[0] == 2 ? kQuick : (marking[0] == 3 ? kSlow : marking[1]);
}

double isUp(const support::MarkovChain::Marking& marking) {
  return marking[0] == 0 ? 1.0 : 0.0;
}
double isMajor(const support::MarkovChain::Marking& marking) {
  return marking[0] >= 2 ? 1.0 : 0.0;
}

/// Expectations over batches in the long run. A preselect group keeps its choice until it has fired, also into the next
/// batch, so that batches are linked through it: a batch begins with what the one before has left.
class ExactMachine {
 public:
  explicit ExactMachine(double stopTime) {
    for (int batch = 0; batch < 100; ++batch) {
      std::array<double, 3> next{};
      for (std::size_t from = 0; from < next.size(); ++from) {
        for (std::size_t to = 0; to < next.size(); ++to) {
          next[to] += shares_[from] * chains_[from].at(stopTime, [to](const auto& marking) {
            return choiceLeftBy(marking) == static_cast<int>(to) ? 1.0 : 0.0;
          });
        }
      }
      shares_ = next;
    }
  }

  template <typename Expectation>
  [[nodiscard]] double overBatches(Expectation ofChain) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < shares_.size(); ++i) {
      sum += shares_[i] * ofChain(chains_[i]);
    }
    return sum;
  }

 private:
  std::array<support::MarkovChain, 3> chains_{machineStartingWith(kNone), machineStartingWith(kQuick),
                                              machineStartingWith(kSlow)};
  std::array<double, 3> shares_{1.0, 0.0, 0.0};  // of the batches that begin with each choice
};

class GroupsTest : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(EachGenerator, GroupsTest, testing::Values(0, 1, 2));

TEST_P(GroupsTest, CasesAreChosenByWeightAtTheRightMomentAndAChoiceOutlivesItsBatch) {
  const Experiment experiment{
      [] { return new MachineModel; },
      {instant("major", 6.0, MachineModel::is(MachineModel::kMajor)),
       interval("upTime", 6.0, MachineModel::is(MachineModel::kUp)),
       firings("minorFailures", 6.0, "fail_case1", "machine"), firings("majorFailures", 6.0, "fail_case2", "machine")}};
  const Observations seen = kit::run(experiment, {.batches = 250000, .seed = 61, .generator = GetParam()});
  const ExactMachine exact(6.0);
  const double upTime = exact.overBatches([](const auto& chain) { return chain.over(6.0, isUp); });
  expectMean(seen[0], exact.overBatches([](const auto& chain) { return chain.at(6.0, isMajor); }),
             "under major repair at 6");
  expectMean(seen[1], upTime, "time up in [0,6]");
  expectMean(seen[2], upTime * MachineModel::kFailureRate * 0.75, "minor failures in [0,6]");
  expectMean(seen[3], upTime * MachineModel::kFailureRate * 0.25, "major failures in [0,6]");
}

/// Instantaneous choices: a token meets two rivals of weights 1 and 3 and one of a lower rank, at once.
class RivalsModel : public kit::AtomicModel {
 public:
  RivalsModel() {
    Place& source = place("source", 1);
    const auto rival = [this, &source](const char* name, double weight, int rank) {
      Place& reached = place(name, 0);
      activity(name, {&source}, {&source, &reached},
               {.enabled = [&source] { return source.Mark() > 0; },
                .delay = [] { return 0.0; },
                .fire =
                    [&source, &reached] {
                      --source.Mark();
                      ++reached.Mark();
                    },
                .weight = [weight] { return weight; },
                .rank = rank});
    };
    rival("light", 1.0, 2);
    rival("late", 1000.0, 1);
    rival("heavy", 3.0, 2);
    finish("rivals");
  }
};

TEST_P(GroupsTest, SimultaneousRivalsFireByRankThenByWeight) {
  const Experiment experiment{[] { return new RivalsModel; },
                              {firings("light", 1.0, "light", "rivals"), firings("late", 1.0, "late", "rivals"),
                               firings("heavy", 1.0, "heavy", "rivals")}};
  const Observations seen = kit::run(experiment, {.batches = 120000, .seed = 67, .generator = GetParam()});
  expectMean(seen[0], 0.25, "light rival first");
  expectMean(seen[2], 0.75, "heavy rival first");
  for (const double value : seen[1]) {
    ASSERT_EQ(value, 0.0) << "the lower rank never fires";
  }
}

}  // namespace
