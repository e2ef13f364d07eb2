#include "Performance_Variables/IntervalOfTimeImpulse.h"

#include <iostream>

#include "BaseClasses/DebugLines.h"

void IntervalOfTimeImpulse::completeAccumulation(double doneTime) {
  if (TimeAveraged) {
    Impulse = Impulse / (min(doneTime, Stop) - Start);
  }
}

void IntervalOfTimeImpulse::Accumulate(double /*new_time*/, double last_event_time) {
  if (GlobalDebugLevel > 3) [[unlikely]] {
    std::cout << "Impulse Name = " << (Name != nullptr ? Name : "") << " ImpulseNumber: " << ImpulseNumber
              << " WorkerNumber: " << WorkerNumber << std::endl
              << "Accumulating = " << Accumulating << std::endl
              << "Before: Impulse = " << Impulse << std::endl;
  }
  if (last_event_time >= Start && Stop >= last_event_time) {
    Impulse += Impulse_Function(last_event_time);
  }
}

void IntervalOfTimeImpulse::CurrentImpulse() {
  Impulse = Impulse_Function(0.0);
}

void IntervalOfTimeImpulse::Reset() {
  Impulse = 0.0;
  Accumulating = acc_later;
}
