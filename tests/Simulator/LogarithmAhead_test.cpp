#include "Simulator/LogarithmAhead.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

std::uint64_t bitsOf(double value) {
  return std::bit_cast<std::uint64_t>(value);
}

/// Some hundred numbers of the unit interval, in an order of their own.
std::vector<double> variates() {
  std::vector<double> result;
  for (int i = 1; i < 400; ++i) {
    result.push_back(std::fmod(i * 0.6180339887498949, 1.0));
  }
  return result;
}

TEST(LogarithmAheadTest, RightGuessesGiveTheLibrarysBits) {
  const std::vector<double> values = variates();
  LogarithmAhead logarithms;
  for (std::size_t i = 0; i + 1 < values.size(); ++i) {
    EXPECT_EQ(bitsOf(logarithms(values[i], values[i + 1])), bitsOf(std::log(values[i])));
  }
}

TEST(LogarithmAheadTest, WrongGuessesAndPausesChangeNothing) {
  const std::vector<double> values = variates();
  LogarithmAhead logarithms;
  for (const double value : values) {
    EXPECT_EQ(bitsOf(logarithms(value, 0.25)), bitsOf(std::log(value)));
  }
}

// Runs of right and of wrong guesses, long enough for guesses to be given up and taken up again.
TEST(LogarithmAheadTest, ChangingLuckChangesNothing) {
  const std::vector<double> values = variates();
  LogarithmAhead logarithms;
  for (std::size_t i = 0; i + 1 < values.size(); ++i) {
    const bool isRight = i / 90 % 2 == 0;
    EXPECT_EQ(bitsOf(logarithms(values[i], isRight ? values[i + 1] : values[0])), bitsOf(std::log(values[i])));
  }
}

TEST(LogarithmAheadTest, EndsOfTheIntervalAndNumbersOutsideOfItAreTheLibrarys) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  LogarithmAhead logarithms;
  EXPECT_EQ(logarithms(1.0, 0.0), 0.0);
  EXPECT_EQ(logarithms(0.0, -0.0), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(logarithms(0.0, kNan), -std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(logarithms(kNan, -1.0)));
  EXPECT_TRUE(std::isnan(logarithms(-1.0, 0.5)));
  EXPECT_EQ(logarithms(0.5, 0.5), std::log(0.5));
  EXPECT_EQ(logarithms(0.5, 1.0), std::log(0.5));
}

}  // namespace
