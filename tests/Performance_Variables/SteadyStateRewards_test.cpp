#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "BaseClasses/BaseModelClass.h"
#include "Performance_Variables/InstantOfTimeWorker.h"
#include "Performance_Variables/IntervalOfTimeImpulse.h"
#include "Performance_Variables/RewardKit.h"
#include "Performance_Variables/SlidingWindow.h"
#include "Performance_Variables/SteadyStateImpulse.h"
#include "Performance_Variables/SteadyStateWorker.h"

namespace {

using support::markVariable;
using support::replicated;
using support::TestImpulse;
using support::TestNode;
using support::TestRewardModel;

// ---- Window ---------------------------------------------------------------------------------------------------------

TEST(SlidingWindowTest, AWindowMovesOnByItsFirstLength) {
  support::SlidingWindow window;
  double start = 5.0;
  double stop = 15.0;
  EXPECT_EQ(window.batchLength(start, stop), 10.0);
  window.slide(start, stop);
  EXPECT_EQ(start, 15.0);
  EXPECT_EQ(stop, 25.0);
  EXPECT_EQ(window.batchLength(start, stop), 10.0);
}

// ---- Rate worker ----------------------------------------------------------------------------------------------------

class RateWorker : public SteadyStateWorker {
 public:
  RateWorker(double rate, double start, double stop) : rate_(rate) {
    Start = start;
    Stop = stop;
  }
  double Reward_Function() override { return rate_; }

 private:
  double rate_;
};

TEST(SteadyStateWorkerTest, AStepEarnsRateTimesTheTimeInTheWindowAndWeighsOneOverItsLength) {
  RateWorker worker(3.0, 2.0, 10.0);
  worker.Accumulate(6.0, 0.0);
  EXPECT_EQ(worker.Reward, 12.0);  // from 2 to 6
  EXPECT_EQ(worker.RewardFraction, 0.125);
  worker.Accumulate(11.0, 6.0);
  EXPECT_EQ(worker.Reward, 12.0);  // from 6 to 10
  EXPECT_EQ(worker.RewardSqr, 144.0);
}

TEST(SteadyStateWorkerTest, ResetGoesOnToTheNextBatchWithTheSameWeight) {
  RateWorker worker(3.0, 2.0, 10.0);
  worker.Accumulate(11.0, 6.0);
  worker.Reset();
  EXPECT_EQ(worker.Reward, 0.0);
  EXPECT_EQ(worker.RewardSqr, 0.0);
  EXPECT_EQ(worker.Start, 10.0);
  EXPECT_EQ(worker.Stop, 18.0);
  worker.Accumulate(11.0, 6.0);
  EXPECT_EQ(worker.Reward, 3.0);  // from 10 to 11
  EXPECT_EQ(worker.RewardFraction, 0.125);
}

TEST(SteadyStateWorkerTest, ABatchThatIsSkippedKeepsTheWindowInStep) {
  RateWorker worker(3.0, 2.0, 10.0);
  worker.Reset();
  worker.Reset();
  EXPECT_EQ(worker.Start, 18.0);
  EXPECT_EQ(worker.Stop, 26.0);
  worker.Accumulate(100.0, 0.0);
  EXPECT_EQ(worker.Reward * worker.RewardFraction, 3.0);
}

// ---- Impulse --------------------------------------------------------------------------------------------------------

/// Earns `reward(t)` at a firing at t.
class SteadyTestImpulse : public SteadyStateImpulse {
 public:
  using Reward = std::function<double(double)>;

  explicit SteadyTestImpulse(
      Reward reward = [](double) { return 1.0; }, bool isTimeAveraged = false)
      : SteadyStateImpulse(isTimeAveraged), reward_(std::move(reward)) {}

  double Impulse_Function(double time) override { return reward_(time); }

  ImpulseNodeClass** CreateImpulseWorkerList(int count) override {
    for (int i = 0; i < count; ++i) {
      workers_.push_back(std::make_unique<SteadyTestImpulse>(reward_, TimeAveraged));
      list_.push_back(workers_.back().get());
    }
    return list_.data();
  }

