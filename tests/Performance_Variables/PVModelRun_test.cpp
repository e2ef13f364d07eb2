#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/RewardKit.h"
#include "support/AllocationCounter.h"
#include "support/CapturedOutput.h"

namespace {

using support::DebugLevelGuard;
using support::firingsVariable;
using support::markVariable;
using support::MarkWorker;
using support::replicated;
using support::standardOutputOf;
using support::TestAction;
using support::TestImpulse;
using support::TestModel;
using support::TestNode;
using support::TestRewardModel;
using support::variable;
using testing::ElementsAre;
using testing::HasSubstr;

/// A reward model over two queues with a count of firings and the integral of the marks.
class PVModelRunTest : public testing::Test {
 protected:
  static std::vector<TestRewardModel::MakeNode> variables() {
    return {firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue"),
            markVariable<IntervalOfTimeWorker>("marks", INTERVAL_OF_TIME, {0.0, 8.0}, "queue")};
  }
  TestNode& firings() { return model.node(0); }
  TestNode& marks() { return model.node(1); }

  TestRewardModel model{replicated("queue", 2, "serve"), variables()};
};

TEST_F(PVModelRunTest, FiringRecordsTheTimeAndTheActionThatReallyFired) {
  TestAction& group = model.actionOf(0);
  group.reallyFired = &model.actionOf(1);
  EXPECT_EQ(model.FireAction(&group, 2.5), &model.actionOf(1));
  EXPECT_EQ(group.firings, 1);
  EXPECT_EQ(model.LastAction, &model.actionOf(1));
  EXPECT_EQ(BaseModelClass::LastActionTime, 2.5);
}

TEST_F(PVModelRunTest, ANodeThatDoesNotTakePartNeverSeesTime) {
  const int only[] = {1};
  model.ConsiderOnly(only, 1);
  model.step(model.actionOf(0), 2.0);
  model.step(model.actionOf(0), 20.0);
  model.EndAccumulate(30.0);
  EXPECT_EQ(firings().Accumulating, acc_later);
  EXPECT_EQ(firings().TotalReward, 0.0);
  EXPECT_EQ(marks().Accumulating, acc_done);
  EXPECT_EQ(marks().TotalReward, 6.0);
}

TEST_F(PVModelRunTest, EveryStepSeesTheStateSinceThePreviousFiring) {
  model.ConsiderOnly(nullptr, 0);
  model.step(model.actionOf(0), 1.0);  // marks 0 before
  model.step(model.actionOf(1), 3.0);  // marks 1 from 1 to 3
  EXPECT_EQ(marks().TotalReward, 2.0);
  model.step(model.actionOf(1), 4.0);  // marks 2 from 3 to 4
  EXPECT_EQ(marks().TotalReward, 4.0);
  model.endBatch();  // marks 3 from 4 to 8
  EXPECT_EQ(marks().TotalReward, 16.0);
  EXPECT_EQ(firings().TotalReward, 3.0);
}

TEST_F(PVModelRunTest, ANodeIsDrivenAtEveryRelevantEntryInOrder) {
  std::vector<int> order;
  const auto noting = [&](int number) {
    return variable("noting", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 1}, [&order, number](TestNode& node) {
      node.addImpulse("serve", "queue", 1, false, [&order, number](const TestImpulse&, double) {
        order.push_back(number);
        return 1.0;
      });
    });
  };
  TestRewardModel noted(replicated("queue", 1, "serve"), {noting(0), noting(1), noting(2)});
  const int chosen[] = {2, 0};
  noted.ConsiderOnly(chosen, 2);
  noted.step(noted.actionOf(0), 1.0);
  noted.Accumulate(2.0);
  EXPECT_THAT(order, ElementsAre(2, 0));
}

TEST_F(PVModelRunTest, TheEndOfABatchTouchesOnlyNodesThatAreStillOpen) {
  model.ConsiderOnly(nullptr, 0);
  model.step(model.actionOf(0), 2.0);
  model.step(model.actionOf(0), 9.0);  // past the second window, inside the first
  ASSERT_EQ(marks().Accumulating, acc_done);
  ASSERT_EQ(firings().Accumulating, acc_now);
  const double closed = marks().TotalReward;
  model.endBatch();
  EXPECT_EQ(marks().TotalReward, closed);
  EXPECT_EQ(firings().TotalReward, 2.0);
  EXPECT_EQ(firings().Accumulating, acc_done);
}

