#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include "Process/Run.h"

namespace controller {

/// The first and the last bytes of a text of any length.
class KeptText {
 public:
  void add(const char* bytes, std::size_t count);
  [[nodiscard]] std::string text() const;

 private:
  std::string head_;
  std::string tail_;
  bool hasGap_ = false;
};

/// A simulator that runs as a child, in a process group and a scratch folder of its own. It dies with the process that
/// started it, writes no core file, and no result file above a fixed size.
/// Owns     the child: the destructor ends and reaps it
class ChildProcess {
 public:
  /// Starts the run in `folder`, where its files go. A start that fails shows in the outcome alone.
  ChildProcess(const RunRequest& request, std::string folder);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  [[nodiscard]] int outDescriptor() const { return outFd_; }  ///< -1 once at its end
  [[nodiscard]] int errDescriptor() const { return errFd_; }
  /// Reads what has come on both outputs, without waiting.
  void readOutputs();
  /// Looks after the child: reaps it, sets a stopped one going again, ends it when its time is over. True once it has ended.
  bool hasEnded();
  /// Milliseconds until its time is over; a large number where it has all the time.
  [[nodiscard]] int millisecondsLeft() const;
  /// Everything about the run; called once, after its end.
  [[nodiscard]] RunOutcome outcome();

 private:
  using Clock = std::chrono::steady_clock;

  void start(const RunRequest& request);
  [[noreturn]] void becomeSimulator(const RunRequest& request, int outFd, int errFd, int reportFd, pid_t parent) const;
  void end();

  std::string folder_;
  bool wantsTrace_;
  double timeLimitSeconds_;
  Clock::time_point started_ = Clock::now();
  pid_t pid_ = -1;  // -1 once reaped
  int outFd_ = -1;
  int errFd_ = -1;
  KeptText out_;
  KeptText err_;
  bool timedOut_ = false;
  RunOutcome outcome_;
};

}  // namespace controller
