#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "BaseClasses/StandardErrors.h"

namespace support {

/// A copy of `text` made by new[], for the name fields that a class owns as plain buffers. Null gives null.
[[nodiscard]] inline char* copyOfText(const char* text) {
  if (text == nullptr) {
    return nullptr;
  }
  const std::size_t length = std::strlen(text) + 1;
  char* const copy = new char[length];
  std::memcpy(copy, text, length);
  return copy;
}

/// A copy of `text` made by malloc, for lists whose owner releases their entries with free, as those of a study.
[[nodiscard]] inline char* mallocCopyOfText(const char* text) {
  const std::size_t length = std::strlen(text) + 1;
  auto* const copy = static_cast<char*>(std::malloc(length));
  if (copy == nullptr) {
    MemoryAllocationError();
  }
  return static_cast<char*>(std::memcpy(copy, text, length));
}

/// Puts a copy of `text` in the place of `owned`, which is freed. `text` may be the old text itself, or a part of it.
inline void replaceText(char*& owned, const char* text) {
  char* const copy = copyOfText(text);
  delete[] owned;
  owned = copy;
}

}  // namespace support
