#include "BaseClasses/BaseGroupClass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <cstddef>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "support/CallLog.h"
#include "support/CapturedOutput.h"
#include "support/FlushWatch.h"
#include "support/ScriptedGenerator.h"
#include "support/ScriptedLeaf.h"
#include "support/TestVariable.h"

namespace {

using support::CallLog;
using support::ScriptedGenerator;
using support::ScriptedLeaf;
using support::standardOutputOf;
using testing::ElementsAre;

static_assert(std::is_base_of_v<BaseActionClass, BaseGroupClass>);

/// Shows what is protected.
class OpenGroup : public BaseGroupClass {
 public:
  using BaseGroupClass::ArraySize;
  using BaseGroupClass::BaseGroupClass;
  using BaseGroupClass::enlargeArrays;
};

const std::string kAssertion = support::assertionIn("BaseGroupClass");

/// A group called "group" and leaves that log their calls.
class BaseGroupClassTest : public testing::Test {
 protected:
  BaseGroupClassTest() { group.defineName("group"); }

  /// A new leaf, behind the members of the group.
  ScriptedLeaf& add(const char* name, double weight = 1.0, int rank = 0) { return addTo(group, name, weight, rank); }

  ScriptedLeaf& addTo(BaseGroupClass& target, const char* name, double weight = 1.0, int rank = 0) {
    leaves.push_back(std::make_unique<ScriptedLeaf>(name, weight, rank, &calls));
    target.appendGroup(leaves.back().get());
    return *leaves.back();
  }

  /// The weights of the rows in use.
  std::vector<double> rows() {
    std::vector<double> weights;
    for (int i = 0; i < group.NumSelectableActions; ++i) {
      weights.push_back(group.ActionWeights[i].Weight);
    }
    return weights;
  }

  CallLog calls;
  std::vector<std::unique_ptr<ScriptedLeaf>> leaves;
  OpenGroup group;
};

TEST_F(BaseGroupClassTest, ANewGroupIsEmpty) {
  OpenGroup fresh;
  EXPECT_STREQ(fresh.ActionName, "default");
  EXPECT_EQ(fresh.GroupArray, nullptr);
  EXPECT_EQ(fresh.ActionWeights, nullptr);
  EXPECT_EQ(fresh.SelectedAction, nullptr);
  EXPECT_EQ(fresh.HighestRank, 0);
  EXPECT_EQ(fresh.NumActions, 0);
  EXPECT_EQ(fresh.NumSelectableActions, 0);
  EXPECT_EQ(fresh.ArraySize, 0);
}

TEST_F(BaseGroupClassTest, TheConstructorWithACapacityHasRoomAndNoMembers) {
  OpenGroup roomy("cases", 4, Instantaneous, RaceAge, 0, 0, true, 3);
  EXPECT_STREQ(roomy.ActionName, "cases");
  EXPECT_EQ(roomy.GroupID, 4);
  EXPECT_EQ(roomy.DistributionType, Instantaneous);
  EXPECT_EQ(roomy.ExecutionPolicy, RaceAge);
  EXPECT_TRUE(roomy.Reactivation);
  EXPECT_EQ(roomy.ArraySize, 3);
  EXPECT_EQ(roomy.getNumMembers(), 0);
  EXPECT_NE(roomy.GroupArray, nullptr);
}

TEST_F(BaseGroupClassTest, InitializeGivesRoomAndDropsTheSelection) {
  add("old");
  group.SelectedAction = leaves[0].get();
  group.HighestRank = 5;
  group.NumSelectableActions = 2;
  group.initialize(4, "renamed");
  EXPECT_STREQ(group.ActionName, "renamed");
  EXPECT_EQ(group.ArraySize, 4);
  EXPECT_EQ(group.SelectedAction, nullptr);
  EXPECT_EQ(group.HighestRank, 0);
  EXPECT_EQ(group.NumSelectableActions, 0);
  EXPECT_EQ(group.NumActions, 1) << "the number of members stays as it was";
}

// Members

TEST_F(BaseGroupClassTest, AppendingToAFullGroupAddsExactlyOneEntry) {
  group.initialize(2, "group");
  add("a");
  add("b");
  EXPECT_EQ(group.ArraySize, 2);
  add("c");
  EXPECT_EQ(group.ArraySize, 3);
  ASSERT_EQ(group.getNumMembers(), 3);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(group.getMember(i), leaves[static_cast<std::size_t>(i)].get());
  }
}

