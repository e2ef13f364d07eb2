#include "Simulator/Distributions.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

#include "Simulator/LaggedFibonacci.h"

namespace {

// Logarithms of constants stand here as literals, rounded to nearest: a compiler may fold log(4.5) to another last bit
// than the library's function returns, and two builds would then part.
constexpr double kLogOfFour = 1.3862943611198906;
constexpr double kTheta = 4.5;
constexpr double kLogOfTheta = 1.5040773967762742;
constexpr double kE = 2.718281828459045;

/// Throws `text` if a check has found `bad` to be true.
void refuseIf(bool bad, const char* text) {
  if (bad) [[unlikely]] {
    throw std::string(text);
  }
}

/// As refuseIf; `format` has one %d, for the phase.
void refusePhaseIf(bool bad, const char* format, int phase) {
  if (bad) [[unlikely]] {
    char text[100];
    std::snprintf(text, sizeof text, format, phase);
    throw std::string(text);
  }
}

/// True when truncation to a 32-bit int and back leaves `value` as it is; so false for a value that is not a number or
/// that no such int holds.
bool isWhole(double value) {
  return value >= std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::int32_t>::max() &&
         static_cast<std::int32_t>(value) == value;
}

/// Failures before a success, from the logarithm of one variate. Without a check: p == 0 divides by zero.
double failuresBeforeSuccess(double logarithm, double p) {
  return std::floor(logarithm / std::log(1 - p));
}

}  // namespace

LogarithmAhead Distributions::logarithms_;

Distributions::Distributions() : RNG(new LaggedFibonacci) {}

Distributions::~Distributions() {
  delete RNG;
}

void Distributions::refuseRate() {
  throw std::string("INVALID_DIST_PARAMS: rate is non-positive");
}

double Distributions::Deterministic(double value) {
  refuseIf(value <= 0, "INVALID_DIST_PARAMS: value is non-positive");
  return value;
}

double Distributions::Geometric(double p) {
  refuseIf(p <= 0 || p >= 1, "INVALID_DIST_PARAMS: p is not in the range (0,1)");
  return failuresBeforeSuccess(logarithmOfDraw(), p);
}

double Distributions::Weibull(double alpha, double beta) {
  refuseIf(beta <= 0, "INVALID_DIST_PARAMS: Beta is non-positive");
  refuseIf(alpha == 0, "INVALID_DIST_PARAMS: Alpha is zero");
  return beta * std::pow(-logarithmOfDraw(), 1 / alpha);
}

double Distributions::ConditionalWeibull(double alpha, double beta, double t) {
  refuseIf(beta <= 0, "INVALID_DIST_PARAMS: Beta is non-positive");
  refuseIf(alpha == 0, "INVALID_DIST_PARAMS: Alpha is zero");
  const double survival = std::exp(-std::pow(t / beta, alpha));
  return beta * std::pow(-std::log(RNG->rnd() * survival), 1 / alpha) - t;
}

void Distributions::drawPolarPair() {
  do {
    U1 = RNG->rnd();
    U2 = RNG->rnd();
    V1 = 2 * U1 - 1;
    V2 = 2 * U2 - 1;
    W = V1 * V1 + V2 * V2;
  } while (W > 1);
  Y = std::sqrt(-2 * std::log(W) / W);
}

double Distributions::Normal(double mean, double variance) {
  refuseIf(variance < 0, "INVALID_DIST_PARAMS: variance is negative");
  double value;
  do {
    drawPolarPair();
    value = std::sqrt(variance) * V1 * Y + mean;
  } while (value < 0);
  return value;
}

double Distributions::Lognormal(double mu, double alphasqrd) {
  refuseIf(alphasqrd < 0, "INVALID_DIST_PARAMS: Alpha_Squared is negative");
  drawPolarPair();
  return std::exp(std::sqrt(alphasqrd) * V1 * Y + mu);
}

double Distributions::Erlang(double m, double beta) {
  refuseIf(m <= 0, "INVALID_DIST_PARAMS: m is non-positive");
  refuseIf(!isWhole(m), "INVALID_DIST_PARAMS: m is non-integer");
  refuseIf(beta <= 0, "INVALID_DIST_PARAMS: Beta is non-positive");
  const auto stages = static_cast<std::int32_t>(m);
  double product = 1;
  for (std::int32_t i = 0; i < stages; ++i) {
    product *= RNG->rnd();
  }
  return -beta / m * std::log(product);
}

double Distributions::Triangular(double a, double b, double c) {
  refuseIf(a > b, "INVALID_DIST_PARAMS: A is larger than B");
  refuseIf(c < a || c > b, "INVALID_DIST_PARAMS: C is not in the range [A,B]");
  if (a == b) {
    return a;
  }
  const double mode = (c - a) / (b - a);
  U1 = RNG->rnd();
  X = mode >= U1 ? std::sqrt(U1 * mode) : 1 - std::sqrt((1 - U1) * (1 - mode));
  return a + (b - a) * X;
}

