#include "BaseClasses/BaseActionClass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <type_traits>

#include "support/CapturedOutput.h"
#include "support/FlushWatch.h"
#include "support/TestComposite.h"
#include "support/TestVariable.h"

namespace {

using support::TestComposite;
using support::TestVariable;

static_assert(!std::is_copy_constructible_v<BaseActionClass>);
static_assert(!std::is_copy_assignable_v<BaseActionClass>);
static_assert(std::has_virtual_destructor_v<BaseActionClass>);

/// An action with a number of phases.
class PhasedAction : public BaseActionClass {
 public:
  explicit PhasedAction(double phases) : phases_(phases) {}
  double ErlangParamM() override { return phases_; }

 private:
  double phases_;
};

TEST(BaseActionClassTest, ActionsBuiltOneAfterTheOtherHaveConsecutiveIds) {
  BaseActionClass first;
  BaseActionClass second;
  EXPECT_EQ(second.getID(), first.getID() + 1);
  EXPECT_EQ(first.getMaxID(), second.getID() + 1);
  EXPECT_EQ(BaseActionClass::MaxID, second.getID() + 1);
}

TEST(BaseActionClassTest, TheFirstActionOfAProcessHasTheIdZero) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a fresh process
  EXPECT_EXIT(
      {
        BaseActionClass action;
        std::exit(40 + action.getID());
      },
      testing::ExitedWithCode(40), "");
}

TEST(BaseActionClassTest, AnIdIsNotGivenOutAgainWhenItsActionIsGone) {
  int gone = 0;
  {
    BaseActionClass action;
    gone = action.getID();
  }
  BaseActionClass next;
  EXPECT_EQ(next.getID(), gone + 1);
}

TEST(BaseActionClassTest, ANewActionHasTheDefaultFields) {
  BaseActionClass action;
  EXPECT_STREQ(action.ActionName, "default");
  EXPECT_EQ(action.GroupID, 0);
  EXPECT_EQ(action.ExecutionPolicy, RaceEnabled);
  EXPECT_TRUE(action.Disabled);
  EXPECT_FALSE(action.Reactivation);
  EXPECT_EQ(action.Affects, nullptr);
  EXPECT_FALSE(action.Fired);
  EXPECT_EQ(action.DistributionType, Exponential);
  EXPECT_EQ(action.EventPointer, nullptr);
  EXPECT_EQ(action.FractionComplete, 0.0);
  EXPECT_EQ(action.TheModel, nullptr);
  EXPECT_EQ(action.TotalNumCollected, 0);
  EXPECT_EQ(action.phase, 1);
  EXPECT_EQ(action.AffectedImpulseRewards, nullptr);
  EXPECT_EQ(action.AffectedImpulseWorkers, nullptr);
  EXPECT_EQ(action.NumAffectedImpulseWorkers, nullptr);
  EXPECT_EQ(action.AffectedRateWorkers, nullptr);
  EXPECT_TRUE(action.AffectedNodes.empty());
  EXPECT_TRUE(action.AffectedNodesByRateReward.empty());
  EXPECT_TRUE(action.AffectedNodesByImpulseReward.empty());
  EXPECT_EQ(action.getNumEnablingSVs(), 0);
  EXPECT_EQ(action.getNumAffectedSVs(), 0);
}

TEST(BaseActionClassTest, AnActionWithoutOverridesIsNeverEnabledAndFiresNothing) {
  BaseActionClass action;
  EXPECT_FALSE(action.isSync());
  EXPECT_FALSE(action.Enabled());
  EXPECT_EQ(action.Weight(), 0.0);
  EXPECT_EQ(action.Rate(), 0.0);
  EXPECT_FALSE(action.ReactivationPredicate());
  EXPECT_FALSE(action.ReactivationFunction());
  EXPECT_EQ(action.SampleDistribution(), 0.0);
  EXPECT_EQ(action.ReturnDistributionParameters(), nullptr);
  EXPECT_EQ(action.Fire(), nullptr);
  EXPECT_EQ(action.Rank(), 0);
  EXPECT_FALSE(action.EnablingChange());
  EXPECT_EQ(action.Probability(&action), 1.0);
  EXPECT_EQ(action.Probability(nullptr), 1.0);
  EXPECT_EQ(action.getPrintedAction(), &action);
  EXPECT_EQ(action.ErlangParamM(), 1.0);
}

