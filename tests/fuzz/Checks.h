#pragma once

#include <string>

#include "fuzz/Input.h"

// What is fuzzed. Each check makes of any bytes an input, gives it to the simulator and compares what comes of it with what
// the rules say, worked out another way. It gives the first difference in words, or nothing. All are silent, can be called
// again and again in one process, and write files in FuzzFolder alone.

namespace fuzz {

/// Words of a command line, one a line. Every option's value and every message; and where the options allow it, a short run
/// with them.
[[nodiscard]] std::string checkCommandLine(Input input);

/// An override string, up to the first zero byte: the variables stored, their values, the messages.
[[nodiscard]] std::string checkOverrides(Input input);

/// What a manager sends: the answers, the reports in between, and the state of the simulator behind each signal.
[[nodiscard]] std::string checkSignals(Input input);

/// A small model in a terminating or a steady-state run, against the plain interpreter.
[[nodiscard]] std::string checkRandomModel(Input input);

}  // namespace fuzz
