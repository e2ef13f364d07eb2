#pragma once

/// Stopwatch over the process's own clock. GetTime has a meaning only after Start.
/// Units    seconds, on every platform: the reading of std::clock is divided by the platform's own CLOCKS_PER_SEC (1000
///          where the clock counts milliseconds), and keeps whatever resolution that clock has.
class CPUTime {
 public:
  void Start();

  /// Seconds since Start.
  [[nodiscard]] double GetTime() const;

 private:
  double _initialCPUClock = 0.0;  // reading of std::clock at Start, in its own ticks
  double _initialSYSClock = 0.0;  // 0 from Start on; time spent in the system is not told apart
};
