#pragma once

#include <iostream>
#include <ostream>
#include <type_traits>
#include <vector>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/CellPool.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/List.h"
#include "BaseClasses/state/SharedPointer.h"
#include "BaseClasses/state/StateMemory.h"

/// A state variable with one scalar value in a heap cell, and a chain of every pointer in the program that caches the
/// address of that cell. Joining two variables keeps one cell, frees the other and rewrites every pointer on the
/// other's chain, so that an activity reads and writes a mark, shared or not, with a single indirection.
///
/// Stages   alone (Stored, its own Leader); leader of a ring (Stored, its chain holds the pointers of all members);
///          member (not Stored, Head null, cell and action lists borrowed from the leader). There is no way back.
/// Owns     the cell while Stored; the links of its chain always. A member frees none of the three, so that leader and
///          members may be destroyed in any order.
/// Needs    variables, and pointers given to Register, that outlive all sharing, which writes through the chain.
///
/// Cost     a mark is one load through a cached pointer; sharing walks the chain of the variable that is taken in, and
///          looks at the actions that use it.
///
/// Types    bool, char, double, float, int and short.
template <typename T>
class SharableSV : public BaseStateVariableClass {
 public:
  /// A zeroed cell, known as "default" until it is named; the chain holds this variable's own pointer.
  SharableSV() { registerMyself(); }

  ~SharableSV() override;

  SharableSV(const SharableSV&) = delete;  // pointers all over the model hold addresses inside
  SharableSV& operator=(const SharableSV&) = delete;

  /// Makes this variable and `other` one, whichever state the two are in, and swaps `other` for this variable's Leader
  /// in the lists of the actions that use it. Of two variables that are both Stored, this one leads and takes the value
  /// of `other`; in every other case the value of the ring that takes the other one in stays. Two variables that are
  /// one already stay as they are. A null `other` is reported and ends the process with status 1.
  void ShareWith(SharableSV<T>* other);

  /// Takes `other` and its chain into this variable, which is the Leader of `other` from then on. The variables that
  /// were registered with `other` before keep it as their Leader, though it is no longer stored. The two must not be
  /// one already.
  void Register(SharableSV<T>* other);

  /// Puts a pointer from outside at the front of the chain: it gets the present location and follows every later one.
  void Register(T** pointer);

  /// ShareWith, for a variable whose type is not known. Another type of variable ends the process.
  void share(BaseStateVariableClass* other) override;

  /// Bytes of the value. They are the same for a member: Stored says whether its owner counts them.
  int StateSize() override { return static_cast<int>(sizeof(T)); }

  /// Moves this variable's own pointer and every pointer on its chain to `location`.
  void setPointer(T* location);

  void SetState(void* image) override { readMemory2<T>(image, TheState); }
  void CurrentState(void* image) override { writeMemory<T>(*TheState, image); }

  using BaseStateVariableClass::printState;
  /// The name, " = ", the value and a line end.
  void printState(std::ostream* strm) override;
  /// The value alone. A char is printed as its number: a char mark is a small count or a code, and its characters below
  /// 32 would spoil a trace.
  void printStateVal(std::ostream* strm) override { printValue(*strm); }

  [[nodiscard]] T* getPointer() const { return TheState; }
  [[nodiscard]] SharableSV<T>* getLeader() const { return Leader; }
  void setLeader(SharableSV<T>* leader) { Leader = leader; }
  [[nodiscard]] SharedPointer<T>* getHead() const { return Head; }
  [[nodiscard]] T getState() const { return *TheState; }
  T& State() { return *TheState; }
  void setState(T value) { *TheState = value; }

  /// Enters the action in the list of every variable of the ring. Only on a variable that is its own Leader; on a
  /// member nothing happens.
  void appendAffectingAction(BaseActionClass* action) override;

 protected:
  /// Puts this variable's own pointer at the front of the chain.
  void registerMyself();
  /// Forgets the chain, whose links have gone to the leader.
  void setHeadToNull() { Head = nullptr; }

  T* TheState = support::CellPool<T>::make();  // owned while Stored, otherwise borrowed from the leader
  SharedPointer<T>* Head = nullptr;  // owned chain, newest pointer first; null on a variable registered with a leader
  SharableSV<T>* Leader = this;      // borrowed: the variable into which this one was registered; itself at first

 private:
  void addLink(T** pointer, BaseStateVariableClass* owner);
  void printChain();
  void printValue(std::ostream& strm) const;
};

template <typename T>
SharableSV<T>::~SharableSV() {
  if (Stored) {
    support::CellPool<T>::release(TheState);
  }
  while (Head != nullptr) {
    SharedPointer<T>* const next = Head->getNeighbor();
    delete Head;
    Head = next;
  }
}

