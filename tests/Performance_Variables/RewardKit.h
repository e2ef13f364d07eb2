#pragma once

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseSyncActionClass.h"
#include "Performance_Variables/IntervalOfTimeImpulse.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/PerformanceVariableNode.h"
#include "Performance_Variables/RateRewardWorker.h"
#include "support/TestVariable.h"

// Small models, variables and reward models, put together by a test from parts.

namespace support {

/// An action whose firing adds to a variable, if it is given one.
class TestAction : public BaseActionClass {
 public:
  explicit TestAction(const std::string& name) { defineName(name.c_str()); }

  BaseActionClass* Fire() override {
    ++firings;
    if (target != nullptr) {
      target->value += step;
    }
    return reallyFired;
  }

  TestVariable* target = nullptr;  // borrowed from its model
  int step = 1;
  int firings = 0;
  BaseActionClass* reallyFired = this;
};

/// An action that superposes others, and fires like a bare one.
class TestSyncAction : public BaseSyncActionClass {
 public:
  TestSyncAction(const std::string& name, std::vector<BaseActionClass*> superposed)
      : BaseSyncActionClass(superposed.data(), static_cast<int>(superposed.size())) {
    defineName(name.c_str());
  }

  BaseActionClass* Fire() override { return this; }
};

/// A model with variables and actions of its own and any number of children. Its image holds its own variables, then
/// the children's images. A tree is complete once its root was sealed.
class TestModel : public BaseModelClass {
 public:
  explicit TestModel(const char* name) {
    if (name != nullptr) {
      DefineName(name);
    }
  }

  TestModel& addChild(const char* name) {
    children.push_back(std::make_unique<TestModel>(name));
    return *children.back();
  }
  template <class Action = TestAction, typename... Arguments>
  Action& addAction(Arguments&&... arguments) {
    auto action = std::make_unique<Action>(std::forward<Arguments>(arguments)...);
    Action& added = *action;
    added.TheModel = this;
    actions.push_back(std::move(action));
    return added;
  }
  TestVariable& addVariable(const char* name) {
    variables.push_back(std::make_unique<TestVariable>(name));
    return *variables.back();
  }
  /// A variable "mark" and an action that fires into it, with the arc between the two.
  TestAction& addMarkAndAction(const char* actionName) {
    TestVariable& mark = addVariable("mark");
    TestAction& action = addAction(actionName);
    action.target = &mark;
    AddAffectArc(&mark, &action);
    return action;
  }
  TestVariable& mark() const { return *variables.front(); }

  /// Collects the actions of the tree, as the model at its top must.
  void seal() {
    allActions_.clear();
    collectActions(allActions_);
    NumActions = static_cast<int>(allActions_.size());
    ActionList = allActions_.data();
    groups_.push_back(std::make_unique<BaseGroupClass>());
    groupList_ = {groups_.back().get()};
    NumGroups = 1;
    GroupList = groupList_.data();
    NumStateVariables = static_cast<int>(variables.size());
  }

  void listModels(const char* modelName, List<BaseModelClass>* models) override {
    if (Name != nullptr && std::strcmp(Name, modelName) == 0) {
      models->append(this);
    }
    for (const auto& child : children) {
      child->listModels(modelName, models);
    }
  }
  void CurrentState(void* image) override {
    visitImage(image, [](TestVariable& variable, void* place) { variable.CurrentState(place); });
  }
  void SetState(void* image) override {
    visitImage(image, [](TestVariable& variable, void* place) { variable.SetState(place); });
  }
  int StateSize() override {
    return visitImage(nullptr, [](TestVariable&, void*) {});
  }
  bool CompareState(void* first, void* second) override {
    return std::memcmp(first, second, static_cast<std::size_t>(StateSize())) == 0;
  }
  void listActions(List<BaseActionClass>* list) override { list->append(ActionList, NumActions); }
  void listGroups(List<BaseGroupClass>* list) override { list->append(GroupList, NumGroups); }
  void listActions(const char* actionName, List<BaseActionClass>* list) override {
    std::vector<BaseActionClass*> all;
    collectActions(all);
    for (BaseActionClass* const action : all) {
      if (std::strcmp(action->ActionName, actionName) == 0) {
        list->append(action);
      }
    }
  }
  void listSVs(const char* modelName, const char* variableName, List<BaseStateVariableClass>* list,
               List<BaseModelClass>* models) override {
    if (Name != nullptr && std::strcmp(Name, modelName) == 0) {
      for (const auto& variable : variables) {
        if (std::strcmp(variable->getName(), variableName) == 0) {
          list->append(variable.get());
          models->append(this);
        }
      }
    }
    for (const auto& child : children) {
      child->listSVs(modelName, variableName, list, models);
    }
  }
  using BaseModelClass::printState;
  void printState(std::ostream* strm) override { *strm << "state of " << Name << '\n'; }