TEST_F(BaseGroupClassTest, AppendingDoesNotLookForDuplicates) {
  ScriptedLeaf& a = add("a");
  group.appendGroup(&a);
  ASSERT_EQ(group.getNumMembers(), 2);
  EXPECT_EQ(group.getMember(1), &a);
}

TEST_F(BaseGroupClassTest, AppendMembersTakesTheMembersAndGrowsToExactlyTheirNumber) {
  OpenGroup other;
  addTo(other, "b");
  addTo(other, "c");
  addTo(other, "d");
  ScriptedLeaf& a = add("a");
  group.appendMembers(&other);
  EXPECT_EQ(group.ArraySize, 4);
  ASSERT_EQ(group.getNumMembers(), 4);
  EXPECT_EQ(group.getMember(0), &a);
  EXPECT_EQ(group.getMember(1), other.getMember(0));
  EXPECT_EQ(group.getMember(3), other.getMember(2));
  EXPECT_EQ(other.getNumMembers(), 3);
}

TEST_F(BaseGroupClassTest, AppendMembersKeepsACapacityThatIsEnough) {
  OpenGroup other;
  addTo(other, "b");
  group.initialize(5, "group");
  add("a");
  group.appendMembers(&other);
  EXPECT_EQ(group.ArraySize, 5);
  EXPECT_EQ(group.getNumMembers(), 2);
}

TEST_F(BaseGroupClassTest, MembersThatFitExactlyNeedNoGrowth) {
  OpenGroup other;
  addTo(other, "b");
  addTo(other, "c");
  group.initialize(3, "group");
  add("a");
  group.appendMembers(&other);
  EXPECT_EQ(group.ArraySize, 3);
  EXPECT_EQ(group.getNumMembers(), 3);
}

TEST_F(BaseGroupClassTest, AGroupCanTakeItsOwnMembersASecondTime) {
  ScriptedLeaf& a = add("a");
  ScriptedLeaf& b = add("b");
  group.appendMembers(&group);
  ASSERT_EQ(group.getNumMembers(), 4);
  EXPECT_EQ(group.getMember(2), &a);
  EXPECT_EQ(group.getMember(3), &b);
}

TEST_F(BaseGroupClassTest, SetMemberWritesASlotInUse) {
  add("a");
  add("b");
  ScriptedLeaf other("other");
  group.setMember(&other, 1);
  EXPECT_EQ(group.getMember(1), &other);
  EXPECT_EQ(group.getMember(0), leaves[0].get());
}

TEST_F(BaseGroupClassTest, SetMemberOutsideTheMembersIsReportedAndWritesNothing) {
  ScriptedLeaf& a = add("a");
  group.enlargeArrays(3);
  ScriptedLeaf other("other");
  const std::string words = "Array out of bounds error at Array out of bounds (BaseGroupClass::setMember()\n";
  EXPECT_EQ(support::standardErrorOf([&] { group.setMember(&other, 1); }), words);
  EXPECT_EQ(support::standardErrorOf([&] { group.setMember(&other, -1); }), words);
  EXPECT_EQ(group.getNumMembers(), 1);
  EXPECT_EQ(group.getMember(0), &a);
  EXPECT_EQ(group.GroupArray[1], nullptr);
}

TEST_F(BaseGroupClassTest, GetMemberRequiresAnIndexInUseAndASlotThatIsNotNull) {
  add("a");
  add("b");
  group.setMember(nullptr, 1);
  EXPECT_EXIT(group.getMember(-1), testing::KilledBySignal(SIGABRT), kAssertion);
  EXPECT_EXIT(group.getMember(2), testing::KilledBySignal(SIGABRT), kAssertion);
  EXPECT_EXIT(group.getMember(1), testing::KilledBySignal(SIGABRT), kAssertion);
}

TEST_F(BaseGroupClassTest, ReplaceMemberRewritesTheSelectionAndEverySlot) {
  ScriptedLeaf& a = add("a");
  ScriptedLeaf& b = add("b");
  group.appendGroup(&a);
  group.SelectedAction = &a;
  ScriptedLeaf other("other");
  group.replaceMember(&a, &other);
  EXPECT_EQ(group.SelectedAction, &other);
  EXPECT_EQ(group.getMember(0), &other);
  EXPECT_EQ(group.getMember(1), &b);
  EXPECT_EQ(group.getMember(2), &other);
}

