#include "Simulator/CPUTime.h"

#include <ctime>

namespace {

double clockReading() {
  return static_cast<double>(std::clock());
}

}  // namespace

void CPUTime::Start() {
  _initialCPUClock = clockReading();
  _initialSYSClock = 0.0;
}

double CPUTime::GetTime() const {
  return (clockReading() - _initialCPUClock) / static_cast<double>(CLOCKS_PER_SEC);
}
