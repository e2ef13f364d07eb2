#include "ArcCheck/MarkTable.h"

#include <algorithm>
#include <set>
#include <utility>

#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/LeafNodes.h"
#include "BaseClasses/state/SharableSV.h"

namespace support {

namespace {

template <typename T>
bool isCellOf(BaseStateVariableClass& leaf, AccessLog::Range& cell) {
  const auto* const variable = dynamic_cast<SharableSV<T>*>(&leaf);
  if (variable == nullptr) {
    return false;
  }
  cell = {reinterpret_cast<std::uintptr_t>(variable->getPointer()), sizeof(T)};
  return true;
}

template <typename... Types>
std::optional<AccessLog::Range> cellAmong(BaseStateVariableClass& leaf) {
  AccessLog::Range cell{};
  return (isCellOf<Types>(leaf, cell) || ...) ? std::optional(cell) : std::nullopt;
}

std::optional<AccessLog::Range> cellOf(BaseStateVariableClass& leaf) {
  return cellAmong<short, int, double, float, bool, char>(leaf);
}

}  // namespace

MarkTable::MarkTable(BaseModelClass& top) {
  addModel(top, "");
  for (auto& [address, mark] : found_) {
    marks_.push_back(std::move(mark));
  }
  found_.clear();
}

void MarkTable::addModel(BaseModelClass& model, const std::string& above) {
  const std::string name = model.getName() == nullptr ? "" : model.getName();
  const std::string& path = paths_[&model] = above.empty() ? name : above + '/' + name;
  for (int i = 0; i < model.GetNumberOfChildren(); ++i) {
    addModel(*model.GetChild(i), path);
  }
  const bool isAtomic = model.GetModelType() == BaseModelClass::AtomicModel;
  BaseStateVariableClass** const variables =
      isAtomic ? model.GetLocalStateVariables(nullptr) : model.GetSharedStateVariables();
  const int count = isAtomic ? model.getNumStateVariables() : model.getNumSharedStateVariables();
  for (int i = 0; variables != nullptr && i < count; ++i) {
    if (variables[i] != nullptr) {
      addVariable(model, *variables[i]);
    }
  }
}

void MarkTable::addVariable(BaseModelClass& model, BaseStateVariableClass& variable) {
  forEachLeaf(variable, [&](BaseStateVariableClass* leaf) {
    Name name{&model, leaf->getFullyQualifiedName(), variable.getName()};
    if (const auto cell = cellOf(*leaf); cell.has_value()) {
      Mark& mark = found_[cell->begin];
      mark.range = *cell;
      mark.names.push_back(std::move(name));
    } else {
      hidden_.push_back(std::move(name));
    }
  });
}

std::vector<AccessLog::Range> MarkTable::ranges() const {
  std::vector<AccessLog::Range> all;
  for (const Mark& mark : marks_) {
    all.push_back(mark.range);
  }
  return all;
}

std::optional<std::size_t> MarkTable::markOf(BaseStateVariableClass& leaf) const {
  const auto cell = cellOf(leaf);
  if (!cell.has_value()) {
    return std::nullopt;
  }
  const auto place = std::ranges::lower_bound(marks_, cell->begin, {}, [](const Mark& one) { return one.range.begin; });
  if (place == marks_.end() || place->range.begin != cell->begin) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(place - marks_.begin());
}

bool MarkTable::hasMark(BaseStateVariableClass& leaf) {
  return cellOf(leaf).has_value();
}

std::size_t MarkTable::countAtomicModels(BaseStateVariableClass& variable) const {
  std::set<const BaseModelClass*> models;
  forEachLeaf(variable, [&](BaseStateVariableClass* leaf) {
    const auto mark = markOf(*leaf);
    for (std::size_t name = 0; mark.has_value() && name < namesOf(*mark).size(); ++name) {
      if (BaseModelClass* const model = namesOf(*mark)[name].model;
          model->GetModelType() == BaseModelClass::AtomicModel) {
        models.insert(model);
      }
    }
  });
  return models.size();
}

}  // namespace support