TEST_F(BaseGroupClassTest, ReplaceMemberOfAnActionThatIsNotThereChangesNothing) {
  ScriptedLeaf& a = add("a");
  group.SelectedAction = &a;
  ScriptedLeaf stranger("stranger");
  ScriptedLeaf other("other");
  group.replaceMember(&stranger, &other);
  EXPECT_EQ(group.SelectedAction, &a);
  EXPECT_EQ(group.getMember(0), &a);
}

TEST_F(BaseGroupClassTest, OnlyDirectMembersAreMembers) {
  OpenGroup inner;
  ScriptedLeaf& deep = addTo(inner, "deep");
  ScriptedLeaf& a = add("a");
  group.appendGroup(&inner);
  EXPECT_TRUE(group.IsAMember(&a));
  EXPECT_TRUE(group.IsAMember(&inner));
  EXPECT_FALSE(group.IsAMember(&deep)) << "a member of a member";
  EXPECT_FALSE(group.IsAMember(&group));
  EXPECT_FALSE(OpenGroup().IsAMember(&a));
}

TEST_F(BaseGroupClassTest, SetGroupIdReachesEveryActivityBelowAndNoGroup) {
  OpenGroup inner;
  OpenGroup innermost;
  ScriptedLeaf& deepest = addTo(innermost, "deepest");
  inner.appendGroup(&innermost);
  ScriptedLeaf& deep = addTo(inner, "deep");
  ScriptedLeaf& a = add("a");
  group.appendGroup(&inner);
  group.setGroupId(9);
  EXPECT_EQ(a.GroupID, 9);
  EXPECT_EQ(deep.GroupID, 9);
  EXPECT_EQ(deepest.GroupID, 9);
  EXPECT_EQ(group.GroupID, 0);
  EXPECT_EQ(inner.GroupID, 0);
  EXPECT_EQ(innermost.GroupID, 0);
}

TEST_F(BaseGroupClassTest, EnlargingRequiresASizeAboveTheCapacity) {
  group.initialize(2, "group");
  EXPECT_EXIT(group.enlargeArrays(2), testing::KilledBySignal(SIGABRT), kAssertion);
  EXPECT_EXIT(group.enlargeArrays(1), testing::KilledBySignal(SIGABRT), kAssertion);
}

TEST_F(BaseGroupClassTest, EnlargingKeepsTheMembers) {
  ScriptedLeaf& a = add("a");
  ScriptedLeaf& b = add("b");
  group.enlargeArrays(7);
  EXPECT_EQ(group.ArraySize, 7);
  ASSERT_EQ(group.getNumMembers(), 2);
  EXPECT_EQ(group.getMember(0), &a);
  EXPECT_EQ(group.getMember(1), &b);
  EXPECT_EQ(group.GroupArray[6], nullptr);
}

TEST_F(BaseGroupClassTest, AppendingRequiresACapacityThatHoldsTheMembers) {
  add("a");
  group.ArraySize = 0;
  ScriptedLeaf other("other");
  EXPECT_EXIT(group.appendGroup(&other), testing::KilledBySignal(SIGABRT), kAssertion);
  EXPECT_EXIT(group.appendMembers(&other), testing::KilledBySignal(SIGABRT), kAssertion);
}

TEST_F(BaseGroupClassTest, CheckRequiresMembersAndTheirArray) {
  EXPECT_EXIT(group.Check(), testing::KilledBySignal(SIGABRT), kAssertion);
  group.NumActions = 1;
  EXPECT_EXIT(group.Check(), testing::KilledBySignal(SIGABRT), kAssertion);
  group.NumActions = 0;
  add("a");
  EXPECT_EQ(standardOutputOf([&] { group.Check(); }), "");
}

TEST_F(BaseGroupClassTest, CheckShowsCountAndArrayAboveDebugLevelOne) {
  add("a");
  std::ostringstream array;
  array << static_cast<const void*>(group.GroupArray);
  const auto shownAtLevel = [&](int level) {
    const support::DebugLevelGuard guard(level);
    return standardOutputOf([&] { group.Check(); });
  };
  EXPECT_EQ(shownAtLevel(1), "");
  EXPECT_EQ(shownAtLevel(2), "** NumActions = 1\n** GroupArray  = " + array.str() + "\n");
}