TEST_F(PVModelRunTest, AWindowBeginsAndEndsAtItsTimesThoughNoActionEarnsAnImpulse) {
  TestRewardModel quiet(replicated("queue", 1, "serve"), {firingsVariable("early", {{1.0, 4.0}}, "serve", "queue"),
                                                          firingsVariable("late", {{3.0, 6.0}}, "serve", "queue")});
  quiet.ConsiderOnly(nullptr, 0);
  const auto statesAt = [&quiet](double time) {
    quiet.Accumulate(time);
    return std::vector<int>{quiet.node(0).Accumulating, quiet.node(1).Accumulating};
  };
  EXPECT_THAT(statesAt(0.5), ElementsAre(acc_later, acc_later));
  EXPECT_THAT(statesAt(1.0), ElementsAre(acc_now, acc_later));
  EXPECT_THAT(statesAt(2.0), ElementsAre(acc_now, acc_later));
  EXPECT_THAT(statesAt(3.0), ElementsAre(acc_now, acc_now));
  EXPECT_THAT(statesAt(4.0), ElementsAre(acc_now, acc_now));
  EXPECT_THAT(statesAt(4.5), ElementsAre(acc_done, acc_now));
  EXPECT_THAT(statesAt(6.0), ElementsAre(acc_done, acc_now));
  EXPECT_THAT(statesAt(6.5), ElementsAre(acc_done, acc_done));
  quiet.PVReset();
  EXPECT_THAT(statesAt(1.5), ElementsAre(acc_now, acc_later));
}

TEST_F(PVModelRunTest, ARateRewardIsTakenInItsWindowAloneWhateverTheOtherWindowsAre) {
  TestRewardModel windows(replicated("queue", 1, "serve"),
                          {markVariable<IntervalOfTimeWorker>("early", INTERVAL_OF_TIME, {0.0, 2.0}, "queue"),
                           markVariable<IntervalOfTimeWorker>("late", INTERVAL_OF_TIME, {3.0, 8.0}, "queue")});
  windows.ConsiderOnly(nullptr, 0);
  for (const double time : {1.0, 1.5, 2.5, 2.75, 4.0, 5.0, 7.0}) {
    windows.step(windows.actionOf(0), time);  // each firing adds one to the mark
  }
  // Marks 1 from 1 to 1.5 and 2 from then on; 4 from 3 to 4, as it was since 2.75, 5 to 5, 6 to 7 and 7 to 8.
  EXPECT_EQ(windows.node(0).TotalReward, 0.5 * 1.0 + 0.5 * 2.0);
  windows.EndAccumulate(8.0);
  EXPECT_EQ(windows.node(1).TotalReward, 4.0 + 5.0 + 2.0 * 6.0 + 7.0);
}

TEST_F(PVModelRunTest, AStepBackToBeforeAWindowIsNoPartOfIt) {
  TestRewardModel windows(replicated("queue", 1, "serve"),
                          {markVariable<IntervalOfTimeWorker>("late", INTERVAL_OF_TIME, {3.0, 8.0}, "queue")});
  windows.ConsiderOnly(nullptr, 0);
  windows.step(windows.actionOf(0), 1.0);
  windows.step(windows.actionOf(0), 4.0);
  const double before = windows.node(0).WorkerList[0]->Reward;
  EXPECT_EQ(before, 1.0);   // mark 1 from 3 to 4
  windows.Accumulate(2.0);  // an activity with a negative delay takes the time back
  EXPECT_EQ(windows.node(0).WorkerList[0]->Reward, before);
  windows.Accumulate(5.0);
  EXPECT_EQ(windows.node(0).WorkerList[0]->Reward, 2.0);  // mark 2 from 4 to 5
}

