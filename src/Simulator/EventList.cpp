#include "Simulator/EventList.h"

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <utility>

#include "Simulator/PAddress.h"
#include "Simulator/UserDistributions.h"

namespace {

/// What IsValid adds to the index of a slot whose group does not point back to it.
constexpr int kWrongBackPointer = 100000;

constexpr int parentOf(int i) {
  return (i - 1) >> 1;
}
constexpr int leftChildOf(int i) {
  return 2 * i + 1;
}

PAddress& addressOf(const Event* event) {
  return *static_cast<PAddress*>(event->action_ptr->EventPointer);
}

}  // namespace

EventList::EventList(int capacityWanted)
    : records_(static_cast<std::size_t>(capacityWanted)),
      slots_(records_.size(), nullptr),
      ties_(records_.size(), 0),
      capacity(capacityWanted),
      A(slots_.data()),
      Equalities(ties_.data()) {
  FreeList.reserve(records_.size());
  for (Event& record : records_) {
    FreeList.push_back(&record);
  }
}

EventList::~EventList() {
  ClearEventList();
}

void EventList::Insert(Event* e) {
  Event* const record = FreeList.back();
  FreeList.pop_back();
  *record = *e;
  const int last = size;
  A[last] = record;
  addressOf(record).event = &A[last];
  ++size;
  BubbleUp(last);
}

void EventList::Remove(Event** slot) {
  FreeList.push_back(*slot);
  const int i = indexOf(slot);
  addressOf(*slot).event = nullptr;
  --size;
  Event** const lastSlot = &A[size];
  PAddress& last = addressOf(*lastSlot);
  if (size == i) {
    *lastSlot = nullptr;
    last.event = nullptr;
    return;
  }
  *slot = *lastSlot;
  last.event = slot;
  *lastSlot = nullptr;
  restoreOrder(i);
}

void EventList::Remove(void* address) {
  Remove(static_cast<PAddress*>(address)->event);
}

void EventList::ModifyKey(Event** slot) {
  restoreOrder(indexOf(slot));
}

Event** EventList::Earliest() {
  if (size == 0) {
    return nullptr;
  }
  FindEquals(0);
  const int ties = EqSize;
  EqSize = 0;
  if (ties == 1) {
    return &A[0];
  }

  const auto weightOf = [this](int k) { return A[Equalities[k]]->action_ptr->Weight(); };
  double weightsum = 0.0;
  for (int k = 0; k < ties; ++k) {
    weightsum += weightOf(k);
  }
  const double temprnd = TheDistribution->RNG->rnd() * weightsum;
  double running = 0.0;
  int chosen = 0;
  while (chosen < ties) {
    running += weightOf(chosen);
    if (running > temprnd) {
      break;
    }
    ++chosen;
  }
  // On purpose: when no entry was chosen, this reads the entry behind the last tie, which an earlier tie has left
  // there.
  return &A[Equalities[chosen]];
}

void EventList::ClearEventList() {
  for (int i = 0; i < size; ++i) {
    Event*& slot = A[i];
    FreeList.push_back(slot);
    addressOf(slot).clear();
    slot = nullptr;
  }
  size = 0;
}

void EventList::PrintList(std::ostream& out) {
  out << "------------------Event List-----------------" << std::endl;
  for (int i = 0; i < size; ++i) {
    const Event& event = *A[i];
    out << '(' << event.action_ptr->ActionName << ") " << event.start_time << " --> " << event.exec_time << std::endl;
  }
  out << "---------------------------------------------" << std::endl << std::endl;
}

int EventList::IsValid() {
  const auto timeAt = [this](int i) { return A[i]->exec_time; };
  for (int i = 0; i < size; ++i) {
    const int left = leftChildOf(i);
    if (left < size && timeAt(i) > timeAt(left)) {
      return left;
    }
    if (left + 1 < size && timeAt(i) > timeAt(left + 1)) {
      return left + 1;
    }
    if (addressOf(A[i]).event != &A[i]) {
      return i + kWrongBackPointer;
    }
  }
  for (int i = size; i < capacity; ++i) {
    if (A[i] != nullptr) {
      return i;
    }
  }
  for (int i = 0; i < size; ++i) {
    if (std::find(FreeList.begin(), FreeList.end(), A[i]) != FreeList.end()) {
      return -i;
    }
  }
  return 0;
}

void EventList::FindEquals(int i) {
  Equalities[EqSize] = i;
  ++EqSize;
  const int left = leftChildOf(i);
  if (left >= size) {
    return;
  }
  const Event* const event = A[i];
  if (EvEqual(event, A[left])) {
    FindEquals(left);
  }
  if (left + 1 < size && EvEqual(event, A[left + 1])) {
    FindEquals(left + 1);
  }
}

void EventList::BubbleDown(int i) {
  for (int c = leftChildOf(i); c < size; c = leftChildOf(i)) {
    if (c + 1 < size && EvEarlier(A[c + 1], A[c])) {
      ++c;
    }
    if (!EvEarlier(A[c], A[i])) {
      return;
    }
    Swap(c, i);
    i = c;
  }
}

int EventList::BubbleUp(int i) {
  while (i > 0) {
    const int parent = parentOf(i);
    if (!EvEarlier(A[i], A[parent])) {
      break;
    }
    Swap(i, parent);
    i = parent;
  }
  return i;
}

void EventList::Swap(int i, int j) {
  Event*& first = A[i];
  Event*& second = A[j];
  std::swap(first, second);
  addressOf(first).event = &first;
  addressOf(second).event = &second;
}

void EventList::restoreOrder(int i) {
  if (BubbleUp(i) == i) {
    BubbleDown(i);
  }
}

int EventList::indexOf(Event** slot) const {
  return static_cast<int>(slot - A);
}
