#include "Performance_Variables/PVModel.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <unordered_map>
#include <vector>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/BaseSyncActionClass.h"
#include "BaseClasses/FastSet.h"
#include "Performance_Variables/ActionModelPairClass.h"
#include "Performance_Variables/ImpulseNodeClass.h"
#include "Performance_Variables/VarModelPairClass.h"

namespace {

/// The bytes of a state index in memory order; an image holds a tail of them.
using IndexBytes = std::array<unsigned char, sizeof(std::int32_t)>;
constexpr int kIndexSize = static_cast<int>(IndexBytes{}.size());

IndexBytes bytesOf(std::int32_t number) {
  return std::bit_cast<IndexBytes>(number);
}

void* bytesAt(void* state, int offset) {
  return static_cast<unsigned char*>(state) + offset;
}

void freezeAll(FastSet* sets, int count) {
  for (int i = 0; i < count; ++i) {
    sets[i].NoMoreModifications();
  }
}

void insertAll(FastSet& target, FastSet& frozenItems) {
  const int count = frozenItems.size();
  for (int i = 0; i < count; ++i) {
    target.insert(frozenItems[i]);
  }
}

/// The action that the pair names in the model, the first if there are several. A reward that names no action of its
/// model is reported on standard error and ends the process.
BaseActionClass& namedAction(BaseModelClass& model, const ActionModelPairClass& names, const char* pvName) {
  List<BaseActionClass> actions;
  model.listActions(names.ActionName, &actions);
  if (actions.getNumItems() == 0) {
    std::cerr << "performance variable \"" << pvName << "\": model \"" << names.ModelName << "\" has no action \""
              << names.ActionName << "\" for its impulse reward" << std::endl;
    std::exit(1);
  }
  return *actions.getItem(0);
}

}  // namespace

PVModel::PVModel() : LastAction(&ZeroImpulseAction) {
  ZeroImpulseAction.defineName("No Action Fired Yet");
  LastActionTime = 0.0;
  PerformanceVariableNode::the_id = 0;
}

PVModel::~PVModel() {
  Destruct();
}

// The questions of a model.

void PVModel::listModels(const char* TheModelName, List<BaseModelClass>* TheList) {
  TheModel->listModels(TheModelName, TheList);
}

void PVModel::CurrentState(void* Location) {
  TheModel->CurrentState(Location);
  GetPVState(bytesAt(Location, ModelStateSize));
}

void PVModel::listActions(List<BaseActionClass>* TheList) {
  TheList->append(ActionList, NumActions);
}

void PVModel::listGroups(List<BaseGroupClass>* TheList) {
  TheList->append(GroupList, NumGroups);
}

void PVModel::SetState(void* TheState) {
  TheModel->SetState(TheState);
}

int PVModel::StateSize() {
  return PVModelStateSize;
}

bool PVModel::CompareState(void* state1, void* state2) {
  if (!TheModel->CompareState(state1, state2)) {
    return false;
  }
  return StateMode == 0 || std::memcmp(bytesAt(state1, ModelStateSize), bytesAt(state2, ModelStateSize),
                                       static_cast<std::size_t>(AdditionalStateSize)) == 0;
}

void PVModel::listActions(const char* TheActionName, List<BaseActionClass>* TheList) {
  TheModel->listActions(TheActionName, TheList);
}

void PVModel::listSVs(const char* TheModelName, const char* TheVarName, List<BaseStateVariableClass>* TheVariables,
                      List<BaseModelClass>* TheModels) {
  TheModel->listSVs(TheModelName, TheVarName, TheVariables, TheModels);
}

void PVModel::printState(std::ostream* strm) {
  TheModel->printState(strm);
}

// Construction.