 private:
  Reward reward_;
  std::vector<std::unique_ptr<SteadyTestImpulse>> workers_;
  std::vector<ImpulseNodeClass*> list_;
};

/// A worker with the window [4, 12).
class SteadyStateImpulseTest : public testing::Test {
 protected:
  explicit SteadyStateImpulseTest(bool isTimeAveraged = false)
      : worker([](double time) { return 10.0 + time; }, isTimeAveraged) {
    worker.Start = 4.0;
    worker.Stop = 12.0;
  }

  SteadyTestImpulse worker;
};

TEST_F(SteadyStateImpulseTest, AFiringInTheWindowEarnsTheFunctionOfItsTime) {
  worker.Accumulate(7.0, 5.0);
  EXPECT_EQ(worker.Impulse, 15.0);
  worker.Accumulate(9.0, 7.0);
  EXPECT_EQ(worker.Impulse, 32.0);
}

TEST_F(SteadyStateImpulseTest, TheStartBelongsToTheWindowAndTheStopToTheNextOne) {
  worker.Accumulate(5.0, 4.0);
  EXPECT_EQ(worker.Impulse, 14.0);
  worker.Accumulate(13.0, 12.0);
  EXPECT_EQ(worker.Impulse, 14.0);
  worker.Reset();
  EXPECT_EQ(worker.Impulse, 0.0);
  worker.Accumulate(13.0, 12.0);
  EXPECT_EQ(worker.Impulse, 22.0);
}

TEST_F(SteadyStateImpulseTest, AFiringOutsideTheWindowEarnsNothingWhateverTheStepsTime) {
  worker.Accumulate(8.0, 3.5);
  worker.Accumulate(8.0, 12.5);
  EXPECT_EQ(worker.Impulse, 0.0);
}

TEST_F(SteadyStateImpulseTest, TheEndOfATerminatingBatchChangesNothing) {
  worker.Accumulate(7.0, 5.0);
  worker.completeAccumulation(8.0);
  EXPECT_EQ(worker.Impulse, 15.0);
}

TEST_F(SteadyStateImpulseTest, TheCurrentImpulseIsTheFunctionAtZero) {
  worker.Accumulate(7.0, 5.0);
  worker.CurrentImpulse();
  EXPECT_EQ(worker.Impulse, 10.0);
}

class TimeAveragedSteadyStateImpulseTest : public SteadyStateImpulseTest {
 protected:
  TimeAveragedSteadyStateImpulseTest() : SteadyStateImpulseTest(true) {}
};

TEST_F(TimeAveragedSteadyStateImpulseTest, TheSumIsForAUnitOfTimeInEveryBatch) {
  worker.Accumulate(7.0, 5.0);
  worker.Accumulate(9.0, 7.0);
  worker.completeAccumulation(12.0);
  EXPECT_EQ(worker.Impulse, 15.0 / 8.0 + 17.0 / 8.0);
  worker.Reset();
  worker.Accumulate(15.0, 14.0);
  EXPECT_EQ(worker.Impulse, 3.0);
}

// ---- Node -----------------------------------------------------------------------------------------------------------

/// Makes a variable one of steady-state runs.
TestRewardModel::MakeNode steady(TestRewardModel::MakeNode maker) {
  return [maker = std::move(maker)](int timeIndex) {
    auto node = maker(timeIndex);
    node->Type = steady_state;
    return node;
  };
}

/// A variable that earns an impulse of the kind at each firing of "serve" in "queue".
template <class Kind>
class FiringsNode : public PerformanceVariableNode {
 public:
  FiringsNode(double start, double stop) {
    TheModelPtr = &top_;
    Initialize("firings", STEADY_STATE, 1, &start, &stop, 0, 1, 0, 0);
    AddImpulse("serve", "queue", &prototype_);
    Type = steady_state;
  }
  void CreateWorkerList() override {}

