#include "BaseClasses/SAN/SANModel.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iostream>
#include <set>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/OwnedText.h"
#include "BaseClasses/state/StateMemory.h"

namespace {

constexpr const char* kSourceName = "SANModel";

/// Puts a new array for `count` pointers, all null, in the place of an owned one.
template <typename T>
void allocateArray(T**& array, int count) {
  delete[] array;
  array = new T*[static_cast<std::size_t>(count)]();
}

/// Copies `count` pointers, none of which may be null. A target of a base type takes derived pointers.
template <typename To, typename From>
void copyPointers(To** target, From** source, int count) {
  support::require(target != nullptr, kSourceName);
  for (int i = 0; i < count; ++i) {
    support::require(source[i] != nullptr, kSourceName);
    target[i] = source[i];
  }
}

void* advance(void* place, int bytes) {
  return static_cast<char*>(place) + bytes;
}

}  // namespace

SANModel::LocalState::LocalState(SANModel* model) : LocalStateImage(model->StateSize()) {}

// A saved state hands a model over as const, while the image operations of models are not const: reading an image
// changes the marking, and both walk through operations of variables that are not const either. No model is a const
// object, so that the casts are sound.

void SANModel::LocalState::SetState(const BaseModelClass* model) {
  const_cast<BaseModelClass*>(model)->SetState(GetStatePtr());
}

void SANModel::LocalState::GetState(const BaseModelClass* model) {
  const_cast<BaseModelClass*>(model)->CurrentState(GetStatePtr());
}

SANModel::SANModel() {
  HoldsSharedVariables = false;
}

SANModel::SANModel(const char* ModelName, int NPlaces, BaseStateVariableClass** Places, int NReadOnlyPlaces,
                   BaseStateVariableClass** ROPlaces, int NActions, Activity** Activities, int NGroups,
                   BaseGroupClass** Groups)
    : SANModel() {
  initializeSANModelNow(ModelName, NPlaces, Places, NReadOnlyPlaces, ROPlaces, NActions, Activities, NGroups, Groups);
}

SANModel::~SANModel() {
  delete[] LocalStateVariables;
  delete[] ReadOnlyPlaces;
  delete[] ActionList;
  delete[] GroupList;
}

void SANModel::initializeSANModelNow(const char* ModelName, int NPlaces, BaseStateVariableClass** Places,
                                     int NReadOnlyPlaces, BaseStateVariableClass** ROPlaces, int NActions,
                                     Activity** Activities, int NGroups, BaseGroupClass** Groups) {
  Name = support::copyOfText(ModelName);  // on purpose: an older name is not freed
  NumStateVariables = NPlaces + NReadOnlyPlaces;
  NumReadOnlyPlaces = NReadOnlyPlaces;
  NumActions = NActions;
  NumGroups = NGroups;
  NumSharedStateVariables = 0;
  // The read-only places stand behind the local variables too: the trace sinks walk NumStateVariables entries of
  // GetLocalStateVariables.
  allocateArray(LocalStateVariables, NumStateVariables);
  SetPlaces(Places);
  allocateArray(ReadOnlyPlaces, NReadOnlyPlaces);
  SetReadOnlyPlaces(ROPlaces);
  std::copy_n(ReadOnlyPlaces, NReadOnlyPlaces, LocalStateVariables + NPlaces);
  allocateArray(ActionList, NActions);
  SetActions(Activities);
  allocateArray(GroupList, NGroups);
  SetGroups(Groups);
}

void SANModel::listModels(const char* TheModelName, List<BaseModelClass>* TheModelList) {
  if (std::strcmp(TheModelName, Name) == 0) {
    TheModelList->append(this);
  }
}

void SANModel::CurrentState(void* MemoryLocation) {
  void* place = MemoryLocation;
  for (int i = 0; i < NumStateVariables - NumReadOnlyPlaces; ++i) {
    BaseStateVariableClass* const variable = LocalStateVariables[i];
    if (!variable->getShared()) {
      variable->CurrentState(place);
      place = advance(place, variable->StateSize());
    }
  }
}

