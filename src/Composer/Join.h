#pragma once

#include <cstdint>

#include "BaseClasses/LocalStateImage.h"
#include "Composer/BaseComposerClass.h"

/// A fixed number of different child models as one model, some of whose state variables are one.
///
/// Image    the image of each child in the order of ModelArray, then the images of the variables shared at this level
///          that are Stored, in order.
///
/// The loop variables are fields: no operation may be called while another one runs.
class Join : public BaseComposerClass {
 public:
  /// The saved values of the variables shared at this level.
  class LocalState : public LocalStateImage {
   public:
    explicit LocalState(Join* model);

   protected:
    void SetState(const BaseModelClass* model) override;
    void GetState(const BaseModelClass* model) override;
  };

  Join(const char* name, int modelCount, int sharedCount, const char* const* names);
  ~Join() override;

  /// Last step of a concrete join's constructor: counts, notes the sizes of the children's images and builds the table
  /// of action names.
  void Setup();

  /// Enters every action's name in the table. A name whose slot is taken tries the slots at +1, -1, +4, -4, +9 and so
  /// on around its home slot.
  void HashActions();

  void CurrentState(void* Address) override;
  void SetState(void* Address) override;
  int StateSize() override;

  BaseModelClass::ModelType GetModelType() override;
  BaseModelClass* GetChild(int i) override;
  /// Not answered for a composed model: ends the process.
  void GetLocalActions(base_action_list_t& actions) override;
  void GetGlobalActions(base_action_list_t& actions) override;
  void ConstructLocalState(State*& state) override;

  std::int32_t ActionNameTableSize = 0;             // four times the number of distinct action names
  const char** ActionNameHashTable = nullptr;       // owned array; the texts belong to the actions; null is a free slot
  std::int32_t* ActionNameCardinalities = nullptr;  // owned array: how many actions bear the slot's name
  std::int32_t* SubmodelStateSize = nullptr;        // owned array: each child's image size at the end of Setup
  bool LookForward = true;                          // direction of the next probe of the name table
  std::uint32_t currentStateIndex = 0;              // running offset of CurrentState and CurrentSharedState
  std::uint32_t currentStateCounter = 0;            // child index of the same
  std::uint32_t stateSizeCounter = 0;               // child index of StateSize
  std::uint32_t stateSizeTotal = 0;                 // without use
  std::uint32_t hashActionsCounter = 0;             // action index of HashActions
  std::uint32_t hashActionsIndex = 0;               // probe count of HashActions
  std::uint32_t numActionsCounter = 0;              // without use, like the three that follow
  std::uint32_t numActionsIndex = 0;
  std::uint32_t numModelsCounter = 0;
  std::uint32_t numModelsIndex = 0;
  std::uint32_t setStateIndex = 0;    // running offset of SetState and SetSharedState
  std::uint32_t setStateCounter = 0;  // child index of the same

 private:
  void SetSharedState(void* Address);
  void CurrentSharedState(void* Address);
};
