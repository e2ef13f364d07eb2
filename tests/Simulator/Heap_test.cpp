#include "Simulator/Heap.h"

#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <random>
#include <utility>

namespace {

using testing::KilledBySignal;

template <typename T>
std::pair<T, int> earliestOf(Heap<T>& heap) {
  std::pair<T, int> earliest;
  heap.Earliest(earliest);
  return earliest;
}

using DoubleEntry = std::pair<double, int>;
using IntEntry = std::pair<int, int>;

TEST(HeapTest, TheRootIsTheSmallestValueWithItsKey) {
  Heap<double> heap(3);
  heap.Insert(5.0, 0);
  EXPECT_EQ(earliestOf(heap), DoubleEntry(5.0, 0));
  heap.Insert(7.0, 1);
  EXPECT_EQ(earliestOf(heap), DoubleEntry(5.0, 0));
  heap.Insert(2.0, 2);
  EXPECT_EQ(earliestOf(heap), DoubleEntry(2.0, 2));
}

TEST(HeapTest, AValueIsReadByItsKeyWhereverItStands) {
  Heap<int> heap(4);
  heap.Insert(30, 2);
  heap.Insert(20, 0);
  heap.Insert(10, 3);
  heap.Insert(-1, 1);
  EXPECT_EQ(heap.getElement(0), 20);
  EXPECT_EQ(heap.getElement(1), -1);
  EXPECT_EQ(heap.getElement(2), 30);
  EXPECT_EQ(heap.getElement(3), 10);
}

TEST(HeapTest, ALargerValueSinksAndASmallerOneRises) {
  Heap<double> heap(3);
  heap.Insert(1.0, 0);
  heap.Insert(2.0, 1);
  heap.Insert(3.0, 2);
  heap.ModifyKey(0, 2.5);
  EXPECT_EQ(earliestOf(heap), DoubleEntry(2.0, 1));
  EXPECT_EQ(heap.getElement(0), 2.5);
  heap.ModifyKey(2, 0.5);
  EXPECT_EQ(earliestOf(heap), DoubleEntry(0.5, 2));
  heap.ModifyKey(2, 9.0);
  heap.ModifyKey(1, 8.0);
  EXPECT_EQ(earliestOf(heap), DoubleEntry(2.5, 0));
}

/// A move is made for a strictly smaller value only.
TEST(HeapTest, AnEqualValueStaysBelow) {
  Heap<int> heap(2);
  heap.Insert(4, 0);
  heap.Insert(4, 1);
  EXPECT_EQ(earliestOf(heap), IntEntry(4, 0));
  heap.ModifyKey(1, 6);
  heap.ModifyKey(1, 4);
  EXPECT_EQ(earliestOf(heap), IntEntry(4, 0)) << "it does not pass an equal parent on its way up";
  heap.ModifyKey(0, 4);
  EXPECT_EQ(earliestOf(heap), IntEntry(4, 0)) << "nor an equal child on its way down";
}

TEST(HeapTest, OfTwoEqualChildrenTheLeftOneRises) {
  Heap<int> heap(3);
  heap.Insert(1, 0);
  heap.Insert(5, 1);
  heap.Insert(5, 2);
  heap.ModifyKey(0, 9);
  EXPECT_EQ(earliestOf(heap), IntEntry(5, 1));
}

TEST(HeapTest, TheRightChildRisesWhenItIsStrictlySmaller) {
  Heap<int> heap(3);
  heap.Insert(1, 0);
  heap.Insert(5, 1);
  heap.Insert(4, 2);
  heap.ModifyKey(0, 9);
  EXPECT_EQ(earliestOf(heap), IntEntry(4, 2));
}

TEST(HeapTest, ALeftChildWithoutSiblingRises) {
  Heap<int> heap(4);
  for (int key = 0; key < 4; ++key) {
    heap.Insert(key, key);
  }
  heap.ModifyKey(1, 7);  // its one child, of key 3, takes its place
  heap.ModifyKey(0, 8);
  EXPECT_EQ(earliestOf(heap), IntEntry(2, 2));
  heap.ModifyKey(2, 9);
  EXPECT_EQ(earliestOf(heap), IntEntry(3, 3));
}

TEST(HeapTest, ItGrowsBeyondItsFirstCapacity) {
  Heap<int> heap(2);
  for (int key = 0; key < 50; ++key) {
    heap.Insert(100 - key, key);
    EXPECT_EQ(earliestOf(heap), IntEntry(100 - key, key));
  }
  for (int key = 0; key < 50; ++key) {
    EXPECT_EQ(heap.getElement(key), 100 - key);
  }
}

/// As with a steady-state variable that stands behind terminating ones: few values, high keys.
TEST(HeapTest, AKeyMayBeFarAboveTheFirstRange) {
  Heap<double> heap(1);
  heap.Insert(3.0, 2);  // one doubling gives keys 0 and 1, a second one 2 and 3
  heap.Insert(1.0, 1000);
  heap.Insert(2.0, 0);
  EXPECT_EQ(earliestOf(heap), DoubleEntry(1.0, 1000));
  EXPECT_EQ(heap.getElement(2), 3.0);
  EXPECT_EQ(heap.getElement(0), 2.0);
  heap.ModifyKey(1000, 5.0);
  EXPECT_EQ(earliestOf(heap), DoubleEntry(2.0, 0));
}

TEST(HeapTest, AHeapForNothingGrowsAllTheSame) {
  Heap<double> heap(0);
  heap.Insert(1.5, 0);
  heap.Insert(0.5, 6);
  EXPECT_EQ(earliestOf(heap), DoubleEntry(0.5, 6));
  EXPECT_EQ(heap.getElement(0), 1.5);
}

/// A value of the heap itself moves when the arrays grow.
TEST(HeapTest, AValueOfTheHeapMayBeInsertedAgainUnderAnotherKey) {
  Heap<double> heap(1);
  heap.Insert(4.0, 0);
  heap.Insert(heap.getElement(0), 1);
  EXPECT_EQ(heap.getElement(1), 4.0);
}

TEST(HeapTest, AskingAnEmptyHeapAborts) {
  Heap<double> heap(3);
  DoubleEntry earliest;
  EXPECT_EXIT(heap.Earliest(earliest), KilledBySignal(SIGABRT),
              "^Assertion failed: size > 0, file Heap\\.h, line [0-9]+\n");
}

TEST(HeapTest, TenThousandRandomStepsAgreeWithASearch) {
  std::mt19937 random(20);
  Heap<int> heap(1);
  std::map<int, int> shadow;  // value by key
  for (int step = 0; step < 10000; ++step) {
    const int key = static_cast<int>(random() % 200);
    const int value = static_cast<int>(random() % 1000);
    if (shadow.contains(key)) {
      heap.ModifyKey(key, value);
    } else {
      heap.Insert(value, key);
    }
    shadow[key] = value;

    const IntEntry earliest = earliestOf(heap);
    ASSERT_EQ(shadow.at(earliest.second), earliest.first) << "step " << step;
    for (const auto& [otherKey, otherValue] : shadow) {
      ASSERT_EQ(heap.getElement(otherKey), otherValue) << "step " << step << ", key " << otherKey;
      ASSERT_LE(earliest.first, otherValue) << "step " << step << ", key " << otherKey;
    }
  }
}

}  // namespace
