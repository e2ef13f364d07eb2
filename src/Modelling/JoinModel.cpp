#include "Modelling/JoinModel.h"

#include <algorithm>
#include <utility>

#include "Modelling/ModelFault.h"

namespace modelling {

JoinModel::JoinModel(const std::string& name, const std::vector<ChildModel>& children,
                     const std::vector<Shared>& shared)
    : Join(name.c_str(), static_cast<int>(children.size()), static_cast<int>(shared.size()), namesOf(shared).data()) {
  std::vector<std::string> names;
  for (const ChildModel& child : children) {
    BaseModelClass& made = *children_.emplace_back(child.make());
    made.DefineName(child.name.c_str());
    ModelArray[children_.size() - 1] = &made;
    names.push_back(child.name);
  }
  SetupActions();
  if (AllChildrenEmpty()) {
    NumSharedStateVariables = 0;
  } else {
    for (const Shared& one : shared) {
      one.requireChildren(name, names);
      share(one, children);
    }
  }
  Setup();
}

JoinModel::~JoinModel() = default;

void JoinModel::share(const Shared& shared, const std::vector<ChildModel>& children) {
  std::vector<std::pair<BaseModelClass*, BaseStateVariableClass*>> parts;
  for (std::size_t i = 0; i < children_.size(); ++i) {
    const std::string variable = shared.nameIn(children[i].name);
    if (auto* const found = offeredVariable(*children_[i], variable); found != nullptr) {
      parts.emplace_back(children_[i].get(), found);
    } else if (shared.isNamedIn(children[i].name) && children_[i]->NumStateVariables > 0) {
      failModel("model \"" + std::string(Name) + "\" shares \"" + shared.name() + "\" with the variable \"" + variable +
                "\" of its child \"" + children[i].name + "\", which has no such variable");
    }
  }
  const bool isAnyEmpty =
      std::ranges::any_of(children_, [](const auto& child) { return child->NumStateVariables == 0; });
  if (parts.empty() || (parts.size() == 1 && !isAnyEmpty)) {
    failModel("model \"" + std::string(Name) + "\" shares \"" + shared.name() + "\", which " +
              (parts.empty() ? "none of its children has"
                             : "only its child \"" + std::string(parts.front().first->getName()) + "\" has"));
  }
  BaseStateVariableClass& variable = *variables_.emplace_back(twinOf(*parts.front().second, shared.name()));
  addSharedPtr(&variable, shared.name().c_str());
  for (const auto& [child, childsVariable] : parts) {
    variable.share(childsVariable);
    addSharingInfo(childsVariable, &variable, child);
  }
}

ChildModel join(const std::string& name, const std::vector<ChildModel>& children, const std::vector<Shared>& shared) {
  return {name, [=] { return std::make_unique<JoinModel>(name, children, shared); }};
}

}  // namespace modelling
