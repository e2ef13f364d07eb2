#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/CacheLine.h"
#include "Simulator/Event.h"
#include "Simulator/EventEarlier.h"
#include "Simulator/EventEqual.h"
#include "Simulator/PAddress.h"

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
  void Remove(void* address) { Remove(static_cast<PAddress*>(address)->event); }

  /// Restores the order after the caller has changed the exec_time of the event in `slot`.
  void ModifyKey(Event** slot);

  /// Slot of the event to fire next, or null when nothing is pending. The event stays in the list.
  ///
  /// Draws exactly one number when there is a tie and none otherwise. When no tied group has a positive weight the
  /// choice falls, on purpose, on whatever slot an earlier tie left behind in the work array, even an empty one: tied
  /// activities must have a positive weight.
  [[nodiscard]] Event** Earliest();

  /// The group at the root, the next to fire unless an earlier event comes: of a list so long that the group may lie in
  /// no near cache, otherwise null.
  [[nodiscard]] BaseActionClass* groupLikelyNext() const { return isLong() ? A[0]->action_ptr : nullptr; }

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

  template <typename Index>
  static constexpr Index leftChildOf(Index i) {
    return 2 * i + 1;
  }
  /// `i` is not the root.
  static constexpr std::size_t parentOf(std::size_t i) { return (i - 1) / 2; }

  // These walk with an event that is in no slot from the free slot `i` to the place that the order gives it, fill that
  // place and give its index. What lies on the way moves one slot on. A walk compares times alone, and hands over to its
  // other form at the first two that are equal.
  std::size_t BubbleDown(std::size_t i, Event* event, double time, PAddress* address);
  std::size_t BubbleUp(std::size_t i, Event* event, double time, PAddress* address);
  std::size_t bubbleDownAskingRanks(std::size_t i, Event* event, double time, PAddress* address);
  std::size_t bubbleUpAskingRanks(std::size_t i, Event* event, double time, PAddress* address);

  void removeAt(std::size_t i);
  /// Remove of an event that is not at the root.
  void removeInside(Event** slot);
  /// BubbleUp, and BubbleDown from a slot that it does not leave.
  void restoreOrder(std::size_t i, Event* event, double time, PAddress* address);
  void fill(std::size_t i, Event* event, double time, PAddress* address);
  [[nodiscard]] std::size_t indexOf(Event** slot) const { return static_cast<std::size_t>(slot - A); }
  [[nodiscard]] bool isLong() const { return size > kLong; }
  /// Asks the processor for what the next operations at the root will read: its group, and its children's records.
  void lookAhead() const {
    __builtin_prefetch(A[0]->action_ptr);
    __builtin_prefetch(A[1]);
    __builtin_prefetch(A[2]);
  }
  [[nodiscard]] std::size_t end() const { return static_cast<std::size_t>(size); }

  static constexpr std::int32_t kLong = 512;  // events above which a list is looked ahead in
  static constexpr std::size_t kFar = 16384;  // events above which a list lies in far caches
  static constexpr std::size_t kNodesOfALine = support::kCacheLine / sizeof(Node);
  static constexpr double kNoTime = std::numeric_limits<double>::quiet_NaN();

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
  std::vector<Event*> FreeList;  // `capacity` long; its entries before free_: stack of the records not in the heap,
                                 // whose front is the last of them
  Event** free_;                 // behind the front of FreeList
  std::int32_t capacity;         // length of A
  Event** A;                     // slots_: the heap; children of i at 2i+1 and 2i+2; null at and beyond size
  std::int32_t size = 0;         // events in the heap
  std::int32_t* Equalities;      // ties_: heap indices tied with the root; `capacity` long
  std::int32_t EqSize = 0;       // entries of Equalities in use; 0 between calls
};

