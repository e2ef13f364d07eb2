#include "queue/QueuePVModel.h"

#include <array>
#include <memory>
#include <vector>

#include "Performance_Variables/InstantOfTimeWorker.h"
#include "Performance_Variables/IntervalOfTimeImpulse.h"
#include "Performance_Variables/PerformanceVariableNode.h"
#include "queue/QueueSAN.h"

namespace {

/// Rate reward of numberInQueue: its value in the present state. Slot 0 is the model that the node named first.
class NumberInQueueWorker : public InstantOfTimeWorker {
 public:
  NumberInQueueWorker() : InstantOfTimeWorker(1) {}
  double Reward_Function() override { return modelAt<QueueSAN>(0)->q.Mark(); }
};

/// A variable with a rate reward, taken at three instants. It depends on the model "queue", on whose variable "q" the
/// reward is read.
class NumberInQueue : public PerformanceVariableNode {
 public:
  explicit NumberInQueue(int timeIndex) {
    constexpr std::array<double, 3> kTimes{1.0, 5.0, 10.0};
    Initialize("numberInQueue", INSTANT_OF_TIME, kTimes.size(), kTimes.data(), kTimes.data(), timeIndex, 0, 1, 1);
    AddModelDependency("queue");
    AddVariableDependency("q", "queue");
  }
  void CreateWorkerList() override { fillWorkerList<NumberInQueueWorker>(); }
};

/// Impulse of numberServed: each firing counts 1. The object in the node makes the workers, one for each instance of
/// the model, and keeps them.
class ServedImpulse : public IntervalOfTimeImpulse {
 public:
  double Impulse_Function(double /*time*/) override { return 1.0; }
  ImpulseNodeClass** CreateImpulseWorkerList(int count) override {
    for (int worker = 0; worker < count; ++worker) {
      workers_.push_back(std::make_unique<ServedImpulse>());
      workerList_.push_back(workers_.back().get());
    }
    return workerList_.data();
  }

 private:
  std::vector<std::unique_ptr<ServedImpulse>> workers_;
  std::vector<ImpulseNodeClass*> workerList_;  // borrowed from workers_
};

/// A variable with an impulse reward over the interval from 0 to 10, earned when "serve" of the model "queue" fires.
class NumberServed : public PerformanceVariableNode {
 public:
  explicit NumberServed(int timeIndex) {
    constexpr std::array<double, 1> kStart{0.0};
    constexpr std::array<double, 1> kStop{10.0};
    Initialize("numberServed", INTERVAL_OF_TIME, kStop.size(), kStart.data(), kStop.data(), timeIndex, 1, 0, 0);
    AddImpulse("serve", "queue", &impulse_);
  }
  void CreateWorkerList() override {}

 private:
  ServedImpulse impulse_;
};

}  // namespace

QueuePVModel::QueuePVModel(bool expandTimeArrays) {
  TheModel = new QueueSAN;
  DefineName("QueuePVModel");
  StateMode = 1;
  CreatePVList(2, expandTimeArrays);
  Initialize();
}

PerformanceVariableNode* QueuePVModel::createPVNode(int pvIndex, int timeIndex) {
  if (pvIndex == 0) {
    return new NumberInQueue(timeIndex);
  }
  return new NumberServed(timeIndex);
}
