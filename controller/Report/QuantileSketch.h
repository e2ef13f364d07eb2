#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace controller {

/// Quantiles of a stream, in memory that does not grow with it.
///
/// Error   the value that it gives for a probability has a rank that is off by at most kError times the number of values,
///         and so has the rank that it gives for a value. The least and the greatest value are exact.
/// Order   deterministic: the same values in the same order give the same answers.
/// Memory  tuples are kept as sparse as the error allows: some thousands of them, 24 bytes each, and a buffer of values.
/// Source  M. Greenwald and S. Khanna, Space-efficient online computation of quantile summaries, SIGMOD 2001; with a buffer
///         that is sorted and merged in one go, and without bands: G. Luo, L. Wang, K. Yi and G. Cormode, Quantiles over
///         data streams: experimental comparisons, new analyses, and further improvements, The VLDB Journal 25(4), 2016,
///         which has no bound of the memory for that form and found it the smallest of all in practice.
class QuantileSketch {
 public:
  static constexpr double kError = 0.0005;

  /// Adds a value `times` times. Values are finite.
  void add(double value, std::int64_t times = 1);

  [[nodiscard]] std::int64_t count() const noexcept { return count_ + static_cast<std::int64_t>(buffer_.size()); }

  /// A value of about the rank ceil(probability * count()), counted from 1. Requires: 0 <= probability <= 1, a value.
  [[nodiscard]] double quantile(double probability);

  /// About how many values lie below `value`. It does not fall from one value to a greater one.
  [[nodiscard]] std::int64_t countBelow(double value);

  /// Tuples kept, of 24 bytes each.
  [[nodiscard]] std::size_t size() const noexcept { return tuples_.size(); }

 private:
  /// `weight` values, the greatest of which is `value`; the rank of that is uncertain by `slack`.
  struct Tuple {
    double value;
    std::int64_t weight;
    std::int64_t slack;
  };
  static constexpr std::size_t kBufferSize = 4096;

  void mergeBuffer();
  void compress();
  [[nodiscard]] std::int64_t heaviest() const noexcept;

  std::int64_t count_ = 0;     // of values in tuples
  std::vector<Tuple> tuples_;  // by ascending value
  std::vector<double> buffer_;
};

}  // namespace controller
