#pragma once

#include <span>
#include <utility>
#include <vector>

namespace modelling {

/// A rate worker whose reward is a function of all instances of a model at once. The engine has a worker for each
/// instance and adds their rewards: the first one gives the function's value, the others give 0.
/// Kind  the engine's worker: InstantOfTimeWorker, IntervalOfTimeWorker and so on
template <typename Kind, typename Function, typename Model>
class TotalWorker final : public Kind {
 public:
  /// `instances` are borrowed from the model tree; only the first worker needs them.
  TotalWorker(Function function, std::vector<Model*> instances)
      : Kind(1), function_(std::move(function)), instances_(std::move(instances)) {}

  double Reward_Function() override {
    return this->Number == 0 ? static_cast<double>(function_(std::span<Model* const>(instances_))) : 0.0;
  }

 private:
  Function function_;
  std::vector<Model*> instances_;
};

}  // namespace modelling