void PVModel::CreatePVList(int numPVs, bool expandtimearrays) {
  int MaxPVTimes = 100;
  int curIndex = 0;
  PerformanceVariableList = new PerformanceVariableNode* [static_cast<std::size_t>(MaxPVTimes)] {};
  for (int n = 0; n < numPVs; ++n) {
    PerformanceVariableNode* const pvnode = createPVNode(n, 0);
    support::requireRuntime(pvnode != nullptr, "pvnode != nullptr");
    const int numTimes = pvnode->GetNumTimePoints();
    if (curIndex + numTimes > MaxPVTimes - 1) {
      MaxPVTimes = (MaxPVTimes + numTimes) * 2;
      auto** const larger = new PerformanceVariableNode* [static_cast<std::size_t>(MaxPVTimes)] {};
      std::copy(PerformanceVariableList, PerformanceVariableList + curIndex, larger);
      delete[] PerformanceVariableList;
      PerformanceVariableList = larger;
    }
    PerformanceVariableList[curIndex++] = pvnode;
    for (int t = 1; expandtimearrays && t < numTimes; ++t) {
      PerformanceVariableList[curIndex++] = createPVNode(n, t);
    }
  }
  Number_Of_Performance_Variables = curIndex;
}

void PVModel::Initialize() {
  // The marker answers every query of a step with empty sets.
  ZeroImpulseAction.AllocatePVRateDS(Number_Of_Performance_Variables);
  actionsWithRateData_.push_back(&ZeroImpulseAction);
  ZeroImpulseAction.AllocatePVImpulseDS(Number_Of_Performance_Variables);
  actionsWithImpulseData_.push_back(&ZeroImpulseAction);
  completeRateData(ZeroImpulseAction);
  completeImpulseData(ZeroImpulseAction);

  GroupList = TheModel->getGroupList();
  ActionList = TheModel->getActionList();
  PVListOfActions = ActionList;
  NumActions = TheModel->NumActions;
  NumStateVariables = TheModel->NumStateVariables;
  NumGroups = TheModel->NumGroups;
  NumSharedStateVariables = 0;

  Simulation_Stop_Time = 0.0;
  for (int pv = 0; pv < Number_Of_Performance_Variables; ++pv) {
    PerformanceVariableList[pv]->FixReferences(TheModel);
    Simulation_Stop_Time = std::max(Simulation_Stop_Time, PerformanceVariableList[pv]->Stop);
  }
  MakeAffectedLists();
  MakeImpulseAffectedLists();
  CreateAffectedLists();
  CreatePVStateIndex();
}

void PVModel::MakeAffectedLists() {
  for (int pv = 0; pv < Number_Of_Performance_Variables; ++pv) {
    PerformanceVariableNode& node = *PerformanceVariableList[pv];
    node.CreateModelGroupList();
    node.CreateWorkerList();
    node.FixWorkerList();
    addVariableDependencies(pv);
  }
  for (int i = 0; i < NumActions; ++i) {
    allocateRateData(*ActionList[i]);
    completeRateData(*ActionList[i]);
  }
}

/// Tells every action that affects a variable of the node so.
void PVModel::addVariableDependencies(int pvCounter) {
  PerformanceVariableNode& node = *PerformanceVariableList[pvCounter];
  for (int pair = 0; pair < node.NumberOfVarNames; ++pair) {
    List<BaseStateVariableClass> TheAffectedSVs;
    List<BaseModelClass> TheModelList;
    listSVs(node.VarNamesList[pair].ModelName, node.VarNamesList[pair].VarName, &TheAffectedSVs, &TheModelList);
    for (int k = 0; k < TheAffectedSVs.getNumItems(); ++k) {
      BaseStateVariableClass& variable = *TheAffectedSVs.getItem(k);
      for (int a = 0; a < variable.getNumAffectingActions(); ++a) {
        BaseActionClass* const Action = variable.getAffectingAction(a);
        if (allocateRateData(*Action)) {
          ++NumAffectingActions;
        }
        if (Action->AffectedRateWorkers[pvCounter].empty()) {
          support::requireRuntime(Action->AffectedNodesByRateReward.insert(pvCounter),
                                  "Action->AffectedNodesByRateReward.insert(PVCounter)");
          ++node.NumberOfActionDependencies;
        }
        node.AddPVWorkersToAction(Action, TheModelList.getItem(k));
      }
    }
  }
}

void PVModel::MakeImpulseAffectedLists() {
  for (int pv = 0; pv < Number_Of_Performance_Variables; ++pv) {
    PerformanceVariableNode& node = *PerformanceVariableList[pv];
    node.CreateImpulseModelGroupList();
    node.CreateImpulseWorkerLists();
    node.FixImpulseWorkerLists();
    for (int impulse = 0; impulse < node.NumberOfImpulses; ++impulse) {
      addImpulseDependencies(pv, impulse);
    }
  }
  for (int i = 0; i < NumActions; ++i) {
    completeImpulseData(*ActionList[i]);
  }
}

