#include "Performance_Variables/PerformanceVariableNode.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <utility>
#include <vector>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseSyncActionClass.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/List.h"
#include "BaseClasses/OwnedText.h"
#include "Performance_Variables/ActionModelPairClass.h"
#include "Performance_Variables/ImpulseNodeClass.h"
#include "Performance_Variables/ModelGroupClass.h"
#include "Performance_Variables/PerformanceVariableWorker.h"
#include "Performance_Variables/VarModelPairClass.h"

int PerformanceVariableNode::the_id = 0;

namespace {

using Instances = std::vector<BaseModelClass*>;

/// The instances of a model name in the tree below `topModel`, in the tree's stable order.
Instances instancesOf(BaseModelClass& topModel, const char* modelName) {
  List<BaseModelClass> models;
  topModel.listModels(modelName, &models);
  return Instances(models.getList(), models.getList() + models.getNumItems());
}

int countInstancesOf(BaseModelClass& topModel, const char* modelName) {
  List<BaseModelClass> models;
  topModel.listModels(modelName, &models);
  return models.getNumItems();
}

/// A new array of `count` zeroed entries.
template <typename Entry>
Entry* makeArray(int count) {
  return new Entry[static_cast<std::size_t>(count)]{};
}

double* copyOf(const double* values, int count) {
  double* const copy = makeArray<double>(count);
  for (int i = 0; i < count; ++i) {
    copy[i] = values[i];
  }
  return copy;
}

bool containsText(char* const* texts, int count, const char* text) {
  for (int i = 0; i < count; ++i) {
    if (std::strcmp(texts[i], text) == 0) {
      return true;
    }
  }
  return false;
}

void deleteTexts(char** texts, int count) {
  for (int i = 0; i < count; ++i) {
    delete[] texts[i];
  }
  delete[] texts;
}

/// First of the `workers` impulse workers of block `block`, when they are cut into `blocks` blocks; the block's end is
/// the start of the next one.
int blockStart(int workers, int block, int blocks) {
  return static_cast<int>(std::int64_t{workers} * block / blocks);
}

[[noreturn]] void endWithoutInstances(const char* modelName, int count, const char* topModelName) {
  std::cerr << "Number of " << modelName << "'s was " << count << ".  Model cannot be created.\n";
  if (topModelName != nullptr) {
    std::cerr << "Model Name was: " << topModelName << "\n.";
  } else {
    std::cerr << "Model Name was: NULL\n";
  }
  std::exit(0);
}

}  // namespace

PerformanceVariableNode::~PerformanceVariableNode() {
  for (int worker = 0; worker < NumberOfWorkers && WorkerList != nullptr; ++worker) {
    delete WorkerList[worker];  // takes itself out of the list
  }
  delete[] WorkerList;
  delete[] ModelList;
  for (int impulse = 0; impulse < NumberOfImpulses; ++impulse) {
    if (ImpulseModelList != nullptr) {
      delete[] ImpulseModelList[impulse];
    }
    deleteTexts(ImpulseModelNamesList[impulse], NumberOfImpulseModelNames[impulse]);
  }
  delete[] ImpulseModelList;
  delete[] ImpulseModelNamesList;
  delete[] NumberOfImpulseModelNames;
  delete[] NumberOfImpulseWorkers;
  delete[] NumberOfImpulseActions;
  delete[] ImpulseNodeList;
  delete[] ImpulseWorkersList;
  delete[] ActionNamesList;
  delete[] VarNamesList;
  deleteTexts(ModelNamesList, NumberOfModelNames);
  delete[] ActionDependencies;
  delete[] StartList;
  delete[] StopList;
  delete[] Name;
}

// Declarations.

void PerformanceVariableNode::Initialize(const char* the_name, RewardType rewardtype, int numtimes,
                                         const double* startpts, const double* stoppts, int timeindex,
                                         int number_of_impulses, int numModelsAffectingReward,
                                         int number_of_variable_dependencies) {
  id = the_id++;
  PVRewardType = rewardtype;
  InitializeTimeArrays(numtimes, startpts, stoppts);
  Start = StartList[timeindex];
  Stop = StopList[timeindex];
  batchSize = Stop - Start;
  support::replaceText(Name, the_name);
  if (number_of_variable_dependencies != 0) {
    VarNamesList = new VarModelPairClass[static_cast<std::size_t>(number_of_variable_dependencies)];
  }
  if (numModelsAffectingReward != 0) {
    ModelNamesList = makeArray<char*>(numModelsAffectingReward);
  }
  if (number_of_impulses != 0) {
    ImpulseNodeList = makeArray<ImpulseNodeClass*>(number_of_impulses);
    ImpulseWorkersList = makeArray<ImpulseNodeClass**>(number_of_impulses);
    NumberOfImpulseWorkers = makeArray<int>(number_of_impulses);
    ImpulseModelNamesList = makeArray<char**>(number_of_impulses);
    NumberOfImpulseModelNames = makeArray<int>(number_of_impulses);
    ActionNamesList = new ActionModelPairClass[static_cast<std::size_t>(number_of_impulses)];
    NumberOfImpulseActions = makeArray<int>(number_of_impulses);
  }
  varNameCapacity_ = number_of_variable_dependencies;
  modelNameCapacity_ = numModelsAffectingReward;
  impulseCapacity_ = number_of_impulses;
}

