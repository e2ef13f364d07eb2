#pragma once

#include <cstdint>

#include "Simulator/RandomNumberGenerator.h"

/// Knuth's floating-point lagged Fibonacci generator, X(j) = (X(j-100) + X(j-37)) mod 1.
/// Range    half-open, [0,1), in steps of 2^-52.
/// State    the recurrence and the cursor belong to the process, not to the object: there is one stream, and all
///          objects of the class take turns at it. A seeding does not move the cursor, so that a stream comes out from
///          its start only if no number was drawn before.
/// Seeds    a seed with its top bit set never returns from srnd. Of the others, 0x7ffffffe and 0x7fffffff wrap to a
///          negative start value and leave the unit interval.
/// Use      seed before the first draw; until then the variates are 0.0.
/// Source   D. E. Knuth, The Art of Computer Programming, volume 2, section 3.6, in the ninth printing (2002).
class LaggedFibonacci : public RandomNumberGenerator {
 public:
  double rnd() override;
  void srnd(std::uint32_t seed) override;

  /// What the next rnd gives, if it is of the object drawn from last and its block is not at its end: a guess, for what
  /// can be worked out ahead.
  static double likelyNext() { return likelyNext_; }

 private:
  double rndArr[100] = {};  // the block being consumed

  static double likelyNext_;
};

/// State of the recurrence: the 100 values that the next ones are made from; zero until started.
extern double ran_u[100];
/// Block of the buffered entry.
extern double ranf_arr_buf[1009];
/// What ranf_arr_ptr points at before the first block: a negative value, told apart from every variate.
extern double ranf_arr_sentinel;
/// Next value of the buffered entry's block; borrowed from the two above.
extern double* ranf_arr_ptr;

/// Fills the first `n` entries of `aa` with the next n values and advances ran_u. n >= 100.
void ranf_array(double aa[], int n);

/// Sets ran_u from `seed`. Differs from the published routine in that the seed keeps all its bits and that nothing is
/// drawn to warm up. Does not return for a negative seed.
void ranf_start(std::int32_t seed);

/// The published buffered entry: makes a new block and returns its first value; ranf_arr_ptr then points at the second,
/// and a negative mark behind the hundredth. LaggedFibonacci does not use it.
double ranf_arr_cycle();
