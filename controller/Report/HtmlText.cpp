#include "Report/HtmlText.h"

#include <cstddef>
#include <cstdint>

namespace controller {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

/// Bytes of the well-formed UTF-8 character at the beginning of `text`, 0 if there is none.
/// Source: The Unicode Standard, table 3-7, well-formed UTF-8 byte sequences.
std::size_t lengthOfCharacter(std::string_view text) {
  const auto byteAt = [text](std::size_t at) {
    return at < text.size() ? static_cast<std::uint8_t>(text[at]) : std::uint8_t{0};
  };
  const auto isBetween = [](std::uint8_t byte, int from, int to) { return byte >= from && byte <= to; };
  const std::uint8_t lead = byteAt(0);
  if (lead < 0x80) {
    return 1;
  }
  const int from = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;  // no longer form of a shorter one
  const int to = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;    // no surrogate, nothing behind U+10FFFF
  const std::size_t length = isBetween(lead, 0xC2, 0xDF)   ? 2
                             : isBetween(lead, 0xE0, 0xEF) ? 3
                             : isBetween(lead, 0xF0, 0xF4) ? 4
                                                           : 0;
  for (std::size_t at = 1; at < length; ++at) {
    if (!isBetween(byteAt(at), at == 1 ? from : 0x80, at == 1 ? to : 0xBF)) {
      return 0;
    }
  }
  return length;
}

std::string_view referenceFor(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    case '\t':
    case '\n':
      return {};
    default:
      return static_cast<unsigned char>(character) < 0x20 || character == 0x7F ? kReplacement : std::string_view();
  }
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 8);
  while (!text.empty()) {
    const std::size_t length = lengthOfCharacter(text);
    const std::string_view reference = length == 1 ? referenceFor(text.front()) : std::string_view();
    if (length == 0) {
      result += kReplacement;
    } else if (reference.empty()) {
      result += text.substr(0, length);
    } else {
      result += reference;
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result;
}

}  // namespace controller
