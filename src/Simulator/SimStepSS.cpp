#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/DebugLines.h"
#include "Performance_Variables/PVModel.h"
#include "Simulator/EventStep.h"
#include "Simulator/SimulatorClass.h"

bool SimulatorClass::SimStepSS() {
  return step(Cursor::SetAfterwards);
}

short SimulatorClass::GenerateCompleteEventListSS() {
  for (int i = 0; i < TheModel->getNumGroups(); ++i) {
    CurrAction = GroupList[i];
    if (CurrAction->Enabled()) {
      support::debugLine(3, "Current Action Enabled");
      support::require(CurrEvent != nullptr, "SimStepSS.cpp");
      schedule(CurrAction);
    }
    support::debugLine(3, "After if Enabled");
  }
  return 0;
}
