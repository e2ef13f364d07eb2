#include "Composer/Join.h"

#include <cstddef>
#include <cstring>
#include <string_view>
#include <unordered_set>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"

Join::LocalState::LocalState(Join* model) : LocalStateImage(model->SharedStateSize()) {}

void Join::LocalState::SetState(const BaseModelClass* model) {
  // The model is the one that called, so that its const is a formality of the interface.
  const_cast<Join*>(static_cast<const Join*>(model))->SetSharedState(GetStatePtr());
}

void Join::LocalState::GetState(const BaseModelClass* model) {
  const_cast<Join*>(static_cast<const Join*>(model))->CurrentSharedState(GetStatePtr());
}

Join::Join(const char* name, int modelCount, int sharedCount, const char* const* names)
    : BaseComposerClass(name, modelCount, sharedCount, names) {}

Join::~Join() {
  delete[] ActionNameHashTable;
  delete[] ActionNameCardinalities;
  delete[] SubmodelStateSize;
}

void Join::Setup() {
  GeneralSetup();

  const auto models = children();
  SubmodelStateSize = new std::int32_t[models.size()]();
  for (counter = 0; counter < NumModels; counter++) {
    SubmodelStateSize[counter] = ModelArray[counter]->StateSize();
  }

  std::unordered_set<std::string_view> names;
  for (counter = 0; counter < NumActions; counter++) {
    names.insert(ActionList[counter]->ActionName);
  }
  ObjectCounter = static_cast<std::int32_t>(names.size());
  ActionNameTableSize = ObjectCounter * 4;
  ActionNameHashTable = new const char* [static_cast<std::size_t>(ActionNameTableSize)] {};
  ActionNameCardinalities = new std::int32_t[static_cast<std::size_t>(ActionNameTableSize)]();
  HashActions();
}

void Join::HashActions() {
  const auto tableSize = static_cast<std::uint32_t>(ActionNameTableSize);
  if (tableSize == 0) {
    return;
  }
  for (hashActionsCounter = 0; hashActionsCounter < static_cast<std::uint32_t>(NumActions); hashActionsCounter++) {
    const char* const key = ActionList[hashActionsCounter]->ActionName;
    hashActionsIndex = 1;
    LookForward = true;
    const std::uint32_t home = Hash(key, ActionNameTableSize);
    std::uint32_t slot = home;
    while (ActionNameHashTable[slot] != nullptr && std::strcmp(ActionNameHashTable[slot], key) != 0) {
      const std::uint32_t distance = hashActionsIndex * hashActionsIndex;
      if (LookForward) {
        slot = (distance + home) % tableSize;
      } else {
        slot = (home - distance) % tableSize;
        hashActionsIndex++;
      }
      LookForward = !LookForward;
    }
    if (ActionNameHashTable[slot] == nullptr) {
      ActionNameHashTable[slot] = key;
    }
    ActionNameCardinalities[slot]++;
  }
}

int Join::StateSize() {
  int sum = 0;
  for (stateSizeCounter = 0; stateSizeCounter < children().size(); stateSizeCounter++) {
    sum += ModelArray[stateSizeCounter]->StateSize();
  }
  return sum + SharedStateSize();
}

void Join::CurrentState(void* Address) {
  auto* const image = static_cast<std::byte*>(Address);
  currentStateIndex = 0;
  for (currentStateCounter = 0; currentStateCounter < children().size(); currentStateCounter++) {
    ModelArray[currentStateCounter]->CurrentState(image + currentStateIndex);
    currentStateIndex += static_cast<std::uint32_t>(SubmodelStateSize[currentStateCounter]);
  }
  CurrentSharedState(image + currentStateIndex);
}

void Join::CurrentSharedState(void* Address) {
  auto* const image = static_cast<std::byte*>(Address);
  currentStateIndex = 0;
  for (BaseStateVariableClass* const variable : sharedVariables()) {
    if (variable->getStored()) {
      variable->CurrentState(image + currentStateIndex);
      currentStateIndex += static_cast<std::uint32_t>(variable->StateSize());
    }
  }
}

void Join::SetState(void* Address) {
  auto* const image = static_cast<std::byte*>(Address);
  setStateIndex = 0;
  for (setStateCounter = 0; setStateCounter < children().size(); setStateCounter++) {
    ModelArray[setStateCounter]->SetState(image + setStateIndex);
    setStateIndex += static_cast<std::uint32_t>(SubmodelStateSize[setStateCounter]);
  }
  SetSharedState(image + setStateIndex);
}

void Join::SetSharedState(void* Address) {
  auto* const image = static_cast<std::byte*>(Address);
  setStateIndex = 0;
  for (BaseStateVariableClass* const variable : sharedVariables()) {
    if (variable->getStored()) {
      variable->SetState(image + setStateIndex);
      setStateIndex += static_cast<std::uint32_t>(variable->StateSize());
    }
  }
}

BaseModelClass::ModelType Join::GetModelType() {
  return JoinModel;
}

BaseModelClass* Join::GetChild(int i) {
  support::requireRuntime(i < GetNumberOfChildren(), "i < GetNumberOfChildren()");
  return ModelArray[i];
}

void Join::GetLocalActions(base_action_list_t& /*actions*/) {
  support::requireRuntime(false, "false");
}

void Join::GetGlobalActions(base_action_list_t& /*actions*/) {
  support::requireRuntime(false, "false");
}

void Join::ConstructLocalState(State*& state) {
  state = new LocalState(this);
}
