#pragma once

#include <cstddef>

#include "ArcCheck/ArcCheck.h"
#include "ArcCheck/ArcsAreChecked.h"
#include "BaseClasses/ActionAffectsElement.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/CacheLine.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/TraceFileContainer.h"
#include "Performance_Variables/PVModel.h"
#include "Simulator/Event.h"
#include "Simulator/EventList.h"
#include "Simulator/PAddress.h"
#include "Simulator/SimulatorClass.h"

#ifdef QUORVA_STEP_WITHOUT_TRACE
inline constexpr bool kTraceCalls = false;  // for scripts/check-trace-cost alone, which compares the two
#else
inline constexpr bool kTraceCalls = true;
#endif

// One firing, from the event that leaves the list to the choice of the next. Both kinds of run take it in whole, as a call
// would cost about as much as what it does. It comes in two forms: a watched step shows itself to the trace, to the debug
// lines and to the check of arcs, and the other one, which asks for none of them, is what a run is made of.

inline bool SimulatorClass::stepsAreTraced() const {
  return kTraceCalls && trace->hasSinks();
}

inline bool SimulatorClass::step(Cursor cursor) {
  return stepsAreTraced() ? watchedStep(cursor) : untracedStep(cursor);
}

inline bool SimulatorClass::untracedStep(Cursor cursor) {
  if (support::kArcsAreChecked || GlobalDebugLevel != 0) [[unlikely]] {
    return watchedStep(cursor);
  }
  return stepInForm<false>(cursor);
}

template <bool kWatched>
inline bool SimulatorClass::stepInForm(Cursor cursor) {
  fireNextEvent<kWatched>();
  if constexpr (kWatched) {
    if (GlobalDebugLevel != 0) {
      debugAffectedActions();
    }
  }
  updateAffectedActions(cursor);
  return chooseNextEvent();
}

template <bool kWatched>
inline void SimulatorClass::fireNextEvent() {
  TheEventList->Remove(NextEvent);
  fetchAhead();
  BaseActionClass* fired = nullptr;
  if constexpr (kWatched) {
    fired = fireAndShow();
  } else {
    PVModel& model = *TheModel;
    model.takeRewards(CurrentTime);  // on the marking before the firing
    fired = model.fire(CurrAction, CurrentTime);
  }
  TempAction = fired;
  if (fired == nullptr) [[unlikely]] {
    endForNoAction();
  }
  ++_fireActionCount;
  if constexpr (kWatched && kTraceCalls) {
    trace->printPostFireAction(CurrAction, TempAction);
  }
}

// A firing of a large model reads a dozen cache lines that no firing has read for long. Which group fires next is all but
// certain once the event list has a new root, so that they can be asked for one firing ahead: first the groups
// themselves, then, as these have come, what they lead to. Short lists are spared the trouble, as their models lie in the
// caches anyway.

inline void SimulatorClass::fetchAhead() const {
  BaseActionClass* const next = TheEventList->groupLikelyNext();
  if (next == nullptr) {
    return;
  }
  fetchGroup(next);
  for (const ActionAffectsElement* element = CurrAction->Affects; element != nullptr; element = element->next) {
    fetchGroup(element->Action);
  }
}

inline void SimulatorClass::fetchGroup(const BaseActionClass* group) {
  constexpr std::size_t kHeadOfGroup = 32;  // up to what a step reads of any group
  const auto* const bytes = reinterpret_cast<const std::byte*>(group);
  __builtin_prefetch(bytes);
  __builtin_prefetch(bytes + kHeadOfGroup);
  // Behind the group's own fields an activity has its enabling, and a model's activity the pointers to its marks.
  __builtin_prefetch(bytes + sizeof(BaseGroupClass));
  __builtin_prefetch(bytes + sizeof(BaseGroupClass) + support::kCacheLine);
}

inline void SimulatorClass::fetchAheadOf(const BaseActionClass* group) {
  if (group != nullptr) {
    __builtin_prefetch(group->Affects);
    __builtin_prefetch(group->EventPointer);
  }
}

inline void SimulatorClass::updateAffectedActions(Cursor cursor) {
  if (!TheReactivationList.empty()) [[unlikely]] {
    if (cursor == Cursor::SetFirst) {
      AffectsAction = TempAction->Affects;
    }
    CheckReactivationList();
  }
  AffectsAction = TempAction->Affects;
  removeAffected();
  fetchAheadOf(TheEventList->groupLikelyNext());
  insertAffected();
  AffectsAction = nullptr;
}

inline PAddress& SimulatorClass::addressOf(const BaseActionClass* group) {
  return *static_cast<PAddress*>(group->EventPointer);
}

inline void SimulatorClass::removeAffected() {
  for (const ActionAffectsElement* element = TempAction->Affects; element != nullptr; element = element->next) {
    BaseActionClass* const group = element->Action;
    PAddress& address = addressOf(group);
    if (address.event == nullptr) {
      continue;
    }
    if (group->EnablingChange() || (group->Reactivation && group->ReactivationFunction())) {
      unschedule(group, address);
    }
  }
}

inline void SimulatorClass::unschedule(BaseActionClass* group, PAddress& address) {
  group->Reactivation = false;
  TheEventList->Remove(address.event);
  if (!address.isReactNull()) [[unlikely]] {
    dropFromReactivationList(address.getReact());
    address.setReactNull();
  }
}

inline void SimulatorClass::insertAffected() {
  for (const ActionAffectsElement* element = TempAction->Affects; element != nullptr; element = element->next) {
    BaseActionClass* const group = element->Action;
    // On purpose in this order: the asking moves the group's enabling pair on, whether or not it is scheduled.
    if (group->Enabled() && addressOf(group).event == nullptr) {
      schedule(group);
    }
  }
}

inline void SimulatorClass::schedule(BaseActionClass* group) {
  Event& event = *CurrEvent;
  event.exec_time = CurrentTime + sampleOrEnd(group);
  event.start_time = CurrentTime;
  event.action_ptr = group;
  if (group->ReactivationPredicate()) {
    watchForReactivation(group);
  }
  TheEventList->Insert(&event);
}

inline bool SimulatorClass::chooseNextEvent() {
  NextEvent = TheEventList->Earliest();
  if (NextEvent == nullptr) [[unlikely]] {
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
