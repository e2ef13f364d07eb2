#pragma once

#include <memory>
#include <vector>

#include "Modelling/PerformanceVariable.h"
#include "Performance_Variables/PerformanceVariableNode.h"

namespace modelling {

/// A performance variable at one of its times, as the engine has it.
class VariableNode : public PerformanceVariableNode {
 public:
  /// `variable` is borrowed and must outlive the node.
  VariableNode(const PerformanceVariable& variable, int timeIndex);

  void CreateWorkerList() override;

 private:
  const PerformanceVariable* variable_;  // borrowed
  BaseModelClass* topModel_ = nullptr;   // borrowed: set by the engine through TheModelPtr
  std::vector<std::unique_ptr<ImpulseNodeClass>> impulses_;
};

}  // namespace modelling
