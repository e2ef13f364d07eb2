#pragma once

/// The action of an impulse: an action by name, in the models of a name.
/// Owns     both texts.
class ActionModelPairClass {
 public:
  char* ModelName = nullptr;   // owned
  char* ActionName = nullptr;  // owned

  ActionModelPairClass() = default;
  ~ActionModelPairClass();

  ActionModelPairClass(const ActionModelPairClass&) = delete;
  ActionModelPairClass& operator=(const ActionModelPairClass&) = delete;

  /// Stores copies of the two texts in place of the earlier ones.
  void SetPair(const char* TheActionName, const char* TheModelName);
};
