#include "BaseClasses/state/BaseStructStateVariable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "BaseClasses/state/TestVariables.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::addAffectArc;
using testing_support::addEnableArc;
using testing_support::AnyStruct;
using testing_support::imageOf;
using testing_support::Message;
using testing_support::NamedAction;
using testing_support::printed;
using testing_support::ScalarArray;

/// A struct whose construction and field list stand open to the test; it deletes its fields.
class OpenStruct : public BaseStructStateVariable {
 public:
  OpenStruct() = default;
  OpenStruct(const char* name, const char* prefix) : BaseStructStateVariable(name, prefix) {}
  OpenStruct(const char* name, const char* prefix, const ArrayType* types, int count)
      : BaseStructStateVariable(name, prefix, types, count) {}
  ~OpenStruct() override {
    for (const fieldType& entry : fields) {
      delete entry.field;
    }
  }

  void add(ArrayType type, BaseStateVariableClass* variable) { fields.push_back(field(type, variable)); }
  void fill(std::size_t position, BaseStateVariableClass* variable) { fields[position].field = variable; }
  BaseStateVariableClass* at(std::size_t position) { return fields[position].field; }
};

struct Pair_state {
  short first;
  short second;
};

std::vector<BaseStateVariableClass*> leavesOf(BaseStateVariableClass& variable) {
  const std::unique_ptr<List<BaseStateVariableClass>> leaves(variable.getLeafNodes());
  return {leaves->getList(), leaves->getList() + leaves->getNumItems()};
}

std::vector<BaseActionClass*> actionsOf(List<BaseActionClass>* list) {
  return {list->getList(), list->getList() + list->getNumItems()};
}

TEST(BaseStructStateVariableTest, ANewStructIsStoredAndNotShared) {
  OpenStruct unnamed;
  OpenStruct named("msg", "train");
  EXPECT_STREQ(unnamed.getName(), "default");
  EXPECT_STREQ(named.getFullyQualifiedName(), "train.msg");
  for (OpenStruct* const variable : {&unnamed, &named}) {
    EXPECT_TRUE(variable->getStored());
    EXPECT_FALSE(variable->getShared());
    EXPECT_EQ(variable->getSize(), 0);
    EXPECT_TRUE(variable->isLeafNode());
    EXPECT_EQ(variable->getNumLeafNodes(), 1);
    EXPECT_THAT(leavesOf(*variable), IsEmpty());
  }
}

TEST(BaseStructStateVariableTest, TypesGivenAtConstructionMakeEntriesWithoutAVariable) {
  const ArrayType types[] = {ArrayType_CHAR, ArrayType_DOUBLE, ArrayType_STRUCT};
  OpenStruct variable("msg", "train", types, 3);
  EXPECT_EQ(variable.getSize(), 3);
  for (std::size_t i = 0; i < 3; i++) {
    EXPECT_EQ(variable.at(i), nullptr);
    EXPECT_EQ(variable.getType(static_cast<int>(i)), types[i]);
  }
  variable.fill(2, new Message("inner"));
  EXPECT_EQ(variable.StateSize(), 1 + 8 + 8);
}

TEST(BaseStructStateVariableTest, TwoIntFieldsTake8BytesAndTheSecondBeginsAtOffset4) {
  Message message("msg", "", {0x11, 0x22});
  EXPECT_EQ(message.StateSize(), 8);
  EXPECT_THAT(imageOf(message), ElementsAre(0x11, 0, 0, 0, 0x22, 0, 0, 0));
}

