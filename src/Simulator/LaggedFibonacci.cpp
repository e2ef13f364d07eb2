#include "Simulator/LaggedFibonacci.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr int kLongLag = 100;
constexpr int kShortLag = 37;
constexpr int kQuality = 1009;         // length of the buffered entry's block
constexpr int kSeparatingPasses = 69;  // passes of the seeding once the seed's bits are spent
constexpr double kUlp = 0x1p-52;       // step of the values

/// (x + y) less its whole part, the latter truncated to a 32-bit int. A sum that no such int holds counts as -2^31,
/// which is what the processor's own conversion makes of it; only a seed whose start value wraps leads there.
inline double sumModuloOne(double x, double y) {
  constexpr double kOutOfRange = -2147483648.0;
  const double sum = x + y;
  const double truncatable = std::fabs(sum) < -kOutOfRange ? sum : kOutOfRange;
  return sum - static_cast<std::int32_t>(truncatable);
}

/// Whether the seed has put values of ran_u outside [0, 1), which none leaves that was in it.
bool startedOutsideUnitInterval = false;

/// `count` sums of `older` and `newer`, which may not overlap with `sums`.
template <typename Sum>
void addSpans(const double* __restrict older, const double* __restrict newer, double* __restrict sums, int count,
              Sum sum) {
  for (int j = 0; j < count; ++j) {
    sums[j] = sum(older[j], newer[j]);
  }
}

/// The next `n` values into `aa` and the state behind them, in pieces that are short enough not to need their own sums.
template <typename Sum>
void advance(double* aa, int n, Sum sum) {
  std::copy_n(ran_u, kLongLag, aa);
  for (int j = kLongLag; j < n; j += kShortLag) {
    addSpans(aa + j - kLongLag, aa + j - kShortLag, aa + j, std::min(kShortLag, n - j), sum);
  }
  // The values n to n + 99 replace the state; the first of them still reach back into the block for both terms.
  addSpans(aa + n - kLongLag, aa + n - kShortLag, ran_u, kShortLag, sum);
  for (int i = kShortLag; i < kLongLag; i += kShortLag) {
    addSpans(aa + n - kLongLag + i, ran_u + i - kShortLag, ran_u + i, std::min(kShortLag, kLongLag - i), sum);
  }
}

}  // namespace

double ran_u[kLongLag] = {};
double ranf_arr_buf[kQuality] = {};
double ranf_arr_sentinel = -1.0;
double* ranf_arr_ptr = &ranf_arr_sentinel;

void ranf_array(double aa[], int n) {
  if (!startedOutsideUnitInterval) [[likely]] {
    // No sum reaches 2, nor any other bound of an int.
    advance(aa, n, [](double x, double y) {
      const double sum = x + y;
      return sum - static_cast<std::int32_t>(sum);
    });
  } else {
    advance(aa, n, sumModuloOne);
  }
}

void ranf_start(std::int32_t seed) {
  double u[kLongLag + kLongLag - 1];

  // The start value is formed in 32 bits, so that it wraps for the two greatest seeds.
  const auto seedPlusTwo = static_cast<std::int32_t>(static_cast<std::uint32_t>(seed) + 2u);
  double ss = 2.0 * kUlp * seedPlusTwo;
  for (int j = 0; j < kLongLag; ++j) {
    u[j] = ss;
    ss += ss;
    if (ss >= 1.0) {  // cyclic shift of 51 bits
      ss -= 1.0 - 2 * kUlp;
    }
  }
  u[1] += kUlp;  // u[1], and it alone, is odd

  // On purpose: a negative seed is shifted to -1 and never to 0, and the routine does not return. The count is
  // volatile, as a compiler may otherwise take it for granted that the loop ends.
  volatile int passesLeft = kSeparatingPasses;
  for (std::int32_t s = seed; passesLeft != 0;) {
    for (int j = kLongLag - 1; j > 0; --j) {  // square
      u[j + j] = u[j];
      u[j + j - 1] = 0.0;
    }
    for (int j = kLongLag + kLongLag - 2; j >= kLongLag; --j) {  // reduce
      u[j - (kLongLag - kShortLag)] = sumModuloOne(u[j - (kLongLag - kShortLag)], u[j]);
      u[j - kLongLag] = sumModuloOne(u[j - kLongLag], u[j]);
    }
    if ((s & 1) != 0) {  // multiply by z
      for (int j = kLongLag; j > 0; --j) {
        u[j] = u[j - 1];
      }
      u[0] = u[kLongLag];
      u[kShortLag] = sumModuloOne(u[kShortLag], u[kLongLag]);
    }
    if (s != 0) {
      s >>= 1;
    } else {
      passesLeft = passesLeft - 1;
    }
  }

  for (int j = 0; j < kShortLag; ++j) {
    ran_u[j + kLongLag - kShortLag] = u[j];
  }
  for (int j = kShortLag; j < kLongLag; ++j) {
    ran_u[j - kShortLag] = u[j];
  }
  startedOutsideUnitInterval =
      !std::all_of(std::begin(ran_u), std::end(ran_u), [](double value) { return value >= 0.0 && value < 1.0; });
}

double LaggedFibonacci::likelyNext_ = 0.0;

double ranf_arr_cycle() {
  ranf_array(ranf_arr_buf, kQuality);
  ranf_arr_buf[kLongLag] = -1.0;
  ranf_arr_ptr = ranf_arr_buf + 1;
  return ranf_arr_buf[0];
}

void LaggedFibonacci::srnd(std::uint32_t seed) {
  ranf_start(static_cast<std::int32_t>(seed));
  // The first block is thrown away.
  ranf_array(rndArr, kLongLag);
  ranf_array(rndArr, kLongLag);
}

double LaggedFibonacci::rnd() {
  static int k = 0;  // on purpose one cursor for all objects, which outlives a seeding
  if (k == kLongLag) [[unlikely]] {
    k = 0;
    ranf_array(rndArr, kLongLag);
  }
  const double variate = rndArr[k++];
  likelyNext_ = rndArr[std::min(k, kLongLag - 1)];
  return variate;
}
