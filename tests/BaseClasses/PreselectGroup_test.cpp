#include "BaseClasses/PreselectGroup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "support/CallLog.h"
#include "support/CapturedOutput.h"
#include "support/ScriptedGenerator.h"
#include "support/ScriptedLeaf.h"

namespace {

using support::CallLog;
using support::ScriptedGenerator;
using support::ScriptedLeaf;
using testing::ElementsAre;

/// Shows what is protected.
class OpenPreselectGroup : public PreselectGroup {
 public:
  using PreselectGroup::ArraySize;
  using PreselectGroup::NeedToReselect;
  using PreselectGroup::PreselectGroup;
};

const std::string kAssertion = support::assertionIn("PreselectGroup");

/// A group of the members "a" and "b" with the weights 1 and 3: a draw below 0.25 selects a, any other b.
class PreselectGroupTest : public testing::Test {
 protected:
  PreselectGroupTest() {
    group.appendGroup(&a);
    group.appendGroup(&b);
  }

  void disableAll() { a.isEnabled = b.isEnabled = false; }

  CallLog calls;
  ScriptedLeaf a{"a", 1.0, 0, &calls};
  ScriptedLeaf b{"b", 3.0, 0, &calls};
  OpenPreselectGroup group;
};

TEST_F(PreselectGroupTest, ANewGroupHasAChoiceToMake) {
  OpenPreselectGroup fresh;
  EXPECT_TRUE(fresh.NeedToReselect);
  EXPECT_EQ(fresh.getNumMembers(), 0);
  EXPECT_EQ(fresh.SelectedAction, nullptr);
}

TEST_F(PreselectGroupTest, TheConstructorWithANumberHasSlotsForItsMembers) {
  OpenPreselectGroup slots(2);
  EXPECT_EQ(slots.getNumMembers(), 2);
  EXPECT_EQ(slots.ArraySize, 2);
  EXPECT_TRUE(slots.NeedToReselect);
  slots.setMember(&a, 0);
  slots.setMember(&b, 1);
  ScriptedGenerator generator({0.1});
  EXPECT_TRUE(slots.SelectAction());
  EXPECT_EQ(slots.SelectedAction, &a);
}

TEST_F(PreselectGroupTest, ASuccessfulChoiceIsKept) {
  ScriptedGenerator generator({0.1});
  EXPECT_TRUE(group.SelectAction());
  EXPECT_FALSE(group.NeedToReselect);
  EXPECT_TRUE(group.Enabled());
  EXPECT_EQ(group.Rank(), 0);
  group.SampleDistribution();
  group.ReactivationPredicate();
  group.ReactivationFunction();
  EXPECT_EQ(generator.drawn(), 1U);
  EXPECT_EQ(group.SelectedAction, &a);
}

TEST_F(PreselectGroupTest, EnabledChoosesWhenAChoiceIsDueAndThenAsksEveryMember) {
  ScriptedGenerator generator({0.9}, &calls);
  EXPECT_TRUE(group.Enabled());
  EXPECT_THAT(calls, ElementsAre("draw", "a.Enabled", "a.Rank", "a.Weight",    //
                                 "b.Enabled", "b.Rank", "b.Rank", "b.Weight",  //
                                 "b.Enabled",                                  // b selects itself
                                 "a.Enabled", "b.Enabled"));
  calls.clear();
  EXPECT_TRUE(group.Enabled());
  EXPECT_THAT(calls, ElementsAre("a.Enabled", "b.Enabled"));
}

TEST_F(PreselectGroupTest, TheGroupIsEnabledThoughItsChosenMemberIsNoMore) {
  ScriptedGenerator generator({0.1});
  EXPECT_TRUE(group.SelectAction());
  a.isEnabled = false;
  EXPECT_TRUE(group.Enabled());
  EXPECT_EQ(group.SelectedAction, &a) << "a choice is kept until it has fired";
}

TEST_F(PreselectGroupTest, TheAnswersAreThoseOfTheChosenMember) {
  b.rank = a.rank = 6;
  b.delay = 2.5;
  b.rate = 0.5;
  b.predicate = true;
  ScriptedGenerator generator({0.9});
  EXPECT_EQ(group.SampleDistribution(), 2.5);
  EXPECT_EQ(group.Rank(), 6);
  EXPECT_EQ(group.Weight(), 3.0);
  EXPECT_EQ(group.Rate(), 0.5);
  EXPECT_TRUE(group.ReactivationPredicate());
  EXPECT_FALSE(group.ReactivationFunction());
  b.function = true;
  b.predicate = false;
  EXPECT_FALSE(group.ReactivationPredicate());
  EXPECT_TRUE(group.ReactivationFunction());
}

TEST_F(PreselectGroupTest, EachQuestionMakesTheChoiceThatIsDue) {
  const auto drawsOf = [&](auto question) {
    group.NeedToReselect = true;
    group.SelectedAction = nullptr;  // as before the first choice: there is none to answer yet
    ScriptedGenerator generator({0.5});
    question();
    EXPECT_FALSE(group.NeedToReselect);
    return generator.drawn();
  };
  EXPECT_EQ(drawsOf([&] { group.Enabled(); }), 1U);
  EXPECT_EQ(drawsOf([&] { group.ReactivationPredicate(); }), 1U);
  EXPECT_EQ(drawsOf([&] { group.ReactivationFunction(); }), 1U);
  EXPECT_EQ(drawsOf([&] { group.SampleDistribution(); }), 1U);
  EXPECT_EQ(drawsOf([&] { group.Rank(); }), 1U);
}

TEST_F(PreselectGroupTest, FireKeepsTheSelectionAndMakesAChoiceDue) {
  ScriptedGenerator generator({0.1, 0.9});
  EXPECT_TRUE(group.SelectAction());
  EXPECT_EQ(group.Fire(), &a);
  EXPECT_EQ(group.SelectedAction, &a);
  EXPECT_TRUE(group.NeedToReselect);
  EXPECT_EQ(generator.drawn(), 1U) << "the firing itself chooses nothing";
  EXPECT_TRUE(group.Enabled());
  EXPECT_EQ(group.SelectedAction, &b);
  EXPECT_EQ(group.Fire(), &b);
}

TEST_F(PreselectGroupTest, AFailedChoiceStaysDueAndEachQuestionDrawsAgain) {
  disableAll();
  ScriptedGenerator generator({0.1, 0.2, 0.3});
  EXPECT_FALSE(group.SelectAction());
  EXPECT_TRUE(group.NeedToReselect);
  EXPECT_FALSE(group.Enabled());
  EXPECT_FALSE(group.Enabled());
  EXPECT_EQ(generator.drawn(), 3U);
  EXPECT_TRUE(group.NeedToReselect);
}

TEST_F(PreselectGroupTest, AfterAFailedChoiceTheLastMemberChosenAnswersRankAndReactivation) {
  a.rank = 4;
  b.rank = 4;
  ScriptedGenerator generator({0.1, 0.5, 0.5, 0.5});
  EXPECT_TRUE(group.SelectAction());
  group.Fire();
  disableAll();
  a.predicate = true;
  EXPECT_EQ(group.Rank(), 4);
  EXPECT_TRUE(group.ReactivationPredicate());
  EXPECT_FALSE(group.ReactivationFunction());
  EXPECT_EQ(generator.drawn(), 4U);
  EXPECT_TRUE(group.NeedToReselect);
}

TEST_F(PreselectGroupTest, AfterAFailedChoiceThereIsNoDelay) {
  ScriptedGenerator generator({0.1, 0.5});
  EXPECT_TRUE(group.SelectAction());
  group.Fire();
  disableAll();
  EXPECT_EXIT(group.SampleDistribution(), testing::KilledBySignal(SIGABRT), kAssertion);
}

TEST_F(PreselectGroupTest, TheSelectionAsksForAMember) {
  disableAll();
  ScriptedGenerator generator({0.5, 0.5, 0.5, 0.5});
  EXPECT_EXIT(group.Fire(), testing::KilledBySignal(SIGABRT), kAssertion);
  EXPECT_EXIT(group.Rank(), testing::KilledBySignal(SIGABRT), kAssertion);
  EXPECT_EXIT(group.SampleDistribution(), testing::KilledBySignal(SIGABRT), kAssertion);
  EXPECT_EXIT(group.ReactivationPredicate(), testing::KilledBySignal(SIGABRT), kAssertion);
  EXPECT_EXIT(group.ReactivationFunction(), testing::KilledBySignal(SIGABRT), kAssertion);
  group.NeedToReselect = false;  // the selection is tested for itself too
  EXPECT_EXIT(group.SampleDistribution(), testing::KilledBySignal(SIGABRT), kAssertion);
}

TEST_F(PreselectGroupTest, EnablingChangeIsThatOfAnyMember) {
  EXPECT_FALSE(group.EnablingChange());
  b.enablingChange = true;
  EXPECT_TRUE(group.EnablingChange());
}

TEST_F(PreselectGroupTest, AGroupWithinAGroupHandsUpItsChoice) {
  OpenPreselectGroup outer;
  outer.appendGroup(&group);
  ScriptedGenerator generator({0.5, 0.1, 0.9}, &calls);
  // The outer draw comes first; asked whether it is enabled, the inner group chooses a; told to select, it chooses b.
  EXPECT_TRUE(outer.SelectAction());
  EXPECT_EQ(generator.drawn(), 3U);
  EXPECT_EQ(group.SelectedAction, &b);
  EXPECT_EQ(outer.SelectedAction, &b);
}

}  // namespace
