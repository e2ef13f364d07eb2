#pragma once

#include <iostream>

/// Threshold of the debug lines on standard output. 0, and no option or operation changes it: the lines are dormant and
/// serve whoever debugs the engine or a model.
extern int GlobalDebugLevel;

namespace support {

/// Writes "** ", the parts and a line end to standard output when GlobalDebugLevel is above `level`.
template <typename... Parts>
inline void debugLine(int level, const Parts&... parts) {
  if (GlobalDebugLevel > level) [[unlikely]] {
    std::cout << "** ";
    (std::cout << ... << parts) << std::endl;
  }
}

}  // namespace support
