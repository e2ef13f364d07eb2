#pragma once

/// Required checks of the engine. They hold in every build type: none of them looks at NDEBUG, since a user who breaks
/// one must learn of it in a Release build too.
///
/// There are two forms, told apart by their words on standard error; both abort the process.
namespace support {

/// Ends the process with "!! Assertion failed in file <file>, line <line>".
[[noreturn]] void failAssertion(const char* file, int line);

/// Ends the process with "Assertion failed: <expression>, file <file>, line <line>"; folders are cut off `file`.
[[noreturn]] void failRuntimeAssertion(const char* expression, const char* file, int line);

/// The form that names a file: `file` is the name to print, such as "BaseGroupClass".
inline void require(bool condition, const char* file, int line = __builtin_LINE()) {
  if (!condition) [[unlikely]] {
    failAssertion(file, line);
  }
}

/// The form that names an expression: `expression` is the text to print, such as "VarIndex != -1".
inline void requireRuntime(bool condition, const char* expression, const char* file = __builtin_FILE(),
                           int line = __builtin_LINE()) {
  if (!condition) [[unlikely]] {
    failRuntimeAssertion(expression, file, line);
  }
}

}  // namespace support
