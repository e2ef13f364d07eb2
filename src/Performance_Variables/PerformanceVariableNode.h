#pragma once

#include <unordered_map>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "Performance_Variables/PerformanceVariableWorker.h"
#include "Performance_Variables/RewardTypes.h"

class ActionModelPairClass;
class BaseModelClass;
class ImpulseNodeClass;
class ModelGroupClass;
class PerformanceVariableWorker;
class VarModelPairClass;

/// One performance variable at one time point: its window, what it depends on, its workers and its running totals.
///
/// A model derives one class for each variable. Its constructor points TheModelPtr at a field of its own, then calls
/// Initialize and the Add operations, in that order, within the counts given to Initialize. Its CreateWorkerList makes
/// the rate workers, such as
///
///   void CreateWorkerList() override { fillWorkerList<BusyWorker>(); }
///
/// which is short for WorkerList[i] = new BusyWorker for each i below NumberOfWorkers. A variable without rate reward
/// leaves it empty.
///
/// Order    Accumulate before each firing, with the time and the action of the previous one, so that a step sees the
///          constant state since that firing; EndAccumulate at a batch's end; the totals are valid from then, or from
///          acc_done, until Reset.
/// Owns     its names, its arrays and the rate workers in WorkerList, which the destructor deletes; a derived class may
///          delete them earlier or hold them as members. The prototype impulses are members of the derived class, and
///          each owns its impulse workers.
/// Units    times are simulated time; totals are in the variable's own reward unit.
/// Invariant `id` is the node's position in the reward model's PerformanceVariableList.
class PerformanceVariableNode {
 public:
  PerformanceVariableNode() = default;
  virtual ~PerformanceVariableNode();

  PerformanceVariableNode(const PerformanceVariableNode&) = delete;
  PerformanceVariableNode& operator=(const PerformanceVariableNode&) = delete;

  /// Fills WorkerList with NumberOfWorkers workers of NumberOfModelNames model slots each.
  virtual void CreateWorkerList() = 0;
  /// Back to the start of a batch: totals, workers and impulse workers to 0, state acc_later. The window of a
  /// steady_state variable slides on by its length.
  virtual void Reset();

  // Declarations, for the derived constructor.

  /// Takes the node's number and stores the variable's kind, name, time points and the window of `timeindex`. The last
  /// three arguments are upper bounds for the Add operations.
  void Initialize(const char* the_name, RewardType rewardtype, int numtimes, const double* startpts,
                  const double* stoppts, int timeindex, int number_of_impulses, int numModelsAffectingReward,
                  int number_of_variable_dependencies);
  /// Stores copies of the two arrays of `numtimes` entries.
  void InitializeTimeArrays(int numtimes, const double* startpts, const double* stoppts);
  /// The rate reward reads that state variable of the models of that name.
  void AddVariableDependency(const char* TheVarName, const char* TheModelName);
  /// The rate reward reads the models of that name; a name already listed changes nothing.
  void AddModelDependency(const char* TheName);
  /// The variable earns `TheImpulse` when that action of a model of that name fires. A later call with the same impulse
  /// puts its action in place of the earlier one.
  void AddImpulse(const char* TheActionName, const char* TheModelName, ImpulseNodeClass* TheImpulse);
  /// Puts the action of the impulse of that number.
  void AddImpulseActionDependency(const char* TheActionName, const char* TheModelName, int ImpulseNumber);
  /// The impulse reads the models of that name; a name already listed changes nothing, and an impulse without model
  /// slots takes no name. An impulse that was not added is reported on standard error and ends the process with
  /// status 0.
  void AddImpulseModelDependency(const char* TheModelName, ImpulseNodeClass* TheImpulse);

  /// True when the name stands in ModelNamesList.
  [[nodiscard]] bool IsDependentOnModel(const char* TheName) const;
  /// True when the name stands among the model names of that impulse.
  [[nodiscard]] bool IsDependentOnImpulseModel(const char* TheModelName, int ImpulseNumber) const;
  /// The number of the impulse, or -1 when it was not added.
  [[nodiscard]] int GetImpulseNumber(const ImpulseNodeClass* TheImpulse) const;

  // Reading.

