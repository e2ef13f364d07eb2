#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Statistics/Goal.h"

namespace controller {

/// How a study's observations are judged. It may change from one call to the next: the units stay as they are.
struct StudyGoal {
  Goal goal;
  std::vector<std::int32_t> variables;        ///< those that count; empty for all
  std::map<std::int32_t, std::string> names;  ///< what variables are called; others by their number
  std::int64_t warmUpBatches = 0;             ///< left out at the beginning of each unit
  std::int64_t batchesTogether = 1;           ///< whose mean is one observation

  [[nodiscard]] bool counts(std::int32_t variable) const;
  /// The name of a variable: the given one, or "variable 3".
  [[nodiscard]] std::string nameOf(std::int32_t variable) const;
};

[[nodiscard]] std::string goalToJson(const StudyGoal& goal);
/// Throws std::exception for a text that goalToJson does not make.
[[nodiscard]] StudyGoal goalFromJson(const std::string& text);

/// What is observed of a unit under a goal: without its warm-up, and several batches to an observation. The last ones, too
/// few for another observation, are left out.
[[nodiscard]] std::vector<double> observed(std::vector<double> batches, const StudyGoal& goal);

}  // namespace controller