void PerformanceVariableNode::InitializeTimeArrays(int numtimes, const double* startpts, const double* stoppts) {
  delete[] std::exchange(StartList, copyOf(startpts, numtimes));
  delete[] std::exchange(StopList, copyOf(stoppts, numtimes));
  NumTimes = numtimes;
}

void PerformanceVariableNode::AddVariableDependency(const char* TheVarName, const char* TheModelName) {
  support::requireRuntime(NumberOfVarNames < varNameCapacity_, "NumberOfVarNames < varNameCapacity_");
  VarNamesList[NumberOfVarNames].SetPair(TheVarName, TheModelName);
  ++NumberOfVarNames;
  AddModelDependency(TheModelName);
}

void PerformanceVariableNode::AddModelDependency(const char* TheName) {
  if (IsDependentOnModel(TheName)) {
    return;
  }
  support::requireRuntime(NumberOfModelNames < modelNameCapacity_, "NumberOfModelNames < modelNameCapacity_");
  ModelNamesList[NumberOfModelNames] = support::copyOfText(TheName);
  ++NumberOfModelNames;
}

void PerformanceVariableNode::AddImpulse(const char* TheActionName, const char* TheModelName,
                                         ImpulseNodeClass* TheImpulse) {
  int number = GetImpulseNumber(TheImpulse);
  if (number == -1) {
    support::requireRuntime(NumberOfImpulses < impulseCapacity_, "NumberOfImpulses < impulseCapacity_");
    number = NumberOfImpulses;
    ImpulseNodeList[number] = TheImpulse;
    if (TheImpulse->NumberOfModelDependencies != 0) {
      ImpulseModelNamesList[number] = makeArray<char*>(TheImpulse->NumberOfModelDependencies);
    }
    ++NumberOfImpulses;
  }
  AddImpulseActionDependency(TheActionName, TheModelName, number);
  AddImpulseModelDependency(TheModelName, TheImpulse);
}

void PerformanceVariableNode::AddImpulseActionDependency(const char* TheActionName, const char* TheModelName,
                                                         int ImpulseNumber) {
  ActionNamesList[ImpulseNumber].SetPair(TheActionName, TheModelName);
}

void PerformanceVariableNode::AddImpulseModelDependency(const char* TheModelName, ImpulseNodeClass* TheImpulse) {
  const int number = GetImpulseNumber(TheImpulse);
  if (number == -1) {
    std::cerr << "Model Dependency requested on undefined impulse."
              << "  Check code generator.  Error code GP0001.\n";
    std::exit(0);
  }
  if (TheImpulse->NumberOfModelDependencies == 0 || IsDependentOnImpulseModel(TheModelName, number)) {
    return;
  }
  int& count = NumberOfImpulseModelNames[number];
  support::requireRuntime(count < TheImpulse->NumberOfModelDependencies,
                          "NumberOfImpulseModelNames[number] < NumberOfModelDependencies");
  ImpulseModelNamesList[number][count] = support::copyOfText(TheModelName);
  ++count;
}

bool PerformanceVariableNode::IsDependentOnModel(const char* TheName) const {
  return containsText(ModelNamesList, NumberOfModelNames, TheName);
}

bool PerformanceVariableNode::IsDependentOnImpulseModel(const char* TheModelName, int ImpulseNumber) const {
  return containsText(ImpulseModelNamesList[ImpulseNumber], NumberOfImpulseModelNames[ImpulseNumber], TheModelName);
}

int PerformanceVariableNode::GetImpulseNumber(const ImpulseNodeClass* TheImpulse) const {
  for (int impulse = 0; impulse < NumberOfImpulses; ++impulse) {
    if (ImpulseNodeList[impulse] == TheImpulse) {
      return impulse;
    }
  }
  return -1;
}

