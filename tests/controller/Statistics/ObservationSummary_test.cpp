#include "Statistics/ObservationSummary.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "Noise.h"

namespace controller {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Estimate estimateOf(const std::vector<double>& observations, double confidence = 0.95) {
  ObservationSummary summary;
  summary.add(observations);
  return summary.estimate(confidence);
}

void expectSameBits(const Estimate& a, const Estimate& b) {
  const auto bits = [](double x) { return std::bit_cast<std::uint64_t>(x); };
  EXPECT_EQ(a.count, b.count);
  EXPECT_EQ(bits(a.mean), bits(b.mean));
  EXPECT_EQ(bits(a.lower), bits(b.lower));
  EXPECT_EQ(bits(a.upper), bits(b.upper));
  EXPECT_EQ(bits(a.variance), bits(b.variance));
  EXPECT_EQ(bits(a.skewness), bits(b.skewness));
}

TEST(ObservationSummaryTest, MomentsAreThoseReckonedByHand) {
  // Differences from the mean 5: -3 -1 -1 -1 0 0 2 4; squares 32; cubes 42; 42/8 / (32/8)^(3/2) = 0.65625, times
  // sqrt(8 * 7) / 6 = 1.2472191 for the bias.
  const Estimate estimate = estimateOf({2, 4, 4, 4, 5, 5, 7, 9});
  EXPECT_EQ(estimate.count, 8);
  EXPECT_EQ(estimate.mean, 5.0);
  EXPECT_DOUBLE_EQ(estimate.variance, 32.0 / 7.0);
  EXPECT_NEAR(estimate.skewness, 0.818487554, 1e-9);
  EXPECT_EQ(estimate.minimum, 2.0);
  EXPECT_EQ(estimate.maximum, 9.0);
  EXPECT_EQ(estimate.method, EstimateMethod::StudentT);
  EXPECT_NEAR(estimate.halfWidth, 2.364624 * std::sqrt(32.0 / 7.0 / 8.0), 1e-6);  // t of 7 degrees of freedom
  EXPECT_DOUBLE_EQ(estimate.upper - estimate.mean, estimate.halfWidth);
}

TEST(ObservationSummaryTest, AHugeOffsetLeavesTheMomentsAsTheyAre) {
  // Multiples of 1/1024 keep all their digits beside 1e9.
  support::Noise noise(1);
  std::vector<double> plain;
  std::vector<double> far;
  for (int at = 0; at < 10'000; ++at) {
    const double value = std::floor(noise.uniform() * noise.uniform() * 1024.0) / 1024.0;
    plain.push_back(value);
    far.push_back(1e9 + value);
  }
  const Estimate near = estimateOf(plain);
  const Estimate offset = estimateOf(far);
  EXPECT_EQ(near.method, EstimateMethod::SkewnessCorrected);
  EXPECT_EQ(offset.method, EstimateMethod::SkewnessCorrected);
  EXPECT_NEAR(offset.variance / near.variance, 1.0, 1e-14);
  EXPECT_NEAR(offset.skewness / near.skewness, 1.0, 1e-14);
  EXPECT_NEAR(offset.mean - 1e9, near.mean, 1.2e-7);  // half a unit in the last place of 1e9
}

TEST(ObservationSummaryTest, AFirstObservationFarFromTheOthersDoesNoHarm) {
  // Against exact integer arithmetic: n times the sum of squares less the square of the sum.
  std::vector<double> observations{0.0};
  __extension__ using Wide = __int128;
  Wide sum = 0;
  Wide squares = 0;
  for (std::int64_t at = 1; at < 2000; ++at) {
    const std::int64_t value = 1'000'000'000 + at % 7;
    observations.push_back(static_cast<double>(value));
    sum += value;
    squares += static_cast<Wide>(value) * value;
  }
  const Wide n = 2000;
  const double variance = static_cast<double>(n * squares - sum * sum) / static_cast<double>(n * (n - 1));
  const Estimate estimate = estimateOf(observations);
  EXPECT_NEAR(estimate.variance / variance, 1.0, 1e-15);
  EXPECT_EQ(estimate.mean, static_cast<double>(sum) / 2000.0);
}

TEST(ObservationSummaryTest, ManyTenthsHaveTheMeanOfOne) {
  const Estimate estimate = estimateOf(std::vector<double>(1'000'000, 0.1));
  EXPECT_EQ(estimate.mean, 0.1);
  EXPECT_EQ(estimate.variance, 0.0);
}

TEST(ObservationSummaryTest, TheMeanOfManyIsTheRoundedExactOne) {
  // 0.1 and 0.7 by turns, beside an outlier: the sum of 3e6 plain additions would be off by some 1e-9.
  ObservationSummary summary;
  const std::vector<double> pair{0.1, 0.7};
  for (int at = 0; at < 1'500'000; ++at) {
    summary.add(pair);
  }
  EXPECT_DOUBLE_EQ(summary.estimate(0.95).mean, (0.1 + 0.7) / 2.0);
}

void expectSameBitsHoweverTheyAreAdded(const std::vector<double>& observations) {
  ObservationSummary byOne;
  ObservationSummary bySome;
  for (std::size_t at = 0; at < observations.size(); ++at) {
    byOne.add(std::span(observations).subspan(at, 1));
  }
  for (std::size_t at = 0; at < observations.size();) {
    const std::size_t length = std::min<std::size_t>(1 + at % 17, observations.size() - at);
    bySome.add(std::span(observations).subspan(at, length));
    bySome.add({});
    at += length;
  }
  expectSameBits(byOne.estimate(0.95), estimateOf(observations));
  expectSameBits(bySome.estimate(0.95), estimateOf(observations));
}

TEST(ObservationSummaryTest, ObservationsInOneCallOrInManyGiveTheSameBits) {
  support::Noise noise(2);
  expectSameBitsHoweverTheyAreAdded(noise.normals(1000));
}

// The same where zeros and ones are counted rather than added, from either start, and where another number ends that.
TEST(ObservationSummaryTest, ZerosAndOnesInOneCallOrInManyGiveTheSameBits) {
  support::Noise noise(3);
  for (const double first : {0.0, 1.0, -0.0}) {
    std::vector<double> observations{first};
    for (int i = 0; i < 700; ++i) {
      observations.push_back(noise.uniform() < 0.3 ? 1.0 : 0.0);
    }
    expectSameBitsHoweverTheyAreAdded(observations);
    for (const double other : {-0.0, 0.1, 2.0}) {
      std::vector<double> mixed = observations;
      mixed.push_back(other);
      mixed.insert(mixed.end(), observations.begin(), observations.end());
      expectSameBitsHoweverTheyAreAdded(mixed);
    }
  }
}

TEST(ObservationSummaryTest, WithoutObservationsNothingIsKnown) {
  const Estimate estimate = estimateOf({});
  EXPECT_EQ(estimate.count, 0);
  EXPECT_TRUE(std::isnan(estimate.mean));
  EXPECT_TRUE(std::isnan(estimate.halfWidth));
  EXPECT_TRUE(std::isnan(estimate.minimum));
}

TEST(ObservationSummaryTest, OneObservationHasAnInfiniteInterval) {
  const Estimate estimate = estimateOf({3.5});
  EXPECT_EQ(estimate.mean, 3.5);
  EXPECT_EQ(estimate.minimum, 3.5);
  EXPECT_EQ(estimate.lower, -kInfinity);
  EXPECT_EQ(estimate.upper, kInfinity);
  EXPECT_EQ(estimate.halfWidth, kInfinity);
  EXPECT_TRUE(std::isnan(estimate.variance));
}

TEST(ObservationSummaryTest, OneObservationOfAProbabilityHasTheIntervalOfClopperAndPearson) {
  const Estimate estimate = estimateOf({1.0});
  EXPECT_EQ(estimate.method, EstimateMethod::ClopperPearson);
  EXPECT_NEAR(estimate.lower, 0.025, 1e-12);  // P(1 hit in 1) = p
  EXPECT_EQ(estimate.upper, 1.0);
}

TEST(ObservationSummaryTest, EqualObservationsHaveNoInterval) {
  const Estimate estimate = estimateOf({1e9 + 0.1, 1e9 + 0.1, 1e9 + 0.1});
  EXPECT_EQ(estimate.method, EstimateMethod::Constant);
  EXPECT_EQ(estimate.mean, 1e9 + 0.1);
  EXPECT_EQ(estimate.halfWidth, 0.0);
  EXPECT_EQ(estimate.variance, 0.0);
  EXPECT_EQ(estimate.skewness, 0.0);
}

TEST(ObservationSummaryTest, ZerosAndOnesHaveTheIntervalOfClopperAndPearson) {
  std::vector<double> observations(148, 0.0);
  std::fill_n(observations.begin() + 20, 15, 1.0);
  for (const double first : {0.0, 1.0}) {  // whichever of them is taken off the others
    std::swap(observations[0], observations[first == 0.0 ? 0 : 20]);
    const Estimate estimate = estimateOf(observations);
    EXPECT_EQ(estimate.method, EstimateMethod::ClopperPearson);
    EXPECT_NEAR(estimate.lower, 0.0578, 5e-5);  // Newcombe, 1998
    EXPECT_NEAR(estimate.upper, 0.1617, 5e-5);
    EXPECT_EQ(estimate.mean, 15.0 / 148.0);
    EXPECT_EQ(estimate.halfWidth, estimate.upper - estimate.mean);  // the longer side
  }
}

TEST(ObservationSummaryTest, ZerosAloneAndOnesAloneStillHaveAnInterval) {
  const Estimate zeros = estimateOf(std::vector<double>(20, 0.0));
  EXPECT_EQ(zeros.method, EstimateMethod::ClopperPearson);
  EXPECT_NEAR(zeros.halfWidth, 0.1684, 5e-5);
  const Estimate ones = estimateOf(std::vector<double>(20, 1.0));
  EXPECT_NEAR(ones.halfWidth, 0.1684, 5e-5);
  EXPECT_EQ(ones.mean, 1.0);
}

TEST(ObservationSummaryTest, ATwoAmongZerosAndOnesMakesThemCounts) {
  std::vector<double> observations(50, 0.0);
  observations[3] = 1.0;
  observations[49] = 2.0;
  EXPECT_NE(estimateOf(observations).method, EstimateMethod::ClopperPearson);
}

TEST(ObservationSummaryTest, SkewedObservationsHaveACorrectedInterval) {
  support::Noise noise(3);
  std::vector<double> observations;
  for (int at = 0; at < 1000; ++at) {
    observations.push_back(-std::log(1.0 - noise.uniform()));
  }
  const Estimate estimate = estimateOf(observations);
  EXPECT_EQ(estimate.method, EstimateMethod::SkewnessCorrected);
  EXPECT_GT(estimate.upper - estimate.mean, estimate.mean - estimate.lower);
  EXPECT_EQ(estimate.halfWidth, estimate.upper - estimate.mean);
}

TEST(ObservationSummaryTest, WhatIsNoFiniteNumberSpoilsTheMeanAndIsTold) {
  for (const double rubbish : {kNaN, kInfinity, -kInfinity}) {
    for (const std::vector<double>& observations :
         {std::vector<double>{1.0, 4.0, rubbish, 2.0}, {rubbish, 1.0, 4.0, 2.0}}) {
      ObservationSummary summary;
      summary.add(observations);
      EXPECT_FALSE(summary.isFinite());
      EXPECT_FALSE(summary.isBinary());
      EXPECT_EQ(summary.firstNotFinite(), std::isfinite(observations[0]) ? 2 : 0);
      const Estimate estimate = summary.estimate(0.95);
      EXPECT_EQ(estimate.count, 4);
      EXPECT_TRUE(std::isnan(estimate.mean));
      EXPECT_TRUE(std::isnan(estimate.halfWidth));
      EXPECT_EQ(estimate.minimum, 1.0);
      EXPECT_EQ(estimate.maximum, 4.0);
    }
  }
}

TEST(ObservationSummaryTest, AVarianceBeyondTheRangeOfNumbersLeavesNoInterval) {
  for (const double scale : {1e200, 1e-200}) {
    const Estimate estimate = estimateOf({scale, 2.0 * scale, 4.0 * scale, 3.0 * scale});
    EXPECT_DOUBLE_EQ(estimate.mean, 2.5 * scale);
    EXPECT_EQ(estimate.halfWidth, kInfinity) << scale;
    EXPECT_EQ(estimate.skewness, 0.0);
  }
}

TEST(ObservationSummaryTest, AThirdMomentBeyondTheRangeOfNumbersCountsAsNone) {
  const Estimate estimate = estimateOf({1e120, 2e120, 4e120, 3e120});
  EXPECT_EQ(estimate.skewness, 0.0);
  EXPECT_NEAR(estimate.variance / 1e240, 5.0 / 3.0, 1e-12);
}

}  // namespace
}  // namespace controller
