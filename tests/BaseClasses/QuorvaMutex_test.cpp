#include "BaseClasses/QuorvaMutex.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

class MutexProbe : public QuorvaMutex {
 public:
  using QuorvaMutex::_globalID;
  using QuorvaMutex::_name;
};

TEST(QuorvaMutexTest, TheFirstOfAProcessIsMutex1AndTheNextMutex2) {
  // A process of its own: the numbers run over the whole process.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        const MutexProbe first;
        const MutexProbe second;
        std::cerr << first._name << ' ' << second._name << ' ' << MutexProbe::_globalID << std::endl;
        std::exit(0);
      },
      testing::ExitedWithCode(0), "^mutex1 mutex2 2\n$");
}

TEST(QuorvaMutexTest, GetWaitsUntilTheHolderReleases) {
  QuorvaMutex mutex;
  std::vector<std::string> order;
  mutex.Get();
  std::thread waiter([&] {
    mutex.Get();
    order.emplace_back("waiter");
    mutex.Release();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  order.emplace_back("holder");
  mutex.Release();
  waiter.join();
  EXPECT_EQ(order, (std::vector<std::string>{"holder", "waiter"}));
}

TEST(QuorvaMutexTest, HoldersNeverMeet) {
  constexpr int kRounds = 20000;
  QuorvaMutex mutex;
  int counter = 0;
  const auto count = [&] {
    for (int i = 0; i < kRounds; ++i) {
      const support::MutexHolder holder(mutex);
      ++counter;
    }
  };
  std::thread other(count);
  count();
  other.join();
  EXPECT_EQ(counter, 2 * kRounds);
}

}  // namespace