// Questions

TEST_F(BaseGroupClassTest, AGroupWithoutMembersIsNeverEnabled) {
  EXPECT_FALSE(group.Enabled());
}

TEST_F(BaseGroupClassTest, EnabledAsksEveryMemberOnce) {
  add("a");
  add("b").isEnabled = false;
  add("c");
  EXPECT_TRUE(group.Enabled());
  EXPECT_THAT(calls, ElementsAre("a.Enabled", "b.Enabled", "c.Enabled"));
}

TEST_F(BaseGroupClassTest, AGroupIsEnabledWhenAnyMemberIs) {
  ScriptedLeaf& a = add("a");
  ScriptedLeaf& b = add("b");
  a.isEnabled = b.isEnabled = false;
  EXPECT_FALSE(group.Enabled());
  b.isEnabled = true;
  EXPECT_TRUE(group.Enabled());
}

TEST_F(BaseGroupClassTest, EnablingChangeAsksEveryMemberOnce) {
  ScriptedLeaf& a = add("a");
  add("b");
  EXPECT_FALSE(group.EnablingChange());
  a.enablingChange = true;
  calls.clear();
  EXPECT_TRUE(group.EnablingChange());
  EXPECT_THAT(calls, ElementsAre("a.EnablingChange", "b.EnablingChange"));
}

TEST_F(BaseGroupClassTest, WeightRateRankAndDelayAreThoseOfTheSelectedAction) {
  add("a", 9.0, 9);
  ScriptedLeaf& b = add("b", 2.5, 4);
  b.rate = 0.75;
  b.delay = 12.0;
  group.SelectedAction = &b;
  EXPECT_EQ(group.Weight(), 2.5);
  EXPECT_EQ(group.Rate(), 0.75);
  EXPECT_EQ(group.Rank(), 4);
  EXPECT_EQ(group.SampleDistribution(), 12.0);
}

TEST_F(BaseGroupClassTest, FireFiresTheSelectedActionAndDropsIt) {
  add("a");
  ScriptedLeaf& b = add("b");
  group.SelectedAction = &b;
  EXPECT_EQ(group.Fire(), &b);
  EXPECT_EQ(group.SelectedAction, nullptr);
  EXPECT_THAT(calls, ElementsAre("b.Fire"));
}

TEST_F(BaseGroupClassTest, AGroupIsNotReactivatedWhateverItsMembersSay) {
  ScriptedLeaf& a = add("a");
  a.predicate = a.function = true;
  group.SelectedAction = &a;
  EXPECT_FALSE(group.ReactivationPredicate());
  EXPECT_FALSE(group.ReactivationFunction());
}

TEST_F(BaseGroupClassTest, TheFirstMemberIsPrintedAndShowsItsEnablingState) {
  support::TestVariable own("own", 1);
  support::TestVariable first("first", 2);
  group.addEnablingSV(&own);
  EXPECT_EQ(group.getPrintedAction(), &group);
  std::ostringstream alone;
  group.printEnablingState(&alone);
  EXPECT_EQ(alone.str(), "own = 1\n");

  ScriptedLeaf& a = add("a");
  add("b");
  a.addEnablingSV(&first);
  EXPECT_EQ(group.getPrintedAction(), &a);
  std::ostringstream withMembers;
  group.printEnablingState(&withMembers);
  EXPECT_EQ(withMembers.str(), "first = 2\n");
}

TEST_F(BaseGroupClassTest, TheEnablingStateIsThatOfTheFirstMemberItselfAlsoWhenItIsAGroup) {
  support::TestVariable ofInner("ofInner", 1);
  support::TestVariable ofDeep("ofDeep", 2);
  OpenGroup inner;
  inner.addEnablingSV(&ofInner);
  addTo(inner, "deep").addEnablingSV(&ofDeep);
  group.appendGroup(&inner);
  EXPECT_EQ(group.getPrintedAction(), &inner);
  std::ostringstream text;
  group.printEnablingState(&text);
  EXPECT_EQ(text.str(), "ofInner = 1\n");
}

// The choice