void PerformanceVariableNode::DefineName(const char* TheName) {
  for (int worker = 0; worker < NumberOfWorkers; ++worker) {
    WorkerList[worker]->DefineName(TheName, worker);
  }
  for (int impulse = 0; impulse < NumberOfImpulses; ++impulse) {
    for (int worker = 0; worker < NumberOfImpulseWorkers[impulse]; ++worker) {
      ImpulseWorkersList[impulse][worker]->DefineName(TheName, impulse, worker);
    }
  }
}

// Resolution against a model tree.

void PerformanceVariableNode::FixReferences(BaseModelClass* TheModel) {
  topModel_ = TheModel;
  if (TheModelPtr != nullptr) {
    *TheModelPtr = TheModel;
  }
  GetNumberOfWorkers();
  GetNumberOfImpulseWorkers();
  WorkerList = makeArray<PerformanceVariableWorker*>(NumberOfWorkers);
}

void PerformanceVariableNode::GetNumberOfWorkers() {
  NumberOfWorkers = NumberOfModelNames > 0 ? 1 : 0;
  for (int name = 0; name < NumberOfModelNames; ++name) {
    NumberOfWorkers *= countInstancesOf(*topModel_, ModelNamesList[name]);
  }
}

void PerformanceVariableNode::GetNumberOfImpulseWorkers() {
  for (int impulse = 0; impulse < NumberOfImpulses; ++impulse) {
    int workers = 1;
    for (int name = 0; name < NumberOfImpulseModelNames[impulse]; ++name) {
      workers *= countInstancesOf(*topModel_, ImpulseModelNamesList[impulse][name]);
    }
    const char* const actionModel = ActionNamesList[impulse].ModelName;
    NumberOfImpulseActions[impulse] = countInstancesOf(*topModel_, actionModel);
    if (!IsDependentOnImpulseModel(actionModel, impulse)) {
      workers *= NumberOfImpulseActions[impulse];
    }
    NumberOfImpulseWorkers[impulse] = workers;
    if (GlobalDebugLevel != 0) {
      std::cout << "There are " << workers << " workers for Impulse : " << impulse << std::endl;
    }
  }
}

void PerformanceVariableNode::CreateModelGroupList() {
  int repetitionNumber = NumberOfWorkers;
  // An array of none would be a block that nothing points into, which looks lost when a run ends in an error.
  ModelList = NumberOfWorkers > 0 ? new ModelGroupClass[static_cast<std::size_t>(NumberOfWorkers)] : nullptr;
  for (int worker = 0; worker < NumberOfWorkers; ++worker) {
    ModelList[worker].CreateModelList(NumberOfModelNames);
  }
  for (int name = 0; name < NumberOfModelNames; ++name) {
    const Instances instances = instancesOf(*topModel_, ModelNamesList[name]);
    if (instances.empty()) {
      endWithoutInstances(ModelNamesList[name], 0, topModel_->getName());
    }
    repetitionNumber /= static_cast<int>(instances.size());
    for (int worker = 0; worker < NumberOfWorkers; ++worker) {
      const auto repetition = static_cast<std::size_t>(worker / repetitionNumber);
      ModelList[worker].SetModel(name, instances[repetition % instances.size()]);
    }
  }
  workersOfModel_.clear();
  for (int worker = 0; worker < NumberOfWorkers; ++worker) {
    for (int name = 0; name < NumberOfModelNames; ++name) {
      std::vector<int>& workers = workersOfModel_[ModelList[worker].ModelList[name]];
      if (workers.empty() || workers.back() != worker) {
        workers.push_back(worker);
      }
    }
  }
}

void PerformanceVariableNode::FixWorkerList() {
  for (int worker = 0; worker < NumberOfWorkers; ++worker) {
    PerformanceVariableWorker* const fixed = WorkerList[worker];
    support::requireRuntime(fixed != nullptr, "WorkerList[worker] != nullptr");
    fixed->listEntry_ = &WorkerList[worker];
    fixed->Start = Start;
    fixed->Stop = Stop;
    fixed->DefineName(Name, worker);
    fixed->id = id;
    for (int name = 0; name < NumberOfModelNames; ++name) {
      *fixed->TheModelPtr[name] = ModelList[worker].ModelList[name];
    }
  }
}

void PerformanceVariableNode::CreateImpulseModelGroupList() {
  ImpulseModelList = makeArray<ModelGroupClass*>(NumberOfImpulses);
  for (int impulse = 0; impulse < NumberOfImpulses; ++impulse) {
    const int workers = NumberOfImpulseWorkers[impulse];
    ImpulseModelList[impulse] = new ModelGroupClass[static_cast<std::size_t>(workers)];
    for (int worker = 0; worker < workers; ++worker) {
      ImpulseModelList[impulse][worker].CreateModelList(NumberOfImpulseModelNames[impulse]);
    }
    fillImpulseModelGroups(impulse);
  }
}

