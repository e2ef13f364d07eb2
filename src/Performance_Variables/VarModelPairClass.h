#pragma once

/// One declared dependency of a variable's rate reward: a state variable by name, in the models of a name.
/// Owns     both texts.
class VarModelPairClass {
 public:
  char* ModelName = nullptr;  // owned
  char* VarName = nullptr;    // owned

  VarModelPairClass() = default;
  ~VarModelPairClass();

  VarModelPairClass(const VarModelPairClass&) = delete;
  VarModelPairClass& operator=(const VarModelPairClass&) = delete;

  /// Stores copies of the two texts in place of the earlier ones.
  void SetPair(const char* TheVarName, const char* TheModelName);
};
