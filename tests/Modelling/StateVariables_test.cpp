#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <vector>

#include "Modelling/Modelling.h"

// Structs and arrays as the kit makes them, alone and inside each other.

namespace {

using namespace modelling;
using ::testing::ElementsAre;

struct OrderRecord {
  std::int16_t kind;
  double size;
};

class Order : public StructVariable<OrderRecord> {
 public:
  using StructVariable::StructVariable;
  Field<short> kind{*this, "kind", 4};
  Field<double> size{*this, "size", 1.5};
};

class Shelf : public StructVariable<> {
 public:
  using StructVariable::StructVariable;
  Field<Order> first{*this, "first"};
  Field<ArrayVariable<int>> levels{*this, "levels", 3, 7};
};

class Store : public AtomicModel {
 public:
  Store() : AtomicModel("store") {}
  Variable<Shelf> shelf{*this, "shelf"};
  Variable<ArrayVariable<Order>> orders{*this, "orders", 2};
  Variable<ArrayVariable<char>> flags{*this, "flags", 3, 'x'};
};

TEST(StructVariableTest, FieldsStandInTheOrderOfTheirDeclaration) {
  const Store store;
  Order order("order");
  EXPECT_EQ(order.getSize(), 2);
  EXPECT_EQ(order.getType(0), ArrayType_SHORT);
  EXPECT_EQ(order.getType(1), ArrayType_DOUBLE);
  EXPECT_EQ(order.StateSize(), 10);
  std::ostringstream text;
  order.printState(&text);
  EXPECT_EQ(text.str(), "order = {\n.kind = 4\n.size = 1.5\n}\n");
}

TEST(StructVariableTest, AWholeRecordGoesInAndOut) {
  Order order("order");
  EXPECT_EQ(order.getMark().kind, 4);
  EXPECT_EQ(order.getMark().size, 1.5);
  order.setMark({2, 0.25});
  EXPECT_EQ(order.kind.Mark(), 2);
  EXPECT_EQ(order.size.Mark(), 0.25);
}

TEST(StructVariableTest, StructsAndArraysNest) {
  Store store;
  EXPECT_EQ(store.shelf.StateSize(), 10 + 3 * 4);
  EXPECT_STREQ(store.shelf.first.size.getFullyQualifiedName(), "shelf.first.size");
  EXPECT_STREQ(store.shelf.levels[2]->getFullyQualifiedName(), "shelf.levels.2");
  EXPECT_EQ(store.shelf.levels[2]->Mark(), 7);
  EXPECT_EQ(store.shelf.getNumLeafNodes(), 5);
}

TEST(ArrayVariableTest, ElementsAreNamedByTheirIndexAndStartAlike) {
  Store store;
  EXPECT_EQ(store.orders.getSize(), 2);
  EXPECT_STREQ(store.orders[1]->kind.getFullyQualifiedName(), "orders.1.kind");
  EXPECT_EQ(store.orders[1]->kind.Mark(), 4);
  EXPECT_EQ(store.flags.getType(), ArrayType_CHAR);
  EXPECT_EQ(store.flags[2]->Mark(), 'x');
  EXPECT_EQ(store.StateSize(), 22 + 20 + 3);
}

TEST(ArrayVariableTest, ATwinHasTheSameSizeAndValuesAndAnotherName) {
  Store store;
  const auto twin = store.orders.twin("copy");
  auto* const array = dynamic_cast<ArrayVariable<Order>*>(twin.get());
  ASSERT_NE(array, nullptr);
  EXPECT_STREQ(array->getName(), "copy");
  EXPECT_EQ(array->getSize(), 2);
  EXPECT_STREQ((*array)[0]->kind.getFullyQualifiedName(), "copy.0.kind");
  EXPECT_EQ((*array)[0]->kind.Mark(), 4);
}

TEST(ArrayVariableTest, AnArcToAnArrayIsAnArcToEachLeaf) {
  class Open : public AtomicModel {
   public:
    Open() : AtomicModel("open") {
      filled = &activity("fill").deterministic(1).fires({orders}, [this] { orders[0]->kind.Mark() = 9; });
    }
    Variable<ArrayVariable<Order>> orders{*this, "orders", 2};
    Activity* filled = nullptr;
  };
  Open open;
  EXPECT_EQ(open.filled->getNumAffectedSVs(), 4);
  EXPECT_EQ(open.filled->getAffectedSV(3), &open.orders[1]->size);
}

}  // namespace
