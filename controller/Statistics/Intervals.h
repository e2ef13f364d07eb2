#pragma once

#include <cstdint>

namespace controller {

/// Two-sided interval, equal-tailed.
struct Interval {
  double lower = 0.0;
  double upper = 0.0;
};

/// Student's interval for the expectation: mean -+ t s / sqrt(n). Exact for normal observations; for others the coverage
/// misses by a term of order 1/n, which grows with the skewness.
/// count >= 2, variance >= 0, 0 < confidence < 1. Student (W. S. Gosset), The probable error of a mean, Biometrika 6, 1908.
[[nodiscard]] Interval studentInterval(std::int64_t count, double mean, double variance, double confidence);

/// The skewness asks for a correction: it differs from 0 by more than normal observations would bring it to in 1 case of
/// 20. Its standard error among them is sqrt(6 n (n - 1) / ((n - 2) (n + 1) (n + 3))); false for n < 8, where a skewness
/// says little. R. A. Fisher, The moments of the distribution for normal samples of measures of departure from normality,
/// Proceedings of the Royal Society A 130, 1930; as a test: R. B. D'Agostino, Transformation to normality of the null
/// distribution of g1, Biometrika 57, 1970.
[[nodiscard]] bool isSkewed(std::int64_t count, double skewness) noexcept;

/// Student's interval, corrected for skewness: the studentized mean T is first transformed into
///     g(T) = T + c T^2 / 3 + c^2 T^3 / 27 + c / 6,   c = skewness / sqrt(n),
/// which is free of skewness up to order 1/n and grows with T, and the bounds are brought back by the inverse of g. The
/// longer side lies towards the longer tail, and both together are longer than Student's.
/// count >= 3, variance >= 0, 0 < confidence < 1. P. Hall, On the removal of skewness by transformation, Journal of the
/// Royal Statistical Society B 54(1), 1992, third transformation, with t in place of normal quantiles as for studentized
/// means in N. J. Johnson, Modified t tests and confidence intervals for asymmetrical populations, Journal of the
/// American Statistical Association 73, 1978.
[[nodiscard]] Interval skewnessCorrectedInterval(std::int64_t count, double mean, double variance, double skewness,
                                                 double confidence);

/// Interval for a probability, of which `successes` among `count` independent observations are known. It covers the
/// probability with at least the confidence, whatever that is: the bounds are quantiles of beta distributions.
/// 0 <= successes <= count, count >= 1, 0 < confidence < 1. C. J. Clopper and E. S. Pearson, The use of confidence or
/// fiducial limits illustrated in the case of the binomial, Biometrika 26, 1934.
[[nodiscard]] Interval clopperPearsonInterval(std::int64_t successes, std::int64_t count, double confidence);

}  // namespace controller
