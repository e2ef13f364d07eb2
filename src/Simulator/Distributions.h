#pragma once

#include "Simulator/LaggedFibonacci.h"
#include "Simulator/LogarithmAhead.h"
#include "Simulator/RandomNumberGenerator.h"

/// Samples of the distributions that a firing delay may follow, made from the uniform variates of one generator.
///
/// Draws    an operation draws from RNG alone, and as often as told with it.
/// Checks   parameters are checked first and in the order told; the first bad one throws a std::string that begins with
///          "INVALID_DIST_PARAMS:", before anything is drawn or written. Exceptions: HyperExponential draws before it
///          looks at the weights, and Beta and HypoExponential meet the checks of each of their parts in turn. A
///          parameter that is not a number passes each check but that for a whole number.
/// Range    no operation guards against a variate of exactly 0 or 1: Exponential of 0 is infinite. Nor does the polar
///          method guard against the centre of its circle, which gives no number.
/// Units    delays are in the model's unit of time, rates in its inverse.
/// Cost     allocates nothing, but for the text of a throw.
class Distributions {
 public:
  RandomNumberGenerator* RNG = nullptr;  // owned; may be swapped by who deletes the old one
  // Scratch: the intermediate values of the last sample.
  double U1 = 0, U2 = 0, V1 = 0, V2 = 0, P = 0, W = 0, X = 0, Y = 0, Z = 0, a1 = 0, b1 = 0, d1 = 0, q1 = 0;

  /// Holds a LaggedFibonacci, not seeded.
  Distributions();
  ~Distributions();
  Distributions(const Distributions&) = delete;
  Distributions& operator=(const Distributions&) = delete;

  /// Mean 1 / rate. One draw.
  double Exponential(double rate) {
    if (rate <= 0) [[unlikely]] {
      refuseRate();
    }
    return -logarithmOfDraw() / rate;
  }
  /// `value` itself. No draw.
  double Deterministic(double value);
  /// Number of failures before the first success, each trial succeeding with probability p. One draw.
  double Geometric(double p);
  /// Shape alpha, scale beta. One draw.
  double Weibull(double alpha, double beta);
  /// Remaining life of a Weibull life that has lasted `t`. One draw.
  double ConditionalWeibull(double alpha, double beta, double t);
  /// Truncated at 0 by drawing again, so never negative. Two draws for each try.
  /// Source: polar method, G. Marsaglia and T. A. Bray, SIAM Review 6(3), 1964.
  double Normal(double mean, double variance);
  /// exp of a normal with mean mu and variance alphasqrd. Two draws for each try.
  double Lognormal(double mu, double alphasqrd);
  /// Sum of m exponentials, m whole; beta is the mean of the whole. m draws.
  double Erlang(double m, double beta);
  /// On [a,b] with mode c. One draw, or none when a == b.
  double Triangular(double a, double b, double c);
  /// Shape alpha, scale beta. alpha > 1: two draws for each try, R. C. H. Cheng, Applied Statistics 26(1), 1977.
  /// alpha == 1: one draw. alpha < 1: two draws for each try, by a power and an exponential piece with one acceptance
  /// test for both, so that the law below 1 is not the gamma law: its density is proportional to y^(alpha-1) up to 1
  /// and to y^(alpha-1) e^-y above, y in units of beta.
  double Gamma(double alpha, double beta);
  /// On [0,1]; the quotient of one Gamma sample and the sum of two, whose law for a shape below 1 it inherits.
  double Beta(double alpha1, double beta1);
  /// One draw.
  double Uniform(double lbound, double ubound);
  /// Successes among t trials, t whole. t draws.
  double Binomial(double t, double p);
  /// Failures before the s-th success, s whole. s draws.
  double NegativeBinomial(double s, double p);
  /// `params` holds rate and weight of each phase in turn; the weights are normalised by their sum. Two draws. The
  /// first comes before the weights are checked, and only the chosen phase's rate is checked. A first
  /// variate of exactly 1 takes the last phase.
  double HyperExponential(int phases, double* params);
  /// Sum of one Exponential for each of the rates; 0.0 for no phases.
  double HypoExponential(int phases, double* rates);
  /// Least value xm, shape k. One draw.
  double Pareto(double xm, double k);

 private:
  /// The natural logarithm of a variate. One draw.
  double logarithmOfDraw() {
    const double variate = RNG->rnd();
    return logarithms_(variate, LaggedFibonacci::likelyNext());
  }
  [[noreturn]] static void refuseRate();
  /// U1, U2, V1, V2 and W of a point in the unit circle, and Y, the factor that makes V1 a standard normal variate.
  void drawPolarPair();
  double gammaAboveOne(double alpha);
  double gammaBelowOne(double alpha);

  static LogarithmAhead logarithms_;
};
