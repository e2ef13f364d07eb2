#include "BaseClasses/FastSet.h"

#include <csignal>
#include <ostream>
#include <type_traits>
#include <vector>

#include "gmock/gmock.h"
#include "gtest/gtest.h"

namespace {

using testing::ElementsAre;
using testing::Eq;
using testing::KilledBySignal;

void insertAll(FastSet& set, const std::vector<int>& items) {
  for (const int item : items) {
    set.insert(item);
  }
}

std::vector<int> itemsOf(FastSet& frozen) {
  std::vector<int> items;
  for (int i = 0; i < frozen.size(); ++i) {
    items.push_back(frozen[i]);
  }
  return items;
}

TEST(FastSetTest, ANewSetIsEmptyAndInTheBuildingForm) {
  FastSet set;
  EXPECT_FALSE(set.is_vec_rep);
  EXPECT_TRUE(set.empty());
}

TEST(FastSetTest, InsertTellsWhetherTheItemIsNew) {
  FastSet set;
  EXPECT_TRUE(set.insert(4));
  EXPECT_FALSE(set.insert(4));
  EXPECT_TRUE(set.insert(-4));
  EXPECT_FALSE(set.empty());
  set.NoMoreModifications();
  EXPECT_THAT(itemsOf(set), ElementsAre(-4, 4));
}

TEST(FastSetTest, FindTellsWhetherTheItemIsThere) {
  FastSet set;
  insertAll(set, {3, 5});
  EXPECT_TRUE(set.find(3));
  EXPECT_FALSE(set.find(4));
}

TEST(FastSetTest, TheFrozenOrderIsAscendingWhateverTheOrderOfInsertion) {
  FastSet set;
  insertAll(set, {7, -2, 2147483647, 0, 7, -2147483647 - 1, 3});
  set.NoMoreModifications();
  EXPECT_TRUE(set.is_vec_rep);
  EXPECT_THAT(itemsOf(set), ElementsAre(-2147483647 - 1, -2, 0, 3, 7, 2147483647));
}

TEST(FastSetTest, AFrozenItemIsReadByReference) {
  FastSet set;
  set.insert(1);
  set.NoMoreModifications();
  set[0] = 9;
  EXPECT_EQ(set[0], 9);
}

TEST(FastSetTest, AnEmptySetFreezesToSizeZeroWithoutAnArray) {
  FastSet set;
  set.NoMoreModifications();
  EXPECT_EQ(set.size(), 0);
  EXPECT_EQ(set.rep.vec_rep.vec, nullptr);
}

TEST(FastSetTest, ClearOfABuildingSetLeavesAnEmptySetThatCanBeFilledAgain) {
  FastSet set;
  insertAll(set, {1, 2});
  set.clear();
  EXPECT_TRUE(set.empty());
  EXPECT_TRUE(set.insert(2));
  set.NoMoreModifications();
  EXPECT_THAT(itemsOf(set), ElementsAre(2));
}

TEST(FastSetTest, ClearOfAFrozenSetLeavesAnEmptyFrozenSet) {
  FastSet set;
  insertAll(set, {1, 2});
  set.NoMoreModifications();
  set.clear();
  EXPECT_TRUE(set.is_vec_rep);
  EXPECT_EQ(set.size(), 0);
  EXPECT_EQ(set.rep.vec_rep.vec, nullptr);
  set.clear();  // and once more
  EXPECT_EQ(set.size(), 0);
}

TEST(FastSetTest, TheCountersTellSetsConstructedAndSetsFrozen) {
  const int constructed = FastSet::number1;
  const int frozen = FastSet::number2;
  {
    FastSet first;
    FastSet second;
    second.NoMoreModifications();
    second.clear();
  }
  EXPECT_EQ(FastSet::number1, constructed + 2);
  EXPECT_EQ(FastSet::number2, frozen + 1);
}

TEST(FastSetTest, ASetIsNotCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<FastSet>);
  EXPECT_FALSE(std::is_copy_assignable_v<FastSet>);
}

struct WrongForm {
  const char* name;
  bool frozen;
  void (*call)(FastSet&);
  const char* text;
};

void PrintTo(const WrongForm& tested, std::ostream* out) {
  *out << tested.name;
}

class FastSetFormTest : public testing::TestWithParam<WrongForm> {};

TEST_P(FastSetFormTest, ACallInTheWrongFormAborts) {
  FastSet set;
  if (GetParam().frozen) {
    set.NoMoreModifications();
  }
  EXPECT_EXIT(GetParam().call(set), KilledBySignal(SIGABRT), Eq(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(, FastSetFormTest,
                         testing::Values(WrongForm{"InsertWhenFrozen", true, [](FastSet& set) { set.insert(1); },
                                                   "Assertion failed: !is_vec_rep, file FastSet.cpp, line 49\n"},
                                         WrongForm{"FindWhenFrozen", true, [](FastSet& set) { set.find(1); },
                                                   "Assertion failed: !is_vec_rep, file FastSet.cpp, line 55\n"},
                                         WrongForm{"EmptyWhenFrozen", true, [](FastSet& set) { set.empty(); },
                                                   "Assertion failed: !is_vec_rep, file FastSet.cpp, line 60\n"},
                                         WrongForm{"FreezeWhenFrozen", true,
                                                   [](FastSet& set) { set.NoMoreModifications(); },
                                                   "Assertion failed: !is_vec_rep, file FastSet.cpp, line 75\n"},
                                         WrongForm{"SizeWhenBuilding", false, [](FastSet& set) { set.size(); },
                                                   "Assertion failed: is_vec_rep, file FastSet.cpp, line 70\n"},
                                         WrongForm{"IndexWhenBuilding", false, [](FastSet& set) { set[0] = 1; },
                                                   "Assertion failed: is_vec_rep, file FastSet.cpp, line 65\n"}),
                         [](const auto& info) { return info.param.name; });

}  // namespace
