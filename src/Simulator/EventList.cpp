#include "Simulator/EventList.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <ostream>

#include "Simulator/PAddress.h"
#include "Simulator/UserDistributions.h"

namespace {

/// What IsValid adds to the index of a slot whose group does not point back to it.
constexpr int kWrongBackPointer = 100000;

/// Children that the root of a heap of one event would have.
constexpr std::size_t kMissingChildren = 2;

/// The entry of `storage` from which on the root's grandchildren fill one cache line, and with them the four
/// grandchildren of any other; so the two children of any are never in two lines.
template <typename Node>
Node* alignedRoot(std::vector<Node>& storage) {
  constexpr std::size_t kFirstGrandchild = 3;
  Node* root = storage.data();
  while (reinterpret_cast<std::uintptr_t>(root + kFirstGrandchild) % support::kCacheLine != 0) {
    ++root;
  }
  return root;
}

PAddress& addressOf(const Event* event) {
  return *static_cast<PAddress*>(event->action_ptr->EventPointer);
}

}  // namespace

EventList::EventList(int capacityWanted)
    : records_(static_cast<std::size_t>(capacityWanted)),
      slots_(records_.size(), nullptr),
      ties_(records_.size(), 0),
      nodeStorage_(records_.size() + kMissingChildren + support::kCacheLine / sizeof(Node), Node{kNoTime, nullptr}),
      nodes_(alignedRoot(nodeStorage_)),
      capacity(capacityWanted),
      A(slots_.data()),
      Equalities(ties_.data()) {
  FreeList.reserve(records_.size());
  for (Event& record : records_) {
    FreeList.push_back(&record);
  }
  free_ = FreeList.data() + FreeList.size();
}

EventList::~EventList() {
  ClearEventList();
}

void EventList::removeInside(Event** slot) {
  removeAt(indexOf(slot));
}

void EventList::ModifyKey(Event** slot) {
  const std::size_t i = indexOf(slot);
  restoreOrder(i, *slot, (*slot)->exec_time, nodes_[i].address);
}

Event** EventList::chooseAmongTies() {
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
    *free_++ = A[i];
    A[i] = nullptr;
    nodes_[i].address->clear();
    nodes_[i].time = kNoTime;
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
    if (std::find(FreeList.data(), free_, A[i]) != free_) {
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
  const double time = nodes_[i].time;
  if (nodes_[left].time == time && EvEqual(event, A[left])) {
    FindEquals(left);
  }
  if (nodes_[left + 1].time == time && EvEqual(event, A[left + 1])) {
    FindEquals(left + 1);
  }
}

std::size_t EventList::bubbleDownAskingRanks(std::size_t i, Event* event, double time, PAddress* address) {
  for (std::size_t child = leftChildOf(i); child < end(); child = leftChildOf(i)) {
    if (child + 1 < end() && EvEarlier(A[child + 1], A[child])) {
      ++child;
    }
    if (!EvEarlier(A[child], event)) {
      break;
    }
    fill(i, A[child], nodes_[child].time, nodes_[child].address);
    i = child;
  }
  fill(i, event, time, address);
  return i;
}

std::size_t EventList::bubbleUpAskingRanks(std::size_t i, Event* event, double time, PAddress* address) {
  while (i > 0) {
    const std::size_t parent = parentOf(i);
    if (!EvEarlier(event, A[parent])) {
      break;
    }
    fill(i, A[parent], nodes_[parent].time, nodes_[parent].address);
    i = parent;
  }
  fill(i, event, time, address);
  return i;
}

// Not inlined: what it saves for its second walk would be saved by every Remove, most of which are of the root.
[[gnu::noinline]] void EventList::restoreOrder(std::size_t i, Event* event, double time, PAddress* address) {
  if (BubbleUp(i, event, time, address) == i) {
    BubbleDown(i, event, time, address);
  }
}
