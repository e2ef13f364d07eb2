#pragma once

#include <cstdint>
#include <iosfwd>

#include "BaseClasses/ActionAffectsElement.h"
#include "BaseClasses/FastSet.h"
#include "BaseClasses/List.h"

class BaseStateVariableClass;

/// Distribution of an action's firing delay. The values are printed as numbers.
enum Distribution {
  Proprietary = 0,
  Exponential = 1,
  Deterministic = 2,
  Geometric = 3,
  Weibull = 4,
  Normal = 5,
  Lognormal = 6,
  Erlang = 7,
  Triangular = 8,
  Gamma = 9,
  Beta = 10,
  Uniform = 11,
  Binomial = 12,
  NegativeBinomial = 13,
  HyperExponential = 14,
  ConditionalWeibull = 15,
  HypoExponential = 16,
  Pareto = 17,
  Instantaneous = 18
};

/// How an action behaves in the race between enabled actions. The values are printed as numbers.
enum ExecutionPolicyType { RaceResampling = 0, RaceEnabled = 1, RaceAge = 2 };

/// What the engine schedules, fires and cancels: a timed or instantaneous activity, or a group that stands for several.
/// Everything that depends on the model is virtual and has a neutral default, so that a bare BaseActionClass is an
/// action that is never enabled and fires nothing.
/// Order    IDs run from 0 in construction order over the whole process and are never reused.
/// Owns     its name, its two lists and its three embedded FastSets; not the state variables in the lists, nor the
///          chain `Affects`, nor the model. The reward data are allocated and freed by the reward model's calls.
/// Units    delays in simulated time; weights and probabilities without a unit.
class BaseActionClass {
 public:
  /// An action named "default", with the next free ID.
  BaseActionClass();

  /// Names and initialises the action; see BaseActionClassInitialize for the parameters.
  BaseActionClass(const char* TheName, int GroupIDNum, Distribution DistType, ExecutionPolicyType ExPolicy, int ASV,
                  int ESV, bool TheReactivation);

  BaseActionClass(const BaseActionClass&) = delete;  // engine, models and lists keep the address of an action
  BaseActionClass& operator=(const BaseActionClass&) = delete;

  /// Leaves the reward data, `Affects` and `EventPointer` alone.
  virtual ~BaseActionClass();

  /// Whether this is a BaseSyncActionClass. Asked by the reward model alone.
  virtual bool isSync();

  /// Whether the action may fire in the current marking. May have side effects, so the number of calls matters.
  virtual bool Enabled();

  /// Weight of this action in a choice among actions of equal rank.
  virtual double Weight();

  virtual double Rate();

  /// Asked just after the action was scheduled: true puts it on the engine's reactivation list.
  virtual bool ReactivationPredicate();

  /// Asked for a watched action: true means that the scheduled firing time is no longer valid.
  virtual bool ReactivationFunction();

  /// Delay from now to the firing. Each call may draw random numbers.
  virtual double SampleDistribution();

  /// Parameters of the distribution, or null; the action keeps the array.
  virtual double* ReturnDistributionParameters();

  /// Stores in `Fired` whether `HasFired` is non-zero.
  virtual void SetFired(int HasFired);

  /// Changes the marking and returns the action that really fired, which for a group is a member. The caller goes on
  /// with the `Affects` chain of the result.
  virtual BaseActionClass* Fire();

  /// Priority: among enabled members of a group, and among simultaneous events, the highest rank wins.
  virtual int Rank();

  /// Whether the enabling differs from that at the last call of Enabled.
  virtual bool EnablingChange();

  virtual bool IsAMember(BaseActionClass* TheAction);

  /// Chance that `TheAction` is chosen when this action fires.
  virtual double Probability(BaseActionClass* TheAction);

  /// printState of each affected variable, in list order.
  virtual void printAffectedState(std::ostream* strm);

  /// printState of each enabling variable, in list order.
  virtual void printEnablingState(std::ostream* strm);

  /// The action that a trace shows for this one.
  virtual BaseActionClass* getPrintedAction();

  /// Number of phases of an action with several stages.
  virtual double ErlangParamM();

  /// Renames the action and stores the four values. `ASV` and `ESV`, the numbers of affected and enabling variables
  /// that a model's generator counted, are ignored: the arcs fill the lists.
  void BaseActionClassInitialize(const char* TheName, int GroupIDNum, Distribution DistType,
                                 ExecutionPolicyType ExPolicy, int ASV, int ESV, bool TheReactivation);

  /// Keeps a copy of `TheName` in place of the old name.
  void defineName(const char* TheName);