TEST_F(PVModelRunTest, ANodeThatWasResetAloneIsLookedAtAgain) {
  model.ConsiderOnly(nullptr, 0);
  model.Accumulate(4.0);
  ASSERT_EQ(firings().Accumulating, acc_now);
  firings().Reset();
  model.WindowsMoved();
  model.Accumulate(5.0);
  EXPECT_EQ(firings().Accumulating, acc_now);
}

TEST_F(PVModelRunTest, ABatchAfterAResetGivesTheSameTotals) {
  model.ConsiderOnly(nullptr, 0);
  std::vector<char> start(static_cast<std::size_t>(model.StateSize()));
  model.CurrentState(start.data());
  for (int batch = 0; batch < 3; ++batch) {
    model.step(model.actionOf(0), 1.0);
    model.step(model.actionOf(1), 3.0);
    model.endBatch();
    EXPECT_EQ(firings().TotalReward, 2.0) << "batch " << batch;
    EXPECT_EQ(marks().TotalReward, 12.0) << "batch " << batch;
    model.SetState(start.data());
    model.PVReset();
    EXPECT_EQ(firings().TotalReward, 0.0);
    EXPECT_EQ(marks().TotalReward, 0.0);
  }
}

TEST_F(PVModelRunTest, AResetForgetsTheLastFiring) {
  model.ConsiderOnly(nullptr, 0);
  model.step(model.actionOf(0), 4.0);
  model.PVReset();
  EXPECT_EQ(model.LastAction, &model.ZeroImpulseAction);
  EXPECT_EQ(BaseModelClass::LastActionTime, 0.0);
}

TEST_F(PVModelRunTest, AResetReachesAllNodesThatTimeHasReachedRelevantOrNot) {
  firings().Accumulating = acc_now;
  firings().TotalReward = 3.0;
  marks().Accumulating = acc_done;
  marks().TotalReward = 4.0;
  model.PVReset();
  EXPECT_EQ(firings().Accumulating, acc_later);
  EXPECT_EQ(firings().TotalReward, 0.0);
  EXPECT_EQ(marks().Accumulating, acc_later);
  EXPECT_EQ(marks().TotalReward, 0.0);
}

TEST_F(PVModelRunTest, AResetLeavesNodesAloneThatTimeHasNotReached) {
  firings().Accumulating = acc_later;
  firings().TotalReward = 3.0;
  marks().Accumulating = acc_ignore;
  marks().TotalReward = 4.0;
  model.PVReset();
  EXPECT_EQ(firings().TotalReward, 3.0);
  EXPECT_EQ(marks().TotalReward, 4.0);
  EXPECT_EQ(marks().Accumulating, acc_ignore);
}

TEST_F(PVModelRunTest, SteadyStateResetsAndPutsSteadyNodesInsideTheirWindow) {
  firings().Type = steady_state;
  firings().Accumulating = acc_done;
  firings().TotalReward = 3.0;
  marks().Accumulating = acc_done;
  model.SteadyState();
  EXPECT_EQ(firings().Accumulating, acc_now);
  EXPECT_EQ(firings().TotalReward, 0.0);
  EXPECT_EQ(firings().Start, 10.0);
  EXPECT_EQ(marks().Accumulating, acc_later);
  EXPECT_EQ(model.LastAction, &model.ZeroImpulseAction);
}

TEST_F(PVModelRunTest, AStepAllocatesNothing) {
  model.ConsiderOnly(nullptr, 0);
  model.step(model.actionOf(0), 0.5);
  const std::size_t before = support::allocations();
  for (int i = 1; i <= 20; ++i) {
    model.step(model.actionOf(i % 2), 0.5 * i);
  }
  model.endBatch();
  model.PVReset();
  EXPECT_EQ(support::allocations(), before);
}

TEST_F(PVModelRunTest, ItGivesBackAllThatItMade) {
  const auto makeAndRun = [] {
    TestRewardModel used(replicated("queue", 2, "serve"), variables());
    used.ConsiderOnly(nullptr, 0);
    used.step(used.actionOf(0), 0.5);
    used.endBatch();
    used.PVReset();
  };
  EXPECT_EQ(support::leftBehindBy(makeAndRun), 0U);
}

// State-space entries.

