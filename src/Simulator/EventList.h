#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

#include "Simulator/Event.h"
#include "Simulator/EventEarlier.h"
#include "Simulator/EventEqual.h"

class PAddress;

/// Pending firings of one run, at most one for each group.
/// Order    time, then higher rank; among events that tie on both, a draw from TheDistribution weighted by Weight.
/// Owns     its records, made once in one block; a caller's Event is copied. Groups are borrowed from the model tree.
/// Requires every group handed in to have its EventPointer at a PAddress of its own. The list keeps the address of the
///          group's slot there, exact after every operation.
/// Cost     Insert, Remove and ModifyKey O(log n); Earliest O(1) without a tie, O(ties) with one. Nothing is allocated
///          after construction.
/// Source   binary heap, J. W. J. Williams, Algorithm 232, CACM 7(6), 1964. Where each event lies in the array decides
///          the order in which ties are weighed, so that the moves below are part of a run's result.
/// Layout   beside the array of records stand the times and the groups' PAddresses in the same order, so that a
///          comparison looks at no record and a move at no action. A caller that changes an exec_time tells so by
///          ModifyKey before anything else is asked.
class EventList {
 public:
  /// Room for `capacity` events: one more than the number of groups.
  explicit EventList(int capacity);
  ~EventList();

  EventList(const EventList&) = delete;
  EventList& operator=(const EventList&) = delete;

  /// Schedules a copy of `*e`. Its group must not be scheduled yet, and the list must not be full.
  void Insert(Event* e);

  /// Unschedules the event in `slot`, an address that Earliest gave or a PAddress holds. The group's place in the
  /// reactivation list is left as it is.
  void Remove(Event** slot);

  /// The same for the event of a group, by the group's PAddress.
  void Remove(void* address);

  /// Restores the order after the caller has changed the exec_time of the event in `slot`.
  void ModifyKey(Event** slot);

  /// Slot of the event to fire next, or null when nothing is pending. The event stays in the list.
  ///
  /// Draws exactly one number when there is a tie and none otherwise. When no tied group has a positive weight the
  /// choice falls, on purpose, on whatever slot an earlier tie left behind in the work array, even an empty one: tied
  /// activities must have a positive weight.
  [[nodiscard]] Event** Earliest();

  /// Unschedules every event and clears the whole PAddress of its group.
  void ClearEventList();

  /// One line for each event, in the order of the heap's array.
  void PrintList(std::ostream& out);

 private:
  friend class EventListProbe;  // the tests' view of the heap

  /// What a slot holds beside its record: its time, and the group's PAddress, which keeps the slot's address.
  struct Node {
    double time;
    PAddress* address;
  };

  /// 0 for a sound heap, else the first fault: 2i+1 or 2(i+1) for a left or right child earlier than its parent i,
  /// i+100000 for a wrong back pointer of slot i, the index of a filled slot beyond the events, or minus the heap index
  /// of a record that is also free (the root's being told apart from a sound heap by nothing).
  [[nodiscard]] int IsValid();

  /// Appends to Equalities slot `i` and, through chains of ties below it, every slot that ties with it, each event
  /// before those under it. An event that ties with the root can only hang below others that do.
  void FindEquals(int i);

  /// Of the events tied with the root, which FindEquals has listed, the slot of the one drawn.
  [[nodiscard]] Event** chooseAmongTies();

  // These walk with an event that is in no slot from the free slot `i` to the place that the order gives it, fill that
  // place and give its index. What lies on the way moves one slot on. A walk compares times alone, and hands over to its
  // other form at the first two that are equal.
  std::size_t BubbleDown(std::size_t i, Event* event, double time, PAddress* address);
  std::size_t BubbleUp(std::size_t i, Event* event, double time, PAddress* address);
  std::size_t bubbleDownAskingRanks(std::size_t i, Event* event, double time, PAddress* address);
  std::size_t bubbleUpAskingRanks(std::size_t i, Event* event, double time, PAddress* address);

  /// BubbleUp, and BubbleDown from a slot that it does not leave.
  void restoreOrder(std::size_t i, Event* event, double time, PAddress* address);
  void fill(std::size_t i, Event* event, double time, PAddress* address);
  [[nodiscard]] std::size_t indexOf(Event** slot) const { return static_cast<std::size_t>(slot - A); }
  /// Entries of the stack in FreeList.
  [[nodiscard]] std::size_t freeRecords() const { return FreeList.size() - end(); }
  [[nodiscard]] std::size_t end() const { return static_cast<std::size_t>(size); }

  // Storage, made once.
  std::vector<Event> records_;  // every record there is; A and FreeList point into it
  std::vector<Event*> slots_;
  std::vector<std::int32_t> ties_;
  // Beside A, slot by slot. At and beyond size stands a time that is no number, which no comparison finds equal to or
  // earlier than another, so that a missing child needs no test. Two children lie in one cache line.
  std::vector<Node> nodeStorage_;
  Node* nodes_;

  EventEarlier EvEarlier;
  EventEqual EvEqual;
  std::vector<Event*> FreeList;  // `capacity` long; its first capacity - size entries: stack of the records not in the
                                 // heap, whose front is the last of them
  std::int32_t capacity;         // length of A
  Event** A;                     // slots_: the heap; children of i at 2i+1 and 2i+2; null at and beyond size
  std::int32_t size = 0;         // events in the heap
  std::int32_t* Equalities;      // ties_: heap indices tied with the root; `capacity` long
  std::int32_t EqSize = 0;       // entries of Equalities in use; 0 between calls
};

inline Event** EventList::Earliest() {
  if (size == 0) {
    return nullptr;
  }
  // Without a tie between the root and a child there is none at all.
  if (nodes_[0].time != nodes_[1].time && nodes_[0].time != nodes_[2].time) [[likely]] {
    return &A[0];
  }
  return chooseAmongTies();
}
