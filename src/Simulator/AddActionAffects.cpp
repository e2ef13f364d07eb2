#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <vector>

#include "BaseClasses/ActionAffectsElement.h"
#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/CellPool.h"
#include "BaseClasses/DebugLines.h"
#include "Performance_Variables/PVModel.h"
#include "Simulator/ParseInt32.h"
#include "Simulator/SimulatorClass.h"

namespace {

constexpr const char* kSourceName = "AddActionAffects.cpp";

/// SIMTEST's value, or `otherwise` when it is not set.
int simTest(int otherwise) {
  const char* const text = std::getenv("SIMTEST");
  return text == nullptr ? otherwise : support::parseInt32(text);
}

/// One more than the largest ID that an action of the list can have.
std::size_t idLimit(BaseActionClass** actions, int count) {
  return static_cast<std::size_t>(count > 0 ? actions[0]->getMaxID() : 0) + 1;
}

void debugAddition(BaseActionClass* action) {
  support::debugLine(3, "AddActionAffects on ", action->ActionName);
}

/// "<model>(<id>)-><action> (<id>)". An action outside any model shows as of model 0, an id that no model has.
void printAction(std::ostream& out, BaseActionClass* action) {
  auto* const model = static_cast<BaseModelClass*>(action->TheModel);
  const char* const name = model == nullptr ? nullptr : model->getName();
  out << (name == nullptr ? "Unknown Model" : name) << '(' << (model == nullptr ? 0 : model->getId()) << ")->"
      << action->ActionName << " (" << action->getID() << ')' << std::endl;
}

}  // namespace

BaseGroupClass* SimulatorClass::groupOf(BaseActionClass* action) {
  const int number = action->GroupID;
  if (number < 0 || number >= TheModel->getNumGroups()) {
    std::cerr << "ERROR: action \"" << action->ActionName << "\" belongs to group " << number
              << "; the model has groups 0 to " << TheModel->getNumGroups() - 1 << std::endl;
    std::exit(1);
  }
  return GroupList[number];
}

short SimulatorClass::GenerateConnectivityList() {
  BaseActionClass** const actions = TheModel->getActionList();
  const int NumActions = TheModel->getNumActions();
  // By a group's ID: the ID of the last action for which that group was entered.
  std::vector<std::int32_t> ActionFound(idLimit(actions, NumActions), -1);

  for (int i = 0; i < NumActions; ++i) {
    BaseActionClass* const CurAction = actions[i];
    const auto enterOnce = [&](BaseActionClass* group) {
      std::int32_t& enteredFor = ActionFound[static_cast<std::size_t>(group->getID())];
      if (enteredFor != CurAction->getID()) {
        enteredFor = CurAction->getID();
        AddActionAffects(group, CurAction);
      }
    };
    enterOnce(groupOf(CurAction));
    for (int v = 0; v < CurAction->getNumAffectedSVs(); ++v) {
      BaseStateVariableClass* const AffectedSV = CurAction->getAffectedSV(v);
      for (int k = 0; k < AffectedSV->getNumEnabledActions(); ++k) {
        enterOnce(groupOf(AffectedSV->getEnabledAction(k)));
      }
    }
  }
  return 0;
}

short SimulatorClass::GenerateConnectivityListOld() {
  BaseActionClass** const actions = TheModel->getActionList();
  const int NumActions = TheModel->getNumActions();
  const std::size_t MaxActions = idLimit(actions, NumActions);
  const bool searchesChains = simTest(1) == 0;
  std::vector<char> ActionFound(searchesChains ? 0 : MaxActions * MaxActions, 0);

  for (int i = 0; i < NumActions; ++i) {
    BaseActionClass* const CurAction = actions[i];
    BaseGroupClass* const group = groupOf(CurAction);
    const auto enterOnce = [&](BaseActionClass* action) {
      if (searchesChains) {
        AddActionAffectsOld(group, action);
        return;
      }
      char& found = ActionFound[static_cast<std::size_t>(group->getID()) +
                                static_cast<std::size_t>(action->getID()) * MaxActions];
      if (found == 0) {
        found = 1;
        AddActionAffects(group, action);
      }
    };
    enterOnce(CurAction);
    for (int v = 0; v < CurAction->getNumEnablingSVs(); ++v) {
      BaseStateVariableClass* const EnablingSV = CurAction->getEnablingSV(v);
      for (int k = 0; k < EnablingSV->getNumAffectingActions(); ++k) {
        enterOnce(EnablingSV->getAffectingAction(k));
      }
    }
  }
  return 0;
}

short SimulatorClass::AddActionAffects(BaseActionClass* group, BaseActionClass* action) {
  debugAddition(action);
  action->Affects = support::CellPool<ActionAffectsElement>::make(group, action->Affects);
  return 0;
}

short SimulatorClass::AddActionAffectsOld(BaseActionClass* group, BaseActionClass* action) {
  debugAddition(action);
  ActionAffectsElement** link = &action->Affects;
  while (*link != nullptr) {
    if ((*link)->Action == group) {
      return 0;
    }
    link = &(*link)->next;
  }
  *link = support::CellPool<ActionAffectsElement>::make(group, nullptr);
  return 0;
}

void SimulatorClass::ClearActionAffectsList(BaseActionClass* action) {
  while (action->Affects != nullptr) {
    ActionAffectsElement* const first = action->Affects;
    action->Affects = first->next;
    support::CellPool<ActionAffectsElement>::release(first);
  }
}

void SimulatorClass::DestructConnectivityList() {
  BaseActionClass** const actions = TheModel->getActionList();
  for (int i = 0; i < TheModel->getNumActions(); ++i) {
    ClearActionAffectsList(actions[i]);
  }
}

void SimulatorClass::PrintConnectivityList(std::ostream* out) {
  BaseActionClass** const actions = TheModel->getActionList();
  for (int i = 0; i < TheModel->getNumActions(); ++i) {
    BaseActionClass* const action = actions[i];
    *out << "Action: ";
    printAction(*out, action);
    *out << "Checking my Affects" << std::endl;
    support::require(action->Affects != nullptr, kSourceName);
    for (const ActionAffectsElement* element = action->Affects; element != nullptr; element = element->next) {
      *out << "    ";
      printAction(*out, element->Action);
    }
  }
}
