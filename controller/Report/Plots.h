#pragma once

#include <string>
#include <vector>

#include "Report/StudyReport.h"

namespace controller {

/// Plots of a report, each an SVG element; empty where there is nothing to draw.

/// Mean and interval over the number of batches, with the wanted half-width about the last mean.
[[nodiscard]] std::string convergencePlot(const VariableReport& variable);

/// Share of the observations in each bin, with a mark at the mean.
[[nodiscard]] std::string histogramPlot(const VariableReport& variable);

/// One experiment's line in a plot over stop times.
struct StopTimeLine {
  std::string experiment;
  std::vector<const VariableReport*> variables;  ///< each with a stop time, ascending
};

/// Means with their intervals over stop times, one line per experiment, in the colours that colourOfLine() tells.
[[nodiscard]] std::string stopTimePlot(const std::string& group, const std::vector<StopTimeLine>& lines);

/// Classes of the style sheet for the line of a number, from 0: eight colours, and from the ninth line on dashes.
[[nodiscard]] std::string colourOfLine(std::size_t line);

}  // namespace controller
