#pragma once

#include <chrono>
#include <string>

#include "Study/StudyRun.h"

namespace controller {

/// Tells how a study gets on, on standard error: a line that is written over on a terminal, twice a second; elsewhere a plain
/// line every ten seconds; nothing where it is quiet. Faults that the run got over are told in any case.
class Progress {
 public:
  explicit Progress(bool isQuiet);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void show(const StudyRun& run);
  void tellFault(const std::string& fault);

 private:
  void wipe();

  bool isQuiet_;
  bool isTerminal_;
  std::size_t shownLength_ = 0;
  std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

/// The line: experiments, batches, and the worst variable of the experiment that has farthest to go.
[[nodiscard]] std::string progressLine(const StudyRun& run);

}  // namespace controller
