#include "Report/RoundNumbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace controller {

double roundStep(double from, double to, int steps) {
  const double magnitude = std::max(std::fabs(from), std::fabs(to));
  const double least = magnitude > 0.0 ? magnitude * 1e-14 : 1e-300;  // below it multiples are not exact any more
  const double difference = to - from;
  const double raw = std::isfinite(difference) ? difference / steps : to / steps - from / steps;
  if (!(raw > least) || !std::isfinite(raw)) {
    return std::isfinite(magnitude) && least > 1.0 ? std::pow(10.0, std::ceil(std::log10(least))) : 1.0;
  }
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= raw * (1.0 - 1e-9)) {
      return factor * power;
    }
  }
  return 10.0 * power;
}

std::vector<double> roundNumbers(double from, double to, int steps) {
  std::vector<double> numbers;
  const double step = roundStep(from, to, steps);
  const double last = std::floor(to / step + 1e-9);
  for (double multiple = std::ceil(from / step - 1e-9); multiple <= last && numbers.size() < 100; ++multiple) {
    numbers.push_back(multiple == 0.0 ? 0.0 : multiple * step);
  }
  return numbers;
}

std::string numberInWords(double number, double step) {
  if (std::isnan(number)) {
    return "\u2013";
  }
  if (std::isinf(number)) {
    return number > 0.0 ? "\u221e" : "\u2212\u221e";
  }
  if (number == 0.0) {
    return "0";
  }
  if (!(step > 0.0) || !std::isfinite(step)) {
    return fmt::format("{:.6g}", number);
  }
  const double magnitude = std::fabs(number);
  const int digits = std::clamp(static_cast<int>(std::ceil(std::log10(magnitude / step) + 1e-9)) + 1, 1, 17);
  const int decimals = std::max(static_cast<int>(std::ceil(-std::log10(step) - 1e-9)), 0);
  const bool isShort = magnitude < 1e7 && decimals <= 7;
  if (isShort || (magnitude >= 1.0 && digits > 6)) {
    return fmt::format("{:.{}f}", number, isShort ? decimals : std::min(decimals, 7));
  }
  return fmt::format("{:.{}g}", number, digits);
}

}  // namespace controller
