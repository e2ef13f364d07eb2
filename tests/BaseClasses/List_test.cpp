#include "BaseClasses/List.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <new>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "gmock/gmock.h"
#include "gtest/gtest.h"

namespace {

/// While true, allocations that may return null do so, after the new handler has had its chance.
bool memoryIsExhausted = false;

}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  if (memoryIsExhausted) {
    if (const std::new_handler handler = std::get_new_handler()) {
      handler();
    }
    return nullptr;
  }
  try {
    return ::operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

namespace {

using testing::ElementsAre;
using testing::Eq;
using testing::ExitedWithCode;
using testing::KilledBySignal;
using testing::MatchesRegex;

struct Item {};

/// Opens what a list keeps to itself.
class ProbedList : public List<Item> {
 public:
  using List<Item>::List;
  using List<Item>::ArraySize;
  using List<Item>::increaseArraySize;
  using List<Item>::insertItem;
  using List<Item>::NumItems;
  using List<Item>::TheList;

  std::vector<Item*> items() const { return {TheList, TheList + NumItems}; }
  std::vector<Item*> entries() const { return {TheList, TheList + ArraySize}; }
};

class ListTest : public testing::Test {
 protected:
  void appendFirst(int n) {
    for (int i = 0; i < n; ++i) {
      list.append(&item[static_cast<std::size_t>(i)]);
    }
  }

  ProbedList list;
  std::array<Item, 40> item;
};

TEST_F(ListTest, ANewListHasRoomForTenNullEntriesAndNoItem) {
  EXPECT_EQ(list.getNumItems(), 0);
  EXPECT_EQ(list.ArraySize, 10);
  EXPECT_THAT(list.entries(), testing::Each(nullptr));
}

TEST_F(ListTest, AListMadeForNHasRoomForNNullEntries) {
  ProbedList three(3);
  EXPECT_EQ(three.getNumItems(), 0);
  EXPECT_EQ(three.ArraySize, 3);
  EXPECT_THAT(three.entries(), ElementsAre(nullptr, nullptr, nullptr));
}

TEST_F(ListTest, AppendKeepsTheOrderOfInsertion) {
  appendFirst(3);
  EXPECT_EQ(list.getNumItems(), 3);
  EXPECT_THAT(list.items(), ElementsAre(&item[0], &item[1], &item[2]));
  EXPECT_EQ(list.getList()[1], &item[1]);
  EXPECT_EQ(list.getItem(2), &item[2]);
  EXPECT_EQ(list[0], &item[0]);
}

TEST_F(ListTest, AppendingAPointerTwiceLeavesOneEntry) {
  list.append(&item[0]);
  list.append(&item[0]);
  EXPECT_EQ(list.getNumItems(), 1);
}

TEST_F(ListTest, TheEleventhDistinctAppendDoublesTheCapacity) {
  appendFirst(10);
  EXPECT_EQ(list.ArraySize, 10);
  list.append(&item[10]);
  EXPECT_EQ(list.ArraySize, 20);
  EXPECT_EQ(list.getNumItems(), 11);
  EXPECT_EQ(list.getItem(0), &item[0]);
  EXPECT_EQ(list.getItem(10), &item[10]);
  EXPECT_EQ(list.entries()[11], nullptr);
}

TEST_F(ListTest, AFullListGrowsEvenForADuplicate) {
  appendFirst(10);
  list.append(&item[0]);
  EXPECT_EQ(list.ArraySize, 20);
  EXPECT_EQ(list.getNumItems(), 10);
}

TEST_F(ListTest, AnArrayIsAppendedItemByItem) {
  Item* array[] = {&item[1], &item[0], &item[1], &item[2]};
  list.append(array, 4);
  EXPECT_THAT(list.items(), ElementsAre(&item[1], &item[0], &item[2]));
  list.append(array, 0);
  EXPECT_EQ(list.getNumItems(), 3);
}

TEST_F(ListTest, AppendingAListGrowsOnceToTwiceTheSumEvenForDuplicates) {
  appendFirst(8);
  ProbedList five;
  for (std::size_t i = 0; i < 5; ++i) {
    five.append(&item[i]);
  }
  list.clearList();
  appendFirst(8);
  five.append(&list);  // 5 + 8 exceeds 10
  EXPECT_EQ(five.ArraySize, 26);
  EXPECT_EQ(five.getNumItems(), 8);

  ProbedList duplicates;
  Item* all[] = {&item[0], &item[1], &item[2], &item[3], &item[4], &item[5], &item[6], &item[7]};
  duplicates.append(all, 8);
  duplicates.append(&list);
  EXPECT_EQ(duplicates.ArraySize, 32);
  EXPECT_EQ(duplicates.getNumItems(), 8);
}

TEST_F(ListTest, AppendingAListThatFitsDoesNotGrow) {
  appendFirst(5);
  ProbedList other;
  Item* array[] = {&item[9], &item[0], &item[8], &item[7], &item[6]};
  other.append(array, 5);
  list.append(&other);  // 5 + 5 does not exceed 10
  EXPECT_EQ(list.ArraySize, 10);
  EXPECT_THAT(list.items(),
              ElementsAre(&item[0], &item[1], &item[2], &item[3], &item[4], &item[9], &item[8], &item[7], &item[6]));
}

TEST_F(ListTest, AppendingAListToItselfAddsNothing) {
  appendFirst(6);
  list.append(&list);
  EXPECT_EQ(list.getNumItems(), 6);
  EXPECT_EQ(list.ArraySize, 24);
}

TEST_F(ListTest, RemovePutsTheLastItemIntoTheGap) {
  appendFirst(3);
  list.remove(&item[0]);
  EXPECT_THAT(list.items(), ElementsAre(&item[2], &item[1]));
  list.remove(&item[1]);  // the last one
  EXPECT_THAT(list.items(), ElementsAre(&item[2]));
  list.remove(&item[2]);
  EXPECT_EQ(list.getNumItems(), 0);
}

TEST_F(ListTest, RemoveOfAPointerThatIsNotThereIsIgnored) {
  list.remove(&item[0]);
  appendFirst(2);
  list.remove(&item[5]);
  EXPECT_THAT(list.items(), ElementsAre(&item[0], &item[1]));
}

TEST_F(ListTest, ReplaceItemPutsANewPointerIntoTheSlotOfTheOldOne) {
  appendFirst(3);
  list.replaceItem(&item[1], &item[7]);
  EXPECT_THAT(list.items(), ElementsAre(&item[0], &item[7], &item[2]));
}

TEST_F(ListTest, ReplaceItemByAPointerThatIsThereShortensTheList) {
  appendFirst(4);
  list.replaceItem(&item[0], &item[1]);
  EXPECT_THAT(list.items(), ElementsAre(&item[3], &item[1], &item[2]));
  list.replaceItem(&item[2], &item[3]);  // the new one stands before the old one, which is last
  EXPECT_THAT(list.items(), ElementsAre(&item[3], &item[1]));
  list.replaceItem(&item[3], &item[1]);  // the new one is last
  EXPECT_THAT(list.items(), ElementsAre(&item[1]));
}

TEST_F(ListTest, ReplaceItemWithoutTheOldPointerDoesNothing) {
  appendFirst(2);
  list.replaceItem(&item[5], &item[0]);
  list.replaceItem(&item[5], &item[6]);
  EXPECT_THAT(list.items(), ElementsAre(&item[0], &item[1]));
}

TEST_F(ListTest, ReplaceItemByItselfDoesNothing) {
  appendFirst(2);
  list.replaceItem(&item[0], &item[0]);
  EXPECT_THAT(list.items(), ElementsAre(&item[0], &item[1]));
}

TEST_F(ListTest, ContainsSearchesTheItemsInUse) {
  appendFirst(2);
  EXPECT_TRUE(list.contains(&item[1]));
  EXPECT_FALSE(list.contains(&item[2]));
  EXPECT_FALSE(list.contains(nullptr));
}

TEST_F(ListTest, ClearListKeepsCapacityAndTheOldPointers) {
  appendFirst(11);
  list.clearList();
  EXPECT_EQ(list.getNumItems(), 0);
  EXPECT_EQ(list.ArraySize, 20);
  EXPECT_EQ(list.TheList[10], &item[10]);
  EXPECT_FALSE(list.contains(&item[10]));
}

TEST_F(ListTest, PrintListOfAnEmptyListSaysSo) {
  testing::internal::CaptureStdout();
  list.printList();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "No items in the list\n");
}

TEST_F(ListTest, PrintListWritesIndexAndPointerOfEachItem) {
  appendFirst(2);
  std::ostringstream expected;
  expected << "[0] " << static_cast<void*>(&item[0]) << "\n[1] " << static_cast<void*>(&item[1]) << "\n";
  testing::internal::CaptureStdout();
  list.printList();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expected.str());
}