TEST(BaseActionClassTest, OnlyTheActionItselfIsAMember) {
  BaseActionClass action;
  BaseActionClass other;
  EXPECT_TRUE(action.IsAMember(&action));
  EXPECT_FALSE(action.IsAMember(&other));
  EXPECT_FALSE(action.IsAMember(nullptr));
}

TEST(BaseActionClassTest, InitializingStoresNameGroupDistributionPolicyAndReactivation) {
  BaseActionClass action;
  action.BaseActionClassInitialize("serve", 7, Weibull, RaceAge, 11, 12, true);
  EXPECT_STREQ(action.ActionName, "serve");
  EXPECT_EQ(action.getGroupId(), 7);
  EXPECT_EQ(action.DistributionType, Weibull);
  EXPECT_EQ(action.ExecutionPolicy, RaceAge);
  EXPECT_TRUE(action.Reactivation);
  EXPECT_EQ(action.getNumAffectedSVs(), 0);
  EXPECT_EQ(action.getNumEnablingSVs(), 0);
}

TEST(BaseActionClassTest, TheConstructorWithValuesInitializesAndNumbersTheAction) {
  BaseActionClass before;
  BaseActionClass action("serve", 7, Weibull, RaceAge, 11, 12, true);
  EXPECT_STREQ(action.ActionName, "serve");
  EXPECT_EQ(action.getGroupId(), 7);
  EXPECT_EQ(action.DistributionType, Weibull);
  EXPECT_EQ(action.ExecutionPolicy, RaceAge);
  EXPECT_TRUE(action.Reactivation);
  EXPECT_TRUE(action.Disabled);
  EXPECT_EQ(action.getID(), before.getID() + 1);
}

TEST(BaseActionClassTest, TheNameIsACopy) {
  char name[] = "serve";
  BaseActionClass action;
  action.defineName(name);
  name[0] = 'n';
  EXPECT_STREQ(action.ActionName, "serve");
}

TEST(BaseActionClassTest, AnActionCanBeNamedAfterPartOfItsOwnName) {
  BaseActionClass action;
  action.defineName("train->serve");
  action.defineName(action.ActionName + 7);
  EXPECT_STREQ(action.ActionName, "serve");
}

TEST(BaseActionClassTest, SetGroupIdWritesTheGroup) {
  BaseActionClass action;
  action.setGroupID(3);
  EXPECT_EQ(action.getGroupId(), 3);
  EXPECT_EQ(action.GroupID, 3);
}

TEST(BaseActionClassTest, SetFiredStoresWhetherTheNumberIsNotZero) {
  BaseActionClass action;
  action.SetFired(-2);
  EXPECT_TRUE(action.Fired);
  action.SetFired(0);
  EXPECT_FALSE(action.Fired);
}

/// An action with two leaves, and a composite variable of both.
class ActionVariablesTest : public testing::Test {
 protected:
  TestVariable first{"first", 1};
  TestVariable second{"second", 2};
  TestComposite both{"both", {&first, &second}};
  BaseActionClass action;
};

TEST_F(ActionVariablesTest, TheSameLeafTwiceLeavesOneEntry) {
  action.addEnablingSV(&first);
  action.addEnablingSV(&first);
  action.addAffectedSV(&second);
  action.addAffectedSV(&second);
  ASSERT_EQ(action.getNumEnablingSVs(), 1);
  EXPECT_EQ(action.getEnablingSV(0), &first);
  ASSERT_EQ(action.getNumAffectedSVs(), 1);
  EXPECT_EQ(action.getAffectedSV(0), &second);
}

TEST_F(ActionVariablesTest, OfACompositeVariableTheLeavesAreStored) {
  action.addEnablingSV(&both);
  ASSERT_EQ(action.getNumEnablingSVs(), 2);
  EXPECT_EQ(action.getEnablingSV(0), &first);
  EXPECT_EQ(action.getEnablingSV(1), &second);
  EXPECT_EQ(action.getNumAffectedSVs(), 0);
  action.addAffectedSV(&both);
  ASSERT_EQ(action.getNumAffectedSVs(), 2);
  EXPECT_EQ(action.getAffectedSV(0), &first);
  EXPECT_EQ(action.getAffectedSV(1), &second);
}

