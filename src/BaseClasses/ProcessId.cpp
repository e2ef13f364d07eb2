#include "BaseClasses/ProcessId.h"

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace support {

std::int32_t processId() {
#ifdef _WIN32
  return _getpid();
#else
  return getpid();
#endif
}

}  // namespace support
