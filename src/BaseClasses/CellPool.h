#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "BaseClasses/Sanitizers.h"

namespace support {

/// Makes small objects of one type side by side, where new would put each into 32 bytes of its own: what many firings
/// read lies in few cache lines.
/// Owns     its blocks, for as long as the process lives, as objects may be destroyed after any static one. A cell that
///          was released is the next to be made.
/// Threads  one.
/// Under AddressSanitizer each object is made by new, so that one that is gone, or the place beside one, is told from it.
template <typename T>
class CellPool {
 public:
  template <typename... Arguments>
  [[nodiscard]] static T* make(Arguments&&... arguments) {
    if constexpr (kUnderAddressSanitizer) {
      return new T{std::forward<Arguments>(arguments)...};
    } else {
      return ::new (static_cast<void*>(instance().take())) T{std::forward<Arguments>(arguments)...};
    }
  }

  /// `cell` is one that make gave, or null.
  static void release(T* cell) {
    if constexpr (kUnderAddressSanitizer) {
      delete cell;
    } else if (cell != nullptr) {
      std::destroy_at(cell);
      instance().free_.push_back(cell);
    }
  }

 private:
  static constexpr std::size_t kBlockBytes = 4096;
  static constexpr std::size_t kCellsOfABlock = kBlockBytes / sizeof(T);

  static CellPool& instance() {
    static auto* const pool = new CellPool;
    return *pool;
  }

  T* take() {
    if (!free_.empty()) {
      T* const cell = free_.back();
      free_.pop_back();
      return cell;
    }
    if (used_ == kCellsOfABlock) {
      block_ = std::allocator<T>().allocate(kCellsOfABlock);
      used_ = 0;
    }
    return block_ + used_++;
  }

  T* block_ = nullptr;                 // the block that cells are taken from
  std::size_t used_ = kCellsOfABlock;  // its cells that were taken
  std::vector<T*> free_;               // cells that were released, of any block
};

}  // namespace support
