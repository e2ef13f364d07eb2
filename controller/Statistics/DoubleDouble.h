#pragma once

#include <cmath>

namespace controller {

/// A sum kept as two doubles, high + low with |low| at most half a unit in the last place of high: about 32 digits.
/// Source: T. J. Dekker, A floating-point technique for extending the available precision, Numerische Mathematik 18, 1971;
/// D. E. Knuth, The Art of Computer Programming, Volume 2, 4.2.2, for the sum of two doubles.
struct DoubleDouble {
  double high = 0.0;
  double low = 0.0;

  [[nodiscard]] double value() const noexcept { return high + low; }
};

/// a + b without error, but for overflow.
[[nodiscard]] inline DoubleDouble exactSum(double a, double b) noexcept {
  const double sum = a + b;
  const double partOfB = sum - a;
  return {sum, (a - (sum - partOfB)) + (b - partOfB)};
}

/// a * b without error, but for overflow and underflow.
[[nodiscard]] inline DoubleDouble exactProduct(double a, double b) noexcept {
  const double product = a * b;
  return {product, std::fma(a, b, -product)};
}

[[nodiscard]] inline DoubleDouble operator+(DoubleDouble a, DoubleDouble b) noexcept {
  const DoubleDouble sum = exactSum(a.high, b.high);
  return exactSum(sum.high, sum.low + (a.low + b.low));
}

[[nodiscard]] inline DoubleDouble operator-(DoubleDouble a) noexcept {
  return {-a.high, -a.low};
}

[[nodiscard]] inline DoubleDouble operator*(DoubleDouble a, DoubleDouble b) noexcept {
  const DoubleDouble product = exactProduct(a.high, b.high);
  return exactSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

[[nodiscard]] inline DoubleDouble operator/(DoubleDouble a, double divisor) noexcept {
  const double quotient = a.high / divisor;
  const DoubleDouble back = exactProduct(quotient, divisor);
  const double rest = ((a.high - back.high) - back.low) + a.low;
  return exactSum(quotient, rest / divisor);
}

}  // namespace controller
