#pragma once

#include <memory>

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/List.h"

namespace support {

/// Hands each leaf of the first `count` variables to `use`, in order. Without an array of variables there is none.
template <typename Use>
void forEachLeaf(BaseStateVariableClass** variables, int count, Use use) {
  for (int i = 0; variables != nullptr && i < count; ++i) {
    const std::unique_ptr<List<BaseStateVariableClass>> leaves(variables[i]->getLeafNodes());
    for (int leaf = 0; leaf < leaves->getNumItems(); ++leaf) {
      use(leaves->getItem(leaf));
    }
  }
}

/// The model that holds the action.
[[nodiscard]] inline BaseModelClass* modelOf(BaseActionClass* action) {
  return static_cast<BaseModelClass*>(action->TheModel);
}

}  // namespace support
