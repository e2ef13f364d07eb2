#pragma once

#include <cstddef>
#include <string>

#include "support/AllocationCounter.h"

namespace fuzz {

/// The memory that was asked for since the object was made, released or not.
class AllocatedBytes {
 public:
  /// In words that it is more than `factor` for each byte read and what the texts of a refusal take; or nothing.
  [[nodiscard]] std::string excess(std::size_t read, std::size_t factor) const {
    constexpr std::size_t kForTexts = 16384;
    const std::size_t allocated = support::allocatedBytes() - before_;
    return allocated <= factor * read + kForTexts
               ? std::string()
               : std::to_string(allocated) + " bytes were asked for to read " + std::to_string(read);
  }

 private:
  std::size_t before_ = support::allocatedBytes();
};

}  // namespace fuzz
