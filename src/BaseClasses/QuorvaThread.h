#pragma once

#include <cstdint>
#ifndef _WIN32
#include <thread>
#endif

/// Entry of a thread: takes the data given to QuorvaThread; nothing reads the result.
using THREADFUNC = std::uint32_t (*)(void*);

/// A thread of the operating system, started by hand.
/// Owns     the system's handle, not the data handed to the entry. A thread still running when the object goes runs on.
class QuorvaThread {
 public:
  QuorvaThread(THREADFUNC threadFunc, void* threadData) : _threadFunc(threadFunc), _threadData(threadData) {}
  QuorvaThread(const QuorvaThread&) = delete;
  QuorvaThread& operator=(const QuorvaThread&) = delete;
  ~QuorvaThread();

  /// Starts the entry at once on a new thread. A thread that an earlier Start began runs on and is no longer waited
  /// for. Throws std::system_error when the system has no thread to give.
  void Start();
  /// Waits without limit for the end of the thread; returns at once if there is none to wait for.
  void WaitUntilDone();
  /// Suspends the caller for `ms` milliseconds.
  static void Sleep(int ms);

 protected:
  THREADFUNC _threadFunc = nullptr;
  std::uint32_t* _threadID = nullptr;  // borrowed: where the system's thread number is to go; null, nobody asks for it
  void* _threadData = nullptr;         // borrowed from whoever made the thread
#ifdef _WIN32
  void* _threadHandle = nullptr;  // owned: the system's handle
#else
  std::thread _threadHandle;
#endif
};
