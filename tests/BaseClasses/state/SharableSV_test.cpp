#include "BaseClasses/state/SharableSV.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "BaseClasses/state/TestVariables.h"

namespace {

using testing::ElementsAre;
using testing_support::addAffectArc;
using testing_support::addEnableArc;
using testing_support::NamedAction;
using testing_support::printed;

/// A sharable int with a name and a value.
class Variable : public SharableSV<int> {
 public:
  explicit Variable(const char* name, int value = 0) {
    SetName(name);
    setState(value);
  }
};

/// The owners along the chain, newest first; null stands for a pointer that no variable holds.
template <typename T>
std::vector<BaseStateVariableClass*> chainOwners(const SharableSV<T>& variable) {
  std::vector<BaseStateVariableClass*> owners;
  for (SharedPointer<T>* link = variable.getHead(); link != nullptr; link = link->getNeighbor()) {
    owners.push_back(link->getOwner());
  }
  return owners;
}

template <typename T>
std::vector<T**> chainPointers(const SharableSV<T>& variable) {
  std::vector<T**> pointers;
  for (SharedPointer<T>* link = variable.getHead(); link != nullptr; link = link->getNeighbor()) {
    pointers.push_back(link->getPointer());
  }
  return pointers;
}

std::vector<BaseActionClass*> actionsOf(List<BaseActionClass>* list) {
  return {list->getList(), list->getList() + list->getNumItems()};
}

void expectMemberOf(SharableSV<int>& member, SharableSV<int>& leader) {
  EXPECT_FALSE(member.getStored());
  EXPECT_TRUE(member.getShared());
  EXPECT_EQ(member.getLeader(), &leader);
  EXPECT_EQ(member.getHead(), nullptr);
  EXPECT_EQ(member.getPointer(), leader.getPointer());
  EXPECT_EQ(member.getAffectingActions(), leader.getAffectingActions());
  EXPECT_EQ(member.getEnabledActions(), leader.getEnabledActions());
}

TEST(SharableSVTest, ANewVariableIsAloneWithAZeroedCellAndItsOwnPointerOnTheChain) {
  SharableSV<int> variable;
  EXPECT_STREQ(variable.getName(), "default");
  EXPECT_EQ(variable.getState(), 0);
  EXPECT_TRUE(variable.getStored());
  EXPECT_FALSE(variable.getShared());
  EXPECT_EQ(variable.getLeader(), &variable);
  EXPECT_EQ(variable.getSharingCount(), 1);
  EXPECT_THAT(chainOwners(variable), ElementsAre(&variable));
  EXPECT_EQ(*variable.getHead()->getPointer(), variable.getPointer());
}

TEST(SharableSVTest, TheAccessorsReachOneLocation) {
  Variable variable("x", 3);
  variable.State() += 4;
  EXPECT_EQ(variable.getState(), 7);
  *variable.getPointer() = 9;
  EXPECT_EQ(variable.getState(), 9);
}

TEST(SharableSVTest, APointerFromOutsideGetsTheLocationAndGoesToTheFrontOfTheChain) {
  Variable variable("x", 5);
  int* older = nullptr;
  int* newer = nullptr;
  variable.Register(&older);
  variable.Register(&newer);
  EXPECT_EQ(older, variable.getPointer());
  EXPECT_EQ(newer, variable.getPointer());
  EXPECT_EQ(variable.getSharingCount(), 3);
  EXPECT_THAT(chainOwners(variable), ElementsAre(nullptr, nullptr, &variable));
  EXPECT_EQ(chainPointers(variable)[0], &newer);
  EXPECT_EQ(chainPointers(variable)[1], &older);
}

TEST(SharableSVTest, SetPointerMovesTheVariableAndEveryPointerOnItsChain) {
  Variable variable("x", 5);
  int* watched = nullptr;
  variable.Register(&watched);
  int* const cell = variable.getPointer();
  int elsewhere = 8;
  variable.setPointer(&elsewhere);
  EXPECT_EQ(watched, &elsewhere);
  EXPECT_EQ(variable.getState(), 8);
  variable.setPointer(cell);  // the variable frees its own cell
  EXPECT_EQ(watched, cell);
}

TEST(SharableSVTest, TwoAloneVariablesBecomeOneUnderTheCallerWithTheOthersValue) {
  Variable a("a", 1);
  Variable b("b", 5);
  int* const cell = a.getPointer();
  a.ShareWith(&b);
  EXPECT_EQ(a.getState(), 5);
  EXPECT_EQ(b.getState(), 5);
  EXPECT_EQ(a.getPointer(), cell);
  EXPECT_TRUE(a.getStored());
  EXPECT_TRUE(a.getShared());
  EXPECT_EQ(a.getLeader(), &a);
  expectMemberOf(b, a);
  b.setState(7);
  EXPECT_EQ(a.getState(), 7);
}

TEST(SharableSVTest, TheChainOfTheOtherGoesBeforeTheLeadersAndTheCountsAddUp) {
  Variable a("a");
  Variable b("b");
  int* pointerOfA = nullptr;
  int* pointerOfB = nullptr;
  int* secondPointerOfB = nullptr;
  a.Register(&pointerOfA);
  b.Register(&pointerOfB);
  b.Register(&secondPointerOfB);
  a.ShareWith(&b);
  EXPECT_THAT(chainOwners(a), ElementsAre(nullptr, nullptr, &b, nullptr, &a));
  EXPECT_EQ(chainPointers(a)[0], &secondPointerOfB);
  EXPECT_EQ(chainPointers(a)[1], &pointerOfB);
  EXPECT_EQ(chainPointers(a)[3], &pointerOfA);
  EXPECT_EQ(a.getSharingCount(), 2 + 3);
  EXPECT_EQ(b.getSharingCount(), 3);
}

TEST(SharableSVTest, APointerRegisteredBeforeTheSharingFollowsToTheNewLocation) {
  Variable a("a", 1);
  Variable b("b", 5);
  int* cached = nullptr;
  b.Register(&cached);
  a.ShareWith(&b);
  EXPECT_EQ(cached, a.getPointer());
  *cached = 12;
  EXPECT_EQ(a.getState(), 12);
}

TEST(SharableSVTest, AMemberThatSharesHandsTheAloneVariableToItsLeaderWhoseValueStays) {
  Variable a("a", 1);
  Variable b("b", 5);
  Variable c("c", 9);
  a.ShareWith(&b);
  b.ShareWith(&c);
  expectMemberOf(c, a);
  EXPECT_EQ(c.getState(), 5);
  EXPECT_THAT(chainOwners(a), ElementsAre(&c, &b, &a));
  EXPECT_EQ(a.getSharingCount(), 3);
}

TEST(SharableSVTest, AnAloneVariableThatSharesWithAMemberJoinsTheMembersLeader) {
  Variable a("a", 1);
  Variable b("b", 5);
  Variable c("c", 9);
  a.ShareWith(&b);
  c.ShareWith(&b);
  expectMemberOf(c, a);
  EXPECT_EQ(c.getState(), 5);
  EXPECT_EQ(a.getSharingCount(), 3);
}

TEST(SharableSVTest, ALeaderThatSharesTakesInTheOtherRingAndItsValue) {
  Variable a("a", 1);
  Variable b("b", 2);
  Variable c("c", 3);
  Variable d("d", 4);
  a.ShareWith(&b);
  c.ShareWith(&d);
  a.ShareWith(&c);
  EXPECT_EQ(a.getState(), 4);
  expectMemberOf(c, a);
  EXPECT_THAT(chainOwners(a), ElementsAre(&d, &c, &b, &a));
  EXPECT_EQ(a.getSharingCount(), 4);
}

TEST(SharableSVTest, OnlyTheLeaderThatMovesGetsANewLeader) {
  Variable a("a");
  Variable c("c");
  Variable d("d");
  c.ShareWith(&d);
  a.ShareWith(&c);
  EXPECT_EQ(c.getLeader(), &a);
  EXPECT_EQ(d.getLeader(), &c);
  EXPECT_FALSE(d.getLeader()->getStored());
  EXPECT_EQ(d.getPointer(), a.getPointer());
  EXPECT_EQ(d.getAffectingActions(), a.getAffectingActions());
}

TEST(SharableSVTest, BetweenTwoMembersTheOthersLeaderTakesInTheCallersLeader) {
  Variable a("a", 1);
  Variable b("b", 2);
  Variable c("c", 3);
  Variable d("d", 4);
  a.ShareWith(&b);
  c.ShareWith(&d);
  b.ShareWith(&d);  // b counts 1 pointer and the leader c counts 2
  expectMemberOf(a, c);
  EXPECT_TRUE(c.getStored());
  EXPECT_EQ(b.getLeader(), &a);
  EXPECT_EQ(b.getState(), 4);
  EXPECT_EQ(c.getSharingCount(), 4);
  EXPECT_THAT(chainOwners(c), ElementsAre(&b, &a, &d, &c));
}

TEST(SharableSVTest, AMemberThatCountsMorePointersThanTheOthersLeaderTakesTheOtherRingInItself) {
  Variable a("a", 1);
  Variable b("b", 2);
  Variable c("c", 3);
  Variable d("d", 4);
  int* first = nullptr;
  int* second = nullptr;
  int* cached = nullptr;
  b.Register(&first);
  b.Register(&second);
  d.Register(&cached);
  NamedAction onD("onD");
  addAffectArc(d, onD);
  a.ShareWith(&b);
  c.ShareWith(&d);
  ASSERT_EQ(b.getSharingCount(), 3);
  ASSERT_EQ(c.getSharingCount(), 3);
  b.Register(&first);  // now b's own count of 4 is above c's 3
  b.ShareWith(&d);

  EXPECT_EQ(c.getLeader(), &b);
  EXPECT_FALSE(c.getStored());
  EXPECT_EQ(c.getHead(), nullptr);
  EXPECT_THAT(chainOwners(b), ElementsAre(nullptr, &d, &c, nullptr));
  EXPECT_EQ(b.getSharingCount(), 4 + 3);
  EXPECT_EQ(a.getSharingCount(), 4);
  EXPECT_FALSE(b.getStored());
  EXPECT_TRUE(a.getStored());
  EXPECT_EQ(cached, a.getPointer());
  EXPECT_EQ(d.getState(), 2);
  EXPECT_EQ(d.getAffectingActions(), a.getAffectingActions());
  EXPECT_THAT(actionsOf(a.getAffectingActions()), ElementsAre(&onD));
}

TEST(SharableSVTest, WithEqualCountsTheOthersLeaderTakesInTheCallersLeader) {
  Variable a("a", 1);
  Variable b("b", 2);
  Variable c("c", 3);
  Variable d("d", 4);
  int* pointer = nullptr;
  b.Register(&pointer);
  a.ShareWith(&b);
  c.ShareWith(&d);
  ASSERT_EQ(b.getSharingCount(), c.getSharingCount());
  b.ShareWith(&d);
  expectMemberOf(a, c);
}

TEST(SharableSVTest, VariablesThatAreOneAlreadyStayAsTheyAre) {
  Variable a("a", 1);
  Variable b("b", 2);
  Variable c("c", 3);
  NamedAction action("action");
  addAffectArc(b, action);
  a.ShareWith(&b);
  a.ShareWith(&c);
  a.ShareWith(&b);
  b.ShareWith(&a);
  b.ShareWith(&c);
  a.ShareWith(&a);
  b.ShareWith(&b);
  EXPECT_EQ(a.getState(), 3);
  EXPECT_EQ(a.getSharingCount(), 3);
  EXPECT_THAT(chainOwners(a), ElementsAre(&c, &b, &a));
  EXPECT_THAT(action.affected(), ElementsAre(&a));
}

TEST(SharableSVTest, AVariableThatTookInMembersThroughRegisterAloneIsNotMarkedShared) {
  Variable a("a", 1);
  Variable b("b", 2);
  a.Register(&b);
  EXPECT_FALSE(a.getShared());
  EXPECT_TRUE(a.getStored());
  expectMemberOf(b, a);
  EXPECT_EQ(b.getState(), 1);
}

TEST(SharableSVTest, TheActionListsMergeWithoutDuplicatesAndEveryMemberSeesThem) {
  Variable a("a");
  Variable b("b");
  Variable c("c");
  NamedAction onA("onA");
  NamedAction onB("onB");
  NamedAction onAll("onAll");
  addAffectArc(a, onA);
  addAffectArc(a, onAll);
  addAffectArc(b, onAll);
  addAffectArc(b, onB);
  addEnableArc(b, onB);
  addEnableArc(c, onA);
  b.ShareWith(&c);
  a.ShareWith(&b);
  EXPECT_THAT(actionsOf(a.getAffectingActions()), ElementsAre(&onA, &onAll, &onB));
  EXPECT_THAT(actionsOf(a.getEnabledActions()), ElementsAre(&onB, &onA));
  for (Variable* const member : {&b, &c}) {
    EXPECT_EQ(member->getAffectingActions(), a.getAffectingActions()) << member->getName();
    EXPECT_EQ(member->getEnabledActions(), a.getEnabledActions()) << member->getName();
  }
}

TEST(SharableSVTest, TheActionsNameTheLeaderInThePlaceOfTheMember) {
  Variable a("a");
  Variable b("b");
  Variable own("own");
  NamedAction action("action");
  addAffectArc(b, action);
  addAffectArc(own, action);
  addEnableArc(own, action);
  addEnableArc(b, action);
  a.ShareWith(&b);
  EXPECT_THAT(action.affected(), ElementsAre(&a, &own));
  EXPECT_THAT(action.enabling(), ElementsAre(&own, &a));
}

TEST(SharableSVTest, AnActionThatNamesBothVariablesNamesTheLeaderOnce) {
  Variable a("a");
  Variable b("b");
  NamedAction action("action");
  addAffectArc(b, action);
  addAffectArc(a, action);
  a.ShareWith(&b);
  EXPECT_THAT(action.affected(), ElementsAre(&a));
}

TEST(SharableSVTest, AMemberThatSharesNamesItsLeaderInTheActionsOfTheNewcomer) {
  Variable a("a");
  Variable b("b");
  Variable c("c");
  NamedAction onC("onC");
  addAffectArc(c, onC);
  addEnableArc(c, onC);
  a.ShareWith(&b);
  b.ShareWith(&c);
  EXPECT_THAT(onC.affected(), ElementsAre(&a));
  EXPECT_THAT(onC.enabling(), ElementsAre(&a));
}

TEST(SharableSVTest, AnAffectingActionOfALeaderIsEnteredOnceForTheWholeRing) {
  Variable a("a");
  Variable b("b");
  int* pointer = nullptr;
  b.Register(&pointer);
  a.ShareWith(&b);
  NamedAction action("action");
  a.appendAffectingAction(&action);
  EXPECT_THAT(actionsOf(a.getAffectingActions()), ElementsAre(&action));
  EXPECT_EQ(b.getNumAffectingActions(), 1);
}

TEST(SharableSVTest, AnAffectingActionOfAMemberIsIgnored) {
  Variable a("a");
  Variable b("b");
  a.ShareWith(&b);
  NamedAction action("action");
  b.appendAffectingAction(&action);
  EXPECT_EQ(a.getNumAffectingActions(), 0);
}

TEST(SharableSVTest, AnEnabledActionOfAMemberGoesToTheSharedList) {
  Variable a("a");
  Variable b("b");
  a.ShareWith(&b);
  NamedAction action("action");
  b.appendEnabledAction(&action);
  EXPECT_THAT(actionsOf(a.getEnabledActions()), ElementsAre(&action));
}

TEST(SharableSVTest, TheSizeInTheImageIsThatOfTheTypeForAMemberToo) {
  SharableSV<short> a;
  SharableSV<short> b;
  a.ShareWith(&b);
  EXPECT_EQ(a.StateSize(), 2);
  EXPECT_EQ(b.StateSize(), 2);
  EXPECT_EQ(SharableSV<int>().StateSize(), 4);
  EXPECT_EQ(SharableSV<double>().StateSize(), 8);
}

TEST(SharableSVTest, TheValueGoesToAnUnalignedPlaceOfAnImageAndBack) {
  Variable variable("x", 0x01020304);
  unsigned char image[6] = {9, 9, 9, 9, 9, 9};
  variable.CurrentState(image + 1);
  EXPECT_THAT(image, ElementsAre(9, 4, 3, 2, 1, 9));
  variable.setState(0);
  variable.SetState(image + 1);
  EXPECT_EQ(variable.getState(), 0x01020304);
}

TEST(SharableSVTest, TheStateIsPrintedAsNameAndValueInALine) {
  Variable variable("queue", -3);
  EXPECT_EQ(printed(variable), "queue = -3\n");
  std::ostringstream value;
  variable.printStateVal(&value);
  EXPECT_EQ(value.str(), "-3");
}

TEST(SharableSVTest, PrintStateWithoutAStreamGoesToStandardOutput) {
  Variable variable("queue", 4);
  testing::internal::CaptureStdout();
  variable.printState();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "queue = 4\n");
}

