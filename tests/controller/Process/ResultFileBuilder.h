#pragma once

#include <bit>
#include <cstdint>
#include <string>

namespace support {

/// A result file that is put together by hand, number by number.
class ResultFileBuilder {
 public:
  explicit ResultFileBuilder(const std::string& head) : bytes_(head) { bytes_.resize(256, '\0'); }

  ResultFileBuilder& number(std::uint64_t value, int width) {
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
      bytes_ += static_cast<char>(value >> shift & 0xffU);
    }
    return *this;
  }
  ResultFileBuilder& value(double value) { return number(std::bit_cast<std::uint64_t>(value), 8); }
  /// Of client 0 and experiment 1.
  ResultFileBuilder& messageHead(std::uint64_t length, std::uint64_t records) {
    return number(length, 4).number(0, 1).number(1, 2).number(records, 2);
  }
  ResultFileBuilder& recordHead(std::uint64_t variable, std::uint64_t count) {
    return number(variable, 2).number(1, 1).number(count, 4);
  }

  [[nodiscard]] const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

}  // namespace support
