#include "Report/Distribution.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace controller {
namespace {

std::int64_t countOf(const std::vector<HistogramBin>& bins) {
  return std::accumulate(bins.begin(), bins.end(), std::int64_t{0},
                         [](std::int64_t sum, const HistogramBin& bin) { return sum + bin.count; });
}

TEST(DistributionTest, FewValuesHaveExactQuantilesAndABarEach) {
  Distribution distribution;
  distribution.add(std::vector<double>{3, 1, 2, 2, 1, 2, 3, 2, 2, 7});  // sorted: 1 1 2 2 2 2 2 3 3 7
  EXPECT_EQ(distribution.error(), 0.0);
  EXPECT_EQ(distribution.quantile(0.0), 1.0);
  EXPECT_EQ(distribution.quantile(0.2), 1.0);
  EXPECT_EQ(distribution.quantile(0.21), 2.0);
  EXPECT_EQ(distribution.quantile(0.5), 2.0);
  EXPECT_EQ(distribution.quantile(0.75), 3.0);
  EXPECT_EQ(distribution.quantile(0.9), 3.0);
  EXPECT_EQ(distribution.quantile(0.95), 7.0);
  EXPECT_EQ(distribution.quantile(1.0), 7.0);
  const std::vector<HistogramBin> bins = distribution.histogram();
  ASSERT_EQ(bins.size(), 4U);
  EXPECT_EQ(bins[1].from, 2.0);
  EXPECT_EQ(bins[1].to, 2.0);
  EXPECT_EQ(bins[1].count, 5);
  EXPECT_EQ(bins[3].from, 7.0);
  EXPECT_EQ(bins[3].count, 1);
}

TEST(DistributionTest, WithoutObservationsThereIsNothing) {
  Distribution distribution;
  EXPECT_TRUE(std::isnan(distribution.quantile(0.5)));
  EXPECT_TRUE(distribution.histogram().empty());
}

TEST(DistributionTest, WhatIsNoFiniteNumberIsLeftOut) {
  Distribution distribution;
  distribution.add(std::vector<double>{1.0, std::nan(""), std::numeric_limits<double>::infinity(), 2.0});
  EXPECT_EQ(distribution.quantile(1.0), 2.0);
  EXPECT_EQ(countOf(distribution.histogram()), 2);
}

TEST(DistributionTest, WholeNumbersFillBinsOfAWholeWidth) {
  // 0 to 99, ten times each: 40 bins at most are of width 5, and each holds 50.
  Distribution distribution;
  for (int value = 0; value < 1000; ++value) {
    const double observation = value % 100;
    distribution.add(std::span(&observation, 1));
  }
  EXPECT_EQ(distribution.error(), 0.0);
  const std::vector<HistogramBin> bins = distribution.histogram();
  ASSERT_EQ(bins.size(), 20U);
  for (std::size_t at = 0; at < bins.size(); ++at) {
    EXPECT_DOUBLE_EQ(bins[at].from, 5.0 * static_cast<double>(at));
    EXPECT_DOUBLE_EQ(bins[at].to, 5.0 * static_cast<double>(at + 1));
    EXPECT_EQ(bins[at].count, 50);
  }
}

TEST(DistributionTest, BeyondTheExactValuesTheErrorIsTold) {
  Distribution distribution;
  for (std::size_t value = 0; value < Distribution::kMostValues; ++value) {
    const auto observation = static_cast<double>(value);
    distribution.add(std::span(&observation, 1));
    distribution.add(std::span(&observation, 1));
  }
  EXPECT_EQ(distribution.error(), 0.0);
  const double further = -1.0;
  distribution.add(std::span(&further, 1));
  EXPECT_EQ(distribution.error(), QuantileSketch::kError);
  EXPECT_EQ(distribution.quantile(0.0), -1.0);
  EXPECT_NEAR(distribution.quantile(0.5), 511.0, 2.0);
  EXPECT_EQ(distribution.quantile(1.0), 1023.0);
  EXPECT_EQ(countOf(distribution.histogram()), 2049);
}

TEST(DistributionTest, ALongTailIsLeftOutOfTheHistogram) {
  std::mt19937_64 generator(1);
  Distribution distribution;
  for (int at = 0; at < 100'000; ++at) {
    const double uniform = static_cast<double>(generator() >> 11) * 0x1p-53;
    const double observation = 1.0 / (1.0 - uniform);  // more than x with probability 1 / x
    distribution.add(std::span(&observation, 1));
  }
  const std::vector<HistogramBin> bins = distribution.histogram();
  EXPECT_LE(bins.size(), 42U);
  EXPECT_NEAR(bins.back().to, 1000.0, 200.0);  // the 99.9 % quantile, whose error is half of its 0.1 % in probability
  EXPECT_NEAR(static_cast<double>(countOf(bins)), 99'900.0, 100.0);
}

TEST(DistributionTest, ExtremeRangesAreNoTrouble) {
  const double most = std::numeric_limits<double>::max();
  for (const double scale : {most, 1e-308, 1.0}) {
    Distribution distribution;
    for (int at = -50; at <= 50; ++at) {
      const double observation = scale * at / 50.0;
      distribution.add(std::span(&observation, 1));
    }
    EXPECT_LE(distribution.histogram().size(), 120U) << scale;
  }
  Distribution near;
  for (int at = 0; at < 100; ++at) {
    const double observation = 1e9 + at * 0x1p-22;  // the bins would be finer than numbers of this size are
    near.add(std::span(&observation, 1));
  }
  EXPECT_EQ(countOf(near.histogram()), 100);
}

}  // namespace
}  // namespace controller
