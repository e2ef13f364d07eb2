#pragma once

#include <cstdint>

namespace support {

/// The number by which the operating system knows this process.
[[nodiscard]] std::int32_t processId();

}  // namespace support
