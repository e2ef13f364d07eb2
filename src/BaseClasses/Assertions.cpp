#include "BaseClasses/Assertions.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace support {

namespace {

/// Progress lines already written must not be lost with the process.
[[noreturn]] void abortAfterFlush() {
  std::cout.flush();
  std::cerr.flush();
  std::abort();
}

std::string_view withoutFolders(std::string_view path) {
  const auto slash = path.find_last_of("/\\");
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace

void failAssertion(const char* file, int line) {
  std::cerr << "!! Assertion failed in file " << file << ", line " << line << '\n';
  abortAfterFlush();
}

void failRuntimeAssertion(const char* expression, const char* file, int line) {
  std::cerr << "Assertion failed: " << expression << ", file " << withoutFolders(file) << ", line " << line << '\n';
  abortAfterFlush();
}

}  // namespace support