/// Gives every worker of the impulse its model instances.
void PerformanceVariableNode::fillImpulseModelGroups(int impulse) {
  const int workers = NumberOfImpulseWorkers[impulse];
  const int blocks = NumberOfImpulseActions[impulse];
  const int names = NumberOfImpulseModelNames[impulse];
  std::vector<Instances> instancesOfName(static_cast<std::size_t>(names));
  for (int name = 0; name < names; ++name) {
    instancesOfName[static_cast<std::size_t>(name)] = instancesOf(*topModel_, ImpulseModelNamesList[impulse][name]);
  }
  BaseModelClass* currentModel = nullptr;  // On purpose: carried over to a block that does not start a repetition.
  for (int block = 0; block < blocks; ++block) {
    const int firstWorker = blockStart(workers, block, blocks);
    const int endWorker = blockStart(workers, block + 1, blocks);
    int repetitionNumber = workers / blocks;
    for (int name = 0; name < names; ++name) {
      const Instances& instances = instancesOfName[static_cast<std::size_t>(name)];
      const int count = static_cast<int>(instances.size());
      if (count >= blocks) {
        repetitionNumber /= count / blocks;
      }
      int index = -1;
      for (int worker = firstWorker; worker < endWorker; ++worker) {
        if (worker % repetitionNumber == 0) {
          ++index;
          if (index < count) {
            currentModel = instances[static_cast<std::size_t>(index)];
          }
        }
        ImpulseModelList[impulse][worker].SetModel(name, currentModel);
      }
    }
  }
}

void PerformanceVariableNode::CreateImpulseWorkerLists() {
  for (int impulse = 0; impulse < NumberOfImpulses; ++impulse) {
    ImpulseWorkersList[impulse] = ImpulseNodeList[impulse]->CreateImpulseWorkerList(NumberOfImpulseWorkers[impulse]);
  }
}

void PerformanceVariableNode::FixImpulseWorkerLists() {
  List<BaseModelClass> containingModels;
  for (int impulse = 0; impulse < NumberOfImpulses; ++impulse) {
    topModel_->listModels(ActionNamesList[impulse].ModelName, &containingModels);
    const int workers = NumberOfImpulseWorkers[impulse];
    const int blocks = containingModels.getNumItems();
    for (int block = 0; block < blocks; ++block) {
      for (int worker = blockStart(workers, block, blocks); worker < blockStart(workers, block + 1, blocks); ++worker) {
        ImpulseNodeClass* const fixed = ImpulseWorkersList[impulse][worker];
        fixed->Start = Start;
        fixed->Stop = Stop;
        fixed->id = id;
        fixed->DefineName(Name, impulse, worker);
        fixed->ContainingModel = containingModels[block];
        for (int name = 0; name < NumberOfImpulseModelNames[impulse]; ++name) {
          *fixed->TheModelPtr[name] = ImpulseModelList[impulse][worker].ModelList[name];
        }
      }
    }
  }
}

void PerformanceVariableNode::AddPVWorkersToAction(BaseActionClass* Action, const BaseModelClass* TheModel) const {
  const auto workers = workersOfModel_.find(TheModel);
  if (workers == workersOfModel_.end()) {
    return;
  }
  for (const int worker : workers->second) {
    Action->AffectedRateWorkers[id].insert(worker);
  }
}

// Run time.

void PerformanceVariableNode::EndAccumulate(double finish_time, double last_event_time, BaseActionClass* LastAction) {
  CommonAccumulate(finish_time, last_event_time, LastAction);
  forEachImpulseWorker([&](ImpulseNodeClass& worker) { worker.completeAccumulation(finish_time); });
  UpdateAccumulate(finish_time + 1.0);
}

void PerformanceVariableNode::takeImpulseRewards(double next_time, double last_event_time,
                                                 BaseActionClass* LastAction) {
  if (!ImpulseAffectedBy(LastAction)) {
    return;
  }
  forEachAffectedImpulseWorker(*LastAction,
                               [&](ImpulseNodeClass& worker) { worker.Accumulate(next_time, last_event_time); });
  if (LastAction->isSync()) {
    // On purpose: each superposed action takes the rate reward of the step once more.
    auto* const sync = static_cast<BaseSyncActionClass*>(LastAction);
    for (int superposed = 0; superposed < sync->getNumSuperposedActions(); ++superposed) {
      CommonAccumulate(next_time, last_event_time, sync->getSuperposedAction(superposed));
    }
  }
}

