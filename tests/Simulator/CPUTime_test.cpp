#include "Simulator/CPUTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <thread>

namespace {

/// Of a number of the clock's ticks, which are whole: a difference of two readings loses nothing.
double secondsOf(std::clock_t ticks) {
  return static_cast<double>(ticks) / static_cast<double>(CLOCKS_PER_SEC);
}

/// Works until the process's clock has gone on by `seconds`.
void workFor(double seconds) {
  const std::clock_t start = std::clock();
  while (secondsOf(std::clock() - start) < seconds) {
  }
}

TEST(CPUTimeTest, CountsSecondsOfTheProcesssClockSinceStart) {
  const std::clock_t before = std::clock();
  CPUTime timer;
  timer.Start();
  const std::clock_t started = std::clock();
  workFor(0.05);
  const std::clock_t asked = std::clock();
  const double seconds = timer.GetTime();
  const std::clock_t after = std::clock();
  EXPECT_GE(seconds, secondsOf(asked - started));
  EXPECT_LE(seconds, secondsOf(after - before));
}

TEST(CPUTimeTest, ASecondStartCountsAnew) {
  CPUTime timer;
  timer.Start();
  workFor(0.05);
  timer.Start();
  EXPECT_LT(timer.GetTime(), 0.05);
}

#ifndef _WIN32
TEST(CPUTimeTest, TimeSpentWaitingDoesNotCount) {
  CPUTime timer;
  timer.Start();
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_LT(timer.GetTime(), 0.1);
}
#endif

}  // namespace
