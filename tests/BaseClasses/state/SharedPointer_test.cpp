#include "BaseClasses/state/SharedPointer.h"

#include <gtest/gtest.h>

#include "BaseClasses/state/ExtendedPlace.h"

namespace {

TEST(SharedPointerTest, ANewLinkWatchesNothing) {
  const SharedPointer<short> link;
  EXPECT_EQ(link.getPointer(), nullptr);
  EXPECT_EQ(link.getOwner(), nullptr);
  EXPECT_EQ(link.getNeighbor(), nullptr);
}

TEST(SharedPointerTest, ALinkKeepsPointerOwnerAndNeighbour) {
  ExtendedPlace<int> variable("x");
  int* watched = nullptr;
  SharedPointer<int> link;
  SharedPointer<int> neighbour;
  link.setPointer(&watched);
  link.setOwner(&variable);
  link.setNeighbor(&neighbour);
  EXPECT_EQ(link.getPointer(), &watched);
  EXPECT_EQ(link.getOwner(), &variable);
  EXPECT_EQ(link.getNeighbor(), &neighbour);
}

TEST(SharedPointerTest, ChangePointerWritesThroughToTheWatchedPointer) {
  double first = 1.0;
  double second = 2.0;
  double* watched = &first;
  SharedPointer<double> link;
  link.setPointer(&watched);
  link.changePointer(&second);
  EXPECT_EQ(watched, &second);
  EXPECT_EQ(link.getPointer(), &watched);
}

}  // namespace
