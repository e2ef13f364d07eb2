#include "Composer/SharedStateVarLink.h"

#include <iostream>

#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"

SharedStateVarLink::SharedStateVarLink(BaseStateVariableClass* variable) : myStateVar(variable) {}

SharedStateVarLink::SharedStateVarLink(BaseStateVariableClass* variable, BaseModelClass* model)
    : myStateVar(variable), parent(model) {}

bool SharedStateVarLink::hasStateVar(BaseStateVariableClass* variable) const {
  for (const SharedStateVarLink* link = this; link != nullptr; link = link->next) {
    if (link->myStateVar == variable) {
      return true;
    }
  }
  return false;
}

void SharedStateVarLink::addStateVarLink(SharedStateVarLink* list) {
  SharedStateVarLink* last = this;
  while (last != list && last->next != nullptr) {
    last = last->next;
  }
  if (last != list) {  // a list attached to its own end would be a ring, and no walk along it would come to an end
    last->next = list;
  }
}

void SharedStateVarLink::clearStateVarList(SharedStateVarLink* list) {
  while (list != nullptr) {
    SharedStateVarLink* const following = list->next;
    delete list;
    list = following;
  }
}

void SharedStateVarLink::printAllStateVariables() const {
  for (const SharedStateVarLink* link = this; link != nullptr; link = link->next) {
    std::cout << "      This link holds state var " << link->myStateVar->getName() << " at address "
              << static_cast<const void*>(link->myStateVar) << '\n';
  }
}
