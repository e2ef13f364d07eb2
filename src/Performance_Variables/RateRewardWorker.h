#pragma once

#include <memory>

#include "Performance_Variables/PerformanceVariableWorker.h"

class BaseModelClass;

/// Common ground of the rate workers: the model slots, the instant reward and how a value is taken. A model's worker is
/// then a few lines:
///
///   class BusyWorker : public IntervalOfTimeWorker {
///    public:
///     BusyWorker() : IntervalOfTimeWorker(1) {}
///     double Reward_Function() override { return modelAt<serverSAN>(0)->busy->Mark() > 0 ? 1.0 : 0.0; }
///   };
///
/// Every slot of TheModelPtr points at a field of this class until the derived constructor points it at one of its own;
/// modelAt reads the instance through the slot either way.
/// Owns     TheModelPtr and the fields behind it; the model instances are borrowed from the model tree.
///
/// A kind of rate reward whose window moves overrides Reset and slides Start and Stop there: every kind reads the two
/// afresh at each step.
class RateRewardWorker : public PerformanceVariableWorker {
 public:
  /// `numModels` is the number of model names of the node's rate reward, in the order of their declaration.
  explicit RateRewardWorker(int numModels);
  ~RateRewardWorker() override;

  /// Reward_Function() in the present state, and its square.
  void CurrentReward() override;

 protected:
  /// The instance in the slot: the instance of the node's model name of that index.
  template <class Model>
  [[nodiscard]] Model* modelAt(int slot) const {
    return static_cast<Model*>(*TheModelPtr[slot]);
  }

  /// Takes `value` as the contribution of this step, and its square.
  void take(double value) {
    Reward = value;
    RewardSqr = value * value;
  }

 private:
  std::unique_ptr<BaseModelClass*[]> instances_;
};
