#pragma once

class BaseStateVariableClass;

/// One link of the chain of a location: a pointer somewhere in the program that has to follow the location of a value
/// when the variable that holds it becomes one with another.
/// Owns     nothing. The leader of the ring owns the link; the pointer that it watches stays with whoever declared it.
template <typename T>
class SharedPointer {
 public:
  SharedPointer() = default;
  SharedPointer(const SharedPointer&) = delete;
  SharedPointer& operator=(const SharedPointer&) = delete;

  void setNeighbor(SharedPointer<T>* neighbor) { Next = neighbor; }
  [[nodiscard]] SharedPointer<T>* getNeighbor() const { return Next; }

  void setPointer(T** pointer) { TheSharedPointer = pointer; }
  [[nodiscard]] T** getPointer() const { return TheSharedPointer; }

  void setOwner(BaseStateVariableClass* owner) { Owner = owner; }
  [[nodiscard]] BaseStateVariableClass* getOwner() const { return Owner; }

  /// Lets the watched pointer point at `location`.
  void changePointer(T* location) { *TheSharedPointer = location; }

 private:
  T** TheSharedPointer = nullptr;           // borrowed: the address of the pointer that follows the location
  BaseStateVariableClass* Owner = nullptr;  // borrowed: the variable that holds that pointer; null for an activity's
  SharedPointer<T>* Next = nullptr;         // the next older link of the same chain, or null
};
