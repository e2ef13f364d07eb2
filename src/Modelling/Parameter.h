#pragma once

#include <ostream>
#include <string>
#include <type_traits>
#include <utility>

#include "Modelling/GlobalVariable.h"
#include "Study/PrimitiveType.h"

namespace modelling {

/// A global variable with its name: `Parameter<Double> arrivalRate{"arrivalRate"};` at file scope. Model code reads it
/// like a number; a study alone writes it.
/// Wrapper  Short, Int, Long, Float, Double, Bool or Char
template <typename Wrapper>
class Parameter : public Wrapper, public GlobalVariable {
  template <typename T>
  static T valueOf(const PrimitiveType<T>& wrapper);

 public:
  using Value = decltype(valueOf(std::declval<const Wrapper&>()));

  explicit Parameter(std::string name) : GlobalVariable(std::move(name)) {}

  [[nodiscard]] const char* typeName() const override {
    if constexpr (std::is_same_v<Wrapper, Short>) {
      return "short";
    } else if constexpr (std::is_same_v<Wrapper, Int>) {
      return "int";
    } else if constexpr (std::is_same_v<Wrapper, Long>) {
      return "long";
    } else if constexpr (std::is_same_v<Wrapper, Float>) {
      return "float";
    } else if constexpr (std::is_same_v<Wrapper, Double>) {
      return "double";
    } else if constexpr (std::is_same_v<Wrapper, Bool>) {
      return "bool";
    } else {
      static_assert(std::is_same_v<Wrapper, Char>, "a global variable is one of the seven wrappers");
      return "char";
    }
  }
  [[nodiscard]] void* address() override { return static_cast<Wrapper*>(this); }
  void print(std::ostream& out) const override { out << static_cast<Value>(*this); }

 private:
  void assign(const void* value) override { this->Set(*static_cast<const Value*>(value)); }
};

}  // namespace modelling
