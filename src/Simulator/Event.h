#pragma once

class BaseActionClass;

/// The pending firing of one group: when it fires, when that was settled, and the group itself. A plain record.
/// Units    simulated time, in the model's own unit.
struct Event {
  double exec_time = -1.0;                ///< simulated time of the firing; the key of the event list
  double start_time = 0.0;                ///< simulated time at which the firing was scheduled
  BaseActionClass* action_ptr = nullptr;  ///< the group that fires; borrowed from the model tree

  Event() = default;
  Event(double execTime, double startTime, BaseActionClass* action)
      : exec_time(execTime), start_time(startTime), action_ptr(action) {}
};
