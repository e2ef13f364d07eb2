#include "Simulator/ParseInt32.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using support::parseInt32;

TEST(ParseInt32Test, ReadsBlanksSignAndDigitsAndLeavesTheRest) {
  EXPECT_EQ(parseInt32("42"), 42);
  EXPECT_EQ(parseInt32(" \t-7"), -7);
  EXPECT_EQ(parseInt32("+3"), 3);
  EXPECT_EQ(parseInt32("12 trains"), 12);
  EXPECT_EQ(parseInt32("010"), 10);
  EXPECT_EQ(parseInt32("0x10"), 0);
}

TEST(ParseInt32Test, GivesZeroForTextThatIsNoNumber) {
  EXPECT_EQ(parseInt32(""), 0);
  EXPECT_EQ(parseInt32("many"), 0);
  EXPECT_EQ(parseInt32("- 5"), 0);
}

TEST(ParseInt32Test, CutsALargeNumberToItsLow32Bits) {
  EXPECT_EQ(parseInt32("2147483647"), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(parseInt32("-2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(parseInt32("2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(parseInt32("4294967295"), -1);
  EXPECT_EQ(parseInt32("4294967296"), 0);
  EXPECT_EQ(parseInt32("4294967303"), 7);
}

/// The largest 64-bit number has all of its low 32 bits set, the smallest none.
TEST(ParseInt32Test, TakesANumberBeyond64BitsForTheLargestOfThese) {
  EXPECT_EQ(parseInt32("99999999999999999999"), -1);
  EXPECT_EQ(parseInt32("-99999999999999999999"), 0);
}

}  // namespace
