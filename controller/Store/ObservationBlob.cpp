#include "Store/ObservationBlob.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <stdexcept>

#include "Process/ByteOrder.h"

namespace controller {
namespace {

constexpr std::size_t kHeadBytes = 9;
constexpr std::size_t kDoubleBytes = 8;

enum class Form : unsigned char { Doubles = 0, Constant = 1, Bytes = 2 };

std::uint64_t bitsOf(double value) {
  return std::bit_cast<std::uint64_t>(value);
}

std::uint64_t numberAt(std::span<const std::byte> bytes, std::size_t place) {
  return readEight<std::endian::little>(bytes.data() + place);
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
  const std::size_t width = form == Form::Bytes ? 1 : kDoubleBytes;
  const std::size_t count = form == Form::Constant ? 1 : observations.size();
  std::vector<std::byte> bytes(kHeadBytes + width * count);
  bytes[0] = static_cast<std::byte>(form);
  writeEight<std::endian::little>(bytes.data() + 1, observations.size());
  std::byte* place = bytes.data() + kHeadBytes;
  for (std::size_t i = 0; i < count; ++i, place += width) {
    if (form == Form::Bytes) {
      *place = static_cast<std::byte>(static_cast<unsigned char>(observations[i]));
    } else {
      writeEight<std::endian::little>(place, bitsOf(observations[i]));
    }
  }
  return bytes;
}

std::vector<double> unpackObservations(std::span<const std::byte> bytes, std::size_t most) {
  const auto refuse = [] { throw std::runtime_error("stored observations are damaged"); };
  if (bytes.size() < kHeadBytes) {
    refuse();
  }
  const auto form = static_cast<Form>(bytes[0]);
  const std::uint64_t count = numberAt(bytes, 1);
  const std::span<const std::byte> rest = bytes.subspan(kHeadBytes);
  const bool hasItsSize = count <= most && (form == Form::Constant  ? rest.size() == kDoubleBytes && count > 0
                                            : form == Form::Bytes   ? rest.size() == count
                                            : form == Form::Doubles ? rest.size() == kDoubleBytes * count
                                                                    : false);
  if (!hasItsSize) {
    refuse();
  }
  const auto size = static_cast<std::size_t>(count);
  if (form == Form::Constant) {
    return std::vector<double>(size, std::bit_cast<double>(numberAt(rest, 0)));
  }
  std::vector<double> observations(size);
  for (std::size_t i = 0; i < size; ++i) {
    observations[i] = form == Form::Bytes ? static_cast<double>(static_cast<unsigned char>(rest[i]))
                                          : std::bit_cast<double>(numberAt(rest, kDoubleBytes * i));
  }
  return observations;
}

}  // namespace controller
