#include "BaseClasses/state/ExtendedPlace.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "BaseClasses/state/TestVariables.h"
#include "support/FlushWatch.h"

namespace {

using testing_support::imageOf;
using testing_support::printed;

/// Gives a derived class's view of the protected zero().
template <typename T>
class ZeroProbe : public ExtendedPlace<T> {
 public:
  using ExtendedPlace<T>::zero;
};

template <typename T>
class ExtendedPlaceTest : public testing::Test {};

using MarkTypes = testing::Types<bool, char, double, float, int, short>;
TYPED_TEST_SUITE(ExtendedPlaceTest, MarkTypes);

TYPED_TEST(ExtendedPlaceTest, ConstructorsWithoutAValueGiveZero) {
  using T = TypeParam;
  ExtendedPlace<T> unnamed;
  ExtendedPlace<T> named("x");
  ExtendedPlace<T> prefixed("0", "array");
  EXPECT_STREQ(unnamed.getName(), "default");
  EXPECT_STREQ(named.getFullyQualifiedName(), "x");
  EXPECT_STREQ(prefixed.getFullyQualifiedName(), "array.0");
  EXPECT_EQ(unnamed.getMark(), T{});
  EXPECT_EQ(named.getMark(), T{});
  EXPECT_EQ(prefixed.getMark(), T{});
}

TYPED_TEST(ExtendedPlaceTest, ConstructorsTakeAValueOfTheTypeOrALiteral) {
  using T = TypeParam;
  EXPECT_EQ(ExtendedPlace<T>("x", std::numeric_limits<T>::max()).getMark(), std::numeric_limits<T>::max());
  EXPECT_EQ(ExtendedPlace<T>("x", "holder", std::numeric_limits<T>::max()).getMark(), std::numeric_limits<T>::max());
  EXPECT_EQ(ExtendedPlace<T>("x", 0).getMark(), T{});
  EXPECT_EQ(ExtendedPlace<T>("x", "holder", 0).getMark(), T{});
  EXPECT_EQ(ExtendedPlace<T>("x", 1).getMark(), static_cast<T>(1));
  const short one = 1;
  EXPECT_EQ(ExtendedPlace<T>("x", "holder", one).getMark(), static_cast<T>(1));
}

TYPED_TEST(ExtendedPlaceTest, ZeroIsTheValueWhoseBytesAreAllZero) {
  using T = TypeParam;
  const T zero = ZeroProbe<T>::zero();
  const unsigned char bytes[sizeof(T)] = {};
  EXPECT_EQ(std::memcmp(&zero, bytes, sizeof(T)), 0);
  EXPECT_EQ(zero, T{});
}

TYPED_TEST(ExtendedPlaceTest, MarkReadsAndWritesTheLocation) {
  using T = TypeParam;
  ExtendedPlace<T> place("x");
  place.Mark() = static_cast<T>(1);
  EXPECT_EQ(place.getMark(), static_cast<T>(1));
  EXPECT_EQ(*place.getPointer(), static_cast<T>(1));
  place.setMark(T{});
  EXPECT_EQ(place.Mark(), T{});
  place.test();
  EXPECT_EQ(place.Mark(), T{});
}

TYPED_TEST(ExtendedPlaceTest, TheImageHoldsTheBytesOfTheMark) {
  using T = TypeParam;
  const T mark = std::numeric_limits<T>::max();
  ExtendedPlace<T> place("x", mark);
  EXPECT_EQ(place.StateSize(), static_cast<int>(sizeof(T)));
  auto image = imageOf(place);
  EXPECT_EQ(std::memcmp(image.data(), &mark, sizeof(T)), 0);
  place.setMark(T{});
  place.SetState(image.data());
  EXPECT_EQ(place.getMark(), mark);
}

TYPED_TEST(ExtendedPlaceTest, TwoPlacesOfOneTypeShare) {
  using T = TypeParam;
  ExtendedPlace<T> a("a", "holder", 0);
  ExtendedPlace<T> b("b", "holder", 1);
  a.share(&b);
  EXPECT_EQ(a.getMark(), static_cast<T>(1));
  b.Mark() = T{};
  EXPECT_EQ(a.getMark(), T{});
}

TEST(ExtendedPlaceChainTest, APrefixEntersTheOwnPointerASecondTime) {
  EXPECT_EQ(ExtendedPlace<int>().getSharingCount(), 1);
  EXPECT_EQ(ExtendedPlace<int>("x").getSharingCount(), 1);
  EXPECT_EQ(ExtendedPlace<int>("x", 4).getSharingCount(), 1);
  EXPECT_EQ(ExtendedPlace<int>("x", "holder").getSharingCount(), 2);

  ExtendedPlace<int> place("x", "holder", 4);
  EXPECT_EQ(place.getSharingCount(), 2);
  SharedPointer<int>* const newest = place.getHead();
  SharedPointer<int>* const oldest = newest->getNeighbor();
  EXPECT_EQ(newest->getOwner(), nullptr);
  EXPECT_EQ(oldest->getOwner(), &place);
  EXPECT_EQ(newest->getPointer(), oldest->getPointer());
}

TEST(ExtendedPlacePrintTest, AMarkIsPrintedAsItsNumber) {
  ExtendedPlace<short> number("number", -7);
  ExtendedPlace<double> fraction("fraction", 2.5);
  ExtendedPlace<float> half("half", 0.5);
  ExtendedPlace<bool> flag("flag", true);
  EXPECT_EQ(printed(number), "number = -7\n");
  EXPECT_EQ(printed(fraction), "fraction = 2.5\n");
  EXPECT_EQ(printed(half), "half = 0.5\n");
  EXPECT_EQ(printed(flag), "flag = 1\n");
}

TEST(ExtendedPlacePrintTest, ACharIsPrintedAsItsNumberSoThatNoControlCharacterGetsIntoATrace) {
  ExtendedPlace<char> letter("letter", 'A');
  ExtendedPlace<char> zero("zero");
  ExtendedPlace<char> negative("negative", static_cast<char>(-1));
  EXPECT_EQ(printed(letter), "letter = 65\n");
  EXPECT_EQ(printed(zero), "zero = 0\n");
  EXPECT_EQ(printed(negative), "negative = -1\n");
  std::ostringstream value;
  letter.printStateVal(&value);
  EXPECT_EQ(value.str(), "65");
}

TEST(ExtendedPlaceDebugTest, TheInitialMarkingOfAPrefixedPlaceIsToldAboveLevel1) {
  testing::internal::CaptureStdout();
  GlobalDebugLevel = 2;
  const ExtendedPlace<int> told("speed", "train", 30);
  const ExtendedPlace<char> zero("code", "train");
  GlobalDebugLevel = 1;
  const ExtendedPlace<int> quiet("speed", "train", 40);
  GlobalDebugLevel = 0;
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "** Initial Marking for speed is 30\n** Initial Marking for code is 0\n");
  EXPECT_TRUE(support::isFlushedAtTheEnd(std::cout, [] {
    GlobalDebugLevel = 2;
    const ExtendedPlace<int> shown("speed", "train", 30);
    GlobalDebugLevel = 0;
  }));
}

}  // namespace
