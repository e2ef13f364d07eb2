#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "BaseClasses/List.h"

class BaseActionClass;

/// A named piece of a model's marking: place, extended place, array or struct.
/// Owns     its two texts and, while `Stored` is true, its two action lists; a variable that was joined to a leader
///          borrows the leader's lists.
/// Order    the action lists keep the order of insertion and drop repeats.
class BaseStateVariableClass {
 public:
  /// A variable named "default" with an empty prefix.
  BaseStateVariableClass();
  BaseStateVariableClass(const char* TheName, const char* ThePrefix);

  BaseStateVariableClass(const BaseStateVariableClass&) =
      delete;  // actions and composers keep the address of a variable
  BaseStateVariableClass& operator=(const BaseStateVariableClass&) = delete;

  virtual ~BaseStateVariableClass();

  /// Bytes that this variable takes in a state image.
  virtual int StateSize() = 0;
  /// Reads the value from its place in a state image, which need not be aligned.
  virtual void SetState(void* TheState) = 0;
  /// Writes the value to its place in a state image, which need not be aligned.
  virtual void CurrentState(void* TheState) = 0;

  virtual void printState(std::ostream* strm);
  /// The other printState, on standard output.
  virtual void printState();
  /// The value alone.
  virtual void printStateVal(std::ostream* strm);

  /// Makes `TheOtherSV` one variable with this one.
  virtual void share(BaseStateVariableClass* TheOtherSV) = 0;

  virtual void appendAffectingAction(BaseActionClass* TheAction);
  virtual void removeAffectingAction(BaseActionClass* TheAction);
  virtual void replaceAffectingAction(BaseActionClass* TheOld, BaseActionClass* TheNew);

  // A leaf hands itself to the action; a composite variable hands its elements on.
  virtual void addSelfAsEnablingSVToAction(BaseActionClass* TheAction);
  virtual void addSelfAsAffectedSVToAction(BaseActionClass* TheAction);
  virtual void removeSelfFromEnablingSVOfAction(BaseActionClass* TheAction);
  virtual void removeSelfFromAffectedSVOfAction(BaseActionClass* TheAction);

  /// A new list of the leaves below, of this variable alone if it is a leaf; the caller owns the list.
  virtual List<BaseStateVariableClass>* getLeafNodes();
  virtual int getNumLeafNodes();
  virtual bool isLeafNode();

  virtual void appendEnabledAction(BaseActionClass* TheAction);
  virtual void removeEnabledAction(BaseActionClass* TheAction);
  virtual void replaceEnabledAction(BaseActionClass* TheOld, BaseActionClass* TheNew);

  /// Keeps a copy of the text in place of the old one. Without memory for it a line is written to standard error, and
  /// the old text stays.
  void SetName(const char* TheName);
  void SetPrefix(const char* ThePrefix);
  const char* getName() { return StateVariableName; }

  /// Prefix, "." and name; the name alone if there is no prefix. Valid until the next call on this variable.
  const char* getFullyQualifiedName();

  bool getShared() { return Shared; }
  void setShared(bool IsShared) { Shared = IsShared; }
  bool getStored() { return Stored; }
  void setStored(bool IsStored) { Stored = IsStored; }
  bool getFunctionallyShared() { return FunctionallyShared; }
  void setFunctionallyShared(bool IsShared) { FunctionallyShared = IsShared; }
  int getSharingCount() { return SharingCount; }

  List<BaseActionClass>* getAffectingActions() { return SVAffectingActions; }
  List<BaseActionClass>* getEnabledActions() { return SVEnabledActions; }
  /// Put a leader's list in place. The old list is not freed: that is the business of sharing, which calls these.
  void setAffectingActions(List<BaseActionClass>* TheActions) { SVAffectingActions = TheActions; }
  void setEnabledActions(List<BaseActionClass>* TheActions) { SVEnabledActions = TheActions; }

  int getNumAffectingActions() { return SVAffectingActions->getNumItems(); }
  int getNumEnabledActions() { return SVEnabledActions->getNumItems(); }
  BaseActionClass* getAffectingAction(int TheIndex);
  BaseActionClass* getEnabledAction(int TheIndex);

  /// Append each action of the given list.
  void copyAffectingActions(List<BaseActionClass>* TheActions);
  void copyEnabledActions(List<BaseActionClass>* TheActions);

  void printAffectingActions();
  void printEnabledActions();

  char* StateVariableName = nullptr;  // owned; the name within the model

 protected:
  /// Ends the process with status 1 and a message if `other`, with which this variable is to be shared, is null.
  void requirePartner(const BaseStateVariableClass* other);

  /// The items as they stand now: sharing changes the lists that it goes through.
  static std::vector<BaseActionClass*> itemsOf(List<BaseActionClass>* list) {
    return {list->getList(), list->getList() + list->getNumItems()};
  }

  char* VariableNamePrefix =
      nullptr;          // owned; qualified name of the array or struct that holds this variable, or empty
  bool Shared = false;  // joined to another variable
  bool Stored = true;   // owns its value and lists; the value is part of the owner's state image
  bool FunctionallyShared = false;
  std::int32_t SharingCount = 0;                        // pointers registered on this variable's location
  List<BaseActionClass>* SVAffectingActions = nullptr;  // owned while Stored, otherwise borrowed from the leader
  List<BaseActionClass>* SVEnabledActions = nullptr;    // owned while Stored, otherwise borrowed from the leader

 private:
  std::string qualifiedName_;  // text handed out by getFullyQualifiedName
};
