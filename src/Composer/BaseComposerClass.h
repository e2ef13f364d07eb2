#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <ostream>
#include <span>
#include <vector>

#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/List.h"
#include "BaseClasses/PreselectGroup.h"
#include "BaseClasses/state/BaseArrayStateVariable.h"
#include "BaseClasses/state/BaseStructStateVariable.h"
#include "BaseClasses/state/SharableSV.h"
#include "Composer/SharedStateVarLink.h"

/// What Join and Rep have in common: a model that is made of child models and makes some of their state variables one.
/// It collects the children's actions and groups, holds the variables that are shared at this level, and knows which
/// variables below are the same variable. It acts during construction and when a state image is written or read; at
/// run time an activity reaches a shared mark without it.
///
/// Order    a concrete composer's constructor calls the constructor of Join or Rep, puts the children in ModelArray,
///          calls SetupActions, then for each shared name in order makes a variable, calls addSharedPtr, shares each
///          child's variable with it and calls addSharingInfo, and at last calls Setup of Join or Rep.
/// Owns     its arrays, names, and the links that it made itself; links attached from below are freed by their makers.
///          The concrete composer owns the children and the shared variables and deletes them in its destructor.
///          A concrete composer that puts an array of its own in ModelArray owns that array; the one made here is freed
///          here in any case.
class BaseComposerClass : public BaseModelClass {
 public:
  /// `names` holds `sharedCount` texts, which are copied; a null one ends the process. Without children the count of
  /// shared variables is 0. A negative count of children allocates nothing.
  BaseComposerClass(const char* name, int modelCount, int sharedCount, const char* const* names);
  ~BaseComposerClass() override;

  BaseComposerClass(const BaseComposerClass&) = delete;
  BaseComposerClass& operator=(const BaseComposerClass&) = delete;

  void listModels(const char* modelName, List<BaseModelClass>* models) override;
  void listActions(List<BaseActionClass>* actions) override;
  void listGroups(List<BaseGroupClass>* groups) override;
  /// Compares the bytes that the image had when the composer was finished, even if an enclosing composer has shared
  /// some of its variables away since.
  bool CompareState(void* first, void* second) override;
  void listActions(const char* actionName, List<BaseActionClass>* actions) override;
  /// Searches the children. Variables held at this level are not searched.
  void listSVs(const char* modelName, const char* variableName, List<BaseStateVariableClass>* variables,
               List<BaseModelClass>* models) override;
  using BaseModelClass::printState;
  void printState(std::ostream* strm) override;
  BaseStateVariableClass** GetSharedStateVariables() override;
  /// The shared variable of this composer, or else of one below, that stands for TheVar; null if there is none.
  BaseStateVariableClass* getMainSharedVariable(BaseStateVariableClass* TheVar) override;
  /// The variables that are the same as TheVar, a shared variable of this composer or one below; null for any other.
  SharedStateVarLink* getListOfSharedVariables(BaseStateVariableClass* TheVar) override;

  int GetNumberOfChildren() override;
  /// Whether any variable shared at this level is stored here, which is all the state that a composer has of its own.
  bool HasLocalState() override;
  void GetLocalState(State* state) override;
  void SetLocalState(const State* state) override;
  void DestructLocalState(State* state) override;

  [[nodiscard]] BaseModelClass** getModelArray() const { return ModelArray; }
  [[nodiscard]] int getNumModels() const { return NumModels; }

  /// Collects the children's actions and groups, and gives every activity below the index of its group in GroupList. As
  /// the outermost composer runs last, its indices stay.
  void SetupActions();

  /// Holds a variable at this level. Variables must come in the order of the names.
  void addSharedPtr(BaseStateVariableClass* Variable, const char* VarName);

  /// Records that oldVar, of the child `parent`, is now the same as newVar, of this composer.
  void addSharingInfo(BaseStateVariableClass* oldVar, BaseStateVariableClass* newVar, BaseModelClass* parent);

  /// Counts the state variables, each merged group once, and notes the present size of the image.
  void GeneralSetup();

  /// Bytes in the image of the variables held at this level.
  int SharedStateSize();

  /// Hash of a text: for each character, as a signed byte, the value so far is shifted left by 5 and the character
  /// added, in 32 bits; the result is the remainder by hash_size, which must not be 0.
  unsigned int Hash(const char* Key, int hash_size);

  void printAllSharedVariables();

  /// One name for the pointer to any kind of sharable variable.
  static BaseStructStateVariable* getSharableSVPointer(BaseStructStateVariable* variable) { return variable; }
  static BaseStructStateVariable* getSharableSVPointer(BaseStructStateVariable& variable) { return &variable; }
  static BaseArrayStateVariable* getSharableSVPointer(BaseArrayStateVariable* variable) { return variable; }
  static BaseArrayStateVariable* getSharableSVPointer(BaseArrayStateVariable& variable) { return &variable; }
  template <typename T>
  static SharableSV<T>* getSharableSVPointer(SharableSV<T>* variable) {
    return variable;
  }
  template <typename T>
  static SharableSV<T>* getSharableSVPointer(SharableSV<T>& variable) {
    return &variable;
  }

  BaseModelClass** ModelArray = nullptr;  // the children, borrowed from the concrete composer
  std::int32_t NumModels = 0;
  std::int32_t counter = 0;                            // loop index of concrete composers
  BaseStateVariableClass** SharedStatePtrs = nullptr;  // variables borrowed from the concrete composer
  SharedStateVarLink** SharedStateVarList = nullptr;   // by index, the first equivalent variable or null
  std::list<BaseStateVariableClass*>* ChildrenSharedSVList = nullptr;  // by index, the children's merged variables
  char** SharedStateNames = nullptr;                                   // owned texts
  std::uint32_t AddedSharedPtrs = 0;                                   // entries of SharedStatePtrs that are filled
  char* stateindex = nullptr;                                          // without use
  std::int32_t index = 0;                                              // loop index
  std::int32_t MyStateSize = 0;                                        // StateSize() at the end of GeneralSetup
  std::int32_t ObjectCounter = 0;                                      // scratch count

 protected:
  /// True if no child has state variables.
  [[nodiscard]] bool AllChildrenEmpty() const;

  [[nodiscard]] std::span<BaseModelClass* const> children() const;
  /// The variables added so far.
  [[nodiscard]] std::span<BaseStateVariableClass* const> sharedVariables() const;

  /// Notes the children that may hold shared variables of their own.
  void findComposedModels();

  PreselectGroup InstantaneousActions;  // takes part in construction alone; nothing is put in it

 private:
  /// Storage behind the public arrays, whose counts a concrete composer may lower.
  struct Storage;
  std::unique_ptr<Storage> storage_;
};
