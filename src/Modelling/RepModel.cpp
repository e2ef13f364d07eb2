#include "Modelling/RepModel.h"

#include "Modelling/ModelFault.h"

namespace modelling {

RepModel::RepModel(const std::string& name, int copies, const ChildModel& child, const std::vector<Shared>& shared)
    : Rep(name.c_str(), copies, static_cast<int>(shared.size()), namesOf(shared).data()) {
  for (int i = 0; i < NumModels; ++i) {
    ModelArray[i] = copies_.emplace_back(child.make()).get();
  }
  SetupActions();
  if (NumModels == 0) {
    return;
  }
  if (AllChildrenEmpty()) {
    NumSharedStateVariables = 0;
  } else {
    shareVariables(child, shared);
  }
  Setup(child.name.c_str());
}

RepModel::~RepModel() = default;

void RepModel::shareVariables(const ChildModel& child, const std::vector<Shared>& shared) {
  // By variable, then by copy.
  std::vector<std::vector<BaseStateVariableClass*>> parts;
  for (const Shared& one : shared) {
    one.requireChildren(Name, {child.name});
    const std::string variable = one.nameIn(child.name);
    std::vector<BaseStateVariableClass*>& copies = parts.emplace_back();
    for (const auto& copy : copies_) {
      copies.push_back(offeredVariable(*copy, variable));
      if (copies.back() == nullptr) {
        failModel("model \"" + std::string(Name) + "\" shares \"" + one.name() + "\" among copies of \"" + child.name +
                  "\", which has no variable \"" + variable + "\"");
      }
    }
    BaseStateVariableClass& held = *variables_.emplace_back(twinOf(*copies.front(), one.name()));
    addSharedPtr(&held, one.name().c_str());
    held.share(copies.front());
  }
  for (std::size_t v = 0; v < parts.size(); ++v) {
    for (BaseStateVariableClass* const copy : parts[v]) {
      addSharingInfo(copy, variables_[v].get(), nullptr);
    }
  }
  for (std::size_t i = 1; i < copies_.size(); ++i) {
    for (const auto& copies : parts) {
      copies.front()->share(copies[i]);
    }
  }
}

ChildModel replicate(const std::string& name, int copies, const ChildModel& child, const std::vector<Shared>& shared) {
  return {name, [=] { return std::make_unique<RepModel>(name, copies, child, shared); }};
}

}  // namespace modelling
