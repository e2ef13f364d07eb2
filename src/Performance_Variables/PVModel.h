#pragma once

#include <iosfwd>
#include <limits>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/List.h"
#include "Performance_Variables/PerformanceVariableNode.h"

class BaseGroupClass;
class BaseStateVariableClass;
class FastSet;

/// The reward model: the wrapped top model with the performance variables of a study. At run time it stands for the
/// whole model; it answers the questions of a model by handing them on, and adds the bookkeeping of rewards.
///
/// A model derives one reward model, whose constructor creates the top model into TheModel, gives itself a name with
/// DefineName, sets StateMode, calls CreatePVList(numPVs, expandtimearrays) and then Initialize().
///
/// Order    in an event step: Accumulate(now), then FireAction(action, now). A firing's impulse is thus taken one step
///          late, with the state that it led into. At a batch's end: EndAccumulate, read the totals, SetState,
///          PVReset.
/// Owns     TheModel, the nodes and their list, and the reward data of every action that it allocated. Actions, groups
///          and the arrays of them belong to the model tree.
/// Units    times are simulated time.
/// Cost     names are resolved once, in Initialize; a step walks arrays and allocates nothing.
class PVModel : public BaseModelClass {
 public:
  /// An empty reward model. The nodes of a reward model are numbered from 0, so that a node's id is its position.
  PVModel();
  ~PVModel() override;

  PVModel(const PVModel&) = delete;
  PVModel& operator=(const PVModel&) = delete;

  void listModels(const char* TheModelName, List<BaseModelClass>* TheList) override;
  /// The wrapped model's image at `Location`, and behind it the index of the last action. Requires: StateSize() bytes.
  void CurrentState(void* Location) override;
  void listActions(List<BaseActionClass>* TheList) override;
  void listGroups(List<BaseGroupClass>* TheList) override;
  /// Brings the wrapped model to the image; the index of the last action in it is passed over.
  void SetState(void* TheState) override;
  int StateSize() override;
  /// True when the wrapped model calls the images equal and, unless StateMode is 0, their index bytes are equal.
  bool CompareState(void* state1, void* state2) override;
  void listActions(const char* TheActionName, List<BaseActionClass>* TheList) override;
  void listSVs(const char* TheModelName, const char* TheVarName, List<BaseStateVariableClass>* TheVariables,
               List<BaseModelClass>* TheModels) override;
  using BaseModelClass::printState;
  void printState(std::ostream* strm) override;

  /// Makes the node of a variable at a time point; the reward model takes it over.
  virtual PerformanceVariableNode* createPVNode(int pvindex, int timeindex) = 0;

  // Construction.

  /// Makes the nodes of `numPVs` variables: with `expandtimearrays` one node for each time point, in order; otherwise
  /// one for the first time point of each.
  void CreatePVList(int numPVs, bool expandtimearrays);
  /// Resolves every variable against the model tree and builds the lists that a step reads.
  void Initialize();
  /// Has every node make its rate workers, and tells each action which nodes and workers its changes touch.
  void MakeAffectedLists();
  /// Has every node make its impulse workers, and tells each action which impulses and impulse workers it earns.
  void MakeImpulseAffectedLists();
  /// Lists the actions that affect any node, and for each node the actions that affect it.
  void CreateAffectedLists();
  /// Makes the action's AffectedNodes the union of its nodes by rate reward and by impulse reward.
  static void CreateTotalPVAffectsList(BaseActionClass* Action);
  /// Appends the listed nodes, or all of them when NodeIndices is null, to the nodes that take part in the run.
  void ConsiderOnly(const int* NodeIndices, int size);
  /// Does nothing: the lists do not change during a run.
  void RemakeAffectedLists() {}
  /// Returns all that the construction built, the nodes and the model tree. A second call does nothing.
  void Destruct();
  /// The actions of the wrapped model, NumActions of them; borrowed from it.
  [[nodiscard]] BaseActionClass** ListOfActions() const { return PVListOfActions; }

  // Run time.

  /// Takes rewards and the impulses of the previous firing up to `new_time`, on the state before the coming firing.
  void Accumulate(double new_time) {
    if (GlobalDebugLevel > 1) [[unlikely]] {
      debugAccumulate(new_time);
    }
    takeRewards(new_time);
  }
  /// Accumulate, for who has seen to it that no debug line is due.
  void takeRewards(double new_time) {
    if (!LastAction->EarnsNoImpulse || !(new_time >= quietFrom_ && new_time < quietUntil_)) {
      accumulateAll(new_time);
      return;
    }
    for (PerformanceVariableNode* const node : nodesThatTakeRates_) {
      node->takeRateRewards(new_time, LastActionTime);
    }
  }
  /// To be called by who has moved a node's window or changed its state other than through this model, such as by a
  /// Reset of that node alone: the next step looks at every node again.
  void WindowsMoved() { quietUntil_ = -std::numeric_limits<double>::infinity(); }
  /// Fires the action and returns the action that really fired, the LastAction of the next step.
  BaseActionClass* FireAction(BaseActionClass* TheAction, double FiringTime) {
    if (GlobalDebugLevel > 0) [[unlikely]] {
      debugFiring();
    }
    return fire(TheAction, FiringTime);
  }
  /// FireAction, for who has seen to it that no debug line is due.
  BaseActionClass* fire(BaseActionClass* TheAction, double FiringTime) {
    LastActionTime = FiringTime;
    LastAction = TheAction->Fire();
    return LastAction;
  }
  /// Closes the relevant nodes that are still open, at the end of a batch.
  void EndAccumulate(double finish_time);
  /// Back to the start of a batch: every node that has been reached is reset, and no action has fired yet.
  void PVReset();
  /// PVReset, after which the steady-state nodes count as inside their window.
  void SteadyState();
  /// Writes the description of the variables to the file, replacing it.
  void WritePVTypeFile(const char* filename);

