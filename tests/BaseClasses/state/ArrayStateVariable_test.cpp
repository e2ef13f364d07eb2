#include "BaseClasses/state/ArrayStateVariable.h"

#include <gtest/gtest.h>

#include <csignal>
#include <limits>
#include <string>
#include <type_traits>

#include "BaseClasses/state/TestVariables.h"

namespace {

using testing_support::Message;
using testing_support::MessageArray;
using testing_support::ScalarArray;

TEST(ArrayStateVariableTest, EveryFormOfTheAccessGivesTheTypedElement) {
  ScalarArray<short> array("a", {5, 6, 7});
  static_assert(std::is_same_v<decltype(array.Index(0)), ExtendedPlace<short>*>);
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(array.Index(i)->getMark(), 5 + i);
    EXPECT_EQ(array[i], array.Index(i));
    EXPECT_EQ(array.index(i), array.Index(i));
  }
  array.Index(1)->Mark() = 60;
  EXPECT_EQ(array.Index(1)->getMark(), 60);
}

TEST(ArrayStateVariableTest, ElementsBearTheirIndexUnderTheArraysName) {
  MessageArray array("messages", 3);
  EXPECT_STREQ(array.Index(2)->getFullyQualifiedName(), "messages.2");
  EXPECT_STREQ(array.Index(2)->timestamp->getFullyQualifiedName(), "messages.2.timestamp");
}

TEST(ArrayStateVariableTest, AnArrayBuiltWithoutElementsHasTheTypeItWasGiven) {
  ArrayStateVariable<Message> unnamed;
  ArrayStateVariable<Message> named("a", "prefix");
  ArrayStateVariable<Message> typed("a", "", ArrayType_STRUCT, 2);
  EXPECT_EQ(unnamed.getType(), ArrayType_EMPTY);
  EXPECT_STREQ(named.getFullyQualifiedName(), "prefix.a");
  EXPECT_EQ(typed.getType(), ArrayType_STRUCT);
  EXPECT_EQ(typed.getSize(), 0);
}

TEST(ArrayStateVariableTest, GetMarkIsTheFirstElementOrNull) {
  ScalarArray<int> array("a", {5, 6});
  ScalarArray<int> empty("b", {});
  EXPECT_EQ(array.getMark(), array.Index(0));
  EXPECT_EQ(empty.getMark(), nullptr);
}

TEST(ArrayStateVariableTest, SetMarkGivesEveryElementTheValueOfTheSource) {
  ScalarArray<double> array("a", {1.5, 2.5, 3.5});
  ExtendedPlace<double> source("source", 7.25);
  array.setMark(&source);
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(array.Index(i)->getMark(), 7.25);
  }
  ScalarArray<double>("empty", {}).setMark(&source);
}

TEST(ArrayStateVariableTest, SetMarkTakesOneOfTheElementsAndWholeStructs) {
  MessageArray array("messages", 3);
  array.Index(1)->setMark({12, 34});
  array.setMark(array.Index(1));
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(array.Index(i)->timestamp->getMark(), 12);
    EXPECT_EQ(array.Index(i)->EoA->getMark(), 34);
  }
}

TEST(ArrayStateVariableDeathTest, AnIndexOutsideTheArrayIsReportedAndEndsTheProcess) {
  ScalarArray<int> array("speeds", {1, 2, 3});
  const auto isReported = [&array](int i) {
    EXPECT_EXIT((void)array.Index(i), testing::KilledBySignal(SIGABRT),
                "^Runtime error: index out of bounds\\. speeds\\[0\\.\\.2\\] indexed with " + std::to_string(i) +
                    "\nAssertion failed: 0, file BaseArrayStateVariable\\.cpp, line [0-9]+");
  };
  isReported(-1);
  isReported(3);
  isReported(std::numeric_limits<int>::max());
  isReported(std::numeric_limits<int>::min());
}

TEST(ArrayStateVariableDeathTest, TheOtherFormsOfTheAccessTestTheIndexToo) {
  ScalarArray<int> array("speeds", {1});
  EXPECT_DEATH((void)array[1], "speeds\\[0\\.\\.0\\] indexed with 1");
  EXPECT_DEATH((void)array.index(-1), "speeds\\[0\\.\\.0\\] indexed with -1");
}

TEST(ArrayStateVariableDeathTest, TheUpperBoundOfAnEmptyArrayIsTheLargestUnsignedSize) {
  ScalarArray<int> array("none", {});
  const std::string bound = std::to_string(std::numeric_limits<std::size_t>::max());
  EXPECT_DEATH((void)array.Index(0),
               "Runtime error: index out of bounds\\. none\\[0\\.\\." + bound + "\\] indexed with 0");
}

TEST(ArrayStateVariableDeathTest, SetMarkNeedsASourceOfTheElementsSize) {
  MessageArray array("messages", 1);
  EXPECT_DEATH(array.setMark(nullptr), "Assertion failed: source, file ArrayStateVariable\\.h");

  class Empty : public Message {
   public:
    Empty() : Message("empty") {}
    int StateSize() override { return 0; }
  } unfit;
  EXPECT_DEATH(array.setMark(&unfit),
               "Assertion failed: source->StateSize\\(\\) == fields\\.front\\(\\)->StateSize\\(\\)");
}

}  // namespace
