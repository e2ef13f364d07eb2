#include "BaseClasses/BaseStateVariableClass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>

#include "BaseClasses/BaseActionClass.h"
#include "support/CapturedOutput.h"
#include "support/FlushWatch.h"
#include "support/TestVariable.h"

namespace {

using support::TestVariable;

static_assert(std::is_abstract_v<BaseStateVariableClass>);
static_assert(!std::is_copy_constructible_v<BaseStateVariableClass>);

/// Offers nothing beyond what a variable must.
class BareVariable : public BaseStateVariableClass {
 public:
  using BaseStateVariableClass::BaseStateVariableClass;
  using BaseStateVariableClass::VariableNamePrefix;
  int StateSize() override { return 0; }
  void SetState(void* /*image*/) override {}
  void CurrentState(void* /*image*/) override {}
  void share(BaseStateVariableClass* /*other*/) override {}
};

std::string addressOf(const void* item) {
  std::ostringstream text;
  text << item;
  return text.str();
}

TEST(BaseStateVariableClassTest, ANewVariableIsStoredUnsharedAndNamedDefault) {
  BareVariable variable;
  EXPECT_STREQ(variable.getName(), "default");
  EXPECT_STREQ(variable.StateVariableName, "default");
  EXPECT_STREQ(variable.VariableNamePrefix, "");
  EXPECT_FALSE(variable.getShared());
  EXPECT_TRUE(variable.getStored());
  EXPECT_FALSE(variable.getFunctionallyShared());
  EXPECT_EQ(variable.getSharingCount(), 0);
  EXPECT_EQ(variable.getNumAffectingActions(), 0);
  EXPECT_EQ(variable.getNumEnabledActions(), 0);
  EXPECT_NE(variable.getAffectingActions(), variable.getEnabledActions());
}

TEST(BaseStateVariableClassTest, NameAndPrefixAreCopies) {
  char name[] = "queue";
  char prefix[] = "line";
  BareVariable variable(name, prefix);
  name[0] = prefix[0] = 'x';
  EXPECT_STREQ(variable.getName(), "queue");
  EXPECT_STREQ(variable.VariableNamePrefix, "line");
  char newName[] = "server";
  char newPrefix[] = "hall";
  variable.SetName(newName);
  variable.SetPrefix(newPrefix);
  newName[0] = newPrefix[0] = 'x';
  EXPECT_STREQ(variable.getName(), "server");
  EXPECT_STREQ(variable.VariableNamePrefix, "hall");
}

TEST(BaseStateVariableClassTest, TheQualifiedNameHasThePrefixIfThereIsOne) {
  BareVariable variable("queue", "");
  EXPECT_STREQ(variable.getFullyQualifiedName(), "queue");
  variable.SetPrefix("line.2");
  EXPECT_STREQ(variable.getFullyQualifiedName(), "line.2.queue");
  variable.SetName("a name that is longer than the one before it by far");
  EXPECT_STREQ(variable.getFullyQualifiedName(), "line.2.a name that is longer than the one before it by far");
}

TEST(BaseStateVariableClassTest, TwoQualifiedNamesCanBeUsedInOneStatement) {
  BareVariable first("queue", "line");
  BareVariable second("queue", "hall");
  std::ostringstream text;
  text << first.getFullyQualifiedName() << ' ' << second.getFullyQualifiedName();
  EXPECT_EQ(text.str(), "line.queue hall.queue");
}

TEST(BaseStateVariableClassTest, TheFlagsAreKept) {
  BareVariable variable;
  variable.setShared(true);
  EXPECT_TRUE(variable.getShared());
  variable.setFunctionallyShared(true);
  EXPECT_TRUE(variable.getFunctionallyShared());
  variable.setStored(false);
  EXPECT_FALSE(variable.getStored());
  variable.setStored(true);  // the variable owns its lists, and frees them
  EXPECT_TRUE(variable.getStored());
}

TEST(BaseStateVariableClassTest, ABareVariablePrintsNothing) {
  BareVariable variable;
  std::ostringstream text;
  variable.printState(&text);
  variable.printStateVal(&text);
  EXPECT_EQ(text.str(), "");
}

TEST(BaseStateVariableClassTest, PrintStateWithoutAStreamWritesToStandardOutput) {
  TestVariable variable("queue", 4);
  BaseStateVariableClass& base = variable;
  EXPECT_EQ(support::standardOutputOf([&] { base.printState(); }), "queue = 4\n");
}

TEST(BaseStateVariableClassTest, ALeafIsItsOwnOnlyLeaf) {
  BareVariable variable;
  EXPECT_TRUE(variable.isLeafNode());
  EXPECT_EQ(variable.getNumLeafNodes(), 1);
  const std::unique_ptr<List<BaseStateVariableClass>> leaves(variable.getLeafNodes());
  ASSERT_EQ(leaves->getNumItems(), 1);
  EXPECT_EQ(leaves->getItem(0), &variable);
}

/// A variable and three actions.
class VariableActionsTest : public testing::Test {
 protected:
  BareVariable variable{"queue", "line"};
  BaseActionClass a;
  BaseActionClass b;
  BaseActionClass c;
};

TEST_F(VariableActionsTest, TheTwoListsAreKeptApartAndDropRepeats) {
  variable.appendAffectingAction(&a);
  variable.appendAffectingAction(&b);
  variable.appendAffectingAction(&a);
  variable.appendEnabledAction(&c);
  variable.appendEnabledAction(&c);
  ASSERT_EQ(variable.getNumAffectingActions(), 2);
  EXPECT_EQ(variable.getAffectingAction(0), &a);
  EXPECT_EQ(variable.getAffectingAction(1), &b);
  ASSERT_EQ(variable.getNumEnabledActions(), 1);
  EXPECT_EQ(variable.getEnabledAction(0), &c);
}

TEST_F(VariableActionsTest, AnActionIsRemovedFromTheOneList) {
  for (BaseActionClass* const action : {&a, &b}) {
    variable.appendAffectingAction(action);
    variable.appendEnabledAction(action);
  }
  variable.removeAffectingAction(&a);
  ASSERT_EQ(variable.getNumAffectingActions(), 1);
  EXPECT_EQ(variable.getAffectingAction(0), &b);
  EXPECT_EQ(variable.getNumEnabledActions(), 2);
  variable.removeEnabledAction(&b);
  ASSERT_EQ(variable.getNumEnabledActions(), 1);
  EXPECT_EQ(variable.getEnabledAction(0), &a);
}

TEST_F(VariableActionsTest, AnActionIsReplacedInTheOneList) {
  for (BaseActionClass* const action : {&a, &b}) {
    variable.appendAffectingAction(action);
    variable.appendEnabledAction(action);
  }
  variable.replaceAffectingAction(&a, &c);
  EXPECT_EQ(variable.getAffectingAction(0), &c);
  EXPECT_EQ(variable.getEnabledAction(0), &a);
  variable.replaceEnabledAction(&b, &c);
  EXPECT_EQ(variable.getEnabledAction(1), &c);
  EXPECT_EQ(variable.getAffectingAction(1), &b);
}

TEST_F(VariableActionsTest, CopiedActionsAreAppendedWithoutRepeats) {
  BareVariable other;
  other.appendAffectingAction(&b);
  other.appendAffectingAction(&c);
  other.appendEnabledAction(&a);
  variable.appendAffectingAction(&c);
  variable.copyAffectingActions(other.getAffectingActions());
  variable.copyEnabledActions(other.getEnabledActions());
  ASSERT_EQ(variable.getNumAffectingActions(), 2);
  EXPECT_EQ(variable.getAffectingAction(0), &c);
  EXPECT_EQ(variable.getAffectingAction(1), &b);
  ASSERT_EQ(variable.getNumEnabledActions(), 1);
  EXPECT_EQ(variable.getEnabledAction(0), &a);
}

TEST_F(VariableActionsTest, ALeafEntersItselfIntoTheListsOfAnAction) {
  variable.addSelfAsEnablingSVToAction(&a);
  variable.addSelfAsAffectedSVToAction(&b);
  ASSERT_EQ(a.getNumEnablingSVs(), 1);
  EXPECT_EQ(a.getEnablingSV(0), &variable);
  EXPECT_EQ(a.getNumAffectedSVs(), 0);
  ASSERT_EQ(b.getNumAffectedSVs(), 1);
  EXPECT_EQ(b.getAffectedSV(0), &variable);
  EXPECT_EQ(b.getNumEnablingSVs(), 0);
}

TEST_F(VariableActionsTest, ALeafLeavesTheListsOfAnAction) {
  a.addEnablingSV(&variable);
  a.addAffectedSV(&variable);
  variable.removeSelfFromEnablingSVOfAction(&a);
  EXPECT_EQ(a.getNumEnablingSVs(), 0);
  EXPECT_EQ(a.getNumAffectedSVs(), 1);
  variable.removeSelfFromAffectedSVOfAction(&a);
  EXPECT_EQ(a.getNumAffectedSVs(), 0);
}

TEST_F(VariableActionsTest, AListOfALeaderIsBorrowedAndOutlivesAMember) {
  BareVariable leader;
  leader.appendAffectingAction(&a);
  leader.appendEnabledAction(&b);
  {
    BareVariable member;
    delete member.getAffectingActions();
    delete member.getEnabledActions();
    member.setAffectingActions(leader.getAffectingActions());
    member.setEnabledActions(leader.getEnabledActions());
    member.setStored(false);
    EXPECT_EQ(member.getAffectingAction(0), &a);
    EXPECT_EQ(member.getEnabledAction(0), &b);
  }
  EXPECT_EQ(leader.getAffectingAction(0), &a);
  EXPECT_EQ(leader.getEnabledAction(0), &b);
}

TEST_F(VariableActionsTest, TheListsArePrintedBelowTheNameOfTheVariable) {
  variable.appendAffectingAction(&a);
  variable.appendAffectingAction(&b);
  EXPECT_EQ(support::standardOutputOf([&] { variable.printAffectingActions(); }),
            "Affecting actions for queue:\n[0] " + addressOf(&a) + "\n[1] " + addressOf(&b) + "\n");
  EXPECT_EQ(support::standardOutputOf([&] { variable.printEnabledActions(); }),
            "Enabled actions for queue:\nNo items in the list\n");
  EXPECT_THAT(support::linesHeldBack(std::cout,
                                     [&] {
                                       variable.printAffectingActions();
                                       variable.printEnabledActions();
                                     }),
              testing::IsEmpty());
}

TEST_F(VariableActionsTest, AnIndexAtTheCountFailsAnAssertion) {
  variable.appendAffectingAction(&a);
  variable.appendEnabledAction(&a);
  const std::string assertion = support::assertionIn("BaseStateVariableClass");
  EXPECT_EXIT(variable.getAffectingAction(1), testing::KilledBySignal(SIGABRT), assertion);
  EXPECT_EXIT(variable.getEnabledAction(1), testing::KilledBySignal(SIGABRT), assertion);
}

TEST_F(VariableActionsTest, ANegativeIndexFailsTheListsAssertion) {
  variable.appendAffectingAction(&a);
  EXPECT_EXIT(variable.getAffectingAction(-1), testing::KilledBySignal(SIGABRT), support::assertionIn("../List"));
  EXPECT_EXIT(variable.getEnabledAction(-1), testing::KilledBySignal(SIGABRT), support::assertionIn("../List"));
}

}  // namespace