TEST(SharableSVTest, ShareCallsShareWithForAVariableOfTheSameType) {
  Variable a("a", 1);
  Variable b("b", 5);
  BaseStateVariableClass& first = a;
  first.share(&b);
  EXPECT_EQ(a.getState(), 5);
  expectMemberOf(b, a);
}

TEST(SharableSVTest, LeaderAndMembersMayBeDestroyedInAnyOrder) {
  for (const bool leaderFirst : {true, false}) {
    auto leader = std::make_unique<Variable>("leader", 1);
    auto member = std::make_unique<Variable>("member", 2);
    leader->ShareWith(member.get());
    if (leaderFirst) {
      leader.reset();
      EXPECT_FALSE(member->getStored());
    } else {
      member.reset();
      EXPECT_EQ(leader->getState(), 2);
    }
  }
}

TEST(SharableSVDebugTest, RegisterTellsTheChainAboveLevel3) {
  Variable a("a");
  Variable b("b");
  int* cached = nullptr;
  b.Register(&cached);
  GlobalDebugLevel = 4;
  testing::internal::CaptureStdout();
  a.ShareWith(&b);
  const std::string output = testing::internal::GetCapturedStdout();
  GlobalDebugLevel = 0;

  const auto address = [](const void* pointer) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", pointer);
    return std::string(text);
  };
  std::string expected = "** Now a has a head pointer = " + address(a.getHead()) +
                         "\n"
                         "** a  has 3 elements.\n"
                         "** a really has 3\n"
                         "a Linked List Contains :\n";
  for (int** const pointer : chainPointers(a)) {
    expected += address(static_cast<const void*>(pointer)) + "\n";
  }
  EXPECT_EQ(output, expected);

  Variable c("c");
  GlobalDebugLevel = 3;
  testing::internal::CaptureStdout();
  a.ShareWith(&c);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  GlobalDebugLevel = 0;
}

