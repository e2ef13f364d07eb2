#include "BaseClasses/BaseModelClass.h"

#include <cstdlib>
#include <iostream>
#include <string>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/OwnedText.h"

namespace {

/// For the operations that a concrete model must offer if it is asked them.
[[noreturn]] void failNotOffered(int line = __builtin_LINE()) {
  support::failRuntimeAssertion("false", "BaseModelClass.cpp", line);
}

/// Ends the process unless both ends of an arc that the model draws are there: `last` is the variable at the end of the
/// activity's last arc of that kind, or null.
void requireEnds(const char* model, const char* kind, BaseStateVariableClass* variable, const BaseActionClass* action,
                 BaseStateVariableClass* last) {
  if (variable != nullptr && action != nullptr) [[likely]] {
    return;
  }
  std::cerr << "ERROR: model \"" << (model == nullptr ? "" : model) << "\": ";
  if (action == nullptr) {
    std::cerr << "an " << kind << " arc "
              << (variable == nullptr ? "" : "to \"" + std::string(variable->getFullyQualifiedName()) + "\" ")
              << "has no activity: its pointer is null" << std::endl;
  } else {
    std::cerr << "the " << (last == nullptr ? "first " : "") << kind << " arc of activity \"" << action->ActionName
              << '"' << (last == nullptr ? "" : " behind that to \"" + std::string(last->getFullyQualifiedName()) + '"')
              << " leads to no variable: its pointer is null" << std::endl;
  }
  std::exit(1);
}

}  // namespace

double BaseModelClass::LastActionTime = 0.0;

BaseModelClass::BaseModelClass() {
  static std::int32_t globalModelId = 0;
  ++globalModelId;
  Id = globalModelId;
  ParentId = globalModelId;
}

BaseModelClass::~BaseModelClass() {
  delete[] Name;
}

int BaseModelClass::getNumStateVariables() {
  return NumStateVariables;
}

void BaseModelClass::printState(std::ostream* /*strm*/) {}

void BaseModelClass::printState() {
  printState(&std::cout);
}

BaseStateVariableClass** BaseModelClass::GetLocalStateVariables(std::ostream* /*strm*/) {
  return nullptr;
}

BaseStateVariableClass** BaseModelClass::GetSharedStateVariables() {
  return nullptr;
}

BaseStateVariableClass* BaseModelClass::getMainSharedVariable(BaseStateVariableClass* /*TheVar*/) {
  return nullptr;
}

SharedStateVarLink* BaseModelClass::getListOfSharedVariables(BaseStateVariableClass* /*TheVar*/) {
  return nullptr;
}

void BaseModelClass::AddAffectArc(BaseStateVariableClass* TheSV, BaseActionClass* TheAction) {
  const int drawn = TheAction == nullptr ? 0 : TheAction->getNumAffectedSVs();
  requireEnds(Name, "affecting", TheSV, TheAction, drawn == 0 ? nullptr : TheAction->getAffectedSV(drawn - 1));
  TheSV->appendAffectingAction(TheAction);
  TheAction->addAffectedSV(TheSV);
}

void BaseModelClass::AddEnableArc(BaseStateVariableClass* TheSV, BaseActionClass* TheAction) {
  const int drawn = TheAction == nullptr ? 0 : TheAction->getNumEnablingSVs();
  requireEnds(Name, "enabling", TheSV, TheAction, drawn == 0 ? nullptr : TheAction->getEnablingSV(drawn - 1));
  TheSV->appendEnabledAction(TheAction);
  TheAction->addEnablingSV(TheSV);
}

BaseModelClass::ModelType BaseModelClass::GetModelType() {
  failNotOffered();
}

int BaseModelClass::GetNumberOfChildren() {
  failNotOffered();
}

BaseModelClass* BaseModelClass::GetChild(int /*ChildIndex*/) {
  failNotOffered();
}

void BaseModelClass::GetLocalActions(base_action_list_t& /*actions*/) {
  failNotOffered();
}

void BaseModelClass::GetGlobalActions(base_action_list_t& /*actions*/) {
  failNotOffered();
}

bool BaseModelClass::HasLocalState() {
  failNotOffered();
}

void BaseModelClass::GetLocalState(State* /*TheState*/) {
  failNotOffered();
}

void BaseModelClass::SetLocalState(const State* /*TheState*/) {
  failNotOffered();
}

void BaseModelClass::ConstructLocalState(State*& /*TheState*/) {
  failNotOffered();
}

void BaseModelClass::DestructLocalState(State* /*TheState*/) {
  failNotOffered();
}

void BaseModelClass::DefineName(const char* TheName) {
  support::replaceText(Name, TheName);
}