TEST_F(BaseGroupClassTest, EqualRanksGiveCumulativeWeights) {
  ScriptedLeaf& a = add("a", 1.0);
  ScriptedLeaf& b = add("b", 3.0);
  EXPECT_EQ(group.CalculateWeightDistribution(), 4.0);
  EXPECT_THAT(rows(), ElementsAre(1.0, 4.0));
  EXPECT_EQ(group.ActionWeights[0].AssociatedAction, &a);
  EXPECT_EQ(group.ActionWeights[1].AssociatedAction, &b);
  EXPECT_FALSE(a.Disabled);
  EXPECT_FALSE(b.Disabled);
}

TEST_F(BaseGroupClassTest, ANumberExactlyOnARowBelongsToTheNextRow) {
  ScriptedLeaf& a = add("a", 1.0);
  ScriptedLeaf& b = add("b", 3.0);
  ScriptedGenerator generator({0.25, 0.2499999999, 0.0, 0.999});  // times 4: 1.0 first
  EXPECT_TRUE(group.SelectAction());
  EXPECT_EQ(group.SelectedAction, &b);
  EXPECT_TRUE(group.SelectAction());
  EXPECT_EQ(group.SelectedAction, &a);
  EXPECT_TRUE(group.SelectAction());
  EXPECT_EQ(group.SelectedAction, &a);
  EXPECT_TRUE(group.SelectAction());
  EXPECT_EQ(group.SelectedAction, &b);
}

TEST_F(BaseGroupClassTest, ANumberOfOneSelectsTheLastRow) {
  add("a", 1.0);
  ScriptedLeaf& b = add("b", 3.0);
  ScriptedGenerator generator({1.0});
  EXPECT_TRUE(group.SelectAction());
  EXPECT_EQ(group.SelectedAction, &b);
}

TEST_F(BaseGroupClassTest, TheSearchFindsTheFirstRowAboveTheNumber) {
  for (int count = 1; count <= 9; ++count) {
    add("member", static_cast<double>(count));
    const double total = count * (count + 1) / 2.0;
    for (int step = 0; step < 64; ++step) {
      const double u = step / 64.0;
      int expected = 0;  // by adding up the weights 1, 2, 3 and so on
      for (double sum = 1.0; sum <= u * total; sum += expected + 1) {
        ++expected;
      }
      ScriptedGenerator generator({u});
      ASSERT_TRUE(group.SelectAction());
      ASSERT_EQ(group.SelectedAction, leaves[static_cast<std::size_t>(expected)].get())
          << count << " members, draw " << u;
    }
  }
}

TEST_F(BaseGroupClassTest, AHigherRankStartsTheTableAnewAndLeavesDisabledOfTheOthers) {
  ScriptedLeaf& a = add("a", 5.0, 1);
  ScriptedLeaf& b = add("b", 1.0, 2);
  ScriptedLeaf& c = add("c", 1.0, 2);
  EXPECT_EQ(group.CalculateWeightDistribution(), 2.0);
  EXPECT_THAT(rows(), ElementsAre(1.0, 2.0));
  EXPECT_EQ(group.NumSelectableActions, 2);
  EXPECT_EQ(group.HighestRank, 2);
  EXPECT_EQ(group.ActionWeights[0].AssociatedAction, &b);
  EXPECT_EQ(group.ActionWeights[1].AssociatedAction, &c);
  EXPECT_FALSE(a.Disabled) << "it dropped out only when the higher rank came";
  EXPECT_FALSE(b.Disabled);
  EXPECT_FALSE(c.Disabled);
}

TEST_F(BaseGroupClassTest, AHigherRankBehindSeveralEqualOnesHasTheTableForItself) {
  add("a", 5.0, 1);
  add("b", 6.0, 1);
  ScriptedLeaf& c = add("c", 3.0, 2);
  EXPECT_EQ(group.CalculateWeightDistribution(), 3.0);
  EXPECT_THAT(rows(), ElementsAre(3.0));
  EXPECT_EQ(group.ActionWeights[0].AssociatedAction, &c);
}

TEST_F(BaseGroupClassTest, ALowerRankBehindTheHighestIsDisabled) {
  add("a", 5.0, 2);
  ScriptedLeaf& b = add("b", 1.0, 1);
  b.Disabled = false;
  EXPECT_EQ(group.CalculateWeightDistribution(), 5.0);
  EXPECT_TRUE(b.Disabled);
  EXPECT_EQ(group.NumSelectableActions, 1);
}