TEST_F(PVModelRunTest, FiringInAStateTakesItsRewardsAndWritesTheNewImage) {
  model.ConsiderOnly(nullptr, 0);
  TestAction& action = model.actionOf(1);
  action.reallyFired = &model.actionOf(0);
  std::vector<char> image(static_cast<std::size_t>(model.StateSize()));
  model.FireAction(image.data(), &action);
  EXPECT_EQ(model.LastAction, &action) << "the fired action itself, whatever it returned";
  EXPECT_EQ(firings().TotalImpulse, 1.0);
  EXPECT_EQ(marks().TotalReward, 1.0);
  EXPECT_EQ(model.StateIndexLookup(image.data() + model.ModelStateSize), 2);
  model.child(1).mark().value = 0;
  model.SetState(image.data());
  EXPECT_EQ(model.child(1).mark().value, 1);
}

TEST_F(PVModelRunTest, AgingTakesTheLastActionFromTheImage) {
  model.ConsiderOnly(nullptr, 0);
  std::vector<char> image(static_cast<std::size_t>(model.StateSize()));
  model.FireAction(&model.actionOf(1), 2.0);
  model.CurrentState(image.data());
  model.PVReset();
  model.AgeAction(image.data(), &model.actionOf(0));
  EXPECT_EQ(model.LastAction, &model.actionOf(1));
  EXPECT_EQ(model.actionOf(1).firings, 1);
  EXPECT_EQ(firings().TotalImpulse, 1.0);
  EXPECT_EQ(marks().TotalReward, 1.0);

  model.LastAction = &model.ZeroImpulseAction;
  model.CurrentState(image.data());
  model.AgeAction(image.data(), &model.actionOf(0));
  EXPECT_EQ(model.LastAction, &model.ZeroImpulseAction);
  EXPECT_EQ(firings().TotalImpulse, 0.0);
}

// Debug lines.

TEST_F(PVModelRunTest, AtLevelZeroARunIsSilent) {
  model.ConsiderOnly(nullptr, 0);
  EXPECT_EQ(standardOutputOf([&] {
              model.step(model.actionOf(0), 2.0);
              model.endBatch();
              model.PVReset();
            }),
            "");
}

TEST_F(PVModelRunTest, TheDebugLinesComeAboveTheirLevels) {
  model.ConsiderOnly(nullptr, 0);
  const auto linesAt = [&](int level) {
    const DebugLevelGuard guard(level);
    return standardOutputOf([&] {
      model.step(model.actionOf(0), 2.5);
      model.EndAccumulate(9.0);
    });
  };
  EXPECT_EQ(linesAt(1), "** PV Model firing action\n");
  EXPECT_EQ(linesAt(2),
            "** Accumulation Time = 2.5\n** PV Model firing action\n** Simulator called EndAccumulate at time = 9\n");
  EXPECT_THAT(linesAt(4), HasSubstr("** PVModel::Accumulate(double)\n** Accumulation Time = 2.5\n"));
}

TEST_F(PVModelRunTest, AboveLevelThreeTheStateSpaceEntriesTellThatTheyAreCalled) {
  std::vector<char> image(static_cast<std::size_t>(model.StateSize()));
  const DebugLevelGuard guard(4);
  EXPECT_THAT(standardOutputOf([&] { model.FireAction(image.data(), &model.actionOf(0)); }),
              HasSubstr("** SSG: PVModel::FireAction(void*, BaseActionClass*)\n"));
  EXPECT_THAT(standardOutputOf([&] { model.AgeAction(image.data(), &model.actionOf(0)); }),
              HasSubstr("** SSG: PVModel::AgeAction(void*, BaseActionClass*) = serve\n"));
}

TEST_F(PVModelRunTest, AboveLevelThreeAResetShowsTheNodesByRateRewardOfEveryAction) {
  auto top = replicated("queue", 1, "serve");
  top->addAction("idle");
  TestRewardModel shown(std::move(top), variables());
  const DebugLevelGuard level(4);
  EXPECT_EQ(standardOutputOf([&] { shown.PVReset(); }),
            "Before Remake!\nShowing all action affects lists: \nFor Action: idle\n\tNULL\nFor Action: serve\n\t1\n");
}

}  // namespace
