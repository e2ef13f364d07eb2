#include "Process/SignalPipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace controller {
namespace {

std::array<int, 2> thePipe{-1, -1};
volatile std::sig_atomic_t theStopSignal = 0;

void onSignal(int signal) {
  const int error = errno;
  if (signal != SIGCHLD && theStopSignal == 0) {
    theStopSignal = signal;
  }
  // A full pipe has woken the reader already.
  [[maybe_unused]] const auto written = ::write(thePipe[1], "s", 1);
  errno = error;
}

}  // namespace

void SignalPipe::install() {
  if (thePipe[0] >= 0) {
    return;
  }
  if (::pipe2(thePipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  struct sigaction action {};
  action.sa_handler = onSignal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGCHLD, SIGINT, SIGTERM, SIGHUP}) {
    sigaction(signal, &action, nullptr);
  }
  std::signal(SIGPIPE, SIG_IGN);
}

int SignalPipe::descriptor() {
  return thePipe[0];
}

void SignalPipe::drain() {
  std::array<char, 256> bytes{};
  while (::read(thePipe[0], bytes.data(), bytes.size()) > 0) {
  }
}

int SignalPipe::stopSignal() {
  return theStopSignal;
}

}  // namespace controller
