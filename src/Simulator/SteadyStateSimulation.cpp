#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <utility>
#include <vector>

#include "BaseClasses/TraceFileContainer.h"
#include "BaseClasses/Traceprintf.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/PerformanceVariableNode.h"
#include "Simulator/DataPacket.h"
#include "Simulator/EventStep.h"
#include "Simulator/Heap.h"
#include "Simulator/SimulatorClass.h"

namespace {

constexpr int kInTransient = -1;  // completed batches of a variable whose transient is not over

constexpr const char* kAbsorbingState =
    "Simulator encountered an absorbing state and is unable to proceed.  Terminating run.";

/// A run that is to stop at once is not called back to stop in good order.
void raiseTo(std::int32_t value, std::int32_t& simControl) {
  simControl = std::max(simControl, value);
}

/// An event of an infinite delay never comes: it is as good as none.
bool isNever(double time) {
  return time == std::numeric_limits<double>::infinity();
}

/// A window without length would come due for ever at one and the same time.
void requireBatchLength(const PerformanceVariableNode& variable) {
  if (variable.batchSize > 0.0) {
    return;
  }
  std::cerr << "ERROR: the batches of performance variable \"" << variable.Name << "\" have the length "
            << variable.batchSize << "; a steady-state variable's stop must lie behind its start" << std::endl;
  std::exit(1);
}

}  // namespace

void SimulatorClass::SteadyStateSimulation() {
  makeLoopObjects();
  std::vector<char> OrigState(static_cast<std::size_t>(TheModel->StateSize()));
  TheModel->CurrentState(OrigState.data());  // taken as in a terminating run, though nothing goes back to it
  std::vector<int> ResultCounters(static_cast<std::size_t>(NumPVs));
  std::vector<int> ResultSqrCounters(static_cast<std::size_t>(NumPVs));
  CurrentTime = 0.0;
  GenerateInitialEnabledList();
  if (GenerateCompleteEventListSS() != 0) {
    std::cerr << "ERROR: unable to generate event list\n";
  }
  TempAction = NullAction;
  makeStopHeaps();
  trace->newBatch();
  CurPacket = CreateDataPacket(NumPVs);
  CurSqrPacket = CreateDataPacket(NumPVs);
  const bool hasEvent = chooseNextEvent();
  if (hasEvent) {
    startCpuTimer();
  }
  if (!hasEvent || isNever(CurrentTime)) {
    raiseTo(STOPSOFT, SimControl);
  }
  if (trace->getTraceLevel() > 0) {
    trace->printInitialState();
  }

  while (SimControl == GO) {
    CheckCompletedBatches(TheModel->PerformanceVariableList, ResultCounters.data(), ResultSqrCounters.data());
    std::pair<int, int> EarliestCompletedBatches;
    CompletedBatches->Earliest(EarliestCompletedBatches);
    if (MaxNumOfBatches >= 1 && EarliestCompletedBatches.first >= MaxNumOfBatches) {
      raiseTo(STOPSOFT, SimControl);
    }
    // On purpose in every case: one more firing follows a stop.
    if (!step(Cursor::SetAfterwards) || isNever(CurrentTime)) {
      raiseTo(STOPSOFT, SimControl);
      std::cout << kAbsorbingState << std::endl;
      Traceprintf(0, "%s\n", kAbsorbingState);
    }
    if (trace->getTraceLevel() > 2) {
      trace->printState();
    }
  }

  SendSSResults(ResultCounters.data(), ResultSqrCounters.data());
  delete StopTimes;
  StopTimes = nullptr;
  delete CompletedBatches;
  CompletedBatches = nullptr;
  deleteLoopObjects();
}

void SimulatorClass::makeStopHeaps() {
  PerformanceVariableNode** const ThePVList = TheModel->PerformanceVariableList;
  const auto isSteadyState = [ThePVList](int i) { return ThePVList[i]->Type == steady_state; };
  int NumSSPVs = 0;
  for (int i = 0; i < NumPVs; ++i) {
    if (isSteadyState(i)) {
      ++NumSSPVs;
    }
  }
  StopTimes = new Heap<double>(NumSSPVs);
  CompletedBatches = new Heap<int>(NumSSPVs);
  for (int i = 0; i < NumPVs; ++i) {
    if (!isSteadyState(i)) {
      continue;
    }
    requireBatchLength(*ThePVList[i]);
    const bool hasTransient = ThePVList[i]->Start != 0.0;
    StopTimes->Insert(hasTransient ? ThePVList[i]->Start : ThePVList[i]->Stop, i);
    CompletedBatches->Insert(hasTransient ? kInTransient : 0, i);
  }
}

void SimulatorClass::CheckCompletedBatches(PerformanceVariableNode** ThePVList, int* ResultCounters,
                                           int* ResultSqrCounters) {
  std::pair<double, int> EarliestStopTime;
  StopTimes->Earliest(EarliestStopTime);
  while (CurrentTime >= EarliestStopTime.first) {
    const int PVIndex = EarliestStopTime.second;
    PerformanceVariableNode& variable = *ThePVList[PVIndex];
    const int completed = CompletedBatches->getElement(PVIndex);
    if (completed != kInTransient) {
      // A time beyond its own stop makes the variable close its interval.
      variable.Accumulate(1.0 + variable.Stop, BaseModelClass::LastActionTime, TheModel->LastAction);
      if (ResultCounters[PVIndex] == ReportSize) {
        SendSSResults(ResultCounters, ResultSqrCounters);
      }
      // A hard stop leaves the row full: nothing of it is reported any more, and no place is left behind it.
      if (ResultCounters[PVIndex] < ReportSize) {
        CurPacket->SetObs(PVIndex, ResultCounters[PVIndex], variable.TotalReward);
        ++ResultCounters[PVIndex];
        CurSqrPacket->SetObs(PVIndex, ResultSqrCounters[PVIndex], variable.TotalRewardSqr);
        ++ResultSqrCounters[PVIndex];
      }
      variable.Reset();
      TheModel->WindowsMoved();
    }
    StopTimes->ModifyKey(PVIndex, variable.Stop);
    CompletedBatches->ModifyKey(PVIndex, completed + 1);
    trace->newBatch();
    StopTimes->Earliest(EarliestStopTime);
  }
}

void SimulatorClass::SendSSResults(int* ResultCounters, int* ResultSqrCounters) {
  if (SimControl == STOPHARD) {
    return;
  }
  for (int i = 0; i < NumPVs; ++i) {
    CurPacket->SetNumObs(i, ResultCounters[i]);
    CurSqrPacket->SetNumObs(i, ResultSqrCounters[i]);
    ResultCounters[i] = 0;
    ResultSqrCounters[i] = 0;
  }
  CPUSeconds = cpuSeconds();
  CheckReportSize(CPUSeconds);
}
