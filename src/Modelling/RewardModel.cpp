#include "Modelling/RewardModel.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "BaseClasses/List.h"
#include "Modelling/ModelFault.h"
#include "Modelling/VariableNode.h"
#include "Performance_Variables/ActionModelPairClass.h"

namespace modelling {
namespace {

std::string quoted(const std::string& text) {
  return '"' + text + '"';
}

std::string begin(const PerformanceVariable& variable) {
  return "performance variable " + quoted(variable.name());
}

/// Ends the process unless all of them are of the class that a function of the variable takes.
void requireClass(const PerformanceVariable& variable, List<BaseModelClass>& models,
                  PerformanceVariable::IsModel isModel) {
  for (BaseModelClass* const model : std::span(models.getList(), static_cast<std::size_t>(models.getNumItems()))) {
    if (!isModel(model)) {
      failModel(begin(variable) + ": model " + quoted(model->getName()) +
                " is not of the class that its function takes");
    }
  }
}

}  // namespace

RewardModel::RewardModel(const std::string& name, const Describe& describe, bool expandTimeArrays) {
  DefineName(name.c_str());
  StateMode = 1;
  describe(*this);
  if (TheModel == nullptr) {
    failModel("reward model " + quoted(name) + " was given no model");
  }
  checkNames();
  CreatePVList(static_cast<int>(variables_.size()), expandTimeArrays);
  Initialize();
  checkImpulseWorkers();
  endBatchesWithTerminatingVariables();
}

// The engine's part goes first: its nodes borrow the variables.
RewardModel::~RewardModel() {
  Destruct();
}

// The engine's own rule is the last stop of all variables. The first batch of a steady-state one often is far longer than
// what a terminating run is to see, and none of its reward is taken there.
void RewardModel::endBatchesWithTerminatingVariables() {
  double last = 0.0;
  bool isAnyTerminating = false;
  for (const auto& variable : variables_) {
    if (variable->type() != STEADY_STATE) {
      isAnyTerminating = true;
      last = std::max(last, std::ranges::max(variable->stops()));
    }
  }
  if (isAnyTerminating) {
    Simulation_Stop_Time = last;
  }
}

BaseModelClass& RewardModel::model(const ChildModel& composition) {
  BaseModelClass& top = model(composition.make());
  top.DefineName(composition.name.c_str());
  return top;
}

BaseModelClass& RewardModel::model(std::unique_ptr<BaseModelClass> made) {
  if (TheModel != nullptr) {
    failModel("reward model " + quoted(Name) + " was given two models: join them");
  }
  TheModel = made.release();
  return *TheModel;
}

PerformanceVariable& RewardModel::add(std::string name, RewardType type, std::vector<double> starts,
                                      std::vector<double> stops) {
  if (starts.size() != stops.size() || stops.empty()) {
    failModel("performance variable " + quoted(name) + " has " + std::to_string(starts.size()) + " starts and " +
              std::to_string(stops.size()) + " stops");
  }
  return *variables_.emplace_back(
      std::make_unique<PerformanceVariable>(std::move(name), type, std::move(starts), std::move(stops)));
}

PerformanceVariable& RewardModel::instantOfTime(std::string name, const std::vector<double>& times) {
  return add(std::move(name), INSTANT_OF_TIME, times, times);
}

PerformanceVariable& RewardModel::instantOfTime(std::string name, double time) {
  return instantOfTime(std::move(name), std::vector<double>{time});
}

PerformanceVariable& RewardModel::intervalOfTime(std::string name, double start, double stop) {
  return intervalOfTime(std::move(name), std::vector<double>{start}, std::vector<double>{stop});
}

PerformanceVariable& RewardModel::intervalOfTime(std::string name, std::vector<double> starts,
                                                 std::vector<double> stops) {
  return add(std::move(name), INTERVAL_OF_TIME, std::move(starts), std::move(stops));
}

PerformanceVariable& RewardModel::timeAveraged(std::string name, double start, double stop) {
  return timeAveraged(std::move(name), std::vector<double>{start}, std::vector<double>{stop});
}

PerformanceVariable& RewardModel::timeAveraged(std::string name, std::vector<double> starts,
                                               std::vector<double> stops) {
  return add(std::move(name), TIMEAVE_INTERVAL_OF_TIME, std::move(starts), std::move(stops));
}

PerformanceVariable& RewardModel::steadyState(std::string name, double transient, double batchLength) {
  return add(std::move(name), STEADY_STATE, {transient}, {transient + batchLength});
}

PerformanceVariableNode* RewardModel::createPVNode(int pvindex, int timeindex) {
  return new VariableNode(*variables_[static_cast<std::size_t>(pvindex)], timeindex);
}

void RewardModel::checkNames() {
  for (const auto& variable : variables_) {
    if (variable->rateModels().empty() && variable->impulses().empty()) {
      failModel(begin(*variable) + " has neither a rate reward nor an impulse");
    }
    for (const auto& model : variable->rateModels()) {
      List<BaseModelClass> models;
      TheModel->listModels(model.name.c_str(), &models);
      requireClass(*variable, models, model.isModel);
    }
    for (const auto& impulse : variable->impulses()) {
      checkImpulse(*variable, impulse);
    }
  }
}

void RewardModel::checkImpulse(const PerformanceVariable& variable, const PerformanceVariable::Impulse& impulse) {
  List<BaseModelClass> models;
  TheModel->listModels(impulse.model.c_str(), &models);
  requireClass(variable, models, impulse.isModel);
  if (models.getNumItems() == 0) {
    failModel(begin(variable) + " has an impulse on " + quoted(impulse.action) + " of model " + quoted(impulse.model) +
              ", and there is no model of that name");
  }
  List<BaseActionClass> actions;
  models.getItem(0)->listActions(impulse.action.c_str(), &actions);
  if (actions.getNumItems() == 0) {
    failModel(begin(variable) + " has an impulse on " + quoted(impulse.action) + ", and model " +
              quoted(impulse.model) + " has no action of that name");
  }
}

// The engine hands the impulse workers of a variable out to the models block by block, over the models of all impulses
// so far. With impulses on several replicated models some workers would go to a model of another impulse and be lost.
void RewardModel::checkImpulseWorkers() {
  for (int pv = 0; pv < Number_Of_Performance_Variables; ++pv) {
    const PerformanceVariableNode& node = *PerformanceVariableList[pv];
    for (int impulse = 0; impulse < node.NumberOfImpulses; ++impulse) {
      for (int worker = 0; worker < node.NumberOfImpulseWorkers[impulse]; ++worker) {
        BaseModelClass* const holder = node.ImpulseWorkersList[impulse][worker]->ContainingModel;
        if (holder == nullptr || std::strcmp(holder->getName(), node.ActionNamesList[impulse].ModelName) != 0) {
          failModel("performance variable " + quoted(node.Name) +
                    " has impulses on several replicated models: make a variable for each of these models");
        }
      }
    }
  }
}

}  // namespace modelling
