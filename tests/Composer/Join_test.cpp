#include "Composer/Join.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "BaseClasses/State.h"
#include "BaseClasses/state/TestVariables.h"
#include "Composer/TestModels.h"
#include "support/AllocationCounter.h"
#include "support/CapturedOutput.h"

namespace {

using testing::ElementsAre;
using testing_support::childrenOf;
using testing_support::imageOf;
using testing_support::Leaf;
using testing_support::leafWithPlaces;
using testing_support::placeOf;
using testing_support::sharedOf;
using testing_support::SharedVariable;
using testing_support::TestJoin;

/// A join over one model with actions of the given names.
std::unique_ptr<TestJoin> joinOfActions(const std::vector<const char*>& names) {
  auto leaf = std::make_unique<Leaf>("leaf");
  for (const char* const name : names) {
    leaf->addActivity(name);
  }
  leaf->finish();
  return std::make_unique<TestJoin>("join", childrenOf(std::move(leaf)));
}

/// Slot of a name in the table, or -1.
int slotOf(const Join& join, const std::string& name) {
  for (int slot = 0; slot < join.ActionNameTableSize; slot++) {
    if (join.ActionNameHashTable[slot] != nullptr && name == join.ActionNameHashTable[slot]) {
      return slot;
    }
  }
  return -1;
}

TEST(JoinNameTableTest, FiveActionsWithThreeNamesTake12Slots) {
  const auto join = joinOfActions({"fail", "repair", "fail", "idle", "fail"});
  EXPECT_EQ(join->ObjectCounter, 3);
  EXPECT_EQ(join->ActionNameTableSize, 12);
  EXPECT_EQ(std::accumulate(join->ActionNameCardinalities, join->ActionNameCardinalities + 12, 0), 5);
  EXPECT_EQ(join->ActionNameCardinalities[slotOf(*join, "fail")], 3);
  EXPECT_EQ(join->ActionNameCardinalities[slotOf(*join, "repair")], 1);
  EXPECT_EQ(join->ActionNameCardinalities[slotOf(*join, "idle")], 1);
}

TEST(JoinNameTableTest, TheTextsBelongToTheActions) {
  const auto join = joinOfActions({"fail", "fail"});
  EXPECT_EQ(join->ActionNameHashTable[slotOf(*join, "fail")], join->getActionList()[0]->ActionName);
}

TEST(JoinNameTableTest, WithoutActionsTheTableIsEmpty) {
  const auto join = joinOfActions({});
  EXPECT_EQ(join->ObjectCounter, 0);
  EXPECT_EQ(join->ActionNameTableSize, 0);
  join->HashActions();
  EXPECT_EQ(join->hashActionsCounter, 0U);
}

TEST(JoinNameTableTest, NamesOfOneHomeSlotAlternateAroundIt) {
  // Codes 65, 85, 105, 125 and 45 all leave 5 when divided by 20, the size for five names.
  const auto join = joinOfActions({"A", "U", "i", "}", "-", "U"});
  ASSERT_EQ(join->ActionNameTableSize, 20);
  EXPECT_EQ(slotOf(*join, "A"), 5);
  EXPECT_EQ(slotOf(*join, "U"), 5 + 1);
  EXPECT_EQ(slotOf(*join, "i"), 5 - 1);
  EXPECT_EQ(slotOf(*join, "}"), 5 + 4);
  EXPECT_EQ(slotOf(*join, "-"), 5 - 4);
  EXPECT_EQ(join->ActionNameCardinalities[5], 1);
  EXPECT_EQ(join->ActionNameCardinalities[6], 2);
}

TEST(JoinNameTableTest, AProbeBelowSlot0WrapsIn32Bits) {
  // Codes 36, 48 and 60 all leave 0 when divided by 12; 0 - 1 is 4294967295, which leaves 3.
  const auto join = joinOfActions({"$", "0", "<"});
  ASSERT_EQ(join->ActionNameTableSize, 12);
  EXPECT_EQ(slotOf(*join, "$"), 0);
  EXPECT_EQ(slotOf(*join, "0"), 1);
  EXPECT_EQ(slotOf(*join, "<"), 3);
}

/// Images of 6 and 4 bytes besides one shared place.
class JoinImageTest : public testing::Test {
 protected:
  JoinImageTest() {
    auto a = leafWithPlaces("a", {1, 2, 3, 90});
    auto b = leafWithPlaces("b", {91, 4, 5});
    a_ = a.get();
    b_ = b.get();
    auto x = std::make_unique<Place>("x");
    x_ = x.get();
    join_ = std::make_unique<TestJoin>(
        "join", childrenOf(std::move(a), std::move(b)),
        sharedOf(SharedVariable{std::move(x), {{0, placeOf(*a_, 3)}, {1, placeOf(*b_, 0)}}}));
  }

