// Independent machines, all up at the start: the number down, averaged over [0, stopTime]. With perMachine 1 it is the
// sum of a reward over the machines instead, each of which is looked at in every step.

#include <memory>

#include "Performance_Variables/TimeAveragedIntervalOfTimeWorker.h"
#include "workloads/TimeAverage.h"
#include "workloads/WorkloadStudy.h"
#include "workloads/machines/ShopModel.h"

Double failureRate;
Double repairRate;
Int machines;

namespace {

Int perMachine;
Double stopTime;

class NumberDownWorker : public TimeAveragedIntervalOfTimeWorker {
 public:
  NumberDownWorker() : TimeAveragedIntervalOfTimeWorker(1) {}
  double Reward_Function() override { return modelAt<BoardSAN>(0)->down.Mark(); }
};

class IsDownWorker : public TimeAveragedIntervalOfTimeWorker {
 public:
  IsDownWorker() : TimeAveragedIntervalOfTimeWorker(1) {}
  double Reward_Function() override { return 1.0 - modelAt<MachineSAN>(0)->up.Mark(); }
};

PerformanceVariableNode* makeNumberDown() {
  if (perMachine != 0) {
    return new TimeAverage<IsDownWorker>("numberDown", "machine", "up", stopTime);
  }
  return new TimeAverage<NumberDownWorker>("numberDown", "board", "down", stopTime);
}

}  // namespace

std::unique_ptr<BaseStudyClass> makeWorkloadStudy() {
  return std::make_unique<WorkloadStudy>(std::vector<WorkloadStudy::Parameter>{{"machines", &machines, 1000},
                                                                               {"failureRate", &failureRate, 0.1},
                                                                               {"repairRate", &repairRate, 1.0},
                                                                               {"perMachine", &perMachine, 0},
                                                                               {"stopTime", &stopTime, 11000.0}},
                                         [](bool expandTimeArrays) {
                                           return std::make_unique<OneVariable>("shopRewards", new ShopModel,
                                                                                makeNumberDown, expandTimeArrays);
                                         });
}
