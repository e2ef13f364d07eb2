#include "BaseClasses/state/BaseArrayStateVariable.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <memory>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"

namespace {

/// Calls `visit` for each element with the place of its image. Each image is as long as that of element 0.
template <typename Visit>
void forEachImage(const BaseArrayStateVariable::field_list& fields, void* image, Visit visit) {
  if (fields.empty()) {
    return;
  }
  auto* place = static_cast<std::byte*>(image);
  const int elementSize = fields.front()->StateSize();
  for (BaseStateVariableClass* const element : fields) {
    visit(*element, place);
    place += elementSize;
  }
}

}  // namespace

BaseArrayStateVariable::BaseArrayStateVariable(const char* name, const char* prefix)
    : BaseStateVariableClass(name, prefix) {}

BaseArrayStateVariable::BaseArrayStateVariable(const char* name, const char* prefix, ArrayType elementType, int size)
    : BaseStateVariableClass(name, prefix), type(elementType) {
  fields.reserve(static_cast<std::size_t>(std::max(size, 0)));
}

int BaseArrayStateVariable::StateSize() {
  if (fields.empty()) {
    return 0;
  }
  const int scalar = support::scalarImageSize(type);
  return getSize() * (scalar != 0 ? scalar : fields.front()->StateSize());
}

void BaseArrayStateVariable::SetState(void* image) {
  forEachImage(fields, image, [](BaseStateVariableClass& element, void* place) { element.SetState(place); });
}

void BaseArrayStateVariable::CurrentState(void* image) {
  forEachImage(fields, image, [](BaseStateVariableClass& element, void* place) { element.CurrentState(place); });
}

void BaseArrayStateVariable::share(BaseStateVariableClass* other) {
  auto* const otherArray = dynamic_cast<BaseArrayStateVariable*>(other);
  support::requireRuntime(otherArray != nullptr, "otherArray");
  ShareWith(otherArray);
}

void BaseArrayStateVariable::printState(std::ostream* strm) {
  *strm << StateVariableName << " = {\n";
  for (BaseStateVariableClass* const element : fields) {
    element->printState(strm);
  }
  *strm << "}\n";
}

void BaseArrayStateVariable::appendAffectingAction(BaseActionClass* TheAction) {
  support::requireRuntime(TheAction != nullptr, "TheAction");
  for (BaseStateVariableClass* const element : fields) {
    element->appendAffectingAction(TheAction);
  }
}

void BaseArrayStateVariable::appendEnabledAction(BaseActionClass* TheAction) {
  support::requireRuntime(TheAction != nullptr, "TheAction");
  BaseStateVariableClass::appendEnabledAction(TheAction);
  for (BaseStateVariableClass* const element : fields) {
    element->appendEnabledAction(TheAction);
  }
}

List<BaseStateVariableClass>* BaseArrayStateVariable::getLeafNodes() {
  auto leaves = std::make_unique<List<BaseStateVariableClass>>();
  for (BaseStateVariableClass* const element : fields) {
    const std::unique_ptr<List<BaseStateVariableClass>> childTemp(element->getLeafNodes());
    support::requireRuntime(childTemp != nullptr, "childTemp");
    leaves->append(childTemp.get());
  }
  return leaves.release();
}

int BaseArrayStateVariable::getNumLeafNodes() {
  int sum = 0;
  for (BaseStateVariableClass* const element : fields) {
    sum += element->getNumLeafNodes();
  }
  return sum == 0 ? 1 : sum;
}

void BaseArrayStateVariable::addSelfAsEnablingSVToAction(BaseActionClass* action) {
  for (BaseStateVariableClass* const element : fields) {
    element->addSelfAsEnablingSVToAction(action);
  }
}

void BaseArrayStateVariable::addSelfAsAffectedSVToAction(BaseActionClass* action) {
  for (BaseStateVariableClass* const element : fields) {
    element->addSelfAsAffectedSVToAction(action);
  }
}

void BaseArrayStateVariable::removeSelfFromEnablingSVOfAction(BaseActionClass* action) {
  for (BaseStateVariableClass* const element : fields) {
    element->removeSelfFromEnablingSVOfAction(action);
  }
}

void BaseArrayStateVariable::removeSelfFromAffectedSVOfAction(BaseActionClass* action) {
  for (BaseStateVariableClass* const element : fields) {
    element->removeSelfFromAffectedSVOfAction(action);
  }
}

void BaseArrayStateVariable::ShareWith(BaseArrayStateVariable* otherArray) {
  requirePartner(otherArray);
  fieldIterator otheri = otherArray->fields.begin();
  for (BaseStateVariableClass* const element : fields) {
    support::requireRuntime(otheri != otherArray->fields.end(), "otheri!=otherArray->fields.end()");
    element->share(*otheri);
    ++otheri;
  }
}

void BaseArrayStateVariable::failIndex(int i) {
  std::cerr << "Runtime error: index out of bounds. " << StateVariableName << "[0.." << fields.size() - 1
            << "] indexed with " << i << std::endl;
  support::failRuntimeAssertion("0", __FILE__, __LINE__);
}
