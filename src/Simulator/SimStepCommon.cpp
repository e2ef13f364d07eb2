#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <list>
#include <string>
#include <string_view>

#include "BaseClasses/ActionAffectsElement.h"
#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/TraceFileContainer.h"
#include "Performance_Variables/PVModel.h"
#include "Simulator/Event.h"
#include "Simulator/EventList.h"
#include "Simulator/EventStep.h"
#include "Simulator/PAddress.h"
#include "Simulator/SimulatorClass.h"

namespace {

constexpr std::string_view kInvalidParametersTag = "INVALID_DIST_PARAMS:";

}  // namespace

void SimulatorClass::HandleInvalidDistParams(BaseActionClass* action, std::string text) {
  const std::size_t tag = text.find(kInvalidParametersTag);
  support::requireRuntime(tag != std::string::npos, "false");
  text.erase(tag, kInvalidParametersTag.size());
  std::cerr << "FATAL ERROR: In action " << action->ActionName << ',' << text << std::endl;
  std::exit(1);
}

void SimulatorClass::watchForReactivation(BaseActionClass* group) {
  if (spareReactivationNodes_.empty()) {
    spareReactivationNodes_.push_front(nullptr);
  }
  TheReactivationList.splice(TheReactivationList.begin(), spareReactivationNodes_, spareReactivationNodes_.begin());
  TheReactivationList.front() = group;
  group->Reactivation = true;
  addressOf(group).setReact(TheReactivationList.begin());
}

std::list<BaseActionClass*>::iterator SimulatorClass::dropFromReactivationList(
    std::list<BaseActionClass*>::iterator position) {
  const auto next = std::next(position);
  spareReactivationNodes_.splice(spareReactivationNodes_.begin(), TheReactivationList, position);
  return next;
}

void SimulatorClass::CheckReactivationList() {
  auto position = TheReactivationList.begin();
  while (position != TheReactivationList.end()) {
    BaseActionClass* const action = *position;
    PAddress& address = addressOf(action);
    const auto leave = [&] {
      action->Reactivation = false;
      address.setReactNull();
      return dropFromReactivationList(position);
    };
    if (address.event == nullptr) {
      position = leave();
    } else if (!action->Enabled()) {
      TheEventList->Remove(address.event);
      position = leave();
    } else if (!action->ReactivationFunction()) {
      ++position;
    } else {
      const double delay = sampleOrEnd(action);
      Event& event = **address.event;
      event.exec_time = CurrentTime + delay;
      event.start_time = CurrentTime;
      TheEventList->ModifyKey(address.event);
      position = leave();
      if (action->ReactivationPredicate()) {
        watchForReactivation(action);  // in front of everything still to be looked at
      }
    }
  }
}

void SimulatorClass::RemoveAffectedActions() {
  AffectsAction = TempAction->Affects;
  removeAffected();
  AffectsAction = nullptr;
}

void SimulatorClass::InsertAffectedActions() {
  AffectsAction = TempAction->Affects;
  insertAffected();
  AffectsAction = nullptr;
}

BaseActionClass* SimulatorClass::fireAndShow() {
  TheModel->Accumulate(CurrentTime);
  if constexpr (kTraceCalls) {
    trace->printPreFireAction(CurrAction);
    trace->printFireAction(CurrAction, CurrentTime);
  }
  if constexpr (support::kArcsAreChecked) {
    if (arcCheck_ != nullptr) {
      return arcCheck_->watchFiring([this] { return TheModel->FireAction(CurrAction, CurrentTime); });
    }
  }
  return TheModel->FireAction(CurrAction, CurrentTime);
}

// Not taken in by a run, which seldom has anything that watches.
[[gnu::noinline]] bool SimulatorClass::watchedStep(Cursor cursor) {
  return stepInForm<true>(cursor);
}

void SimulatorClass::endForNoAction() {
  std::cerr << "ERROR: firing \"" << CurrAction->ActionName << "\" at t=" << CurrentTime
            << " gave no action; Fire must return the action that fired" << std::endl;
  std::exit(1);
}

void SimulatorClass::endForNoChoice() {
  std::cerr << "ERROR: no event can be chosen after t=" << CurrentTime
            << ": the activities that fire next tie, and none of them has a positive weight" << std::endl;
  std::exit(1);
}

void SimulatorClass::debugAffectedActions() {
  support::debugLine(GlobalDebugLevel - 1, "Starting to look at the other actions that are affected by the firing");
}

short SimulatorClass::GenerateInitialEnabledList() {
  const int NumGroups = TheModel->getNumGroups();
  NumInitiallyEnabled = 0;
  delete[] InitiallyEnabled;
  InitiallyEnabled = new BaseActionClass*[static_cast<std::size_t>(NumGroups)]();
  for (int i = 0; i < NumGroups; ++i) {
    CurrAction = GroupList[i];
    if (CurrAction->Enabled()) {
      support::debugLine(3, "Current Action Enabled");
      InitiallyEnabled[NumInitiallyEnabled] = CurrAction;
      ++NumInitiallyEnabled;
      support::debugLine(3, "End if");
    }
  }
  if (NumInitiallyEnabled < NumGroups / 2) {
    auto* const exact = new BaseActionClass*[static_cast<std::size_t>(NumInitiallyEnabled)]();
    std::copy_n(InitiallyEnabled, NumInitiallyEnabled, exact);
    delete[] InitiallyEnabled;
    InitiallyEnabled = exact;
  }
  return 0;
}