 private:
  BaseModelClass* top_ = nullptr;
  Kind prototype_;
};

/// The interval impulse of test models, without model slots.
class IntervalImpulse : public TestImpulse {
 public:
  IntervalImpulse() : TestImpulse(0) {}
};

template <class Kind>
TestRewardModel::MakeNode firings(double start, double stop) {
  return [=](int /*timeIndex*/) { return std::make_unique<FiringsNode<Kind>>(start, stop); };
}

/// Children "queue", each with a mark that its action "serve" raises by one.
class SteadyStateNodeTest : public testing::Test {
 protected:
  void build(int children, std::vector<TestRewardModel::MakeNode> makers) {
    model = std::make_unique<TestRewardModel>(replicated("queue", children, "serve"), std::move(makers));
    model->ConsiderOnly(nullptr, 0);
  }

  [[nodiscard]] PerformanceVariableNode& node() const { return *model->PerformanceVariableList[0]; }

  void fire(int child, double time) { model->step(model->actionOf(child), time); }

  /// Closes the batch as the steady-state loop does, before the next firing. Gives the two totals.
  std::pair<double, double> closeBatch() {
    node().Accumulate(1.0 + node().Stop, BaseModelClass::LastActionTime, model->LastAction);
    EXPECT_EQ(node().Accumulating, acc_done);
    const std::pair<double, double> totals{node().TotalReward, node().TotalRewardSqr};
    node().Reset();
    EXPECT_EQ(node().Accumulating, acc_later);
    return totals;
  }
  double valueOfBatch() { return closeBatch().first; }

