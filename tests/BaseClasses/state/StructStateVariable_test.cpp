#include "BaseClasses/state/StructStateVariable.h"

#include <gtest/gtest.h>

#include <cstring>

#include "BaseClasses/state/TestVariables.h"

namespace {

using testing_support::AnyStruct;
using testing_support::Message;
using testing_support::ScalarArray;

TEST(StructStateVariableTest, GetMarkCollectsTheFieldsInARecord) {
  Message message("msg", "", {3, 700});
  const testing_support::Message_state mark = message.getMark();
  EXPECT_EQ(mark.timestamp, 3);
  EXPECT_EQ(mark.EoA, 700);
}

TEST(StructStateVariableTest, SetMarkWritesTheRecordIntoTheFields) {
  Message message("msg");
  testing_support::Message_state mark{5, -9};
  message.setMark(mark);
  EXPECT_EQ(message.timestamp->getMark(), 5);
  EXPECT_EQ(message.EoA->getMark(), -9);
}

/// Fields that the compiler sets apart with padding, unlike the image.
struct Mixed_state {
  char letter;
  double fraction;
  short number;
  int count;
  bool flag;
  float ratio;
};

class Mixed : public AnyStruct<Mixed_state> {
 public:
  Mixed()
      : AnyStruct<Mixed_state>("mixed", {{new ExtendedPlace<char>("letter"), ArrayType_CHAR},
                                         {new ExtendedPlace<double>("fraction"), ArrayType_DOUBLE},
                                         {new ExtendedPlace<short>("number"), ArrayType_SHORT},
                                         {new ExtendedPlace<int>("count"), ArrayType_INT},
                                         {new ExtendedPlace<bool>("flag"), ArrayType_CHAR},
                                         {new ExtendedPlace<float>("ratio"), ArrayType_FLOAT}}) {}

  template <typename T>
  T fieldValue(std::size_t position) {
    return static_cast<ExtendedPlace<T>*>(fields[position].field)->getMark();
  }
};

TEST(StructStateVariableTest, ARecordWithPaddingFindsEveryMember) {
  Mixed variable;
  variable.setMark({'q', 2.5, -3, 1 << 20, true, 0.75F});
  EXPECT_EQ(variable.fieldValue<char>(0), 'q');
  EXPECT_EQ(variable.fieldValue<double>(1), 2.5);
  EXPECT_EQ(variable.fieldValue<short>(2), -3);
  EXPECT_EQ(variable.fieldValue<int>(3), 1 << 20);
  EXPECT_TRUE(variable.fieldValue<bool>(4));
  EXPECT_EQ(variable.fieldValue<float>(5), 0.75F);

  const Mixed_state mark = variable.getMark();
  EXPECT_EQ(mark.letter, 'q');
  EXPECT_EQ(mark.fraction, 2.5);
  EXPECT_EQ(mark.number, -3);
  EXPECT_EQ(mark.count, 1 << 20);
  EXPECT_TRUE(mark.flag);
  EXPECT_EQ(mark.ratio, 0.75F);
}

struct Nested_state {
  char tag;
  testing_support::Message_state messages[2];
  short numbers[3];
  struct {
    short part;
    double weight;
  } inner;
  char last;
};

TEST(StructStateVariableTest, NestedStructsAndArraysAreNestedRecordsAndArrays) {
  auto* const messages = new testing_support::MessageArray("messages", 2);
  auto* const numbers = new ScalarArray<short>("numbers", {0, 0, 0});
  auto* const part = new ExtendedPlace<short>("part");
  auto* const weight = new ExtendedPlace<double>("weight");
  auto* const inner = new AnyStruct<Nested_state>("inner", {{part, ArrayType_SHORT}, {weight, ArrayType_DOUBLE}});
  auto* const last = new ExtendedPlace<char>("last");
  AnyStruct<Nested_state> variable("nested", {{new ExtendedPlace<char>("tag"), ArrayType_CHAR},
                                              {messages, ArrayType_ARRAY},
                                              {numbers, ArrayType_ARRAY},
                                              {inner, ArrayType_STRUCT},
                                              {last, ArrayType_CHAR}});
  Nested_state mark{};
  mark.messages[1] = {10, 20};
  mark.numbers[2] = 30;
  mark.inner.part = 40;
  mark.inner.weight = 50.5;
  mark.last = 'z';
  variable.setMark(mark);
  EXPECT_EQ(messages->Index(0)->EoA->getMark(), 0);
  EXPECT_EQ(messages->Index(1)->timestamp->getMark(), 10);
  EXPECT_EQ(messages->Index(1)->EoA->getMark(), 20);
  EXPECT_EQ(numbers->Index(2)->getMark(), 30);
  EXPECT_EQ(part->getMark(), 40);
  EXPECT_EQ(weight->getMark(), 50.5);
  EXPECT_EQ(last->getMark(), 'z');

  const Nested_state back = variable.getMark();
  EXPECT_EQ(back.messages[1].EoA, 20);
  EXPECT_EQ(back.numbers[2], 30);
  EXPECT_EQ(back.inner.weight, 50.5);
  EXPECT_EQ(back.last, 'z');
}

TEST(StructStateVariableTest, AMemberOfARingGivesAndTakesTheSharedValues) {
  Message a("a");
  Message b("b");
  a.ShareWith(&b);
  b.setMark({7, 8});
  EXPECT_EQ(a.getMark().timestamp, 7);
  EXPECT_EQ(a.getMark().EoA, 8);
}

TEST(StructStateVariableDeathTest, ARecordOfAnotherSizeEndsTheProcess) {
  AnyStruct<short> variable("v", {{new ExtendedPlace<int>("x"), ArrayType_INT}});
  EXPECT_DEATH((void)variable.getMark(), "Assertion failed: layout\\.size\\(\\) == size");
  EXPECT_DEATH(variable.setMark(1), "Assertion failed: layout\\.size\\(\\) == size");
}

TEST(StructStateVariableDeathTest, AFieldThatIsNotOfItsDeclaredSizeEndsTheProcess) {
  AnyStruct<int> variable("v", {{new ExtendedPlace<short>("x"), ArrayType_INT}});
  EXPECT_DEATH((void)variable.getMark(), "Assertion failed: variable->StateSize\\(\\) == layout\\.size");
}

TEST(StructStateVariableDeathTest, AFieldWithoutAVariableEndsTheProcess) {
  AnyStruct<int> variable("v", {{nullptr, ArrayType_INT}});
  EXPECT_DEATH((void)variable.getMark(), "Assertion failed: variable != nullptr");
}

TEST(StructStateVariableDeathTest, AFieldOfNoKindHasNoPlaceInARecord) {
  AnyStruct<int> variable("v", {{new ExtendedPlace<int>("x"), ArrayType_EMPTY}});
  EXPECT_DEATH((void)variable.getMark(), "Assertion failed: a record holds scalars, arrays and structs");
}

}  // namespace