/// Tells the impulse's action in every instance of its model so.
void PVModel::addImpulseDependencies(int pvCounter, int impulse) {
  PerformanceVariableNode& node = *PerformanceVariableList[pvCounter];
  const ActionModelPairClass& names = node.ActionNamesList[impulse];
  std::unordered_map<const BaseModelClass*, std::vector<int>> workersOfModel;
  for (int worker = 0; worker < node.NumberOfImpulseWorkers[impulse]; ++worker) {
    workersOfModel[node.ImpulseWorkersList[impulse][worker]->ContainingModel].push_back(worker);
  }
  List<BaseModelClass> containingModels;
  listModels(names.ModelName, &containingModels);
  for (int m = 0; m < containingModels.getNumItems(); ++m) {
    BaseModelClass& containingModel = *containingModels.getItem(m);
    BaseActionClass& action = namedAction(containingModel, names, node.Name);
    if (allocateImpulseData(action)) {
      ++NumActionsWithImpulseAffects;
    }
    if (action.AffectedImpulseRewards[pvCounter].empty()) {
      action.AffectedNodesByImpulseReward.insert(pvCounter);
      ++node.NumberOfActionDependencies;
      const auto numImpulses = static_cast<std::size_t>(node.NumberOfImpulses);
      action.AffectedImpulseWorkers[pvCounter] = new int* [numImpulses] {};
      action.NumAffectedImpulseWorkers[pvCounter] = new int[numImpulses]{};
    }
    addImpulseWorkersToAction(action, pvCounter, impulse, workersOfModel[&containingModel]);
  }
}

/// Appends to the action the workers of the impulse whose action stands in its model instance.
void PVModel::addImpulseWorkersToAction(BaseActionClass& action, int pvCounter, int impulse,
                                        const std::vector<int>& added) {
  int*& workers = action.AffectedImpulseWorkers[pvCounter][impulse];
  int& count = action.NumAffectedImpulseWorkers[pvCounter][impulse];
  if (workers == nullptr) {
    action.AffectedImpulseRewards[pvCounter].insert(impulse);
  }
  // Just as long as needed: an array for every worker of the impulse would make the memory of a model of n replicas take
  // the square of n.
  int* const longer = new int[static_cast<std::size_t>(count) + added.size()];
  std::copy(added.begin(), added.end(), std::copy_n(workers, count, longer));
  delete[] workers;
  workers = longer;
  count += static_cast<int>(added.size());
}

void PVModel::CreateAffectedLists() {
  for (int pv = 0; pv < Number_Of_Performance_Variables; ++pv) {
    PerformanceVariableNode& node = *PerformanceVariableList[pv];
    if (node.NumberOfActionDependencies != 0) {
      node.ActionDependencies = new BaseActionClass* [static_cast<std::size_t>(node.NumberOfActionDependencies)] {};
      node.NumberOfActionDependencies = 0;
    }
  }
  const int mostAffectingActions = NumAffectingActions + NumActionsWithImpulseAffects;
  if (GlobalDebugLevel != 0) {
    std::cout << "Number Of Actions with affects is: " << mostAffectingActions << " , NumActions is: " << NumActions
              << std::endl;
  }
  if (mostAffectingActions == 0) {
    return;
  }
  AffectingActions = new BaseActionClass* [static_cast<std::size_t>(mostAffectingActions)] {};
  ListOfAffectedLists = new FastSet* [static_cast<std::size_t>(mostAffectingActions)] {};
  for (int i = 0; i < NumActions; ++i) {
    BaseActionClass* const action = PVListOfActions[i];
    if (action->AffectedNodesByRateReward.size() == 0 && action->AffectedNodesByImpulseReward.size() == 0) {
      continue;
    }
    CreateTotalPVAffectsList(action);
    AffectingActions[TotalNumAffectingActions] = action;
    ListOfAffectedLists[TotalNumAffectingActions] = &action->AffectedNodes;
    ++TotalNumAffectingActions;
    for (int k = 0; k < action->AffectedNodes.size(); ++k) {
      PerformanceVariableNode& node = *PerformanceVariableList[action->AffectedNodes[k]];
      node.ActionDependencies[node.NumberOfActionDependencies++] = action;
    }
  }
}