  Leaf* a_ = nullptr;
  Leaf* b_ = nullptr;
  Place* x_ = nullptr;
  std::unique_ptr<TestJoin> join_;
};

TEST_F(JoinImageTest, TheChildrensImagesComeFirstAndTheSharedVariableBehindThem) {
  EXPECT_EQ(join_->StateSize(), 12);
  EXPECT_EQ(join_->SubmodelStateSize[0], 6);
  EXPECT_EQ(join_->SubmodelStateSize[1], 4);
  EXPECT_EQ(join_->SharedStateSize(), 2);
  EXPECT_THAT(imageOf(*join_), ElementsAre(1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 91, 0));
}

TEST_F(JoinImageTest, AnImageBringsEveryMarkBack) {
  auto image = imageOf(*join_);
  std::vector<unsigned char> other = {11, 0, 12, 0, 13, 0, 14, 0, 15, 0, 16, 0};
  join_->SetState(other.data());
  EXPECT_EQ(placeOf(*a_, 2)->getMark(), 13);
  EXPECT_EQ(placeOf(*b_, 1)->getMark(), 14);
  EXPECT_EQ(placeOf(*a_, 3)->getMark(), 16);
  EXPECT_EQ(placeOf(*b_, 0)->getMark(), 16);
  EXPECT_EQ(imageOf(*join_), other);
  join_->SetState(image.data());
  EXPECT_EQ(imageOf(*join_), image);
}

TEST_F(JoinImageTest, TheWalksStepByTheSizesNotedAtSetup) {
  join_->SubmodelStateSize[0] = 8;
  std::vector<unsigned char> image(14, 0xEE);
  join_->CurrentState(image.data());
  EXPECT_THAT(image, ElementsAre(1, 0, 2, 0, 3, 0, 0xEE, 0xEE, 4, 0, 5, 0, 91, 0));
  image = {11, 0, 12, 0, 13, 0, 0xEE, 0xEE, 14, 0, 15, 0, 16, 0};
  join_->SetState(image.data());
  EXPECT_EQ(placeOf(*a_, 2)->getMark(), 13);
  EXPECT_EQ(placeOf(*b_, 1)->getMark(), 14);
  EXPECT_EQ(placeOf(*b_, 2)->getMark(), 15);
  EXPECT_EQ(x_->getMark(), 16);
}

TEST_F(JoinImageTest, TheTreeIsAnsweredChildByChild) {
  EXPECT_EQ(join_->GetModelType(), BaseModelClass::JoinModel);
  EXPECT_EQ(join_->GetNumberOfChildren(), 2);
  EXPECT_EQ(join_->GetChild(0), a_);
  EXPECT_EQ(join_->GetChild(1), b_);
}

TEST_F(JoinImageTest, TheLocalStateIsTheSharedVariablesAlone) {
  ASSERT_TRUE(join_->HasLocalState());
  State* saved = nullptr;
  join_->ConstructLocalState(saved);
  join_->GetLocalState(saved);
  const auto* const bytes = static_cast<const unsigned char*>(saved->GetStatePtr());
  EXPECT_EQ(bytes[0], 91);
  EXPECT_EQ(bytes[1], 0);
  // 91 times the first prime plus 0 times the second
  EXPECT_EQ(saved->hash(), 91 * 2);
  EXPECT_EQ(support::standardOutputOf([saved] { saved->print(); }), "   91    0\n");

  placeOf(*a_, 0)->setMark(50);
  x_->setMark(7);
  join_->SetLocalState(saved);
  EXPECT_EQ(x_->getMark(), 91);
  EXPECT_EQ(placeOf(*a_, 0)->getMark(), 50);
  join_->DestructLocalState(saved);
  join_->DestructLocalState(nullptr);
}

TEST_F(JoinImageTest, TwoLocalStatesCompareAndCopy) {
  State* first = nullptr;
  State* second = nullptr;
  join_->ConstructLocalState(first);
  join_->ConstructLocalState(second);
  join_->GetLocalState(first);
  x_->setMark(90);
  join_->GetLocalState(second);
  EXPECT_GT(first->compare(*second), 0);
  *first = *second;
  EXPECT_EQ(first->compare(*second), 0);
  join_->DestructLocalState(first);
  join_->DestructLocalState(second);
}

TEST(JoinTest, AJoinWhoseSharedVariablesWereSharedAwayHasNoLocalState) {
  auto a = leafWithPlaces("a", {1, 2});
  Place* const inA = placeOf(*a, 0);
  auto low = std::make_unique<Place>("low");
  Place* const lowX = low.get();
  auto inner = std::make_unique<TestJoin>("inner", childrenOf(std::move(a)),
                                          sharedOf(SharedVariable{std::move(low), {{0, inA}}}));
  TestJoin* const innerJoin = inner.get();
  EXPECT_TRUE(innerJoin->HasLocalState());
  TestJoin outer("outer", childrenOf(std::move(inner)),
                 sharedOf(SharedVariable{std::make_unique<Place>("top"), {{0, lowX}}}));
  EXPECT_FALSE(innerJoin->HasLocalState());
  EXPECT_EQ(innerJoin->SharedStateSize(), 0);
  EXPECT_TRUE(outer.HasLocalState());
  EXPECT_THAT(imageOf(outer), ElementsAre(2, 0, 1, 0));
}

TEST(JoinTest, AJoinWithoutChildrenIsAnEmptyModel) {
  TestJoin join("join");
  EXPECT_EQ(join.StateSize(), 0);
  EXPECT_EQ(join.GetNumberOfChildren(), 0);
  EXPECT_FALSE(join.HasLocalState());
  join.CurrentState(nullptr);
  join.SetState(nullptr);
  EXPECT_TRUE(join.CompareState(nullptr, nullptr));
}

TEST(JoinTest, VariablesOfEveryKindAreShared) {
  using testing_support::Message;
  using testing_support::ScalarArray;
  const auto fill = [](Leaf& leaf, short number) {
    leaf.add<ScalarArray<int>>("array", std::initializer_list<int>{number, number + 1});
    leaf.add<Message>("message", "", testing_support::Message_state{number, number});
    leaf.add<ExtendedPlace<double>>("weight", number);
    leaf.finish();
  };
  auto a = std::make_unique<Leaf>("a");
  auto b = std::make_unique<Leaf>("b");
  fill(*a, 1);
  fill(*b, 10);
  BaseStateVariableClass** const inA = a->GetLocalStateVariables(nullptr);
  BaseStateVariableClass** const inB = b->GetLocalStateVariables(nullptr);
  TestJoin join(
      "join", childrenOf(std::move(a), std::move(b)),
      sharedOf(SharedVariable{std::make_unique<ScalarArray<int>>("array", std::initializer_list<int>{0, 0}),
                              {{0, inA[0]}, {1, inB[0]}}},
               SharedVariable{std::make_unique<Message>("message"), {{0, inA[1]}, {1, inB[1]}}},
               SharedVariable{std::make_unique<ExtendedPlace<double>>("weight"), {{0, inA[2]}, {1, inB[2]}}}));
  // An array stays in the image of every model that has it; structs and scalars are stored at the top alone.
  EXPECT_THAT(imageOf(join), ElementsAre(10, 0, 0, 0, 11, 0, 0, 0,        // array of a
                                         10, 0, 0, 0, 11, 0, 0, 0,        // array of b
                                         10, 0, 0, 0, 11, 0, 0, 0,        // array of the join
                                         10, 0, 0, 0, 10, 0, 0, 0,        // message
                                         0, 0, 0, 0, 0, 0, 0x24, 0x40));  // the double 10.0
  EXPECT_EQ(join.getNumStateVariables(), 6 - 6 + 3);
}

TEST_F(JoinImageTest, AChildBeyondTheLastFailsTheAssertion) {
  EXPECT_DEATH(join_->GetChild(2), "Assertion failed: i < GetNumberOfChildren\\(\\), file Join\\.cpp, line [0-9]+");
}

TEST_F(JoinImageTest, LocalAndGlobalActionsAreNotAnswered) {
  base_action_list_t actions;
  EXPECT_DEATH(join_->GetLocalActions(actions), "Assertion failed: false, file Join\\.cpp");
  EXPECT_DEATH(join_->GetGlobalActions(actions), "Assertion failed: false, file Join\\.cpp");
}

TEST(JoinTest, ItGivesBackAllThatItMade) {
  const auto makeAndUse = [] {
    auto first = leafWithPlaces("first", {1, 2});
    auto second = leafWithPlaces("second", {1});
    SharedVariable shared{std::make_unique<Place>("shared"), {{0, placeOf(*first, 1)}, {1, placeOf(*second, 0)}}};
    TestJoin join("join", childrenOf(std::move(first), std::move(second)), sharedOf(std::move(shared)));
    imageOf(join);
    State* state = nullptr;
    join.ConstructLocalState(state);
    join.DestructLocalState(state);
  };
  EXPECT_EQ(support::leftBehindBy(makeAndUse), 0U);
}

}  // namespace
