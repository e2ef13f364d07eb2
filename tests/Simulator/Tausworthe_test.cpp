#include "Simulator/Tausworthe.h"

#include <array>
#include <bit>
#include <bitset>
#include <cmath>
#include <cstdint>
#include <random>

#include "gtest/gtest.h"

namespace {

constexpr double kStep = 1.0 / 2147483647;
constexpr std::size_t kBits = 31;
using State = std::bitset<kBits>;

/// The state after one draw from `seed`, read off the variate.
std::uint32_t stateAfter(std::uint32_t seed) {
  Tausworthe generator;
  generator.srnd(seed);
  return static_cast<std::uint32_t>(std::llround(generator.rnd() / kStep));
}

/// The recurrence bit by bit: each bit takes in the one 13 below, and then the one 18 above.
State nextState(const State& old) {
  State t;
  for (std::size_t i = 0; i < kBits; ++i) {
    t[i] = old[i] != (i >= 13 && old[i - 13]);
  }
  State next;
  for (std::size_t i = 0; i < kBits; ++i) {
    next[i] = t[i] != (i + 18 < kBits && t[i + 18]);
  }
  return next;
}

TEST(TauswortheTest, TheStepIsTheInverseOfTheGreatestState) {
  EXPECT_EQ(std::bit_cast<std::uint64_t>(kStep), 0x3E00000000200000u);
}

// State 1: t = 0x2000 xor 1 = 0x2001, which has nothing above bit 17, so the state is 0x2001 = 8193.
// Then t = 0x4002000 xor 0x2001 = 0x4000001, whose bits from 18 on are 0x100: state 0x4000101.
// Then t = 0x202000 xor 0x4000101 = 0x4202101 (the shift drops bits 32 and up), upper part 0x108: state 0x4202009.
TEST(TauswortheTest, Seed1GivesTheStatesWorkedByHand) {
  Tausworthe generator;
  generator.srnd(1);
  EXPECT_EQ(generator.rnd(), 8193 * kStep);
  EXPECT_EQ(generator.rnd(), 0x4000101 * kStep);
  EXPECT_EQ(generator.rnd(), 0x4202009 * kStep);
}

TEST(TauswortheTest, EverySeedFollowsTheRecurrence) {
  for (const std::uint32_t seed :
       {2u, 31415u, 31416u, 0x12345678u, 0x7fffffffu, 0x80000001u, 0xdeadbeefu, 0xffffffffu}) {
    Tausworthe generator;
    generator.srnd(seed);
    State state(seed & 0x7fffffffu);  // the top bit has no part in the first step either
    for (int draw = 0; draw < 1000; ++draw) {
      state = nextState(state);
      ASSERT_EQ(generator.rnd(), static_cast<double>(state.to_ulong()) * kStep) << "seed " << seed << " draw " << draw;
    }
  }
}

TEST(TauswortheTest, ASeedingStartsTheStreamAfresh) {
  Tausworthe generator;
  generator.srnd(31415);
  const double first = generator.rnd();
  (void)generator.rnd();
  generator.srnd(31415);
  EXPECT_EQ(generator.rnd(), first);
}

TEST(TauswortheTest, UntilItIsSeededItsStateIsZero) {
  EXPECT_EQ(Tausworthe().rnd(), 0.0);
}

TEST(TauswortheTest, TheStateZeroIsAbsorbing) {
  for (const std::uint32_t seed : {0u, 0x80000000u}) {
    Tausworthe generator;
    generator.srnd(seed);
    for (int draw = 0; draw < 1000; ++draw) {
      ASSERT_EQ(generator.rnd(), 0.0) << "seed " << seed << " draw " << draw;
    }
  }
}

// Backwards from the state of all ones: t has its upper 18 bits set and, each lower bit being inverted by the one 18
// above, none of the others. Bits 13 to 25 of the seed are then set and all others clear.
TEST(TauswortheTest, ExactlyOneOccurs) {
  Tausworthe generator;
  generator.srnd(0x03ffe000);
  EXPECT_EQ(generator.rnd(), 1.0);
}

// An even seed and its successor differ in bit 0, and their next states in the bits 0 and 13.
TEST(TauswortheTest, NeighbouringSeedsGiveNeighbouringFirstDraws) {
  for (const std::uint32_t seed : {2u, 1000u, 31416u, 0x7ffffffeu}) {
    Tausworthe one;
    Tausworthe other;
    one.srnd(seed);
    other.srnd(seed + 1);
    EXPECT_LE(std::fabs(one.rnd() - other.rnd()), 8193.5 * kStep) << "seed " << seed;
  }
}

/// A linear map of 31-bit states: the images of the single bits.
using Matrix = std::array<std::uint32_t, kBits>;

std::uint32_t image(const Matrix& map, std::uint32_t state) {
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < kBits; ++i) {
    sum ^= ((state >> i) & 1u) != 0 ? map[i] : 0u;
  }
  return sum;
}

Matrix squareOf(const Matrix& map) {
  Matrix square;
  for (std::size_t i = 0; i < kBits; ++i) {
    square[i] = image(map, map[i]);
  }
  return square;
}

// One draw is a linear map M of the bits. 31 squarings make M to the power 2^31. That it is M again means that the
// order of M divides 2^31 - 1, a prime, and so equals it, as M is not the identity. Every state but 0 then has that
// period.
TEST(TauswortheTest, ThePeriodOfTheNonZeroStatesIsMaximal) {
  Matrix step;
  for (std::size_t i = 0; i < kBits; ++i) {
    step[i] = stateAfter(1u << i);
  }
  std::mt19937 random(1);
  for (int i = 0; i < 1000; ++i) {
    const auto state = static_cast<std::uint32_t>(random() & 0x7fffffffu);
    ASSERT_EQ(image(step, state), stateAfter(state)) << "the step is not linear at state " << state;
  }
  Matrix power = step;
  for (int i = 0; i < 31; ++i) {
    power = squareOf(power);
  }
  EXPECT_EQ(power, step);
  EXPECT_NE(step[0], 1u);
}

}  // namespace
