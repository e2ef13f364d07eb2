#pragma once

#include <cstdint>

#include "BaseClasses/LocalStateImage.h"
#include "Composer/BaseComposerClass.h"

/// A number of identical copies of one child model, with a chosen set of its state variables made one across all
/// copies.
///
/// Image    NumModels images of the replica, sorted, then the images of the shared variables that are Stored, in order.
///          Replicas are interchangeable: the image says how many are in each marking and not which. One element is
///          moved into order per call, which serves a run, where one firing changes few replicas.
/// The loop variables are fields: no operation may be called while another one runs.
class Rep : public BaseComposerClass {
 public:
  /// The saved values of the variables shared at this level.
  class LocalState : public LocalStateImage {
   public:
    explicit LocalState(Rep* model);

   protected:
    void SetState(const BaseModelClass* model) override;
    void GetState(const BaseModelClass* model) override;
  };

  /// A negative number of replicas is reported and ends the process with status 1; 0 makes an empty model.
  Rep(const char* name, int replicaCount, int sharedCount, const char* const* names);
  ~Rep() override;

  /// Last step of a concrete rep's constructor: every replica is renamed to `submodelName` and the buffers of the image
  /// are made. A rep with no replicas may go without it.
  void Setup(const char* submodelName);

  void CurrentState(void* new_location) override;
  void SetState(void* NewState) override;
  int StateSize() override;

  BaseModelClass::ModelType GetModelType() override;
  BaseModelClass* GetChild(int i) override;
  /// Not answered for a composed model: ends the process.
  void GetLocalActions(base_action_list_t& actions) override;
  void GetGlobalActions(base_action_list_t& actions) override;
  void ConstructLocalState(State*& state) override;

  char* tempChar = nullptr;              // owned, 1 byte
  bool leftBit = false;                  // without use
  std::int32_t currentStateCounter = 0;  // loop index of CurrentSharedState
  std::int32_t currentStateIndex = 0;    // running offset of CurrentState
  std::int32_t lumpStatesCounter = 0;    // without use, like the two that follow
  std::int32_t lumpStatesStateCounter = 0;
  std::uint32_t setStateCounter = 0;
  char* setStateIndex = nullptr;    // borrowed: running place of SetState in the caller's image
  char* setStateCardLoc = nullptr;  // without use, like the next seven
  std::int32_t writeStatesIndex = 0;
  std::int32_t writeStatesCounter = 0;
  std::int32_t isIndex = 0;
  std::int32_t isCard = 0;
  std::int32_t isCounter = 0;
  std::int32_t numCopies = 0;
  std::int16_t MinBits = 0;
  std::int16_t MinBytes = 0;                     // without use
  char* dummystate = nullptr;                    // owned scratch of SubmodelStateSize bytes
  bool FoundIt = false;                          // without use
  char** LumpedStates = nullptr;                 // owned array of owned buffers, each of one replica's image size
  std::uint32_t* LumpedCardinalities = nullptr;  // owned array, one entry per replica
  std::uint32_t TotalDiffLumped = 0;             // without use
  char* UnlumpedLastTime = nullptr;              // owned, StateSize() bytes; filled at Setup
  char* UnlumpedThisTime = nullptr;    // owned, StateSize() bytes: the replicas' images before they are sorted
  std::int32_t SubmodelStateSize = 0;  // image size of one replica

 private:
  char* SetSharedState(char* Address);
  void CurrentSharedState(char* Address);
};
