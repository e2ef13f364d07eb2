#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Modelling/ChildModel.h"
#include "Modelling/PerformanceVariable.h"
#include "Performance_Variables/PVModel.h"

namespace modelling {

/// What is simulated and what is measured of it: the top model and the performance variables, as a function of the
/// model's own tells them:
///
///   void measure(modelling::RewardModel& rewards) {
///     rewards.model<Queue>();
///     rewards.instantOfTime("waiting", {1.0, 5.0}).rate("queue", [](Queue& queue) { return queue.q.Mark(); });
///   }
///
/// The function is called when the global variables have their final values. In the results the variables are numbered
/// from 0 on in the order in which they are told, a variable with several times once for each.
///
/// Variables of terminating and of steady-state runs may stand side by side: a run observes those of its own kind. A batch
/// of a terminating run ends with the last stop of the terminating variables.
///
/// Faults  reported, with status 1: no top model; a reward that names a model of another class than its function takes;
///         an impulse whose model is not in the tree or whose action is not in its model. A rate reward whose model is
///         not in the tree is reported by the engine, which ends the process with status 0.
class RewardModel final : public PVModel {
 public:
  using Describe = std::function<void(RewardModel&)>;

  RewardModel(const std::string& name, const Describe& describe, bool expandTimeArrays);
  ~RewardModel() override;

  RewardModel(const RewardModel&) = delete;
  RewardModel& operator=(const RewardModel&) = delete;

  /// Makes the top model from these arguments, and returns it.
  template <typename Model, typename... Arguments>
  Model& model(Arguments&&... arguments) {
    return static_cast<Model&>(model(std::make_unique<Model>(std::forward<Arguments>(arguments)...)));
  }

  /// Makes the top model of a composition, such as `model(replicate("fleet", 3, child<Machine>("machine")))`.
  BaseModelClass& model(const ChildModel& composition);

  /// Takes over a top model that is made already.
  BaseModelClass& model(std::unique_ptr<BaseModelClass> made);

  /// The rate reward at each of the times, plus the impulses of exactly those times.
  PerformanceVariable& instantOfTime(std::string name, const std::vector<double>& times);
  PerformanceVariable& instantOfTime(std::string name, double time);

  /// The rate reward's integral over an interval, plus the impulses of both ends and between.
  PerformanceVariable& intervalOfTime(std::string name, double start, double stop);
  PerformanceVariable& intervalOfTime(std::string name, std::vector<double> starts, std::vector<double> stops);

  /// The same, divided by the length of the interval.
  PerformanceVariable& timeAveraged(std::string name, double start, double stop);
  PerformanceVariable& timeAveraged(std::string name, std::vector<double> starts, std::vector<double> stops);

  /// The rate reward's average, and the impulses for a unit of time, over each batch of a steady-state run. `transient`
  /// is what is thrown away first, `batchLength` (> 0) the length of each batch, both in simulated time.
  PerformanceVariable& steadyState(std::string name, double transient, double batchLength);

 protected:
  PerformanceVariableNode* createPVNode(int pvindex, int timeindex) override;

 private:
  PerformanceVariable& add(std::string name, RewardType type, std::vector<double> starts, std::vector<double> stops);
  void checkNames();
  void checkImpulse(const PerformanceVariable& variable, const PerformanceVariable::Impulse& impulse);
  void checkImpulseWorkers();
  void endBatchesWithTerminatingVariables();

  std::vector<std::unique_ptr<PerformanceVariable>> variables_;
};

}  // namespace modelling
