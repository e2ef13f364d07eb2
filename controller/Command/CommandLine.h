#pragma once

namespace controller {

/// The whole program behind its entry: reads the command line and does what it says. Gives the exit status; faults are told
/// on standard error.
[[nodiscard]] int runCommandLine(int argc, char** argv);

}  // namespace controller
