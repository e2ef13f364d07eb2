#include "Report/RoundNumbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace controller {
namespace {

TEST(RoundNumbersTest, AStepIsOneTwoOrFiveTimesAPowerOfTen) {
  EXPECT_DOUBLE_EQ(roundStep(0.0, 10.0, 10), 1.0);
  EXPECT_DOUBLE_EQ(roundStep(0.0, 10.1, 10), 2.0);
  EXPECT_DOUBLE_EQ(roundStep(0.0, 1.0, 3), 0.5);
  EXPECT_DOUBLE_EQ(roundStep(-600.0, 0.0, 10), 100.0);
  EXPECT_DOUBLE_EQ(roundStep(0.0, 6e-9, 2), 5e-9);
}

TEST(RoundNumbersTest, NumbersAreTheMultiplesWithin) {
  EXPECT_EQ(roundNumbers(-2.5, 2.5, 5), (std::vector<double>{-2, -1, 0, 1, 2}));
  EXPECT_EQ(roundNumbers(10.0, 30.0, 4), (std::vector<double>{10, 15, 20, 25, 30}));
}

TEST(RoundNumbersTest, ImpossibleRangesGiveFewNumbersAndNoEndlessLoop) {
  const double most = std::numeric_limits<double>::max();
  for (const auto& [from, to] : {std::pair{5.0, 5.0},
                                 {-most, most},
                                 {1e300, std::nextafter(1e300, most)},
                                 {0.0, 5e-324},
                                 {1e9, std::nextafter(1e9, most)}}) {
    EXPECT_GT(roundStep(from, to, 5), 0.0) << from;
    EXPECT_LE(roundNumbers(from, to, 5).size(), 11U) << from;
  }
}

TEST(RoundNumbersTest, NumbersInWordsHaveSixDigits) {
  EXPECT_EQ(numberInWords(2.0), "2");
  EXPECT_EQ(numberInWords(1.0 / 3.0), "0.333333");
  EXPECT_EQ(numberInWords(-0.0), "0");
  EXPECT_EQ(numberInWords(123456789.0), "1.23457e+08");
  EXPECT_EQ(numberInWords(std::nan("")), "\u2013");
  EXPECT_EQ(numberInWords(std::numeric_limits<double>::infinity()), "\u221e");
  EXPECT_EQ(numberInWords(-std::numeric_limits<double>::infinity()), "\u2212\u221e");
}

TEST(RoundNumbersTest, AStepTellsTheDigits) {
  EXPECT_EQ(numberInWords(100.0, 50.0), "100");
  EXPECT_EQ(numberInWords(1.0, 0.25), "1.0");
  EXPECT_EQ(numberInWords(1.25, 0.01), "1.25");
  EXPECT_EQ(numberInWords(0.0, 0.01), "0");
  EXPECT_EQ(numberInWords(1e9 + 0.001, 0.001), "1000000000.001");
  EXPECT_EQ(numberInWords(2e9, 1e9), "2e+09");
  EXPECT_EQ(numberInWords(0.00000012, 0.00000002), "1.2e-07");
  EXPECT_EQ(numberInWords(3.0, std::nan("")), "3");
}

}  // namespace
}  // namespace controller
