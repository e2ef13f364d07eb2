#include "BaseClasses/QuorvaQueue.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <deque>
#include <random>
#include <thread>
#include <vector>

namespace {

/// A queue of pointers, as the simulator has them, with its ring in sight.
class QueueProbe : public QuorvaQueue<int*> {
 public:
  using QuorvaQueue::_endWrap;
  using QuorvaQueue::_queueEnd;
  using QuorvaQueue::_queueFront;
  using QuorvaQueue::QuorvaQueue;
};

class QuorvaQueueTest : public testing::Test {
 protected:
  int* item(std::size_t i) { return &items_[i]; }

 private:
  std::array<int, 64> items_{};
};

TEST_F(QuorvaQueueTest, ANewQueueIsEmptyAndPopsNull) {
  QueueProbe queue(3);
  EXPECT_EQ(queue.GetCount(), 0);
  EXPECT_EQ(queue.Pop(), nullptr);
  EXPECT_EQ(queue._queueFront, 0);
  EXPECT_EQ(queue._queueEnd, 0);
  EXPECT_FALSE(queue._endWrap);
}

TEST_F(QuorvaQueueTest, AllPlacesOfTheRingAreUsable) {
  QueueProbe queue(2);
  queue.Push(item(0));
  queue.Push(item(1));
  EXPECT_EQ(queue.GetCount(), 2);
  EXPECT_EQ(queue._queueFront, queue._queueEnd);
  EXPECT_TRUE(queue._endWrap);
}

TEST_F(QuorvaQueueTest, APushOnAFullQueueIsDroppedSilently) {
  QueueProbe queue(2);
  queue.Push(item(0));
  queue.Push(item(1));
  queue.Push(item(2));
  EXPECT_EQ(queue.GetCount(), 2);
  EXPECT_EQ(queue.Pop(), item(0));
  EXPECT_EQ(queue.Pop(), item(1));
  EXPECT_EQ(queue.Pop(), nullptr);
}

TEST_F(QuorvaQueueTest, CountsAcrossTheEndOfTheArrayAfterAWrap) {
  QueueProbe queue(3);
  queue.Push(item(0));
  queue.Push(item(1));
  EXPECT_EQ(queue.Pop(), item(0));
  EXPECT_EQ(queue.Pop(), item(1));
  queue.Push(item(2));  // place 2: the end wraps
  queue.Push(item(3));  // place 0
  EXPECT_EQ(queue._queueFront, 2);
  EXPECT_EQ(queue._queueEnd, 1);
  EXPECT_TRUE(queue._endWrap);
  EXPECT_EQ(queue.GetCount(), 2);
  EXPECT_EQ(queue.Pop(), item(2));  // the front wraps too
  EXPECT_FALSE(queue._endWrap);
  EXPECT_EQ(queue.GetCount(), 1);
  EXPECT_EQ(queue.Pop(), item(3));
  EXPECT_EQ(queue.GetCount(), 0);
}

TEST_F(QuorvaQueueTest, ADroppedPushLeavesRoomForTheNextOneAfterAPop) {
  QueueProbe queue(1);
  queue.Push(item(0));
  queue.Push(item(1));
  EXPECT_EQ(queue.Pop(), item(0));
  queue.Push(item(2));
  EXPECT_EQ(queue.GetCount(), 1);
  EXPECT_EQ(queue.Pop(), item(2));
  EXPECT_EQ(queue.Pop(), nullptr);
}

TEST_F(QuorvaQueueTest, AgreesWithAPlainQueueOverTenThousandRandomSteps) {
  for (const int capacity : {1, 2, 3, 50}) {
    QueueProbe queue(capacity);
    std::deque<int*> shadow;
    std::mt19937 random(4711);
    for (int step = 0; step < 10000; ++step) {
      SCOPED_TRACE(testing::Message() << "capacity " << capacity << ", step " << step);
      if (random() % 2 == 0) {
        int* const pushed = item(random() % 64);
        queue.Push(pushed);
        if (shadow.size() < static_cast<std::size_t>(capacity)) {
          shadow.push_back(pushed);
        }
      } else {
        int* const expected = shadow.empty() ? nullptr : shadow.front();
        if (!shadow.empty()) {
          shadow.pop_front();
        }
        ASSERT_EQ(queue.Pop(), expected);
      }
      ASSERT_EQ(queue.GetCount(), static_cast<int>(shadow.size()));
    }
  }
}

TEST_F(QuorvaQueueTest, LosesNothingBetweenTwoThreads) {
  constexpr int kItems = 20000;
  std::vector<int> values(kItems);
  QuorvaQueue<int*> queue(50);
  std::thread producer([&] {
    for (int& value : values) {
      while (queue.GetCount() == 50) {
        std::this_thread::yield();
      }
      queue.Push(&value);
    }
  });
  for (int i = 0; i < kItems; ++i) {
    int* popped = queue.Pop();
    while (popped == nullptr) {
      std::this_thread::yield();
      popped = queue.Pop();
    }
    ASSERT_EQ(popped, &values[static_cast<std::size_t>(i)]) << "item " << i;
  }
  producer.join();
}

TEST_F(QuorvaQueueTest, FourProducersAndThreeConsumersMeetEachItemOnce) {
  constexpr int kProducers = 4;
  constexpr int kItemsOfEach = 5000;
  std::vector<int> takings(kProducers * kItemsOfEach);
  QuorvaQueue<int*> queue(static_cast<int>(takings.size()));  // never full, as a full one drops
  std::atomic<int> taken = 0;
  std::vector<std::thread> threads;
  for (int producer = 0; producer < kProducers; ++producer) {
    threads.emplace_back([&, producer] {
      for (int i = 0; i < kItemsOfEach; ++i) {
        queue.Push(&takings[static_cast<std::size_t>(producer * kItemsOfEach + i)]);
      }
    });
  }
  for (int consumer = 0; consumer < 3; ++consumer) {
    threads.emplace_back([&] {
      while (taken < kProducers * kItemsOfEach) {
        if (int* const item = queue.Pop(); item != nullptr) {
          ++*item;
          ++taken;
        } else {
          std::this_thread::yield();
        }
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(takings, std::vector<int>(takings.size(), 1));
  EXPECT_EQ(queue.GetCount(), 0);
}

}  // namespace