  std::unique_ptr<TestRewardModel> model;
};

TEST_F(SteadyStateNodeTest, EachBatchIsTheTimeAverageOverItsOwnWindow) {
  build(1, {steady(markVariable<SteadyStateWorker>("mark", STEADY_STATE, {0.0, 4.0}, "queue"))});
  fire(0, 1.0);
  fire(0, 3.0);
  EXPECT_EQ(valueOfBatch(), (0.0 * 1.0 + 1.0 * 2.0 + 2.0 * 1.0) / 4.0);
  EXPECT_EQ(valueOfBatch(), 2.0) << "[4, 8], in which nothing fired";
  fire(0, 9.0);
  EXPECT_EQ(valueOfBatch(), (2.0 * 1.0 + 3.0 * 3.0) / 4.0);
}

TEST_F(SteadyStateNodeTest, TheTransientEarnsNothing) {
  build(1, {steady(markVariable<SteadyStateWorker>("mark", STEADY_STATE, {2.0, 4.0}, "queue"))});
  fire(0, 1.0);
  EXPECT_EQ(node().Accumulating, acc_later);
  fire(0, 3.0);
  EXPECT_EQ(node().TotalReward, 0.5) << "1 from 2 to 3, over 2";
  EXPECT_EQ(valueOfBatch(), (1.0 + 2.0) / 2.0);
}

/// Each step squares the sum over the workers, and weighs it with one over the length.
TEST_F(SteadyStateNodeTest, TheWorkersOfAVariableAddUp) {
  build(2, {steady(markVariable<SteadyStateWorker>("mark", STEADY_STATE, {0.0, 4.0}, "queue"))});
  fire(0, 1.0);  // marks 1 and 0 from 1 to 2
  fire(1, 2.0);  // marks 1 and 1 from 2 to 4
  const auto [value, square] = closeBatch();
  EXPECT_EQ(value, (1.0 + 2.0 * 2.0) / 4.0);
  EXPECT_EQ(square, (1.0 * 1.0 + 4.0 * 4.0) / 4.0);
}

TEST_F(SteadyStateNodeTest, AnInstantOfTimeWorkerGivesTheValueAtTheEndOfEachBatch) {
  build(1, {steady(markVariable<InstantOfTimeWorker>("mark", INSTANT_OF_TIME, {0.0, 4.0}, "queue"))});
  fire(0, 1.0);
  fire(0, 3.0);
  EXPECT_EQ(valueOfBatch(), 2.0);
  EXPECT_EQ(valueOfBatch(), 2.0);
  fire(0, 8.0);
  fire(0, 9.0);
  fire(0, 10.0);
  EXPECT_EQ(valueOfBatch(), 5.0);
}

TEST_F(SteadyStateNodeTest, AFiringCountsOnceThoughSeveralBatchesCarryIt) {
  build(1, {firings<SteadyTestImpulse>(0.0, 1.0)});
  fire(0, 0.5);
  EXPECT_EQ(valueOfBatch(), 1.0);
  EXPECT_EQ(valueOfBatch(), 0.0);
  EXPECT_EQ(valueOfBatch(), 0.0);
  fire(0, 3.5);  // its step carries the firing at 0.5 once more
  EXPECT_EQ(valueOfBatch(), 1.0);
}

TEST_F(SteadyStateNodeTest, AFiringAtAStopCountsInTheBatchThatBeginsThere) {
  build(1, {firings<SteadyTestImpulse>(0.0, 1.0)});
  fire(0, 0.5);
  EXPECT_EQ(valueOfBatch(), 1.0);  // the loop closes the batch before the firing at 1
  fire(0, 1.0);
  EXPECT_EQ(valueOfBatch(), 1.0);
}

TEST_F(SteadyStateNodeTest, AFiringAtTheEndOfTheTransientCountsInTheFirstBatch) {
  build(1, {firings<SteadyTestImpulse>(1.0, 2.0)});
  fire(0, 0.5);
  fire(0, 1.0);
  fire(0, 1.5);
  EXPECT_EQ(valueOfBatch(), 2.0);
}

TEST_F(SteadyStateNodeTest, EveryInstanceOfTheActionCountsAndTheSquaresAddUp) {
  build(2, {firings<SteadyTestImpulse>(0.0, 10.0)});
  fire(0, 1.0);
  fire(1, 2.0);
  fire(0, 3.0);
  const auto [value, square] = closeBatch();
  EXPECT_EQ(value, 3.0);
  EXPECT_EQ(square, 2.0 * 2.0 + 1.0 * 1.0);
}

/// On purpose: nothing moves the window of an interval impulse. In the second batch the firing at 0.5 is carried again,
/// and lies in the first window; so does one at that window's end.
TEST_F(SteadyStateNodeTest, AnIntervalImpulseCountsInTheFirstWindowOnly) {
  build(1, {firings<IntervalImpulse>(0.0, 1.0)});
  fire(0, 0.5);
  EXPECT_EQ(valueOfBatch(), 1.0);
  fire(0, 1.0);
  EXPECT_EQ(valueOfBatch(), 2.0);
  fire(0, 2.5);
  EXPECT_EQ(valueOfBatch(), 1.0) << "the firing at 1, once more";
  fire(0, 3.5);
  EXPECT_EQ(valueOfBatch(), 0.0);
}

/// 0.1 has no exact binary form: after many additions of it only like additions give like windows.
TEST_F(SteadyStateNodeTest, AfterManyBatchesTheWindowsOfWorkersAreStillThatOfTheirNodeToTheLastBit) {
  build(1, {steady(markVariable<SteadyStateWorker>("mark", STEADY_STATE, {0.3, 0.4}, "queue")),
            firings<SteadyTestImpulse>(0.3, 0.4)});
  const PerformanceVariableWorker& rate = *node().WorkerList[0];
  PerformanceVariableNode& counting = *model->PerformanceVariableList[1];
  const ImpulseNodeClass& impulse = *counting.ImpulseWorkersList[0][0];
  for (int batch = 0; batch < 10000; ++batch) {
    node().Reset();
    counting.Reset();
    ASSERT_EQ(rate.Start, node().Start) << "batch " << batch;
    ASSERT_EQ(rate.Stop, node().Stop) << "batch " << batch;
    ASSERT_EQ(impulse.Start, counting.Start) << "batch " << batch;
    ASSERT_EQ(impulse.Stop, counting.Stop) << "batch " << batch;
  }
}

}  // namespace
