#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <string>

#include "Performance_Variables/ImpulseNodeClass.h"
#include "Performance_Variables/IntervalOfTimeImpulse.h"
#include "Performance_Variables/RewardKit.h"
#include "support/CapturedOutput.h"
#include "support/FlushWatch.h"

namespace {

using support::TestImpulse;

TEST(ImpulseNodeTest, ANewImpulseIsUnnamedAndUnfixed) {
  const TestImpulse impulse(0);
  EXPECT_EQ(impulse.Name, nullptr);
  EXPECT_EQ(impulse.ContainingModel, nullptr);
  EXPECT_EQ(impulse.WorkerNumber, -1);
  EXPECT_EQ(impulse.ImpulseNumber, -1);
  EXPECT_EQ(impulse.id, -1);
  EXPECT_EQ(impulse.NumberOfModelDependencies, 0);
  EXPECT_EQ(impulse.Impulse, 0.0);
  EXPECT_EQ(impulse.ImpulseSqr, 0.0);
}

TEST(ImpulseNodeTest, DefineNameKeepsACopyAndTheTwoNumbers) {
  TestImpulse impulse(0);
  std::string name = "throughput";
  impulse.DefineName(name.c_str(), 2, 7);
  name = "xxxxxxxxxx";
  EXPECT_STREQ(impulse.Name, "throughput");
  EXPECT_EQ(impulse.ImpulseNumber, 2);
  EXPECT_EQ(impulse.WorkerNumber, 7);
  impulse.DefineName("departures", 0, 1);
  EXPECT_STREQ(impulse.Name, "departures");
}

TEST(ImpulseNodeTest, TheBaseResetClearsTheValueAndItsSquare) {
  TestImpulse impulse(0);
  impulse.Impulse = 3.0;
  impulse.ImpulseSqr = 9.0;
  impulse.ImpulseNodeClass::Reset();
  EXPECT_EQ(impulse.Impulse, 0.0);
  EXPECT_EQ(impulse.ImpulseSqr, 0.0);
}

TEST(ImpulseNodeTest, MinAndMaxChooseTheSecondAmongUnordered) {
  EXPECT_EQ(ImpulseNodeClass::min(1.0, 2.0), 1.0);
  EXPECT_EQ(ImpulseNodeClass::min(2.0, 1.0), 1.0);
  EXPECT_EQ(ImpulseNodeClass::max(1.0, 2.0), 2.0);
  EXPECT_EQ(ImpulseNodeClass::max(2.0, 1.0), 2.0);
  EXPECT_EQ(ImpulseNodeClass::min(std::nan(""), 1.0), 1.0);
  EXPECT_EQ(ImpulseNodeClass::max(std::nan(""), 1.0), 1.0);
}

class IntervalImpulseTest : public testing::Test {
 protected:
  static void setWindow(ImpulseNodeClass& impulse, double start, double stop) {
    impulse.Start = start;
    impulse.Stop = stop;
  }

