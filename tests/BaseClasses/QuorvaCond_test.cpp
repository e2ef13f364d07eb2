#include "BaseClasses/QuorvaCond.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace {

class CondProbe : public QuorvaCond {
 public:
  using QuorvaCond::_waiters_done;
  using QuorvaCond::_was_broadcast;

  int waiters() {
    const std::lock_guard lock(_waiters_count_lock);
    return _waiters_count;
  }
  void awaitWaiters(int count) {
    while (waiters() != count) {
      std::this_thread::yield();
    }
  }
};

TEST(QuorvaCondTest, ASignalWithoutAWaiterIsForgotten) {
  QuorvaMutex mutex;
  CondProbe condition;
  EXPECT_EQ(condition.Signal(), 0);
  std::atomic<bool> isThrough = false;
  std::thread waiter([&] {
    const support::MutexHolder holder(mutex);
    EXPECT_EQ(condition.Wait(mutex), 0);
    isThrough = true;
  });
  condition.awaitWaiters(1);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  mutex.Get();  // Wait has given the mutex back
  EXPECT_FALSE(isThrough);
  mutex.Release();
  condition.Signal();
  waiter.join();
  EXPECT_TRUE(isThrough);
  EXPECT_EQ(condition.waiters(), 0);
}

TEST(QuorvaCondTest, EachSignalLetsOneWaiterThrough) {
  constexpr int kWaiters = 3;
  QuorvaMutex mutex;
  CondProbe condition;
  int through = 0;
  std::vector<std::thread> waiters;
  for (int i = 0; i < kWaiters; ++i) {
    waiters.emplace_back([&] {
      const support::MutexHolder holder(mutex);
      condition.Wait(mutex);
      ++through;
    });
  }
  condition.awaitWaiters(kWaiters);
  for (int signals = 1; signals <= kWaiters; ++signals) {
    condition.Signal();
    condition.awaitWaiters(kWaiters - signals);
  }
  for (std::thread& waiter : waiters) {
    waiter.join();
  }
  EXPECT_EQ(through, kWaiters);
}

TEST(QuorvaCondTest, ASignalReachesTheWaiterOfItsTimeAndNoLaterOne) {
  QuorvaMutex mutex;
  CondProbe condition;
  bool isThrough = false;
  std::thread waiter([&] {
    const support::MutexHolder holder(mutex);
    condition.Wait(mutex);
    isThrough = true;
    condition.Signal();
  });
  condition.awaitWaiters(1);
  const support::MutexHolder holder(mutex);  // only now does the waiter wait, as it has given the mutex back
  condition.Signal();
  condition.Wait(mutex);  // comes too late for that signal
  EXPECT_TRUE(isThrough);
  waiter.join();
}

TEST(QuorvaCondTest, HandsWorkBackAndForthWithoutLosingASignal) {
  constexpr int kRounds = 2000;
  QuorvaMutex mutex;
  CondProbe changed;
  int turn = 0;
  const auto play = [&](int mine) {
    for (int i = 0; i < kRounds; ++i) {
      const support::MutexHolder holder(mutex);
      while (turn % 2 != mine) {
        changed.Wait(mutex);
      }
      ++turn;
      changed.Signal();
    }
  };
  std::thread other(play, 1);
  play(0);
  other.join();
  EXPECT_EQ(turn, 2 * kRounds);
}

TEST(QuorvaCondTest, TheLastWaiterOfABroadcastTellsThatAllAreThrough) {
  QuorvaMutex mutex;
  CondProbe condition;
  condition._was_broadcast = 1;
  std::thread waiter([&] {
    const support::MutexHolder holder(mutex);
    condition.Wait(mutex);
  });
  condition.awaitWaiters(1);
  condition.Signal();
  condition._waiters_done.wait();  // hangs if the waiter does not tell
  waiter.join();
  EXPECT_EQ(condition.waiters(), 0);
}

TEST(QuorvaCondTest, AfterASignalTheOnlyWaiterDoesNotTellOfTheEndOfABroadcast) {
  QuorvaMutex mutex;
  CondProbe condition;
  std::thread waiter([&] {
    const support::MutexHolder holder(mutex);
    condition.Wait(mutex);
  });
  condition.awaitWaiters(1);
  condition.Signal();
  waiter.join();
  std::atomic<bool> isTold = false;
  std::thread listener([&] {
    condition._waiters_done.wait();
    isTold = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_FALSE(isTold);
  condition._waiters_done.set();
  listener.join();
}

TEST(QuorvaCondTest, AnAutoResetEventLetsOneWaiterThroughForOneSet) {
  support::AutoResetEvent event;
  event.set();
  event.set();  // already set
  event.wait();
  std::atomic<bool> isThrough = false;
  std::thread waiter([&] {
    event.wait();
    isThrough = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_FALSE(isThrough);
  event.set();
  waiter.join();
  EXPECT_TRUE(isThrough);
}

}  // namespace