  [[nodiscard]] RewardType GetRewardType() const { return PVRewardType; }
  [[nodiscard]] int GetNumTimePoints() const { return NumTimes; }
  [[nodiscard]] double GetStartTime(int index) const { return StartList[index]; }
  [[nodiscard]] double GetStopTime(int index) const { return StopList[index]; }

  /// Gives every worker and impulse worker that name with its numbers; the variable's own Name stays.
  void DefineName(const char* TheName);

  // Resolution against a model tree, driven by the reward model.

  /// Stores the top model, counts the workers and makes WorkerList.
  void FixReferences(BaseModelClass* TheModel);
  /// NumberOfWorkers: the product of the numbers of instances of the model names; 0 without names.
  void GetNumberOfWorkers();
  /// NumberOfImpulseWorkers and NumberOfImpulseActions of every impulse.
  void GetNumberOfImpulseWorkers();
  /// Gives each worker its combination of model instances: a mixed-radix count whose slowest digit is the first name.
  /// A name without instance is reported on standard error and ends the process with status 0.
  void CreateModelGroupList();
  /// Gives the workers their window, name, number and model instances.
  void FixWorkerList();
  /// Gives each impulse worker its combination of model instances, block by block over the instances that hold the
  /// impulse's action.
  ///
  /// On purpose: the count of instances starts anew in each block and does not wrap, so the workers of every block see
  /// the instances from the list's start. Past the last instance a worker keeps the one before it.
  void CreateImpulseModelGroupList();
  /// Has each prototype make its workers.
  void CreateImpulseWorkerLists();
  /// Gives the impulse workers their window, name, numbers, containing model and model instances.
  ///
  /// On purpose: the list of containing models is not emptied between impulses, so an impulse's blocks are cut by the
  /// number of the instances of its own and of all earlier impulses' models.
  void FixImpulseWorkerLists();
  /// Inserts into the action's AffectedRateWorkers every worker that depends on that model instance.
  void AddPVWorkersToAction(BaseActionClass* Action, const BaseModelClass* TheModel) const;

  // Run time.

  /// One step: the state was constant from `last_event_time`, when `LastAction` fired, to `new_time`. The step that
  /// crosses Stop is accumulated before the node closes; a step at exactly Stop leaves it open. Allocates nothing; two
  /// comparisons when the node is closed or its window lies ahead.
  void Accumulate(double new_time, double last_event_time, BaseActionClass* LastAction) {
    if (Accumulating == acc_done || new_time < Start) {
      return;
    }
    CommonAccumulate(new_time, last_event_time, LastAction);
    UpdateAccumulate(new_time);
  }
  /// The rate rewards of one step, for who knows that the node stands in its window and does not leave it in this step.
  /// Requires: at least one worker.
  void takeRateRewards(double next_time, double last_event_time) {
    PerformanceVariableWorker* const* const workers = WorkerList;
    PerformanceVariableWorker& first = *workers[0];
    first.Accumulate(next_time, last_event_time);
    double TReward = 0.0 + first.Reward;
    for (int worker = 1; worker < NumberOfWorkers; ++worker) {
      workers[worker]->Accumulate(next_time, last_event_time);
      TReward += workers[worker]->Reward;
    }
    if (PVRewardType != INSTANT_OF_TIME) {
      const double fraction = first.RewardFraction;
      TotalReward += fraction * TReward;
      TotalRewardSqr += TReward * TReward * fraction;
    }
  }
  /// The last step of a batch, whatever the node's Start; closes the node when finish_time + 1.0 exceeds Stop.
  void EndAccumulate(double finish_time, double last_event_time, BaseActionClass* LastAction);
  /// Closes the window, with its totals, when new_time has passed Stop; otherwise the node is inside its window.
  void UpdateAccumulate(double new_time) {
    if (new_time > Stop) {
      Accumulating = acc_done;
      TotalAccumulation();
    } else {
      Accumulating = acc_now;
    }
  }
  /// Adds to the totals what belongs to the window's close: the value at an instant, and the impulses.
  ///
  /// On purpose: the rate term of the second moment squares the sum over the workers, the impulse term sums the squares
  /// of the workers.
  void TotalAccumulation();
  /// True when the action, or an action that a sync action superposes, carries an impulse of this node. O(entries of
  /// its AffectedNodesByImpulseReward).
  [[nodiscard]] bool ImpulseAffectedBy(BaseActionClass* Action) const;
  /// The reward of the present state, with the impulses of `TheAction` in TotalImpulse, whatever was accumulated.
  void CurrentReward(BaseActionClass* TheAction);
  /// Counts this node as collected on every action that affects it, and clears the AffectedNodes of an action whose
  /// nodes have all been collected. Of a terminating node only.
  void UpdateDependencies();