  std::vector<std::unique_ptr<TestModel>> children;
  std::vector<std::unique_ptr<BaseActionClass>> actions;
  std::vector<std::unique_ptr<TestVariable>> variables;

 private:
  void collectActions(std::vector<BaseActionClass*>& all) {
    for (const auto& action : actions) {
      all.push_back(action.get());
    }
    for (const auto& child : children) {
      child->collectActions(all);
    }
  }

  template <typename Visitor>
  int visitImage(void* image, Visitor visit) {
    int offset = 0;
    const auto place = [&] { return image == nullptr ? nullptr : static_cast<char*>(image) + offset; };
    for (const auto& variable : variables) {
      visit(*variable, place());
      offset += variable->StateSize();
    }
    for (const auto& child : children) {
      offset += child->visitImage(place(), visit);
    }
    return offset;
  }

  std::vector<BaseActionClass*> allActions_;
  std::vector<std::unique_ptr<BaseGroupClass>> groups_;
  std::vector<BaseGroupClass*> groupList_;
};

/// A top model named "top" with `count` children of the name, each with a variable "mark" and the action.
inline std::unique_ptr<TestModel> replicated(const char* childName, int count, const char* actionName) {
  auto top = std::make_unique<TestModel>("top");
  for (int i = 0; i < count; ++i) {
    top->addChild(childName).addMarkAndAction(actionName);
  }
  return top;
}

/// An impulse whose reward a function tells, and whose model slots are `models`; its workers do as it does.
class TestImpulse : public IntervalOfTimeImpulse {
 public:
  using Reward = std::function<double(const TestImpulse&, double)>;

  explicit TestImpulse(int numModels, bool isTimeAveraged = false, Reward theReward = {})
      : IntervalOfTimeImpulse(isTimeAveraged),
        models(static_cast<std::size_t>(numModels)),
        slots_(static_cast<std::size_t>(numModels)),
        reward_(std::move(theReward)) {
    NumberOfModelDependencies = numModels;
    for (std::size_t slot = 0; slot < slots_.size(); ++slot) {
      slots_[slot] = &models[slot];
    }
    TheModelPtr = slots_.data();
  }

  double Impulse_Function(double time) override { return reward_ ? reward_(*this, time) : 1.0; }

  ImpulseNodeClass** CreateImpulseWorkerList(int count) override {
    for (int i = 0; i < count; ++i) {
      workers.push_back(std::make_unique<TestImpulse>(NumberOfModelDependencies, TimeAveraged, reward_));
      list_.push_back(workers.back().get());
    }
    return list_.data();
  }

  std::vector<BaseModelClass*> models;
  std::vector<std::unique_ptr<TestImpulse>> workers;  // of a prototype

 private:
  std::vector<BaseModelClass**> slots_;
  std::vector<ImpulseNodeClass*> list_;
  Reward reward_;
};

/// A worker of the given kind whose reward rate is the variable "mark" of the model in its slot 0.
template <class Kind>
class MarkWorker : public Kind {
 public:
  explicit MarkWorker(int numModels = 1) : Kind(numModels) {}

  double Reward_Function() override {
    ++evaluations;
    return this->template modelAt<TestModel>(0)->mark().value;
  }

  int evaluations = 0;
};

/// Bounds of the dependencies of a TestNode.
struct Room {
  int impulses = 0;
  int models = 0;
  int variables = 0;
};

struct Window {
  double start;
  double stop;
};

/// A variable whose parts are public, and whose workers a function makes.
class TestNode : public PerformanceVariableNode {
 public:
  using MakeWorker = std::function<PerformanceVariableWorker*()>;

  TestNode(const char* name, RewardType type, const std::vector<Window>& windows, int timeIndex, Room room) {
    TheModelPtr = &top;
    std::vector<double> starts;
    std::vector<double> stops;
    for (const Window& window : windows) {
      starts.push_back(window.start);
      stops.push_back(window.stop);
    }
    Initialize(name, type, static_cast<int>(windows.size()), starts.data(), stops.data(), timeIndex, room.impulses,
               room.models, room.variables);
  }

