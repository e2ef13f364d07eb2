#pragma once

#include <cstdint>

namespace controller {

/// How sure a study has to be of every variable of an experiment before it stops.
struct Goal {
  double precision = 0.01;   ///< greatest error, above 0: a share of the true mean if isRelative, else in its unit
  bool isRelative = true;    ///< relative precision is also below 1
  double confidence = 0.95;  ///< that all variables are within the precision at once; above 0 and below 1
  std::int64_t leastBatches = 1000;  ///< observations of each variable before it may stop; below 2 counts as 2
  std::int64_t greatestBatches = 0;  ///< observations of each variable at which it stops in any case; 0 for none
};

/// Throws std::invalid_argument, with the reason, for a goal that breaks these limits.
void requireSound(const Goal& goal);

}  // namespace controller
