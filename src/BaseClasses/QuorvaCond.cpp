#include "BaseClasses/QuorvaCond.h"

namespace support {

std::uint64_t Semaphore::lineUp() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return lined_++;
}

void Semaphore::waitAt(std::uint64_t place) {
  std::unique_lock<std::mutex> lock(mutex_);
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

void AutoResetEvent::set() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    isSet_ = true;
  }
  changed_.notify_one();
}

void AutoResetEvent::wait() {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait(lock, [this] { return isSet_; });
  isSet_ = false;
}

}  // namespace support

int QuorvaCond::Wait(QuorvaMutex& mutex) {
  {
    const std::lock_guard<std::mutex> lock(_waiters_count_lock);
    ++_waiters_count;
  }
  const std::uint64_t place = _sema.lineUp();
  mutex.Release();
  _sema.waitAt(place);

  bool isLastOfBroadcast = false;
  {
    const std::lock_guard<std::mutex> lock(_waiters_count_lock);
    --_waiters_count;
    isLastOfBroadcast = _was_broadcast != 0 && _waiters_count == 0;
  }
  if (isLastOfBroadcast) {
    _waiters_done.set();
  }
  mutex.Get();
  return 0;
}

int QuorvaCond::Signal() {
  bool hasWaiters = false;
  {
    const std::lock_guard<std::mutex> lock(_waiters_count_lock);
    hasWaiters = _waiters_count > 0;
  }
  if (hasWaiters) {
    _sema.release();
  }
  return 0;
}
