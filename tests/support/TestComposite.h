#pragma once

#include <utility>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "support/TestVariable.h"

namespace support {

/// A variable that consists of leaves, and hands these to actions in its place.
class TestComposite : public TestVariable {
 public:
  TestComposite(const char* name, std::vector<BaseStateVariableClass*> theLeaves)
      : TestVariable(name), leaves(std::move(theLeaves)) {}

  bool isLeafNode() override { return false; }
  void addSelfAsEnablingSVToAction(BaseActionClass* action) override {
    for (BaseStateVariableClass* const leaf : leaves) {
      action->addEnablingSV(leaf);
    }
  }
  void addSelfAsAffectedSVToAction(BaseActionClass* action) override {
    for (BaseStateVariableClass* const leaf : leaves) {
      action->addAffectedSV(leaf);
    }
  }
  void removeSelfFromEnablingSVOfAction(BaseActionClass* action) override {
    for (BaseStateVariableClass* const leaf : leaves) {
      action->removeEnablingSV(leaf);
    }
  }
  void removeSelfFromAffectedSVOfAction(BaseActionClass* action) override {
    for (BaseStateVariableClass* const leaf : leaves) {
      action->removeAffectedSV(leaf);
    }
  }

  std::vector<BaseStateVariableClass*> leaves;  // borrowed from the test
};

}  // namespace support
