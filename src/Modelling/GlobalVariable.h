#pragma once

#include <iosfwd>
#include <string>
#include <utility>

namespace modelling {

/// What a study knows of a global variable: its name, its type, where it stands and how it is written. Parameter is the
/// variable itself.
class GlobalVariable {
 public:
  explicit GlobalVariable(std::string name) : name_(std::move(name)) {}
  virtual ~GlobalVariable() = default;

  GlobalVariable(const GlobalVariable&) = delete;
  GlobalVariable& operator=(const GlobalVariable&) = delete;

  [[nodiscard]] const std::string& name() const { return name_; }
  /// "short", "int", "long", "float", "double", "bool" or "char".
  [[nodiscard]] virtual const char* typeName() const = 0;
  /// The engine's wrapper.
  [[nodiscard]] virtual void* address() = 0;
  /// Writes the value.
  virtual void print(std::ostream& out) const = 0;

 private:
  friend class Study;  // which alone may write a global variable
  /// `value` points at a value of the variable's own type.
  virtual void assign(const void* value) = 0;

  std::string name_;
};

}  // namespace modelling
