#include "BaseClasses/SAN/Activity.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <type_traits>

#include "BaseClasses/PostselectGroup.h"
#include "BaseClasses/SAN/Place.h"
#include "support/CallLog.h"
#include "support/ScriptedActivity.h"
#include "support/ScriptedGenerator.h"

namespace {

using support::CallLog;
using support::ScriptedActivity;
using support::ScriptedGenerator;
using testing::ElementsAre;

static_assert(std::is_abstract_v<Activity>);

/// Moves a token from one place to another through cached mark pointers.
class MoveActivity : public Activity {
 public:
  MoveActivity(Place& source, Place& target)
      : Activity("move", 2, Weibull, RaceAge, 2, 1, true), source_(source), target_(target) {}

  bool Enabled() override {
    OldEnabled = NewEnabled;
    NewEnabled = *source_Quorva_Mark > 0;
    return NewEnabled;
  }
  BaseActionClass* Fire() override {
    --*source_Quorva_Mark;
    ++*target_Quorva_Mark;
    return this;
  }
  void LinkVariables() override {
    source_.Register(&source_Quorva_Mark);
    target_.Register(&target_Quorva_Mark);
  }

 private:
  Place& source_;
  Place& target_;
  short* source_Quorva_Mark = nullptr;
  short* target_Quorva_Mark = nullptr;
};

TEST(ActivityTest, ANewActivityHasSelectedItself) {
  ScriptedActivity activity("serve");
  EXPECT_EQ(activity.SelectedAction, &activity);
  EXPECT_TRUE(activity.Disabled);
  EXPECT_FALSE(activity.Reactivation);
  EXPECT_EQ(activity.getNumMembers(), 0);
}

TEST(ActivityTest, InitializingStoresNameAndSettings) {
  ScriptedActivity activity("");
  activity.ActivityInitialize("serve", 5, Gamma, RaceResampling, 3, 4, true);
  EXPECT_STREQ(activity.ActionName, "serve");
  EXPECT_EQ(activity.GroupID, 5);
  EXPECT_EQ(activity.DistributionType, Gamma);
  EXPECT_EQ(activity.ExecutionPolicy, RaceResampling);
  EXPECT_TRUE(activity.Reactivation);
  EXPECT_EQ(activity.SelectedAction, &activity);
}

TEST(ActivityTest, TheConstructorWithValuesInitializesTheActivity) {
  Place source("source");
  Place target("target");
  MoveActivity move(source, target);
  EXPECT_STREQ(move.ActionName, "move");
  EXPECT_EQ(move.GroupID, 2);
  EXPECT_EQ(move.DistributionType, Weibull);
  EXPECT_EQ(move.ExecutionPolicy, RaceAge);
  EXPECT_TRUE(move.Reactivation);
  EXPECT_EQ(move.SelectedAction, &move);
}

TEST(ActivityTest, ANewActivityHasNotBeenEnabled) {
  const ScriptedActivity activity("serve");
  EXPECT_FALSE(activity.NewEnabled);
  EXPECT_FALSE(activity.OldEnabled);
}

TEST(ActivityTest, SelectActionOfADisabledActivityIsFalseAndMovesTheEnabledPairOn) {
  ScriptedActivity activity("serve");
  ScriptedGenerator generator({});
  activity.Enabled();
  activity.isEnabled = false;
  EXPECT_FALSE(activity.SelectAction());
  EXPECT_FALSE(activity.NewEnabled);
  EXPECT_TRUE(activity.OldEnabled);
  EXPECT_FALSE(activity.SelectAction());
  EXPECT_FALSE(activity.OldEnabled);
  EXPECT_EQ(activity.SelectedAction, &activity);
  EXPECT_EQ(generator.drawn(), 0U);
}

TEST(ActivityTest, SelectActionOfAnEnabledActivityIsTrue) {
  ScriptedActivity activity("serve");
  EXPECT_TRUE(activity.SelectAction());
  EXPECT_EQ(activity.SelectedAction, &activity);
}

TEST(ActivityTest, EnablingChangeIsFalseAtTheSecondCallInOneMarking) {
  ScriptedActivity activity("serve");
  activity.Enabled();
  activity.isEnabled = false;
  EXPECT_TRUE(activity.EnablingChange());
  EXPECT_FALSE(activity.EnablingChange());
  activity.isEnabled = true;
  EXPECT_TRUE(activity.EnablingChange());
  EXPECT_FALSE(activity.EnablingChange());
}

TEST(ActivityTest, EnablingChangeComparesWithTheLastEnabledWhoeverAsked) {
  ScriptedActivity activity("serve");
  activity.Enabled();
  activity.isEnabled = false;
  activity.Enabled();
  EXPECT_FALSE(activity.EnablingChange()) << "the change was seen by the call before";
}

TEST(ActivityTest, ADisablingAndEnablingBetweenTwoQuestionsIsNoChange) {
  Place source("source", 1);
  Place target("target");
  MoveActivity move(source, target);
  move.LinkVariables();
  EXPECT_TRUE(move.Enabled());
  move.Fire();
  source.setMark(1);
  EXPECT_FALSE(move.EnablingChange());
}

TEST(ActivityTest, ProbabilityIsOneForTheActivityAndZeroForAnyOther) {
  ScriptedActivity activity("serve");
  ScriptedActivity other("other");
  EXPECT_EQ(activity.Probability(&activity), 1.0);
  EXPECT_EQ(activity.Probability(&other), 0.0);
  EXPECT_EQ(activity.Probability(nullptr), 0.0);
}

TEST(ActivityTest, AnActivityHasNoMembersNotEvenItself) {
  ScriptedActivity activity("serve");
  EXPECT_FALSE(activity.IsAMember(&activity));
}

TEST(ActivityTest, SetGroupIdWritesItsOwnNumber) {
  ScriptedActivity activity("serve");
  activity.setGroupId(6);
  EXPECT_EQ(activity.GroupID, 6);
}

TEST(ActivityTest, AnAffectingStateVariableIsOneThatAFiringMayChange) {
  ScriptedActivity activity("serve");
  Place affected("affected");
  Place enabling("enabling");
  activity.addAffectedSV(&affected);
  activity.addEnablingSV(&enabling);
  EXPECT_TRUE(activity.IsAnAffectingStateVariable(&affected));
  EXPECT_FALSE(activity.IsAnAffectingStateVariable(&enabling));
}

TEST(ActivityTest, PrintingFallsBackOnTheActivityItself) {
  ScriptedActivity activity("serve");
  Place enabling("enabling", 3);
  activity.addEnablingSV(&enabling);
  EXPECT_EQ(activity.getPrintedAction(), &activity);
  std::ostringstream text;
  activity.printEnablingState(&text);
  EXPECT_EQ(text.str(), "enabling = 3\n");
}

TEST(ActivityTest, LinkedPointersFollowTheSharingOfAPlace) {
  Place source("source", 2);
  Place target("target");
  Place leader("leader");
  MoveActivity move(source, target);
  move.LinkVariables();
  leader.ShareWith(&source);
  EXPECT_EQ(move.Fire(), &move);
  EXPECT_EQ(leader.getMark(), 1);
  EXPECT_EQ(source.getMark(), 1);
  EXPECT_EQ(target.getMark(), 1);
  leader.setMark(0);
  EXPECT_FALSE(move.Enabled());
}

TEST(ActivityTest, AChoiceAmongActivitiesAsksTheChosenOneTwice) {
  CallLog calls;
  ScriptedActivity a("a", 1.0, 0, &calls);
  ScriptedActivity b("b", 3.0, 0, &calls);
  PostselectGroup group;
  group.appendGroup(&a);
  group.appendGroup(&b);
  ScriptedGenerator generator({0.1, 0.9}, &calls);
  EXPECT_EQ(group.Fire(), &a);
  EXPECT_THAT(calls, ElementsAre("draw", "a.Enabled", "a.Rank", "a.Weight", "b.Enabled", "b.Rank", "b.Rank", "b.Weight",
                                 "a.Enabled", "a.Fire"));
  // So the pair of the chosen activity has moved on by two steps, that of the other by one.
  EXPECT_TRUE(a.OldEnabled);
  EXPECT_FALSE(b.OldEnabled);
  EXPECT_EQ(group.Fire(), &b);
}

TEST(ActivityTest, EnablingChangeOfAGroupMovesThePairOfEveryMember) {
  ScriptedActivity a("a");
  ScriptedActivity b("b");
  BaseGroupClass group;
  group.appendGroup(&a);
  group.appendGroup(&b);
  group.Enabled();
  a.isEnabled = b.isEnabled = false;
  EXPECT_TRUE(group.EnablingChange());
  EXPECT_FALSE(b.NewEnabled) << "b is asked though a has answered";
  EXPECT_TRUE(b.OldEnabled);
  EXPECT_FALSE(group.EnablingChange());
}

}  // namespace