void PVModel::CreateTotalPVAffectsList(BaseActionClass* Action) {
  support::requireRuntime(Action->AffectedNodes.empty(), "Action->AffectedNodes.empty()");
  insertAll(Action->AffectedNodes, Action->AffectedNodesByRateReward);
  insertAll(Action->AffectedNodes, Action->AffectedNodesByImpulseReward);
  Action->AffectedNodes.NoMoreModifications();
}

/// Gives the action its rate structures; false when it has them.
bool PVModel::allocateRateData(BaseActionClass& action) {
  if (action.IsPVRateDSAllocated()) {
    return false;
  }
  action.AllocatePVRateDS(Number_Of_Performance_Variables);
  actionsWithRateData_.push_back(&action);
  return true;
}

/// Gives the action its impulse structures; false when it has them.
bool PVModel::allocateImpulseData(BaseActionClass& action) {
  if (action.IsPVImpulseDSAllocated()) {
    return false;
  }
  action.AllocatePVImpulseDS(Number_Of_Performance_Variables);
  actionsWithImpulseData_.push_back(&action);
  return true;
}

/// Freezes the rate structures.
void PVModel::completeRateData(BaseActionClass& action) {
  freezeAll(action.AffectedRateWorkers, Number_Of_Performance_Variables);
  action.AffectedNodesByRateReward.NoMoreModifications();
}

/// Allocates missing impulse structures and freezes them, of a sync action also those of the actions that it
/// superposes, as a step descends into them. An action that is listed itself and superposed by others comes here more
/// than once.
void PVModel::completeImpulseData(BaseActionClass& action) {
  if (action.AffectedNodesByImpulseReward.is_vec_rep) {
    return;
  }
  allocateImpulseData(action);
  freezeAll(action.AffectedImpulseRewards, Number_Of_Performance_Variables);
  action.AffectedNodesByImpulseReward.NoMoreModifications();
  action.EarnsNoImpulse = action.AffectedNodesByImpulseReward.size() == 0 && !action.isSync();
  if (action.isSync()) {
    auto& sync = static_cast<BaseSyncActionClass&>(action);
    for (int superposed = 0; superposed < sync.getNumSuperposedActions(); ++superposed) {
      completeImpulseData(*sync.getSuperposedAction(superposed));
    }
  }
}

void PVModel::ConsiderOnly(const int* NodeIndices, int size) {
  WindowsMoved();
  if (NodeIndices == nullptr) {
    RelevantNodes.insert(RelevantNodes.end(), PerformanceVariableList,
                         PerformanceVariableList + Number_Of_Performance_Variables);
  } else {
    RelevantNodes.reserve(RelevantNodes.size() + static_cast<std::size_t>(size));
    for (int i = 0; i < size; ++i) {
      RelevantNodes.push_back(PerformanceVariableList[NodeIndices[i]]);
    }
  }
  nodesThatTakeRates_.reserve(RelevantNodes.size());
}

void PVModel::Destruct() {
  for (BaseActionClass* const action : actionsWithRateData_) {
    action->DeallocatePVRateDS();
  }
  actionsWithRateData_.clear();
  for (BaseActionClass* const action : actionsWithImpulseData_) {
    releaseImpulseWorkerLists(*action);
    action->DeallocatePVImpulseDS();
  }
  actionsWithImpulseData_.clear();
  RelevantNodes.clear();
  nodesThatTakeRates_.clear();
  delete[] AffectingActions;
  AffectingActions = nullptr;
  delete[] ListOfAffectedLists;
  ListOfAffectedLists = nullptr;
  TotalNumAffectingActions = 0;
  for (int pv = 0; pv < Number_Of_Performance_Variables; ++pv) {
    delete PerformanceVariableList[pv];  // with its ActionDependencies
  }
  Number_Of_Performance_Variables = 0;
  delete[] PerformanceVariableList;
  PerformanceVariableList = nullptr;
  delete TheModel;
  TheModel = nullptr;
  // Borrowed from the model tree, which is gone.
  LastAction = &ZeroImpulseAction;
  PVListOfActions = nullptr;
  PVStateIndex = nullptr;
  PVStateIndexLength = 0;
  ActionList = nullptr;
  GroupList = nullptr;
  NumActions = 0;
  NumGroups = 0;
}

