#pragma once

#include <cstdint>
#include <span>

namespace fuzz {

/// What a check is given: any bytes.
using Input = std::span<const std::uint8_t>;

}  // namespace fuzz
