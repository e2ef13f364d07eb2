#pragma once

#include <string>
#include <string_view>

namespace controller {

/// The text as it may stand in HTML and XML, between tags and in quoted attributes: & < > " ' become references. What is no
/// UTF-8, and control characters but tab and line feed, become U+FFFD.
[[nodiscard]] std::string escaped(std::string_view text);

}  // namespace controller
