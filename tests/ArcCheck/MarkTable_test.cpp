#include "ArcCheck/MarkTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Modelling/Modelling.h"
#include "support/TestVariable.h"

namespace {

using namespace modelling;
using support::MarkTable;
using ::testing::ElementsAre;

class Item : public StructVariable<> {
 public:
  using StructVariable::StructVariable;
  Field<short> kind{*this, "kind"};
  Field<double> size{*this, "size"};
};

class Left : public AtomicModel {
 public:
  Left() : AtomicModel("left") {}
  Variable<Place> pool{*this, "pool"};
  Variable<ArrayVariable<Item>> items{*this, "items", 2};
};

class Right : public AtomicModel {
 public:
  Right() : AtomicModel("right") {}
  Variable<Place> stock{*this, "stock"};
};

std::vector<std::string> namesOf(const MarkTable& marks, BaseStateVariableClass& leaf) {
  std::vector<std::string> names;
  if (const auto mark = marks.markOf(leaf); mark.has_value()) {
    for (const MarkTable::Name& name : marks.namesOf(*mark)) {
      names.push_back(marks.pathOf(name.model) + ':' + name.variable + ':' + name.holder);
    }
  }
  return names;
}

TEST(MarkTableTest, ASharedMarkHasANameInEachModel) {
  JoinModel top("top", {child<Left>("left"), replicate("rights", 2, child<Right>("right"), {"stock"})},
                {{"pool", {{"left", "pool"}, {"rights", "stock"}}}});
  const MarkTable marks(top);
  auto& left = *static_cast<Left*>(top.GetChild(0));
  EXPECT_THAT(namesOf(marks, left.pool),
              ElementsAre("top/left:pool:pool", "top/rights/right:stock:stock", "top/rights/right:stock:stock",
                          "top/rights:stock:stock", "top:pool:pool"));
  EXPECT_EQ(marks.countAtomicModels(left.pool), 3U);
  EXPECT_EQ(marks.countAtomicModels(left.items), 1U);
  EXPECT_EQ(marks.ranges().size(), 1U + 4U);
}

TEST(MarkTableTest, AnElementHasItsFullNameAndItsHolders) {
  Left left;
  const MarkTable marks(left);
  EXPECT_THAT(namesOf(marks, left.items[1]->size), ElementsAre("left:items.1.size:items"));
}

TEST(MarkTableTest, RangesAreTheMarksInTheOrderOfTheirNumbers) {
  Left left;
  const MarkTable marks(left);
  const auto ranges = marks.ranges();
  const auto number = marks.markOf(left.items[0]->size);
  ASSERT_TRUE(number.has_value());
  EXPECT_EQ(ranges[*number].begin, reinterpret_cast<std::uintptr_t>(&left.items[0]->size.Mark()));
  EXPECT_EQ(ranges[*number].bytes, sizeof(double));
  for (std::size_t i = 1; i < ranges.size(); ++i) {
    EXPECT_LT(ranges[i - 1].begin, ranges[i].begin);
  }
}

TEST(MarkTableTest, AVariableOfNoModelHasNoMark) {
  Left left;
  Place stray("stray");
  const MarkTable marks(left);
  EXPECT_FALSE(marks.markOf(stray).has_value());
  EXPECT_TRUE(MarkTable::hasMark(stray));
}

TEST(MarkTableTest, AVariableOfAKindOfItsOwnIsHidden) {
  support::TestVariable own("own");
  Left left;
  left.addVariable(own);
  const MarkTable marks(left);
  EXPECT_FALSE(MarkTable::hasMark(own));
  ASSERT_EQ(marks.hidden().size(), 1U);
  EXPECT_EQ(marks.hidden()[0].variable, "own");
}

}  // namespace
