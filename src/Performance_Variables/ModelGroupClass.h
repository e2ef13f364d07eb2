#pragma once

class BaseModelClass;

/// The model instances behind one worker: one for each model name that the worker's reward depends on.
/// Owns     the array; the models are borrowed from the model tree.
class ModelGroupClass {
 public:
  BaseModelClass** ModelList = nullptr;  // owned array; entries borrowed from the model tree
  int NumModels = 0;                     // entries of ModelList

  ModelGroupClass() = default;
  ~ModelGroupClass();

  ModelGroupClass(const ModelGroupClass&) = delete;
  ModelGroupClass& operator=(const ModelGroupClass&) = delete;

  /// Sets the count and makes that many entries, all null, in place of any earlier ones.
  void CreateModelList(int the_num_models);
  /// Stores one entry. Requires: 0 <= ModelIndex < NumModels.
  void SetModel(int ModelIndex, BaseModelClass* ModelAddress);
  /// True when `TheModel` stands among the entries. O(NumModels).
  [[nodiscard]] bool IsDependentOnModel(const BaseModelClass* TheModel) const;
};
