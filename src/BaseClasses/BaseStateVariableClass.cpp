#include "BaseClasses/BaseStateVariableClass.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/OwnedText.h"

namespace {

constexpr const char* kSourceName = "BaseStateVariableClass";

/// Keeps a copy of `text` in place of `owned`, or the old text with a word on standard error. The process's handler of
/// failed allocations, which would end the process, is set aside meanwhile.
void replaceTextOrReport(char*& owned, const char* text) {
  const std::new_handler handler = std::set_new_handler(nullptr);
  try {
    support::replaceText(owned, text);
  } catch (const std::bad_alloc&) {
    std::cerr << "Not Enough Memory" << std::endl;
  }
  std::set_new_handler(handler);
}

void appendAll(List<BaseActionClass>* target, List<BaseActionClass>* source) {
  for (int i = 0; i < source->getNumItems(); ++i) {
    target->append(source->getItem(i));
  }
}

}  // namespace

BaseStateVariableClass::BaseStateVariableClass() : BaseStateVariableClass("default", "") {}

BaseStateVariableClass::BaseStateVariableClass(const char* TheName, const char* ThePrefix)
    : StateVariableName(support::copyOfText(TheName)),
      VariableNamePrefix(support::copyOfText(ThePrefix)),
      SVAffectingActions(new List<BaseActionClass>),
      SVEnabledActions(new List<BaseActionClass>) {}

BaseStateVariableClass::~BaseStateVariableClass() {
  delete[] StateVariableName;
  delete[] VariableNamePrefix;
  if (Stored) {
    delete SVAffectingActions;
    delete SVEnabledActions;
  }
}

void BaseStateVariableClass::printState(std::ostream* /*strm*/) {}

void BaseStateVariableClass::printState() {
  printState(&std::cout);
}

void BaseStateVariableClass::printStateVal(std::ostream* /*strm*/) {}

void BaseStateVariableClass::appendAffectingAction(BaseActionClass* TheAction) {
  SVAffectingActions->append(TheAction);
}

void BaseStateVariableClass::removeAffectingAction(BaseActionClass* TheAction) {
  SVAffectingActions->remove(TheAction);
}

void BaseStateVariableClass::replaceAffectingAction(BaseActionClass* TheOld, BaseActionClass* TheNew) {
  SVAffectingActions->replaceItem(TheOld, TheNew);
}

void BaseStateVariableClass::addSelfAsEnablingSVToAction(BaseActionClass* TheAction) {
  TheAction->addEnablingSV(this);
}

void BaseStateVariableClass::addSelfAsAffectedSVToAction(BaseActionClass* TheAction) {
  TheAction->addAffectedSV(this);
}

void BaseStateVariableClass::removeSelfFromEnablingSVOfAction(BaseActionClass* TheAction) {
  TheAction->removeEnablingSV(this);
}

void BaseStateVariableClass::removeSelfFromAffectedSVOfAction(BaseActionClass* TheAction) {
  TheAction->removeAffectedSV(this);
}

List<BaseStateVariableClass>* BaseStateVariableClass::getLeafNodes() {
  auto* const temp = new List<BaseStateVariableClass>;
  support::requireRuntime(temp != nullptr, "temp");
  temp->append(this);
  return temp;
}

int BaseStateVariableClass::getNumLeafNodes() {
  return 1;
}

bool BaseStateVariableClass::isLeafNode() {
  return true;
}

void BaseStateVariableClass::appendEnabledAction(BaseActionClass* TheAction) {
  SVEnabledActions->append(TheAction);
}

void BaseStateVariableClass::removeEnabledAction(BaseActionClass* TheAction) {
  SVEnabledActions->remove(TheAction);
}

void BaseStateVariableClass::replaceEnabledAction(BaseActionClass* TheOld, BaseActionClass* TheNew) {
  SVEnabledActions->replaceItem(TheOld, TheNew);
}

void BaseStateVariableClass::SetName(const char* TheName) {
  replaceTextOrReport(StateVariableName, TheName);
}

void BaseStateVariableClass::SetPrefix(const char* ThePrefix) {
  replaceTextOrReport(VariableNamePrefix, ThePrefix);
}

const char* BaseStateVariableClass::getFullyQualifiedName() {
  if (VariableNamePrefix[0] == '\0') {
    return StateVariableName;
  }
  qualifiedName_.assign(VariableNamePrefix).append(".").append(StateVariableName);
  return qualifiedName_.c_str();
}

BaseActionClass* BaseStateVariableClass::getAffectingAction(int TheIndex) {
  support::require(TheIndex < getNumAffectingActions(), kSourceName);
  if (TheIndex >= getNumAffectingActions()) {  // on purpose: never true behind the requirement
    std::cerr << "!! BaseStateVariableClass::getAffectingAction(int): "
              << " AffectingAction index out of bounds" << std::endl;
    return nullptr;
  }
  return SVAffectingActions->getItem(TheIndex);
}

BaseActionClass* BaseStateVariableClass::getEnabledAction(int TheIndex) {
  support::require(TheIndex < getNumEnabledActions(), kSourceName);
  if (TheIndex >= getNumEnabledActions()) {  // on purpose: never true behind the requirement
    std::cerr << "!! BaseStateVariableClass::getEnabledAction(int): "
              << " EnabledAction index out of bounds" << std::endl;
    return nullptr;
  }
  return SVEnabledActions->getItem(TheIndex);
}

void BaseStateVariableClass::copyAffectingActions(List<BaseActionClass>* TheActions) {
  appendAll(SVAffectingActions, TheActions);
}

void BaseStateVariableClass::copyEnabledActions(List<BaseActionClass>* TheActions) {
  appendAll(SVEnabledActions, TheActions);
}

void BaseStateVariableClass::printAffectingActions() {
  std::cout << "Affecting actions for " << StateVariableName << ":" << std::endl;
  SVAffectingActions->printList();
}

void BaseStateVariableClass::printEnabledActions() {
  std::cout << "Enabled actions for " << StateVariableName << ":" << std::endl;
  SVEnabledActions->printList();
}

void BaseStateVariableClass::requirePartner(const BaseStateVariableClass* other) {
  if (other == nullptr) [[unlikely]] {
    std::cerr << "ERROR: \"" << getFullyQualifiedName()
              << "\" is to be shared with a variable that is not there: its pointer is null" << std::endl;
    std::exit(1);
  }
}
