#include "Study/Grid.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace controller {
namespace {

using testing::ElementsAre;

std::vector<std::string> valuesOf(const std::string& text) {
  return readSetting(text).values;
}

TEST(GridTest, AValueStaysTheTextThatItIs) {
  const Setting setting = readSetting("netNotDeliveryProb=0.80");
  EXPECT_EQ(setting.name, "netNotDeliveryProb");
  EXPECT_EQ(setting.letter, '\0');
  EXPECT_THAT(setting.values, ElementsAre("0.80"));
}

TEST(GridTest, TheTypeMayStandAheadByItsNameOrLetter) {
  EXPECT_EQ(readSetting("double:x=1").letter, 'd');
  EXPECT_EQ(readSetting("s:x=1").letter, 's');
  EXPECT_EQ(readSetting("bool:x=1").letter, 'b');
  EXPECT_THROW(static_cast<void>(readSetting("number:x=1")), UsageError);
}

TEST(GridTest, ARangeHasBothItsEndsAndIsExact) {
  EXPECT_THAT(valuesOf("x=0..1..0.1"),
              ElementsAre("0", "0.1", "0.2", "0.3", "0.4", "0.5", "0.6", "0.7", "0.8", "0.9", "1"));
  EXPECT_THAT(valuesOf("x=1..4"), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(valuesOf("x=0.05..0.1..0.025"), ElementsAre("0.05", "0.075", "0.1"));
  EXPECT_THAT(valuesOf("x=1..-1..-0.5"), ElementsAre("1", "0.5", "0", "-0.5", "-1"));
  EXPECT_THAT(valuesOf("x=1..2..0.4"), ElementsAre("1", "1.4", "1.8"));
}

TEST(GridTest, ListsAndRangesMix) {
  EXPECT_THAT(valuesOf("x=7,1..3,9"), ElementsAre("7", "1", "2", "3", "9"));
}

TEST(GridTest, WhatIsNoSettingIsRefused) {
  for (const char* const text : {"x", "=1", "x=", "x=1,", "x=a b", "x=1:2", "x=1..", "x=1..2..0", "x=2..1",
                                 "x=1..2..3..4", "x=a..b", "x=0..1..0.00000000000000000001", "x=0..1..0.000001"}) {
    EXPECT_THROW(static_cast<void>(readSetting(text)), UsageError) << text;
  }
}

TEST(GridTest, PointsAreAllCombinationsWithTheLastSettingFastest) {
  const auto points = gridPoints({readSetting("i:a=1,2"), readSetting("d:b=0.5,0.6,0.7")});
  std::string text;
  for (const auto& point : points) {
    text += point[0].name + point[0].value + point[1].name + point[1].value + " ";
  }
  EXPECT_EQ(text, "a1b0.5 a1b0.6 a1b0.7 a2b0.5 a2b0.6 a2b0.7 ");
}

TEST(GridTest, NoSettingIsOneEmptyPoint) {
  ASSERT_EQ(gridPoints({}).size(), 1U);
  EXPECT_TRUE(gridPoints({}).front().empty());
}

TEST(GridTest, AVariableThatIsSetTwiceIsRefused) {
  EXPECT_THROW(static_cast<void>(gridPoints({readSetting("a=1"), readSetting("a=2")})), UsageError);
}

TEST(GridTest, AGridBeyondItsLimitIsRefusedBeforeItIsMade) {
  const Setting many = readSetting("a=1..1000");
  Setting other = many;
  other.name = "b";
  EXPECT_THROW(static_cast<void>(gridPoints({many, other})), UsageError);
}

}  // namespace
}  // namespace controller
