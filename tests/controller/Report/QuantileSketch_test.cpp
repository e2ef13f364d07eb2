#include "Report/QuantileSketch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace controller {
namespace {

constexpr std::int64_t kCount = 100'000;

std::vector<double> values(const std::string& kind) {
  std::mt19937_64 generator(1);
  const auto uniform = [&generator] { return static_cast<double>(generator() >> 11) * 0x1p-53; };
  std::vector<double> result;
  for (std::int64_t at = 0; at < kCount; ++at) {
    const auto x = static_cast<double>(at);
    if (kind == "ascending") {
      result.push_back(x);
    } else if (kind == "descending") {
      result.push_back(-x);
    } else if (kind == "saw") {
      result.push_back(static_cast<double>(at % 1000) + x / 1e6);
    } else if (kind == "inwards") {
      result.push_back(at % 2 == 0 ? x : 1e6 - x);
    } else if (kind == "heavy tail") {
      result.push_back(std::pow(1.0 - uniform(), -2.0));
    } else {  // "half zeros"
      result.push_back(uniform() < 0.5 ? 0.0 : uniform());
    }
  }
  return result;
}

/// How far the rank of `value` among the sorted values is from `rank`.
double rankError(const std::vector<double>& sorted, double value, double rank) {
  const auto [first, last] = std::equal_range(sorted.begin(), sorted.end(), value);
  const auto least = static_cast<double>(first - sorted.begin()) + 1.0;
  const auto most = static_cast<double>(last - sorted.begin());
  return rank < least ? least - rank : rank > most ? rank - most : 0.0;
}

class QuantileSketchTest : public testing::TestWithParam<std::string> {};

TEST_P(QuantileSketchTest, RanksAreWithinTheError) {
  std::vector<double> all = values(GetParam());
  QuantileSketch sketch;
  for (const double value : all) {
    sketch.add(value);
  }
  ASSERT_EQ(sketch.count(), kCount);
  std::sort(all.begin(), all.end());
  const auto n = static_cast<double>(kCount);
  const double allowed = QuantileSketch::kError * n + 1.0;
  for (int step = 1; step < 200; ++step) {
    const double probability = step / 200.0;
    const double value = sketch.quantile(probability);
    EXPECT_LE(rankError(all, value, probability * n), allowed) << probability;
    const double below = static_cast<double>(std::lower_bound(all.begin(), all.end(), value) - all.begin());
    EXPECT_NEAR(static_cast<double>(sketch.countBelow(value)), below, allowed) << probability;
  }
  EXPECT_EQ(sketch.quantile(0.0), all.front());
  EXPECT_EQ(sketch.quantile(1.0), all.back());
}

TEST_P(QuantileSketchTest, CountsBelowNeverFall) {
  QuantileSketch sketch;
  for (const double value : values(GetParam())) {
    sketch.add(value);
  }
  const double from = sketch.quantile(0.0);
  const double to = sketch.quantile(1.0);
  std::int64_t before = sketch.countBelow(from);
  EXPECT_EQ(before, 0);
  for (int step = 1; step <= 1000; ++step) {
    const std::int64_t now = sketch.countBelow(from + (to - from) * step / 1000.0);
    EXPECT_GE(now, before);
    before = now;
  }
  EXPECT_EQ(sketch.countBelow(to + 1.0), kCount);
}

INSTANTIATE_TEST_SUITE_P(Orders, QuantileSketchTest,
                         testing::Values("ascending", "descending", "saw", "inwards", "heavy tail", "half zeros"),
                         [](const auto& param) {
                           std::string name = param.param;
                           std::erase(name, ' ');
                           return name;
                         });

TEST(QuantileSketchTest, ItsMemoryDoesNotGrowWithTheValues) {
  std::mt19937_64 generator(2);
  QuantileSketch sketch;
  std::size_t largest = 0;
  for (std::int64_t at = 0; at < 1'000'000; ++at) {
    sketch.add(static_cast<double>(generator() >> 11));
    if (at % 4096 == 4095) {
      largest = std::max(largest, sketch.size());
    }
  }
  EXPECT_LE(largest, 6000U);
  EXPECT_LE(sketch.size(), 6000U);
}

TEST(QuantileSketchTest, ValuesWithTimesAreThatManyValues) {
  QuantileSketch once;
  QuantileSketch many;
  for (int value = 0; value < 100; ++value) {
    many.add(value, 200);
    for (int time = 0; time < 200; ++time) {
      once.add(value);
    }
  }
  EXPECT_EQ(many.count(), 20'000);
  for (const double probability : {0.001, 0.25, 0.5, 0.999}) {
    EXPECT_EQ(many.quantile(probability), once.quantile(probability));
  }
}

}  // namespace
}  // namespace controller
