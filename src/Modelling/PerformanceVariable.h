#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "BaseClasses/BaseModelClass.h"
#include "Modelling/AveragedIntervalImpulse.h"
#include "Modelling/Constant.h"
#include "Modelling/FunctionImpulse.h"
#include "Modelling/FunctionWorker.h"
#include "Modelling/ModelFunction.h"
#include "Modelling/TotalWorker.h"
#include "Performance_Variables/InstantOfTimeWorker.h"
#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/RewardTypes.h"
#include "Performance_Variables/SteadyStateImpulse.h"
#include "Performance_Variables/SteadyStateWorker.h"
#include "Performance_Variables/TimeAveragedIntervalOfTimeWorker.h"

namespace modelling {

/// What is told of a performance variable: its windows, its rate reward and its impulses. RewardModel makes it, and the
/// words below add to it:
///
///   rewards.instantOfTime("waiting", {1.0, 5.0}).rate("queue", [](Queue& queue) { return queue.q.Mark(); });
///   rewards.intervalOfTime("served", 0.0, 10.0).impulse("serve", "queue");
///
/// A model's name stands for every model of that name in the tree, such as all copies of a RepModel; the rewards of
/// several are added.
class PerformanceVariable {
 public:
  /// What is known of a worker before there is one. `isFirst` of the variable's workers.
  using MakeWorker =
      std::function<std::unique_ptr<PerformanceVariableWorker>(RewardType, BaseModelClass& topModel, bool isFirst)>;
  /// Tests that a model is of the class that a function takes.
  using IsModel = bool (*)(BaseModelClass*);

  struct RateModel {
    std::string name;
    IsModel isModel;
  };
  struct Impulse {
    std::string action;
    std::string model;
    IsModel isModel;
    std::function<std::unique_ptr<ImpulseNodeClass>(RewardType)> make;
  };
  struct StateVariable {
    std::string name;
    std::string model;
  };

  PerformanceVariable(std::string name, RewardType type, std::vector<double> starts, std::vector<double> stops)
      : name_(std::move(name)), type_(type), starts_(std::move(starts)), stops_(std::move(stops)) {}

  /// The rate reward: `function` of a model of that name, in the present marking. A variable has one rate reward at
  /// most.
  template <std::convertible_to<std::string> Name, typename Function>
  PerformanceVariable& rate(const Name& model, Function function) {
    return rate(std::vector<std::string>{model}, std::move(function));
  }

  /// The same of several models, such as `rate({"queue", "crew"}, [](Queue& queue, Crew& crew) { ... })`. Where a name
  /// has several models, the rewards of all combinations are added.
  template <typename Function>
  PerformanceVariable& rate(const std::vector<std::string>& models, Function function) {
    using Models = typename ModelFunction<Function>::Types;
    setRate(models, testsOf(static_cast<Models*>(nullptr)),
            [function = std::move(function)](RewardType type, BaseModelClass& /*topModel*/, bool /*isFirst*/) {
              return makeWorker<WorkerOf<Function, Models>::template Type>(type, function);
            });
    return *this;
  }

  /// The rate reward: `function` of all models of that name at once, which it takes as a `std::span<Model* const>`.
  template <typename Model, typename Function>
  PerformanceVariable& rateOfAll(const std::string& model, Function function) {
    setRate({model}, {&isModel<Model>},
            [function = std::move(function), model](RewardType type, BaseModelClass& topModel, bool isFirst) {
              // The others look at no instance; lists for all would take the square of the number of replicas.
              return makeWorker<TotalOf<Function, Model>::template Type>(
                  type, function, isFirst ? instances<Model>(topModel, model) : std::vector<Model*>());
            });
    return *this;
  }

  /// An impulse: 1 whenever that action of a model of that name fires inside the window.
  PerformanceVariable& impulse(const std::string& action, const std::string& model) {
    return impulse(action, model, 1.0);
  }

  /// An impulse of a value: a number, a global variable, or a function of the model that holds the action, called behind
  /// the firing. Over a time-averaged or steady-state window it is divided by the window's length, like the rate.
  template <typename Value>
  PerformanceVariable& impulse(const std::string& action, const std::string& model, Value&& value) {
    return addImpulse(action, model, std::forward<Value>(value), true);
  }

  /// The same, and the sum over the window for every kind of variable.
  template <typename Value>
  PerformanceVariable& impulseSum(const std::string& action, const std::string& model, Value&& value) {
    return addImpulse(action, model, std::forward<Value>(value), false);
  }

  /// Tells the engine that the rate reward reads that variable of the models of that name. The observations do not
  /// depend on it.
  PerformanceVariable& reads(std::string variable, std::string model) {
    dependencies_.push_back({std::move(variable), std::move(model)});
    return *this;
  }

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] RewardType type() const { return type_; }
  [[nodiscard]] const std::vector<double>& starts() const { return starts_; }
  [[nodiscard]] const std::vector<double>& stops() const { return stops_; }
  [[nodiscard]] const std::vector<RateModel>& rateModels() const { return rateModels_; }
  [[nodiscard]] const std::vector<Impulse>& impulses() const { return impulses_; }
  [[nodiscard]] const std::vector<StateVariable>& dependencies() const { return dependencies_; }

