#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/TraceFileXML.h"
#include "support/TraceModels.h"

/// The XML sink with its bookkeeping open to tests.
class TraceFileXMLProbe : public TraceFileXML {
 public:
  using TraceFileXML::TraceFileXML;

  bool addState(const char* name) { return TraceFileXML::addState(name); }
  bool addUsedStateName(const char* name, int parentId, int id) {
    return TraceFileXML::addUsedStateName(name, parentId, id);
  }
  [[nodiscard]] bool inUsedStateName(const char* name) const { return TraceFileXML::inUsedStateName(name); }
  [[nodiscard]] int getModelMap(const char* name, int id) const { return TraceFileXML::getModelMap(name, id); }
  void setBatch(int batch) { runNum = batch; }
  [[nodiscard]] int batch() const { return runNum; }
  static bool comesFirst(const BaseModelClass* one, const BaseModelClass* other) { return comp()(one, other); }

  void insert(const BaseModelClass* model, std::vector<BaseStateVariableClass*> variables) {
    insertIntoModelMap(model, std::make_unique<Variables>(std::move(variables)));
  }
  [[nodiscard]] std::vector<const BaseModelClass*> modelsInOrder() const {
    std::vector<const BaseModelClass*> models;
    for (const auto& [model, variables] : ModelMap) {
      models.push_back(model);
    }
    return models;
  }
};

namespace support {

/// A variable that has been joined to another one.
class SharedVariable : public ShownVariable {
 public:
  SharedVariable(const char* name, int value, const char* prefix = "") : ShownVariable(name, value, prefix) {
    setShared(true);
  }
};

/// An action of given name that changes the variables. A group without members, so that groups can hold it.
class ShownAction : public BaseGroupClass {
 public:
  ShownAction(const char* name, std::initializer_list<BaseStateVariableClass*> changed) {
    defineName(name);
    for (BaseStateVariableClass* const variable : changed) {
      addAffectedSV(variable);
    }
  }
};

/// A model without children that holds variables and actions.
class AtomicShown : public ShownModel {
 public:
  AtomicShown(const char* name, std::vector<BaseStateVariableClass*> variables, std::vector<BaseActionClass*> actions)
      : ShownModel(name, std::move(variables)), actions_(std::move(actions)) {
    for (BaseActionClass* const action : actions_) {
      action->TheModel = static_cast<BaseModelClass*>(this);
    }
    NumActions = static_cast<int>(actions_.size());
    ActionList = actions_.data();
  }
  ModelType GetModelType() override { return AtomicModel; }

 private:
  std::vector<BaseActionClass*> actions_;  // borrowed from the test
};

/// A model of children that holds shared variables.
class ComposedShown : public ShownModel {
 public:
  ComposedShown(const char* name, ModelType type, std::vector<BaseStateVariableClass*> shared)
      : ShownModel(name), type_(type), shared_(std::move(shared)) {
    NumSharedStateVariables = static_cast<int>(shared_.size());
  }
  ModelType GetModelType() override { return type_; }
  BaseStateVariableClass** GetSharedStateVariables() override { return shared_.empty() ? nullptr : shared_.data(); }
  int GetNumberOfChildren() override { return static_cast<int>(children.size()); }
  BaseModelClass* GetChild(int index) override { return children[static_cast<std::size_t>(index)]; }

  std::vector<BaseModelClass*> children;  // borrowed from the test

 private:
  ModelType type_;
  std::vector<BaseStateVariableClass*> shared_;  // borrowed from the test
};

/// A text in which "[model]" and "[action]" stand for ids. Models and actions get theirs from the process's count.
class Ids {
 public:
  void name(const std::string& word, BaseModelClass& model) { ids_.emplace_back(word, model.getId()); }
  void name(const std::string& word, BaseActionClass& action) { ids_.emplace_back(word, action.getID()); }

  [[nodiscard]] std::string in(std::string text) const {
    for (const auto& [word, id] : ids_) {
      const std::string mark = "[" + word + "]";
      for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark)) {
        text.replace(at, mark.size(), std::to_string(id));
      }
    }
    EXPECT_EQ(text.find('['), std::string::npos) << text;
    return text;
  }

 private:
  std::vector<std::pair<std::string, int>> ids_;
};

}  // namespace support
