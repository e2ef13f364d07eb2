#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/RateRewardWorker.h"
#include "Performance_Variables/RewardKit.h"

// The orders in which rewards are taken, and in which floating-point numbers are added and multiplied: both are seen in
// the bits of an observation.

namespace {

using support::itemsOf;
using support::replicated;
using support::TestAction;
using support::TestImpulse;
using support::TestModel;
using support::TestNode;
using support::TestRewardModel;
using support::variable;
using testing::ElementsAre;
using testing::Pair;

const double kLarge = std::ldexp(1.0, 53);  // the first number to which adding 1 changes nothing

/// A worker that contributes the same at every step.
class SteadyContribution : public RateRewardWorker {
 public:
  SteadyContribution(double contribution, double fraction) : RateRewardWorker(1), contribution_(contribution) {
    RewardFraction = fraction;
  }
  double Reward_Function() override { return contribution_; }
  void Accumulate(double /*new_time*/, double /*last_event_time*/) override { take(contribution_); }

 private:
  double contribution_;
};

/// A variable over the queues with one such worker for each, and with impulses on "serve" that `declare` adds.
TestRewardModel::MakeNode contributions(RewardType type, const std::vector<double>& each, double fraction,
                                        std::function<void(TestNode&)> declare = {}) {
  return variable("contributions", type, {{0.0, 10.0}}, {.impulses = 1, .models = 1}, [=](TestNode& node) {
    node.AddModelDependency("queue");
    node.makeWorker = [each, fraction, next = std::size_t{0}]() mutable {
      return new SteadyContribution(each[next++], fraction);
    };
    if (declare) {
      declare(node);
    }
  });
}

/// The one node of a batch without events.
TestNode& afterOneStep(TestRewardModel& model) {
  model.ConsiderOnly(nullptr, 0);
  model.endBatch();
  return model.node();
}

TEST(RewardOrderTest, TheContributionsOfTheWorkersAreAddedInTheirOrder) {
  for (const RewardType type : {INTERVAL_OF_TIME, INSTANT_OF_TIME}) {
    TestRewardModel largestFirst(replicated("queue", 3, "serve"), {contributions(type, {kLarge, 1.0, 1.0}, 1.0)});
    EXPECT_EQ(afterOneStep(largestFirst).TotalReward, kLarge) << type;
    TestRewardModel largestLast(replicated("queue", 3, "serve"), {contributions(type, {1.0, 1.0, kLarge}, 1.0)});
    EXPECT_EQ(afterOneStep(largestLast).TotalReward, kLarge + 2.0) << type;
  }
}

TEST(RewardOrderTest, TheSumIsSquaredBeforeTheFractionComesIn) {
  // 9 times 0.1 rounds to 0.9, and 3 times (3 times 0.1) to its successor.
  ASSERT_NE(0.9, 3.0 * (3.0 * 0.1));
  for (const RewardType type : {INTERVAL_OF_TIME, INSTANT_OF_TIME}) {
    TestRewardModel model(replicated("queue", 2, "serve"), {contributions(type, {1.0, 2.0}, 0.1)});
    const TestNode& node = afterOneStep(model);
    EXPECT_EQ(node.TotalReward, 3.0 * 0.1) << type;
    EXPECT_EQ(node.TotalRewardSqr, 0.9) << type;
  }
}

TEST(RewardOrderTest, TheFractionComesToTheSumAndNotToEachWorker) {
  // 0.1 times 9 is the double 0.9; 0.1 times 2 and 0.1 times 7 add up to its successor.
  ASSERT_NE(0.9, 0.1 * 2.0 + 0.1 * 7.0);
  TestRewardModel model(replicated("queue", 2, "serve"), {contributions(INTERVAL_OF_TIME, {2.0, 7.0}, 0.1)});
  EXPECT_EQ(afterOneStep(model).TotalReward, 0.9);
}

/// Fires "serve" in each queue, at 1, 2 and so on, and ends the batch.
TestNode& afterAFiringInEachQueue(TestRewardModel& model) {
  model.ConsiderOnly(nullptr, 0);
  const int queues = static_cast<int>(model.top().children.size());
  for (int queue = 0; queue < queues; ++queue) {
    model.step(model.actionOf(queue), queue + 1.0);
  }
  model.endBatch();
  return model.node();
}

TEST(RewardOrderTest, TheImpulsesAreAddedUpBeforeTheyJoinTheRateReward) {
  const auto ones = [](TestNode& node) { node.addImpulse("serve", "queue"); };
  // The instant takes its rate reward once: 2^53 and two impulses of 1, which one by one would be lost.
  TestRewardModel two(replicated("queue", 2, "serve"), {contributions(INSTANT_OF_TIME, {kLarge, 0.0}, 1.0, ones)});
  EXPECT_EQ(afterAFiringInEachQueue(two).TotalReward, kLarge + 2.0);
  // The square of 2^27 is 2^54, where doubles are 4 apart: four squares of 1.
  TestRewardModel four(replicated("queue", 4, "serve"),
                       {contributions(INSTANT_OF_TIME, {std::ldexp(1.0, 27), 0.0, 0.0, 0.0}, 1.0, ones)});
  EXPECT_EQ(afterAFiringInEachQueue(four).TotalRewardSqr, 2.0 * kLarge + 4.0);
}

TEST(RewardOrderTest, TheImpulsesOfTheWorkersAreAddedInTheirOrder) {
  const auto impulsesOf = [](std::vector<double> each) {
    return variable("impulses", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 1}, [=](TestNode& node) {
      node.addImpulse("serve", "queue", 1, false, [each](const TestImpulse& worker, double) {
        return each[static_cast<std::size_t>(worker.WorkerNumber)];
      });
    });
  };
  TestRewardModel largestFirst(replicated("queue", 3, "serve"), {impulsesOf({kLarge, 1.0, 1.0})});
  EXPECT_EQ(afterAFiringInEachQueue(largestFirst).TotalReward, kLarge);
  TestRewardModel largestLast(replicated("queue", 3, "serve"), {impulsesOf({1.0, 1.0, kLarge})});
  EXPECT_EQ(afterAFiringInEachQueue(largestLast).TotalReward, kLarge + 2.0);
}

