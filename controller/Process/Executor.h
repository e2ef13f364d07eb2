#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Process/Run.h"

namespace controller {

/// Runs simulators beside each other, here or elsewhere. Runs may end in any order.
class Executor {
 public:
  struct Finished {
    std::int64_t ticket = 0;
    RunOutcome outcome;
  };

  Executor() = default;
  Executor(const Executor&) = delete;
  Executor& operator=(const Executor&) = delete;
  virtual ~Executor() = default;

  /// Runs that go on at the same time.
  [[nodiscard]] virtual std::size_t capacity() const = 0;
  /// Runs under way.
  [[nodiscard]] virtual std::size_t running() const = 0;
  /// Starts a run under a ticket of the caller's. Requires: running() < capacity(), a ticket that is not in use.
  virtual void start(std::int64_t ticket, const RunRequest& request) = 0;
  /// Waits until a run has ended, a signal asks the program to stop, or the time is over; gives all runs that have ended.
  [[nodiscard]] virtual std::vector<Finished> wait(std::chrono::milliseconds longest) = 0;
  /// Ends a run; nothing more is heard of it. An unknown ticket is no fault.
  virtual void cancel(std::int64_t ticket) = 0;
};

}  // namespace controller
