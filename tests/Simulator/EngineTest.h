#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BaseClasses/TraceFile.h"
#include "BaseClasses/TraceFileContainer.h"
#include "Simulator/Event.h"
#include "Simulator/HandModel.h"
#include "Simulator/PAddress.h"
#include "support/CallLog.h"
#include "support/CapturedOutput.h"
#include "support/SimulatorProbe.h"
#include "support/TestStudy.h"

namespace support {

/// A simulator over a model that the test builds. The log holds the calls that its activities have got.
class EngineTest : public testing::Test {
 protected:
  /// Has the next simulator run the model that `build` puts together.
  void useModel(std::function<void(HandModel&)> build, std::vector<HandVariable> variables = {{}}) {
    setModelFactory([this, build = std::move(build), variables = std::move(variables)](bool) {
      auto* const model = new HandModel;
      build(*model);
      model->finish("model", &log);
      return std::make_unique<HandReward>(model, variables);
    });
  }

  /// Sets the simulator up, silently. An earlier one ends before.
  SimulatorProbe& start(std::vector<std::string> words = {"-N1"}) {
    simulator.reset();
    standardOutputOf([&] { simulator = std::make_unique<SimulatorProbe>(std::move(words)); });
    log.clear();
    return *simulator;
  }

  /// Brings the simulator to the first event of a batch.
  SimulatorProbe& startBatch(std::vector<std::string> words = {"-N1"}) {
    start(std::move(words));
    simulator->makeLoopObjects();
    simulator->TempAction = simulator->NullAction;
    simulator->GenerateInitialEnabledList();
    simulator->GenerateCompleteEventList();
    simulator->chooseNextEvent();
    log.clear();
    return *simulator;
  }

  /// Runs to the end, silently.
  SimulatorProbe& run(std::vector<std::string> words) {
    start(std::move(words));
    standardOutputOf([&] { simulator->Run(); });
    return *simulator;
  }

  void TearDown() override {
    if (simulator != nullptr) {
      simulator->deleteLoopObjects();
      simulator.reset();  // before what a derived fixture's model and study refer to
    }
  }

  static PAddress& addressOf(BaseActionClass& group) { return *static_cast<PAddress*>(group.EventPointer); }
  static bool isScheduled(BaseActionClass& group) { return addressOf(group).event != nullptr; }
  static const Event& eventOf(BaseActionClass& group) { return **addressOf(group).event; }

  /// Names of the watched groups, from the front.
  [[nodiscard]] std::vector<std::string> watchedGroups() const {
    std::vector<std::string> names;
    for (const BaseActionClass* const group : simulator->TheReactivationList) {
      names.emplace_back(group->ActionName);
    }
    return names;
  }

  CallLog log;
  std::unique_ptr<SimulatorProbe> simulator;
};

/// The chain of an action, as names from its head.
inline std::vector<std::string> chainOf(const BaseActionClass& action) {
  std::vector<std::string> names;
  for (const ActionAffectsElement* element = action.Affects; element != nullptr; element = element->next) {
    names.emplace_back(element->Action->ActionName);
  }
  return names;
}

/// Sets an environment variable of the test's process for its lifetime.
class EnvironmentGuard {
 public:
  EnvironmentGuard(const char* name, const char* value) : name_(name) { setenv(name, value, 1); }
  EnvironmentGuard(const EnvironmentGuard&) = delete;
  EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;
  ~EnvironmentGuard() { unsetenv(name_); }

 private:
  const char* name_;
};

/// A sink that notes what it is asked to show.
class LoggingSink : public TraceFile {
 public:
  explicit LoggingSink(CallLog& log) : log_(log) {}

  using TraceFile::printState;
  void printHeader(PVModel* /*model*/) override { log_.emplace_back("header"); }
  void printFooter() override { log_.emplace_back("footer"); }
  void printInitialState(BaseModelClass* /*model*/) override { log_.emplace_back("initial state"); }
  void printState(PVModel* /*model*/) override { log_.emplace_back("state"); }
  void printPreFireAction(BaseActionClass* action) override {
    log_.push_back(std::string("before ") + action->ActionName);
  }
  void printFireAction(BaseActionClass* action, double /*time*/) override {
    log_.push_back(std::string("firing ") + action->ActionName);
  }
  void printPostFireAction(BaseActionClass* first, BaseActionClass* second) override {
    log_.push_back(std::string("after ") + first->ActionName + " " + second->ActionName);
  }
  void newBatch() override { log_.emplace_back("new batch"); }

 private:
  CallLog& log_;
};

}  // namespace support
