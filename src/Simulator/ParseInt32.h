#pragma once

#include <cstdint>

namespace support {

/// The decimal number at the start of `text`, as the runtime's atoi reads it: blanks, a sign, digits, and whatever
/// follows is left alone; text that is no number gives 0. Unlike atoi it is defined for every text: the number is read
/// with 64 bits, a larger one as the largest of these, and cut to its low 32 bits. So 4294967295 gives -1, which an
/// unsigned field keeps as 4294967295, on every platform.
[[nodiscard]] std::int32_t parseInt32(const char* text);

}  // namespace support