TEST_F(BaseGroupClassTest, NegativeRanksAreRanksLikeOthersInAChoice) {
  ScriptedLeaf& a = add("a", 1.0, -3);
  ScriptedLeaf& b = add("b", 1.0, -2);
  ScriptedGenerator generator({0.0});
  EXPECT_TRUE(group.SelectAction());
  EXPECT_EQ(group.SelectedAction, &b);
  EXPECT_EQ(group.HighestRank, -2);
  EXPECT_FALSE(a.Disabled);
}

TEST_F(BaseGroupClassTest, MembersThatAreNotEnabledAreDisabledWhereverTheyStand) {
  ScriptedLeaf& a = add("a", 1.0);
  ScriptedLeaf& b = add("b", 2.0);
  ScriptedLeaf& c = add("c", 4.0, 7);
  ScriptedLeaf& d = add("d", 8.0);
  a.isEnabled = c.isEnabled = false;
  a.Disabled = c.Disabled = false;
  EXPECT_EQ(group.CalculateWeightDistribution(), 10.0);
  EXPECT_THAT(rows(), ElementsAre(2.0, 10.0));
  EXPECT_EQ(group.HighestRank, 0);
  EXPECT_TRUE(a.Disabled);
  EXPECT_FALSE(b.Disabled);
  EXPECT_TRUE(c.Disabled);
  EXPECT_FALSE(d.Disabled);
}

TEST_F(BaseGroupClassTest, WithoutAnEnabledMemberNothingIsSelectedAndOneNumberIsDrawn) {
  ScriptedLeaf& a = add("a");
  ScriptedLeaf& b = add("b");
  a.isEnabled = b.isEnabled = false;
  a.Disabled = b.Disabled = false;
  group.SelectedAction = &b;
  ScriptedGenerator generator({0.5});
  EXPECT_FALSE(group.SelectAction());
  EXPECT_EQ(generator.drawn(), 1U);
  EXPECT_TRUE(a.Disabled);
  EXPECT_TRUE(b.Disabled);
  EXPECT_EQ(group.SelectedAction, &b) << "the old selection stays";
}

TEST_F(BaseGroupClassTest, ADrawOfExactlyZeroSelectsNothingEitherWithoutAnEnabledMember) {
  ScriptedLeaf& a = add("a");
  ScriptedGenerator generator({0.5, 0.0});
  EXPECT_TRUE(group.SelectAction());  // leaves a row behind
  group.SelectedAction = nullptr;
  a.isEnabled = false;
  EXPECT_FALSE(group.SelectAction());
  EXPECT_EQ(group.SelectedAction, nullptr);
}

TEST_F(BaseGroupClassTest, AGroupWithoutMembersSelectsNothingAndDrawsOneNumber) {
  ScriptedGenerator generator({0.5});
  EXPECT_FALSE(group.SelectAction());
  EXPECT_EQ(generator.drawn(), 1U);
}

TEST_F(BaseGroupClassTest, TheTotalWithoutAnEnabledMemberIsMinusOne) {
  add("a").isEnabled = false;
  EXPECT_EQ(group.CalculateWeightDistribution(), -1.0);
  EXPECT_EQ(OpenGroup().CalculateWeightDistribution(), -1.0);
}

TEST_F(BaseGroupClassTest, WithWeightsOfZeroTheLastRowIsSelected) {
  add("a", 0.0);
  add("b", 0.0);
  ScriptedLeaf& c = add("c", 0.0);
  ScriptedGenerator generator({0.3});
  EXPECT_TRUE(group.SelectAction());
  EXPECT_EQ(group.SelectedAction, &c);
}

TEST_F(BaseGroupClassTest, AChoiceDrawsFirstAndThenAsksEachMemberInOrder) {
  add("a", 1.0, 1);
  add("below", 1.0, 0);
  add("equal", 1.0, 1);
  add("above", 1.0, 2);
  add("off").isEnabled = false;
  ScriptedGenerator generator({0.5}, &calls);
  EXPECT_TRUE(group.SelectAction());
  EXPECT_THAT(calls,
              ElementsAre("draw",                                                       //
                          "a.Enabled", "a.Rank", "a.Weight",                            //
                          "below.Enabled", "below.Rank",                                //
                          "equal.Enabled", "equal.Rank", "equal.Rank", "equal.Weight",  //
                          "above.Enabled", "above.Rank", "above.Rank", "above.Rank", "above.Weight", "off.Enabled",
                          "above.Enabled"));  // the selected member selects itself
}

