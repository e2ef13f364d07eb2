#include "BaseClasses/BaseSyncActionClass.h"

#include <algorithm>
#include <cstddef>

#include "BaseClasses/Assertions.h"

BaseSyncActionClass::BaseSyncActionClass(BaseActionClass* const* TheActions, int NumActions)
    : NumSuperposedActions(NumActions),
      SuperposedActions(std::make_unique<BaseActionClass*[]>(static_cast<std::size_t>(NumActions))) {
  std::copy_n(TheActions, NumActions, SuperposedActions.get());
}

bool BaseSyncActionClass::isSync() {
  return true;
}

BaseActionClass* BaseSyncActionClass::getSuperposedAction(int TheIndex) {
  support::require(TheIndex >= 0 && TheIndex < NumSuperposedActions, "BaseSyncActionClass");
  return SuperposedActions[static_cast<std::size_t>(TheIndex)];
}