TEST_F(ListTest, ANullPointerIsAnItemAsAnyOther) {
  list.append(static_cast<Item*>(nullptr));
  list.append(static_cast<Item*>(nullptr));
  EXPECT_EQ(list.getNumItems(), 1);
  EXPECT_EQ(list[0], nullptr);
}

TEST_F(ListTest, AListIsNotCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<List<Item>>);
  EXPECT_FALSE(std::is_copy_assignable_v<List<Item>>);
}

/// Takes random steps with items of a pool of that size; about two fifths of it are in the list in the long run.
void takeRandomSteps(ProbedList& list, std::size_t poolSize) {
  std::vector<Item> item(poolSize);
  std::mt19937 random(20240611);
  std::vector<Item*> shadow;
  const auto positionOf = [&](Item* wanted) { return std::find(shadow.begin(), shadow.end(), wanted); };
  const auto takeOut = [&](Item* wanted) {
    *positionOf(wanted) = shadow.back();
    shadow.pop_back();
  };
  for (int step = 0; step < 10000; ++step) {
    Item* const first = &item[random() % item.size()];
    Item* const second = &item[random() % item.size()];
    const bool firstThere = positionOf(first) != shadow.end();
    switch (random() % 3) {
      case 0:
        list.append(first);
        if (!firstThere) {
          shadow.push_back(first);
        }
        break;
      case 1:
        list.remove(first);
        if (firstThere) {
          takeOut(first);
        }
        break;
      default:
        list.replaceItem(first, second);
        if (firstThere && first != second) {
          if (positionOf(second) != shadow.end()) {
            takeOut(first);
          } else {
            *positionOf(first) = second;
          }
        }
    }
    ASSERT_EQ(list.items(), shadow) << "step " << step;
    if (step % 2500 == 2499) {
      list.clearList();
      shadow.clear();
    }
  }
}

