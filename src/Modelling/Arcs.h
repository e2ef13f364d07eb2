#pragma once

#include <initializer_list>
#include <ranges>
#include <span>
#include <type_traits>
#include <vector>

#include "BaseClasses/BaseStateVariableClass.h"

namespace modelling {

/// The state variables that an activity's arcs lead to, in the order in which the arcs are drawn. Written as
/// `{q, server}`, where the names are variables or pointers to them; a range of pointers serves too, and `+` puts two
/// lists together. The variables are borrowed.
class Arcs {
 public:
  /// One end of an arc.
  class End {
   public:
    End(BaseStateVariableClass& variable) : variable_(&variable) {}  // NOLINT(google-explicit-constructor)
    End(BaseStateVariableClass* variable) : variable_(variable) {}   // NOLINT(google-explicit-constructor)
    [[nodiscard]] BaseStateVariableClass* variable() const { return variable_; }

   private:
    BaseStateVariableClass* variable_;  // borrowed
  };

  Arcs() = default;
  Arcs(std::initializer_list<End> ends) {
    for (const End& end : ends) {
      variables_.push_back(end.variable());
    }
  }
  template <std::ranges::input_range Range>
  requires std::is_convertible_v<std::ranges::range_reference_t<Range>, BaseStateVariableClass*> Arcs(
      const Range& range) {  // NOLINT(google-explicit-constructor)
    for (BaseStateVariableClass* const variable : range) {
      variables_.push_back(variable);
    }
  }

  friend Arcs operator+(Arcs first, const Arcs& second) {
    first.variables_.insert(first.variables_.end(), second.variables_.begin(), second.variables_.end());
    return first;
  }

  [[nodiscard]] std::span<BaseStateVariableClass* const> variables() const { return variables_; }

 private:
  std::vector<BaseStateVariableClass*> variables_;
};

}  // namespace modelling
