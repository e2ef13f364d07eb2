#include "BaseClasses/state/BaseArrayStateVariable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "BaseClasses/state/TestVariables.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing_support::addAffectArc;
using testing_support::addEnableArc;
using testing_support::imageOf;
using testing_support::Message;
using testing_support::MessageArray;
using testing_support::NamedAction;
using testing_support::printed;
using testing_support::ScalarArray;

/// An array with the given type and elements, which it deletes.
class PlainArray : public BaseArrayStateVariable {
 public:
  PlainArray() = default;
  PlainArray(const char* name, const char* prefix) : BaseArrayStateVariable(name, prefix) {}
  PlainArray(const char* name, ArrayType elementType, std::vector<BaseStateVariableClass*> elements)
      : BaseArrayStateVariable(name, "", elementType, static_cast<int>(elements.size())) {
    EXPECT_TRUE(fields.empty());
    EXPECT_GE(fields.capacity(), elements.size());
    fields.insert(fields.end(), elements.begin(), elements.end());
  }
  PlainArray(const char* name, ArrayType elementType, int size) : BaseArrayStateVariable(name, "", elementType, size) {}
  ~PlainArray() override {
    for (BaseStateVariableClass* const element : fields) {
      delete element;
    }
  }
};

std::vector<BaseStateVariableClass*> leavesOf(BaseStateVariableClass& variable) {
  const std::unique_ptr<List<BaseStateVariableClass>> leaves(variable.getLeafNodes());
  return {leaves->getList(), leaves->getList() + leaves->getNumItems()};
}

TEST(BaseArrayStateVariableTest, ANewArrayHasNoElementsAndNoTypeUntilOneIsGiven) {
  PlainArray unnamed;
  EXPECT_EQ(unnamed.getType(), ArrayType_EMPTY);
  EXPECT_EQ(unnamed.getSize(), 0);
  EXPECT_STREQ(unnamed.getName(), "default");
  PlainArray named("array", "model");
  EXPECT_EQ(named.getType(), ArrayType_EMPTY);
  EXPECT_STREQ(named.getFullyQualifiedName(), "model.array");
  PlainArray typed("array", ArrayType_FLOAT, 4);
  EXPECT_EQ(typed.getType(), ArrayType_FLOAT);
  EXPECT_EQ(typed.getSize(), 0);
}

TEST(BaseArrayStateVariableTest, ANegativeSizeReservesNothing) {
  PlainArray array("array", ArrayType_SHORT, -1);
  EXPECT_EQ(array.getSize(), 0);
}

TEST(BaseArrayStateVariableTest, TheSizeInTheImageIsTheCountTimesTheElementsBytes) {
  EXPECT_EQ((ScalarArray<int>("a", {1, 2, 3}).StateSize()), 12);
  EXPECT_EQ((ScalarArray<short>("a", {1, 2, 3}).StateSize()), 6);
  EXPECT_EQ((ScalarArray<char>("a", {1, 2, 3}).StateSize()), 3);
  EXPECT_EQ((ScalarArray<float>("a", {1, 2, 3}).StateSize()), 12);
  EXPECT_EQ((ScalarArray<double>("a", {1, 2, 3}).StateSize()), 24);
  EXPECT_EQ(MessageArray("a", 3).StateSize(), 24);
  PlainArray nested("a", ArrayType_ARRAY, {new ScalarArray<short>("0", {1, 2}), new ScalarArray<short>("1", {3, 4})});
  EXPECT_EQ(nested.StateSize(), 8);
}

TEST(BaseArrayStateVariableTest, TheSizeFollowsTheDeclaredTypeWhateverTheElementsSay) {
  PlainArray array("a", ArrayType_SHORT, {new ExtendedPlace<int>("0"), new ExtendedPlace<int>("1")});
  EXPECT_EQ(array.StateSize(), 4);
  PlainArray unordered("a", ArrayType_UNORDERED, {new ExtendedPlace<int>("0"), new ExtendedPlace<int>("1")});
  EXPECT_EQ(unordered.StateSize(), 8);
}

TEST(BaseArrayStateVariableTest, AnArrayWithoutElementsHasAnEmptyImage) {
  PlainArray array("a", ArrayType_STRUCT, 0);
  EXPECT_EQ(array.StateSize(), 0);
  array.CurrentState(nullptr);
  array.SetState(nullptr);
  EXPECT_EQ(array.getSize(), 0);
}

