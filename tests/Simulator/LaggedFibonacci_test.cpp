#include "Simulator/LaggedFibonacci.h"

#include <sys/time.h>

#include <algorithm>
#include <bit>
#include <bitset>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <utility>
#include <vector>

#include "gmock/gmock.h"
#include "gtest/gtest.h"

namespace {

constexpr std::size_t kLongLag = 100;
constexpr std::size_t kShortLag = 37;

// ---- The same stream in whole numbers: a variate is X / 2^52, and the recurrence is one of integers modulo 2^52. ----

constexpr std::uint64_t kModulus = std::uint64_t{1} << 52;

double variateOf(std::uint64_t x) {
  return std::ldexp(static_cast<double>(x), -52);
}

/// Coefficients of a polynomial in z, lowest power first.
using Polynomial = std::vector<std::uint64_t>;

/// Remainder of `p` by z^100 - z^37 - 1, coefficients modulo 2^52: long division from the highest power down.
Polynomial remainder(Polynomial p) {
  while (p.size() > kLongLag) {
    const std::uint64_t leading = p.back();
    p.pop_back();
    const std::size_t shift = p.size() - kLongLag;  // leading * z^shift times the divisor is taken off
    for (const std::size_t power : {shift, shift + kShortLag}) {
      p[power] = (p[power] + leading) % kModulus;
    }
  }
  return p;
}

/// z^bit * p(z^2), reduced.
Polynomial substitutedSquare(const Polynomial& p, unsigned bit) {
  Polynomial result(2 * p.size() - 1 + bit, 0);
  for (std::size_t i = 0; i < p.size(); ++i) {
    result[2 * i + bit] = p[i];
  }
  return remainder(std::move(result));
}

/// Bits of `seed`, lowest first, and the 69 zeros behind them.
std::vector<unsigned> passesOf(std::uint32_t seed) {
  std::vector<unsigned> bits;
  for (; seed != 0; seed /= 2) {
    bits.push_back(seed % 2);
  }
  bits.insert(bits.end(), 69, 0u);
  return bits;
}

/// The first `n` values X(0), X(1), ... from `seed`.
std::vector<std::uint64_t> stream(std::uint32_t seed, std::size_t n) {
  Polynomial p{2 * (std::uint64_t{seed} + 2)};
  while (p.size() < kLongLag) {
    const std::uint64_t last = p.back();
    // A rotation to the left of the 51 bits above bit 0.
    p.push_back((last * 2) % kModulus + 2 * (last / (kModulus / 2)));
  }
  p[1] += 1;
  for (const unsigned bit : passesOf(seed)) {
    p = substitutedSquare(p, bit);
  }
  std::vector<std::uint64_t> x(p.begin() + kShortLag, p.end());
  x.insert(x.end(), p.begin(), p.begin() + kShortLag);
  while (x.size() < n) {
    x.push_back((x[x.size() - kLongLag] + x[x.size() - kShortLag]) % kModulus);
  }
  return x;
}

std::vector<double> variates(std::uint32_t seed, std::size_t n) {
  std::vector<double> result;
  for (const std::uint64_t x : stream(seed, n)) {
    result.push_back(variateOf(x));
  }
  result.resize(n);
  return result;
}

/// Seeds from 0 to the last one before the sum with 2 wraps, below and above the 30 bits of the published routine.
constexpr std::uint32_t kSeeds[] = {0, 1, 2, 31415, 310952, 0x2aaaaaaa, 0x3fffffff, 0x40000000, 0x40000001, 0x7ffffffd};

// ---- The cursor: one for all objects of the process. ----

/// Seeds `generator` and draws up to the first variate of a new block, which leaves the cursor at 1 in every process.
void alignCursor(LaggedFibonacci& generator) {
  generator.srnd(31415);
  std::vector<double> before(std::begin(ran_u), std::end(ran_u));
  do {
    (void)generator.rnd();
  } while (std::equal(before.begin(), before.end(), ran_u));
}

constexpr std::size_t kAligned = 1;

TEST(RanfStartTest, EverySeedGivesTheStateFoundInWholeNumbers) {
  for (const std::uint32_t seed : kSeeds) {
    ranf_start(static_cast<std::int32_t>(seed));
    EXPECT_THAT(ran_u, testing::ElementsAreArray(variates(seed, kLongLag))) << "seed " << seed;
  }
}

/// Product of two polynomials over two elements, modulo z^100 + z^37 + 1.
std::bitset<kLongLag> product(const std::bitset<kLongLag>& a, std::bitset<kLongLag> b) {
  std::bitset<kLongLag> sum;
  for (std::size_t i = 0; i < kLongLag; ++i) {
    if (a[i]) {
      sum ^= b;
    }
    const bool carry = b[kLongLag - 1];
    b <<= 1;
    b[0] = b[0] != carry;
    b[kShortLag] = b[kShortLag] != carry;
  }
  return sum;
}

// The lowest bits start as the polynomial z. Each pass squares and, for a bit 1, multiplies by z; so n bits of the seed
// and 69 zeros make it z^E with E = (2^n + the seed's n bits in reverse order) * 2^69. Here the power is computed from
// E's bits by multiplications.
TEST(RanfStartTest, TheLowestBitsAreAPowerOfZThatTheSeedTells) {
  for (const std::uint32_t seed : kSeeds) {
    const int n = static_cast<int>(std::bit_width(seed));
    std::uint64_t leading = 1;
    for (int i = 0; i < n; ++i) {
      leading = 2 * leading + ((seed >> i) & 1u);
    }
    std::bitset<kLongLag> base(2);  // z
    for (int i = 0; i < 69; ++i) {
      base = product(base, base);
    }
    std::bitset<kLongLag> power(1);
    for (; leading != 0; leading /= 2) {
      if (leading % 2 == 1) {
        power = product(power, base);
      }
      base = product(base, base);
    }
    ranf_start(static_cast<std::int32_t>(seed));
    for (std::size_t i = 0; i < kLongLag; ++i) {
      const double value = ran_u[(i + kLongLag - kShortLag) % kLongLag];
      ASSERT_EQ(std::fmod(std::ldexp(value, 52), 2.0), power[i] ? 1.0 : 0.0) << "seed " << seed << " power " << i;
    }
  }
}

TEST(RanfStartTest, TheBufferedEntrysPointerIsNotTouched) {
  double elsewhere = 0.5;
  ranf_arr_ptr = &elsewhere;
  ranf_start(31415);
  EXPECT_EQ(ranf_arr_ptr, &elsewhere);
  ranf_arr_ptr = &ranf_arr_sentinel;
}

// 2^31 - 2 and 2^31 - 1, plus 2, wrap to negative start values.
TEST(RanfStartTest, TheTwoGreatestSeedsWrapAndLeaveTheUnitInterval) {
  for (const std::uint32_t seed : {0x7ffffffeu, 0x7fffffffu}) {
    ranf_start(static_cast<std::int32_t>(seed));
    EXPECT_LT(*std::min_element(std::begin(ran_u), std::end(ran_u)), 0.0) << "seed " << seed;
  }
}

// Each value is worked out one by one: the sum of two earlier ones, less its whole part as a 32-bit int. Sums that no such
// int holds, with which this stream begins, have -2^31 for it, as a conversion on the processor gives.
TEST(RanfArrayTest, AStreamOutsideTheUnitIntervalFollowsTheSameRecurrence) {
  ranf_start(0x7fffffff);
  std::vector<double> stream(std::begin(ran_u), std::end(ran_u));
  for (std::size_t j = kLongLag; j < 3 * kLongLag; ++j) {
    const double sum = stream[j - kLongLag] + stream[j - kShortLag];
    stream.push_back(sum - (std::abs(sum) < 2147483648.0 ? std::trunc(sum) : -2147483648.0));
  }
  std::vector<double> block(2 * kLongLag);
  ranf_array(block.data(), static_cast<int>(block.size()));
  EXPECT_TRUE(std::equal(block.begin(), block.end(), stream.begin()));
  EXPECT_TRUE(std::equal(std::begin(ran_u), std::end(ran_u), stream.begin() + 2 * kLongLag));
  ranf_start(31415);
}

/// Lets the process be killed after `milliseconds` of its own CPU time.
void limitCpuTime(int milliseconds) {
  const itimerval limit = {{0, 0}, {milliseconds / 1000, milliseconds % 1000 * 1000}};
  setitimer(ITIMER_VIRTUAL, &limit, nullptr);
}

TEST(RanfStartDeathTest, ASeedWithItsTopBitSetNeverReturns) {
  for (const std::uint32_t seed : {0x80000000u, 0x80000001u, 0xffffffffu}) {
    EXPECT_EXIT(
        {
          limitCpuTime(700);
          ranf_start(static_cast<std::int32_t>(seed));
          std::exit(0);
        },
        testing::KilledBySignal(SIGVTALRM), "")
        << "seed " << seed;
  }
}

TEST(RanfStartDeathTest, ASeedingWithTheTopBitSetNeverReturns) {
  EXPECT_EXIT(
      {
        limitCpuTime(700);
        LaggedFibonacci generator;
        generator.srnd(0x80000000u);
        std::exit(0);
      },
      testing::KilledBySignal(SIGVTALRM), "");
}

TEST(RanfArrayTest, BlocksOfAnyLengthContinueOneStream) {
  constexpr std::uint32_t kSeed = 31415;
  const std::vector<double> expected = variates(kSeed, 1545);
  ranf_start(kSeed);
  std::vector<double> drawn;
  for (const int length : {100, 101, 136, 199, 1009}) {
    std::vector<double> block(static_cast<std::size_t>(length));
    ranf_array(block.data(), length);
    drawn.insert(drawn.end(), block.begin(), block.end());
  }
  EXPECT_EQ(drawn, expected);
}

/// The published routine's start: the one here and then ten blocks of 199 values to warm up. For a seed below 2^30 its
/// mask changes nothing.
void startAsPublished(std::int32_t seed) {
  ranf_start(seed);
  double block[199];
  for (int i = 0; i < 10; ++i) {
    ranf_array(block, 199);
  }
}

// Knuth's check of an installation: both ways of drawing end at the same value.
TEST(RanfArrayTest, KnuthsCheckValueComesOut) {
  std::vector<double> block(2009);
  startAsPublished(310952);
  for (int m = 0; m <= 2009; ++m) {
    ranf_array(block.data(), 1009);
  }
  EXPECT_EQ(block[0], 0.36410514377569680455);

  startAsPublished(310952);
  for (int m = 0; m <= 1009; ++m) {
    ranf_array(block.data(), 2009);
  }
  EXPECT_EQ(block[0], 0.36410514377569680455);
}

TEST(RanfArrCycleTest, BeforeTheFirstBlockThePointerShowsTheSentinel) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(ranf_arr_ptr == &ranf_arr_sentinel && *ranf_arr_ptr == -1.0 && ran_u[0] == 0.0 ? 0 : 1),
              testing::ExitedWithCode(0), "");
}

