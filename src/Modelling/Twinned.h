#pragma once

#include <memory>
#include <string>
#include <type_traits>

#include "BaseClasses/SAN/Place.h"
#include "Modelling/TwinMaker.h"

namespace modelling {

/// A state variable of the class `Kind`, made from the same arguments, that composed models can share by its name.
template <typename Kind>
class Twinned : public Kind, public TwinMaker {
 public:
  using Kind::Kind;

  /// A Place whose initial mark is given as another type of number, such as the int that a literal is.
  template <typename Number>
  requires(std::is_same_v<Kind, Place>&& std::is_arithmetic_v<Number>) Twinned(const char* name, Number mark)
      : Kind(name, static_cast<short>(mark)) {}

  [[nodiscard]] std::unique_ptr<BaseStateVariableClass> twin(const std::string& name) const override {
    if constexpr (requires { Kind::likeness(*this, name); }) {
      return Kind::likeness(*this, name);
    } else {
      return std::make_unique<Twinned>(name.c_str());
    }
  }
};

}  // namespace modelling