  BaseModelClass** TheModelPtr = nullptr;  // borrowed: a field of the derived class that receives the top model; null
                                           // for a class that needs none
  char* Name = nullptr;                    // owned
  double TotalReward = 0.0;                // the batch's value
  double TotalRewardSqr = 0.0;             // the batch's value for the second moment
  double Start = -1.0;                     // the window
  double Stop = -1.0;
  int NumTimes = 0;              // length of the two time arrays
  double* StartList = nullptr;   // owned array, all time points of the variable
  double* StopList = nullptr;    // owned array
  double TotalImpulse = 0.0;     // impulse share of the last total
  double TotalImpulseSqr = 0.0;  // impulse share of the last total for the second moment
  double batchSize = 0.0;        // length of the window
  PVType Type = terminating;
  RewardType PVRewardType = INSTANT_OF_TIME;
  int Accumulating = acc_later;  // an AccumulationState
  int id = 0;                    // position in the reward model's list
  static int the_id;             // next free number
  int Trace = 0;
  BaseActionClass** ActionDependencies = nullptr;    // owned array; the actions that affect this node, borrowed
  int NumberOfActionDependencies = 0;                // entries of ActionDependencies
  ModelGroupClass* ModelList = nullptr;              // owned array, one for each worker
  int NumberOfWorkers = 0;                           // entries of ModelList and of WorkerList
  PerformanceVariableWorker** WorkerList = nullptr;  // owned array and owned entries
  VarModelPairClass* VarNamesList = nullptr;         // owned array
  int NumberOfVarNames = 0;                          // entries used
  int NumberOfImpulses = 0;                          // entries used of the arrays up to ImpulseModelList
  int* NumberOfImpulseModelNames = nullptr;          // owned array
  int* NumberOfImpulseWorkers = nullptr;             // owned array
  int* NumberOfImpulseActions = nullptr;             // owned array: instances of the model that holds the action
  ImpulseNodeClass** ImpulseNodeList = nullptr;      // owned array; the prototypes are members of the derived class
  ImpulseNodeClass*** ImpulseWorkersList = nullptr;  // owned array; the arrays in it belong to the prototypes
  ActionModelPairClass* ActionNamesList = nullptr;   // owned array: the action of each impulse
  char*** ImpulseModelNamesList = nullptr;           // owned, with its arrays and texts
  ModelGroupClass** ImpulseModelList = nullptr;      // owned, with its arrays: model instances of each impulse worker
  char** ModelNamesList = nullptr;                   // owned, with its texts: the models that the rate reward reads
  int NumberOfModelNames = 0;                        // entries used

 protected:
  /// Fills WorkerList with NumberOfWorkers workers of one class, each made with the same arguments.
  template <class Worker, typename... Arguments>
  void fillWorkerList(const Arguments&... arguments) {
    for (int worker = 0; worker < NumberOfWorkers; ++worker) {
      WorkerList[worker] = new Worker(arguments...);
    }
  }

 private:
  void CommonAccumulate(double next_time, double last_event_time, BaseActionClass* LastAction) {
    if (NumberOfWorkers > 0) {
      takeRateRewards(next_time, last_event_time);
    }
    if (!LastAction->EarnsNoImpulse) {
      takeImpulseRewards(next_time, last_event_time, LastAction);
    }
  }
  void takeImpulseRewards(double next_time, double last_event_time, BaseActionClass* LastAction);
  void fillImpulseModelGroups(int impulse);
  template <typename Visitor>
  void forEachImpulseWorker(Visitor visit) const;
  template <typename Visitor>
  void forEachAffectedImpulseWorker(const BaseActionClass& action, Visitor visit) const;

  BaseModelClass* topModel_ = nullptr;                                          // borrowed from the reward model
  std::unordered_map<const BaseModelClass*, std::vector<int>> workersOfModel_;  // those that depend on it, ascending
  int varNameCapacity_ = 0;                                                     // upper bounds given to Initialize
  int modelNameCapacity_ = 0;
  int impulseCapacity_ = 0;
};
