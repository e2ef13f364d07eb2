// M/M/1/100 from empty: the number in system, averaged over [0, stopTime].

#include <memory>

#include "Performance_Variables/TimeAveragedIntervalOfTimeWorker.h"
#include "workloads/TimeAverage.h"
#include "workloads/WorkloadStudy.h"
#include "workloads/queue/QueueSAN.h"

Double arrivalRate;
Double serviceRate;
Int capacity;

namespace {

Double stopTime;

class NumberInSystemWorker : public TimeAveragedIntervalOfTimeWorker {
 public:
  NumberInSystemWorker() : TimeAveragedIntervalOfTimeWorker(1) {}
  double Reward_Function() override { return modelAt<QueueSAN>(0)->q.Mark(); }
};

}  // namespace

std::unique_ptr<BaseStudyClass> makeWorkloadStudy() {
  return std::make_unique<WorkloadStudy>(
      std::vector<WorkloadStudy::Parameter>{{"arrivalRate", &arrivalRate, 0.9},
                                            {"serviceRate", &serviceRate, 1.0},
                                            {"capacity", &capacity, 100},
                                            {"stopTime", &stopTime, 1e6}},
      [](bool expandTimeArrays) {
        return std::make_unique<OneVariable>(
            "queueRewards", new QueueSAN,
            [] { return new TimeAverage<NumberInSystemWorker>("numberInSystem", "queue", "q", stopTime); },
            expandTimeArrays);
      });
}
