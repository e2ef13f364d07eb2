#include "Composer/Rep.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <vector>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseStateVariableClass.h"

namespace {

constexpr unsigned char kFill = 0xFF;
constexpr unsigned char kFirstByteOfLastTime = 0xEF;

/// Whether one image compares above another, as unsigned bytes from the front.
bool isAbove(const char* image, const char* other, std::size_t size) {
  return std::memcmp(image, other, size) > 0;
}

/// Position of the element to move in a list where one replica alone has changed, or the number of images if they are
/// in order. The first pair out of order holds it: it is the latter of the two, or the former if that also compares
/// above the image behind the pair.
std::size_t findOutOfPlace(const std::vector<const char*>& images, std::size_t size) {
  const std::size_t last = images.size() - 1;
  for (std::size_t k = 0; k < last; k++) {
    if (!isAbove(images[k], images[k + 1], size)) {
      continue;
    }
    const bool isFormer = k == 0 || (k + 1 != last && isAbove(images[k], images[k + 2], size));
    return isFormer ? k : k + 1;
  }
  return images.size();
}

/// Moves the one element that is out of place, if any, in front of the first that compares above it.
void moveOneIntoOrder(std::vector<const char*>& images, std::size_t size) {
  const std::size_t position = findOutOfPlace(images, size);
  if (position == images.size()) {
    return;
  }
  const char* const moved = images[position];
  images.erase(images.begin() + static_cast<std::ptrdiff_t>(position));
  const auto place =
      std::ranges::find_if(images, [moved, size](const char* image) { return isAbove(image, moved, size); });
  images.insert(place, moved);
}

}  // namespace

Rep::LocalState::LocalState(Rep* model) : LocalStateImage(model->SharedStateSize()) {}

void Rep::LocalState::SetState(const BaseModelClass* model) {
  // The model is the one that called, so that its const is a formality of the interface.
  const_cast<Rep*>(static_cast<const Rep*>(model))->SetSharedState(static_cast<char*>(GetStatePtr()));
}

void Rep::LocalState::GetState(const BaseModelClass* model) {
  const_cast<Rep*>(static_cast<const Rep*>(model))->CurrentSharedState(static_cast<char*>(GetStatePtr()));
}

Rep::Rep(const char* name, int replicaCount, int sharedCount, const char* const* names)
    : BaseComposerClass(name, replicaCount, sharedCount, names) {
  if (NumModels < 0) {
    std::cerr << "Number of reps for " << Name << " must be >= 0." << std::endl;
    std::exit(1);
  }
  LumpedCardinalities = new std::uint32_t[children().size()]();
  LumpedStates = new char* [children().size()] {};
  tempChar = new char[1]();
}

Rep::~Rep() {
  for (std::size_t i = 0; i < children().size(); i++) {
    delete[] LumpedStates[i];
  }
  delete[] LumpedStates;
  delete[] LumpedCardinalities;
  delete[] tempChar;
  delete[] dummystate;
  delete[] UnlumpedThisTime;
  delete[] UnlumpedLastTime;
}

void Rep::Setup(const char* submodelName) {
  SubmodelStateSize = NumModels > 0 ? ModelArray[0]->StateSize() : 0;
  dummystate = new char[static_cast<std::size_t>(SubmodelStateSize)]();
  GeneralSetup();
  for (std::size_t i = 0; i < children().size(); i++) {
    ModelArray[i]->DefineName(submodelName);
    LumpedStates[i] = new char[static_cast<std::size_t>(ModelArray[i]->StateSize())]();
  }
  const auto size = static_cast<std::size_t>(StateSize());
  UnlumpedLastTime = new char[size];
  UnlumpedThisTime = new char[size];
  std::memset(UnlumpedLastTime, kFill, size);
  std::memset(UnlumpedThisTime, kFill, size);
  if (size > 0) {
    UnlumpedLastTime[0] = static_cast<char>(kFirstByteOfLastTime);
  }
}

int Rep::StateSize() {
  return NumModels < 1 ? 0 : NumModels * ModelArray[0]->StateSize() + SharedStateSize();
}

void Rep::CurrentState(void* new_location) {
  if (NumModels == 0) {
    return;
  }
  support::requireRuntime(new_location != nullptr, "new_location");
  std::memset(UnlumpedThisTime, 0, static_cast<std::size_t>(StateSize()));

  std::vector<const char*> images;
  images.reserve(children().size());
  currentStateIndex = 0;
  for (BaseModelClass* const replica : children()) {
    char* const place = UnlumpedThisTime + currentStateIndex;
    replica->CurrentState(place);
    images.push_back(place);
    currentStateIndex += SubmodelStateSize;
  }

  const auto imageSize = static_cast<std::size_t>(SubmodelStateSize);
  moveOneIntoOrder(images, imageSize);

  char* target = static_cast<char*>(new_location);
  for (const char* const image : images) {
    std::memcpy(target, image, imageSize);
    target += imageSize;
  }
  CurrentSharedState(target);
}

void Rep::CurrentSharedState(char* Address) {
  const auto shared = sharedVariables();
  std::size_t offset = 0;
  for (currentStateCounter = 0; static_cast<std::size_t>(currentStateCounter) < shared.size(); currentStateCounter++) {
    BaseStateVariableClass* const variable = shared[static_cast<std::size_t>(currentStateCounter)];
    if (variable->getStored()) {
      variable->CurrentState(Address + offset);
      offset += static_cast<std::size_t>(variable->StateSize());
    }
  }
}

void Rep::SetState(void* NewState) {
  if (NumModels == 0) {
    return;
  }
  setStateIndex = static_cast<char*>(NewState);
  for (BaseModelClass* const replica : children()) {
    replica->SetState(setStateIndex);
    setStateIndex += SubmodelStateSize;
  }
  setStateIndex = SetSharedState(setStateIndex);
}

char* Rep::SetSharedState(char* Address) {
  for (BaseStateVariableClass* const variable : sharedVariables()) {
    if (variable->getStored()) {
      variable->SetState(Address);
      Address += variable->StateSize();
    }
  }
  return Address;
}

BaseModelClass::ModelType Rep::GetModelType() {
  return RepModel;
}

BaseModelClass* Rep::GetChild(int i) {
  support::requireRuntime(i < GetNumberOfChildren(), "i < GetNumberOfChildren()");
  return ModelArray[i];
}

void Rep::GetLocalActions(base_action_list_t& /*actions*/) {
  support::requireRuntime(false, "false");
}

void Rep::GetGlobalActions(base_action_list_t& /*actions*/) {
  support::requireRuntime(false, "false");
}

void Rep::ConstructLocalState(State*& state) {
  state = new LocalState(this);
}
