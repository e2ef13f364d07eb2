#include "Study/Grid.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace controller {
namespace {

constexpr std::size_t kGreatestPoints = 100'000;
constexpr std::int64_t kGreatestMantissa = 1'000'000'000'000'000;
constexpr int kGreatestPlaces = 15;

/// A decimal as mantissa / 10^places.
struct Decimal {
  std::int64_t mantissa = 0;
  int places = 0;
};

std::optional<Decimal> readDecimal(std::string_view text) {
  Decimal decimal;
  const bool isNegative = text.starts_with('-');
  text.remove_prefix(isNegative ? 1 : 0);
  bool isBehindPoint = false;
  bool hasDigit = false;
  for (const char character : text) {
    if (character == '.' && !isBehindPoint) {
      isBehindPoint = true;
    } else if (std::isdigit(static_cast<unsigned char>(character)) != 0 && decimal.mantissa < kGreatestMantissa) {
      decimal.mantissa = decimal.mantissa * 10 + (character - '0');
      decimal.places += isBehindPoint ? 1 : 0;
      hasDigit = true;
    } else {
      return std::nullopt;
    }
  }
  if (!hasDigit || decimal.places > kGreatestPlaces) {
    return std::nullopt;
  }
  decimal.mantissa *= isNegative ? -1 : 1;
  return decimal;
}

/// The mantissa of a decimal with more places. Throws UsageError where it grows too large.
std::int64_t scaled(const Decimal& decimal, int places) {
  std::int64_t mantissa = decimal.mantissa;
  for (int i = decimal.places; i < places; ++i) {
    if (std::abs(mantissa) >= kGreatestMantissa) {
      throw UsageError("a range has too many digits: fifteen are enough");
    }
    mantissa *= 10;
  }
  return mantissa;
}

std::string textOf(Decimal decimal) {
  while (decimal.places > 0 && decimal.mantissa % 10 == 0) {
    decimal.mantissa /= 10;
    --decimal.places;
  }
  std::string digits = std::to_string(std::abs(decimal.mantissa));
  const auto places = static_cast<std::size_t>(decimal.places);
  if (digits.size() <= places) {
    digits = fmt::format("{:0>{}}", digits, places + 1);
  }
  if (places > 0) {
    digits = fmt::format("{}.{}", digits.substr(0, digits.size() - places), digits.substr(digits.size() - places));
  }
  return fmt::format("{}{}", decimal.mantissa < 0 ? "-" : "", digits);
}

std::vector<std::string> split(const std::string& text, std::string_view separator) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  while (true) {
    const std::size_t end = text.find(separator, begin);
    parts.push_back(text.substr(begin, end - begin));
    if (end == std::string::npos) {
      return parts;
    }
    begin = end + separator.size();
  }
}

void appendRange(const std::string& text, std::vector<std::string>& values) {
  const auto parts = split(text, "..");
  const auto first = readDecimal(parts[0]);
  const auto last = parts.size() > 1 ? readDecimal(parts[1]) : std::nullopt;
  const auto step = parts.size() > 2 ? readDecimal(parts[2]) : Decimal{1, 0};
  if (parts.size() > 3 || !first || !last || !step || step->mantissa == 0) {
    throw UsageError(
        fmt::format("{} is no range: write <first>..<last> or <first>..<last>..<step> with decimal numbers", text));
  }
  const int places = std::max({first->places, last->places, step->places});
  const std::int64_t end = scaled(*last, places);
  const std::int64_t pace = scaled(*step, places);
  std::int64_t value = scaled(*first, places);
  if (pace > 0 ? value > end : value < end) {
    throw UsageError(fmt::format("the range {} is empty: its steps lead away from its end", text));
  }
  for (; pace > 0 ? value <= end : value >= end; value += pace) {
    values.push_back(textOf({value, places}));
    if (values.size() > kGreatestPoints) {
      throw UsageError(fmt::format("the range {} has more than {} values", text, kGreatestPoints));
    }
  }
}

char typeLetter(const std::string& type) {
  constexpr std::array<std::pair<char, const char*>, 7> kTypes = {
      {{'s', "short"}, {'i', "int"}, {'l', "long"}, {'f', "float"}, {'d', "double"}, {'b', "bool"}, {'c', "char"}}};
  for (const auto& [letter, name] : kTypes) {
    if (type == name || type == std::string(1, letter)) {
      return letter;
    }
  }
  throw UsageError(
      fmt::format("{} is no type: short, int, long, float, double, bool, char, or their first letters", type));
}

}  // namespace

Setting readSetting(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) {
    throw UsageError(fmt::format("--set {}: write <name>=<value>, such as nTrains=3", text));
  }
  Setting setting;
  setting.name = text.substr(0, equals);
  if (const std::size_t colon = setting.name.find(':'); colon != std::string::npos) {
    setting.letter = typeLetter(setting.name.substr(0, colon));
    setting.name.erase(0, colon + 1);
  }
  for (const std::string& value : split(text.substr(equals + 1), ",")) {
    if (value.find("..") != std::string::npos) {
      appendRange(value, setting.values);
    } else {
      setting.values.push_back(value);
    }
  }
  const auto isUnfit = [](const std::string& part) {
    return part.empty() || part.find_first_of(": \t\n;=") != std::string::npos;
  };
  if (isUnfit(setting.name) || std::any_of(setting.values.begin(), setting.values.end(), isUnfit)) {
    throw UsageError(
        fmt::format("--set {}: a name and its values are not empty, and hold no blank, colon or semicolon", text));
  }
  return setting;
}

std::vector<std::vector<Assignment>> gridPoints(const std::vector<Setting>& settings) {
  std::vector<std::vector<Assignment>> points(1);
  std::set<std::string> names;
  for (const Setting& setting : settings) {
    if (!names.insert(setting.name).second) {
      throw UsageError(fmt::format("{} is set twice: give all its values in one --set {}=<value>,<value>", setting.name,
                                   setting.name));
    }
    if (points.size() * setting.values.size() > kGreatestPoints) {
      throw UsageError(fmt::format("the grid has more than {} points", kGreatestPoints));
    }
    std::vector<std::vector<Assignment>> extended;
    for (const auto& point : points) {
      for (const std::string& value : setting.values) {
        extended.push_back(point);
        extended.back().push_back({setting.letter, setting.name, value});
      }
    }
    points = std::move(extended);
  }
  return points;
}

}  // namespace controller
