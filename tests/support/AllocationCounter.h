#pragma once

#include <cstddef>

namespace support {

/// Allocations of this program so far, those of the libraries it is linked with included. A test program that asks must
/// have AllocationCounter.cpp among its own sources, which replaces the program's operator new.
[[nodiscard]] std::size_t allocations();

/// Bytes that these asked for, all of them together.
[[nodiscard]] std::size_t allocatedBytes();

/// Of those allocations, how many have not been given back.
[[nodiscard]] std::size_t liveAllocations();

/// How many allocations `action` leaves behind when it is done a second time: what it makes once for the process, such as
/// a static object, is made the first time.
template <typename Action>
[[nodiscard]] std::size_t leftBehindBy(Action&& action) {
  action();
  const std::size_t before = liveAllocations();
  action();
  return liveAllocations() - before;
}

}  // namespace support