  void CreateWorkerList() override {
    ++workerListsCreated;
    for (int i = 0; makeWorker && i < NumberOfWorkers; ++i) {
      WorkerList[i] = makeWorker();
    }
  }

  /// Adds an impulse of this node's own, with `numModels` slots, on that action.
  TestImpulse& addImpulse(const char* actionName, const char* modelName, int numModels = 1, bool isTimeAveraged = false,
                          TestImpulse::Reward reward = {}) {
    impulses.push_back(std::make_unique<TestImpulse>(numModels, isTimeAveraged, std::move(reward)));
    AddImpulse(actionName, modelName, impulses.back().get());
    return *impulses.back();
  }

  TestImpulse& impulseWorker(int impulse, int worker) const {
    return static_cast<TestImpulse&>(*ImpulseWorkersList[impulse][worker]);
  }

  BaseModelClass* top = nullptr;
  MakeWorker makeWorker;
  int workerListsCreated = 0;
  std::vector<std::unique_ptr<TestImpulse>> impulses;  // the prototypes
};

/// A reward model over a tree of test models, with one function for each variable.
class TestRewardModel : public PVModel {
 public:
  using MakeNode = std::function<std::unique_ptr<PerformanceVariableNode>(int timeIndex)>;

  TestRewardModel(std::unique_ptr<TestModel> top, std::vector<MakeNode> makers, int stateMode = 1, bool expand = true)
      : makers_(std::move(makers)) {
    top->seal();
    TheModel = top.release();
    DefineName("testReward");
    StateMode = stateMode;
    CreatePVList(static_cast<int>(makers_.size()), expand);
    Initialize();
  }

  PerformanceVariableNode* createPVNode(int pvindex, int timeindex) override {
    calls.emplace_back(pvindex, timeindex);
    return makers_[static_cast<std::size_t>(pvindex)](timeindex).release();
  }

  TestNode& node(int position = 0) const { return static_cast<TestNode&>(*PerformanceVariableList[position]); }
  TestModel& top() const { return static_cast<TestModel&>(*TheModel); }
  TestModel& child(int index) const { return *top().children[static_cast<std::size_t>(index)]; }
  /// The first action of a child.
  TestAction& actionOf(int index) const { return static_cast<TestAction&>(*child(index).actions.front()); }

  /// One event step: time goes on to `now`, then the action fires.
  void step(BaseActionClass& action, double now) {
    Accumulate(now);
    FireAction(&action, now);
  }
  /// What the simulator does at a batch's end, up to the reading of the totals.
  void endBatch() { EndAccumulate(Simulation_Stop_Time); }

  std::vector<std::pair<int, int>> calls;  // of createPVNode: variable and time point

 private:
  std::vector<MakeNode> makers_;
};

/// A maker of nodes with the given properties; `declare` adds the dependencies and workers.
inline TestRewardModel::MakeNode variable(const char* name, RewardType type, std::vector<Window> windows, Room room,
                                          std::function<void(TestNode&)> declare = {}) {
  return [=](int timeIndex) {
    auto node = std::make_unique<TestNode>(name, type, windows, timeIndex, room);
    if (declare) {
      declare(*node);
    }
    return node;
  };
}

/// A variable that takes the mark of every model of that name with workers of that kind.
template <class Kind>
TestRewardModel::MakeNode markVariable(const char* name, RewardType type, Window window, const char* modelName) {
  return variable(name, type, {window}, {.models = 1, .variables = 1}, [=](TestNode& node) {
    node.AddVariableDependency("mark", modelName);
    node.makeWorker = [] { return new MarkWorker<Kind>; };
  });
}

/// A variable that counts the firings of an action in every model of that name.
inline TestRewardModel::MakeNode firingsVariable(const char* name, std::vector<Window> windows, const char* actionName,
                                                 const char* modelName, bool isTimeAveraged = false) {
  return variable(name, INTERVAL_OF_TIME, std::move(windows), {.impulses = 1},
                  [=](TestNode& node) { node.addImpulse(actionName, modelName, 1, isTimeAveraged); });
}

/// The items of a frozen set.
inline std::vector<int> itemsOf(FastSet& frozen) {
  std::vector<int> items;
  for (int i = 0; i < frozen.size(); ++i) {
    items.push_back(frozen[i]);
  }
  return items;
}

}  // namespace support
