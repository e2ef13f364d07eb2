#pragma once

#include <cstddef>
#include <cstdint>
#ifndef _WIN32
#include <condition_variable>
#include <mutex>
#endif

#include "BaseClasses/QuorvaMutex.h"

namespace support {

#ifdef _WIN32

/// A lock of the process, for a few instructions at a time; fits std::lock_guard.
class CriticalSection {
 public:
  CriticalSection();
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;
  ~CriticalSection();

  void lock();
  void unlock();

 private:
  void* section_;  // owned: a CRITICAL_SECTION
};

#else

using CriticalSection = std::mutex;

#endif

/// Counting semaphore that serves its waiters in the order in which they lined up: starts at 0, at most 0x7FFFFFFF.
class Semaphore {
 public:
  static constexpr std::uint32_t kMaximum = 0x7FFFFFFF;

  Semaphore();
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;
  ~Semaphore();

  /// Takes the next place in the line, and with it gives `mutex` back; waits without limit until it is served.
  void giveBackAndWait(QuorvaMutex& mutex);
  /// Adds one, and with it lets the first of the line through. At the maximum nothing changes.
  void release();

 private:
#ifdef _WIN32
  void* handle_;  // owned: the system's semaphore
#else
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t lined_ = 0;     // places given out
  std::uint64_t released_ = 0;  // places below this one may go; above lined_ by what nobody has waited for yet
#endif
};

/// Event that lets one waiter through for each time it is set; starts unset.
class AutoResetEvent {
 public:
  AutoResetEvent();
  AutoResetEvent(const AutoResetEvent&) = delete;
  AutoResetEvent& operator=(const AutoResetEvent&) = delete;
  ~AutoResetEvent();

  void set();
  /// Sets the event, then waits without limit for `mutex` and takes it.
  void setAndGet(QuorvaMutex& mutex);
  void wait();

 private:
#ifdef _WIN32
  void* handle_;  // owned: the system's event
#else
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isSet_ = false;
#endif
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
  support::CriticalSection _waiters_count_lock;  // guards _waiters_count
  support::Semaphore _sema;                      // what the waiters wait on
  support::AutoResetEvent _waiters_done;         // set by the last waiter of a broadcast
  std::size_t _was_broadcast = 0;                // always 0: there is no broadcast
};
