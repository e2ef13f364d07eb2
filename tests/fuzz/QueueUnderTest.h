#pragma once

namespace fuzz {

/// Gives the next simulators of this process a queue with a terminating and a steady-state variable.
void useQueue();

}  // namespace fuzz
