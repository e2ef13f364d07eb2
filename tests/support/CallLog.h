#pragma once

#include <string>
#include <utility>
#include <vector>

namespace support {

/// Calls in the order in which they came in, such as "serve.Enabled".
using CallLog = std::vector<std::string>;

/// Adds a call to the log, if there is one.
inline void note(CallLog* log, std::string call) {
  if (log != nullptr) {
    log->push_back(std::move(call));
  }
}

}  // namespace support