TEST(RanfArrCycleTest, ABlockIsBufferedWithAMarkBehindTheHundredthValue) {
  constexpr std::uint32_t kSeed = 31415;
  std::vector<double> expected = variates(kSeed, 2018);
  ranf_start(kSeed);
  for (std::size_t first : {std::size_t{0}, std::size_t{1009}}) {
    EXPECT_EQ(ranf_arr_cycle(), expected[first]);
    EXPECT_EQ(ranf_arr_ptr, ranf_arr_buf + 1);
    expected[first + 100] = -1.0;
    EXPECT_TRUE(std::equal(std::begin(ranf_arr_buf), std::end(ranf_arr_buf),
                           expected.begin() + static_cast<std::ptrdiff_t>(first)));
  }
}

TEST(LaggedFibonacciTest, TheFirstHundredValuesAreThrownAwayAndAllOthersUsed) {
  for (const std::uint32_t seed : kSeeds) {
    LaggedFibonacci generator;
    alignCursor(generator);
    generator.srnd(seed);
    const std::vector<double> expected = variates(seed, kLongLag + 1000);
    for (std::size_t i = kLongLag + kAligned; i < expected.size(); ++i) {
      ASSERT_EQ(generator.rnd(), expected[i]) << "seed " << seed << " value " << i;
    }
  }
}