  /// Records a variable on which Enabled depends: a leaf itself, of a composite variable each leaf. Repeats are
  /// dropped.
  void addEnablingSV(BaseStateVariableClass* TheSV);
  /// Records a variable that a firing may change, in the same way.
  void addAffectedSV(BaseStateVariableClass* TheSV);
  void removeEnablingSV(BaseStateVariableClass* TheSV);
  void removeAffectedSV(BaseStateVariableClass* TheSV);
  /// Puts `TheNew` in the place of `TheOld`, as sharing does when a leader stands in for a variable.
  void replaceEnablingSV(BaseStateVariableClass* TheOld, BaseStateVariableClass* TheNew);
  void replaceAffectedSV(BaseStateVariableClass* TheOld, BaseStateVariableClass* TheNew);

  int getNumEnablingSVs() { return EnablingStateVariables.getNumItems(); }
  BaseStateVariableClass* getEnablingSV(int TheIndex) { return EnablingStateVariables.getItem(TheIndex); }
  int getNumAffectedSVs() { return AffectedStateVariables.getNumItems(); }
  BaseStateVariableClass* getAffectedSV(int TheIndex) { return AffectedStateVariables.getItem(TheIndex); }

  /// Whether the reward data were asked for. Not to be called once they were freed again: the pointers keep their
  /// values.
  bool IsPVRateDSAllocated() { return AffectedRateWorkers != nullptr; }
  bool IsPVImpulseDSAllocated() { return AffectedImpulseRewards != nullptr; }
  /// One empty set for each of `NumPVs` performance variables.
  void AllocatePVRateDS(int NumPVs);
  /// One empty set and two null arrays for each of `NumPVs` performance variables.
  void AllocatePVImpulseDS(int NumPVs);
  /// Frees what AllocatePVRateDS made; the pointer keeps its old value, so there is no second call.
  void DeallocatePVRateDS();
  /// Frees what AllocatePVImpulseDS made, in the same way. The inner arrays are the reward model's, which frees them
  /// first.
  void DeallocatePVImpulseDS();

  void ResetPhase() { phase = 1; }
  /// Goes on to the next phase; past the largest 16-bit number the count wraps.
  void Age() { phase = static_cast<std::int16_t>(phase + 1); }
  /// Whether the action stands in its last phase. Exact comparison: a number of phases with a fraction is never
  /// reached.
  bool ReadyToFire() { return static_cast<double>(phase) == ErlangParamM(); }

  int getID() { return ID; }
  /// One more than the largest ID of the process.
  int getMaxID() { return MaxID; }
  int getGroupId() { return GroupID; }
  void setGroupID(int TheNewID) { GroupID = TheNewID; }

  /// Writes name, variables and settings to standard output.
  void PrintInfo();

  // What an event step reads comes first, so that it lies in one cache line with the pointer to the virtual table.
  ActionAffectsElement* Affects = nullptr;  // borrowed from the connectivity list's builder, which frees it
  void* EventPointer = nullptr;             // borrowed from the event list: its PAddress for this action
  bool Reactivation = false;                // run-time flag: stands on the engine's reactivation list
  bool EarnsNoImpulse = false;              // set by the reward model once no impulse reward can come of a firing
  bool Disabled = true;                     // written by the group's choice: not selectable
  bool Fired = false;
  std::int32_t GroupID = 0;  // index of the top-level group in the top model's group list
  ExecutionPolicyType ExecutionPolicy = RaceEnabled;
  Distribution DistributionType = Exponential;
  char* ActionName = nullptr;  // owned
  double FractionComplete = 0.0;
  void* TheModel = nullptr;                   // borrowed: the BaseModelClass that holds the action
  FastSet AffectedNodesByImpulseReward;       // performance variables with an impulse on this action
  FastSet* AffectedImpulseRewards = nullptr;  // owned array between the Allocate and Deallocate calls
  int*** AffectedImpulseWorkers = nullptr;    // owned array likewise; what it points to is the reward model's
  int** NumAffectedImpulseWorkers = nullptr;  // owned array likewise; what it points to is the reward model's
  FastSet* AffectedRateWorkers = nullptr;     // owned array between the Allocate and Deallocate calls
  std::int32_t TotalNumCollected = 0;
  FastSet AffectedNodes;              // performance variables affected by this action
  FastSet AffectedNodesByRateReward;  // performance variables with a rate reward affected by this action
  std::int16_t phase = 1;

  static std::int32_t MaxID;  // the next free ID

 protected:
  std::int32_t ID;
  List<BaseStateVariableClass> AffectedStateVariables;  // leaf variables that a firing may change
  List<BaseStateVariableClass> EnablingStateVariables;  // leaf variables on which Enabled depends
};
