#pragma once

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/LeafNodes.h"

namespace support {

/// Hands each leaf of the first `count` variables to `use`, in order. Without an array of variables there is none.
template <typename Use>
void forEachLeaf(BaseStateVariableClass** variables, int count, Use use) {
  for (int i = 0; variables != nullptr && i < count; ++i) {
    forEachLeaf(*variables[i], use);
  }
}

/// The model that holds the action.
[[nodiscard]] inline BaseModelClass* modelOf(BaseActionClass* action) {
  return static_cast<BaseModelClass*>(action->TheModel);
}

}  // namespace support
