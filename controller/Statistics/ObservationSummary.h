#pragma once

#include <cstdint>
#include <limits>
#include <span>

#include "Statistics/DoubleDouble.h"
#include "Statistics/Estimate.h"

namespace controller {

/// Moments of one variable's observations, in constant memory however many there are.
///
/// Order      observations count in the order in which they are added: the same ones in the same order give the same
///            bits, however they are cut into calls.
/// Exactness  the first observation is taken off all others, and powers of the differences are summed with about 32
///            digits. So the mean is exact to the last bit or two of the larger of mean and standard deviation (sums of
///            whole numbers are exact), and the variance and skewness keep about 15 digits whatever offset the
///            observations have: those of 1e9 + x are those of x as far as 1e9 + x itself has kept it.
/// Range      differences beyond 1e100 overflow the third power, and then count as not skewed; beyond 1e150 the variance
///            is infinite.
/// Source     sums: T. J. Dekker, A floating-point technique for extending the available precision, 1971; the shift:
///            T. F. Chan, G. H. Golub and R. J. LeVeque, Algorithms for computing the sample variance, 1983.
class ObservationSummary {
 public:
  /// Adds observations, which may hold anything that a double holds. No allocation.
  void add(std::span<const double> observations) noexcept;

  [[nodiscard]] std::int64_t count() const noexcept { return count_; }

  /// All observations so far are 0 or 1, and there is one.
  [[nodiscard]] bool isBinary() const noexcept { return count_ > 0 && isBinary_; }

  /// All observations so far are the same number, and there is one.
  [[nodiscard]] bool isConstant() const noexcept { return count_ > 0 && minimum_ == maximum_ && isFinite(); }

  /// No observation so far is NaN or infinite.
  [[nodiscard]] bool isFinite() const noexcept { return firstNotFinite_ < 0; }

  /// Place, from 0, of the first observation that is NaN or infinite; -1 if there is none.
  [[nodiscard]] std::int64_t firstNotFinite() const noexcept { return firstNotFinite_; }

  /// Mean, moments and the interval that holds the expectation with this confidence; requires 0 < confidence < 1.
  /// 0/1 observations: Clopper-Pearson. Others: the skewness-corrected interval where the skewness differs from 0 by
  /// more than chance has it (Intervals.h), else Student's.
  [[nodiscard]] Estimate estimate(double confidence) const;

 private:
  void addOne(double observation) noexcept;
  /// Adds them at once if each of them is 0 or 1, as each so far; the sums are the same bits as one by one. Otherwise false.
  bool addBinary(std::span<const double> observations) noexcept;

  std::int64_t count_ = 0;
  std::int64_t firstNotFinite_ = -1;
  bool isBinary_ = true;
  double first_ = 0.0;                                        // taken off every observation
  double minimum_ = std::numeric_limits<double>::infinity();  // of the finite ones; above maximum_ if there is none
  double maximum_ = -std::numeric_limits<double>::infinity();
  DoubleDouble sum_, squares_, cubes_;  // of the differences from first_
};

}  // namespace controller
