#pragma once

/// Kind of a performance variable. A node's arithmetic asks only whether it is INSTANT_OF_TIME, whose rate reward is
/// added once, when the window closes; the rate reward of every other kind is added at each accumulation step. The
/// averaging of TIMEAVE_INTERVAL_OF_TIME belongs to the workers and to the impulses.
enum RewardType {
  INSTANT_OF_TIME = 0,
  INTERVAL_OF_TIME = 1,
  TIMEAVE_INTERVAL_OF_TIME = 2,
  STEADY_STATE = 3,
  UNDEFINED = 4
};

/// How the batches of a variable are cut: independent replications, or stretches of one trajectory, whose window slides
/// at every reset.
enum PVType { terminating = 0, steady_state = 1 };

/// Progress of a variable's window in the current batch.
enum AccumulationState {
  acc_later = 0,  ///< the window has not been reached
  acc_now = 1,    ///< inside the window
  acc_done = 2,   ///< the window is over and the totals are final
  acc_ignore = 3  ///< declared for completeness; nothing assigns it
};
