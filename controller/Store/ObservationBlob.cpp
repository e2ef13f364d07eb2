#include "Store/ObservationBlob.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <stdexcept>

namespace controller {
namespace {

constexpr std::size_t kHeadBytes = 9;
constexpr std::size_t kDoubleBytes = 8;

enum class Form : unsigned char { Doubles = 0, Constant = 1, Bytes = 2 };

std::uint64_t bitsOf(double value) {
  return std::bit_cast<std::uint64_t>(value);
}

void append(std::vector<std::byte>& bytes, std::uint64_t number) {
  for (unsigned shift = 0; shift < 64; shift += 8) {
    bytes.push_back(static_cast<std::byte>(number >> shift & 0xffU));
  }
}

std::uint64_t numberAt(std::span<const std::byte> bytes, std::size_t place) {
  std::uint64_t number = 0;
  for (std::size_t i = kDoubleBytes; i-- > 0;) {
    number = number << 8 | std::to_integer<std::uint64_t>(bytes[place + i]);
  }
  return number;
}

bool isByte(double value) {
  // By its bits, so that -0.0 is none. NaN fails the comparisons.
  return value >= 0.0 && value <= 255.0 &&
         bitsOf(static_cast<double>(static_cast<unsigned char>(value))) == bitsOf(value);
}

Form formOf(std::span<const double> observations) {
  const auto isFirst = [&](double value) { return bitsOf(value) == bitsOf(observations.front()); };
  if (!observations.empty() && std::all_of(observations.begin(), observations.end(), isFirst)) {
    return Form::Constant;
  }
  return std::all_of(observations.begin(), observations.end(), isByte) ? Form::Bytes : Form::Doubles;
}

}  // namespace

std::vector<std::byte> packObservations(std::span<const double> observations) {
  const Form form = formOf(observations);
  std::vector<std::byte> bytes = {static_cast<std::byte>(form)};
  append(bytes, observations.size());
  switch (form) {
    case Form::Constant:
      append(bytes, bitsOf(observations.front()));
      break;
    case Form::Bytes:
      for (const double value : observations) {
        bytes.push_back(static_cast<std::byte>(static_cast<unsigned char>(value)));
      }
      break;
    case Form::Doubles:
      bytes.reserve(kHeadBytes + kDoubleBytes * observations.size());
      for (const double value : observations) {
        append(bytes, bitsOf(value));
      }
  }
  return bytes;
}

std::vector<double> unpackObservations(std::span<const std::byte> bytes) {
  const auto refuse = [] { throw std::runtime_error("stored observations are damaged"); };
  if (bytes.size() < kHeadBytes) {
    refuse();
  }
  const auto form = static_cast<Form>(bytes[0]);
  const std::uint64_t count = numberAt(bytes, 1);
  const std::span<const std::byte> rest = bytes.subspan(kHeadBytes);
  const bool hasItsSize = count <= kGreatestCount && (form == Form::Constant  ? rest.size() == kDoubleBytes && count > 0
                                                      : form == Form::Bytes   ? rest.size() == count
                                                      : form == Form::Doubles ? rest.size() == kDoubleBytes * count
                                                                              : false);
  if (!hasItsSize) {
    refuse();
  }
  std::vector<double> observations(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < observations.size(); ++i) {
    switch (form) {
      case Form::Constant:
        observations[i] = std::bit_cast<double>(numberAt(rest, 0));
        break;
      case Form::Bytes:
        observations[i] = static_cast<double>(static_cast<unsigned char>(rest[i]));
        break;
      case Form::Doubles:
        observations[i] = std::bit_cast<double>(numberAt(rest, kDoubleBytes * i));
    }
  }
  return observations;
}

}  // namespace controller
