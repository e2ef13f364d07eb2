#include "Statistics/Intervals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace controller {
namespace {

/// Upper bound of Student's interval about 0 with a standard error of 1: the quantile itself.
double quantileOf(std::int64_t degreesOfFreedom, double confidence) {
  const std::int64_t count = degreesOfFreedom + 1;
  return studentInterval(count, 0.0, static_cast<double>(count), confidence).upper;
}

TEST(IntervalsTest, StudentsQuantilesAreThoseOfThePublishedTable) {
  // NIST/SEMATECH e-Handbook of Statistical Methods, 1.3.6.7.2, critical values of Student's t distribution.
  EXPECT_NEAR(quantileOf(1, 0.95), 12.706, 5e-4);
  EXPECT_NEAR(quantileOf(5, 0.99), 4.032, 5e-4);
  EXPECT_NEAR(quantileOf(10, 0.90), 1.812, 5e-4);
  EXPECT_NEAR(quantileOf(10, 0.95), 2.228, 5e-4);
  EXPECT_NEAR(quantileOf(30, 0.95), 2.042, 5e-4);
  EXPECT_NEAR(quantileOf(100, 0.99), 2.626, 5e-4);
}

TEST(IntervalsTest, StudentsQuantileTendsToTheNormalOne) {
  EXPECT_NEAR(quantileOf(100'000'000, 0.95), 1.9599640, 1e-6);
  EXPECT_NEAR(quantileOf(100'000'000, 0.99), 2.5758293, 1e-6);
}

TEST(IntervalsTest, StudentsIntervalOfOneDegreeOfFreedomIsByTheTangent) {
  // With one degree of freedom the law is Cauchy's: the quantile of 1 - a is tan(pi (1/2 - a)).
  const double quantile = std::tan(std::acos(-1.0) * 0.49);
  const Interval interval = studentInterval(2, 10.0, 8.0, 0.98);  // standard error 2
  EXPECT_NEAR(interval.lower, 10.0 - 2.0 * quantile, 1e-9);
  EXPECT_NEAR(interval.upper, 10.0 + 2.0 * quantile, 1e-9);
}

TEST(IntervalsTest, ClopperPearsonIsAsPublished) {
  // R. G. Newcombe, Two-sided confidence intervals for the single proportion, Statistics in Medicine 17, 1998, table I.
  struct Row {
    std::int64_t successes, count;
    double lower, upper;
  };
  for (const Row& row : {Row{81, 263, 0.2527, 0.3676}, Row{15, 148, 0.0578, 0.1617}, Row{0, 20, 0.0, 0.1684},
                         Row{1, 29, 0.0009, 0.1776}}) {
    const Interval interval = clopperPearsonInterval(row.successes, row.count, 0.95);
    EXPECT_NEAR(interval.lower, row.lower, 5e-5) << row.successes << " of " << row.count;
    EXPECT_NEAR(interval.upper, row.upper, 5e-5) << row.successes << " of " << row.count;
  }
}

TEST(IntervalsTest, ClopperPearsonOfNoneAndOfAllHasAClosedForm) {
  for (const std::int64_t count : {1, 2, 20, 1000, 10'000'000}) {
    const double farthest = -std::expm1(std::log(0.025) / static_cast<double>(count));  // 1 - 0.025^(1/n)
    const Interval none = clopperPearsonInterval(0, count, 0.95);
    EXPECT_EQ(none.lower, 0.0);
    EXPECT_NEAR(none.upper / farthest, 1.0, 1e-9) << count;
    const Interval all = clopperPearsonInterval(count, count, 0.95);
    EXPECT_EQ(all.upper, 1.0);
    EXPECT_NEAR(all.lower, 1.0 - farthest, 1e-12) << count;
  }
}

TEST(IntervalsTest, ClopperPearsonOfManyIsNearTheNormalOne) {
  const double p = 0.3;
  const double n = 1e8;
  const Interval interval = clopperPearsonInterval(30'000'000, 100'000'000, 0.95);
  const double reach = 1.9599640 * std::sqrt(p * (1.0 - p) / n);
  EXPECT_NEAR(interval.lower, p - reach, 2.0 / n);
  EXPECT_NEAR(interval.upper, p + reach, 2.0 / n);
}

TEST(IntervalsTest, ClopperPearsonNeverCoversLessThanTheConfidence) {
  // The coverage of each probability, summed over all outcomes.
  const std::int64_t count = 40;
  for (const double confidence : {0.90, 0.95, 0.99}) {
    for (int step = 1; step < 100; ++step) {
      const double p = step / 100.0;
      double coverage = 0.0;
      for (std::int64_t hits = 0; hits <= count; ++hits) {
        const Interval interval = clopperPearsonInterval(hits, count, confidence);
        if (interval.lower <= p && p <= interval.upper) {
          const auto k = static_cast<double>(hits);
          coverage += std::exp(std::lgamma(41.0) - std::lgamma(k + 1.0) - std::lgamma(41.0 - k) + k * std::log(p) +
                               (40.0 - k) * std::log1p(-p));
        }
      }
      EXPECT_GE(coverage, confidence) << "p = " << p;
    }
  }
}

TEST(IntervalsTest, TheTransformedBoundsOfTheCorrectedIntervalAreStudentsQuantiles) {
  // Hall's transformation, applied to the studentized bounds, undoes the correction.
  for (const double skewness : {0.5, 2.0, -3.0}) {
    const std::int64_t count = 50;
    const double error = std::sqrt(4.0 / 50.0);
    const Interval interval = skewnessCorrectedInterval(count, 7.0, 4.0, skewness, 0.95);
    const double c = skewness / std::sqrt(50.0);
    const auto transformed = [c](double t) { return t + c * t * t / 3.0 + c * c * t * t * t / 27.0 + c / 6.0; };
    const double quantile = quantileOf(count - 1, 0.95);
    EXPECT_NEAR(transformed((7.0 - interval.lower) / error), quantile, 1e-9);
    EXPECT_NEAR(transformed((7.0 - interval.upper) / error), -quantile, 1e-9);
  }
}

TEST(IntervalsTest, TheCorrectedIntervalReachesTowardsTheLongerTail) {
  const Interval right = skewnessCorrectedInterval(30, 0.0, 30.0, 2.0, 0.95);
  const Interval left = skewnessCorrectedInterval(30, 0.0, 30.0, -2.0, 0.95);
  const Interval plain = studentInterval(30, 0.0, 30.0, 0.95);
  EXPECT_GT(right.upper, -right.lower);
  EXPECT_EQ(right.upper, -left.lower);
  EXPECT_EQ(right.lower, -left.upper);
  EXPECT_GT(right.upper - right.lower, plain.upper - plain.lower);
}

TEST(IntervalsTest, WithoutSkewnessTheCorrectedIntervalIsStudents) {
  const Interval plain = studentInterval(30, 5.0, 2.0, 0.95);
  for (const double skewness : {0.0, 1e-13, 1e-9}) {
    const Interval corrected = skewnessCorrectedInterval(30, 5.0, 2.0, skewness, 0.95);
    EXPECT_NEAR(corrected.lower, plain.lower, 1e-6) << skewness;
    EXPECT_NEAR(corrected.upper, plain.upper, 1e-6) << skewness;
  }
}

TEST(IntervalsTest, SkewnessIsToldFromChanceByItsStandardError) {
  // n = 100: sqrt(6 * 100 * 99 / (98 * 101 * 103)) = 0.24138; times 1.95996 is 0.47309.
  EXPECT_FALSE(isSkewed(100, 0.473));
  EXPECT_TRUE(isSkewed(100, 0.4732));
  EXPECT_TRUE(isSkewed(100, -0.4732));
  EXPECT_FALSE(isSkewed(7, 100.0));
}

}  // namespace
}  // namespace controller
