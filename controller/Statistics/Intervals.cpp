#include "Statistics/Intervals.h"

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <cassert>
#include <cmath>

namespace controller {

namespace {

/// t with a chance of (1 - confidence) / 2 above it.
double studentQuantile(std::int64_t count, double confidence) {
  const boost::math::students_t law(static_cast<double>(count - 1));
  return boost::math::quantile(boost::math::complement(law, (1.0 - confidence) / 2.0));
}

}  // namespace

Interval studentInterval(std::int64_t count, double mean, double variance, double confidence) {
  assert(count >= 2);
  const double reach = studentQuantile(count, confidence) * std::sqrt(variance / static_cast<double>(count));
  return {mean - reach, mean + reach};
}

bool isSkewed(std::int64_t count, double skewness) noexcept {
  constexpr double kNormalQuantile = 1.9599639845400545;  // of 0.975
  if (count < 8) {
    return false;
  }
  const auto n = static_cast<double>(count);
  const double error = std::sqrt(6.0 * n * (n - 1.0) / ((n - 2.0) * (n + 1.0) * (n + 3.0)));
  return std::fabs(skewness) > kNormalQuantile * error;
}

Interval skewnessCorrectedInterval(std::int64_t count, double mean, double variance, double skewness,
                                   double confidence) {
  assert(count >= 3);
  const double t = studentQuantile(count, confidence);
  const double c = skewness / std::sqrt(static_cast<double>(count));
  if (std::fabs(c) < 1e-12) {  // the inverse is 0 / 0 at 0, and this near to it Student's up to the last bits
    return studentInterval(count, mean, variance, confidence);
  }
  const auto inverse = [c](double x) { return 3.0 / c * (std::cbrt(1.0 + c * (x - c / 6.0)) - 1.0); };
  const double error = std::sqrt(variance / static_cast<double>(count));
  return {mean - inverse(t) * error, mean - inverse(-t) * error};
}

Interval clopperPearsonInterval(std::int64_t successes, std::int64_t count, double confidence) {
  assert(count >= 1 && successes >= 0 && successes <= count);
  const double tail = (1.0 - confidence) / 2.0;
  const auto hits = static_cast<double>(successes);
  const auto misses = static_cast<double>(count - successes);
  Interval interval{0.0, 1.0};
  if (successes > 0) {
    interval.lower = boost::math::quantile(boost::math::beta_distribution<>(hits, misses + 1.0), tail);
  }
  if (successes < count) {
    const boost::math::beta_distribution<> law(hits + 1.0, misses);
    interval.upper = boost::math::quantile(boost::math::complement(law, tail));
  }
  return interval;
}

}  // namespace controller