TEST_F(ActionVariablesTest, RemovingALeafLeavesTheOtherList) {
  action.addEnablingSV(&both);
  action.addAffectedSV(&both);
  action.removeEnablingSV(&first);
  ASSERT_EQ(action.getNumEnablingSVs(), 1);
  EXPECT_EQ(action.getEnablingSV(0), &second);
  EXPECT_EQ(action.getNumAffectedSVs(), 2);
  action.removeAffectedSV(&second);
  ASSERT_EQ(action.getNumAffectedSVs(), 1);
  EXPECT_EQ(action.getAffectedSV(0), &first);
}

TEST_F(ActionVariablesTest, RemovingACompositeVariableRemovesItsLeaves) {
  action.addEnablingSV(&both);
  action.addAffectedSV(&both);
  action.removeEnablingSV(&both);
  EXPECT_EQ(action.getNumEnablingSVs(), 0);
  EXPECT_EQ(action.getNumAffectedSVs(), 2);
  action.removeAffectedSV(&both);
  EXPECT_EQ(action.getNumAffectedSVs(), 0);
}

TEST_F(ActionVariablesTest, AReplacedVariableKeepsItsPlaceInTheOneList) {
  TestVariable leader{"leader"};
  action.addEnablingSV(&both);
  action.addAffectedSV(&both);
  action.replaceEnablingSV(&first, &leader);
  EXPECT_EQ(action.getEnablingSV(0), &leader);
  EXPECT_EQ(action.getAffectedSV(0), &first);
  action.replaceAffectedSV(&second, &leader);
  EXPECT_EQ(action.getAffectedSV(1), &leader);
  EXPECT_EQ(action.getEnablingSV(1), &second);
}

TEST_F(ActionVariablesTest, ReplacingByAVariableOfTheListMakesNoDuplicate) {
  action.addAffectedSV(&both);
  action.replaceAffectedSV(&first, &second);
  ASSERT_EQ(action.getNumAffectedSVs(), 1);
  EXPECT_EQ(action.getAffectedSV(0), &second);
}

TEST_F(ActionVariablesTest, TheStatesArePrintedInListOrder) {
  action.addAffectedSV(&both);
  action.addEnablingSV(&second);
  std::ostringstream affected;
  std::ostringstream enabling;
  action.printAffectedState(&affected);
  action.printEnablingState(&enabling);
  EXPECT_EQ(affected.str(), "first = 1\nsecond = 2\n");
  EXPECT_EQ(enabling.str(), "second = 2\n");
}

TEST_F(ActionVariablesTest, PrintInfoShowsVariablesAndSettingsAsNumbers) {
  action.BaseActionClassInitialize("serve", 3, Uniform, RaceAge, 0, 0, true);
  action.addEnablingSV(&first);
  action.addAffectedSV(&both);
  EXPECT_EQ(support::standardOutputOf([&] { action.PrintInfo(); }),
            "********* serve**********\n"
            "\n"
            "Enabled by:\n"
            "           first\n"
            "Affects:\n"
            "           first\n"
            "           second\n"
            "Group ID = 3\n"
            "Execution Policy = 2\n"
            "Disabled = 1\n"
            "Reactivation = 1\n"
            "DistributionType = 11\n");
  EXPECT_TRUE(support::isFlushedAtTheEnd(std::cout, [&] { action.PrintInfo(); }));
}

TEST_F(ActionVariablesTest, AnIndexOutsideAListFailsTheListsAssertion) {
  action.addEnablingSV(&first);
  EXPECT_EXIT(action.getEnablingSV(1), testing::KilledBySignal(SIGABRT), support::assertionIn("../List"));
  EXPECT_EXIT(action.getEnablingSV(-1), testing::KilledBySignal(SIGABRT), support::assertionIn("../List"));
  EXPECT_EXIT(action.getAffectedSV(0), testing::KilledBySignal(SIGABRT), support::assertionIn("../List"));
}

TEST(ActionRewardDataTest, RateDataAreOneEmptySetForEachVariable) {
  BaseActionClass action;
  EXPECT_FALSE(action.IsPVRateDSAllocated());
  action.AllocatePVRateDS(3);
  ASSERT_TRUE(action.IsPVRateDSAllocated());
  EXPECT_FALSE(action.IsPVImpulseDSAllocated());
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(action.AffectedRateWorkers[i].empty());
  }
  EXPECT_TRUE(action.AffectedRateWorkers[1].insert(5));
  EXPECT_TRUE(action.AffectedRateWorkers[0].empty());
  action.DeallocatePVRateDS();
}

