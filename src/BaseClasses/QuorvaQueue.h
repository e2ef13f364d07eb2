#pragma once

#include <cstddef>
#include <cstdint>

#include "BaseClasses/QuorvaMutex.h"

/// Bounded first-in, first-out queue in a ring of a fixed size.
/// Order    elements leave in the order in which they came.
/// Owns     the ring and its mutex, nothing that an element points at.
/// Empty    Pop of an empty queue gives a value-initialised T, so that a null pointer cannot be an element.
/// Full     Push on a full queue drops the new element without a word; whoever must not lose one asks GetCount first.
/// Threads  any number: every operation holds the mutex from its first read to its last write.
/// Cost     O(1) for each operation, no allocation after construction.
///
/// All places of the ring are usable: _endWrap tells a full ring from an empty one where the two indices are equal.
template <typename T>
class QuorvaQueue {
 public:
  /// An empty queue for `size` elements, size >= 1.
  explicit QuorvaQueue(int size)
      : _data(new T[static_cast<std::size_t>(size)]()), _queueMaxSize(size), _mutex(new QuorvaMutex) {}
  QuorvaQueue(const QuorvaQueue&) = delete;
  QuorvaQueue& operator=(const QuorvaQueue&) = delete;
  ~QuorvaQueue() {
    delete _mutex;
    delete[] _data;
  }

  void Push(T item) {
    const support::MutexHolder holder(*_mutex);
    if (_queueFront == _queueEnd && _endWrap) {
      return;
    }
    _data[_queueEnd] = item;
    ++_queueEnd;
    if (_queueEnd >= _queueMaxSize) {
      _endWrap = true;
      _queueEnd = 0;
    }
  }

  [[nodiscard]] T Pop() {
    const support::MutexHolder holder(*_mutex);
    if (_queueFront == _queueEnd && !_endWrap) {
      return T{};
    }
    const T item = _data[_queueFront];
    ++_queueFront;
    if (_queueFront >= _queueMaxSize) {
      _endWrap = false;
      _queueFront = 0;
    }
    return item;
  }

  /// Elements in the queue, from 0 to its size.
  [[nodiscard]] int GetCount() {
    const support::MutexHolder holder(*_mutex);
    if (_queueEnd >= _queueFront && !_endWrap) {
      return _queueEnd - _queueFront;
    }
    return _queueEnd - _queueFront + _queueMaxSize;
  }

 protected:
  T* _data = nullptr;              // owned: the ring, _queueMaxSize places
  std::int32_t _queueMaxSize = 0;  // capacity
  std::int32_t _queueFront = 0;    // index of the next element to pop
  std::int32_t _queueEnd = 0;      // index of the next free place
  bool _endWrap = false;           // _queueEnd has wrapped round and _queueFront has not
  QuorvaMutex* _mutex = nullptr;   // owned
};