void SANModel::listActions(List<BaseActionClass>* TheActionList) {
  TheActionList->append(ActionList, NumActions);
}

void SANModel::listGroups(List<BaseGroupClass>* TheGroupList) {
  TheGroupList->append(GroupList, NumGroups);
}

void SANModel::SetState(void* TheState) {
  void* place = TheState;
  for (int i = 0; i < NumStateVariables - NumReadOnlyPlaces; ++i) {
    BaseStateVariableClass* const variable = LocalStateVariables[i];
    if (!variable->getShared()) {
      const int bytes = variable->StateSize();
      if (bytes >= static_cast<int>(sizeof(std::int16_t))) {
        // Shown and not kept; an empty array has nothing in the image to show.
        std::int16_t TempMarking = 0;
        readMemory2<std::int16_t>(place, &TempMarking);
        support::debugLine(2, "TempMarking", " = ", TempMarking);
      }
      variable->SetState(place);
      place = advance(place, bytes);
    }
  }
}

int SANModel::StateSize() {
  int bytes = 0;
  for (int i = 0; i < NumStateVariables - NumReadOnlyPlaces; ++i) {
    if (LocalStateVariables[i]->getStored()) {
      bytes += LocalStateVariables[i]->StateSize();
    }
  }
  return bytes;
}

bool SANModel::CompareState(void* State1, void* State2) {
  const auto bytes = static_cast<std::size_t>(StateSize());
  return std::equal(static_cast<char*>(State1), static_cast<char*>(State1) + bytes, static_cast<char*>(State2));
}

void SANModel::listActions(const char* TheActionName, List<BaseActionClass>* TheActionList) {
  for (int i = 0; i < NumActions; ++i) {
    if (std::strcmp(TheActionName, ActionList[i]->ActionName) == 0) {
      TheActionList->append(ActionList[i]);
      return;
    }
  }
}

void SANModel::listSVs(const char* TheModelName, const char* TheStateVariableName,
                       List<BaseStateVariableClass>* TheSVList, List<BaseModelClass>* TheModelList) {
  if (std::strcmp(TheModelName, Name) != 0) {
    return;
  }
  const auto appendMatches = [&](BaseStateVariableClass** variables, int count) {
    for (int i = 0; i < count; ++i) {
      if (std::strcmp(TheStateVariableName, variables[i]->StateVariableName) == 0) {
        TheSVList->append(variables[i]);
        TheModelList->append(this);
      }
    }
  };
  appendMatches(LocalStateVariables, NumStateVariables - NumReadOnlyPlaces);
  appendMatches(ReadOnlyPlaces, NumReadOnlyPlaces);
}

void SANModel::printState(std::ostream* strm) {
  *strm << "Model: (" << Id << ")" << Name << std::endl;
  const auto printVariables = [strm](BaseStateVariableClass** variables, int count) {
    for (int i = 0; i < count; ++i) {
      *strm << "  ";
      variables[i]->printState(strm);
    }
  };
  printVariables(LocalStateVariables, NumStateVariables - NumReadOnlyPlaces);
  printVariables(ReadOnlyPlaces, NumReadOnlyPlaces);
}

BaseStateVariableClass** SANModel::GetLocalStateVariables(std::ostream* /*strm*/) {
  return LocalStateVariables;
}

BaseModelClass::ModelType SANModel::GetModelType() {
  return AtomicModel;
}

int SANModel::GetNumberOfChildren() {
  return 0;
}

BaseModelClass* SANModel::GetChild(int /*ChildIndex*/) {
  support::failRuntimeAssertion("false", "SANModel.cpp", __builtin_LINE());
}

void SANModel::GetLocalActions(base_action_list_t& actions) {
  base_action_list_t globalActions;
  GetGlobalActions(globalActions);
  for (int i = 0; i < NumActions; ++i) {
    if (std::find(globalActions.begin(), globalActions.end(), ActionList[i]) == globalActions.end()) {
      actions.push_front(ActionList[i]);
    }
  }
}

