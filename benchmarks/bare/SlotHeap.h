#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace bare {

/// Times of slots 0 to n-1, at most one each, earliest first: an implicit heap of `kArity` children a node, and where
/// each slot lies in it. The children of a node begin at a multiple of their number, so that four share a cache line.
/// Cost     insert, remove and change O(log n); the earliest O(1). Nothing is allocated after construction.
/// Source   J. W. J. Williams, Algorithm 232, CACM 7(6), 1964; D. B. Johnson, Priority queues with update and finding
///          minimum spanning trees, 1975, for more than two children.
template <std::uint32_t kArity>
requires(kArity == 2 || kArity == 4) class SlotHeap {
 public:
  explicit SlotHeap(std::uint32_t slots)
      : positions_(slots, kNowhere), position_(positions_.data()), storage_(slots + 2 * kArity + kNodesOfLine) {
    void* start = storage_.data();
    std::size_t room = storage_.size() * sizeof(Node);
    std::align(kNodesOfLine * sizeof(Node), slots * sizeof(Node), start, room);
    node_ = static_cast<Node*>(start) + (kArity - 1);
  }

  [[nodiscard]] bool isEmpty() const { return size_ == 0; }
  [[nodiscard]] bool holds(std::uint32_t slot) const { return position_[slot] != kNowhere; }
  /// Of the earliest. The heap must not be empty.
  [[nodiscard]] std::uint32_t earliest() const { return node_[0].slot; }
  [[nodiscard]] double earliestTime() const { return node_[0].time; }

  void insert(std::uint32_t slot, double time) { rise(size_++, {time, slot}); }

  /// Puts `slot`, the earliest itself or one that is not held, in the place of the earliest, at a time not below its.
  void replaceEarliest(std::uint32_t slot, double time) {
    position_[node_[0].slot] = kNowhere;
    sink(0, {time, slot});
  }

  void remove(std::uint32_t slot) {
    const std::uint32_t gap = position_[slot];
    position_[slot] = kNowhere;
    const Node last = node_[--size_];
    if (gap == size_) {
      return;
    }
    if (gap > 0 && last.time < node_[(gap - 1) / kArity].time) {
      rise(gap, last);
    } else {
      sink(gap, last);
    }
  }

 private:
  struct Node {
    double time;
    std::uint32_t slot;
  };
  static constexpr std::size_t kNodesOfLine = 64 / sizeof(Node);
  static constexpr std::uint32_t kNowhere = ~std::uint32_t{0};

  void put(std::uint32_t at, Node node) {
    node_[at] = node;
    position_[node.slot] = at;
  }

  void rise(std::uint32_t at, Node node) {
    while (at > 0) {
      const std::uint32_t parent = (at - 1) / kArity;
      if (node_[parent].time <= node.time) {
        break;
      }
      put(at, node_[parent]);
      at = parent;
    }
    put(at, node);
  }

  void sink(std::uint32_t at, Node node) {
    for (std::uint32_t first = at * kArity + 1; first < size_; first = at * kArity + 1) {
      const std::uint32_t child = first + kArity <= size_ ? earliestOfAll(first) : earliestUpTo(first, size_);
      if (node_[child].time >= node.time) {
        break;
      }
      put(at, node_[child]);
      at = child;
    }
    put(at, node);
  }

  /// Of a node's children from `first` on, all there: without a branch on their times, which no processor can foretell.
  [[nodiscard]] std::uint32_t earliestOfAll(std::uint32_t first) const {
    if constexpr (kArity == 4) {
      return earlierOf(earlierOf(first, first + 1), earlierOf(first + 2, first + 3));
    } else {
      return earlierOf(first, first + 1);
    }
  }

  [[nodiscard]] std::uint32_t earlierOf(std::uint32_t i, std::uint32_t j) const {
    const std::uint32_t takesSecond = node_[j].time < node_[i].time ? 1 : 0;
    return i + (j - i) * takesSecond;
  }

  [[nodiscard]] std::uint32_t earliestUpTo(std::uint32_t first, std::uint32_t end) const {
    std::uint32_t best = first;
    for (std::uint32_t i = first + 1; i < end; ++i) {
      best = earlierOf(best, i);
    }
    return best;
  }

  std::vector<std::uint32_t> positions_;
  std::uint32_t* position_;  // into positions_: where each slot lies in the heap, or kNowhere
  std::vector<Node> storage_;
  Node* node_;  // into storage_, so that node_[1] lies at the start of a cache line when there are four children
  std::uint32_t size_ = 0;
};

}  // namespace bare
