#include "Composer/BaseComposerClass.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <iterator>
#include <string_view>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/OwnedText.h"
#include "BaseClasses/State.h"

namespace {

constexpr const char* kFileName = "BaseComposerClass";

}  // namespace

struct BaseComposerClass::Storage {
  Storage(std::size_t modelCount, std::size_t sharedCount)
      : models(modelCount),
        sharedVariables(sharedCount),
        equivalents(sharedCount),
        merged(sharedCount),
        ends(sharedCount) {}

  std::vector<BaseModelClass*> models;
  std::vector<BaseStateVariableClass*> sharedVariables;
  std::vector<SharedStateVarLink*> equivalents;
  std::vector<std::list<BaseStateVariableClass*>> merged;
  std::vector<SharedStateVarLink*> ends;  // by index, the link that was attached last
  std::vector<std::unique_ptr<char[]>> nameTexts;
  std::vector<char*> names;
  std::vector<std::unique_ptr<SharedStateVarLink>> links;  // those made here, and none that was attached from below
  std::vector<BaseActionClass*> actions;
  std::vector<BaseGroupClass*> groups;
  // The children that may hold shared variables of their own, as found by SetupActions.
  std::vector<BaseModelClass*> composedModels;
  bool hasFoundComposedModels = false;
};

BaseComposerClass::BaseComposerClass(const char* name, int modelCount, int sharedCount, const char* const* names)
    : NumModels(modelCount) {
  DefineName(name);
  NumSharedStateVariables = modelCount > 0 ? sharedCount : 0;

  const auto shared = static_cast<std::size_t>(std::max(NumSharedStateVariables, 0));
  storage_ = std::make_unique<Storage>(static_cast<std::size_t>(std::max(modelCount, 0)), shared);
  for (std::size_t i = 0; i < shared; i++) {
    support::require(names[i] != nullptr, kFileName);
    storage_->names.push_back(storage_->nameTexts.emplace_back(support::copyOfText(names[i])).get());
  }
  ModelArray = storage_->models.data();
  SharedStatePtrs = storage_->sharedVariables.data();
  SharedStateVarList = storage_->equivalents.data();
  ChildrenSharedSVList = storage_->merged.data();
  SharedStateNames = storage_->names.data();
}

BaseComposerClass::~BaseComposerClass() = default;

std::span<BaseModelClass* const> BaseComposerClass::children() const {
  return {ModelArray, static_cast<std::size_t>(std::max(NumModels, 0))};
}

std::span<BaseStateVariableClass* const> BaseComposerClass::sharedVariables() const {
  return {SharedStatePtrs, std::min<std::size_t>(AddedSharedPtrs, storage_->sharedVariables.size())};
}

void BaseComposerClass::listModels(const char* modelName, List<BaseModelClass>* models) {
  for (BaseModelClass* const child : children()) {
    child->listModels(modelName, models);
  }
}

void BaseComposerClass::listActions(List<BaseActionClass>* actions) {
  actions->append(ActionList, NumActions);
}

void BaseComposerClass::listGroups(List<BaseGroupClass>* groups) {
  groups->append(GroupList, NumGroups);
}

bool BaseComposerClass::CompareState(void* first, void* second) {
  return MyStateSize == 0 || std::memcmp(first, second, static_cast<std::size_t>(MyStateSize)) == 0;
}

void BaseComposerClass::listActions(const char* actionName, List<BaseActionClass>* actions) {
  for (BaseModelClass* const child : children()) {
    child->listActions(actionName, actions);
  }
}

void BaseComposerClass::listSVs(const char* modelName, const char* variableName,
                                List<BaseStateVariableClass>* variables, List<BaseModelClass>* models) {
  for (BaseModelClass* const child : children()) {
    child->listSVs(modelName, variableName, variables, models);
  }
}

void BaseComposerClass::printState(std::ostream* strm) {
  *strm << "Model: (" << Id << ")" << Name << '\n';
  for (BaseModelClass* const child : children()) {
    child->printState(strm);
  }
  *strm << "Shared Variables:\n";
  for (BaseStateVariableClass* const variable : sharedVariables()) {
    if (variable->getStored()) {
      *strm << "  ";
      variable->printState(strm);
    }
  }
}

BaseStateVariableClass** BaseComposerClass::GetSharedStateVariables() {
  return SharedStatePtrs;
}

BaseStateVariableClass* BaseComposerClass::getMainSharedVariable(BaseStateVariableClass* TheVar) {
  const auto shared = sharedVariables();
  for (std::size_t i = 0; i < shared.size(); i++) {
    if (SharedStateVarList[i] != nullptr && SharedStateVarList[i]->hasStateVar(TheVar)) {
      return shared[i];
    }
  }
  for (BaseModelClass* const child : children()) {
    if (BaseStateVariableClass* const main = child->getMainSharedVariable(TheVar); main != nullptr) {
      return main;
    }
  }
  return nullptr;
}

SharedStateVarLink* BaseComposerClass::getListOfSharedVariables(BaseStateVariableClass* TheVar) {
  const auto shared = sharedVariables();
  for (std::size_t i = 0; i < shared.size(); i++) {
    if (shared[i] == TheVar) {
      return SharedStateVarList[i];
    }
  }
  for (BaseModelClass* const child : children()) {
    if (SharedStateVarLink* const list = child->getListOfSharedVariables(TheVar); list != nullptr) {
      return list;
    }
  }
  return nullptr;
}