TEST_F(BaseGroupClassTest, AMemberThatIsAGroupHandsUpItsOwnSelection) {
  OpenGroup inner;
  ScriptedLeaf& b = addTo(inner, "b", 1.0);
  ScriptedLeaf& c = addTo(inner, "c", 1.0);
  inner.SelectedAction = &b;  // rank and weight of the group are its selection's
  add("a", 1.0);
  group.appendGroup(&inner);
  ScriptedGenerator generator({0.5, 0.9});  // 0.5 * 2 is on the first row; 0.9 * 2 is above the first row
  EXPECT_TRUE(group.SelectAction());
  EXPECT_EQ(generator.drawn(), 2U);
  EXPECT_EQ(inner.SelectedAction, &c);
  EXPECT_EQ(group.SelectedAction, &c);
}

/// Enabled at every other question.
class FickleLeaf : public ScriptedLeaf {
 public:
  using ScriptedLeaf::ScriptedLeaf;
  bool Enabled() override {
    isEnabled = !isEnabled;
    return !isEnabled;
  }
};

/// Its weight is 1 while it may be chosen, else 0.
class LeafThatKnowsItsDisabled : public ScriptedLeaf {
 public:
  using ScriptedLeaf::ScriptedLeaf;
  double Weight() override { return Disabled ? 0.0 : 1.0; }
};

TEST_F(BaseGroupClassTest, TheFirstEnabledMemberIsNoLongerDisabledWhenItIsAskedForItsWeight) {
  LeafThatKnowsItsDisabled leaf("leaf");
  leaf.Disabled = true;
  group.appendGroup(&leaf);
  EXPECT_EQ(group.CalculateWeightDistribution(), 1.0);
}

TEST_F(BaseGroupClassTest, TheResultOfTheMembersOwnSelectionIsNotLookedAt) {
  FickleLeaf fickle("fickle");
  group.appendGroup(&fickle);
  ScriptedGenerator generator({0.5});
  EXPECT_TRUE(group.SelectAction());
  EXPECT_EQ(group.SelectedAction, &fickle);
}

TEST_F(BaseGroupClassTest, TheWeightTableRequiresTheMemberArray) {
  group.NumActions = 1;
  EXPECT_EXIT(group.CalculateWeightDistribution(), testing::KilledBySignal(SIGABRT), kAssertion);
}

TEST_F(BaseGroupClassTest, AChoiceSpeaksAboveDebugLevelsOneTwoAndThree) {
  add("low", 1.0, 0);
  add("high", 2.0, 1);
  const auto choiceAtLevel = [&](int level) {
    const support::DebugLevelGuard guard(level);
    ScriptedGenerator generator({0.25});
    return standardOutputOf([&] { group.SelectAction(); });
  };
  EXPECT_EQ(choiceAtLevel(1), "");
  EXPECT_EQ(choiceAtLevel(2), "** Newest higest ranked group = high\n");
  EXPECT_EQ(choiceAtLevel(3),
            "** First enabled action at = 0\n"
            "** Newest higest ranked group = high\n"
            "** rand_num = 0.5\n"
            "** Selected Action = high\n");
  EXPECT_EQ(choiceAtLevel(4),
            "** First enabled action at = 0\n"
            "** Newest higest ranked group = high\n"
            "** rand_num = 0.5\n"
            "** The selected action is a group\n"
            "** Selected Action = high\n");
}

// Probability

TEST_F(BaseGroupClassTest, ProbabilityIsTheShareOfTheWeight) {
  ScriptedLeaf& a = add("a", 1.0);
  ScriptedLeaf& b = add("b", 3.0);
  EXPECT_EQ(group.Probability(&a), 0.25);
  EXPECT_EQ(group.Probability(&b), 0.75);
}

TEST_F(BaseGroupClassTest, ProbabilityCountsTheEnabledMembersOfTheHighestRank) {
  ScriptedLeaf& a = add("a", 1.0, 1);
  add("off", 8.0, 5).isEnabled = false;
  ScriptedLeaf& b = add("b", 1.0, 2);
  ScriptedLeaf& c = add("c", 4.0, 2);
  EXPECT_EQ(group.Probability(&a), 0.0);
  EXPECT_EQ(group.Probability(&b), 0.2);
  EXPECT_EQ(group.Probability(&c), 0.8);
}

