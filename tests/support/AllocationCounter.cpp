#include "support/AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t count = 0;
std::size_t bytes = 0;
std::size_t released = 0;

void* allocate(std::size_t size) {
  ++count;
  bytes += size;
  return std::malloc(size != 0 ? size : 1);
}

void* allocateOrThrow(std::size_t size) {
  if (void* const memory = allocate(size)) {
    return memory;
  }
  throw std::bad_alloc();
}

void release(void* memory) noexcept {
  released += memory == nullptr ? 0 : 1;
  std::free(memory);
}

}  // namespace

namespace support {

std::size_t allocations() {
  return count;
}

std::size_t allocatedBytes() {
  return bytes;
}

std::size_t liveAllocations() {
  return count - released;
}

}  // namespace support

// All forms, though the library's would call the first one: those of AddressSanitizer do not.

void* operator new(std::size_t size) {
  return allocateOrThrow(size);
}

void* operator new[](std::size_t size) {
  return allocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size);
}

void operator delete(void* memory) noexcept {
  release(memory);
}

void operator delete[](void* memory) noexcept {
  release(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  release(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  release(memory);
}