TEST(BaseStructStateVariableTest, EveryKindOfFieldTakesItsOwnBytesWithoutPadding) {
  OpenStruct variable("mixed", "");
  variable.add(ArrayType_CHAR, new ExtendedPlace<char>("c", static_cast<char>(1)));
  variable.add(ArrayType_INT, new ExtendedPlace<int>("i", 2));
  variable.add(ArrayType_SHORT, new ExtendedPlace<short>("s", 3));
  variable.add(ArrayType_DOUBLE, new ExtendedPlace<double>("d", 1.0));
  variable.add(ArrayType_FLOAT, new ExtendedPlace<float>("f", 1.0F));
  variable.add(ArrayType_ARRAY, new ScalarArray<short>("a", {4, 5}));
  variable.add(ArrayType_STRUCT, new Message("m", "mixed", {6, 7}));
  EXPECT_EQ(variable.StateSize(), 1 + 4 + 2 + 8 + 4 + 4 + 8);
  const auto image = imageOf(variable);
  EXPECT_THAT(image, ElementsAre(1, 2, 0, 0, 0, 3, 0,           // char, int, short
                                 0, 0, 0, 0, 0, 0, 0xF0, 0x3F,  // the double 1.0
                                 0, 0, 0x80, 0x3F,              // the float 1.0
                                 4, 0, 5, 0,                    // array
                                 6, 0, 0, 0, 7, 0, 0, 0));      // struct
  std::vector<unsigned char> zeros(image.size(), 0);
  variable.SetState(zeros.data());
  EXPECT_EQ(imageOf(variable), zeros);
  variable.SetState(const_cast<unsigned char*>(image.data()));
  EXPECT_EQ(imageOf(variable), image);
}

TEST(BaseStructStateVariableTest, AFieldsPlaceFollowsItsDeclaredTypeWhateverTheVariableSays) {
  OpenStruct variable("odd", "");
  variable.add(ArrayType_INT, new ExtendedPlace<short>("narrow", 1));
  variable.add(ArrayType_SHORT, new ExtendedPlace<short>("next", 2));
  EXPECT_EQ(variable.StateSize(), 6);
  EXPECT_THAT(imageOf(variable), ElementsAre(1, 0, 0, 0, 2, 0));
}

TEST(BaseStructStateVariableTest, AStructBuiltWithoutANameAnswersSize0WhateverIsAdded) {
  OpenStruct unnamed;
  unnamed.add(ArrayType_INT, new ExtendedPlace<int>("x"));
  EXPECT_EQ(unnamed.StateSize(), 0);
  OpenStruct named("msg", "");
  named.add(ArrayType_INT, new ExtendedPlace<int>("x"));
  EXPECT_EQ(named.StateSize(), 4);
}

TEST(BaseStructStateVariableTest, TheSizeIsComputedByTheFirstQuestionAndStays) {
  OpenStruct variable("msg", "");
  variable.add(ArrayType_INT, new ExtendedPlace<int>("x"));
  EXPECT_EQ(variable.StateSize(), 4);
  variable.add(ArrayType_INT, new ExtendedPlace<int>("y"));
  EXPECT_EQ(variable.StateSize(), 4);
}

TEST(BaseStructStateVariableTest, TheStateIsPrintedAsABlockOfTheFieldsLines) {
  Message message("MAmsg", "", {3, 700});
  EXPECT_EQ(printed(message), "MAmsg = {\n.timestamp = 3\n.EoA = 700\n}\n");
}

TEST(BaseStructStateVariableTest, SharingMakesTheOtherAMemberWithTheMergedLists) {
  Message a("a");
  Message b("b", "", {5, 6});
  NamedAction onA("onA");
  NamedAction onB("onB");
  addAffectArc(a, onA);
  addAffectArc(b, onB);
  addEnableArc(b, onB);
  a.ShareWith(&b);
  EXPECT_TRUE(a.getStored());
  EXPECT_FALSE(a.getShared());
  EXPECT_FALSE(b.getStored());
  EXPECT_TRUE(b.getShared());
  EXPECT_THAT(actionsOf(a.getAffectingActions()), ElementsAre(&onA, &onB));
  EXPECT_THAT(actionsOf(a.getEnabledActions()), ElementsAre(&onB));
  EXPECT_EQ(a.getAffectingActions(), b.getAffectingActions());
  EXPECT_EQ(a.getEnabledActions(), b.getEnabledActions());
}

TEST(BaseStructStateVariableTest, TheFieldsAreSharedPairwise) {
  Message a("a", "", {1, 2});
  Message b("b", "", {5, 6});
  static_cast<BaseStateVariableClass&>(a).share(&b);
  EXPECT_EQ(a.timestamp->getMark(), 5);
  EXPECT_EQ(a.EoA->getMark(), 6);
  b.EoA->setMark(60);
  EXPECT_EQ(a.EoA->getMark(), 60);
  a.timestamp->setMark(50);
  EXPECT_EQ(b.timestamp->getMark(), 50);
}