double Distributions::Gamma(double alpha, double beta) {
  refuseIf(beta <= 0, "INVALID_DIST_PARAMS: Beta is non-positive");
  refuseIf(alpha <= 0, "INVALID_DIST_PARAMS: Alpha is non-positive");
  if (alpha > 1) {
    return gammaAboveOne(alpha) * beta;
  }
  if (alpha < 1) {
    return gammaBelowOne(alpha) * beta;
  }
  if (alpha == 1) {
    return -logarithmOfDraw() * beta;
  }
  return alpha;  // not a number, and so is the sample
}

double Distributions::gammaAboveOne(double alpha) {
  a1 = std::pow(2 * alpha - 1, -0.5);
  b1 = alpha - kLogOfFour;
  q1 = alpha + 1 / a1;
  d1 = 1 + kLogOfTheta;
  do {
    U1 = RNG->rnd();
    U2 = RNG->rnd();
    V1 = a1 * std::log(U1 / (1 - U1));
    Y = alpha * std::exp(V1);
    Z = U1 * U1 * U2;
    W = b1 + q1 * V1 - Y;
  } while (!(d1 + W - kTheta * Z >= 0) && !(W >= std::log(Z)));
  return Y;
}

double Distributions::gammaBelowOne(double alpha) {
  b1 = (kE + alpha) / kE;
  do {
    U1 = RNG->rnd();
    P = b1 * U1;
    Y = 1 >= P ? std::pow(P, 1 / alpha) : -std::log((b1 - P) / alpha);
    U2 = RNG->rnd();
    // On purpose the power test for both pieces; a textbook tests the lower one against exp(-Y).
  } while (!(std::pow(Y, alpha - 1) >= U2));
  return Y;
}

double Distributions::Beta(double alpha1, double beta1) {
  const double first = Gamma(alpha1, 1.0);  // a local, as Gamma makes use of V1 itself
  V2 = Gamma(beta1, 1.0);
  V1 = first;
  return V1 / (V2 + V1);
}

double Distributions::Uniform(double lbound, double ubound) {
  refuseIf(lbound < 0, "INVALID_DIST_PARAMS: LowerBound is negative");
  refuseIf(lbound > ubound, "INVALID_DIST_PARAMS: LowerBound is larger than UpperBound");
  return RNG->rnd() * (ubound - lbound) + lbound;
}

double Distributions::Binomial(double t, double p) {
  refuseIf(p < 0 || p > 1, "INVALID_DIST_PARAMS: p is not in the range [0,l]");
  refuseIf(!isWhole(t), "INVALID_DIST_PARAMS: p is non-integer");
  const auto trials = static_cast<std::int32_t>(t);
  std::int32_t successes = 0;
  for (std::int32_t i = 0; i < trials; ++i) {
    if (p >= RNG->rnd()) {
      ++successes;
    }
  }
  return successes;
}

double Distributions::NegativeBinomial(double s, double p) {
  refuseIf(p < 0 || p >= 1, "INVALID_DIST_PARAMS: p is not in the range [0,l)");
  refuseIf(!isWhole(s), "INVALID_DIST_PARAMS: s is non-integer");
  const auto terms = static_cast<std::int32_t>(s);
  double sum = 0;
  for (std::int32_t i = 0; i < terms; ++i) {
    sum += failuresBeforeSuccess(logarithmOfDraw(), p);
  }
  return sum;
}

double Distributions::HyperExponential(int phases, double* params) {
  const auto rateOf = [params](int phase) { return params[2 * phase]; };
  const auto weightOf = [params](int phase) { return params[2 * phase + 1]; };

  refuseIf(phases <= 0, "INVALID_DIST_PARAMS: Phases is less than 1");
  const double prob = RNG->rnd();
  double sum_prob = 0;
  for (int i = 0; i < phases; ++i) {
    refusePhaseIf(weightOf(i) <= 0, "INVALID_DIST_PARAMS: p%d is non-positive", i);
    sum_prob += weightOf(i);
  }
  int phase = 0;
  double running_sum = weightOf(0);
  // A variate of 1, which the Tausworthe generator can give, and rounding of the running sum stay with the last phase.
  while (phase + 1 < phases && prob >= running_sum / sum_prob) {
    ++phase;
    running_sum += weightOf(phase);
  }
  refusePhaseIf(rateOf(phase) <= 0, "INVALID_DIST_PARAMS: Rate%d is non-positive", phase);
  return -logarithmOfDraw() / rateOf(phase);
}

double Distributions::HypoExponential(int phases, double* rates) {
  double sum = 0;
  for (int i = 0; i < phases; ++i) {
    sum += Exponential(rates[i]);
  }
  return sum;
}

double Distributions::Pareto(double xm, double k) {
  refuseIf(xm <= 0, "INVALID_DIST_PARAMS: LowerBound is non-positive");
  refuseIf(k <= 0, "INVALID_DIST_PARAMS: Shape is non-positive");
  return std::exp(std::log(xm) - logarithmOfDraw() / k);
}
