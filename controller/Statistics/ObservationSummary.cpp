#include "Statistics/ObservationSummary.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>

#include "Statistics/Intervals.h"

namespace controller {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Sums of squares and cubes about the mean, from those about another point; n >= 1.
struct CentralSums {
  double squares;
  double cubes;
};

CentralSums centralSums(double n, DoubleDouble sum, DoubleDouble squares, DoubleDouble cubes) noexcept {
  const DoubleDouble mean = sum / n;
  const DoubleDouble squaresAboutMean = squares + -(mean * sum);
  // sum (d - m)^3 = sum d^3 - 3 m sum d^2 + 2 m^2 sum d
  const DoubleDouble twice = mean * (mean * sum) * DoubleDouble{2.0, 0.0};
  const DoubleDouble cubesAboutMean = cubes + -(mean * squares * DoubleDouble{3.0, 0.0}) + twice;
  return {squaresAboutMean.value(), cubesAboutMean.value()};
}

/// Adjusted Fisher-Pearson coefficient, which is less biased than the plain one; 0 where it can't be told.
/// D. N. Joanes and C. A. Gill, Comparing measures of sample skewness and kurtosis, The Statistician 47, 1998.
double skewnessOf(double n, CentralSums sums) noexcept {
  if (n < 3.0 || !(sums.squares > 0.0)) {
    return 0.0;
  }
  const double deviation = std::sqrt(sums.squares / n);
  const double plain = sums.cubes / n / deviation / deviation / deviation;
  return std::isfinite(plain) ? plain * std::sqrt(n * (n - 1.0)) / (n - 2.0) : 0.0;
}

}  // namespace

void ObservationSummary::add(std::span<const double> observations) noexcept {
  if (!observations.empty()) {
    addOne(observations.front());
    observations = observations.subspan(1);
  }
  if (isBinary_ && addBinary(observations)) {
    return;
  }
  for (const double observation : observations) {
    addOne(observation);
  }
}

bool ObservationSummary::addBinary(std::span<const double> observations) noexcept {
  bool areBinary = true;
  std::int64_t ones = 0;
  for (const double observation : observations) {
    const bool isOne = observation == 1.0;
    areBinary = areBinary & (isOne | (std::bit_cast<std::uint64_t>(observation) == 0));  // not for -0.0
    ones += isOne ? 1 : 0;
  }
  if (!areBinary) {
    return false;
  }
  const auto size = static_cast<std::int64_t>(observations.size());
  const bool startedAtZero = first_ == 0.0;
  const std::int64_t others = startedAtZero ? ones : size - ones;
  count_ += size;
  if (others > 0) {
    minimum_ = std::min(minimum_, 0.0);
    maximum_ = 1.0;
    // All sums so far are whole numbers, and hold these exactly.
    const DoubleDouble apart{static_cast<double>(others), 0.0};
    sum_ = sum_ + (startedAtZero ? apart : -apart);
    squares_ = squares_ + apart;
    cubes_ = cubes_ + (startedAtZero ? apart : -apart);
  }
  return true;
}

void ObservationSummary::addOne(double observation) noexcept {
  if (!std::isfinite(observation)) {
    firstNotFinite_ = firstNotFinite_ < 0 ? count_ : firstNotFinite_;
    isBinary_ = false;
    ++count_;
    return;
  }
  if (minimum_ > maximum_) {
    first_ = minimum_ = maximum_ = observation;
  }
  ++count_;
  isBinary_ = isBinary_ && (observation == 0.0 || observation == 1.0);
  minimum_ = std::min(minimum_, observation);
  maximum_ = std::max(maximum_, observation);

  const double difference = observation - first_;
  if (difference == 0.0) {
    return;  // as it is for every one of a variable that never varies; it adds nothing to any sum
  }
  DoubleDouble square = exactProduct(difference, difference);
  DoubleDouble cube = exactProduct(square.high, difference);
  cube.low += square.low * difference;
  sum_ = sum_ + DoubleDouble{difference, 0.0};
  squares_ = squares_ + square;
  cubes_ = cubes_ + cube;
}

Estimate ObservationSummary::estimate(double confidence) const {
  assert(confidence > 0.0 && confidence < 1.0);
  Estimate result;
  result.count = count_;
  if (minimum_ > maximum_) {  // no finite observation
    return result;
  }
  result.minimum = minimum_;
  result.maximum = maximum_;
  if (!isFinite()) {
    return result;
  }
  const auto n = static_cast<double>(count_);
  const DoubleDouble meanDifference = sum_ / n;
  result.mean = (DoubleDouble{first_, 0.0} + meanDifference).value();
  const CentralSums sums = centralSums(n, sum_, squares_, cubes_);
  const bool hasVariance = count_ >= 2 && std::isfinite(sums.squares);
  result.variance = count_ < 2    ? std::numeric_limits<double>::quiet_NaN()
                    : hasVariance ? std::max(sums.squares, 0.0) / (n - 1.0)
                                  : kInfinity;
  result.skewness = skewnessOf(n, sums);

  Interval interval{-kInfinity, kInfinity};
  if (isBinary_) {
    result.method = EstimateMethod::ClopperPearson;
    interval =
        clopperPearsonInterval(static_cast<std::int64_t>(std::llround(sum_.value() + n * first_)), count_, confidence);
  } else if (count_ >= 2 && isConstant()) {
    interval = {result.mean, result.mean};
  } else if (hasVariance && result.variance > 0.0) {
    const bool skewed = isSkewed(count_, result.skewness);
    result.method = skewed ? EstimateMethod::SkewnessCorrected : EstimateMethod::StudentT;
    interval = skewed ? skewnessCorrectedInterval(count_, result.mean, result.variance, result.skewness, confidence)
                      : studentInterval(count_, result.mean, result.variance, confidence);
  } else {
    result.method = EstimateMethod::StudentT;
  }
  result.lower = interval.lower;
  result.upper = interval.upper;
  result.halfWidth = std::max(result.mean - result.lower, result.upper - result.mean);
  return result;
}

}  // namespace controller