  // The index of the last action in the state image, and state-space work.

  /// The index in the block of AdditionalStateSize bytes: 0 for none, otherwise one more than the position in
  /// PVStateIndex.
  [[nodiscard]] int StateIndexLookup(const void* StartOfPVState) const;
  /// Brings the relevant nodes to the rewards of the present state and of the last action in the block.
  void PutPVState(const void* PVStatePntr);
  /// Writes the index of LastAction to the block, in mode 1 alone. O(PVStateIndexLength).
  void GetPVState(void* PVStatePntr) const;
  /// 4 less the position, in memory order, of the first byte of the number that is not 0; 0 for 0.
  ///
  /// On purpose: on a little-endian processor this is not the count of significant bytes, and the size of the image
  /// depends on it. 300 needs 4 bytes, 256 takes 3.
  [[nodiscard]] static int BytesFor(int TheNumber);
  /// Fixes the sizes of the image.
  void CreatePVStateIndex();
  /// Fires the action in the present state, takes the rewards of the state and writes the new image to `TheState`.
  void FireAction(void* TheState, BaseActionClass* TheAction);
  /// Takes the rewards of the present state with the last action that the image `TheState` names.
  void AgeAction(void* TheState, BaseActionClass* TheAction);

  PerformanceVariableNode** PerformanceVariableList = nullptr;  // owned array and owned nodes
  int Number_Of_Performance_Variables = 0;
  int Trace = 0;
  BaseModelClass* TheModel = nullptr;           // owned; created by the derived class
  BaseActionClass* LastAction = nullptr;        // borrowed: the action that fired last, or &ZeroImpulseAction
  BaseActionClass** PVListOfActions = nullptr;  // borrowed from TheModel
  double Simulation_Stop_Time = 0.0;            // largest Stop of all nodes
  double AccumulateStartTime = 0.0;
  double AccumulateStopTime = 0.0;
  BaseActionClass** AffectingActions = nullptr;  // owned array; the actions that affect any node, borrowed
  FastSet** ListOfAffectedLists = nullptr;       // owned array; the AffectedNodes of each of those, borrowed
  int NumAffectingActions = 0;                   // actions that got rate structures for a variable dependency
  int NumActionsWithImpulseAffects = 0;          // actions that got impulse structures for an impulse
  int TotalNumAffectingActions = 0;              // entries used in the two arrays above
  int PVStateIndexLength = 0;
  int ModelStateSize = 0;                    // bytes of the wrapped model's image
  int PVModelStateSize = 0;                  // bytes of the whole image
  int AdditionalStateSize = 0;               // bytes of the last action's index
  int StateMode = 0;                         // 0: the image is the model's alone; 1: it records the last action too
  BaseActionClass** PVStateIndex = nullptr;  // borrowed: PVListOfActions in mode 1
  BaseActionClass ZeroImpulseAction;         // the last action while none has fired in the batch
  BaseActionClass StateLastAction;           // a second marker, which nothing uses
  std::vector<PerformanceVariableNode*> RelevantNodes;  // borrowed from the list: the nodes that take part in the run

 private:
  void addVariableDependencies(int pvCounter);
  void addImpulseDependencies(int pvCounter, int impulse);
  static void addImpulseWorkersToAction(BaseActionClass& action, int pvCounter, int impulse,
                                        const std::vector<int>& added);
  bool allocateRateData(BaseActionClass& action);
  bool allocateImpulseData(BaseActionClass& action);
  void completeRateData(BaseActionClass& action);
  void completeImpulseData(BaseActionClass& action);
  void releaseImpulseWorkerLists(const BaseActionClass& action) const;
  void takeRewardsOfState(int stateIndex);
  void showActionAffects() const;
  void accumulateAll(double new_time);
  static void debugAccumulate(double new_time);
  static void debugFiring();

  // While no node enters or leaves its window, which is from quietFrom_ to before quietUntil_, and no firing earns an
  // impulse, a step is no more than this: those of the relevant nodes that have a rate reward and stand in their window
  // take it.
  std::vector<PerformanceVariableNode*> nodesThatTakeRates_;
  double quietFrom_ = -std::numeric_limits<double>::infinity();
  double quietUntil_ = -std::numeric_limits<double>::infinity();

  std::vector<BaseActionClass*> actionsWithRateData_;     // borrowed: those whose rate data this model allocated
  std::vector<BaseActionClass*> actionsWithImpulseData_;  // borrowed: those whose impulse data this model allocated
};
