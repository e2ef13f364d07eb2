#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace controller {

/// Status of the program at its end.
enum ExitStatus { kReached = 0, kFailed = 1, kWrongUsage = 2, kStoppedShort = 3 };
/// The status where a signal has stopped it.
[[nodiscard]] constexpr int statusOfSignal(int signal) {
  return 128 + signal;
}

/// The command line of `quorva run`, as it was given.
struct RunOptions {
  std::string simulator;
  std::string experiments = "all";
  std::vector<std::string> settings;
  std::string mode = "terminating";
  std::string precision = "1%";
  bool isAbsolute = false;
  double confidence = 0.95;
  std::int64_t leastBatches = 1000;
  std::int64_t greatestBatches = 0;
  std::string timeLimit;
  std::string unitTimeLimit;
  std::int64_t jobs = 0;  // 0 for as many as there are processors
  std::uint64_t seed = 1;
  std::string generator = "mersenne-twister";
  std::int64_t batchesPerUnit = 0;  // 0 for what is useful
  std::int64_t attempts = 5;
  std::string variables;
  std::int64_t warmUp = 0;
  std::int64_t together = 1;
  std::string out;
  std::string launcher;
  bool isQuiet = false;
};

struct ReportOptions {
  std::string folder;
  std::string output;
};

struct ExportOptions {
  std::string folder;
  std::string format = "csv";
  bool wantsObservations = false;
  std::string output;
};

struct RerunOptions {
  std::string folder;
  std::string simulator;
  std::string experiment;
  std::string units = "0";
};

struct StatusOptions {
  std::string folder;
};

/// Numbers as in "0,3-5": ascending, each once. Throws UsageError, which calls the text by `what`.
[[nodiscard]] std::vector<std::int64_t> readNumbers(const std::string& text, const std::string& what);
/// A share or a number: "1%" is 0.01. Throws UsageError.
[[nodiscard]] double readShare(const std::string& text);
/// Seconds: "90", "90s", "5m", "2h"; 0 for an empty text. Throws UsageError.
[[nodiscard]] double readSeconds(const std::string& text);

}  // namespace controller
