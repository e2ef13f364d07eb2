#pragma once

#include <string>
#include <vector>

namespace fuzz {

/// One firing: the activity's number in the whole model, the time, and the marks of all cells behind it. Activities and
/// cells are numbered through the atomic models in the order of the tree; a shared variable has a cell in each of them.
struct Firing {
  int activity;
  double time;
  std::vector<int> marks;
};

/// What a run did.
struct Trajectory {
  std::vector<Firing> firings;                    // of all batches
  std::vector<std::vector<double>> observations;  // by variable, then by batch
  long drawn = 0;                                 // uniform numbers
};

}  // namespace fuzz
