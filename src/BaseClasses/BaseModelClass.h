#pragma once

#include <cstdint>
#include <forward_list>
#include <iosfwd>

#include "BaseClasses/List.h"

class BaseActionClass;
class BaseGroupClass;
class BaseStateVariableClass;
class SharedStateVarLink;
class State;

/// Actions of a model, latest push first.
using base_action_list_t = std::forward_list<BaseActionClass*>;

/// What the simulator runs: state variables, the actions that change them and the groups in which those are scheduled.
/// Fixes what the engine, the rewards and the trace sinks may ask of any model, and its state image: a flat run of
/// bytes that holds the whole marking.
/// Owns     its name. The arrays `ActionList` and `GroupList` belong to the class that allocates them, which frees them:
///          a reward model merely borrows those of the model that it wraps.
/// Order    Ids run from 1 in construction order over the whole process.
class BaseModelClass {
 public:
  enum ModelType {
    InvalidModel = 0,
    AtomicModel = 1,
    JoinModel = 2,
    RepModel = 3,
    GraphJoinModel = 4,
    GraphWrapperModel = 5
  };

  /// An empty, nameless model with the next Id.
  BaseModelClass();

  BaseModelClass(const BaseModelClass&) = delete;  // actions and parents keep the address of a model
  BaseModelClass& operator=(const BaseModelClass&) = delete;

  virtual ~BaseModelClass();

  virtual int getNumStateVariables();

  /// Appends every model of that name in the tree.
  virtual void listModels(const char* TheModelName, List<BaseModelClass>* TheModelList) = 0;

  /// Writes the image to the address, which has room for StateSize() bytes.
  virtual void CurrentState(void* MemoryLocation) = 0;

  /// Appends all actions.
  virtual void listActions(List<BaseActionClass>* TheActionList) = 0;

  /// Appends all groups. The engine takes them, in this order, for the entries that it schedules.
  virtual void listGroups(List<BaseGroupClass>* TheGroupList) = 0;

  /// Reads an image that CurrentState of this model wrote.
  virtual void SetState(void* TheState) = 0;

  /// Bytes of the image.
  virtual int StateSize() = 0;

  /// Whether two images are equal byte for byte.
  virtual bool CompareState(void* State1, void* State2) = 0;

  /// Appends the actions of that name.
  virtual void listActions(const char* TheActionName, List<BaseActionClass>* TheActionList) = 0;

  /// Appends each state variable of that name in a model of that name, and, to the other list, its model.
  virtual void listSVs(const char* TheModelName, const char* TheStateVariableName,
                       List<BaseStateVariableClass>* TheSVList, List<BaseModelClass>* TheModelList) = 0;

  virtual void printState(std::ostream* strm);
  /// The other printState, on standard output.
  virtual void printState();

  /// The array of local variables, which the model keeps, or null. The argument is not used.
  virtual BaseStateVariableClass** GetLocalStateVariables(std::ostream* strm);

  /// The array of variables held at a composed model, which the model keeps, or null.
  virtual BaseStateVariableClass** GetSharedStateVariables();

  /// The top-most known variable that is one with the given variable, or null.
  virtual BaseStateVariableClass* getMainSharedVariable(BaseStateVariableClass* TheVar);

  /// The variables that are one with a composed model's variable, or null.
  virtual SharedStateVarLink* getListOfSharedVariables(BaseStateVariableClass* TheVar);

  // Arcs. A null end is reported on standard error, with the model's and the action's names, and ends the process with
  // status 1.

  /// Tells the variable that the action may change it, and the action in turn.
  virtual void AddAffectArc(BaseStateVariableClass* TheSV, BaseActionClass* TheAction);

  /// Tells the variable that the action's enabling depends on it, and the action in turn.
  virtual void AddEnableArc(BaseStateVariableClass* TheSV, BaseActionClass* TheAction);

  // A model that is asked one of the following must offer it: here, each ends the process with a failed assertion.
  virtual ModelType GetModelType();
  virtual int GetNumberOfChildren();
  virtual BaseModelClass* GetChild(int ChildIndex);
  /// Pushes the actions that touch only this model's own state.
  virtual void GetLocalActions(base_action_list_t& actions);
  /// Pushes the actions that touch shared state.
  virtual void GetGlobalActions(base_action_list_t& actions);
  virtual bool HasLocalState();
  /// Saves this model's own state into a State that ConstructLocalState made.
  virtual void GetLocalState(State* TheState);
  /// Brings a saved state back.
  virtual void SetLocalState(const State* TheState);
  /// Makes a State of the right size; DestructLocalState destroys it.
  virtual void ConstructLocalState(State*& TheState);
  virtual void DestructLocalState(State* TheState);

  /// Keeps a copy of the text in place of the old name.
  void DefineName(const char* TheName);

  int getNumActions() { return NumActions; }
  int getNumSharedStateVariables() { return NumSharedStateVariables; }
  BaseActionClass** getActionList() { return ActionList; }
  BaseGroupClass** getGroupList() { return GroupList; }
  int getNumGroups() { return NumGroups; }
  const char* getName() { return Name; }
  int getId() { return Id; }
  int getParentId() { return ParentId; }
  void SetParentId(int TheParentId) { ParentId = TheParentId; }

  std::int32_t NumStateVariables = 0;        // all state variables of the model
  std::int32_t NumSharedStateVariables = 0;  // variables held at a composed model; 0 for an atomic one
  std::int32_t NumActions = 0;               // length of ActionList
  std::int32_t NumGroups = 0;                // length of GroupList
  BaseGroupClass** GroupList = nullptr;      // array of what the engine schedules; its owner: see above
  char* Name = nullptr;                      // owned
  std::int32_t Id = 0;                       // from 1
  std::int32_t ParentId = 0;                 // equal to Id until SetParentId
  std::int32_t NumPVs = 0;                   // 0: a reward model keeps its own count
  bool HoldsSharedVariables = true;          // false for an atomic model, which need not be asked for any

  static double LastActionTime;  // simulated time of the latest firing

 protected:
  BaseActionClass** ActionList = nullptr;  // array of all activities, those of children included; its owner: see above
};
