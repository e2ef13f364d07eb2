#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace support {

/// A program to run. `environment` is laid over the test's own: a variable without a value is taken away.
struct ProcessRequest {
  std::string program;
  std::vector<std::string> arguments;
  std::map<std::string, std::optional<std::string>> environment;
  std::string workingDirectory;  ///< empty for the test's own
  std::string input;             ///< all of standard input
  std::chrono::milliseconds timeout{60000};
};

/// What became of it.
struct ProcessResult {
  std::string out;                ///< standard output, byte for byte
  std::string err;                ///< standard error, byte for byte
  std::optional<int> exitStatus;  ///< when it ended by itself
  std::optional<int> signal;      ///< when a signal ended it, also when that was for the timeout
  bool timedOut = false;
};

/// Runs a program to its end or, after the timeout, to its death, and collects both of its output streams.
/// Failure  a program that cannot be started gives exit status 127 and the reason on `err`, as a shell does; a system
///          call that fails throws std::system_error.
[[nodiscard]] ProcessResult runProcess(const ProcessRequest& request);

/// The same for a program with arguments and nothing else.
[[nodiscard]] ProcessResult runProcess(const std::string& program, const std::vector<std::string>& arguments);

/// A program that runs beside the test, which may read from it and must end it.
/// Owns     the child: the destructor kills and reaps it.
class Process {
 public:
  explicit Process(const ProcessRequest& request);
  ~Process();

  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// Reads standard output until it holds `text` or the timeout is over; gives all that has come so far.
  [[nodiscard]] const std::string& readUntil(const std::string& text, std::chrono::milliseconds timeout);

  /// Waits for the end, or kills after the timeout, and gives all output since the start.
  [[nodiscard]] ProcessResult waitForEnd(std::chrono::milliseconds timeout);

  [[nodiscard]] int id() const { return pid_; }

 private:
  using Deadline = std::chrono::steady_clock::time_point;

  void start(const ProcessRequest& request);
  /// Moves what can be moved through the pipes, waiting up to the deadline for the first byte. False once all outputs
  /// are at their end or the deadline is over.
  bool pump(Deadline deadline);
  void reap(Deadline deadline);
  void writeInput();
  void closeAll();

  int pid_ = -1;
  int inFd_ = -1;
  int outFd_ = -1;
  int errFd_ = -1;
  std::string input_;
  bool reaped_ = false;
  ProcessResult result_;
};

}  // namespace support