TEST_F(ListTest, RandomStepsAgreeWithAPlainVector) {
  takeRandomSteps(list, 40);
}

TEST_F(ListTest, RandomStepsOnALongListAgreeWithAPlainVector) {
  takeRandomSteps(list, 400);
}

class ListDeathTest : public ListTest {
 protected:
  static auto abortedInList() { return MatchesRegex("!! Assertion failed in file \\.\\./List, line [0-9]+\n"); }
};

TEST_F(ListDeathTest, GetItemRefusesAnIndexOutsideTheItems) {
  appendFirst(2);
  EXPECT_EXIT((void)list.getItem(-1), KilledBySignal(SIGABRT), abortedInList());
  EXPECT_EXIT((void)list.getItem(2), KilledBySignal(SIGABRT), abortedInList());
}

TEST_F(ListDeathTest, GetItemRefusesAnEmptyList) {
  EXPECT_EXIT((void)list.getItem(0), KilledBySignal(SIGABRT), abortedInList());
}

TEST_F(ListDeathTest, GetItemRefusesANullItem) {
  list.append(static_cast<Item*>(nullptr));
  EXPECT_EXIT((void)list.getItem(0), KilledBySignal(SIGABRT), abortedInList());
}

TEST_F(ListDeathTest, GetItemRefusesAListWithoutAnArray) {
  list.append(&item[0]);
  EXPECT_EXIT(
      {
        list.TheList = nullptr;
        (void)list.getItem(0);
      },
      KilledBySignal(SIGABRT), abortedInList());
}

TEST_F(ListDeathTest, AListMadeForNoneAbortsAtTheFirstAppend) {
  ProbedList none(0);
  EXPECT_EQ(none.ArraySize, 0);
  EXPECT_EXIT(none.append(&item[0]), KilledBySignal(SIGABRT), abortedInList());
}

TEST_F(ListDeathTest, MoreItemsThanCapacityAbortsAppendAndInsertItem) {
  appendFirst(2);
  EXPECT_EXIT(
      {
        list.ArraySize = 1;
        list.append(&item[5]);
      },
      KilledBySignal(SIGABRT), abortedInList());
  EXPECT_EXIT(
      {
        list.ArraySize = 1;
        list.insertItem(&item[5]);
      },
      KilledBySignal(SIGABRT), abortedInList());
}

TEST_F(ListDeathTest, IncreaseArraySizeRequiresAnIncrease) {
  EXPECT_EXIT(list.increaseArraySize(10), KilledBySignal(SIGABRT), abortedInList());
  list.increaseArraySize(11);
  EXPECT_EQ(list.ArraySize, 11);
}

constexpr const char* kAllocationWords =
    "Insufficient Memory to allocate dynamic data structures from heap memory\n"
    "Exiting program...\n";

TEST_F(ListDeathTest, AGrowthWithoutMemoryHasItsOwnWordsBeforeTheCommonOnes) {
  const std::string words =
      std::string("!! Crtical error in List<C>::append(List*) do to insufficient memory...exiting\n") +
      kAllocationWords;
  EXPECT_EXIT(
      {
        memoryIsExhausted = true;
        list.increaseArraySize(20);
      },
      ExitedWithCode(1), Eq(words));
  EXPECT_EXIT(
      {
        std::set_new_handler(MemoryAllocationError);
        memoryIsExhausted = true;
        list.increaseArraySize(20);
      },
      ExitedWithCode(1), Eq(words));
}

TEST_F(ListDeathTest, AListWithoutMemoryEndsTheProcess) {
  EXPECT_EXIT(
      {
        memoryIsExhausted = true;
        const List<Item> unlucky;
      },
      ExitedWithCode(1), Eq(kAllocationWords));
  EXPECT_EXIT(
      {
        memoryIsExhausted = true;
        const List<Item> unlucky(3);
      },
      ExitedWithCode(1), Eq(kAllocationWords));
}

TEST_F(ListDeathTest, AListForLessThanNoneEndsTheProcess) {
  EXPECT_EXIT(const List<Item> unlucky(-1), ExitedWithCode(1), Eq(kAllocationWords));
}

TEST_F(ListTest, AnAllocationLeavesTheNewHandlerInPlace) {
  const std::new_handler before = std::set_new_handler(MemoryAllocationError);
  list.increaseArraySize(30);
  EXPECT_EQ(std::get_new_handler(), MemoryAllocationError);
  std::set_new_handler(before);
}

}  // namespace
