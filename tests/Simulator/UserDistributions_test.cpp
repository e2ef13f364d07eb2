#include "Simulator/UserDistributions.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "BaseClasses/DebugLines.h"
#include "Simulator/LaggedFibonacci.h"
#include "Simulator/MersenneTwister.h"
#include "Simulator/Tausworthe.h"
#include "gtest/gtest.h"
#include "support/AllocationCounter.h"
#include "support/FlushWatch.h"

namespace {

template <typename Generator>
bool holds(const Distributions& sampler) {
  return dynamic_cast<const Generator*>(sampler.RNG) != nullptr;
}

TEST(UserDistributionsTest, TheSamplerOfTheProcessIsTheGlobalOne) {
  EXPECT_EQ(TheDistribution, &TheGenerator);
  EXPECT_TRUE(holds<LaggedFibonacci>(TheGenerator));
}

TEST(UserDistributionsTest, BothDefaultConstructorsHoldALaggedFibonacciAndDoNotSeed) {
  const std::vector<double> state(std::begin(ran_u), std::end(ran_u));
  const Distributions base;
  const UserDistributions user;
  EXPECT_TRUE(holds<LaggedFibonacci>(base));
  EXPECT_TRUE(holds<LaggedFibonacci>(user));
  EXPECT_TRUE(std::equal(state.begin(), state.end(), ran_u));
}

TEST(UserDistributionsTest, Generator1IsATauswortheWithTheSeed) {
  UserDistributions sampler(1, 1);
  EXPECT_TRUE(holds<Tausworthe>(sampler));
  EXPECT_EQ(sampler.RNG->rnd(), 8193 * (1.0 / 2147483647));
}

TEST(UserDistributionsTest, ANegativeSeedKeepsItsBits) {
  // All ones: t = 0x1fff after the mask, and nothing of it reaches down.
  UserDistributions sampler(1, -1);
  EXPECT_EQ(sampler.RNG->rnd(), 8191 * (1.0 / 2147483647));
}

TEST(UserDistributionsTest, EveryOtherGeneratorIsALaggedFibonacciWithTheSeed) {
  double block[100];
  ranf_start(271828);
  ranf_array(block, 100);
  ranf_array(block, 100);
  const std::vector<double> seeded(std::begin(ran_u), std::end(ran_u));
  for (const int generator : {0, 2, 3, -1, std::numeric_limits<int>::max()}) {
    std::fill(std::begin(ran_u), std::end(ran_u), 0.0);
    const UserDistributions sampler(generator, 271828);
    EXPECT_TRUE(holds<LaggedFibonacci>(sampler)) << "generator " << generator;
    EXPECT_FALSE(holds<MersenneTwister>(sampler)) << "generator " << generator;
    EXPECT_TRUE(std::equal(seeded.begin(), seeded.end(), ran_u)) << "generator " << generator;
  }
}

TEST(UserDistributionsTest, TheGeneratorIsDeletedWithItsSamplerAndMayBeSwapped) {
  class Mortal : public RandomNumberGenerator {
   public:
    explicit Mortal(int& deaths) : deaths_(deaths) {}
    ~Mortal() override { ++deaths_; }

   private:
    int& deaths_;
  };
  int deaths = 0;
  {
    UserDistributions sampler;
    delete sampler.RNG;
    sampler.RNG = new Mortal(deaths);
    EXPECT_EQ(deaths, 0);
  }
  EXPECT_EQ(deaths, 1);
  {
    Distributions sampler;
    delete sampler.RNG;
    sampler.RNG = nullptr;  // nothing to delete
  }
}

TEST(UserDistributionsTest, TheGeneratorOfTheBaseIsGivenBackWhenAnotherTakesItsPlace) {
  const auto makeAll = [] {
    const UserDistributions plain;
    const UserDistributions lagged(0, 1);
    const UserDistributions tausworthe(1, 1);
  };
  EXPECT_EQ(support::leftBehindBy(makeAll), 0U);
}

/// What making a sampler writes to standard output at a debug level.
template <typename... Arguments>
std::string linesAtLevel(int level, Arguments... arguments) {
  GlobalDebugLevel = level;
  testing::internal::CaptureStdout();
  { const UserDistributions sampler(arguments...); }
  GlobalDebugLevel = 0;
  return testing::internal::GetCapturedStdout();
}

TEST(UserDistributionsTest, DebugLinesNameTheGeneratorAtEveryLevelButZero) {
  EXPECT_EQ(linesAtLevel(1, 0, 1), "** Creating Lagged Fibonacci Random Number Generator\n");
  EXPECT_EQ(linesAtLevel(3, 1, 1), "** Creating Tausworthe Random Number Generator\n");
  EXPECT_EQ(linesAtLevel(-1, 2, 1), "** Creating Lagged Fibonacci Random Number Generator (by default)\n");
  EXPECT_EQ(linesAtLevel(0, 0, 1), "");
  EXPECT_EQ(linesAtLevel(3), "");
  EXPECT_TRUE(support::isFlushedAtTheEnd(std::cout, [] {
    GlobalDebugLevel = 1;
    const UserDistributions sampler(1, 1);
    GlobalDebugLevel = 0;
  }));
}

TEST(UserDistributionsTest, AboveLevel3TheConstructorsTellTheirEntryFirst) {
  EXPECT_EQ(linesAtLevel(4, 1, 1),
            "** Entering UserDistributions(int, long)\n"
            "** Creating Tausworthe Random Number Generator\n");
  EXPECT_EQ(linesAtLevel(4), "** Entering UserDistributions::UserDistributions()\n");
}

}  // namespace