  TestImpulse impulse{0};
};

TEST_F(IntervalImpulseTest, ItStartsPlainAndBeforeItsWindow) {
  EXPECT_FALSE(impulse.TimeAveraged);
  EXPECT_EQ(impulse.Accumulating, acc_later);
  EXPECT_TRUE(TestImpulse(0, true).TimeAveraged);
}

TEST_F(IntervalImpulseTest, FiringsAtBothEndsOfTheWindowCount) {
  setWindow(impulse, 2.0, 5.0);
  impulse.Accumulate(3.0, 2.0);
  EXPECT_EQ(impulse.Impulse, 1.0);
  impulse.Accumulate(9.0, 5.0);
  EXPECT_EQ(impulse.Impulse, 2.0);
}

TEST_F(IntervalImpulseTest, FiringsOutsideTheWindowDoNotCountWhateverTheStepsTime) {
  setWindow(impulse, 2.0, 5.0);
  impulse.Accumulate(3.0, std::nextafter(2.0, 0.0));
  impulse.Accumulate(4.0, std::nextafter(5.0, 9.0));
  EXPECT_EQ(impulse.Impulse, 0.0);
}

TEST_F(IntervalImpulseTest, TheFunctionIsGivenTheFiringsTime) {
  TestImpulse timed(0, false, [](const TestImpulse&, double time) { return time; });
  setWindow(timed, 0.0, 10.0);
  timed.Accumulate(8.0, 2.5);
  timed.Accumulate(9.0, 8.0);
  EXPECT_EQ(timed.Impulse, 10.5);
}

TEST_F(IntervalImpulseTest, ItCountsFromZeroAfterAReset) {
  setWindow(impulse, 0.0, 10.0);
  impulse.Accumulate(2.0, 1.0);
  impulse.Accumulate(3.0, 2.0);
  impulse.Reset();
  EXPECT_EQ(impulse.Impulse, 0.0);
  impulse.Accumulate(4.0, 3.0);
  EXPECT_EQ(impulse.Impulse, 1.0);
}

TEST_F(IntervalImpulseTest, ResetLeavesTheSquareAlone) {
  impulse.ImpulseSqr = 4.0;
  impulse.Accumulating = acc_now;
  impulse.Reset();
  EXPECT_EQ(impulse.ImpulseSqr, 4.0);
  EXPECT_EQ(impulse.Accumulating, acc_later);
}

TEST_F(IntervalImpulseTest, TheEndOfABatchDividesATimeAveragedSumByTheCoveredWindow) {
  TestImpulse averaged(0, true);
  setWindow(averaged, 0.0, 10.0);
  averaged.Impulse = 5.0;
  averaged.completeAccumulation(20.0);
  EXPECT_EQ(averaged.Impulse, 0.5);
  averaged.Impulse = 5.0;
  averaged.completeAccumulation(5.0);
  EXPECT_EQ(averaged.Impulse, 1.0);
}

TEST_F(IntervalImpulseTest, AnEmptyAveragingWindowDividesByZero) {
  TestImpulse averaged(0, true);
  setWindow(averaged, 3.0, 10.0);
  averaged.Impulse = 5.0;
  averaged.completeAccumulation(3.0);
  EXPECT_TRUE(std::isinf(averaged.Impulse));
}

TEST_F(IntervalImpulseTest, TheEndOfABatchLeavesAPlainSumAlone) {
  setWindow(impulse, 0.0, 10.0);
  impulse.Impulse = 5.0;
  impulse.completeAccumulation(20.0);
  EXPECT_EQ(impulse.Impulse, 5.0);
}

TEST_F(IntervalImpulseTest, TheCurrentImpulseReplacesTheSum) {
  TestImpulse timed(0, false, [](const TestImpulse&, double time) { return time + 7.0; });
  timed.Impulse = 5.0;
  timed.CurrentImpulse();
  EXPECT_EQ(timed.Impulse, 7.0);
  EXPECT_EQ(timed.ImpulseSqr, 0.0);
}

TEST_F(IntervalImpulseTest, AboveLevelThreeItTellsItsStateBeforeTheStep) {
  setWindow(impulse, 0.0, 10.0);
  impulse.DefineName("exits", 1, 4);
  impulse.Impulse = 2.5;
  const support::DebugLevelGuard level(4);
  EXPECT_EQ(support::standardOutputOf([&] { impulse.Accumulate(2.0, 1.0); }),
            "Impulse Name = exits ImpulseNumber: 1 WorkerNumber: 4\nAccumulating = 0\nBefore: Impulse = 2.5\n");
  EXPECT_EQ(support::standardOutputOf([&] { TestImpulse(0).Accumulate(2.0, 1.0); }),
            "Impulse Name =  ImpulseNumber: -1 WorkerNumber: -1\nAccumulating = 0\nBefore: Impulse = 0\n");
  EXPECT_THAT(support::linesHeldBack(std::cout, [&] { TestImpulse(0).Accumulate(2.0, 1.0); }), testing::IsEmpty());
  GlobalDebugLevel = 3;
  EXPECT_EQ(support::standardOutputOf([&] { impulse.Accumulate(3.0, 2.0); }), "");
}

}  // namespace
