#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "Study/BaseStudyClass.h"
#include "fuzz/Checks.h"
#include "support/StreamCapture.h"

namespace fuzz {

namespace {

/// The bytes of a value, and zero bytes behind them, as wide as the widest type.
using ValueBytes = std::array<char, 8>;

struct Stored {
  std::string name;
  ValueBytes bytes;
  bool operator==(const Stored&) const = default;
};

template <typename Value>
ValueBytes bytesOf(Value value) {
  ValueBytes bytes{};
  static_assert(sizeof value <= sizeof bytes);
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

/// Notes what it is told to store. It reads each value at the widest type's width, as a variable of that type would.
class NotingStudy : public BaseStudyClass {
 public:
  void OverrideGVValue(const char* name, void* value) override {
    Stored noted{name, {}};
    std::memcpy(noted.bytes.data(), value, noted.bytes.size());
    stored.push_back(noted);
  }

  std::vector<Stored> stored;
};

/// The text's tokens, cut at runs of colons.
std::vector<std::string> tokensOf(const std::string& text) {
  std::vector<std::string> tokens;
  bool isInside = false;
  for (const char character : text) {
    if (character == ':') {
      isInside = false;
    } else {
      if (!isInside) {
        tokens.emplace_back();
      }
      tokens.back() += character;
      isInside = true;
    }
  }
  return tokens;
}

/// The integer at the start of a text, in the base that its prefix says: the low 64 bits of the nearest that these hold.
std::int64_t integerIn(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t\n\v\f\r");
  if (begin == std::string_view::npos) {
    return 0;
  }
  text.remove_prefix(begin);
  const bool isNegative = text.front() == '-';
  if (isNegative || text.front() == '+') {
    text.remove_prefix(1);
  }
  const auto digitOf = [](char character) {
    const std::string_view digits = "0123456789abcdef";
    const char lower = character >= 'A' && character <= 'F' ? static_cast<char>(character - 'A' + 'a') : character;
    const std::size_t digit = character == '\0' ? std::string_view::npos : digits.find(lower);
    return digit == std::string_view::npos ? 16U : static_cast<unsigned>(digit);
  };
  unsigned base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && digitOf(text[2]) < 16) {
    base = 16;
    text.remove_prefix(2);
  } else if (!text.empty() && text[0] == '0') {
    base = 8;
  }
  const std::uint64_t most = std::uint64_t{1} << 63U;
  const std::uint64_t limit = isNegative ? most : most - 1;
  std::uint64_t value = 0;
  for (const char character : text) {
    const unsigned digit = digitOf(character);
    if (digit >= base) {
      break;
    }
    value = value > (limit - digit) / base ? limit : value * base + digit;
  }
  return static_cast<std::int64_t>(isNegative ? 0 - value : value);
}

/// A floating-point number as a scan reads it; 0 for a text that it does not take. The runtime here takes a number that
/// breaks off behind the start of its exponent, or behind the point of a hexadecimal one; the standard's scan does not.
template <typename Value>
Value floatingIn(const std::string& text, const char* format) {
  static const std::regex brokenOff("0[xX]\\.|0[xX].*[pP][+-]?|(?!0[xX])[^nN]*[0-9.][eE][+-]?");
  Value value{};
  int length = 0;
  if (std::sscanf(text.c_str(), format, &value, &length) != 1) {
    return Value{};
  }
  std::string taken = text.substr(0, static_cast<std::size_t>(length));
  taken.erase(0, taken.find_first_not_of(" \t\n\v\f\r+-"));
  return std::regex_match(taken, brokenOff) ? Value{} : value;
}

bool valueOf(char type, const std::string& text, ValueBytes& bytes) {
  switch (type) {
    case 'd':
      bytes = bytesOf(floatingIn<double>(text, "%lf%n"));
      return true;
    case 'f':
      bytes = bytesOf(floatingIn<float>(text, "%f%n"));
      return true;
    case 'b':
      bytes = bytesOf(static_cast<std::int16_t>(integerIn(text)) != 0);
      return true;
    case 's':
      bytes = bytesOf(static_cast<std::int16_t>(integerIn(text)));
      return true;
    case 'i':
    case 'l':
      bytes = bytesOf(static_cast<std::int32_t>(integerIn(text)));
      return true;
    case 'c':
      bytes = bytesOf(text.front());
      return true;
    default:
      return false;
  }
}

}  // namespace

std::string checkOverrides(Input input) {
  const std::string text(input.begin(), std::find(input.begin(), input.end(), 0));
  std::vector<Stored> expected;
  std::string told;
  const std::vector<std::string> tokens = tokensOf(text);
  for (std::size_t i = 0; i < tokens.size(); i += 3) {
    if (i + 2 >= tokens.size()) {
      told += "Not enough double override tokens";
      break;
    }
    ValueBytes bytes{};
    if (valueOf(tokens[i].front(), tokens[i + 2], bytes)) {
      expected.push_back({tokens[i + 1], bytes});
    } else {
      told += std::string("Type ") + tokens[i].front() + " not recognized\n";
    }
  }

  NotingStudy study;
  std::string printed;
  {
    const support::StreamCapture out(std::cout);
    study.overrideGVs(text.c_str());
    printed = out.text();
  }
  if (printed != told) {
    return "expected \"" + told + "\", the study printed \"" + printed + "\"";
  }
  if (study.stored.size() != expected.size()) {
    return "expected " + std::to_string(expected.size()) + " values stored, the study stored " +
           std::to_string(study.stored.size());
  }
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (!(expected[i] == study.stored[i])) {
      return "value " + std::to_string(i) + ", of \"" + expected[i].name + "\", is stored otherwise";
    }
  }
  return "";
}

}  // namespace fuzz
