#include "BaseClasses/LocalStateImage.h"

#include <cstddef>
#include <cstring>
#include <iomanip>
#include <iostream>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/primes.h"

namespace {

/// The byte as a signed number, whatever the sign of the compiler's char.
std::int32_t signedByte(char byte) {
  return static_cast<signed char>(byte);
}

}  // namespace

LocalStateImage::LocalStateImage(std::int32_t imageSize)
    : state(new char[static_cast<std::size_t>(imageSize)]()), size(imageSize) {}

LocalStateImage::~LocalStateImage() {
  delete[] state;
}

int LocalStateImage::hash() {
  std::uint32_t sum = 0;  // unsigned, as its wrap-around is defined
  for (std::int32_t i = 0; i < size; ++i) {
    sum += static_cast<std::uint32_t>(signedByte(state[i]) * primes[i & 255]);
  }
  return static_cast<std::int32_t>(sum);
}

int LocalStateImage::compare(const State& other) {
  const auto& image = static_cast<const LocalStateImage&>(other);
  return std::memcmp(state, image.state, static_cast<std::size_t>(size));
}

void LocalStateImage::print() {
  for (std::int32_t i = 0; i < size; ++i) {
    std::cout << std::setw(5) << signedByte(state[i]);
  }
  std::cout << std::endl;
}

int LocalStateImage::fwriteState(std::FILE* file) {
  const auto length = static_cast<std::size_t>(size);
  std::fwrite(&size, sizeof size, 1, file);
  return std::fwrite(state, 1, length, file) == length ? 0 : 1;
}

int LocalStateImage::freadState(std::FILE* file) {
  std::int32_t storedSize = 0;
  if (std::fread(&storedSize, sizeof storedSize, 1, file) != 1 || storedSize != size) {
    return 1;
  }
  const auto length = static_cast<std::size_t>(size);
  return std::fread(state, 1, length, file) == length ? 0 : 1;
}

const State& LocalStateImage::operator=(const State& other) {
  if (this != &other) {
    const auto* const _localS = static_cast<const LocalStateImage*>(&other);
    support::requireRuntime(size == _localS->size, "size == _localS->size");
    std::memcpy(state, _localS->state, static_cast<std::size_t>(size));
  }
  return *this;
}

// The operation that it calls looks at self-assignment. NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
LocalStateImage& LocalStateImage::operator=(const LocalStateImage& other) {
  *this = static_cast<const State&>(other);
  return *this;
}
