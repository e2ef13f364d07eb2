#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/TraceFileContainer.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/PerformanceVariableNode.h"
#include "Simulator/DataPacket.h"
#include "Simulator/EventList.h"
#include "Simulator/EventStep.h"
#include "Simulator/SimulatorClass.h"

namespace {

void debugState(const std::vector<char>& state) {
  support::debugLine(2, "Size of original state", " = ", state.size());
  if (GlobalDebugLevel > 3) [[unlikely]] {
    for (std::size_t i = 0; i < state.size(); ++i) {
      support::debugLine(3, "OriginalState[", i, "] = ", static_cast<int>(state[i]));
    }
  }
}

}  // namespace

void SimulatorClass::TerminatingSimulation() {
  makeLoopObjects();
  std::vector<char> OrigState(static_cast<std::size_t>(TheModel->StateSize()));
  TheModel->CurrentState(OrigState.data());
  debugState(OrigState);
  std::int32_t batch = 0;
  const std::int32_t NextReport = ReportSize + batch;
  GenerateInitialEnabledList();
  startCpuTimer();
  CurPacket = CreateDataPacket(NumPVs);
  CurSqrPacket = CreateDataPacket(NumPVs);
  trace->newBatch();

  while (SimControl == GO) {
    scheduleBatch();
    const double StopTime = TheModel->Simulation_Stop_Time;
    fireUpTo(StopTime);
    trace->newBatch();
    TheModel->EndAccumulate(StopTime);
    storeObservations(batch);
    ++batch;
    ++BatchRuns;
    bool SendResults = batch == NextReport;
    if (MaxNumOfBatches > 0 && BatchRuns >= MaxNumOfBatches) {
      SimControl = STOPSOFT;
      SendResults = true;
    }
    if (SendResults) {
      reportObservations(batch);
      batch = 0;
    }
    TheModel->SetState(OrigState.data());
    TheModel->PVReset();
  }
  deleteLoopObjects();
}

void SimulatorClass::scheduleBatch() {
  CurrentTime = 0.0;
  TheEventList->ClearEventList();
  for (BaseActionClass* const group : TheReactivationList) {
    group->Reactivation = false;
  }
  spareReactivationNodes_.splice(spareReactivationNodes_.begin(), TheReactivationList);
  if (GenerateCompleteEventList() != 0) {
    std::cerr << "ERROR: unable to generate event list\n";
    std::exit(1);
  }
  TempAction = NullAction;
}

void SimulatorClass::fireUpTo(double StopTime) {
  if (trace->getTraceLevel() > 0) {
    trace->printInitialState();
  }
  if (!chooseNextEvent()) {
    return;
  }
  // An event due exactly at StopTime still fires.
  if (!stepsAreTraced()) {
    while (!(StopTime < CurrentTime) && untracedStep(Cursor::SetFirst)) {
    }
    return;
  }
  while (!(StopTime < CurrentTime) && watchedStep(Cursor::SetFirst)) {
    if (trace->getTraceLevel() > 2) {
      trace->printState();
    }
  }
}

void SimulatorClass::storeObservations(std::int32_t batch) {
  PerformanceVariableNode** const ThePVList = TheModel->PerformanceVariableList;
  for (std::int32_t i = 0; i < NumPVs; ++i) {
    CurPacket->SetObs(i, batch, ThePVList[i]->TotalReward);
    CurSqrPacket->SetObs(i, batch, ThePVList[i]->TotalRewardSqr);
  }
}

void SimulatorClass::reportObservations(std::int32_t batch) {
  for (std::int32_t i = 0; i < NumPVs; ++i) {
    CurPacket->SetNumObs(i, batch);
    CurSqrPacket->SetNumObs(i, batch);
  }
  CPUSeconds = cpuSeconds();
  CheckReportSize(CPUSeconds);
}
