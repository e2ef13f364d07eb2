#pragma once

#include <memory>

#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/List.h"

namespace support {

/// Hands each leaf of the variable to `use`, in order; a variable without parts is its own leaf.
template <typename Use>
void forEachLeaf(BaseStateVariableClass& variable, Use use) {
  const std::unique_ptr<List<BaseStateVariableClass>> leaves(variable.getLeafNodes());
  for (int leaf = 0; leaf < leaves->getNumItems(); ++leaf) {
    use((*leaves)[leaf]);
  }
}

}  // namespace support
