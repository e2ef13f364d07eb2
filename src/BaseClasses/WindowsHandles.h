#pragma once

// The calls of Windows for threads and what they wait on. For sources alone: no header of ours brings its macros along.

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <system_error>

namespace support {

/// `handle` as the call `name` gave it; throws std::system_error if the call failed.
inline HANDLE requireHandle(HANDLE handle, const char* name) {
  if (handle == nullptr) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), name);
  }
  return handle;
}

}  // namespace support