inline void EventList::Insert(Event* e) {
  Event* const record = *--free_;
  const double time = e->exec_time;
  BaseActionClass* const group = e->action_ptr;
  record->exec_time = time;
  record->start_time = e->start_time;
  record->action_ptr = group;
  const std::size_t last = end();
  ++size;
  BubbleUp(last, record, time, static_cast<PAddress*>(group->EventPointer));
}

inline void EventList::Remove(Event** slot) {
  if (slot == A) [[likely]] {
    removeAt(0);
  } else {
    removeInside(slot);
  }
}

inline void EventList::removeAt(std::size_t i) {
  const std::size_t last = end() - 1;
  size = static_cast<std::int32_t>(last);
  nodes_[i].address->event = nullptr;
  *free_++ = A[i];
  Event* const event = A[last];
  const double time = nodes_[last].time;
  PAddress* const address = nodes_[last].address;
  A[last] = nullptr;
  nodes_[last].time = kNoTime;
  if (i == 0 && last != 0) {
    BubbleDown(0, event, time, address);
    if (isLong()) {
      lookAhead();
    }
  } else if (i != last) {
    restoreOrder(i, event, time, address);
  }
}

// The walks keep the arrays in local pointers: what they store might otherwise be one of this object's own pointers, as
// far as the compiler can tell, and each would be loaded anew for each slot. That no tie is settled in the first two
// leaves them without a call, and so all they use in registers. A node is copied half by half: read as a whole soon
// after its halves were written, it would have to wait for both to reach the cache.

inline std::size_t EventList::BubbleDown(std::size_t i, Event* event, double time, PAddress* address) {
  Event** const slots = A;
  Node* const nodes = nodes_;
  const std::size_t last = end();
  const int generations = last > kFar ? 2 : 1;
  for (std::size_t child = leftChildOf(i); child < last; child = leftChildOf(i)) {
    // What a coming comparison looks at, and may move: the first descendants of that generation and of its other half.
    const std::size_t ahead = ((child + 1) << generations) - 1;
    __builtin_prefetch(&nodes[ahead]);
    __builtin_prefetch(&nodes[ahead + kNodesOfALine]);
    __builtin_prefetch(&slots[ahead], 1);
    const double left = nodes[child].time;
    const double right = nodes[child + 1].time;
    if (left == right) [[unlikely]] {
      return bubbleDownAskingRanks(i, event, time, address);
    }
    child += static_cast<std::size_t>(right < left);
    const double childTime = right < left ? right : left;
    if (!(childTime < time)) {
      if (childTime == time) [[unlikely]] {
        return bubbleDownAskingRanks(i, event, time, address);
      }
      break;
    }
    slots[i] = slots[child];
    nodes[i].time = childTime;
    nodes[i].address = nodes[child].address;
    nodes[i].address->event = &slots[i];
    i = child;
  }
  fill(i, event, time, address);
  return i;
}

inline std::size_t EventList::BubbleUp(std::size_t i, Event* event, double time, PAddress* address) {
  Event** const slots = A;
  Node* const nodes = nodes_;
  while (i > 0) {
    const std::size_t parent = parentOf(i);
    const double parentTime = nodes[parent].time;
    if (!(time < parentTime)) {
      if (parentTime == time) [[unlikely]] {
        return bubbleUpAskingRanks(i, event, time, address);
      }
      break;
    }
    slots[i] = slots[parent];
    nodes[i].time = parentTime;
    nodes[i].address = nodes[parent].address;
    nodes[i].address->event = &slots[i];
    i = parent;
  }
  fill(i, event, time, address);
  return i;
}

inline void EventList::fill(std::size_t i, Event* event, double time, PAddress* address) {
  A[i] = event;
  nodes_[i].time = time;
  nodes_[i].address = address;
  address->event = &A[i];
}

inline Event** EventList::Earliest() {
  if (size == 0) [[unlikely]] {
    return nullptr;
  }
  // Without a tie between the root and a child there is none at all.
  if (nodes_[0].time != nodes_[1].time && nodes_[0].time != nodes_[2].time) [[likely]] {
    return A;
  }
  return chooseAmongTies();
}
