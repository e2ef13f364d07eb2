#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace support {

/// Notes which of some places in memory are read and written while it listens. Code that was compiled with the
/// instrumentation of ThreadSanitizer calls AccessHooks.cpp before each of its accesses, which hands them on to `note`:
/// so every access counts, through whatever pointer, accessor or reference it goes.
///
/// Listening  one log of the process at a time, on the simulation thread.
/// Limits     an access by code that is not instrumented is not seen, such as one of the C library's.
class AccessLog {
 public:
  /// Bytes from `begin` on.
  struct Range {
    std::uintptr_t begin;
    std::size_t bytes;
  };

  /// What became of one range since `start`.
  struct Access {
    std::size_t range;  ///< its index
    bool isRead;
    bool isWritten;
  };

  /// `ranges` do not overlap, and ascend.
  explicit AccessLog(std::vector<Range> ranges);
  ~AccessLog();

  AccessLog(const AccessLog&) = delete;
  AccessLog& operator=(const AccessLog&) = delete;

  /// Forgets what was noted and listens from now on.
  void start();
  /// Ends listening. The ranges that were accessed, each once, in the order of their first access; valid until `start`.
  std::span<const Access> stop();

  /// Hands an access of the running program to the log that listens, if one does.
  static void note(const volatile void* address, std::size_t bytes, bool isWrite) noexcept;

  /// The ranges accessed so far, all told: how far the program under watch is instrumented at all.
  [[nodiscard]] std::size_t seen() const { return seen_; }

 private:
  void enter(std::uintptr_t address, std::size_t bytes, bool isWrite) noexcept;

  std::vector<Range> ranges_;
  std::vector<Access> accesses_;      // room for all from the start: noting allocates nothing
  std::vector<std::size_t> entryOf_;  // by range: its place in accesses_, or kNone
  std::size_t seen_ = 0;

  static AccessLog* listening_;  // borrowed: the log that listens, or null
};

}  // namespace support
