// Closed cycle of 50 stations with 200 customers, 4 at each at the start: the throughput of a station over
// [0, stopTime], as its service rate while it has a customer.

#include <memory>

#include "Performance_Variables/TimeAveragedIntervalOfTimeWorker.h"
#include "workloads/TimeAverage.h"
#include "workloads/WorkloadStudy.h"
#include "workloads/cycle/CycleSAN.h"

Int stations;
Int customersEach;
Double serviceRate;

namespace {

Double stopTime;

class ThroughputWorker : public TimeAveragedIntervalOfTimeWorker {
 public:
  ThroughputWorker() : TimeAveragedIntervalOfTimeWorker(1) {}
  double Reward_Function() override { return modelAt<CycleSAN>(0)->atFirst() > 0 ? serviceRate : 0.0; }
};

}  // namespace

std::unique_ptr<BaseStudyClass> makeWorkloadStudy() {
  return std::make_unique<WorkloadStudy>(
      std::vector<WorkloadStudy::Parameter>{{"stations", &stations, 50},
                                            {"customersEach", &customersEach, 4},
                                            {"serviceRate", &serviceRate, 1.0},
                                            {"stopTime", &stopTime, 5e4}},
      [](bool expandTimeArrays) {
        return std::make_unique<OneVariable>(
            "cycleRewards", new CycleSAN,
            [] { return new TimeAverage<ThroughputWorker>("throughput", "cycle", "customers0", stopTime); },
            expandTimeArrays);
      });
}
