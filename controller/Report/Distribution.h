#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "Report/QuantileSketch.h"
#include "Report/StudyReport.h"

namespace controller {

/// How the observations of one variable are spread, in memory that does not grow with them: exactly as long as they have at
/// most kMostValues different values, and with the error of QuantileSketch from then on.
/// Order  the same observations in the same order give the same answers, however they are cut into calls. Observations that
///        are NaN or infinite are left out.
class Distribution {
 public:
  static constexpr std::size_t kMostValues = 1024;

  void add(std::span<const double> observations);

  /// Greatest error of a quantile's probability: 0 where quantiles are exact.
  [[nodiscard]] double error() const noexcept { return sketch_ ? QuantileSketch::kError : 0.0; }

  /// The least observation that at least `probability` of them do not exceed: the empirical distribution's inverse
  /// (R. J. Hyndman and Y. Fan, Sample quantiles in statistical packages, 1996, type 1). NaN without observations.
  [[nodiscard]] double quantile(double probability);

  /// Up to kMostBars bars for single values, where there are no more of them; else up to kBins bins, or two more, of the
  /// same round width, over the observations between the 0.1 % and the 99.9 % quantile, or over all if that isn't much more.
  [[nodiscard]] std::vector<HistogramBin> histogram();

 private:
  static constexpr std::size_t kMostBars = 25;
  static constexpr int kBins = 40;

  void addOne(double observation);
  [[nodiscard]] std::int64_t countBelow(double value);

  std::vector<std::pair<double, std::int64_t>> values_;  // ascending, with counts; empty once there is a sketch
  std::optional<QuantileSketch> sketch_;
  std::int64_t count_ = 0;
};

}  // namespace controller
