#pragma once

#include <memory>
#include <string>

#include "BaseClasses/BaseStateVariableClass.h"

namespace modelling {

/// A state variable that can make another one of its kind and size, with no action attached: what a composed model
/// holds at its own level in place of the variables that it shares.
class TwinMaker {
 public:
  virtual ~TwinMaker() = default;
  [[nodiscard]] virtual std::unique_ptr<BaseStateVariableClass> twin(const std::string& name) const = 0;
};

}  // namespace modelling
