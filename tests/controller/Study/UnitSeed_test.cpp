#include "Study/UnitSeed.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <set>
#include <stdexcept>

namespace controller {
namespace {

TEST(UnitSeedTest, FnvHashHasItsPublishedValues) {
  // The authors' test vectors of FNV-1a, 64 bits.
  EXPECT_EQ(fnvHash(""), 0xcbf29ce484222325U);
  EXPECT_EQ(fnvHash("a"), 0xaf63dc4c8601ec8cU);
  EXPECT_EQ(fnvHash("foobar"), 0x85944171f73967e8U);
}

TEST(UnitSeedTest, SeedsAreThoseOfTheDescription) {
  // Worked out by the program tests/controller/Command/seeds.py, which was written from the description.
  EXPECT_EQ(unitSeed(1, "0", 0), 136600369U);
  EXPECT_EQ(unitSeed(1, "0", 1), 117251408U);
  EXPECT_EQ(unitSeed(1, "0", 999999), 106560835U);
  EXPECT_EQ(unitSeed(2, "0", 0), 877087397U);
  EXPECT_EQ(unitSeed(1, "1 nTrains=3", 0), 614139131U);
  EXPECT_EQ(unitSeed(18446744073709551615U, "0", 1073741820), 768043101U);
}

TEST(UnitSeedTest, NoTwoUnitsOfAnExperimentHaveTheSameSeed) {
  // A hash that may collide would be expected to have some nineteen pairs among so many.
  std::set<std::uint32_t> seeds;
  for (std::int64_t unit = 0; unit < 200'000; ++unit) {
    seeds.insert(unitSeed(7, "0 nTrains=2", unit));
  }
  EXPECT_EQ(seeds.size(), 200'000U);
  EXPECT_GE(*seeds.begin(), 1U);
  EXPECT_LE(*seeds.rbegin(), static_cast<std::uint32_t>(kGreatestSeed));
}

TEST(UnitSeedTest, SeedsOfNeighboursDifferInHalfOfTheirBits) {
  std::array<std::int64_t, 30> flips{};
  constexpr std::int64_t kUnits = 10'000;
  for (std::int64_t unit = 0; unit < kUnits; ++unit) {
    const std::uint32_t difference = unitSeed(1, "0", unit) ^ unitSeed(1, "0", unit + 1);
    for (std::size_t bit = 0; bit < flips.size(); ++bit) {
      flips[bit] += difference >> bit & 1U;
    }
  }
  // Each count is binomial with 10 000 trials of 1/2: five standard deviations are 250.
  for (const std::int64_t count : flips) {
    EXPECT_NEAR(static_cast<double>(count), kUnits / 2.0, 250.0);
  }
}

TEST(UnitSeedTest, TheGeneratorsAreFitForEverySeed) {
  // The lagged Fibonacci generator does not return from a seed with its top bit set, and distinguishes seeds up to 2^30 - 3;
  // a seed of 0 would stand for another one.
  EXPECT_LT(static_cast<std::uint64_t>(kGreatestSeed), std::uint64_t{1} << 31);
  EXPECT_EQ(kGreatestSeed, 1073741821);
}

TEST(UnitSeedTest, AUnitBeyondTheSeedsIsRefused) {
  EXPECT_THROW(static_cast<void>(unitSeed(1, "0", -1)), std::out_of_range);
  EXPECT_THROW(static_cast<void>(unitSeed(1, "0", kGreatestSeed)), std::out_of_range);
}

}  // namespace
}  // namespace controller
