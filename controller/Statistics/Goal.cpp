#include "Statistics/Goal.h"

#include <fmt/format.h>

#include <cmath>
#include <stdexcept>

namespace controller {

void requireSound(const Goal& goal) {
  if (!(goal.precision > 0.0) || !std::isfinite(goal.precision)) {
    throw std::invalid_argument(fmt::format("precision {:g}: it has to be above 0", goal.precision));
  }
  if (goal.isRelative && goal.precision >= 1.0) {
    throw std::invalid_argument(fmt::format("relative precision {:g}: it has to be below 1", goal.precision));
  }
  if (!(goal.confidence > 0.0 && goal.confidence < 1.0)) {
    throw std::invalid_argument(fmt::format("confidence {:g}: it has to be above 0 and below 1", goal.confidence));
  }
  if (goal.greatestBatches < 0) {
    throw std::invalid_argument(
        fmt::format("greatest number of batches {}: it has to be 0 or more", goal.greatestBatches));
  }
}

}  // namespace controller
