#include "BaseClasses/QuorvaThread.h"

#ifdef _WIN32

#include <memory>

#include "BaseClasses/WindowsHandles.h"

namespace {

/// An entry and its data, on their way to the new thread.
struct Entry {
  THREADFUNC function;
  void* data;
};

/// What the system calls, by its own convention.
DWORD WINAPI runEntry(void* entry) {
  const std::unique_ptr<Entry> owned(static_cast<Entry*>(entry));
  return owned->function(owned->data);
}

}  // namespace

QuorvaThread::~QuorvaThread() {
  if (_threadHandle != nullptr) {
    CloseHandle(_threadHandle);
  }
}

void QuorvaThread::Start() {
  auto entry = std::make_unique<Entry>(Entry{_threadFunc, _threadData});
  void* const started = support::requireHandle(
      CreateThread(nullptr, 0, runEntry, entry.get(), 0, reinterpret_cast<DWORD*>(_threadID)), "CreateThread");
  (void)entry.release();  // the thread's from here on
  if (_threadHandle != nullptr) {
    CloseHandle(_threadHandle);
  }
  _threadHandle = started;
}

void QuorvaThread::WaitUntilDone() {
  if (_threadHandle != nullptr) {
    WaitForSingleObject(_threadHandle, INFINITE);
  }
}

void QuorvaThread::Sleep(int ms) {
  ::Sleep(static_cast<DWORD>(ms));
}

#else

#include <chrono>
#include <utility>

QuorvaThread::~QuorvaThread() {
  if (_threadHandle.joinable()) {
    _threadHandle.detach();
  }
}

void QuorvaThread::Start() {
  std::thread started(_threadFunc, _threadData);
  if (_threadHandle.joinable()) {
    _threadHandle.detach();
  }
  _threadHandle = std::move(started);
}

void QuorvaThread::WaitUntilDone() {
  if (_threadHandle.joinable()) {
    _threadHandle.join();
  }
}

void QuorvaThread::Sleep(int ms) {
  std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

#endif