TEST(BaseStructStateVariableTest, TheActionsNameTheLeadersFields) {
  Message a("a");
  Message b("b");
  NamedAction action("action");
  addAffectArc(b, action);
  addEnableArc(b, action);
  a.ShareWith(&b);
  EXPECT_THAT(action.affected(), ElementsAre(a.timestamp, a.EoA));
  EXPECT_THAT(action.enabling(), ElementsAre(a.timestamp, a.EoA));
}

TEST(BaseStructStateVariableTest, AStructWithoutFieldsIsALeafThatTheActionsNameItself) {
  OpenStruct a("a", "");
  OpenStruct b("b", "");
  NamedAction action("action");
  addAffectArc(b, action);
  addEnableArc(b, action);
  ASSERT_THAT(action.affected(), ElementsAre(&b));
  a.ShareWith(&b);
  EXPECT_THAT(action.affected(), ElementsAre(&a));
  EXPECT_THAT(action.enabling(), ElementsAre(&a));
}

TEST(BaseStructStateVariableTest, SurplusFieldsOfTheOtherStructStayAlone) {
  AnyStruct<int> a("a", {{new ExtendedPlace<int>("x"), ArrayType_INT}});
  Message b("b");
  a.ShareWith(&b);
  EXPECT_FALSE(b.timestamp->getStored());
  EXPECT_TRUE(b.EoA->getStored());
}

TEST(BaseStructStateVariableTest, AMemberThatSharesLetsTheOtherJoinItsLists) {
  Message leader("leader", "", {1, 1});
  Message member("member", "", {2, 2});
  Message other("other", "", {3, 3});
  NamedAction onOther("onOther");
  addAffectArc(other, onOther);
  leader.ShareWith(&member);
  member.ShareWith(&other);
  EXPECT_FALSE(member.getStored());
  EXPECT_FALSE(other.getStored());
  EXPECT_EQ(other.getAffectingActions(), leader.getAffectingActions());
  EXPECT_THAT(actionsOf(leader.getAffectingActions()), ElementsAre(&onOther));
  EXPECT_EQ(other.EoA->getMark(), 2);
  EXPECT_EQ(other.EoA->getPointer(), leader.EoA->getPointer());
}

TEST(BaseStructStateVariableTest, ARingThatIsTakenInTakesItsMembersListsAlong) {
  // The members of the inner ring had borrowed lists that the outer sharing destroys.
  Message top("top");
  Message inner("inner");
  Message first("first");
  Message second("second");
  NamedAction onSecond("onSecond");
  addAffectArc(second, onSecond);
  addEnableArc(second, onSecond);
  inner.ShareWith(&first);
  first.ShareWith(&second);
  top.ShareWith(&inner);
  for (Message* const member : {&inner, &first, &second}) {
    EXPECT_FALSE(member->getStored()) << member->getName();
    EXPECT_EQ(member->getAffectingActions(), top.getAffectingActions()) << member->getName();
    EXPECT_EQ(member->getEnabledActions(), top.getEnabledActions()) << member->getName();
  }
  EXPECT_THAT(actionsOf(top.getAffectingActions()), ElementsAre(&onSecond));
  EXPECT_THAT(onSecond.affected(), ElementsAre(top.timestamp, top.EoA));
}

TEST(BaseStructStateVariableTest, SharingWithAMemberTakesItsWholeRingIn) {
  Message a("a", "", {1, 1});
  Message leader("leader", "", {2, 2});
  Message member("member", "", {3, 3});
  leader.ShareWith(&member);
  a.ShareWith(&member);
  EXPECT_FALSE(leader.getStored());
  EXPECT_FALSE(member.getStored());
  EXPECT_TRUE(a.getStored());
  EXPECT_EQ(leader.getAffectingActions(), a.getAffectingActions());
  EXPECT_EQ(member.getAffectingActions(), a.getAffectingActions());
  EXPECT_EQ(a.EoA->getPointer(), leader.EoA->getPointer());
  EXPECT_EQ(a.EoA->getMark(), 3);
}

