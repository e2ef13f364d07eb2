#include "Command/Options.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <set>
#include <sstream>
#include <system_error>

#include "Study/Grid.h"

namespace controller {
namespace {

constexpr std::int64_t kGreatestList = 1'000'000;

std::int64_t readNumber(const std::string& text, const std::string& whole, const std::string& what) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < 0) {
    throw UsageError(fmt::format("{} \"{}\": write numbers from 0 on, such as 2 or 0,3-5", what, whole));
  }
  return number;
}

double readDouble(const std::string& text, const std::string& rest, const std::string& what) {
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  if (end == text.c_str() || rest != end || !std::isfinite(number)) {
    throw UsageError(what);
  }
  return number;
}

}  // namespace

std::vector<std::int64_t> readNumbers(const std::string& text, const std::string& what) {
  std::set<std::int64_t> numbers;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, ',');) {
    const std::size_t dash = part.find('-');
    const std::int64_t first = readNumber(part.substr(0, dash), text, what);
    const std::int64_t last = dash == std::string::npos ? first : readNumber(part.substr(dash + 1), text, what);
    if (last < first || last - first > kGreatestList) {
      throw UsageError(fmt::format("{} \"{}\": {} is empty or too long", what, text, part));
    }
    for (std::int64_t number = first; number <= last; ++number) {
      numbers.insert(number);
    }
  }
  if (numbers.empty()) {
    throw UsageError(fmt::format("{} \"{}\": write numbers from 0 on, such as 2 or 0,3-5", what, text));
  }
  return {numbers.begin(), numbers.end()};
}

double readShare(const std::string& text) {
  const std::string fault = fmt::format("--precision {}: write a share such as 0.01 or 1%", text);
  const bool isPercent = text.ends_with('%');
  return readDouble(text, isPercent ? "%" : "", fault) / (isPercent ? 100.0 : 1.0);
}

double readSeconds(const std::string& text) {
  if (text.empty()) {
    return 0.0;
  }
  const std::string fault = fmt::format("a time of \"{}\": write seconds, or 90s, 5m, 2h", text);
  const char unit = text.back();
  const double factor = unit == 'h' ? 3600.0 : unit == 'm' ? 60.0 : 1.0;
  const double seconds =
      factor * readDouble(text, unit == 'h' || unit == 'm' || unit == 's' ? std::string(1, unit) : "", fault);
  if (seconds <= 0.0) {
    throw UsageError(fault);
  }
  return seconds;
}

}  // namespace controller
