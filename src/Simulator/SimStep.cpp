#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"
#include "Simulator/EventStep.h"
#include "Simulator/SimulatorClass.h"

namespace {

constexpr const char* kSourceName = "SimStep.cpp";

}  // namespace

bool SimulatorClass::SimStep() {
  return step(Cursor::SetFirst);
}

short SimulatorClass::GenerateCompleteEventList() {
  for (int i = 0; i < NumInitiallyEnabled; ++i) {
    CurrAction = InitiallyEnabled[i];
    support::require(CurrAction->Enabled(), kSourceName);
    // On purpose a second time: both halves of an activity's enabling pair are then true, so that the batch's first
    // EnablingChange compares with an enabled activity.
    static_cast<void>(CurrAction->Enabled());
    support::require(CurrEvent != nullptr, kSourceName);
    schedule(CurrAction);
  }
  return 0;
}
