// Clocks that have nothing to do with each other: the share of [0, stopTime] in which the first has ticked an odd number
// of times.

#include <memory>

#include "Performance_Variables/TimeAveragedIntervalOfTimeWorker.h"
#include "workloads/TimeAverage.h"
#include "workloads/WorkloadStudy.h"
#include "workloads/clocks/ClocksSAN.h"

Int clocks;
Int sparePlaces;

namespace {

Double stopTime;

class FirstIsOddWorker : public TimeAveragedIntervalOfTimeWorker {
 public:
  FirstIsOddWorker() : TimeAveragedIntervalOfTimeWorker(1) {}
  double Reward_Function() override { return modelAt<ClocksSAN>(0)->firstIsOdd(); }
};

/// The reward reads the first clock alone, but a variable is named by its model and its name, which the clocks share.
class FirstIsOdd : public PerformanceVariableNode {
 public:
  FirstIsOdd() {
    const double start = 0.0;
    const double stop = stopTime;
    Initialize("firstIsOdd", TIMEAVE_INTERVAL_OF_TIME, 1, &start, &stop, 0, 0, 1, 0);
    AddModelDependency("clocks");
  }
  void CreateWorkerList() override { fillWorkerList<FirstIsOddWorker>(); }
};

}  // namespace

std::unique_ptr<BaseStudyClass> makeWorkloadStudy() {
  return std::make_unique<WorkloadStudy>(
      std::vector<WorkloadStudy::Parameter>{
          {"clocks", &clocks, 10}, {"sparePlaces", &sparePlaces, 0}, {"stopTime", &stopTime, 1e5}},
      [](bool expandTimeArrays) {
        return std::make_unique<OneVariable>(
            "clocksRewards", new ClocksSAN, [] { return new FirstIsOdd; }, expandTimeArrays);
      });
}
