#include "Modelling/VariableNode.h"

#include <string>

namespace modelling {

VariableNode::VariableNode(const PerformanceVariable& variable, int timeIndex) : variable_(&variable) {
  TheModelPtr = &topModel_;
  Initialize(variable.name().c_str(), variable.type(), static_cast<int>(variable.stops().size()),
             variable.starts().data(), variable.stops().data(), timeIndex, static_cast<int>(variable.impulses().size()),
             static_cast<int>(variable.rateModels().size()), static_cast<int>(variable.dependencies().size()));
  Type = variable.type() == STEADY_STATE ? steady_state : terminating;
  for (const auto& model : variable.rateModels()) {
    AddModelDependency(model.name.c_str());
  }
  for (const auto& dependency : variable.dependencies()) {
    AddVariableDependency(dependency.name.c_str(), dependency.model.c_str());
  }
  for (const auto& impulse : variable.impulses()) {
    impulses_.push_back(impulse.make(variable.type()));
    AddImpulse(impulse.action.c_str(), impulse.model.c_str(), impulses_.back().get());
  }
}

void VariableNode::CreateWorkerList() {
  for (int worker = 0; worker < NumberOfWorkers; ++worker) {
    WorkerList[worker] = variable_->makeWorker(*topModel_, worker).release();
  }
}

}  // namespace modelling
