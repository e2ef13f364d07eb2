#pragma once

#include <string>

#include "Command/Options.h"

namespace controller {

/// Runs a study, or goes on with it, and writes its report. commandLine is kept as it is. Gives the program's exit status;
/// throws UsageError, and std::exception for what fails.
[[nodiscard]] int runStudy(const RunOptions& options, const std::string& commandLine);

/// The absolute path of a program, found as a shell finds it. Throws SimulatorRefusal.
[[nodiscard]] std::string findProgram(const std::string& name);

}  // namespace controller