template <typename T>
void SharableSV<T>::ShareWith(SharableSV<T>* other) {
  requirePartner(other);
  // Only the actions of the lists as they stand now can name `other`; the merged lists hold many more, and asking all of
  // them would make the building of a model of n replicas take the fourth power of n.
  const std::vector<BaseActionClass*> affecting = this->itemsOf(other->getAffectingActions());
  const std::vector<BaseActionClass*> enabled = this->itemsOf(other->getEnabledActions());
  if (other->TheState == TheState) {
    // One variable already. Registering it again would free the cell that both use.
  } else if (other->Stored && Stored) {
    Shared = true;
    setState(other->getState());
    Register(other);
  } else if (other->Stored) {
    Leader->Register(other);
  } else if (Stored) {
    other->Leader->Register(this);
  } else if (SharingCount > other->Leader->SharingCount) {
    Register(other->Leader);  // On purpose: this variable itself, and not its Leader, takes the other ring in.
  } else {
    other->Leader->Register(Leader);
  }

  if (other == Leader) {
    return;  // the actions of the ring name it already
  }
  for (BaseActionClass* const action : affecting) {
    action->replaceAffectedSV(other, Leader);
  }
  for (BaseActionClass* const action : enabled) {
    action->replaceEnablingSV(other, Leader);
  }
}

template <typename T>
void SharableSV<T>::Register(SharableSV<T>* other) {
  if (other->Stored) {
    support::CellPool<T>::release(other->TheState);
  }
  const bool otherOwnedLists = other->Stored;
  other->setLeader(this);
  other->setPointer(TheState);
  other->setShared(true);
  other->setStored(false);

  support::requireRuntime(SVAffectingActions != nullptr, "SVAffectingActions");
  support::requireRuntime(SVEnabledActions != nullptr, "SVEnabledActions");
  copyAffectingActions(other->getAffectingActions());
  copyEnabledActions(other->getEnabledActions());
  if (otherOwnedLists) {
    delete other->getAffectingActions();
    delete other->getEnabledActions();
  }
  other->setAffectingActions(SVAffectingActions);
  other->setEnabledActions(SVEnabledActions);

  SharedPointer<T>* const TheOtherPointer = other->getHead();
  support::requireRuntime(TheOtherPointer != nullptr, "TheOtherPointer->getHead()");
  SharedPointer<T>* last = nullptr;
  for (SharedPointer<T>* link = TheOtherPointer; link != nullptr; link = link->getNeighbor()) {
    if (BaseStateVariableClass* const owner = link->getOwner(); owner != nullptr) {
      owner->setAffectingActions(SVAffectingActions);
      owner->setEnabledActions(SVEnabledActions);
    }
    last = link;
  }
  last->setNeighbor(Head);
  Head = TheOtherPointer;
  SharingCount += other->getSharingCount();
  other->setHeadToNull();

  if (GlobalDebugLevel > 3) [[unlikely]] {
    printChain();
  }
}

template <typename T>
void SharableSV<T>::Register(T** pointer) {
  support::requireRuntime(TheState != nullptr, "TheState");
  *pointer = TheState;
  SharingCount++;
  addLink(pointer, nullptr);
}

template <typename T>
void SharableSV<T>::share(BaseStateVariableClass* other) {
  auto* const otherSV = dynamic_cast<SharableSV<T>*>(other);
  support::requireRuntime(otherSV != nullptr, "otherSV");
  ShareWith(otherSV);
}

template <typename T>
void SharableSV<T>::setPointer(T* location) {
  TheState = location;
  for (SharedPointer<T>* link = Head; link != nullptr; link = link->getNeighbor()) {
    link->changePointer(location);
  }
}

template <typename T>
void SharableSV<T>::printState(std::ostream* strm) {
  *strm << StateVariableName << " = ";
  printValue(*strm);
  *strm << '\n';
}

template <typename T>
void SharableSV<T>::appendAffectingAction(BaseActionClass* action) {
  if (Leader != this) {
    return;
  }
  for (SharedPointer<T>* link = Head; link != nullptr; link = link->getNeighbor()) {
    if (BaseStateVariableClass* const owner = link->getOwner(); owner != nullptr) {
      owner->BaseStateVariableClass::appendAffectingAction(action);
      support::debugLine(2, "Appended affecting action to");
    }
  }
}

template <typename T>
void SharableSV<T>::registerMyself() {
  SharingCount++;
  addLink(&TheState, this);
  SharedPointer<T>* const NextElement = Head;
  support::requireRuntime(NextElement->getOwner() != nullptr, "NextElement->getOwner()");
}

template <typename T>
void SharableSV<T>::addLink(T** pointer, BaseStateVariableClass* owner) {
  auto* const link = new SharedPointer<T>;
  link->setNeighbor(Head);
  link->setPointer(pointer);
  link->setOwner(owner);
  Head = link;
}

template <typename T>
void SharableSV<T>::printChain() {
  int elements = 0;
  for (SharedPointer<T>* link = Head; link != nullptr; link = link->getNeighbor()) {
    elements++;
  }
  support::debugLine(3, "Now ", StateVariableName, " has a head pointer = ", static_cast<const void*>(Head));
  support::debugLine(3, Leader->getName(), "  has ", SharingCount, " elements.");
  support::debugLine(3, StateVariableName, " really has ", elements);
  std::cout << StateVariableName << " Linked List Contains :\n";
  for (SharedPointer<T>* link = Head; link != nullptr; link = link->getNeighbor()) {
    std::cout << static_cast<const void*>(link->getPointer()) << '\n';
  }
  std::cout << std::flush;
}

template <typename T>
void SharableSV<T>::printValue(std::ostream& strm) const {
  if constexpr (std::is_same_v<T, char>) {
    strm << static_cast<int>(static_cast<signed char>(*TheState));
  } else {
    strm << *TheState;
  }
}
