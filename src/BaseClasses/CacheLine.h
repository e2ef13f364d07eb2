#pragma once

#include <cstddef>

namespace support {

/// Bytes that a processor brings into its caches at once. Only speed depends on it.
inline constexpr std::size_t kCacheLine = 64;

}  // namespace support