/// Releases the arrays inside the action's AffectedImpulseWorkers and NumAffectedImpulseWorkers.
void PVModel::releaseImpulseWorkerLists(const BaseActionClass& action) const {
  for (int pv = 0; pv < Number_Of_Performance_Variables; ++pv) {
    int** const workersOfImpulse = action.AffectedImpulseWorkers[pv];
    if (workersOfImpulse == nullptr) {
      continue;
    }
    for (int impulse = 0; impulse < PerformanceVariableList[pv]->NumberOfImpulses; ++impulse) {
      delete[] workersOfImpulse[impulse];
    }
    delete[] workersOfImpulse;
    delete[] action.NumAffectedImpulseWorkers[pv];
  }
}

// Run time.

void PVModel::debugFiring() {
  support::debugLine(0, "PV Model firing action");
}

void PVModel::debugAccumulate(double new_time) {
  support::debugLine(3, "PVModel::Accumulate(double)");
  support::debugLine(1, "Accumulation Time", " = ", new_time);
}

/// A step of every relevant node, which finds out anew which of them have something to take until when.
void PVModel::accumulateAll(double new_time) {
  nodesThatTakeRates_.clear();
  quietFrom_ = -std::numeric_limits<double>::infinity();
  quietUntil_ = std::numeric_limits<double>::infinity();
  for (PerformanceVariableNode* const node : RelevantNodes) {
    node->Accumulate(new_time, LastActionTime, LastAction);
    if (node->Accumulating == acc_now) {
      quietFrom_ = std::max(quietFrom_, node->Start);
      quietUntil_ = std::min(quietUntil_, node->Stop);
      if (node->NumberOfWorkers > 0) {
        nodesThatTakeRates_.push_back(node);
      }
    } else if (node->Accumulating != acc_done) {
      quietUntil_ = std::min(quietUntil_, node->Start);
    }
  }
}

void PVModel::EndAccumulate(double finish_time) {
  WindowsMoved();
  support::debugLine(1, "Simulator called EndAccumulate at time", " = ", finish_time);
  for (PerformanceVariableNode* const node : RelevantNodes) {
    if (node->Accumulating != acc_done) {
      node->EndAccumulate(finish_time, LastActionTime, LastAction);
    }
  }
}

void PVModel::PVReset() {
  WindowsMoved();
  for (int pv = 0; pv < Number_Of_Performance_Variables; ++pv) {
    PerformanceVariableNode& node = *PerformanceVariableList[pv];
    if (node.Accumulating == acc_now || node.Accumulating == acc_done) {
      node.Reset();
    }
  }
  if (GlobalDebugLevel > 3) [[unlikely]] {
    showActionAffects();
  }
  LastAction = &ZeroImpulseAction;
  LastActionTime = 0.0;
}

/// Prints, for every action, the nodes whose rate reward it touches.
void PVModel::showActionAffects() const {
  std::cout << "Before Remake!\n"
            << "Showing all action affects lists: \n";
  for (int i = 0; i < NumActions; ++i) {
    FastSet& nodes = ActionList[i]->AffectedNodesByRateReward;
    std::cout << "For Action: " << ActionList[i]->ActionName << '\n';
    for (int k = 0; k < nodes.size(); ++k) {
      std::cout << '\t' << nodes[k] << '\n';
    }
    if (nodes.size() == 0) {
      std::cout << "\tNULL\n";
    }
  }
  std::cout << std::flush;
}

void PVModel::SteadyState() {
  PVReset();
  for (int pv = 0; pv < Number_Of_Performance_Variables; ++pv) {
    if (PerformanceVariableList[pv]->Type == steady_state) {
      PerformanceVariableList[pv]->Accumulating = acc_now;
    }
  }
}

