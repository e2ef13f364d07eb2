#pragma once

#include <cstdint>
#ifndef _WIN32
#include <mutex>
#endif

/// A lock that one thread holds at a time. Not recursive: a thread that holds it must not get it again.
///
/// Each lock carries a name, "mutex1" for the first of the process, "mutex2" for the next. The names serve whoever
/// debugs a run; the lock itself is private to the process, so that two simulators on one host never meet in it.
/// Mutexes are made on one thread, as the counter behind the names is not guarded.
class QuorvaMutex {
 public:
  /// A lock that nobody holds. Throws std::system_error when the system has none to give.
  QuorvaMutex();
  QuorvaMutex(const QuorvaMutex&) = delete;
  QuorvaMutex& operator=(const QuorvaMutex&) = delete;
#ifdef _WIN32
  ~QuorvaMutex();
#else
  ~QuorvaMutex() = default;
#endif

  /// Takes the lock; waits for it without limit.
  void Get();
  /// Gives the lock back. Requires: this thread holds it.
  void Release();

#ifdef _WIN32
  /// The system's handle, for calls that wait for the lock and do more in one; borrowed.
  [[nodiscard]] void* handle() const {
    return _mutex;
  }
#endif

 protected:
  char _name[64] = {};                       // "mutex" and the number of this one
  static inline std::int32_t _globalID = 0;  // mutexes made so far in the process
#ifdef _WIN32
  void* _mutex = nullptr;  // owned: the system's handle
#else
  std::mutex _mutex;
#endif
};

namespace support {

/// Holds a mutex from construction to the end of its scope.
class MutexHolder {
 public:
  explicit MutexHolder(QuorvaMutex& mutex) : mutex_(mutex) { mutex_.Get(); }
  MutexHolder(const MutexHolder&) = delete;
  MutexHolder& operator=(const MutexHolder&) = delete;
  ~MutexHolder() { mutex_.Release(); }

 private:
  QuorvaMutex& mutex_;
};

}  // namespace support