void PerformanceVariableNode::TotalAccumulation() {
  if (PVRewardType == INSTANT_OF_TIME && NumberOfWorkers > 0) {
    double TReward = 0.0;
    for (int worker = 0; worker < NumberOfWorkers; ++worker) {
      TReward += WorkerList[worker]->Reward;
    }
    const double fraction = WorkerList[0]->RewardFraction;
    TotalReward += fraction * TReward;
    TotalRewardSqr += TReward * TReward * fraction;
  }
  TotalImpulse = 0.0;
  TotalImpulseSqr = 0.0;
  forEachImpulseWorker([&](const ImpulseNodeClass& worker) {
    TotalImpulse += worker.Impulse;
    TotalImpulseSqr += worker.Impulse * worker.Impulse;
  });
  TotalReward += TotalImpulse;
  TotalRewardSqr += TotalImpulseSqr;
}

bool PerformanceVariableNode::ImpulseAffectedBy(BaseActionClass* Action) const {
  FastSet& nodes = Action->AffectedNodesByImpulseReward;
  const int count = nodes.size();
  for (int i = 0; i < count; ++i) {
    if (nodes[i] == id) {
      return true;
    }
  }
  if (Action->isSync()) {
    auto* const sync = static_cast<BaseSyncActionClass*>(Action);
    for (int superposed = 0; superposed < sync->getNumSuperposedActions(); ++superposed) {
      if (ImpulseAffectedBy(sync->getSuperposedAction(superposed))) {
        return true;
      }
    }
  }
  return false;
}

void PerformanceVariableNode::CurrentReward(BaseActionClass* TheAction) {
  TotalReward = 0.0;
  TotalRewardSqr = 0.0;
  for (int worker = 0; worker < NumberOfWorkers; ++worker) {
    WorkerList[worker]->CurrentReward();
    TotalReward += WorkerList[worker]->Reward;
    TotalRewardSqr += WorkerList[worker]->RewardSqr;
  }
  TotalImpulse = 0.0;
  TotalImpulseSqr = 0.0;
  if (ImpulseAffectedBy(TheAction)) {
    forEachAffectedImpulseWorker(*TheAction, [&](ImpulseNodeClass& worker) {
      worker.CurrentImpulse();
      TotalImpulse += worker.Impulse;
      TotalImpulseSqr += worker.ImpulseSqr;
    });
  }
}

void PerformanceVariableNode::Reset() {
  Accumulating = acc_later;
  TotalReward = 0.0;
  TotalRewardSqr = 0.0;
  for (int worker = 0; worker < NumberOfWorkers; ++worker) {
    WorkerList[worker]->Reset();
  }
  TotalImpulse = 0.0;
  TotalImpulseSqr = 0.0;
  forEachImpulseWorker([](ImpulseNodeClass& worker) { worker.Reset(); });
  if (Type == steady_state) {
    Start = Stop;
    Stop += batchSize;
  }
}

void PerformanceVariableNode::UpdateDependencies() {
  if (Type != terminating) {
    return;
  }
  for (int dependency = 0; dependency < NumberOfActionDependencies; ++dependency) {
    BaseActionClass& action = *ActionDependencies[dependency];
    ++action.TotalNumCollected;
    if (action.TotalNumCollected == action.AffectedNodes.size()) {
      action.AffectedNodes.clear();
    }
  }
}

/// Every worker of every impulse, in order.
template <typename Visitor>
void PerformanceVariableNode::forEachImpulseWorker(Visitor visit) const {
  for (int impulse = 0; impulse < NumberOfImpulses; ++impulse) {
    for (int worker = 0; worker < NumberOfImpulseWorkers[impulse]; ++worker) {
      visit(*ImpulseWorkersList[impulse][worker]);
    }
  }
}

/// The impulse workers of this node that belong to the action itself, in the order of its lists.
template <typename Visitor>
void PerformanceVariableNode::forEachAffectedImpulseWorker(const BaseActionClass& action, Visitor visit) const {
  FastSet& impulses = action.AffectedImpulseRewards[id];
  const int count = impulses.size();
  for (int i = 0; i < count; ++i) {
    const int impulse = impulses[i];
    const int* const workers = action.AffectedImpulseWorkers[id][impulse];
    const int numWorkers = action.NumAffectedImpulseWorkers[id][impulse];
    for (int k = 0; k < numWorkers; ++k) {
      visit(*ImpulseWorkersList[impulse][workers[k]]);
    }
  }
}
