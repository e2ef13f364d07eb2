#include "BaseClasses/Traceprintf.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <iostream>
#include <vector>

int TraceLevel = 0;
std::ostream* trout = &std::cout;

namespace {

constexpr std::size_t kFirstCapacity = 1000;

/// Formats into a buffer that lives and grows for the process. The text is valid until the next call; empty on a format
/// that the runtime cannot follow.
[[gnu::format(printf, 1, 0)]] std::string_view formatted(const char* format, std::va_list arguments) {
  static std::vector<char> buffer(kFirstCapacity);
  std::va_list again;
  va_copy(again, arguments);
  int length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  if (length >= 0 && static_cast<std::size_t>(length) >= buffer.size()) {
    buffer.resize(static_cast<std::size_t>(length) + 1);
    length = std::vsnprintf(buffer.data(), buffer.size(), format, again);
  }
  va_end(again);
  return {buffer.data(), length < 0 ? 0 : static_cast<std::size_t>(length)};
}

}  // namespace

void Traceprintf(int level, const char* format, ...) {
  if (TraceLevel < level) {
    return;
  }
  std::va_list arguments;
  va_start(arguments, format);
#ifdef _WIN32
  const std::string_view text = formatted(support::withMicrosoftLongLong(format).c_str(), arguments);
#else
  // The runtimes of all other platforms know "%lld" themselves.
  const std::string_view text = formatted(format, arguments);
#endif
  va_end(arguments);

  *trout << text << std::flush;
  if (level == 0 && trout != &std::cout) {
    std::cout << text << std::flush;
  }
}

namespace support {

std::string withMicrosoftLongLong(std::string_view format) {
  constexpr std::string_view kStandard = "%lld";
  constexpr std::string_view kMicrosoft = "%I64d";
  std::string result(format);
  for (auto at = result.find(kStandard); at != std::string::npos; at = result.find(kStandard, at + kMicrosoft.size())) {
    result.replace(at, kStandard.size(), kMicrosoft);
  }
  return result;
}

}  // namespace support
