#include "Study/BaseStudyClass.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace {

/// The echo of overrides on standard output. Off; whoever follows an override by hand switches it on here.
constexpr bool kEchoOverrides = false;

constexpr const char* kTooFewTokens = "Not enough double override tokens";
constexpr const char* kEchoText = "\n!!Double override string:  %s";

/// The tokens of an override string, cut at runs of colons. It keeps its own position, so that whatever OverrideGVValue
/// does between two tokens cannot disturb it.
class OverrideTokens {
 public:
  explicit OverrideTokens(const char* text) : rest_(text) {}

  /// The next token, or nothing at the end of the text. A token is never empty.
  std::optional<std::string> next() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(kSeparator), rest_.size()));
    if (rest_.empty()) {
      return std::nullopt;
    }
    const std::string_view token = rest_.substr(0, rest_.find(kSeparator));
    rest_.remove_prefix(token.size());
    return std::string(token);
  }

 private:
  static constexpr char kSeparator = ':';

  std::string_view rest_;
};

/// Room for a value of any variable, zero before the value is stored: a variable that reads it at a width other than
/// that of the type letter still reads defined bytes.
class OverrideValue {
 public:
  template <typename T>
  explicit OverrideValue(T value) {
    static_assert(sizeof value <= kWidth);
    std::memcpy(bytes_.data(), &value, sizeof value);
  }

  void* address() { return bytes_.data(); }

 private:
  static constexpr std::size_t kWidth = 8;

  alignas(kWidth) std::array<std::byte, kWidth> bytes_{};
};

/// An integer as "%i" reads it: decimal, octal with a leading 0, hexadecimal with a leading 0x. The low bits of T are
/// kept of a number that is too large for it, and 0 stands for a text that is no number.
template <typename T>
T scanInteger(const std::string& text) {
  return static_cast<T>(std::strtoll(text.c_str(), nullptr, 0));
}

/// Whether a scan would have read on behind a number that ends at `rest`, and then have failed: a scan takes the start
/// of an exponent as a part of the number, that of "infinity" beyond "inf" and that of a hexadecimal number, while the
/// conversions of the library step back before it.
bool isCutShort(std::string_view number, std::string_view rest) {
  if (number.empty() || rest.empty()) {
    return false;
  }
  const auto goesOnWith = [&](std::string_view letters) {
    return letters.find(rest.front()) != std::string_view::npos;
  };
  if (number.find_first_of("nN") != std::string_view::npos) {  // an infinity has no exponent
    return (number.back() == 'f' || number.back() == 'F') && goesOnWith("iI");
  }
  if (number.substr(number.find_first_not_of(" \t\n\v\f\r+-")) == "0" && goesOnWith("xX")) {
    return true;
  }
  const std::string_view exponent = number.find_first_of("xX") != std::string_view::npos ? "pP" : "eE";
  return goesOnWith(exponent) && number.find_first_of(exponent) == std::string_view::npos;
}

/// A floating-point number as "%lf" and "%f" read it; 0 stands for a text that is no number, and an infinity for one
/// that is too large. Of "nan" with brackets behind it a scan takes the word alone, the conversions a payload, too.
template <typename T>
T scanFloating(const std::string& text, T (*convert)(const char*, char**)) {
  char* end = nullptr;
  const T value = convert(text.c_str(), &end);
  if (std::isnan(value)) {
    return std::copysign(std::numeric_limits<T>::quiet_NaN(), value);
  }
  const auto length = static_cast<std::size_t>(end - text.c_str());
  return isCutShort(std::string_view(text).substr(0, length), end) ? T{} : value;
}

void releaseTexts(char** texts, std::uint32_t count) {
  if (texts == nullptr) {
    return;
  }
  std::for_each_n(texts, count, [](char* text) { std::free(text); });
  delete[] texts;
}

}  // namespace

BaseStudyClass::~BaseStudyClass() {
  releaseTexts(GVNames, NumGVs);
  releaseTexts(GVTypes, NumGVs);
}

PVModel* BaseStudyClass::GetPVModel(bool /*expandTimeArrays*/) {
  return ThePVModel;
}

void BaseStudyClass::SetGVs(int /*experiment*/) {
  std::cout << "basestudyclass::SetGVs" << std::endl;
}

void BaseStudyClass::PrintGlobalValues(int /*experiment*/) {}

void* BaseStudyClass::GetGVValue(const char* /*name*/) {
  return nullptr;
}

void BaseStudyClass::OverrideGVValue(const char* /*name*/, void* /*value*/) {}

const char* BaseStudyClass::GetExpName(int experiment) const {
  static std::array<char, 128> name;
  const auto number = static_cast<std::int32_t>(static_cast<std::uint32_t>(experiment) + 1U);
  std::snprintf(name.data(), name.size(), "Experiment %d", number);
  return name.data();
}

void BaseStudyClass::overrideGVs(const char* overrides) {
  applyOverrides<kEchoOverrides>(overrides);
}

template <bool kEcho>
void BaseStudyClass::applyOverrides(const char* overrides) {
  if (overrides == nullptr) {
    return;
  }
  if constexpr (kEcho) {
    std::printf(kEchoText, overrides);
  }
  OverrideTokens tokens(overrides);
  while (const std::optional<std::string> type = tokens.next()) {
    const std::optional<std::string> name = tokens.next();
    const std::optional<std::string> text = name ? tokens.next() : std::nullopt;
    if (!text) {
      std::cout << kTooFewTokens << std::flush;
      return;
    }
    // Stores the value; `echoed` is what the echo line shows for it.
    const auto store = [&](auto value, [[maybe_unused]] const char* echoFormat, [[maybe_unused]] auto echoed) {
      OverrideValue pointee(value);
      OverrideGVValue(name->c_str(), pointee.address());
      if constexpr (kEcho) {
        std::printf(echoFormat, name->c_str(), echoed);
      }
    };
    switch (type->front()) {
      case 'd': {
        const double value = scanFloating<double>(*text, std::strtod);
        store(value, "\n** OVERRIDE  %s to %lf", value);
        break;
      }
      case 'f': {
        const float value = scanFloating<float>(*text, std::strtof);
        store(value, "\n** OVERRIDE  %s to %f", static_cast<double>(value));
        break;
      }
      case 'b': {
        const auto value = scanInteger<std::int16_t>(*text);
        store(value != 0, "\n** OVERRIDE  %s to %hi", value);
        break;
      }
      case 's': {
        const auto value = scanInteger<std::int16_t>(*text);
        store(value, "\n** OVERRIDE  %s to %hi", value);
        break;
      }
      case 'i': {
        const auto value = scanInteger<std::int32_t>(*text);
        store(value, "\n** OVERRIDE  %s to %i", value);
        break;
      }
      case 'l': {
        const auto value = scanInteger<std::int32_t>(*text);
        store(value, "\n** OVERRIDE  %s to %li", static_cast<long>(value));
        break;
      }
      case 'c': {
        const char value = text->front();
        store(value, "\n** OVERRIDE  %s to %c", value);
        break;
      }
      default:
        std::cout << "Type " << type->front() << " not recognized" << std::endl;
        break;
    }
  }
}

// The two forms that exist: overrideGVs uses the one that kEchoOverrides names.
template void BaseStudyClass::applyOverrides<false>(const char* overrides);
template void BaseStudyClass::applyOverrides<true>(const char* overrides);
