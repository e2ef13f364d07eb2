#include "Statistics/SteadyStateDiagnosis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "Noise.h"

namespace controller {
namespace {

/// x' = f x + noise, from its stationary law, with `start` added that fades by the factor `fade` at each step.
std::vector<double> autoregressive(support::Noise& noise, std::size_t count, double f, double start = 0.0,
                                   double fade = 0.0) {
  std::vector<double> series;
  double x = noise.normal() / std::sqrt(1.0 - f * f);
  for (std::size_t at = 0; at < count; ++at) {
    series.push_back(10.0 + x + start);
    x = f * x + noise.normal();
    start *= fade;
  }
  return series;
}

TEST(SteadyStateDiagnosisTest, CorrelationIsThatReckonedByHand) {
  // 1 2 3 4 5 6 7 8 9 10 11: mean 6, squares 110 over 11 batches; products of neighbours about the mean
  // 20 + 12 + 6 + 2 + 0 + 0 + 2 + 6 + 12 + 20 = 80 over 10 pairs: 8 / 10.
  SteadyStateDiagnosis diagnosis;
  diagnosis.addUnit(std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
  EXPECT_NEAR(diagnosis.lag1Correlation(), 0.8, 1e-12);
}

TEST(SteadyStateDiagnosisTest, BatchesOfDifferentUnitsAreNoNeighbours) {
  SteadyStateDiagnosis diagnosis;
  for (int unit = 0; unit < 100; ++unit) {
    diagnosis.addUnit(std::vector<double>{static_cast<double>(unit)});
  }
  EXPECT_TRUE(std::isnan(diagnosis.lag1Correlation()));
  EXPECT_FALSE(diagnosis.isTooShort());
  EXPECT_TRUE(diagnosis.words().empty());
}

TEST(SteadyStateDiagnosisTest, IndependentBatchesAreLongEnough) {
  support::Noise noise(1);
  SteadyStateDiagnosis diagnosis(50);
  for (int unit = 0; unit < 20; ++unit) {
    diagnosis.addUnit(autoregressive(noise, 1000, 0.0));
  }
  EXPECT_NEAR(diagnosis.lag1Correlation(), 0.0, 4.0 / std::sqrt(20'000.0));
  EXPECT_FALSE(diagnosis.isTooShort());
  EXPECT_EQ(diagnosis.recommendedBatchLength(), 50);
  EXPECT_EQ(diagnosis.warmUpBatches(), 0);
  EXPECT_TRUE(diagnosis.words().empty());
}

TEST(SteadyStateDiagnosisTest, CorrelatedBatchesGetALengthAtWhichTheyAreNot) {
  // Sums of m successive values have the lag-1 correlation f (1 - f^m)^2 / (m (1 - f^2) - 2 f (1 - f^m)): for f = 0.8
  // 0.0806 at m = 32 and 0.0373 at m = 64, of which the latter is allowed.
  support::Noise noise(2);
  SteadyStateDiagnosis diagnosis(50);
  for (int unit = 0; unit < 100; ++unit) {
    diagnosis.addUnit(autoregressive(noise, 4096, 0.8));
  }
  EXPECT_NEAR(diagnosis.lag1Correlation(), 0.8, 0.01);
  EXPECT_TRUE(diagnosis.isTooShort());
  EXPECT_EQ(diagnosis.recommendedBatchLength(), 50 * 64);
  ASSERT_EQ(diagnosis.words().size(), 1U);
  EXPECT_EQ(diagnosis.words()[0], "batches of 50 are too short: lag-1 correlation 0.80; use 3200");
}

TEST(SteadyStateDiagnosisTest, OfShortUnitsTheLengthIsReckoned) {
  // Units of 10: batches by twos have pairs enough, those by fours one in each unit. f = 0.8 at m = 2: correlation
  // 0.8 * 0.1296 / (0.72 - 0.576) = 0.72; halved four times it is 0.045.
  support::Noise noise(3);
  SteadyStateDiagnosis diagnosis;
  for (int unit = 0; unit < 300; ++unit) {
    diagnosis.addUnit(autoregressive(noise, 10, 0.8));
  }
  EXPECT_TRUE(diagnosis.isTooShort());
  EXPECT_EQ(diagnosis.recommendedBatchLength(), 2 * 16);
}

TEST(SteadyStateDiagnosisTest, AWarmUpThatEndsSharplyIsCutThere) {
  // Behind place 100 the fives have the means 1 and -1 by turns: a later cut leaves the same variance and fewer of them.
  SteadyStateDiagnosis diagnosis(50);
  std::vector<double> series;
  for (int at = 0; at < 1000; ++at) {
    series.push_back((at / 5 % 2 == 0 ? 1.0 : -1.0) - (at < 100 ? 4.0 : 0.0));
  }
  diagnosis.addUnit(series);
  diagnosis.addUnit(series);
  EXPECT_EQ(diagnosis.warmUpBatches(), 100);
  const std::vector<std::string> words = diagnosis.words();
  ASSERT_FALSE(words.empty());
  EXPECT_EQ(words.back(), "the first 5000 of a unit are still warm-up (MSER-5): leave them out");
}

TEST(SteadyStateDiagnosisTest, AWarmUpInNoiseIsSeenInTheAverageOfUnits) {
  support::Noise noise(4);
  SteadyStateDiagnosis diagnosis;
  for (int unit = 0; unit < 50; ++unit) {
    diagnosis.addUnit(
        autoregressive(noise, 1000, 0.0, -3.0, 0.97));  // below a standard error of the averages from 100 on
  }
  EXPECT_GE(diagnosis.warmUpBatches(), 50);
  EXPECT_LE(diagnosis.warmUpBatches(), 200);
}

TEST(SteadyStateDiagnosisTest, AWarmUpThatFillsTheUnitIsUnknown) {
  support::Noise noise(5);
  SteadyStateDiagnosis diagnosis;
  for (int unit = 0; unit < 50; ++unit) {
    diagnosis.addUnit(autoregressive(noise, 200, 0.0, 100.0, 0.99));
  }
  EXPECT_EQ(diagnosis.warmUpBatches(), -1);
}

TEST(SteadyStateDiagnosisTest, ShortUnitsTellOfNoWarmUp) {
  support::Noise noise(6);
  SteadyStateDiagnosis diagnosis;
  diagnosis.addUnit(autoregressive(noise, 49, 0.0, 100.0, 0.5));
  EXPECT_EQ(diagnosis.warmUpBatches(), -1);
}

TEST(SteadyStateDiagnosisTest, LongUnitsAreKeptInLargerGroups) {
  // 100 000 batches: groups of 40 are the first of which there are no more than 4096. The step ends at a multiple of it.
  support::Noise noise(7);
  SteadyStateDiagnosis diagnosis;
  for (int unit = 0; unit < 3; ++unit) {
    std::vector<double> series = noise.normals(unit == 0 ? 20'000 : 100'000);  // the first one in groups of 5
    for (std::size_t at = 0; at < 4000; ++at) {
      series[at] += 2.0;
    }
    diagnosis.addUnit(series);
  }
  EXPECT_EQ(diagnosis.warmUpBatches(), 4000);
}

TEST(SteadyStateDiagnosisTest, WhatIsNoFiniteNumberLeavesEverythingUnknown) {
  support::Noise noise(8);
  SteadyStateDiagnosis diagnosis;
  std::vector<double> series = autoregressive(noise, 1000, 0.8);
  diagnosis.addUnit(series);
  series[500] = std::numeric_limits<double>::infinity();
  diagnosis.addUnit(series);
  EXPECT_TRUE(std::isnan(diagnosis.lag1Correlation()));
  EXPECT_EQ(diagnosis.warmUpBatches(), -1);
  EXPECT_TRUE(diagnosis.words().empty());
}

TEST(SteadyStateDiagnosisTest, EqualBatchesAreNotCorrelated) {
  SteadyStateDiagnosis diagnosis;
  diagnosis.addUnit(std::vector<double>(1000, 7.0));
  EXPECT_TRUE(std::isnan(diagnosis.lag1Correlation()));
  EXPECT_EQ(diagnosis.warmUpBatches(), 0);
  EXPECT_TRUE(diagnosis.words().empty());
}

}  // namespace
}  // namespace controller
