#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "Performance_Variables/ImpulseNodeClass.h"

namespace modelling {

/// An impulse whose reward is a function of the model instance that holds the action, read behind the firing.
/// Kind   the engine's impulse: IntervalOfTimeImpulse or SteadyStateImpulse
/// Model  the class of the models that the action stands in
template <typename Kind, typename Function, typename Model>
class FunctionImpulse final : public Kind {
 public:
  /// `isTimeAveraged`: the rewards of a window are divided by its length.
  FunctionImpulse(Function function, bool isTimeAveraged)
      : Kind(isTimeAveraged), function_(std::move(function)), isTimeAveraged_(isTimeAveraged) {}

  double Impulse_Function(double /*time*/) override {
    return static_cast<double>(function_(*static_cast<Model*>(this->ContainingModel)));
  }

  ImpulseNodeClass** CreateImpulseWorkerList(int count) override {
    for (int worker = 0; worker < count; ++worker) {
      workers_.push_back(std::make_unique<FunctionImpulse>(function_, isTimeAveraged_));
      workerList_.push_back(workers_.back().get());
    }
    return workerList_.data();
  }

 private:
  Function function_;
  bool isTimeAveraged_;
  std::vector<std::unique_ptr<FunctionImpulse>> workers_;
  std::vector<ImpulseNodeClass*> workerList_;  // borrowed from workers_
};

}  // namespace modelling
