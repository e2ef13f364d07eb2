#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Report/StudyReport.h"

namespace controller {

/// A variable as the builder has to know it ahead of its observations.
struct VariableHeading {
  std::string name;
  std::string group;               ///< as in VariableReport
  std::optional<double> stopTime;  ///< as in VariableReport
};

/// The heading of a variable whose name tells its stop time: "out@99.5" is that of the group "out" at 99.5. A name without
/// "@", without a number behind its last one, or without anything ahead of it, has neither.
[[nodiscard]] VariableHeading headingOf(const std::string& name);

/// Fills a StudyReport from observations that stream by.
///
/// Order     the observations of one variable are added in the order of units; variables and experiments may take turns
///           in any way. The same observations in the same order give the same report, however they are cut into calls.
/// Memory    at most some 200 kB for each variable, however many observations there are; finishExperiment() gives them back.
/// Verdicts  intervals, verdicts and words of variables are those of a StoppingRule after all the observations.
/// Series    the convergence holds the intervals after 10 observations, after each further fifth, and after the last.
/// Quantiles and histograms  those of Distribution, which tells of its error.
class ReportBuilder {
 public:
  /// Throws std::invalid_argument for a goal that breaks the limits of Goal.
  ReportBuilder(std::string title, Goal goal);
  ReportBuilder(const ReportBuilder&) = delete;
  ReportBuilder& operator=(const ReportBuilder&) = delete;
  ~ReportBuilder();

  /// Begins an experiment of one variable or more and returns its number, from 0 on.
  std::size_t addExperiment(std::string name, NamedValues values, std::vector<VariableHeading> variables);

  /// Further observations of a variable, in the order of units. Requires: the experiment is not finished.
  void add(std::size_t experiment, std::size_t variable, std::span<const double> observations);

  /// Nothing more comes to the experiment: fills in its part of the report. The verdict is the study's own, such as
  /// "reached", "stopped short", "cannot be reached", "failed"; the word is that of its stopping rule.
  void finishExperiment(std::size_t experiment, std::string verdict, std::string word,
                        std::vector<std::string> remarks = {});

  /// The report, with all experiments, which are finished first where they are not yet. Call it once, last.
  [[nodiscard]] StudyReport finish(std::string stopReason, NamedValues provenance);

 private:
  struct ExperimentStream;

  [[nodiscard]] ExperimentStream& streamOf(std::size_t experiment);

  StudyReport report_;
  std::vector<std::unique_ptr<ExperimentStream>> streams_;  // of each experiment; null when it is finished
};

}  // namespace controller