TEST(SharableSVDebugTest, AppendAffectingActionTellsEachVariableOfTheRingAboveLevel2) {
  Variable a("a");
  Variable b("b");
  a.ShareWith(&b);
  NamedAction action("action");
  testing::internal::CaptureStdout();
  GlobalDebugLevel = 3;
  a.appendAffectingAction(&action);
  GlobalDebugLevel = 2;
  a.appendAffectingAction(&action);
  GlobalDebugLevel = 0;
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "** Appended affecting action to\n** Appended affecting action to\n");
}

TEST(SharableSVDeathTest, SharingWithAnotherTypeFailsTheAssertion) {
  Variable a("a");
  SharableSV<short> other;
  EXPECT_DEATH(a.share(&other), "Assertion failed: otherSV, file SharableSV.h, line [0-9]+");
  EXPECT_DEATH(a.share(nullptr), "Assertion failed: otherSV, ");
}

TEST(SharableSVDeathTest, RegisteringAVariableWithoutAChainFailsTheAssertion) {
  Variable a("a");
  Variable b("b");
  Variable c("c");
  a.ShareWith(&b);
  EXPECT_DEATH(c.Register(&b), "Assertion failed: TheOtherPointer->getHead\\(\\), file SharableSV.h");
}

TEST(SharableSVDeathTest, AVariableWithoutListsCannotTakeAnotherOneIn) {
  Variable a("a");
  Variable b("b");
  List<BaseActionClass>* const affecting = a.getAffectingActions();
  a.setAffectingActions(nullptr);
  EXPECT_DEATH(a.Register(&b), "Assertion failed: SVAffectingActions, file SharableSV.h");
  a.setAffectingActions(affecting);
  List<BaseActionClass>* const enabled = a.getEnabledActions();
  a.setEnabledActions(nullptr);
  EXPECT_DEATH(a.Register(&b), "Assertion failed: SVEnabledActions, file SharableSV.h");
  a.setEnabledActions(enabled);
}

TEST(SharableSVDeathTest, AVariableWithoutALocationTakesNoPointer) {
  Variable a("a");
  int* const cell = a.getPointer();
  int* pointer = nullptr;
  a.setPointer(nullptr);
  EXPECT_DEATH(a.Register(&pointer), "Assertion failed: TheState, file SharableSV.h");
  a.setPointer(cell);
}

}  // namespace
