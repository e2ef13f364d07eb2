#include "BaseClasses/QuorvaThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

struct Visit {
  std::atomic<int> count = 0;
  std::atomic<std::thread::id> thread;
};

std::uint32_t visit(void* data) {
  auto* const seen = static_cast<Visit*>(data);
  seen->thread = std::this_thread::get_id();
  ++seen->count;
  return 7;
}

TEST(QuorvaThreadTest, RunsTheEntryWithItsDataOnAThreadOfItsOwn) {
  Visit seen;
  QuorvaThread thread(visit, &seen);
  EXPECT_EQ(seen.count, 0);  // not before Start
  thread.Start();
  thread.WaitUntilDone();
  EXPECT_EQ(seen.count, 1);
  EXPECT_NE(seen.thread.load(), std::this_thread::get_id());
}

TEST(QuorvaThreadTest, WaitingForWhatIsNotRunningReturnsAtOnce) {
  Visit seen;
  QuorvaThread thread(visit, &seen);
  thread.WaitUntilDone();
  EXPECT_EQ(seen.count, 0);
  thread.Start();
  thread.WaitUntilDone();
  thread.WaitUntilDone();
  EXPECT_EQ(seen.count, 1);
}

TEST(QuorvaThreadTest, CanBeStartedAgain) {
  Visit seen;
  QuorvaThread thread(visit, &seen);
  thread.Start();
  thread.WaitUntilDone();
  thread.Start();
  thread.WaitUntilDone();
  EXPECT_EQ(seen.count, 2);
}

TEST(QuorvaThreadTest, AThreadRunsOnWhenAnotherIsStarted) {
  Visit seen;
  QuorvaThread thread(visit, &seen);
  thread.Start();
  thread.Start();
  thread.WaitUntilDone();  // for the second
  const auto limit = Clock::now() + std::chrono::seconds(10);
  while (seen.count < 2 && Clock::now() < limit) {
    std::this_thread::yield();
  }
  EXPECT_EQ(seen.count, 2);
}

TEST(QuorvaThreadTest, AThreadRunsOnWhenItsObjectGoes) {
  Visit seen;
  {
    QuorvaThread thread(visit, &seen);
    thread.Start();
  }
  const auto limit = Clock::now() + std::chrono::seconds(10);
  while (seen.count == 0 && Clock::now() < limit) {
    std::this_thread::yield();
  }
  EXPECT_EQ(seen.count, 1);
}

TEST(QuorvaThreadTest, SleepSuspendsForAtLeastTheMilliseconds) {
  const auto start = Clock::now();
  QuorvaThread::Sleep(30);
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(30));
}

}  // namespace