TEST(BaseArrayStateVariableTest, TheImageHoldsTheElementsInIndexOrderWithoutPadding) {
  ScalarArray<short> array("a", {1, 0x0203, -1});
  EXPECT_THAT(imageOf(array), ElementsAre(1, 0, 3, 2, 0xFF, 0xFF));
  std::vector<unsigned char> image = {7, 0, 8, 0, 9, 0};
  array.SetState(image.data());
  EXPECT_EQ(array.Index(0)->getMark(), 7);
  EXPECT_EQ(array.Index(1)->getMark(), 8);
  EXPECT_EQ(array.Index(2)->getMark(), 9);
}

TEST(BaseArrayStateVariableTest, TheImageOfAnArrayOfStructsHoldsEachStructsFields) {
  MessageArray array("messages", 2);
  array.Index(0)->timestamp->setMark(1);
  array.Index(0)->EoA->setMark(2);
  array.Index(1)->timestamp->setMark(3);
  array.Index(1)->EoA->setMark(4);
  const auto image = imageOf(array);
  EXPECT_THAT(image, ElementsAre(1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0));
  MessageArray copy("copy", 2);
  copy.SetState(const_cast<unsigned char*>(image.data()));
  EXPECT_EQ(copy.Index(1)->EoA->getMark(), 4);
  EXPECT_THAT(imageOf(copy), ElementsAreArray(image));
}

TEST(BaseArrayStateVariableTest, TheStateIsPrintedAsABlockOfTheElementsLines) {
  ScalarArray<int> array("speeds", {10, 20});
  EXPECT_EQ(printed(array), "speeds = {\n0 = 10\n1 = 20\n}\n");
  PlainArray empty("none", ArrayType_INT, 0);
  EXPECT_EQ(printed(empty), "none = {\n}\n");
}

TEST(BaseArrayStateVariableTest, SharingJoinsTheElementsAndLeavesTheArraysAlone) {
  ScalarArray<int> array("a", {1, 2});
  ScalarArray<int> other("b", {3, 4});
  NamedAction action("action");
  addEnableArc(other, action);
  array.ShareWith(&other);
  EXPECT_TRUE(array.getStored());
  EXPECT_TRUE(other.getStored());
  EXPECT_FALSE(array.getShared());
  EXPECT_FALSE(other.getShared());
  EXPECT_NE(array.getEnabledActions(), other.getEnabledActions());
  EXPECT_EQ(array.getNumEnabledActions(), 0);
  for (int i = 0; i < 2; i++) {
    EXPECT_TRUE(array.Index(i)->getStored());
    EXPECT_FALSE(other.Index(i)->getStored());
    EXPECT_EQ(array.Index(i)->getMark(), 3 + i);
    other.Index(i)->setMark(10 * i);
    EXPECT_EQ(array.Index(i)->getMark(), 10 * i);
  }
}

TEST(BaseArrayStateVariableTest, SharingReplacesTheLeavesInTheActions) {
  ScalarArray<short> array("a", {0, 0});
  ScalarArray<short> other("b", {0, 0});
  NamedAction action("action");
  addAffectArc(other, action);
  addEnableArc(other, action);
  array.ShareWith(&other);
  EXPECT_THAT(action.affected(), ElementsAre(array.Index(0), array.Index(1)));
  EXPECT_THAT(action.enabling(), ElementsAre(array.Index(0), array.Index(1)));
}

TEST(BaseArrayStateVariableTest, BothImagesHoldTheSharedElements) {
  ScalarArray<short> array("a", {1, 2});
  ScalarArray<short> other("b", {3, 4});
  array.ShareWith(&other);
  EXPECT_THAT(imageOf(array), ElementsAre(3, 0, 4, 0));
  EXPECT_THAT(imageOf(other), ElementsAre(3, 0, 4, 0));
}

TEST(BaseArrayStateVariableTest, SurplusElementsOfTheOtherArrayStayAlone) {
  ScalarArray<int> array("a", {1, 2});
  ScalarArray<int> other("b", {3, 4, 5});
  array.ShareWith(&other);
  EXPECT_FALSE(other.Index(1)->getStored());
  EXPECT_TRUE(other.Index(2)->getStored());
  EXPECT_FALSE(other.Index(2)->getShared());
}

TEST(BaseArrayStateVariableTest, ArraysOfStructsShareStructByStruct) {
  MessageArray array("a", 2);
  MessageArray other("b", 2);
  other.Index(1)->EoA->setMark(40);
  static_cast<BaseStateVariableClass&>(array).share(&other);
  EXPECT_EQ(array.Index(1)->EoA->getMark(), 40);
  EXPECT_FALSE(other.Index(1)->getStored());
  EXPECT_TRUE(array.Index(1)->getStored());
  EXPECT_TRUE(other.getStored());
}

