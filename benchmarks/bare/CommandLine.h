#pragma once

#include <optional>
#include <string_view>

namespace bare {

/// What the command line of a plain program asks for; what is not given is left to the workload.
struct CommandLine {
  std::string_view workload;  // borrowed: a word of the command line; empty if there is none
  std::optional<double> size;
  std::optional<double> stopTime;
  double replications = 1.0;
  double seed = 31415.0;

  /// Reads it. --help prints `help` and ends the process with status 0; a word that cannot be is told on standard error,
  /// with what to do, and ends it with status 1.
  CommandLine(int argc, char** argv, const char* help);
};

/// Tells on standard error that `which` is wrong in the way of `what`, and ends the process with status 1.
[[noreturn]] void failOn(std::string_view what, std::string_view which);

/// Processor time of this process so far.
[[nodiscard]] double processorSeconds();

}  // namespace bare
