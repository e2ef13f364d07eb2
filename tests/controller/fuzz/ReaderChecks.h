#pragma once

#include <string>

#include "fuzz/Input.h"

// The readers of quorva, each with any bytes: what is accepted, what is read, and that the memory asked for on the way is a
// small multiple of the input, whatever the input says of itself. As in fuzz/Checks.h, a check gives the first difference in
// words, or nothing.

namespace fuzz {

/// A binary result file, taken for that of a terminating run and then for that of a steady-state one.
[[nodiscard]] std::string checkResultFile(Input input);

/// A message between processes, taken for a request and then for an answer.
[[nodiscard]] std::string checkRunMessage(Input input);

/// Observations as a store keeps them.
[[nodiscard]] std::string checkObservations(Input input);

}  // namespace fuzz
