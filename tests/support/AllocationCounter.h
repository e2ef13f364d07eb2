#pragma once

#include <cstddef>

namespace support {

/// Allocations of this program so far, those of the libraries it is linked with included. A test program that asks must
/// have AllocationCounter.cpp among its own sources, which replaces the program's operator new.
[[nodiscard]] std::size_t allocations();

/// Bytes that these asked for, all of them together.
[[nodiscard]] std::size_t allocatedBytes();

}  // namespace support
