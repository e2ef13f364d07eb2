#pragma once

class BaseModelClass;

/// An impulse reward of a performance variable: a value that is earned at the moment an action fires.
///
/// Objects of one concrete class play two parts. The prototype is a member of the variable's node: it stands in the
/// node's declarations, makes the workers and is never accumulated. A worker holds the value for one combination of
/// model instances; the node accumulates it, resets it between batches and never deletes it.
/// Owns     its name, and, as a prototype, the array that CreateImpulseWorkerList returned and the workers in it.
///
/// A concrete class
///  1. sets NumberOfModelDependencies in its constructor, allocates TheModelPtr with that many slots (its destructor
///     releases them) and points each slot at a field of its own that will receive a model instance;
///  2. returns the reward of one firing at time t from Impulse_Function(t);
///  3. allocates n workers of its own class in CreateImpulseWorkerList(n), and deletes them and the array in its
///     destructor.
/// A class that needs no model instance leaves NumberOfModelDependencies at 0; it then has one worker for each instance
/// of the model that holds its action.
class ImpulseNodeClass {
 public:
  ImpulseNodeClass() = default;
  virtual ~ImpulseNodeClass();

  ImpulseNodeClass(const ImpulseNodeClass&) = delete;
  ImpulseNodeClass& operator=(const ImpulseNodeClass&) = delete;

  /// Finishes the value at `doneTime`, the end of the batch. Reached only when the batch's end closes the node.
  virtual void completeAccumulation(double doneTime) = 0;
  /// The reward of one firing at the given time, read on the state after the firing.
  virtual double Impulse_Function(double) = 0;
  /// Takes the firing at `last_event_time`, in a step of the simulation at `new_time`.
  virtual void Accumulate(double new_time, double last_event_time) = 0;
  /// Sets Impulse to the reward of one firing in the present state.
  virtual void CurrentImpulse() = 0;
  /// Zeroes Impulse and ImpulseSqr.
  virtual void Reset() = 0;
  /// Makes that many workers; the object that made them keeps and deletes them.
  virtual ImpulseNodeClass** CreateImpulseWorkerList(int) = 0;

  /// Stores a copy of the name, the impulse's number in the node and the worker's number in the impulse.
  void DefineName(const char* TheName, int first, int second);

  static double min(double a, double b) { return b > a ? a : b; }
  static double max(double a, double b) { return a > b ? a : b; }

  BaseModelClass*** TheModelPtr = nullptr;    // owned by the concrete class: one slot for each model dependency
  BaseModelClass* ContainingModel = nullptr;  // borrowed from the model tree: holds the action of this worker
  char* Name = nullptr;                       // owned copy of the node's name
  int Trace = 0;
  int WorkerNumber = -1;              // index among the impulse's workers; -1 until named
  int ImpulseNumber = -1;             // index among the node's impulses; -1 until named
  int NumberOfModelDependencies = 0;  // length of TheModelPtr
  int id = -1;                        // the node's number; -1 until fixed
  double Impulse = 0.0;               // the value so far in this batch
  double ImpulseSqr = 0.0;            // read by the node's CurrentReward
  double ImpulseFraction = 0.0;       // for derived classes; nothing here uses it
  double Start = 0.0;                 // the node's window, copied when the workers are fixed
  double Stop = 0.0;
};
