#include "BaseClasses/SAN/Place.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "BaseClasses/DebugLines.h"
#include "BaseClasses/state/ExtendedPlace.h"

namespace {

TEST(PlaceTest, ConstructorsGiveNameAndMark) {
  Place unnamed;
  Place empty("queue");
  Place marked("queue", 12);
  EXPECT_STREQ(unnamed.getName(), "default");
  EXPECT_EQ(unnamed.getMark(), 0);
  EXPECT_STREQ(empty.getName(), "queue");
  EXPECT_EQ(empty.getMark(), 0);
  EXPECT_STREQ(marked.getFullyQualifiedName(), "queue");
  EXPECT_EQ(marked.getMark(), 12);
}

TEST(PlaceTest, TheMarkIsTheVariablesValue) {
  Place place("queue", std::numeric_limits<short>::max());
  EXPECT_EQ(place.getState(), 32767);
  place.Mark() = 3;
  EXPECT_EQ(place.getState(), 3);
  place.setMark(std::numeric_limits<short>::min());
  EXPECT_EQ(*place.getPointer(), -32768);
  place.test();
  EXPECT_EQ(place.getMark(), -32768);
}

TEST(PlaceTest, AMarkIs2BytesOfTheImage) {
  Place place("queue", 0x0102);
  unsigned char image[2] = {};
  place.CurrentState(image);
  EXPECT_EQ(place.StateSize(), 2);
  EXPECT_EQ(image[0], 2);
  EXPECT_EQ(image[1], 1);
  place.setMark(0);
  place.SetState(image);
  EXPECT_EQ(place.getMark(), 0x0102);
}

TEST(PlaceTest, TheMarkPointerIsOnTheChainBesideTheVariablesOwn) {
  Place place("queue");
  EXPECT_EQ(place.getSharingCount(), 2);
  SharedPointer<short>* const newest = place.getHead();
  EXPECT_EQ(newest->getOwner(), nullptr);
  EXPECT_EQ(newest->getNeighbor()->getOwner(), &place);
  EXPECT_EQ(newest->getNeighbor()->getNeighbor(), nullptr);
}

TEST(PlaceTest, TheMarkFollowsTheLocationWhenPlacesAreShared) {
  Place a("a", 1);
  Place b("b", 5);
  short* cached = nullptr;
  b.Register(&cached);
  a.ShareWith(&b);
  EXPECT_EQ(a.getMark(), 5);
  b.Mark() = 8;
  EXPECT_EQ(a.getMark(), 8);
  EXPECT_EQ(*cached, 8);
  EXPECT_EQ(cached, a.getPointer());
  EXPECT_EQ(a.getSharingCount(), 2 + 3);
  EXPECT_FALSE(b.getStored());
}

TEST(PlaceTest, APlaceSharesWithAnExtendedPlaceOfShort) {
  Place place("a", 1);
  ExtendedPlace<short> extended("b", 5);
  place.share(&extended);
  EXPECT_EQ(place.getMark(), 5);
  place.setMark(6);
  EXPECT_EQ(extended.getMark(), 6);
}

TEST(PlaceTest, TheStateIsPrintedAsNameAndMarkInALine) {
  Place place("idle", 1);
  std::ostringstream text;
  place.printState(&text);
  EXPECT_EQ(text.str(), "idle = 1\n");
}

TEST(PlaceDebugTest, TheInitialMarkingIsToldAboveLevel1ByTheConstructorThatTakesIt) {
  testing::internal::CaptureStdout();
  GlobalDebugLevel = 2;
  const Place told("Count", 7);
  const Place withoutMark("Start");
  const Place unnamed;
  GlobalDebugLevel = 1;
  const Place quiet("Count", 8);
  GlobalDebugLevel = 0;
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "** Initial Marking for Count is 7\n");
}

TEST(PlaceDeathTest, APlaceDoesNotShareWithAVariableOfAnotherType) {
  Place place("a");
  ExtendedPlace<int> other("b");
  EXPECT_DEATH(place.share(&other), "Assertion failed: otherSV, file SharableSV\\.h");
}

TEST(PlaceDeathTest, APlaceDoesNotShareWithNothing) {
  Place place("pool");
  EXPECT_EXIT(place.ShareWith(nullptr), testing::ExitedWithCode(1),
              "^ERROR: \"pool\" is to be shared with a variable that is not there: its pointer is null\n$");
}

}  // namespace
