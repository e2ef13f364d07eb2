#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>

#include "BaseClasses/Assertions.h"

/// Indexed min-heap: values of type T, each tied to an outside key, so that the value of a key is read and changed
/// without a search.
/// Order    smallest value at the root; equal values stay where they are.
/// Keys     whole numbers from 0, each inserted once.
/// Cost     Insert and ModifyKey O(log n), Earliest and getElement O(1).
/// Source   binary heap, J. W. J. Williams, Algorithm 232, CACM 7(6), 1964.
template <typename T>
class Heap {
 public:
  /// Room for `n` values with keys below n; both grow on demand.
  explicit Heap(int n)
      : capacity(n),
        A(makeArray<T>(n)),
        KeyPointers(makeArray<std::int32_t>(n)),
        InvKeyPointers(makeArray<std::int32_t>(n)),
        MaxIndex(n) {}

  ~Heap() {
    delete[] A;
    delete[] KeyPointers;
    delete[] InvKeyPointers;
  }

  Heap(const Heap&) = delete;
  Heap& operator=(const Heap&) = delete;

  /// Adds `value` for `key`, which must not be in the heap. Requires: key >= 0.
  void Insert(const T& value, int key) {
    const T copy = value;  // the argument may stand in an array that grows
    if (size == capacity) {
      const std::int32_t doubled = std::max(2 * capacity, 1);
      enlarge(A, capacity, doubled);
      enlarge(InvKeyPointers, capacity, doubled);
      capacity = doubled;
    }
    if (key >= MaxIndex) {
      std::int32_t doubled = std::max(2 * MaxIndex, 1);
      while (key >= doubled) {
        doubled *= 2;
      }
      enlarge(KeyPointers, MaxIndex, doubled);
      MaxIndex = doubled;
    }
    A[size] = copy;
    InvKeyPointers[size] = key;
    KeyPointers[key] = size;
    ++size;
    BubbleUp(size - 1);
  }

  /// Changes the value of `key`, which must be in the heap.
  void ModifyKey(int key, const T& value) {
    const std::int32_t i = KeyPointers[key];
    A[i] = value;
    if (BubbleUp(i) == i) {
      BubbleDown(i);
    }
  }

  /// Gives the smallest value and its key. Requires: a value in the heap.
  void Earliest(std::pair<T, int>& out) {
    support::requireRuntime(size > 0, "size > 0");
    out = {A[0], InvKeyPointers[0]};
  }

  /// The value of `key`, which must be in the heap.
  const T& getElement(int key) { return A[KeyPointers[key]]; }

 private:
  template <typename Entry>
  static Entry* makeArray(int count) {
    return new Entry[static_cast<std::size_t>(count)]{};
  }

  /// Puts an array of `newCount` entries in the place of `array`, with its `count` entries at the front and zeros
  /// behind.
  template <typename Entry>
  static void enlarge(Entry*& array, int count, int newCount) {
    Entry* const larger = makeArray<Entry>(newCount);
    std::copy_n(array, count, larger);
    delete[] array;
    array = larger;
  }

  /// Gives the final index.
  int BubbleUp(int i) {
    while (i > 0) {
      const int parent = (i - 1) / 2;
      if (!(A[i] < A[parent])) {
        break;
      }
      Swap(i, parent);
      i = parent;
    }
    return i;
  }

  void BubbleDown(int i) {
    for (int child = 2 * i + 1; child < size; child = 2 * i + 1) {
      if (child + 1 < size && A[child + 1] < A[child]) {
        ++child;
      }
      if (!(A[child] < A[i])) {
        return;
      }
      Swap(child, i);
      i = child;
    }
  }

  void Swap(int i, int j) {
    std::swap(A[i], A[j]);
    std::swap(InvKeyPointers[i], InvKeyPointers[j]);
    KeyPointers[InvKeyPointers[i]] = i;
    KeyPointers[InvKeyPointers[j]] = j;
  }

  std::int32_t capacity;         // length of A and InvKeyPointers
  T* A;                          // owned: the heap of values
  std::int32_t* KeyPointers;     // owned: from key to heap index
  std::int32_t* InvKeyPointers;  // owned: from heap index to key
  std::int32_t MaxIndex;         // length of KeyPointers
  std::int32_t size = 0;         // values in the heap
};
