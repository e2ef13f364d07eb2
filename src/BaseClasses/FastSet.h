#pragma once

#include <set>

#include "BaseClasses/Assertions.h"

/// Set of ints with two lives: built as an ordered set, and then frozen once into a plain array for the loops that read
/// it at every event.
///
/// Order    the values are ascending, each once, in both forms.
/// Owns     its ordered set or its array.
/// Forms    an operation called in the other form ends the process through the runtime's assertion. There is no way
///          back from the frozen form.
/// Cost     frozen: size() is a field read and operator[] an index; a frozen set without items holds no array.
class FastSet {
 public:
  /// The representation in use is told by is_vec_rep.
  union Representation {
    std::set<int>* set_rep;  // owned; building form
    struct {
      int* vec;  // owned array of `size` ints, null when there are none
      int size;
    } vec_rep;  // frozen form
  };

  static int number1;  // sets constructed so far in the process
  static int number2;  // sets frozen so far in the process

  bool is_vec_rep = false;
  Representation rep{};

  /// An empty set in the building form.
  FastSet();
  ~FastSet();
  FastSet(const FastSet&) = delete;
  FastSet& operator=(const FastSet&) = delete;

  /// Building form: adds `item`; true when it was new.
  bool insert(int item);
  /// Building form: true when `item` is in the set.
  bool find(int item);
  /// Building form: true when the set has no item.
  bool empty();
  /// Building form: freezes the set.
  void NoMoreModifications();

  /// Frozen form: number of items.
  int size() {
    support::requireRuntime(is_vec_rep, "is_vec_rep", "FastSet.cpp", 70);
    return rep.vec_rep.size;
  }
  /// Frozen form: the item at `index`, 0 <= index < size(); there is no check of the bounds.
  int& operator[](int index) {
    support::requireRuntime(is_vec_rep, "is_vec_rep", "FastSet.cpp", 65);
    return rep.vec_rep.vec[index];
  }

  /// Both forms: drops all items. A frozen set stays frozen, with a null array and size 0.
  void clear();
};
