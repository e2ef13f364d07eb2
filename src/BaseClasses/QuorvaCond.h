#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "BaseClasses/QuorvaMutex.h"

namespace support {

/// Counting semaphore that serves its waiters in the order in which they lined up: starts at 0, at most 0x7FFFFFFF.
class Semaphore {
 public:
  static constexpr std::uint64_t kMaximum = 0x7FFFFFFF;

  /// Takes the next place in the line, without waiting.
  [[nodiscard]] std::uint64_t lineUp();
  /// Waits without limit until there were as many releases as it takes to reach `place`.
  void waitAt(std::uint64_t place);
  /// Adds one, and with it lets the first of the line through. At the maximum nothing changes.
  void release();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t lined_ = 0;     // places given out
  std::uint64_t released_ = 0;  // places below this one may go; above lined_ by what nobody has waited for yet
};

/// Event that lets one waiter through for each time it is set; starts unset.
class AutoResetEvent {
 public:
  void set();
  void wait();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isSet_ = false;
};

}  // namespace support

/// Condition variable over a QuorvaMutex, with a semaphore behind it.
///
/// A waiter lines up at the semaphore before it gives the mutex back, and the semaphore serves in that order: a signal
/// reaches a waiter of its own time, never one that comes to wait later. There is no broadcast.
///
/// Source   D. C. Schmidt, I. Pyarali, Strategies for Implementing POSIX Condition Variables on Win32, C++ Report 1998
class QuorvaCond {
 public:
  QuorvaCond() = default;
  QuorvaCond(const QuorvaCond&) = delete;
  QuorvaCond& operator=(const QuorvaCond&) = delete;
  ~QuorvaCond() = default;

  /// Releases `mutex`, waits without limit for a signal, takes `mutex` again. Requires: the caller holds it. Returns 0.
  int Wait(QuorvaMutex& mutex);
  /// Wakes one waiter; does nothing when none waits. Returns 0.
  int Signal();

 protected:
  std::int32_t _waiters_count = 0;
  std::mutex _waiters_count_lock;         // guards _waiters_count
  support::Semaphore _sema;               // what the waiters wait on
  support::AutoResetEvent _waiters_done;  // set by the last waiter of a broadcast
  std::size_t _was_broadcast = 0;         // always 0: there is no broadcast
};
