#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "Performance_Variables/InstantOfTimeWorker.h"
#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/RewardKit.h"
#include "Performance_Variables/SteadyStateWorker.h"
#include "Performance_Variables/TimeAveragedIntervalOfTimeWorker.h"
#include "support/CapturedOutput.h"

namespace {

using support::TestModel;

/// A worker of a kind with a given rate, which counts how often it was asked.
template <class Kind>
class ConstantWorker : public Kind {
 public:
  ConstantWorker(double theRate, support::Window window) : rate(theRate) {
    this->Start = window.start;
    this->Stop = window.stop;
  }

  double Reward_Function() override {
    ++evaluations;
    return rate;
  }

  double rate;
  int evaluations = 0;
};

/// A worker that overrides no more than it must.
class BareWorker : public PerformanceVariableWorker {
 public:
  double Reward_Function() override { return 1.0; }
  void Accumulate(double, double) override {}
};

TEST(PerformanceVariableWorkerTest, ANewWorkerIsUnnamedAndUnfixed) {
  const BareWorker worker;
  EXPECT_EQ(worker.TheModelPtr, nullptr);
  EXPECT_EQ(worker.NumModels, 0);
  EXPECT_EQ(worker.lastQualification, 0);
  EXPECT_EQ(worker.Name, nullptr);
  EXPECT_EQ(worker.Number, -1);
  EXPECT_EQ(worker.id, -1);
  EXPECT_EQ(worker.Reward, 0.0);
  EXPECT_EQ(worker.RewardSqr, 0.0);
}

TEST(PerformanceVariableWorkerTest, DefineNameKeepsACopyAndTheNumber) {
  BareWorker worker;
  std::string name = "load";
  worker.DefineName(name.c_str(), 3);
  name = "xxxx";
  EXPECT_STREQ(worker.Name, "load");
  EXPECT_EQ(worker.Number, 3);
  worker.DefineName("work", 4);
  EXPECT_STREQ(worker.Name, "work");
}

TEST(PerformanceVariableWorkerTest, ResetClearsTheRewardAndItsSquareAndNothingElse) {
  BareWorker worker;
  worker.Reward = 2.0;
  worker.RewardSqr = 4.0;
  worker.RewardFraction = 0.25;
  worker.Start = 1.0;
  worker.Stop = 5.0;
  worker.Reset();
  EXPECT_EQ(worker.Reward, 0.0);
  EXPECT_EQ(worker.RewardSqr, 0.0);
  EXPECT_EQ(worker.RewardFraction, 0.25);
  EXPECT_EQ(worker.Start, 1.0);
  EXPECT_EQ(worker.Stop, 5.0);
}

TEST(PerformanceVariableWorkerTest, TheBaseComplainsWhenAskedForTheCurrentReward) {
  BareWorker worker;
  worker.Reward = 2.0;
  EXPECT_EQ(support::standardErrorOf([&] { worker.CurrentReward(); }),
            "!! Calling PerformanceVariableWorker::CurrentReward()\n");
  EXPECT_EQ(worker.Reward, 2.0);
}

TEST(RateRewardWorkerTest, ItsSlotsPointAtFieldsOfItsOwnUntilTheDerivedClassMovesThem) {
  TestModel first("a");
  TestModel second("b");
  first.addVariable("mark").value = 3;
  second.addVariable("mark").value = 8;
  support::MarkWorker<IntervalOfTimeWorker> worker(2);
  ASSERT_EQ(worker.NumModels, 2);
  *worker.TheModelPtr[0] = &first;
  *worker.TheModelPtr[1] = &second;
  EXPECT_EQ(worker.Reward_Function(), 3.0);
  BaseModelClass* field = &second;
  worker.TheModelPtr[0] = &field;
  EXPECT_EQ(worker.Reward_Function(), 8.0);
}

TEST(RateRewardWorkerTest, AWorkerOfAnyKindHasNoModelsUnlessItIsGivenTheirNumber) {
  EXPECT_EQ(ConstantWorker<InstantOfTimeWorker>(3.0, {0.0, 10.0}).NumModels, 0);
  EXPECT_EQ(ConstantWorker<IntervalOfTimeWorker>(3.0, {0.0, 10.0}).NumModels, 0);
  EXPECT_EQ(ConstantWorker<TimeAveragedIntervalOfTimeWorker>(3.0, {0.0, 10.0}).NumModels, 0);
  EXPECT_EQ(ConstantWorker<SteadyStateWorker>(3.0, {0.0, 10.0}).NumModels, 0);
}

TEST(RateRewardWorkerTest, EveryKindAnswersTheCurrentRewardWithTheFunctionAndItsSquare) {
  const auto check = [](auto&& worker) {
    worker.CurrentReward();
    EXPECT_EQ(worker.Reward, 3.0);
    EXPECT_EQ(worker.RewardSqr, 9.0);
  };
  check(ConstantWorker<InstantOfTimeWorker>(3.0, {0.0, 10.0}));
  check(ConstantWorker<IntervalOfTimeWorker>(3.0, {0.0, 10.0}));
  check(ConstantWorker<TimeAveragedIntervalOfTimeWorker>(3.0, {0.0, 10.0}));
}

TEST(InstantOfTimeWorkerTest, ItDoesNotAskForTheValueBeforeTheInstant) {
  ConstantWorker<InstantOfTimeWorker> worker(3.0, {10.0, 10.0});
  worker.Accumulate(std::nextafter(10.0, 0.0), 8.0);
  EXPECT_EQ(worker.evaluations, 0);
  EXPECT_EQ(worker.Reward, 0.0);
}

TEST(InstantOfTimeWorkerTest, TheValueIsTakenAtTheInstantAndPastItWithFractionOne) {
  ConstantWorker<InstantOfTimeWorker> worker(3.0, {10.0, 10.0});
  worker.Accumulate(10.0, 8.0);
  EXPECT_EQ(worker.Reward, 3.0);
  worker.rate = -4.0;
  worker.Accumulate(12.0, 10.0);
  EXPECT_EQ(worker.Reward, -4.0);
  EXPECT_EQ(worker.RewardSqr, 16.0);
  EXPECT_EQ(worker.RewardFraction, 1.0);
}

TEST(IntervalOfTimeWorkerTest, AStepInsideTheWindowGivesRateTimesLength) {
  ConstantWorker<IntervalOfTimeWorker> worker(3.0, {0.0, 10.0});
  worker.Accumulate(6.5, 4.0);
  EXPECT_EQ(worker.Reward, 7.5);
  EXPECT_EQ(worker.RewardSqr, 56.25);
  EXPECT_EQ(worker.RewardFraction, 1.0);
}

TEST(IntervalOfTimeWorkerTest, OnlyThePartOfAStepInTheWindowCounts) {
  ConstantWorker<IntervalOfTimeWorker> worker(2.0, {4.0, 10.0});
  worker.Accumulate(5.0, 1.0);
  EXPECT_EQ(worker.Reward, 2.0);  // from 4 to 5
  worker.Accumulate(12.0, 9.0);
  EXPECT_EQ(worker.Reward, 2.0);  // from 9 to 10
  worker.Accumulate(20.0, 1.0);
  EXPECT_EQ(worker.Reward, 12.0);  // the whole window
}

TEST(IntervalOfTimeWorkerTest, AStepWithoutAPartInTheWindowGivesZeroWithoutAskingForTheRate) {
  ConstantWorker<IntervalOfTimeWorker> worker(2.0, {4.0, 10.0});
  worker.Reward = 5.0;
  worker.Accumulate(4.0, 1.0);  // ends where the window starts
  EXPECT_EQ(worker.Reward, 0.0);
  worker.Accumulate(15.0, 10.0);  // starts where the window ends
  EXPECT_EQ(worker.Reward, 0.0);
  worker.Accumulate(7.0, 7.0);  // two firings at one time
  EXPECT_EQ(worker.Reward, 0.0);
  EXPECT_EQ(worker.evaluations, 0);
}

TEST(TimeAveragedWorkerTest, ItsStepIsTheIntervalsAndItsFractionOneOverTheWindow) {
  ConstantWorker<TimeAveragedIntervalOfTimeWorker> worker(3.0, {2.0, 10.0});
  worker.Accumulate(6.0, 0.0);
  EXPECT_EQ(worker.Reward, 12.0);
  EXPECT_EQ(worker.RewardSqr, 144.0);
  EXPECT_EQ(worker.RewardFraction, 0.125);
}

TEST(TimeAveragedWorkerTest, AWindowWithoutLengthGivesZeroAndAFiniteFraction) {
  ConstantWorker<TimeAveragedIntervalOfTimeWorker> worker(3.0, {5.0, 5.0});
  worker.Accumulate(8.0, 1.0);
  EXPECT_EQ(worker.Reward * worker.RewardFraction, 0.0);
  EXPECT_EQ(worker.evaluations, 0);
}

/// A window that moves on by its length at each reset, as a steady-state worker's would.
class SlidingWorker : public ConstantWorker<TimeAveragedIntervalOfTimeWorker> {
 public:
  using ConstantWorker::ConstantWorker;

  void Reset() override {
    ConstantWorker::Reset();
    const double length = Stop - Start;
    Start = Stop;
    Stop += length;
  }
};

TEST(TimeAveragedWorkerTest, ADerivedClassMaySlideTheWindowAtReset) {
  SlidingWorker worker(3.0, {0.0, 4.0});
  worker.Accumulate(5.0, 1.0);
  EXPECT_EQ(worker.Reward, 9.0);  // from 1 to 4
  worker.Reset();
  worker.Accumulate(6.0, 1.0);
  EXPECT_EQ(worker.Reward, 6.0);  // from 4 to 6
  EXPECT_EQ(worker.RewardFraction, 0.25);
}

}  // namespace
