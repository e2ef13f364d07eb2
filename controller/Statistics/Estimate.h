#pragma once

#include <cstdint>
#include <limits>

namespace controller {

/// How an interval was made; see Intervals.h for each with its source.
enum class EstimateMethod {
  StudentT,           ///< symmetric about the mean
  SkewnessCorrected,  ///< moved and stretched towards the longer tail, where the observations are skewed
  ClopperPearson,     ///< of a probability: all observations are 0 or 1
  Constant,           ///< no interval: too few observations, all of them equal, or one that is no finite number
};

/// Name of a method in words: "Student t", "skewness-corrected t", "Clopper-Pearson", "constant".
[[nodiscard]] const char* nameOf(EstimateMethod method) noexcept;

/// What a number of observations says of their expectation, at the confidence that it was asked for.
///
/// The interval need not be symmetric: halfWidth is its longer side, the greater of mean - lower and upper - mean.
/// Without observations all but the count is NaN. With one, or with a variance beyond the range of doubles, the interval
/// reaches from -infinity to infinity. When all are equal it is that value alone, but for 0/1 observations, of which
/// Clopper-Pearson knows better. When any observation is NaN or infinite, the mean, the interval, the variance and the
/// skewness are NaN.
struct Estimate {
  std::int64_t count = 0;
  double mean = std::numeric_limits<double>::quiet_NaN();
  double lower = std::numeric_limits<double>::quiet_NaN();
  double upper = std::numeric_limits<double>::quiet_NaN();
  double halfWidth = std::numeric_limits<double>::quiet_NaN();
  double variance = std::numeric_limits<double>::quiet_NaN();  ///< of one observation, divided by count - 1
  double skewness = std::numeric_limits<double>::quiet_NaN();  ///< 0 where it can't be told: all equal, or fewer than 3
  double minimum = std::numeric_limits<double>::quiet_NaN();
  double maximum = std::numeric_limits<double>::quiet_NaN();
  EstimateMethod method = EstimateMethod::Constant;
};

}  // namespace controller
