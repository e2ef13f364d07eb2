#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Statistics/Estimate.h"
#include "Statistics/Goal.h"

namespace controller {

/// The value that a share of the observations, `probability`, does not exceed.
struct Quantile {
  double probability = 0.0;
  double value = 0.0;
};

/// Observations from `from` on and below `to`; the last bin has `to` too. With equal ends, one value.
struct HistogramBin {
  double from = 0.0;
  double to = 0.0;
  std::int64_t count = 0;
};

/// The interval as it stood after the first `count` observations.
struct ConvergencePoint {
  std::int64_t count = 0;
  double mean = 0.0;
  double lower = 0.0;
  double upper = 0.0;
};

using NamedValues = std::vector<std::pair<std::string, std::string>>;  ///< in the order to show

/// What is known of one variable of one experiment.
struct VariableReport {
  std::string name;
  std::string group;               ///< variables of the same reward at several stop times; empty for a group of its own
  std::optional<double> stopTime;  ///< where it is known
  Estimate estimate;               ///< at the variable's share of the confidence
  double wantedHalfWidth = 0.0;    ///< NaN where there is none
  std::string verdict;             ///< StoppingRule::standingOfVariable(), such as "reached"
  std::string word;                ///< StoppingRule::wordOf()
  std::vector<Quantile> quantiles;
  /// Greatest error of a quantile's probability, and of a bin's share at each of its ends; 0 if they are exact.
  double quantileError = 0.0;
  std::vector<HistogramBin> histogram;  ///< by ascending value; without the outermost observations, if outside is not 0
  std::int64_t outside = 0;             ///< observations beyond the histogram's ends
  std::vector<ConvergencePoint> convergence;  ///< by ascending count
};

/// One experiment: a point of the grid of values.
struct ExperimentReport {
  std::string name;
  NamedValues values;                ///< global variables that were set
  std::string verdict;               ///< a word, such as "reached"
  std::string word;                  ///< the sentence of its stopping rule
  std::vector<std::string> remarks;  ///< such as those of SteadyStateDiagnosis
  std::vector<VariableReport> variables;
};

/// All that a report shows. Texts are plain UTF-8; a writer escapes them.
struct StudyReport {
  std::string title;
  std::string stopReason;
  Goal goal;
  NamedValues provenance;
  std::vector<ExperimentReport> experiments;
};

}  // namespace controller