/// Two models "a" and three "b", each with a mark and the action "serve".
std::unique_ptr<TestModel> twoAndThree() {
  auto top = std::make_unique<TestModel>("top");
  for (const char* const name : {"a", "a", "b", "b", "b"}) {
    top->addChild(name).addMarkAndAction("serve");
  }
  return top;
}

TEST(RewardOrderTest, AnActionNamesEveryRateWorkerThatItsModelTakesPartIn) {
  const TestRewardModel model(
      twoAndThree(),
      {variable("pairs", INTERVAL_OF_TIME, {{0.0, 1.0}}, {.models = 2, .variables = 2}, [](TestNode& node) {
        node.AddVariableDependency("mark", "a");
        node.AddVariableDependency("mark", "b");
        node.makeWorker = [] { return new support::MarkWorker<IntervalOfTimeWorker>(2); };
      })});
  const auto workersOf = [&](int child) { return itemsOf(model.actionOf(child).AffectedRateWorkers[0]); };
  EXPECT_THAT(workersOf(0), ElementsAre(0, 1, 2));
  EXPECT_THAT(workersOf(1), ElementsAre(3, 4, 5));
  EXPECT_THAT(workersOf(2), ElementsAre(0, 3));
  EXPECT_THAT(workersOf(3), ElementsAre(1, 4));
  EXPECT_THAT(workersOf(4), ElementsAre(2, 5));
}

TEST(RewardOrderTest, AFiringAsksItsImpulsesInOrderAndOfEachTheWorkersInOrder) {
  // Each impulse has 6 workers, cut into a block of 3 for each "a".
  std::vector<std::pair<int, int>> asked;
  const auto noting = [&asked](const TestImpulse& worker, double) {
    asked.emplace_back(worker.ImpulseNumber, worker.WorkerNumber);
    return 1.0;
  };
  TestRewardModel model(twoAndThree(),
                        {variable("both", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 2}, [&](TestNode& node) {
                          for (int i = 0; i < 2; ++i) {
                            TestImpulse& impulse = node.addImpulse("serve", "a", 2, false, noting);
                            node.AddImpulseModelDependency("b", &impulse);
                          }
                        })});
  model.ConsiderOnly(nullptr, 0);
  model.step(model.actionOf(0), 1.0);
  EXPECT_TRUE(asked.empty()) << "a firing's impulses are taken with the next step";
  model.step(model.actionOf(1), 2.0);
  EXPECT_THAT(asked, ElementsAre(Pair(0, 0), Pair(0, 1), Pair(0, 2), Pair(1, 0), Pair(1, 1), Pair(1, 2)));
  asked.clear();
  model.endBatch();
  EXPECT_THAT(asked, ElementsAre(Pair(0, 3), Pair(0, 4), Pair(0, 5), Pair(1, 3), Pair(1, 4), Pair(1, 5)));
}

TEST(RewardOrderTest, TheTimeOfAFiringIsToldBeforeTheActionFires) {
  class TimeReader : public TestAction {
   public:
    TimeReader() : TestAction("read") {}
    BaseActionClass* Fire() override {
      seen = BaseModelClass::LastActionTime;
      return TestAction::Fire();
    }
    double seen = -1.0;
  };
  auto top = replicated("queue", 1, "serve");
  TimeReader& reader = top->addAction<TimeReader>();
  TestRewardModel model(std::move(top), {});
  model.FireAction(&reader, 4.25);
  EXPECT_EQ(reader.seen, 4.25);
}

TEST(RewardOrderTest, ASteadyStateWindowMovesOnByTheLengthThatItHadAtFirst) {
  TestRewardModel model(replicated("queue", 1, "serve"), {variable("load", STEADY_STATE, {{10.0, 20.0}}, {})});
  TestNode& node = model.node();
  node.Type = steady_state;
  node.Start = 17.0;  // as whoever skips a transient may do
  node.Reset();
  EXPECT_EQ(node.Start, 20.0);
  EXPECT_EQ(node.Stop, 30.0);
}

}  // namespace
