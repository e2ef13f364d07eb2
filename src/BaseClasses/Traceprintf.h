#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

/// Threshold of Traceprintf; every trace sink's setTraceLevel stores its level here too.
extern int TraceLevel;

/// Stream of Traceprintf: standard output until a text trace takes it over. Borrowed; never null.
extern std::ostream* trout;

/// Writes a formatted text to *trout and flushes it, unless the global TraceLevel is below `level`. A text of level 0
/// goes to standard output too when trout points elsewhere.
/// "%lld" prints a 64-bit integer as its decimal digits on every platform. A text of any length is written whole.
/// Not for several threads at once: the text is built in one buffer for the process.
[[gnu::format(printf, 2, 3)]] void Traceprintf(int level, const char* format, ...);

namespace support {

/// `format` with every "%lld" turned into "%I64d", the words of the Microsoft runtime for the same conversion.
[[nodiscard]] std::string withMicrosoftLongLong(std::string_view format);

}  // namespace support
