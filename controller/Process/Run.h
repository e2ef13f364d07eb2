#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace controller {

/// One run of a simulator, as it is asked for. Its binary result file is added by whoever starts it.
struct RunRequest {
  std::string program;  ///< an absolute path
  std::string digest;   ///< SHA-256 that the program must have; empty for any
  std::vector<std::string> arguments;
  double timeLimitSeconds = 0;                             ///< of wall time; 0 for none
  int cpuLimitSeconds = 0;                                 ///< of processor time; 0 for none
  std::int64_t greatestFileBytes = std::int64_t{1} << 30;  ///< of a file that the run writes; more ends it
  bool wantsTrace = false;  ///< whether the run writes a text trace with all states, to be brought along
};

/// How a run came to its end.
enum class RunEnd {
  Exited,      ///< by itself, with a status
  Killed,      ///< by a signal from elsewhere
  TimedOut,    ///< by us, behind its time limit
  NotStarted,  ///< the system refused to start it
  Replaced,    ///< not started, as the program is another one than expected
};

/// What became of a run. The words are kept up to a limit, their beginning and their end.
struct RunOutcome {
  RunEnd end = RunEnd::NotStarted;
  int number = 0;  ///< the exit status, the signal, or the error of the system
  std::vector<std::byte> resultFile;
  std::string trace;
  std::string out;
  std::string err;
  double wallSeconds = 0;
  double cpuSeconds = 0;
  std::string host;

  /// It came to its end by itself, with status 0.
  [[nodiscard]] bool isGood() const { return end == RunEnd::Exited && number == 0; }
};

/// The name of this machine.
[[nodiscard]] std::string hostName();

/// The command of a run, but for what is added to it: the program and its arguments.
[[nodiscard]] std::string commandOf(const RunRequest& request);

/// The end of a run in words, such as "was ended by signal 9 (Killed)".
[[nodiscard]] std::string describe(const RunOutcome& outcome);

/// What to put behind a fault: "; its last words:" and the last words of the simulator, which are those on standard error,
/// or else on standard output, without the lines that every run prints; cut to a few lines. `ifSilent` if there are none.
[[nodiscard]] std::string lastWordsClause(const RunOutcome& outcome, const std::string& ifSilent = "");

}  // namespace controller
