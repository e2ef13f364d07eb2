#include "BaseClasses/QuorvaCond.h"

#include <mutex>

#ifdef _WIN32
#include "BaseClasses/WindowsHandles.h"
#endif

namespace support {

#ifdef _WIN32

namespace {

CRITICAL_SECTION* sectionOf(void* section) {
  return static_cast<CRITICAL_SECTION*>(section);
}

}  // namespace

CriticalSection::CriticalSection() : section_(new CRITICAL_SECTION) {
  InitializeCriticalSection(sectionOf(section_));
}

CriticalSection::~CriticalSection() {
  DeleteCriticalSection(sectionOf(section_));
  delete sectionOf(section_);
}

void CriticalSection::lock() {
  EnterCriticalSection(sectionOf(section_));
}

void CriticalSection::unlock() {
  LeaveCriticalSection(sectionOf(section_));
}

Semaphore::Semaphore()
    : handle_(requireHandle(CreateSemaphoreA(nullptr, 0, static_cast<LONG>(kMaximum), nullptr), "CreateSemaphoreA")) {}

Semaphore::~Semaphore() {
  CloseHandle(handle_);
}

void Semaphore::giveBackAndWait(QuorvaMutex& mutex) {
  SignalObjectAndWait(mutex.handle(), handle_, INFINITE, FALSE);
}

void Semaphore::release() {
  ReleaseSemaphore(handle_, 1, nullptr);
}

AutoResetEvent::AutoResetEvent()
    : handle_(requireHandle(CreateEventA(nullptr, FALSE, FALSE, nullptr), "CreateEventA")) {}

AutoResetEvent::~AutoResetEvent() {
  CloseHandle(handle_);
}

void AutoResetEvent::set() {
  SetEvent(handle_);
}

void AutoResetEvent::setAndGet(QuorvaMutex& mutex) {
  SignalObjectAndWait(handle_, mutex.handle(), INFINITE, FALSE);
}

void AutoResetEvent::wait() {
  WaitForSingleObject(handle_, INFINITE);
}

#else

Semaphore::Semaphore() = default;
Semaphore::~Semaphore() = default;

void Semaphore::giveBackAndWait(QuorvaMutex& mutex) {
  std::unique_lock<std::mutex> lock(mutex_);
  const std::uint64_t place = lined_++;
  mutex.Release();
  changed_.wait(lock, [&] { return place < released_; });
}

void Semaphore::release() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (released_ >= lined_ + kMaximum) {
      return;
    }
    ++released_;
  }
  changed_.notify_all();  // the one whose turn it is may be any of them
}

AutoResetEvent::AutoResetEvent() = default;
AutoResetEvent::~AutoResetEvent() = default;

void AutoResetEvent::set() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    isSet_ = true;
  }
  changed_.notify_one();
}

void AutoResetEvent::setAndGet(QuorvaMutex& mutex) {
  set();
  mutex.Get();
}

void AutoResetEvent::wait() {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait(lock, [this] { return isSet_; });
  isSet_ = false;
}

#endif

}  // namespace support

int QuorvaCond::Wait(QuorvaMutex& mutex) {
  {
    const std::lock_guard lock(_waiters_count_lock);
    ++_waiters_count;
  }
  _sema.giveBackAndWait(mutex);

  bool isLastOfBroadcast = false;
  {
    const std::lock_guard lock(_waiters_count_lock);
    --_waiters_count;
    isLastOfBroadcast = _was_broadcast != 0 && _waiters_count == 0;
  }
  if (isLastOfBroadcast) {
    _waiters_done.setAndGet(mutex);
  } else {
    mutex.Get();
  }
  return 0;
}

int QuorvaCond::Signal() {
  bool hasWaiters = false;
  {
    const std::lock_guard lock(_waiters_count_lock);
    hasWaiters = _waiters_count > 0;
  }
  if (hasWaiters) {
    _sema.release();
  }
  return 0;
}
