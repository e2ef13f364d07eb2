#pragma once

#include <ostream>
#include <utility>
#include <vector>

#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "Performance_Variables/PVModel.h"

namespace support {

/// A leaf variable that shows the number it was given.
class ShownVariable : public BaseStateVariableClass {
 public:
  ShownVariable(const char* name, int theValue, const char* prefix = "")
      : BaseStateVariableClass(name, prefix), value(theValue) {}

  int StateSize() override { return 0; }
  void SetState(void* /*image*/) override {}
  void CurrentState(void* /*image*/) override {}
  void share(BaseStateVariableClass* /*other*/) override {}
  void printStateVal(std::ostream* strm) override { *strm << value; }

  int value;
};

/// A variable made of leaves.
class ShownComposite : public ShownVariable {
 public:
  ShownComposite(const char* name, std::vector<BaseStateVariableClass*> leaves)
      : ShownVariable(name, -1), leaves_(std::move(leaves)) {}

  List<BaseStateVariableClass>* getLeafNodes() override {
    auto* const list = new List<BaseStateVariableClass>;
    for (BaseStateVariableClass* const leaf : leaves_) {
      list->append(leaf);
    }
    return list;
  }

 private:
  std::vector<BaseStateVariableClass*> leaves_;  // borrowed from the test
};

/// A model of variables and children, for sinks that show it. Without variables it has no list of them.
class ShownModel : public BaseModelClass {
 public:
  explicit ShownModel(const char* name, std::vector<BaseStateVariableClass*> variables = {},
                      std::vector<BaseModelClass*> children = {})
      : variables_(std::move(variables)), children_(std::move(children)) {
    DefineName(name);
    NumStateVariables = static_cast<int>(variables_.size());
  }

  void listModels(const char* /*name*/, List<BaseModelClass>* /*models*/) override {}
  void CurrentState(void* /*image*/) override {}
  void listActions(List<BaseActionClass>* /*actions*/) override {}
  void listGroups(List<BaseGroupClass>* /*groups*/) override {}
  void SetState(void* /*image*/) override {}
  int StateSize() override { return 0; }
  bool CompareState(void* /*one*/, void* /*other*/) override { return true; }
  void listActions(const char* /*name*/, List<BaseActionClass>* /*actions*/) override {}
  void listSVs(const char* /*model*/, const char* /*name*/, List<BaseStateVariableClass>* /*variables*/,
               List<BaseModelClass>* /*models*/) override {}
  BaseStateVariableClass** GetLocalStateVariables(std::ostream* /*strm*/) override {
    return variables_.empty() ? nullptr : variables_.data();
  }
  int GetNumberOfChildren() override { return static_cast<int>(children_.size()); }
  BaseModelClass* GetChild(int index) override { return children_[static_cast<std::size_t>(index)]; }

 private:
  std::vector<BaseStateVariableClass*> variables_;  // borrowed from the test
  std::vector<BaseModelClass*> children_;           // borrowed from the test
};

/// A reward model without variables around a model that it takes over.
class ShownRewardModel : public PVModel {
 public:
  explicit ShownRewardModel(BaseModelClass* model) { TheModel = model; }
  PerformanceVariableNode* createPVNode(int /*pvindex*/, int /*timeindex*/) override { return nullptr; }
};

}  // namespace support
