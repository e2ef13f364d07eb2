#include "BaseClasses/PostselectGroup.h"

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
using support::standardOutputOf;
using testing::ElementsAre;

/// Shows what is protected.
class OpenPostselectGroup : public PostselectGroup {
 public:
  using PostselectGroup::ArraySize;
  using PostselectGroup::PostselectGroup;
};

/// A group of the members "a" and "b" with the weights 1 and 3: a draw below 0.25 selects a, any other b.
class PostselectGroupTest : public testing::Test {
 protected:
  PostselectGroupTest() {
    a.delay = 1.5;
    b.delay = 9.0;
    group.appendGroup(&a);
    group.appendGroup(&b);
  }

  CallLog calls;
  ScriptedLeaf a{"a", 1.0, 4, &calls};
  ScriptedLeaf b{"b", 3.0, 4, &calls};
  OpenPostselectGroup group;
};

TEST_F(PostselectGroupTest, TheDelayIsThatOfTheFirstMemberWhicheverFires) {
  ScriptedGenerator generator({0.1, 0.9});
  EXPECT_EQ(group.SampleDistribution(), 1.5);
  EXPECT_EQ(generator.drawn(), 0U);
  EXPECT_EQ(group.Fire(), &a);
  EXPECT_EQ(group.SampleDistribution(), 1.5);
  EXPECT_EQ(group.Fire(), &b);
  EXPECT_EQ(generator.drawn(), 2U);
}

TEST_F(PostselectGroupTest, AfterAFiringThereIsNoSelection) {
  ScriptedGenerator generator({0.9});
  EXPECT_EQ(group.Fire(), &b);
  EXPECT_EQ(group.SelectedAction, nullptr);
}

TEST_F(PostselectGroupTest, FireChoosesInThePresentMarking) {
  ScriptedGenerator generator({0.1}, &calls);
  a.isEnabled = false;
  EXPECT_EQ(group.Fire(), &b);
  EXPECT_THAT(calls, ElementsAre("draw", "a.Enabled", "b.Enabled", "b.Rank", "b.Weight", "b.Enabled", "b.Fire"));
}

TEST_F(PostselectGroupTest, FireChoosesWithinTheHighestRank) {
  a.rank = 5;
  ScriptedGenerator generator({0.9});
  EXPECT_EQ(group.Fire(), &a);
}

TEST_F(PostselectGroupTest, RankAndWeightAreOneWhateverTheMembersSay) {
  EXPECT_EQ(group.Rank(), 1);
  EXPECT_EQ(group.Weight(), 1.0);
  EXPECT_THAT(calls, ElementsAre());
}

TEST_F(PostselectGroupTest, ReactivationIsThatOfTheFirstMember) {
  b.predicate = b.function = true;
  EXPECT_FALSE(group.ReactivationPredicate());
  EXPECT_FALSE(group.ReactivationFunction());
  a.predicate = true;
  EXPECT_TRUE(group.ReactivationPredicate());
  EXPECT_FALSE(group.ReactivationFunction());
  a.function = true;
  EXPECT_TRUE(group.ReactivationFunction());
}

TEST_F(PostselectGroupTest, TheGroupIsEnabledWhenAnyMemberIsAndDrawsNothingForIt) {
  ScriptedGenerator generator({});
  a.isEnabled = false;
  EXPECT_TRUE(group.Enabled());
  b.isEnabled = false;
  EXPECT_FALSE(group.Enabled());
  EXPECT_FALSE(group.EnablingChange());
  b.enablingChange = true;
  EXPECT_TRUE(group.EnablingChange());
}

TEST_F(PostselectGroupTest, TheConstructorWithANumberHasSlotsForItsMembers) {
  OpenPostselectGroup slots(2);
  EXPECT_EQ(slots.getNumMembers(), 2);
  EXPECT_EQ(slots.ArraySize, 2);
  EXPECT_STREQ(slots.ActionName, "default");
  slots.setMember(&a, 0);
  slots.setMember(&b, 1);
  EXPECT_EQ(slots.SampleDistribution(), 1.5);
}

TEST_F(PostselectGroupTest, TheFirstMemberIsAskedOnlyIfThereIsOne) {
  PostselectGroup empty;
  EXPECT_EXIT(empty.SampleDistribution(), testing::KilledBySignal(SIGABRT), support::assertionIn("BaseGroupClass"));
}

TEST_F(PostselectGroupTest, TheSelectionIsToldAboveDebugLevelOne) {
  const auto firingAtLevel = [&](int level) {
    const support::DebugLevelGuard guard(level);
    ScriptedGenerator generator({0.9});
    return standardOutputOf([&] { group.Fire(); });
  };
  EXPECT_EQ(firingAtLevel(1), "");
  EXPECT_EQ(firingAtLevel(2), "** Postselect group has selected = b\n");
}

TEST_F(PostselectGroupTest, AGroupWithinTheGroupFiresItsOwnChoice) {
  PostselectGroup outer;
  outer.appendGroup(&group);
  ScriptedGenerator generator({0.5, 0.1});
  EXPECT_EQ(outer.Fire(), &a);
  EXPECT_EQ(outer.SelectedAction, nullptr);
  EXPECT_EQ(generator.drawn(), 2U);
}

}  // namespace
