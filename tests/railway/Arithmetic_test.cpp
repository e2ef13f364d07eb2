#include "railway/Atomic/Arithmetic.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using support::difference32;
using support::keepLow16;
using support::sum32;
using support::truncateToInt32;

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(RailwayArithmeticTest, TruncatesTowardZero) {
  EXPECT_EQ(truncateToInt32(2.9), 2);
  EXPECT_EQ(truncateToInt32(-2.9), -2);
  EXPECT_EQ(truncateToInt32(-0.5), 0);
  EXPECT_EQ(truncateToInt32(80.0), 80);
  EXPECT_EQ(truncateToInt32(2147483646.9), 2147483646);
  EXPECT_EQ(truncateToInt32(-2147483647.9), -2147483647);
}

TEST(RailwayArithmeticTest, TakesTheEndOfTheRangeForWhatLiesOutside) {
  EXPECT_EQ(truncateToInt32(2147483647.0), kMax);
  EXPECT_EQ(truncateToInt32(2147483647.5), kMax);
  EXPECT_EQ(truncateToInt32(1e300), kMax);
  EXPECT_EQ(truncateToInt32(kInfinity), kMax);
  EXPECT_EQ(truncateToInt32(-2147483648.0), kMin);
  EXPECT_EQ(truncateToInt32(-2147483648.5), kMin);
  EXPECT_EQ(truncateToInt32(-kInfinity), kMin);
}

TEST(RailwayArithmeticTest, TakesZeroForWhatIsNoNumber) {
  EXPECT_EQ(truncateToInt32(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(RailwayArithmeticTest, KeepsTheLowSixteenBits) {
  EXPECT_EQ(keepLow16(32767), 32767);
  EXPECT_EQ(keepLow16(32768), -32768);
  EXPECT_EQ(keepLow16(65541), 5);
  EXPECT_EQ(keepLow16(-32769), 32767);
  EXPECT_EQ(keepLow16(kMin), 0);
}

TEST(RailwayArithmeticTest, SumsAndDifferencesWrapAround) {
  EXPECT_EQ(sum32(2, 3), 5);
  EXPECT_EQ(sum32(kMax, 1), kMin);
  EXPECT_EQ(difference32(2, 3), -1);
  EXPECT_EQ(difference32(kMin, 1), kMax);
  EXPECT_EQ(difference32(0, kMin), kMin);
}

}  // namespace
