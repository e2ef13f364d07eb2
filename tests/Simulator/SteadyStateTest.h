#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Performance_Variables/IntervalOfTimeImpulse.h"
#include "Performance_Variables/SteadyStateImpulse.h"
#include "Performance_Variables/SteadyStateWorker.h"
#include "Simulator/EngineTest.h"

// A simulator under the steady-state loop, over models put together by hand.

namespace support {

/// A variable of a reward model over one HandModel. Of a steady-state one, `start` is the end of the transient and
/// `stop` that of the first batch; it is the average of `rate` over each batch. Of a terminating one it is the
/// integral.
struct WindowVariable {
  /// Kinds of impulse: each counts the firings of `counted`.
  enum Impulses { kNone, kOfEachBatch, kOfTheFirstWindow };

  double start = 0.0;
  double stop = 1.0;
  std::function<double()> rate = {};  // none: no rate reward
  PVType type = steady_state;
  Impulses impulses = kNone;
  std::string counted = {};  // name of an activity
};

/// An impulse of one kind that counts firings.
template <class Kind>
class CountingImpulse : public Kind {
 public:
  double Impulse_Function(double /*time*/) override { return 1.0; }

  ImpulseNodeClass** CreateImpulseWorkerList(int count) override {
    for (int i = 0; i < count; ++i) {
      workers_.push_back(std::make_unique<CountingImpulse>());
      list_.push_back(workers_.back().get());
    }
    return list_.data();
  }

 private:
  std::vector<std::unique_ptr<CountingImpulse>> workers_;
  std::vector<ImpulseNodeClass*> list_;
};

/// A reward model over one HandModel named "model".
class WindowReward : public PVModel {
 public:
  WindowReward(HandModel* model, std::vector<WindowVariable> variables) : variables_(std::move(variables)) {
    TheModel = model;
    DefineName("reward");
    StateMode = 1;
    CreatePVList(static_cast<int>(variables_.size()), true);
    Initialize();
  }

 protected:
  PerformanceVariableNode* createPVNode(int pvindex, int /*timeindex*/) override {
    return new Node(variables_[static_cast<std::size_t>(pvindex)]);
  }

 private:
  template <class Kind>
  class Worker : public Kind {
   public:
    explicit Worker(const WindowVariable& variable) : Kind(1), rate_(variable.rate) {}
    double Reward_Function() override { return rate_(); }

   private:
    std::function<double()> rate_;
  };

  class Node : public PerformanceVariableNode {
   public:
    explicit Node(const WindowVariable& variable) : variable_(variable) {
      const bool isSteady = variable_.type == steady_state;
      const bool hasImpulse = variable_.impulses != WindowVariable::kNone;
      Initialize("variable", isSteady ? STEADY_STATE : INTERVAL_OF_TIME, 1, &variable_.start, &variable_.stop, 0,
                 hasImpulse ? 1 : 0, variable_.rate ? 1 : 0, 0);
      Type = variable_.type;
      if (variable_.rate) {
        AddModelDependency("model");
      }
      if (variable_.impulses == WindowVariable::kOfEachBatch) {
        impulse_ = std::make_unique<CountingImpulse<SteadyStateImpulse>>();
      } else if (hasImpulse) {
        impulse_ = std::make_unique<CountingImpulse<IntervalOfTimeImpulse>>();
      }
      if (hasImpulse) {
        AddImpulse(variable_.counted.c_str(), "model", impulse_.get());
      }
    }

    void CreateWorkerList() override {
      if (variable_.type == steady_state) {
        fillWorkerList<Worker<SteadyStateWorker>>(variable_);
      } else {
        fillWorkerList<Worker<IntervalOfTimeWorker>>(variable_);
      }
    }

   private:
    WindowVariable variable_;
    std::unique_ptr<ImpulseNodeClass> impulse_;
  };

  std::vector<WindowVariable> variables_;
};

/// A simulator under the steady-state loop.
class SteadyStateTest : public EngineTest {
 protected:
  /// Has the next simulator run the model that `build` puts together, with these variables. An earlier one ends before.
  void useSteadyModel(std::function<void(HandModel&)> build, std::vector<WindowVariable> variables) {
    simulator.reset();
    setModelFactory([this, build = std::move(build), variables = std::move(variables)](bool) {
      auto* const model = new HandModel;
      build(*model);
      model->finish("model", &log);
      return std::make_unique<WindowReward>(model, variables);
    });
  }

  /// Brings the simulator to the first event, as the steady-state loop does.
  SimulatorProbe& startSteadyState(std::vector<std::string> words = {"-t0", "-N1"}) {
    start(std::move(words));
    simulator->makeLoopObjects();
    simulator->TempAction = simulator->NullAction;
    simulator->GenerateInitialEnabledList();
    simulator->GenerateCompleteEventListSS();
    simulator->chooseNextEvent();
    log.clear();
    return *simulator;
  }
};

}  // namespace support
