#include "Simulator/MersenneTwister.h"

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "gmock/gmock.h"
#include "gtest/gtest.h"

namespace {

/// The 32-bit output that a variate was made from; exact, as (output + 0.5) * 2^-32 has 33 bits.
std::uint32_t outputOf(double variate) {
  return static_cast<std::uint32_t>(std::ldexp(variate, 32) - 0.5);
}

TEST(MersenneTwisterTest, EverySeedGivesThePublishedStream) {
  for (const std::uint32_t seed : {0u, 1u, 5489u, 31415u, 18671867u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
    MersenneTwister generator;
    generator.srnd(seed);
    std::mt19937 published(seed);
    for (int draw = 0; draw < 5000; ++draw) {
      // (x + 1/2) / 2^32 = (2x + 1) / 2^33
      ASSERT_EQ(generator.rnd(), std::ldexp(2.0 * static_cast<double>(published()) + 1.0, -33))
          << "seed " << seed << " draw " << draw;
    }
  }
}

TEST(MersenneTwisterTest, TheTenThousandthOutputOfSeed5489IsThePublishedOne) {
  MersenneTwister generator;
  generator.srnd(5489);
  for (int draw = 1; draw < 10000; ++draw) {
    (void)generator.rnd();
  }
  EXPECT_EQ(outputOf(generator.rnd()), 4123659995u);
}

TEST(MersenneTwisterTest, WithoutASeedTheStreamIsThatOfTheDefaultSeed) {
  MersenneTwister unseeded;
  MersenneTwister seeded;
  seeded.srnd(18671867);
  for (int draw = 0; draw < 2000; ++draw) {
    ASSERT_EQ(unseeded.rnd(), seeded.rnd()) << "draw " << draw;
  }
}

class ObservedTwister : public MersenneTwister {
 public:
  std::vector<std::uint32_t> seeds;

  void srnd(std::uint32_t seed) override {
    seeds.push_back(seed);
    MersenneTwister::srnd(seed);
  }
};

TEST(MersenneTwisterTest, ItSeedsItselfOnceThroughTheVirtualOperation) {
  ObservedTwister generator;
  for (int draw = 0; draw < 2000; ++draw) {
    (void)generator.rnd();
  }
  EXPECT_THAT(generator.seeds, testing::ElementsAre(18671867u));
}

TEST(MersenneTwisterTest, ASeededGeneratorDoesNotSeedItself) {
  ObservedTwister generator;
  generator.srnd(7);
  (void)generator.rnd();
  EXPECT_THAT(generator.seeds, testing::ElementsAre(7u));
}

TEST(MersenneTwisterTest, ASeedingInMidStreamStartsTheStreamAfresh) {
  MersenneTwister generator;
  generator.srnd(1);
  for (int draw = 0; draw < 700; ++draw) {
    (void)generator.rnd();
  }
  generator.srnd(5489);
  std::mt19937 published(5489);
  for (int draw = 0; draw < 700; ++draw) {
    ASSERT_EQ(outputOf(generator.rnd()), published()) << "draw " << draw;
  }
}

// Each variate is an odd multiple of 2^-33, so that neither 0 nor 1 is among them.
TEST(MersenneTwisterTest, EveryVariateIsTheMiddleOfOneOf2To32Parts) {
  MersenneTwister generator;
  generator.srnd(2);
  for (int draw = 0; draw < 100000; ++draw) {
    const double multiple = std::ldexp(generator.rnd(), 33);
    ASSERT_EQ(std::fmod(multiple, 2.0), 1.0) << "draw " << draw;
    ASSERT_LT(multiple, std::ldexp(1.0, 33)) << "draw " << draw;
  }
}

}  // namespace
