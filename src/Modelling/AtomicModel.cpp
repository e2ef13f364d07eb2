#include "Modelling/AtomicModel.h"

#include "Modelling/ModelFault.h"

namespace modelling {

AtomicModel::AtomicModel(const char* name) {
  DefineName(name);
}

AtomicModel::~AtomicModel() {
  // The base class frees its arrays, which are this class's vectors.
  LocalStateVariables = nullptr;
  ReadOnlyPlaces = nullptr;
  ActionList = nullptr;
  GroupList = nullptr;
}

void AtomicModel::publish() {
  NumStateVariables = static_cast<int>(stateVariables_.size());
  LocalStateVariables = stateVariables_.data();
  ReadOnlyPlaces = LocalStateVariables + (NumStateVariables - NumReadOnlyPlaces);
  NumActions = static_cast<int>(actions_.size());
  ActionList = actions_.data();
  NumGroups = static_cast<int>(scheduled_.size());
  GroupList = scheduled_.data();
}

void AtomicModel::adopt(BaseActionClass& action) {
  action.TheModel = static_cast<BaseModelClass*>(this);
}

void AtomicModel::addVariable(BaseStateVariableClass& variable) {
  stateVariables_.insert(stateVariables_.end() - NumReadOnlyPlaces, &variable);
  publish();
}

void AtomicModel::addReadOnly(BaseStateVariableClass& variable) {
  stateVariables_.push_back(&variable);
  ++NumReadOnlyPlaces;
  publish();
}

void AtomicModel::requireVariables(const char* activity, const char* kind, const Arcs& arcs) {
  for (std::size_t i = 0; i < arcs.variables().size(); ++i) {
    if (arcs.variables()[i] == nullptr) {
      failModel("model \"" + std::string(Name) + "\": " + kind + " arc " + std::to_string(i + 1) + " of activity \"" +
                activity + "\" leads to no variable: its pointer is null");
    }
  }
}

Activity& AtomicModel::addMember(std::unique_ptr<Activity> activity, const Arcs& enabling, const Arcs& affected) {
  requireVariables(activity->ActionName, "affecting", affected);
  requireVariables(activity->ActionName, "enabling", enabling);
  Activity& made = *activity;
  activities_.push_back(std::move(activity));
  actions_.push_back(&made);
  publish();
  adopt(made);
  for (BaseStateVariableClass* const variable : affected.variables()) {
    AddAffectArc(variable, &made);
  }
  for (BaseStateVariableClass* const variable : enabling.variables()) {
    AddEnableArc(variable, &made);
  }
  made.LinkVariables();
  return made;
}

Activity& AtomicModel::add(std::unique_ptr<Activity> activity, const Arcs& enabling, const Arcs& affected) {
  Activity& made = addMember(std::move(activity), enabling, affected);
  schedule(made);
  return made;
}

void AtomicModel::schedule(BaseGroupClass& entry) {
  entry.setGroupId(static_cast<int>(scheduled_.size()));
  scheduled_.push_back(&entry);
  publish();
}

void AtomicModel::enter(BaseGroupClass& group, BaseGroupClass& member) {
  group.appendGroup(&member);
  for (std::size_t number = 0; number < scheduled_.size(); ++number) {
    if (scheduled_[number] == &group) {
      member.setGroupId(static_cast<int>(number));
    }
  }
}

}  // namespace modelling
