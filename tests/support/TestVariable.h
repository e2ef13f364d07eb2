#pragma once

#include <cstring>
#include <ostream>

#include "BaseClasses/BaseStateVariableClass.h"

namespace support {

/// A leaf state variable of one int, without any sharing.
class TestVariable : public BaseStateVariableClass {
 public:
  explicit TestVariable(const char* name, int theValue = 0, const char* prefix = "")
      : BaseStateVariableClass(name, prefix), value(theValue) {}

  int StateSize() override { return static_cast<int>(sizeof value); }
  void SetState(void* image) override { std::memcpy(&value, image, sizeof value); }
  void CurrentState(void* image) override { std::memcpy(image, &value, sizeof value); }
  using BaseStateVariableClass::printState;
  void printState(std::ostream* strm) override { *strm << StateVariableName << " = " << value << '\n'; }
  void share(BaseStateVariableClass* /*other*/) override {}

  int value;
};

}  // namespace support