void BaseComposerClass::SetupActions() {
  for (BaseModelClass* const child : children()) {
    NumActions += child->getNumActions();
    NumGroups += child->getNumGroups();
  }
  std::vector<BaseActionClass*>& actions = storage_->actions;
  std::vector<BaseGroupClass*>& groups = storage_->groups;
  actions.reserve(static_cast<std::size_t>(NumActions));
  groups.reserve(static_cast<std::size_t>(NumGroups));
  for (BaseModelClass* const child : children()) {
    actions.insert(actions.end(), child->getActionList(), child->getActionList() + child->getNumActions());
  }
  for (BaseModelClass* const child : children()) {
    for (int i = 0; i < child->getNumGroups(); i++) {
      BaseGroupClass* const group = child->getGroupList()[i];
      const int groupId = static_cast<int>(groups.size());
      groups.push_back(group);
      group->setGroupId(groupId);
      if (group->getNumMembers() > 1) {
        group->setGroupId(groupId);
      }
    }
  }
  ActionList = actions.data();
  GroupList = groups.data();
  findComposedModels();
}

void BaseComposerClass::findComposedModels() {
  std::vector<BaseModelClass*>& composed = storage_->composedModels;
  composed.clear();
  std::ranges::copy_if(children(), std::back_inserter(composed),
                       [](const BaseModelClass* child) { return child->HoldsSharedVariables; });
  storage_->hasFoundComposedModels = true;
}

void BaseComposerClass::addSharedPtr(BaseStateVariableClass* Variable, const char* VarName) {
  support::requireRuntime(static_cast<std::int64_t>(AddedSharedPtrs) < NumSharedStateVariables,
                          "AddedSharedPtrs < NumSharedStateVariables");
  support::requireRuntime(std::strcmp(VarName, SharedStateNames[AddedSharedPtrs]) == 0,
                          "0 == strcmp(VarName, SharedStateNames[AddedSharedPtrs])");
  SharedStatePtrs[AddedSharedPtrs] = Variable;
  AddedSharedPtrs++;
}

void BaseComposerClass::addSharingInfo(BaseStateVariableClass* oldVar, BaseStateVariableClass* newVar,
                                       BaseModelClass* parent) {
  int VarIndex = -1;
  const auto shared = sharedVariables();
  for (std::size_t i = 0; i < shared.size(); i++) {
    if (shared[i] == newVar) {
      VarIndex = static_cast<int>(i);
    }
  }
  support::requireRuntime(VarIndex != -1, "VarIndex != -1");

  ChildrenSharedSVList[VarIndex].push_back(oldVar);

  SharedStateVarLink* const link =
      storage_->links.emplace_back(std::make_unique<SharedStateVarLink>(oldVar, parent)).get();
  SharedStateVarLink*& head = SharedStateVarList[VarIndex];
  SharedStateVarLink*& end = storage_->ends[static_cast<std::size_t>(VarIndex)];
  if (head == nullptr) {
    head = link;
  } else {
    (end == nullptr ? head : end)->addStateVarLink(link);  // from the end known, as the list may be a long one
  }
  end = link;
  if (!storage_->hasFoundComposedModels) {
    findComposedModels();
  }
  for (BaseModelClass* const child : storage_->composedModels) {
    if (SharedStateVarLink* const list = child->getListOfSharedVariables(oldVar); list != nullptr) {
      head->addStateVarLink(list);
    }
  }
}

void BaseComposerClass::GeneralSetup() {
  NumStateVariables = 0;
  for (BaseModelClass* const child : children()) {
    NumStateVariables += child->NumStateVariables;
  }
  for (index = 0; index < NumSharedStateVariables; index++) {
    NumStateVariables -= static_cast<std::int32_t>(ChildrenSharedSVList[index].size());
  }
  NumStateVariables += NumSharedStateVariables;
  MyStateSize = StateSize();
  if (GlobalDebugLevel > 3) [[unlikely]] {
    support::debugLine(3, "Now printing all shared state variable equivalence groups.");
    printAllSharedVariables();
  }
}

int BaseComposerClass::SharedStateSize() {
  int sum = 0;
  for (BaseStateVariableClass* const variable : sharedVariables()) {
    if (variable->getStored()) {
      sum += variable->StateSize();
    }
  }
  return sum;
}

int BaseComposerClass::GetNumberOfChildren() {
  return NumModels;
}

bool BaseComposerClass::HasLocalState() {
  return SharedStateSize() > 0;
}

void BaseComposerClass::GetLocalState(State* state) {
  state->GetState(this);
}

void BaseComposerClass::SetLocalState(const State* state) {
  // Handing the saved bytes to the model changes nothing in the State.
  const_cast<State*>(state)->SetState(this);
}

void BaseComposerClass::DestructLocalState(State* state) {
  delete state;
}

unsigned int BaseComposerClass::Hash(const char* Key, int hash_size) {
  support::requireRuntime(hash_size != 0, "hash_size != 0");
  std::uint32_t hash = 0;
  for (const char character : std::string_view(Key)) {
    hash = (hash << 5) + static_cast<std::uint32_t>(static_cast<signed char>(character));
  }
  return hash % static_cast<std::uint32_t>(hash_size);
}

void BaseComposerClass::printAllSharedVariables() {
  std::cout << "Shared Variables for composer node " << Name << '\n';
  for (index = 0; index < NumSharedStateVariables; index++) {
    std::cout << "  Shared Variable " << index << " has name " << SharedStateNames[index] << " and address "
              << static_cast<const void*>(SharedStatePtrs[index]) << '\n'
              << "    And here is its list of equivalent variables:\n";
    if (SharedStateVarList[index] != nullptr) {
      SharedStateVarList[index]->printAllStateVariables();
    }
  }
  std::cout << std::flush;
}

bool BaseComposerClass::AllChildrenEmpty() const {
  return std::ranges::none_of(children(), [](const BaseModelClass* child) { return child->NumStateVariables > 0; });
}
