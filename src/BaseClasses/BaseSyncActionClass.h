#pragma once

#include <cstdint>
#include <memory>

#include "BaseClasses/BaseActionClass.h"

/// An action that superposes several others: its firing counts, for the rewards, as a firing of each of them.
/// Owns     its array; the superposed actions are borrowed from the models that made them.
class BaseSyncActionClass : public BaseActionClass {
 public:
  /// An action that superposes nothing.
  BaseSyncActionClass() = default;

  /// Superposes `NumActions` >= 0 actions, in the order of the array, which is copied. None of them may be null.
  BaseSyncActionClass(BaseActionClass* const* TheActions, int NumActions);

  bool isSync() override;

  int getNumSuperposedActions() { return NumSuperposedActions; }

  /// Requires 0 <= TheIndex < getNumSuperposedActions().
  BaseActionClass* getSuperposedAction(int TheIndex);

 protected:
  std::int32_t NumSuperposedActions = 0;
  std::unique_ptr<BaseActionClass*[]> SuperposedActions;
};
