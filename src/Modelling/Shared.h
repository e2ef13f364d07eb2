#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"

namespace modelling {

/// A variable that children of a composed model have in common: its name at the composed model's level, and what it is
/// called in the children. `"broken"` alone is the variable of that name in every child that has one;
/// `{"broken", {{"machines", "failed"}, {"crew", "queue"}}}` names child and variable one by one.
class Shared {
 public:
  /// A variable of a child.
  struct Part {
    std::string child;
    std::string variable;
  };

  Shared(const char* name) : name_(name) {}             // NOLINT(google-explicit-constructor)
  Shared(std::string name) : name_(std::move(name)) {}  // NOLINT(google-explicit-constructor)
  Shared(std::string name, std::vector<Part> parts) : name_(std::move(name)), parts_(std::move(parts)) {}

  [[nodiscard]] const std::string& name() const { return name_; }

  /// What the variable is called in the child of that name; empty if the child has no part in it.
  [[nodiscard]] std::string nameIn(std::string_view child) const;

  /// Whether a part names that child.
  [[nodiscard]] bool isNamedIn(std::string_view child) const { return !parts_.empty() && !nameIn(child).empty(); }

  /// Ends the process with a message unless each part names one of `children`.
  void requireChildren(const std::string& composer, const std::vector<std::string>& children) const;

 private:
  std::string name_;
  std::vector<Part> parts_;  // none: the same name in every child
};

/// The variable of that name that a model offers to the composed model above it: a variable of an atomic model, or one
/// that a composed model holds at its own level. Null if there is none.
[[nodiscard]] BaseStateVariableClass* offeredVariable(BaseModelClass& model, const std::string& name);

/// Another variable of the same kind as `variable`, which is one of this kit or a Place or ExtendedPlace; any other one
/// ends the process with a message.
[[nodiscard]] std::unique_ptr<BaseStateVariableClass> twinOf(BaseStateVariableClass& variable, const std::string& name);

/// The names, for the constructors of the engine's composers.
[[nodiscard]] std::vector<const char*> namesOf(const std::vector<Shared>& shared);

}  // namespace modelling
