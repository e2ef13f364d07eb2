#include "Composer/Rep.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "BaseClasses/State.h"
#include "BaseClasses/state/TestVariables.h"
#include "Composer/TestModels.h"
#include "support/AllocationCounter.h"
#include "support/CapturedOutput.h"

namespace {

using testing::ElementsAre;
using testing_support::Children;
using testing_support::childrenOf;
using testing_support::imageOf;
using testing_support::Leaf;
using testing_support::leafWithPlaces;
using testing_support::placeOf;
using testing_support::sharedOf;
using testing_support::SharedVariable;
using testing_support::TestRep;

/// A rep of models with one place each, of the given marks.
std::unique_ptr<TestRep> repOfMarks(const std::vector<int>& marks) {
  Children replicas;
  for (const int mark : marks) {
    replicas.push_back(leafWithPlaces("replica", {mark}));
  }
  return std::make_unique<TestRep>("fleet", "train", std::move(replicas));
}

/// The marks in the order in which the image holds them.
std::vector<short> marksInImage(TestRep& rep) {
  auto image = imageOf(rep);
  std::vector<short> marks(image.size() / sizeof(short));
  for (std::size_t i = 0; i < marks.size(); i++) {
    readMemory2<short>(&image[i * sizeof(short)], &marks[i]);
  }
  return marks;
}

std::vector<short> sortedOnce(const std::vector<int>& marks) {
  return marksInImage(*repOfMarks(marks));
}

TEST(RepImageTest, ImagesInOrderStayInOrder) {
  EXPECT_THAT(sortedOnce({1, 2, 3}), ElementsAre(1, 2, 3));
  EXPECT_THAT(sortedOnce({2, 2, 2}), ElementsAre(2, 2, 2));
}

TEST(RepImageTest, TheLatterOfThePairMovesWhenTheFormerFitsBeforeTheNext) {
  EXPECT_THAT(sortedOnce({1, 3, 2}), ElementsAre(1, 2, 3));
  EXPECT_THAT(sortedOnce({1, 3, 2, 4}), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(sortedOnce({2, 3, 1}), ElementsAre(1, 2, 3));
  EXPECT_THAT(sortedOnce({3, 5, 1, 7}), ElementsAre(1, 3, 5, 7));
}

TEST(RepImageTest, TheFormerOfThePairMovesWhenItIsAboveTheNextButOne) {
  EXPECT_THAT(sortedOnce({1, 9, 2, 3}), ElementsAre(1, 2, 3, 9));
  EXPECT_THAT(sortedOnce({1, 5, 2, 3, 7}), ElementsAre(1, 2, 3, 5, 7));
}

TEST(RepImageTest, TheFirstElementMovesWhenTheFirstPairIsOutOfOrder) {
  EXPECT_THAT(sortedOnce({3, 1, 2}), ElementsAre(1, 2, 3));
  EXPECT_THAT(sortedOnce({2, 1}), ElementsAre(1, 2));
}

TEST(RepImageTest, OneMoveIsMadeAndTheRestStaysOutOfOrder) {
  EXPECT_THAT(sortedOnce({2, 1, 4, 3}), ElementsAre(1, 2, 4, 3));
  EXPECT_THAT(sortedOnce({4, 3, 2, 1}), ElementsAre(3, 2, 1, 4));
}

TEST(RepImageTest, EqualImagesKeepTheirOrderAndTheMovedOneGoesBehindItsEquals) {
  // The first 2 moves in front of the first image above it, which is 3.
  EXPECT_THAT(sortedOnce({2, 1, 2, 3}), ElementsAre(1, 2, 2, 3));
}

TEST(RepImageTest, ImagesCompareAsUnsignedBytesFromTheFront) {
  // 256 is the bytes 0 and 1, which come before 1 and 0; 200 is above 100 although it is negative as a signed byte.
  EXPECT_THAT(sortedOnce({1, 256}), ElementsAre(256, 1));
  EXPECT_THAT(sortedOnce({200, 100}), ElementsAre(100, 200));
}

TEST(RepImageTest, ReplicasTakeTheImagesOfTheirPositions) {
  const auto rep = repOfMarks({3, 1, 2});
  auto image = imageOf(*rep);
  rep->SetState(image.data());
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(placeOf(*rep->GetChild(i), 0)->getMark(), i + 1);
  }
  EXPECT_EQ(imageOf(*rep), image);
}

TEST(RepImageTest, MarkingsThatDifferByAPermutationHaveOneImage) {
  EXPECT_EQ(imageOf(*repOfMarks({1, 1, 2})), imageOf(*repOfMarks({2, 1, 1})));
}

TEST(RepImageTest, TheWorkingBufferHoldsTheImagesInReplicaOrder) {
  const auto rep = repOfMarks({3, 1});
  (void)imageOf(*rep);
  EXPECT_EQ(rep->UnlumpedThisTime[0], 3);
  EXPECT_EQ(rep->UnlumpedThisTime[2], 1);
  EXPECT_EQ(static_cast<unsigned char>(rep->UnlumpedLastTime[0]), 0xEF);
}

TEST(RepSetupTest, AllReplicasBearTheGivenName) {
  const auto rep = repOfMarks({1, 2});
  EXPECT_STREQ(rep->GetChild(0)->getName(), "train");
  EXPECT_STREQ(rep->GetChild(1)->getName(), "train");
  EXPECT_STREQ(rep->getName(), "fleet");
}

TEST(RepSetupTest, TheTwoBuffersDifferInTheirFirstByteAlone) {
  const auto rep = repOfMarks({1, 2});
  ASSERT_EQ(rep->StateSize(), 4);
  EXPECT_EQ(std::vector<unsigned char>(rep->UnlumpedLastTime, rep->UnlumpedLastTime + 4),
            (std::vector<unsigned char>{0xEF, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(std::vector<unsigned char>(rep->UnlumpedThisTime, rep->UnlumpedThisTime + 4),
            (std::vector<unsigned char>{0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(RepSetupTest, EveryReplicaHasABufferOfItsOwn) {
  const auto rep = repOfMarks({1, 2});
  EXPECT_EQ(rep->SubmodelStateSize, 2);
  EXPECT_NE(rep->LumpedStates[0], nullptr);
  EXPECT_NE(rep->LumpedStates[1], nullptr);
  EXPECT_NE(rep->LumpedStates[0], rep->LumpedStates[1]);
  EXPECT_NE(rep->dummystate, nullptr);
  EXPECT_FALSE(rep->FoundIt);
  EXPECT_EQ(rep->MinBits, 0);
  EXPECT_EQ(rep->MinBytes, 0);
}

TEST(RepSetupTest, ReplicasWithoutVariablesHaveAnEmptyImage) {
  Children replicas;
  replicas.push_back(leafWithPlaces("replica", {}));
  replicas.push_back(leafWithPlaces("replica", {}));
  TestRep rep("fleet", "train", std::move(replicas), sharedOf(SharedVariable{std::make_unique<Place>("x"), {}}));
  EXPECT_EQ(rep.StateSize(), 0);
  EXPECT_EQ(rep.getNumSharedStateVariables(), 0);
  unsigned char untouched = 0xEE;
  rep.CurrentState(&untouched);
  rep.SetState(&untouched);
  EXPECT_EQ(untouched, 0xEE);
}

TEST(RepSetupTest, SetupWithoutChildrenMakesEmptyBuffers) {
  Rep rep("fleet", 0, 0, nullptr);
  rep.Setup("train");
  EXPECT_EQ(rep.SubmodelStateSize, 0);
  EXPECT_EQ(rep.MyStateSize, 0);
}

TEST(RepEmptyTest, ARepOfNoReplicasIsAnEmptyModelAlsoWithoutSetup) {
  const char* const names[] = {"x"};
  Rep rep("fleet", 0, 1, names);
  EXPECT_EQ(rep.StateSize(), 0);
  EXPECT_EQ(rep.getNumSharedStateVariables(), 0);
  EXPECT_EQ(rep.GetNumberOfChildren(), 0);
  EXPECT_FALSE(rep.HasLocalState());
  rep.CurrentState(nullptr);
  rep.SetState(nullptr);
  EXPECT_TRUE(rep.CompareState(nullptr, nullptr));
}

/// Replicas with a place and an array of their own, and a place x that is one for all.
class SharedRepTest : public testing::Test {
 protected:
  explicit SharedRepTest(const std::vector<int>& ownMarks = {30, 10, 20}) {
    Children replicas;
    SharedVariable x{std::make_unique<Place>("x", static_cast<short>(99)), {}};
    x_ = static_cast<Place*>(x.variable.get());
    for (std::size_t i = 0; i < ownMarks.size(); i++) {
      auto leaf = std::make_unique<Leaf>("replica");
      members_.push_back(leaf->add<Place>("x", static_cast<short>(5 + i)));
      own_.push_back(leaf->add<Place>("own", static_cast<short>(ownMarks[i])));
      actions_.push_back(leaf->addActivity("fire", members_.back()));
      x.members.push_back({i, members_.back()});
      leaf->finish();
      replicas.push_back(std::move(leaf));
    }
    rep_ = std::make_unique<TestRep>("fleet", "train", std::move(replicas), sharedOf(std::move(x)));
  }

  Place* x_ = nullptr;
  std::vector<Place*> members_;
  std::vector<Place*> own_;
  std::vector<Activity*> actions_;
  std::unique_ptr<TestRep> rep_;
};

TEST_F(SharedRepTest, TheSharedMarkIsThatOfReplica0AndTheOthersAreDropped) {
  EXPECT_EQ(x_->getMark(), 5);
  EXPECT_TRUE(x_->getStored());
  for (Place* const member : members_) {
    EXPECT_FALSE(member->getStored());
    EXPECT_EQ(member->getPointer(), x_->getPointer());
    EXPECT_EQ(member->getLeader(), x_);
  }
}

TEST_F(SharedRepTest, TheSortedReplicasComeFirstAndTheSharedVariablesBehindThem) {
  EXPECT_EQ(rep_->SubmodelStateSize, 2);
  EXPECT_EQ(rep_->StateSize(), 3 * 2 + 2);
  EXPECT_THAT(imageOf(*rep_), ElementsAre(10, 0, 20, 0, 30, 0, 5, 0));
}

TEST_F(SharedRepTest, TheWorkingBufferIsClearedBehindTheImages) {
  (void)imageOf(*rep_);
  EXPECT_EQ(rep_->UnlumpedThisTime[4], 20);
  EXPECT_EQ(rep_->UnlumpedThisTime[6], 0);
  EXPECT_EQ(rep_->UnlumpedThisTime[7], 0);
}

TEST_F(SharedRepTest, AnImageBringsTheSharedMarkBack) {
  auto image = imageOf(*rep_);
  x_->setMark(1);
  rep_->SetState(image.data());
  EXPECT_EQ(members_[2]->getMark(), 5);
  EXPECT_EQ(own_[0]->getMark(), 10);
  EXPECT_EQ(own_[2]->getMark(), 30);
}

TEST_F(SharedRepTest, EveryReplicasFiringReachesTheOneMark) {
  for (Activity* const action : actions_) {
    action->Fire();
  }
  EXPECT_EQ(x_->getMark(), 5 + 3);
}

TEST_F(SharedRepTest, TheActionsOfAllReplicasNameTheSharedVariable) {
  for (Activity* const action : actions_) {
    ASSERT_EQ(action->getNumAffectedSVs(), 1);
    EXPECT_EQ(action->getAffectedSV(0), x_);
    ASSERT_EQ(action->getNumEnablingSVs(), 1);
    EXPECT_EQ(action->getEnablingSV(0), x_);
  }
  EXPECT_EQ(x_->getNumAffectingActions(), 3);
  EXPECT_EQ(x_->getNumEnabledActions(), 3);
}

TEST_F(SharedRepTest, TheSharingIsRecordedWithoutAParent) {
  EXPECT_THAT(rep_->ChildrenSharedSVList[0], ElementsAre(members_[0], members_[1], members_[2]));
  int links = 0;
  for (SharedStateVarLink* link = rep_->SharedStateVarList[0]; link != nullptr; link = link->getNext()) {
    EXPECT_EQ(link->parent, nullptr);
    links++;
  }
  EXPECT_EQ(links, 3);
  EXPECT_EQ(rep_->getNumStateVariables(), 6 - 3 + 1);
}

TEST_F(SharedRepTest, TheLocalStateIsTheSharedVariablesAlone) {
  ASSERT_TRUE(rep_->HasLocalState());
  State* saved = nullptr;
  rep_->ConstructLocalState(saved);
  rep_->GetLocalState(saved);
  EXPECT_EQ(support::standardOutputOf([saved] { saved->print(); }), "    5    0\n");
  x_->setMark(8);
  own_[1]->setMark(70);
  rep_->SetLocalState(saved);
  EXPECT_EQ(x_->getMark(), 5);
  EXPECT_EQ(own_[1]->getMark(), 70);
  rep_->DestructLocalState(saved);
  rep_->DestructLocalState(nullptr);
}

TEST_F(SharedRepTest, TheTreeIsAnsweredChildByChild) {
  EXPECT_EQ(rep_->GetModelType(), BaseModelClass::RepModel);
  EXPECT_EQ(rep_->GetNumberOfChildren(), 3);
  EXPECT_EQ(rep_->GetChild(1), rep_->ModelArray[1]);
}

class OneReplicaTest : public SharedRepTest {
 protected:
  OneReplicaTest() : SharedRepTest({30}) {}
};

TEST_F(OneReplicaTest, TheImageIsThatOfTheReplicaAndTheSharedPart) {
  EXPECT_EQ(rep_->StateSize(), 4);
  EXPECT_THAT(imageOf(*rep_), ElementsAre(30, 0, 5, 0));
}

TEST_F(SharedRepTest, AnImageWithoutAPlaceFailsTheAssertion) {
  EXPECT_DEATH(rep_->CurrentState(nullptr), "Assertion failed: new_location, file Rep\\.cpp, line [0-9]+");
}

TEST_F(SharedRepTest, AChildBeyondTheLastFailsTheAssertion) {
  EXPECT_DEATH(rep_->GetChild(3), "Assertion failed: i < GetNumberOfChildren\\(\\), file Rep\\.cpp, line [0-9]+");
}

TEST_F(SharedRepTest, LocalAndGlobalActionsAreNotAnswered) {
  base_action_list_t actions;
  EXPECT_DEATH(rep_->GetLocalActions(actions), "Assertion failed: false, file Rep\\.cpp");
  EXPECT_DEATH(rep_->GetGlobalActions(actions), "Assertion failed: false, file Rep\\.cpp");
}

TEST(RepDeathTest, ANegativeNumberOfReplicasIsReportedAndEndsTheProcessWithStatus1) {
  const char* const names[] = {"x", "y"};
  EXPECT_EXIT(Rep("fleet", -1, 2, names), testing::ExitedWithCode(1), "^Number of reps for fleet must be >= 0\\.\n$");
  EXPECT_EXIT(Rep("fleet", -2147483647, 0, nullptr), testing::ExitedWithCode(1),
              "^Number of reps for fleet must be >= 0\\.\n$");
}

TEST(RepTest, ItGivesBackAllThatItMade) {
  const auto makeAndUse = [] {
    auto first = leafWithPlaces("replica", {1, 2});
    auto second = leafWithPlaces("replica", {1, 2});
    SharedVariable shared{std::make_unique<Place>("shared"), {{0, placeOf(*first, 0)}, {1, placeOf(*second, 0)}}};
    TestRep rep("fleet", "train", childrenOf(std::move(first), std::move(second)), sharedOf(std::move(shared)));
    imageOf(rep);
    State* state = nullptr;
    rep.ConstructLocalState(state);
    rep.DestructLocalState(state);
  };
  EXPECT_EQ(support::leftBehindBy(makeAndUse), 0U);
}

}  // namespace
