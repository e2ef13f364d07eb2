#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "BaseClasses/DebugLines.h"

namespace support {

/// What `action` writes to standard output.
template <typename Action>
std::string standardOutputOf(Action&& action) {
  testing::internal::CaptureStdout();
  action();
  std::cout.flush();
  return testing::internal::GetCapturedStdout();
}

/// What `action` writes to standard error.
template <typename Action>
std::string standardErrorOf(Action&& action) {
  testing::internal::CaptureStderr();
  action();
  std::cerr.flush();
  return testing::internal::GetCapturedStderr();
}

/// Sets GlobalDebugLevel for its lifetime.
class DebugLevelGuard {
 public:
  explicit DebugLevelGuard(int level) { GlobalDebugLevel = level; }
  DebugLevelGuard(const DebugLevelGuard&) = delete;
  DebugLevelGuard& operator=(const DebugLevelGuard&) = delete;
  ~DebugLevelGuard() { GlobalDebugLevel = 0; }
};

/// The death test text of the assertion form that names a file.
inline std::string assertionIn(const std::string& file) {
  return "!! Assertion failed in file " + file + ", line [0-9]+";
}

}  // namespace support
