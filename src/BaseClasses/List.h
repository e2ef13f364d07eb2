#pragma once

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <new>
#include <unordered_map>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/StandardErrors.h"

/// Growing array of pointers that refuses duplicates.
/// Order    of insertion, until remove() or replaceItem() moves the last item into a gap.
/// Owns     its array, none of its items.
/// Cost     getItem and operator[] are an indexed read. Whatever looks for an item searches a short list and looks into
///          an index of a longer one, which is built by the first such search.
/// Failure  a broken requirement ends the process through the assertion that names "../List".
template <class C>
class List {
 public:
  List() : List(kFirstCapacity) {}

  /// An empty list with room for `n` items, n >= 0.
  explicit List(int n) : TheList(allocateOrNull(n)) {
    if (TheList == nullptr) {
      MemoryAllocationError();
    }
    ArraySize = n;
  }

  ~List() {
    delete[] TheList;
    TheList = nullptr;
  }

  List(const List&) = delete;
  List& operator=(const List&) = delete;

  [[nodiscard]] int getNumItems() { return NumItems; }

  /// The array itself, borrowed by the caller until the next growth; its first getNumItems() entries are in use. It is
  /// for reading: items that are put there past the list are not found by it.
  [[nodiscard]] C** getList() { return TheList; }

  /// Adds `item` at the end unless it is there already. A full list doubles its capacity first, even for a duplicate.
  void append(C* item) {
    if (ArraySize <= NumItems) {
      require(ArraySize == NumItems);
      increaseArraySize(2 * ArraySize);
    }
    insertItem(item);
  }

  /// append() of each of the `n` items in order. `items` is not this list's own array.
  void append(C** items, int n) {
    for (int i = 0; i < n; ++i) {
      append(items[i]);
    }
  }

  /// append() of each item of `other` in order, with one growth at most: to twice the sum of both counts, if the sum
  /// exceeds the capacity, whether or not items turn out to be duplicates.
  void append(List<C>* other) {
    const std::int32_t added = other->NumItems;
    if (NumItems + added > ArraySize) {
      increaseArraySize(2 * (NumItems + added));
    }
    for (std::int32_t i = 0; i < added; ++i) {
      insertItem(other->TheList[i]);
    }
  }

  /// The item at `i`. Requires: 0 <= i < getNumItems(), and an item that is not null.
  [[nodiscard]] C* getItem(int i) {
    require(i >= 0);
    require(i < NumItems);
    require(NumItems >= 1);
    require(TheList != nullptr);
    require(TheList[i] != nullptr);
    return TheList[i];
  }

  /// The entry at `i`, unchecked.
  [[nodiscard]] C* operator[](int i) { return TheList[i]; }

  /// Forgets all items. The capacity and the entries of the array stay.
  void clearList() {
    NumItems = 0;
    positions_.reset();
  }

  /// Puts `replacement` in the place of `old`. When `replacement` is in the list elsewhere, the last item takes the
  /// place of `old` instead and the list becomes one shorter, so that no duplicate arises. Without `old` nothing
  /// happens.
  void replaceItem(C* old, C* replacement) {
    const std::int32_t oldPosition = indexOf(old);
    if (oldPosition == kNotFound || old == replacement) {
      return;
    }
    if (contains(replacement)) {
      removeAt(oldPosition);
    } else {
      TheList[oldPosition] = replacement;
      if (positions_ != nullptr) {
        positions_->erase(old);
        positions_->emplace(replacement, oldPosition);
      }
    }
  }

  [[nodiscard]] bool contains(C* item) { return indexOf(item) != kNotFound; }

  /// Takes `item` out, if it is there; the last item moves into its place.
  void remove(C* item) {
    const std::int32_t position = indexOf(item);
    if (position != kNotFound) {
      removeAt(position);
    }
  }

  /// One line for each item, with its index and address, on standard output.
  void printList() {
    if (NumItems == 0) {
      std::cout << "No items in the list" << std::endl;
    }
    for (std::int32_t i = 0; i < NumItems; ++i) {
      std::cout << '[' << i << "] " << static_cast<const void*>(TheList[i]) << std::endl;
    }
  }

 protected:
  C** TheList = nullptr;       // owned array; the items are borrowed
  std::int32_t NumItems = 0;   // entries in use
  std::int32_t ArraySize = 0;  // capacity of TheList

  /// Stores `item` behind the last one unless it is in the list. Requires: room for it.
  void insertItem(C* item) {
    if (contains(item)) {
      return;
    }
    require(NumItems <= ArraySize);
    TheList[NumItems] = item;
    if (positions_ != nullptr) {
      positions_->emplace(item, NumItems);
    }
    ++NumItems;
  }

  /// Moves the items to an array of `n` entries. Requires: n above the capacity.
  void increaseArraySize(int n) {
    require(n > ArraySize);
    C** const larger = allocateOrNull(n);
    if (larger == nullptr) {
      std::cerr << "!! Crtical error in List<C>::append(List*) do to insufficient memory...exiting" << std::endl;
      MemoryAllocationError();
    }
    ArraySize = n;
    for (std::int32_t i = 0; i < NumItems; ++i) {
      larger[i] = TheList[i];
    }
    delete[] TheList;
    TheList = larger;
  }

 private:
  static constexpr std::int32_t kFirstCapacity = 10;
  static constexpr std::int32_t kNotFound = -1;
  static constexpr std::int32_t kMostSearchedThrough = 64;  // items of a list that is still searched one by one

  using Positions = std::unordered_map<C*, std::int32_t>;

  static void require(bool condition, int line = __builtin_LINE()) { support::require(condition, "../List", line); }

  /// `n` null pointers, or null when there is no memory for them or n is negative. The process's new_handler is set
  /// aside meanwhile, as it would end the process before the list has had its own words.
  static C** allocateOrNull(std::int32_t n) {
    if (n < 0) {
      return nullptr;
    }
    const std::new_handler handler = std::set_new_handler(nullptr);
    C** const entries = new (std::nothrow) C* [static_cast<std::size_t>(n)] {};
    std::set_new_handler(handler);
    return entries;
  }

  /// Position of the first entry equal to `item`, or kNotFound.
  std::int32_t indexOf(C* item) {
    if (NumItems > kMostSearchedThrough) {
      return indexedPositionOf(item);
    }
    for (std::int32_t i = 0; i < NumItems; ++i) {
      if (TheList[i] == item) {
        return i;
      }
    }
    return kNotFound;
  }

  std::int32_t indexedPositionOf(C* item) {
    if (positions_ == nullptr) {
      positions_ = std::make_unique<Positions>();
      for (std::int32_t i = 0; i < NumItems; ++i) {
        positions_->emplace(TheList[i], i);
      }
    }
    const auto found = positions_->find(item);
    return found == positions_->end() ? kNotFound : found->second;
  }

  void removeAt(std::int32_t position) {
    C* const last = TheList[NumItems - 1];
    if (positions_ != nullptr) {
      positions_->erase(TheList[position]);
      if (position != NumItems - 1) {
        (*positions_)[last] = position;
      }
    }
    TheList[position] = last;
    --NumItems;
  }

  std::unique_ptr<Positions> positions_;  // by item, of a list that has been long; null until it is searched
};
