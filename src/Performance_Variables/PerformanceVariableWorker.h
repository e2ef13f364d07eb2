#pragma once

class BaseModelClass;
class PerformanceVariableNode;

/// The rate reward of a performance variable for one combination of instances of the models that it depends on.
/// Order    the node calls Accumulate at every step of its window, then reads Reward, and RewardFraction of its worker
///          0 alone; Reset comes between batches.
/// Owns     its name. A derived class owns TheModelPtr. The worker itself belongs to the node whose WorkerList it
///          stands in; one that is destroyed before the node takes itself out of that list.
class PerformanceVariableWorker {
 public:
  PerformanceVariableWorker() = default;
  virtual ~PerformanceVariableWorker();

  PerformanceVariableWorker(const PerformanceVariableWorker&) = delete;
  PerformanceVariableWorker& operator=(const PerformanceVariableWorker&) = delete;

  /// The reward rate of the present state: reward per unit of simulated time, or the value itself at an instant.
  virtual double Reward_Function() = 0;
  /// Leaves in Reward this worker's contribution for the step, in which the state was constant from `last_event_time`
  /// to `new_time`, and in RewardFraction the factor for it.
  virtual void Accumulate(double new_time, double last_event_time) = 0;
  /// Leaves the reward of the present state in Reward and RewardSqr. A worker that can be asked for it overrides this;
  /// the base complains on standard error.
  virtual void CurrentReward();
  /// Zeroes Reward and RewardSqr and nothing else.
  virtual void Reset();

  /// Stores a copy of the name and the worker's index in its node.
  void DefineName(const char* TheName, int TheNumber);

  BaseModelClass*** TheModelPtr = nullptr;  // owned by the derived class: one slot for each model name of the node;
                                            // each points at the field that receives the model instance
  int NumModels = 0;                        // slots of TheModelPtr, where the derived class counts them
  int lastQualification = 0;
  char* Name = nullptr;  // owned copy of the node's name
  int Trace = 0;
  int Number = -1;              // the worker's index in the node; -1 until named
  int id = -1;                  // the node's number; -1 until fixed
  double Reward = 0.0;          // the rate share of this worker in the latest step
  double RewardSqr = 0.0;       // its square
  double RewardFraction = 1.0;  // weight that the node applies to the sum of the workers' rewards
  double Start = 0.0;           // the node's window, copied when the workers are fixed
  double Stop = 0.0;

 private:
  friend class PerformanceVariableNode;
  PerformanceVariableWorker** listEntry_ = nullptr;  // borrowed from the node: the entry of WorkerList that holds this
};
