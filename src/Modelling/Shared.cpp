#include "Modelling/Shared.h"

#include <algorithm>
#include <span>

#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/state/ExtendedPlace.h"
#include "Composer/BaseComposerClass.h"
#include "Modelling/ModelFault.h"
#include "Modelling/Twinned.h"

namespace modelling {
namespace {

template <typename Kind>
bool isA(BaseStateVariableClass& variable, const std::string& name, std::unique_ptr<BaseStateVariableClass>& twin) {
  if (dynamic_cast<Kind*>(&variable) == nullptr) {
    return false;
  }
  twin = std::make_unique<Twinned<Kind>>(name.c_str());
  return true;
}

template <typename... Kinds>
std::unique_ptr<BaseStateVariableClass> twinAmong(BaseStateVariableClass& variable, const std::string& name) {
  std::unique_ptr<BaseStateVariableClass> twin;
  (isA<Kinds>(variable, name, twin) || ...);
  return twin;
}

}  // namespace

std::string Shared::nameIn(std::string_view child) const {
  if (parts_.empty()) {
    return name_;
  }
  const auto part = std::ranges::find_if(parts_, [child](const Part& one) { return one.child == child; });
  return part == parts_.end() ? std::string() : part->variable;
}

void Shared::requireChildren(const std::string& composer, const std::vector<std::string>& children) const {
  for (const Part& part : parts_) {
    if (std::ranges::find(children, part.child) == children.end()) {
      failModel("model \"" + composer + "\" shares \"" + name_ + "\" with a child \"" + part.child +
                "\", which it does not have");
    }
  }
}

BaseStateVariableClass* offeredVariable(BaseModelClass& model, const std::string& name) {
  std::span<BaseStateVariableClass*> offered;
  if (auto* const composer = dynamic_cast<BaseComposerClass*>(&model); composer != nullptr) {
    offered = {composer->SharedStatePtrs, composer->AddedSharedPtrs};
  } else if (BaseStateVariableClass** const variables = model.GetLocalStateVariables(nullptr); variables != nullptr) {
    offered = {variables, static_cast<std::size_t>(model.getNumStateVariables())};
  }
  const auto found =
      std::ranges::find_if(offered, [&name](BaseStateVariableClass* one) { return one->getName() == name; });
  return found == offered.end() ? nullptr : *found;
}

std::unique_ptr<BaseStateVariableClass> twinOf(BaseStateVariableClass& variable, const std::string& name) {
  if (const auto* const maker = dynamic_cast<const TwinMaker*>(&variable); maker != nullptr) {
    return maker->twin(name);
  }
  auto twin = twinAmong<Place, ExtendedPlace<short>, ExtendedPlace<int>, ExtendedPlace<double>, ExtendedPlace<float>,
                        ExtendedPlace<bool>, ExtendedPlace<char>>(variable, name);
  if (twin == nullptr) {
    failModel("variable \"" + std::string(variable.getName()) +
              "\" is of a kind that cannot be shared by name: make it a Variable of this kit, or share it by hand");
  }
  return twin;
}

std::vector<const char*> namesOf(const std::vector<Shared>& shared) {
  std::vector<const char*> names;
  names.reserve(shared.size());
  for (const Shared& one : shared) {
    names.push_back(one.name().c_str());
  }
  return names;
}

}  // namespace modelling
