#include <cstddef>
#include <cstring>

#include "ArcCheck/AccessLog.h"

// The functions that code compiled with -fsanitize=thread calls before each access to memory. They stand here in place of
// ThreadSanitizer's own, which is not linked: of its instrumentation only the accesses are wanted. What it would do apart
// from watching, such as atomic operations, is done here too.

#ifdef QUORVA_CHECK_ARCS

// The compiler fixes these names and types.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)

using support::AccessLog;

extern "C" {

void __tsan_init();
void __tsan_init() {}

void __tsan_func_entry(void* caller);
void __tsan_func_entry(void* /*caller*/) {}
void __tsan_func_exit();
void __tsan_func_exit() {}

// A change of an object's class, by its constructors and destructors, touches no mark.
void __tsan_vptr_read(void** pointer);
void __tsan_vptr_read(void** /*pointer*/) {}
void __tsan_vptr_update(void** pointer, void* value);
void __tsan_vptr_update(void** /*pointer*/, void* /*value*/) {}

#define QUORVA_HOOK(name, bytes, isWrite)     \
  void __tsan_##name(void* address);          \
  void __tsan_##name(void* address) {         \
    AccessLog::note(address, bytes, isWrite); \
  }
#define QUORVA_HOOKS(bytes)                        \
  QUORVA_HOOK(read##bytes, bytes, false)           \
  QUORVA_HOOK(write##bytes, bytes, true)           \
  QUORVA_HOOK(unaligned_read##bytes, bytes, false) \
  QUORVA_HOOK(unaligned_write##bytes, bytes, true) \
  QUORVA_HOOK(volatile_read##bytes, bytes, false)  \
  QUORVA_HOOK(volatile_write##bytes, bytes, true)

QUORVA_HOOKS(1)
QUORVA_HOOKS(2)
QUORVA_HOOKS(4)
QUORVA_HOOKS(8)
QUORVA_HOOKS(16)

#undef QUORVA_HOOKS
#undef QUORVA_HOOK

void __tsan_read_range(void* address, std::size_t bytes);
void __tsan_read_range(void* address, std::size_t bytes) {
  AccessLog::note(address, bytes, false);
}
void __tsan_write_range(void* address, std::size_t bytes);
void __tsan_write_range(void* address, std::size_t bytes) {
  AccessLog::note(address, bytes, true);
}

// Newer compilers call these in place of the C library's.
void* __tsan_memcpy(void* to, const void* from, std::size_t bytes);
void* __tsan_memcpy(void* to, const void* from, std::size_t bytes) {
  AccessLog::note(from, bytes, false);
  AccessLog::note(to, bytes, true);
  return std::memcpy(to, from, bytes);
}
void* __tsan_memmove(void* to, const void* from, std::size_t bytes);
void* __tsan_memmove(void* to, const void* from, std::size_t bytes) {
  AccessLog::note(from, bytes, false);
  AccessLog::note(to, bytes, true);
  return std::memmove(to, from, bytes);
}
void* __tsan_memset(void* to, int value, std::size_t bytes);
void* __tsan_memset(void* to, int value, std::size_t bytes) {
  AccessLog::note(to, bytes, true);
  return std::memset(to, value, bytes);
}

// Atomic operations, always in the strictest order. No mark is one, but the standard library has some, such as the
// counters of shared_ptr.

#define QUORVA_ATOMIC_UPDATE(bits, type, name, operation)                      \
  type __tsan_atomic##bits##_##name(volatile type* address, type value, int);  \
  type __tsan_atomic##bits##_##name(volatile type* address, type value, int) { \
    return operation(address, value, __ATOMIC_SEQ_CST);                        \
  }
#define QUORVA_ATOMICS(bits, type)                                                                                   \
  type __tsan_atomic##bits##_load(const volatile type* address, int);                                                \
  type __tsan_atomic##bits##_load(const volatile type* address, int) {                                               \
    return __atomic_load_n(address, __ATOMIC_SEQ_CST);                                                               \
  }                                                                                                                  \
  void __tsan_atomic##bits##_store(volatile type* address, type value, int);                                         \
  void __tsan_atomic##bits##_store(volatile type* address, type value, int) {                                        \
    __atomic_store_n(address, value, __ATOMIC_SEQ_CST);                                                              \
  }                                                                                                                  \
  int __tsan_atomic##bits##_compare_exchange_strong(volatile type* address, type* expected, type value, int, int);   \
  int __tsan_atomic##bits##_compare_exchange_strong(volatile type* address, type* expected, type value, int, int) {  \
    return __atomic_compare_exchange_n(address, expected, value, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST) ? 1 : 0; \
  }                                                                                                                  \
  int __tsan_atomic##bits##_compare_exchange_weak(volatile type* address, type* expected, type value, int, int);     \
  int __tsan_atomic##bits##_compare_exchange_weak(volatile type* address, type* expected, type value, int, int) {    \
    return __atomic_compare_exchange_n(address, expected, value, true, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST) ? 1 : 0;  \
  }                                                                                                                  \
  type __tsan_atomic##bits##_compare_exchange_val(volatile type* address, type expected, type value, int, int);      \
  type __tsan_atomic##bits##_compare_exchange_val(volatile type* address, type expected, type value, int, int) {     \
    __atomic_compare_exchange_n(address, &expected, value, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);               \
    return expected;                                                                                                 \
  }                                                                                                                  \
  QUORVA_ATOMIC_UPDATE(bits, type, exchange, __atomic_exchange_n)                                                    \
  QUORVA_ATOMIC_UPDATE(bits, type, fetch_add, __atomic_fetch_add)                                                    \
  QUORVA_ATOMIC_UPDATE(bits, type, fetch_sub, __atomic_fetch_sub)                                                    \
  QUORVA_ATOMIC_UPDATE(bits, type, fetch_and, __atomic_fetch_and)                                                    \
  QUORVA_ATOMIC_UPDATE(bits, type, fetch_or, __atomic_fetch_or)                                                      \
  QUORVA_ATOMIC_UPDATE(bits, type, fetch_xor, __atomic_fetch_xor)                                                    \
  QUORVA_ATOMIC_UPDATE(bits, type, fetch_nand, __atomic_fetch_nand)

QUORVA_ATOMICS(8, char)
QUORVA_ATOMICS(16, short)
QUORVA_ATOMICS(32, int)
QUORVA_ATOMICS(64, long)

#undef QUORVA_ATOMICS
#undef QUORVA_ATOMIC_UPDATE

void __tsan_atomic_thread_fence(int);
void __tsan_atomic_thread_fence(int) {
  __atomic_thread_fence(__ATOMIC_SEQ_CST);
}
void __tsan_atomic_signal_fence(int);
void __tsan_atomic_signal_fence(int) {
  __atomic_signal_fence(__ATOMIC_SEQ_CST);
}

}  // extern "C"

// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

#endif  // QUORVA_CHECK_ARCS
