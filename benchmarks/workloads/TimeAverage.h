#pragma once

#include <functional>
#include <utility>

#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/PerformanceVariableNode.h"

/// A variable with a rate reward: the time average over [0, stop] of what a Worker reads from one state variable of the
/// models of a name.
template <class Worker>
class TimeAverage : public PerformanceVariableNode {
 public:
  TimeAverage(const char* name, const char* model, const char* stateVariable, double stop) {
    const double start = 0.0;
    Initialize(name, TIMEAVE_INTERVAL_OF_TIME, 1, &start, &stop, 0, 0, 1, 1);
    AddModelDependency(model);
    AddVariableDependency(stateVariable, model);
  }
  void CreateWorkerList() override { fillWorkerList<Worker>(); }
};

/// A reward model of one variable.
/// Owns     the top model that it is given, as every reward model does.
class OneVariable : public PVModel {
 public:
  using NodeMaker = std::function<PerformanceVariableNode*()>;

  OneVariable(const char* name, BaseModelClass* topModel, NodeMaker makeNode, bool expandTimeArrays)
      : makeNode_(std::move(makeNode)) {
    TheModel = topModel;
    DefineName(name);
    StateMode = 1;
    CreatePVList(1, expandTimeArrays);
    Initialize();
  }

 protected:
  PerformanceVariableNode* createPVNode(int /*pvIndex*/, int /*timeIndex*/) override { return makeNode_(); }

 private:
  NodeMaker makeNode_;
};
