#pragma once

#include "ArcCheck/ArcCheck.h"
#include "ArcCheck/ArcsAreChecked.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/TraceFileContainer.h"
#include "Performance_Variables/PVModel.h"
#include "Simulator/Event.h"
#include "Simulator/EventList.h"
#include "Simulator/SimulatorClass.h"

#ifdef QUORVA_STEP_WITHOUT_TRACE
inline constexpr bool kTraceCalls = false;  // for scripts/check-trace-cost alone, which compares the two
#else
inline constexpr bool kTraceCalls = true;
#endif

// What every step does first and last. Both kinds of step take it in whole, as a call would cost about as much as what
// it does.

inline BaseActionClass* SimulatorClass::fireCurrentAction() {
  if constexpr (support::kArcsAreChecked) {
    if (arcCheck_ != nullptr) {
      return arcCheck_->watchFiring([this] { return TheModel->FireAction(CurrAction, CurrentTime); });
    }
  }
  return TheModel->FireAction(CurrAction, CurrentTime);
}

inline void SimulatorClass::fireNextEvent() {
  TheEventList->Remove(NextEvent);
  TheModel->Accumulate(CurrentTime);  // on the marking before the firing
  const bool traced = kTraceCalls && trace->hasSinks();
  if (traced) [[unlikely]] {
    trace->printPreFireAction(CurrAction);
    trace->printFireAction(CurrAction, CurrentTime);
  }
  TempAction = fireCurrentAction();
  if (TempAction == nullptr) [[unlikely]] {
    endForNoAction();
  }
  ++_fireActionCount;
  if (traced) [[unlikely]] {
    trace->printPostFireAction(CurrAction, TempAction);
  }
  if (GlobalDebugLevel != 0) [[unlikely]] {
    debugAffectedActions();
  }
}

inline bool SimulatorClass::chooseNextEvent() {
  NextEvent = TheEventList->Earliest();
  if (NextEvent == nullptr) {
    return false;
  }
  const Event* const event = *NextEvent;
  if (event == nullptr) [[unlikely]] {
    endForNoChoice();
  }
  CurrentTime = event->exec_time;
  CurrAction = event->action_ptr;
  return true;
}