TEST_F(BaseGroupClassTest, ProbabilityAsksEveryMemberAndThenTheHolder) {
  ScriptedLeaf& a = add("a", 1.0, 1);
  add("b", 1.0, 0);
  group.Probability(&a);
  EXPECT_THAT(calls, ElementsAre("a.Enabled", "a.Rank", "a.Rank", "a.Rank", "a.Weight",  //
                                 "b.Enabled", "b.Rank", "b.Rank",                        //
                                 "a.Rank", "a.Weight"));
}

TEST_F(BaseGroupClassTest, ProbabilityOfAMemberOfAMemberIsAProduct) {
  OpenGroup inner;
  ScriptedLeaf& b = addTo(inner, "b", 1.0);
  addTo(inner, "c", 3.0);
  inner.SelectedAction = &b;  // the weight of the inner group is 1
  add("a", 1.0);
  group.appendGroup(&inner);
  EXPECT_EQ(group.Probability(&b), 0.125);  // 1/2 of the inner group, and 1/4 within it
}

TEST_F(BaseGroupClassTest, ProbabilityTakesTheLaterOfTwoHolders) {
  OpenGroup inner;
  ScriptedLeaf& a = add("a", 1.0);
  inner.appendGroup(&a);
  addTo(inner, "b", 1.0);
  inner.SelectedAction = leaves[1].get();
  group.appendGroup(&inner);
  EXPECT_EQ(group.Probability(&a), 0.25);  // 1/2 of the inner group, and 1/2 within it
}

TEST_F(BaseGroupClassTest, MembersOfNegativeRankHaveNoProbability) {
  ScriptedLeaf& a = add("a", 1.0, -1);
  add("b", 1.0, -2);
  EXPECT_EQ(group.Probability(&a), 0.0);
}

TEST_F(BaseGroupClassTest, ATotalWeightOfZeroIsReportedAndDividesAllTheSame) {
  ScriptedLeaf& a = add("a", 0.0);
  double probability = 0.0;
  EXPECT_EQ(standardOutputOf([&] { probability = group.Probability(&a); }),
            "BaseGroupClass::Probability() TotalWeight is zero.\n");
  EXPECT_TRUE(std::isnan(probability));

  ScriptedLeaf& b = add("b", 2.0);
  b.isEnabled = false;
  standardOutputOf([&] { probability = group.Probability(&b); });
  EXPECT_TRUE(std::isinf(probability));
}

TEST_F(BaseGroupClassTest, AnActionThatIsNoMemberHasNoProbability) {
  add("a");
  ScriptedLeaf stranger("stranger");
  EXPECT_EQ(group.Probability(&stranger), 0.0);
}

TEST_F(BaseGroupClassTest, ProbabilityRequiresMembers) {
  EXPECT_EXIT(group.Probability(&group), testing::KilledBySignal(SIGABRT), kAssertion);
}

// Printing

TEST_F(BaseGroupClassTest, PrintInfoNamesMembersAndSelection) {
  add("a");
  ScriptedLeaf& b = add("b");
  group.SelectedAction = &b;
  EXPECT_EQ(standardOutputOf([&] { group.PrintInfo(); }),
            "************ Group: group ****************\n"
            "Contains the following actions:\n"
            "  a\n"
            "  b\n"
            "Selected Action = b\n");
  EXPECT_TRUE(support::isFlushedAtTheEnd(std::cout, [&] { group.PrintInfo(); }));
}

TEST_F(BaseGroupClassTest, PrintGroupIndentsAndNumbersTheTree) {
  OpenGroup inner;
  inner.defineName("inner");
  OpenGroup innermost;
  innermost.defineName("innermost");
  OpenGroup single;
  single.defineName("single");
  addTo(innermost, "e");
  addTo(innermost, "f");
  addTo(inner, "c");
  inner.appendGroup(&innermost);
  addTo(single, "hidden");
  add("a");
  group.appendGroup(&inner);
  group.appendGroup(&single);
  EXPECT_EQ(standardOutputOf([&] { group.printGroup(); }),
            "** Members of Group group\n"
            "[0] a\n"
            "[1] inner\n"
            "  [1.0] c\n"
            "  [1.1] innermost\n"
            "    [1.1.0] e\n"
            "    [1.1.1] f\n"
            "[2] single\n");  // a group of one member is not entered
}

}  // namespace