void SANModel::GetGlobalActions(base_action_list_t& actions) {
  // std::less orders any two pointers, in the order of their addresses.
  using ActionSet = std::set<BaseActionClass*, std::less<>>;
  const ActionSet ownActions(ActionList, ActionList + NumActions);
  ActionSet sharingActions;
  for (int i = 0; i < NumStateVariables - NumReadOnlyPlaces; ++i) {
    BaseStateVariableClass* const variable = LocalStateVariables[i];
    if (!variable->getStored()) {
      for (int j = 0; j < variable->getNumAffectingActions(); ++j) {
        sharingActions.insert(variable->getAffectingAction(j));
      }
      for (int j = 0; j < variable->getNumEnabledActions(); ++j) {
        sharingActions.insert(variable->getEnabledAction(j));
      }
    }
  }
  for (BaseActionClass* const action : sharingActions) {
    if (ownActions.contains(action)) {
      actions.push_front(action);
    }
  }
}

bool SANModel::HasLocalState() {
  return StateSize() > 0;
}

void SANModel::GetLocalState(State* TheState) {
  TheState->GetState(this);
}

void SANModel::SetLocalState(const State* TheState) {
  // Restoring the model leaves the saved state as it is, though the operation is not const.
  const_cast<State*>(TheState)->SetState(this);
}

void SANModel::ConstructLocalState(State*& TheState) {
  TheState = new LocalState(this);
}

void SANModel::DestructLocalState(State* TheState) {
  delete TheState;
}

void SANModel::PrintSANModelInfo() {
  std::cout << "SANModelInfo\n";
  std::cout << "Number of Actions = " << NumActions << ", Number of Groups = " << NumGroups
            << ", Number of State Variables = " << NumStateVariables << '\n';
  for (int i = 0; i < NumActions; ++i) {
    BaseActionClass* const action = ActionList[i];
    std::cout << "ActionName = " << action->ActionName << '\n';
    std::cout << "Group Id = " << action->getGroupId() << '\n';
    std::cout << "DistributionType = " << static_cast<int>(action->DistributionType) << '\n';
    std::cout << "ExecutionPolicy = " << static_cast<int>(action->ExecutionPolicy) << '\n';
    std::cout << "Number of affected state variables = " << action->getNumAffectedSVs() << '\n';
    std::cout << "Number of enabling state variables = " << action->getNumEnablingSVs() << '\n';
  }
  std::cout << '\n';
  for (int i = 0; i < NumGroups; ++i) {
    std::cout << "Group Name = " << GroupList[i]->ActionName << " \n";
  }
  for (int i = 0; i < NumStateVariables - NumReadOnlyPlaces; ++i) {
    std::cout << "Place Name = " << LocalStateVariables[i]->StateVariableName << '\n';
  }
  for (int i = 0; i < NumReadOnlyPlaces; ++i) {
    std::cout << "Read Only Place Name = " << ReadOnlyPlaces[i]->StateVariableName << '\n';
  }
  std::cout.flush();
}

void SANModel::SetPlaces(BaseStateVariableClass** Places) {
  copyPointers(LocalStateVariables, Places, NumStateVariables - NumReadOnlyPlaces);
}

void SANModel::SetReadOnlyPlaces(BaseStateVariableClass** ROPlaces) {
  copyPointers(ReadOnlyPlaces, ROPlaces, NumReadOnlyPlaces);
}

void SANModel::SetActions(Activity** Activities) {
  copyPointers(ActionList, Activities, NumActions);
  for (int i = 0; i < NumActions; ++i) {
    ActionList[i]->TheModel = static_cast<BaseModelClass*>(this);
  }
}

void SANModel::SetGroups(BaseGroupClass** Groups) {
  copyPointers(GroupList, Groups, NumGroups);
  for (int i = 0; i < NumGroups; ++i) {
    GroupList[i]->TheModel = static_cast<BaseModelClass*>(this);
  }
}