  /// A worker of this variable, of which that number was made before. Requires a rate reward.
  [[nodiscard]] std::unique_ptr<PerformanceVariableWorker> makeWorker(BaseModelClass& topModel, int number) const {
    return makeWorker_(type_, topModel, number == 0);
  }

 private:
  template <typename Function, typename Models>
  struct WorkerOf {
    template <typename Kind>
    using Type = FunctionWorker<Kind, Function, Models>;
  };
  template <typename Function, typename Model>
  struct TotalOf {
    template <typename Kind>
    using Type = TotalWorker<Kind, Function, Model>;
  };
  /// What an impulse without a model of its own takes for its function.
  template <typename Function>
  struct OfAnyModel {
    Function function;
    double operator()(BaseModelClass& /*model*/) { return static_cast<double>(function()); }
  };

  template <typename Model>
  static bool isModel(BaseModelClass* model) {
    return dynamic_cast<Model*>(model) != nullptr;
  }
  template <typename... Models>
  static std::vector<IsModel> testsOf(std::tuple<Models...>* /*types*/) {
    return {&isModel<Models>...};
  }

  /// The models of that name, which are all of that class.
  template <typename Model>
  static std::vector<Model*> instances(BaseModelClass& topModel, const std::string& name) {
    std::vector<Model*> found;
    for (BaseModelClass* const model : modelsNamed(topModel, name)) {
      found.push_back(static_cast<Model*>(model));
    }
    return found;
  }
  static std::vector<BaseModelClass*> modelsNamed(BaseModelClass& topModel, const std::string& name);

  template <template <typename> class Worker, typename... Arguments>
  static std::unique_ptr<PerformanceVariableWorker> makeWorker(RewardType type, const Arguments&... arguments) {
    switch (type) {
      case INSTANT_OF_TIME:
        return std::make_unique<Worker<InstantOfTimeWorker>>(arguments...);
      case TIMEAVE_INTERVAL_OF_TIME:
        return std::make_unique<Worker<TimeAveragedIntervalOfTimeWorker>>(arguments...);
      case STEADY_STATE:
        return std::make_unique<Worker<SteadyStateWorker>>(arguments...);
      default:
        return std::make_unique<Worker<IntervalOfTimeWorker>>(arguments...);
    }
  }

  template <typename Model, typename Function>
  static std::unique_ptr<ImpulseNodeClass> makeImpulse(RewardType type, const Function& function, bool follows) {
    if (type == STEADY_STATE) {
      return std::make_unique<FunctionImpulse<SteadyStateImpulse, Function, Model>>(function, follows);
    }
    if (type == TIMEAVE_INTERVAL_OF_TIME && follows) {
      return std::make_unique<FunctionImpulse<AveragedIntervalImpulse, Function, Model>>(function, true);
    }
    return std::make_unique<FunctionImpulse<IntervalOfTimeImpulse, Function, Model>>(function, false);
  }

  /// `follows`: averaged if the variable's rates are.
  template <typename Value>
  PerformanceVariable& addImpulse(const std::string& action, const std::string& model, Value&& value, bool follows) {
    using Given = std::remove_cvref_t<Value>;
    if constexpr (std::is_convertible_v<Given&, double> || std::is_invocable_v<Given&>) {
      auto function = asFunction<double>(std::forward<Value>(value));
      addImpulseOf<BaseModelClass>(action, model, OfAnyModel<decltype(function)>{std::move(function)}, follows);
    } else {
      using Models = typename ModelFunction<Given>::Types;
      static_assert(std::tuple_size_v<Models> == 1, "an impulse is a function of the one model that holds its action");
      addImpulseOf<std::tuple_element_t<0, Models>>(action, model, Given(std::forward<Value>(value)), follows);
    }
    return *this;
  }

  template <typename Model, typename Function>
  void addImpulseOf(const std::string& action, const std::string& model, Function function, bool follows) {
    impulses_.push_back({action, model, &isModel<Model>, [function = std::move(function), follows](RewardType type) {
                           return makeImpulse<Model>(type, function, follows);
                         }});
  }

  void setRate(const std::vector<std::string>& models, const std::vector<IsModel>& tests, MakeWorker makeWorker);

  std::string name_;
  RewardType type_;
  std::vector<double> starts_;
  std::vector<double> stops_;
  std::vector<RateModel> rateModels_;
  MakeWorker makeWorker_;
  std::vector<Impulse> impulses_;
  std::vector<StateVariable> dependencies_;
};

}  // namespace modelling
