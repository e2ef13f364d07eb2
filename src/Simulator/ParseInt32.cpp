#include "Simulator/ParseInt32.h"

#include <cstdlib>

namespace support {

std::int32_t parseInt32(const char* text) {
  return static_cast<std::int32_t>(std::strtoll(text, nullptr, 10));
}

}  // namespace support
