#include "BaseClasses/CellPool.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <vector>

#include "BaseClasses/Sanitizers.h"

namespace {

/// A type of its own, whose pool no other test uses.
struct Cell {
  int first = 1;
  int second = 2;
};

using Pool = support::CellPool<Cell>;

TEST(CellPoolTest, ACellIsMadeOfItsArguments) {
  Cell* const cell = Pool::make(7, 8);
  EXPECT_EQ(cell->first, 7);
  EXPECT_EQ(cell->second, 8);
  Pool::release(cell);
}

TEST(CellPoolTest, ACellWithoutArgumentsHasItsFirstValuesThoughOneWasReleasedBefore) {
  Pool::release(Pool::make(7, 8));
  Cell* const cell = Pool::make();
  EXPECT_EQ(cell->first, 1);
  EXPECT_EQ(cell->second, 2);
  Pool::release(cell);
  short* const mark = support::CellPool<short>::make();
  EXPECT_EQ(*mark, 0);
  support::CellPool<short>::release(mark);
}

TEST(CellPoolTest, ACellThatWasReleasedIsTheNextToBeMade) {
  if (support::kUnderAddressSanitizer) {
    GTEST_SKIP() << "under AddressSanitizer each object is made by new";
  }
  Cell* const first = Pool::make();
  Cell* const second = Pool::make();
  Pool::release(first);
  Pool::release(second);
  EXPECT_EQ(Pool::make(), second);
  EXPECT_EQ(Pool::make(), first);
  Pool::release(first);
  Pool::release(second);
}

TEST(CellPoolTest, CellsOfManyBlocksAreApartAndKeepTheirValues) {
  constexpr int kCells = 3000;
  std::vector<Cell*> cells;
  cells.reserve(kCells);
  for (int i = 0; i < kCells; ++i) {
    cells.push_back(Pool::make(i, -i));
  }
  EXPECT_EQ(std::set<Cell*>(cells.begin(), cells.end()).size(), static_cast<std::size_t>(kCells));
  for (int i = 0; i < kCells; ++i) {
    EXPECT_EQ(cells[static_cast<std::size_t>(i)]->first, i);
    EXPECT_EQ(cells[static_cast<std::size_t>(i)]->second, -i);
    Pool::release(cells[static_cast<std::size_t>(i)]);
  }
}

TEST(CellPoolTest, NullIsReleasedToNoEffect) {
  Pool::release(nullptr);
  Cell* const cell = Pool::make();
  EXPECT_NE(cell, nullptr);
  Pool::release(cell);
}

}  // namespace