TEST(ActionRewardDataTest, ImpulseDataAreSetsAndNullArrays) {
  BaseActionClass action;
  EXPECT_FALSE(action.IsPVImpulseDSAllocated());
  action.AllocatePVImpulseDS(3);
  ASSERT_TRUE(action.IsPVImpulseDSAllocated());
  EXPECT_FALSE(action.IsPVRateDSAllocated());
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(action.AffectedImpulseRewards[i].empty());
    EXPECT_EQ(action.AffectedImpulseWorkers[i], nullptr);
    EXPECT_EQ(action.NumAffectedImpulseWorkers[i], nullptr);
  }
  action.DeallocatePVImpulseDS();
}

TEST(ActionRewardDataTest, FreedDataStillLookAllocated) {
  BaseActionClass action;
  action.AllocatePVRateDS(1);
  action.AllocatePVImpulseDS(1);
  action.DeallocatePVRateDS();
  action.DeallocatePVImpulseDS();
  EXPECT_TRUE(action.IsPVRateDSAllocated());
  EXPECT_TRUE(action.IsPVImpulseDSAllocated());
}

TEST(ActionRewardDataTest, DataThatWereNeverMadeCanBeFreed) {
  BaseActionClass action;
  action.DeallocatePVRateDS();
  action.DeallocatePVImpulseDS();
  EXPECT_FALSE(action.IsPVRateDSAllocated());
  EXPECT_FALSE(action.IsPVImpulseDSAllocated());
}

TEST(ActionPhaseTest, AnActionOfThreePhasesIsReadyInTheThird) {
  PhasedAction action(3.0);
  EXPECT_FALSE(action.ReadyToFire());
  action.Age();
  EXPECT_FALSE(action.ReadyToFire());
  action.Age();
  EXPECT_EQ(action.phase, 3);
  EXPECT_TRUE(action.ReadyToFire());
  action.Age();
  EXPECT_FALSE(action.ReadyToFire());
  action.ResetPhase();
  EXPECT_EQ(action.phase, 1);
}

TEST(ActionPhaseTest, ABareActionIsReadyInItsOnlyPhase) {
  BaseActionClass action;
  EXPECT_TRUE(action.ReadyToFire());
}

TEST(ActionPhaseTest, ANumberOfPhasesWithAFractionIsNeverReached) {
  PhasedAction action(2.5);
  int timesReady = 0;
  for (int step = 0; step < 65536; ++step) {  // every value of a 16-bit number
    timesReady += action.ReadyToFire() ? 1 : 0;
    action.Age();
  }
  EXPECT_EQ(action.phase, 1);
  EXPECT_EQ(timesReady, 0);
}

TEST(ActionDestructorTest, ADebugLineIsWrittenAboveLevelThree) {
  const auto destroyAtLevel = [](int level) {
    const support::DebugLevelGuard guard(level);
    return support::standardOutputOf([] { BaseActionClass action; });
  };
  EXPECT_EQ(destroyAtLevel(4), "** BaseActionClassDestructor\n");
  EXPECT_EQ(destroyAtLevel(3), "");
}

TEST(ActionDestructorTest, TheAffectsChainIsLeftAlone) {
  ActionAffectsElement link;
  BaseActionClass affected;
  {
    BaseActionClass action;
    link.Action = &affected;
    action.Affects = &link;
  }
  EXPECT_EQ(link.Action, &affected);
  EXPECT_EQ(link.next, nullptr);
}

TEST(DistributionTest, TheNamesHaveTheirPrintedNumbers) {
  const Distribution inOrder[] = {
      Proprietary,      Exponential,        Deterministic,   Geometric, Weibull,      Normal,   Lognormal,
      Erlang,           Triangular,         Gamma,           Beta,      Uniform,      Binomial, NegativeBinomial,
      HyperExponential, ConditionalWeibull, HypoExponential, Pareto,    Instantaneous};
  int number = 0;
  for (const Distribution distribution : inOrder) {
    EXPECT_EQ(static_cast<int>(distribution), number);
    ++number;
  }
  EXPECT_EQ(number, 19);
}

TEST(ExecutionPolicyTest, TheNamesHaveTheirPrintedNumbers) {
  EXPECT_EQ(static_cast<int>(RaceResampling), 0);
  EXPECT_EQ(static_cast<int>(RaceEnabled), 1);
  EXPECT_EQ(static_cast<int>(RaceAge), 2);
}

}  // namespace