void PVModel::WritePVTypeFile(const char* filename) {
  std::ofstream file(filename);
  file << "Version:1" << '\n' << "NumPV:" << Number_Of_Performance_Variables << '\n';
  for (int pv = 0; pv < Number_Of_Performance_Variables; ++pv) {
    const PerformanceVariableNode& node = *PerformanceVariableList[pv];
    file << "Name:" << node.Name << '\n'
         << "Type:" << static_cast<int>(node.GetRewardType()) << '\n'
         << "NumTimes:" << node.GetNumTimePoints() << '\n';
    for (int i = 0; i < node.GetNumTimePoints(); ++i) {
      file << "Start:" << node.GetStartTime(i) << '\n' << "Stop:" << node.GetStopTime(i) << '\n';
    }
  }
  file.close();
  if (file.fail()) {
    std::cerr << "performance variables not written to \"" << filename << "\"" << std::endl;
  }
}

// The index of the last action in the state image, and state-space work.

int PVModel::BytesFor(int TheNumber) {
  const IndexBytes bytes = bytesOf(TheNumber);
  const auto firstNonZero = std::find_if(bytes.begin(), bytes.end(), [](unsigned char byte) { return byte != 0; });
  return static_cast<int>(bytes.end() - firstNonZero);
}

void PVModel::CreatePVStateIndex() {
  ModelStateSize = TheModel->StateSize();
  if (StateMode == 1) {
    if (PVListOfActions == nullptr) {
      support::failAssertion("PVModel.cpp", 709);
    }
    PVStateIndex = PVListOfActions;
    PVStateIndexLength = NumActions;
    AdditionalStateSize = BytesFor(PVStateIndexLength);
  }
  PVModelStateSize = ModelStateSize + AdditionalStateSize;
}

void PVModel::GetPVState(void* PVStatePntr) const {
  if (StateMode != 1) {
    return;
  }
  BaseActionClass** const end = PVStateIndex + PVStateIndexLength;
  BaseActionClass** const found = std::find(PVStateIndex, end, LastAction);
  const int TheIndex = found == end ? 0 : static_cast<int>(found - PVStateIndex) + 1;
  const IndexBytes bytes = bytesOf(TheIndex);
  std::memcpy(PVStatePntr, bytes.data() + (kIndexSize - AdditionalStateSize),
              static_cast<std::size_t>(AdditionalStateSize));
}

int PVModel::StateIndexLookup(const void* StartOfPVState) const {
  IndexBytes bytes{};
  std::memcpy(bytes.data() + (kIndexSize - AdditionalStateSize), StartOfPVState,
              static_cast<std::size_t>(AdditionalStateSize));
  return std::bit_cast<std::int32_t>(bytes);
}

void PVModel::PutPVState(const void* PVStatePntr) {
  if (StateMode == 0) {
    for (PerformanceVariableNode* const node : RelevantNodes) {
      node->CurrentReward(&ZeroImpulseAction);
      node->TotalImpulse = 0.0;
    }
  } else if (StateMode == 1) {
    takeRewardsOfState(StateIndexLookup(PVStatePntr));
  }
}

void PVModel::FireAction(void* TheState, BaseActionClass* TheAction) {
  support::debugLine(3, "SSG: PVModel::FireAction(void*, BaseActionClass*)");
  TheAction->Fire();
  LastAction = TheAction;
  for (PerformanceVariableNode* const node : RelevantNodes) {
    node->CurrentReward(TheAction);
  }
  CurrentState(TheState);
}

void PVModel::AgeAction(void* TheState, BaseActionClass* TheAction) {
  if (GlobalDebugLevel > 3) [[unlikely]] {
    support::debugLine(3, "SSG: PVModel::AgeAction(void*, BaseActionClass*)", " = ", TheAction->ActionName);
  }
  takeRewardsOfState(StateIndexLookup(bytesAt(TheState, ModelStateSize)));
}

/// Makes the action of that index in an image the last action, and takes the rewards of the present state with it.
void PVModel::takeRewardsOfState(int stateIndex) {
  LastAction = stateIndex == 0 ? &ZeroImpulseAction : PVStateIndex[stateIndex - 1];
  for (PerformanceVariableNode* const node : RelevantNodes) {
    node->CurrentReward(LastAction);
  }
}