TEST(BaseStructStateVariableTest, StructsThatAreOneAlreadyStayAsTheyAre) {
  Message a("a", "", {1, 1});
  Message b("b", "", {2, 2});
  a.ShareWith(&b);
  a.ShareWith(&b);
  b.ShareWith(&a);
  a.ShareWith(&a);
  EXPECT_TRUE(a.getStored());
  EXPECT_FALSE(b.getStored());
  EXPECT_EQ(a.EoA->getMark(), 2);
}

TEST(BaseStructStateVariableTest, StructsOfOneRingMayBeDestroyedInAnyOrder) {
  for (const bool leaderFirst : {true, false}) {
    auto leader = std::make_unique<Message>("leader");
    auto member = std::make_unique<Message>("member");
    leader->ShareWith(member.get());
    if (leaderFirst) {
      leader.reset();
      EXPECT_FALSE(member->getStored());
    } else {
      member.reset();
      EXPECT_EQ(leader->StateSize(), 8);
    }
  }
}

TEST(BaseStructStateVariableTest, BothKindsOfActionAreEnteredInTheStructAndItsFields) {
  Message message("msg");
  NamedAction action("action");
  message.appendAffectingAction(&action);
  message.appendEnabledAction(&action);
  for (BaseStateVariableClass* const variable :
       {static_cast<BaseStateVariableClass*>(&message), static_cast<BaseStateVariableClass*>(message.timestamp),
        static_cast<BaseStateVariableClass*>(message.EoA)}) {
    EXPECT_EQ(variable->getNumAffectingActions(), 1) << variable->getName();
    EXPECT_EQ(variable->getNumEnabledActions(), 1) << variable->getName();
  }
}

TEST(BaseStructStateVariableTest, TheLeavesStandInDeclarationOrder) {
  auto* const numbers = new ScalarArray<short>("numbers", {1, 2});
  auto* const last = new ExtendedPlace<int>("last");
  AnyStruct<Pair_state> variable("v", {{numbers, ArrayType_ARRAY}, {last, ArrayType_INT}});
  EXPECT_THAT(leavesOf(variable), ElementsAre(numbers->Index(0), numbers->Index(1), last));
  EXPECT_EQ(variable.getNumLeafNodes(), 3);
  EXPECT_FALSE(variable.isLeafNode());
}

TEST(BaseStructStateVariableTest, AnActionTakesTheLeavesAndGivesThemUpAgain) {
  Message message("msg");
  NamedAction action("action");
  action.addAffectedSV(&message);
  action.addEnablingSV(&message);
  EXPECT_THAT(action.affected(), ElementsAre(message.timestamp, message.EoA));
  EXPECT_THAT(action.enabling(), ElementsAre(message.timestamp, message.EoA));
  action.removeAffectedSV(&message);
  action.removeEnablingSV(&message);
  EXPECT_THAT(action.affected(), IsEmpty());
  EXPECT_THAT(action.enabling(), IsEmpty());
}

TEST(BaseStructStateVariableDeathTest, SharingWithAStructOfFewerFieldsFailsTheAssertion) {
  Message a("a");
  AnyStruct<int> b("b", {{new ExtendedPlace<int>("x"), ArrayType_INT}});
  EXPECT_DEATH(a.ShareWith(&b),
               "Assertion failed: otheri!=otherStruct->fields\\.end\\(\\), file BaseStructStateVariable\\.cpp");
}

TEST(BaseStructStateVariableDeathTest, SharingWithAnythingButAStructFailsTheAssertion) {
  Message message("msg");
  ScalarArray<int> array("a", {1});
  EXPECT_DEATH(message.share(&array), "Assertion failed: otherStruct, file BaseStructStateVariable\\.cpp");
}

/// A field without a list of leaves.
class Leafless : public ExtendedPlace<int> {
 public:
  List<BaseStateVariableClass>* getLeafNodes() override { return nullptr; }
};

TEST(BaseStructStateVariableDeathTest, AFieldWithoutAListOfLeavesFailsTheAssertion) {
  AnyStruct<int> variable("v", {{new Leafless, ArrayType_INT}});
  EXPECT_DEATH(delete variable.getLeafNodes(), "Assertion failed: childTemp, file BaseStructStateVariable\\.cpp");
}

}  // namespace
