#include "Simulator/CPUTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <thread>

namespace {

double clockSeconds() {
  return static_cast<double>(std::clock()) / static_cast<double>(CLOCKS_PER_SEC);
}

/// Works until the process's clock has gone on by `seconds`.
void workFor(double seconds) {
  const double end = clockSeconds() + seconds;
  while (clockSeconds() < end) {
  }
}

TEST(CPUTimeTest, CountsSecondsOfTheProcesssClockSinceStart) {
  const double before = clockSeconds();
  CPUTime timer;
  timer.Start();
  const double started = clockSeconds();
  workFor(0.05);
  const double asked = clockSeconds();
  const double seconds = timer.GetTime();
  const double after = clockSeconds();
  EXPECT_GE(seconds, asked - started);
  EXPECT_LE(seconds, after - before);
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
