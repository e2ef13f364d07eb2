// In a build that counts coverage: a process writes its counters when it exits, and one that a signal ends would take them
// with it. Many tests end processes by a failed assertion, and what these run up to that point counts like all else.

#include <csignal>

extern "C" void __gcov_dump(void);

namespace {

void writeCounters(int signal) {
  __gcov_dump();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

/// Both are raised by the code under test itself, in the middle of nothing that the writing could disturb.
[[maybe_unused]] const auto abortBefore = std::signal(SIGABRT, writeCounters);
[[maybe_unused]] const auto segmentationFaultBefore = std::signal(SIGSEGV, writeCounters);

}  // namespace