/// In a process that has not drawn yet: the stream comes out from its start, and the 101st draw is the first to refill.
bool firstStreamOfAProcessStartsAtItsFirstValue() {
  constexpr std::uint32_t kSeed = 31415;
  const std::vector<double> expected = variates(kSeed, kLongLag + 101);
  LaggedFibonacci generator;
  generator.srnd(kSeed);
  const std::vector<double> stateOfFirstBlock(std::begin(ran_u), std::end(ran_u));
  const auto refilled = [&] { return !std::equal(stateOfFirstBlock.begin(), stateOfFirstBlock.end(), ran_u); };
  for (std::size_t i = 0; i < 100; ++i) {
    if (generator.rnd() != expected[kLongLag + i]) {
      return false;
    }
  }
  return !refilled() && generator.rnd() == expected[kLongLag + 100] && refilled();
}

TEST(LaggedFibonacciTest, TheFirstStreamOfAProcessStartsAtItsFirstValueAndRefillsAtThe101st) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(firstStreamOfAProcessStartsAtItsFirstValue() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(LaggedFibonacciTest, ASeedingLeavesTheCursorWhereItWas) {
  const std::vector<double> expected = variates(1, 200);
  LaggedFibonacci generator;
  alignCursor(generator);
  for (int draw = 0; draw < 6; ++draw) {
    (void)generator.rnd();
  }
  generator.srnd(1);
  EXPECT_EQ(generator.rnd(), expected[kLongLag + kAligned + 6]);
  generator.srnd(1);
  EXPECT_EQ(generator.rnd(), expected[kLongLag + kAligned + 7]);
}

TEST(LaggedFibonacciTest, AllObjectsTakeTurnsAtOneStream) {
  const std::vector<double> expected = variates(2, 400);
  LaggedFibonacci one;
  LaggedFibonacci other;
  alignCursor(one);
  one.srnd(2);
  other.srnd(2);
  EXPECT_EQ(one.rnd(), expected[kLongLag + kAligned]);
  EXPECT_EQ(other.rnd(), expected[kLongLag + kAligned + 1]);
  EXPECT_EQ(one.rnd(), expected[kLongLag + kAligned + 2]);
  for (int draw = 4; draw <= 99; ++draw) {
    (void)one.rnd();
  }
  EXPECT_EQ(other.rnd(), expected[2 * kLongLag]);  // the refill goes to who asks
  EXPECT_EQ(one.rnd(), expected[kLongLag + 1]);    // the other block is still the old one
}

TEST(LaggedFibonacciTest, TheLikelyNextVariateIsTheNextButBehindTheLastOfABlock) {
  LaggedFibonacci generator;
  alignCursor(generator);
  generator.srnd(3);
  const std::vector<double> expected = variates(3, 3 * kLongLag);
  for (std::size_t i = kLongLag + kAligned; i + 1 < expected.size(); ++i) {
    ASSERT_EQ(generator.rnd(), expected[i]);
    const bool isLastOfBlock = i % kLongLag == kLongLag - 1;
    EXPECT_EQ(LaggedFibonacci::likelyNext(), expected[isLastOfBlock ? i : i + 1]) << "value " << i;
  }
}

TEST(LaggedFibonacciTest, WithoutASeedTheVariatesAreZero) {
  LaggedFibonacci seeded;
  alignCursor(seeded);
  LaggedFibonacci unseeded;
  EXPECT_EQ(unseeded.rnd(), 0.0);
}

TEST(LaggedFibonacciTest, VariatesStayInTheHalfOpenUnitInterval) {
  LaggedFibonacci generator;
  generator.srnd(31415);
  for (int draw = 0; draw < 100000; ++draw) {
    const double variate = generator.rnd();
    ASSERT_GE(variate, 0.0) << "draw " << draw;
    ASSERT_LT(variate, 1.0) << "draw " << draw;
  }
}

}  // namespace
