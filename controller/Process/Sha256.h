#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace controller {

/// The SHA-256 digest of bytes that come piece by piece.
/// Source   FIPS PUB 180-4, Secure Hash Standard, 2015
class Sha256 {
 public:
  void add(std::span<const std::byte> bytes);
  /// The digest of all bytes added, as 64 hexadecimal digits. Called once, last.
  [[nodiscard]] std::string finish();

 private:
  void addBlock(const std::byte* block);

  std::array<std::uint32_t, 8> state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                      0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::array<std::byte, 64> block_{};
  std::size_t used_ = 0;
  std::uint64_t length_ = 0;  // bytes
};

/// The digest of a file. Throws std::system_error where it cannot be read.
[[nodiscard]] std::string sha256OfFile(const std::string& path);

}  // namespace controller