TEST(BaseArrayStateVariableTest, AnAffectingActionIsEnteredInTheElementsAlone) {
  ScalarArray<int> array("a", {1, 2});
  NamedAction action("action");
  array.appendAffectingAction(&action);
  EXPECT_EQ(array.getNumAffectingActions(), 0);
  EXPECT_EQ(array.Index(0)->getNumAffectingActions(), 1);
  EXPECT_EQ(array.Index(1)->getNumAffectingActions(), 1);
}

TEST(BaseArrayStateVariableTest, AnEnabledActionIsEnteredInTheArrayAndTheElements) {
  ScalarArray<int> array("a", {1, 2});
  NamedAction action("action");
  array.appendEnabledAction(&action);
  EXPECT_EQ(array.getNumEnabledActions(), 1);
  EXPECT_EQ(array.Index(0)->getNumEnabledActions(), 1);
  EXPECT_EQ(array.Index(1)->getNumEnabledActions(), 1);
}

TEST(BaseArrayStateVariableTest, TheLeavesStandInIndexOrderWithTheFieldsInOrderWithin) {
  MessageArray array("messages", 3);
  EXPECT_THAT(leavesOf(array), ElementsAre(array.Index(0)->timestamp, array.Index(0)->EoA, array.Index(1)->timestamp,
                                           array.Index(1)->EoA, array.Index(2)->timestamp, array.Index(2)->EoA));
  EXPECT_EQ(array.getNumLeafNodes(), 6);
  EXPECT_FALSE(array.isLeafNode());
}

TEST(BaseArrayStateVariableTest, AnArrayWithoutElementsCountsAsOneLeaf) {
  PlainArray array("a", ArrayType_INT, 0);
  EXPECT_EQ(array.getNumLeafNodes(), 1);
  EXPECT_TRUE(array.isLeafNode());
  EXPECT_THAT(leavesOf(array), IsEmpty());
}

TEST(BaseArrayStateVariableTest, AnActionTakesTheLeavesAndGivesThemUpAgain) {
  ScalarArray<int> array("a", {1, 2});
  ExtendedPlace<int> single("single");
  NamedAction action("action");
  action.addAffectedSV(&array);
  action.addAffectedSV(&single);
  action.addEnablingSV(&array);
  EXPECT_THAT(action.affected(), ElementsAre(array.Index(0), array.Index(1), &single));
  EXPECT_THAT(action.enabling(), ElementsAre(array.Index(0), array.Index(1)));
  action.removeAffectedSV(&array);
  action.removeEnablingSV(&array);
  EXPECT_THAT(action.affected(), ElementsAre(&single));
  EXPECT_THAT(action.enabling(), IsEmpty());
}

TEST(BaseArrayStateVariableDeathTest, SharingWithAShorterArrayFailsTheAssertion) {
  ScalarArray<int> array("a", {1, 2});
  ScalarArray<int> other("b", {3});
  EXPECT_DEATH(array.ShareWith(&other),
               "Assertion failed: otheri!=otherArray->fields\\.end\\(\\), file BaseArrayStateVariable\\.cpp");
}

TEST(BaseArrayStateVariableDeathTest, SharingWithANullPointerIsTold) {
  ScalarArray<int> array("a", {1});
  EXPECT_EXIT(array.ShareWith(nullptr), testing::ExitedWithCode(1),
              "^ERROR: \"a\" is to be shared with a variable that is not there: its pointer is null\n$");
}

TEST(BaseArrayStateVariableDeathTest, SharingWithAnythingButAnArrayFailsTheAssertion) {
  ScalarArray<int> array("a", {1});
  ExtendedPlace<int> place("x");
  EXPECT_DEATH(array.share(&place), "Assertion failed: otherArray, file BaseArrayStateVariable\\.cpp");
}

TEST(BaseArrayStateVariableDeathTest, ANullActionFailsTheAssertion) {
  ScalarArray<int> array("a", {1});
  EXPECT_DEATH(array.appendAffectingAction(nullptr), "Assertion failed: TheAction, file BaseArrayStateVariable\\.cpp");
  EXPECT_DEATH(array.appendEnabledAction(nullptr), "Assertion failed: TheAction, file BaseArrayStateVariable\\.cpp");
}

/// An element without a list of leaves.
class Leafless : public ExtendedPlace<int> {
 public:
  List<BaseStateVariableClass>* getLeafNodes() override { return nullptr; }
};

TEST(BaseArrayStateVariableDeathTest, AnElementWithoutAListOfLeavesFailsTheAssertion) {
  PlainArray array("a", ArrayType_INT, {new Leafless});
  EXPECT_DEATH(delete array.getLeafNodes(), "Assertion failed: childTemp, file BaseArrayStateVariable\\.cpp");
}

}  // namespace
