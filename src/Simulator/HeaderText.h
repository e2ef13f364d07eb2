#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace support {

/// Text of a file header of a fixed size: the text every header has, the entries there is room for, a comma, and zero
/// bytes up to the size.
/// text     what the header begins with; nothing of it is left out unless it is longer than the header
/// entries  added in order, as long as each ends before the last byte; the first that does not fit ends the attempt
/// size     bytes of the result
[[nodiscard]] std::string headerText(std::string text, std::span<const std::string> entries, std::size_t size);

}  // namespace support
