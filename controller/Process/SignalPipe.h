#pragma once

namespace controller {

/// Turns signals into bytes of a pipe, so that one poll waits for children, for the user and for output alike.
/// Watches  SIGCHLD; and SIGINT, SIGTERM and SIGHUP, which ask the program to stop.
/// One      for the whole process; install it before the first child is started.
class SignalPipe {
 public:
  /// Installs the handlers; SIGPIPE is ignored from here on. Further calls do nothing.
  static void install();
  /// The end to poll for reading; -1 before install.
  [[nodiscard]] static int descriptor();
  /// Takes all bytes out of the pipe.
  static void drain();
  /// The first signal that asked to stop, or 0.
  [[nodiscard]] static int stopSignal();
};

}  // namespace controller
