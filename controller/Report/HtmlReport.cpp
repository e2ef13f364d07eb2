#include "Report/HtmlReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Report/HtmlText.h"
#include "Report/Plots.h"
#include "Report/RoundNumbers.h"
#include "Report/StyleSheet.h"

namespace controller {

namespace {

constexpr std::string_view kReached = "reached";

std::string badge(const std::string& verdict) {
  return fmt::format("<span class=\"verdict{}\">{}</span>", verdict == kReached ? " reached" : "", escaped(verdict));
}

/// A whole number with thin spaces between groups of three digits.
std::string grouped(std::int64_t number) {
  std::string digits = fmt::format("{}", number);
  for (auto at = static_cast<std::ptrdiff_t>(digits.size()) - 3;
       at > 0 && digits[static_cast<std::size_t>(at) - 1] != '-'; at -= 3) {
    digits.insert(static_cast<std::size_t>(at), "\u202F");
  }
  return digits;
}

std::string percent(double share) {
  return numberInWords(share * 100.0) + "\u202F%";
}

std::string valuesInWords(const NamedValues& values) {
  std::string text;
  for (const auto& [name, value] : values) {
    text += fmt::format("{}{} = {}", text.empty() ? "" : ", ", name, value);
  }
  return text;
}

/// A number beside its interval: as many digits as the half-width tells of.
std::string cell(double number, double halfWidth) {
  return fmt::format("<td>{}</td>", numberInWords(number, std::isfinite(halfWidth) ? halfWidth / 100.0 : 0.0));
}

std::string cell(double number) {
  return fmt::format("<td>{}</td>", numberInWords(number));
}

/// Least number of batches of any variable that has some.
std::int64_t batchesOf(const ExperimentReport& experiment) {
  std::int64_t least = 0;
  for (const VariableReport& variable : experiment.variables) {
    const std::int64_t count = variable.estimate.count;
    least = count > 0 && (least == 0 || count < least) ? count : least;
  }
  return least;
}

std::string goalInWords(const Goal& goal) {
  return fmt::format("{}{} at {}", goal.isRelative ? percent(goal.precision) : numberInWords(goal.precision),
                     goal.isRelative ? " of the mean" : "", percent(goal.confidence));
}

void writeFact(std::ostream& out, std::string_view name, const std::string& value) {
  out << "<div><dt>" << escaped(name) << "</dt><dd>" << escaped(value) << "</dd></div>\n";
}

void writeHead(const StudyReport& report, std::ostream& out) {
  out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" << escaped(report.title)
      << "</title>\n<style>" << kStyleSheet << "</style>\n</head>\n<body>\n<main>\n";
}

void writeSummary(const StudyReport& report, std::ostream& out) {
  std::size_t variables = 0;
  std::size_t reached = 0;
  std::int64_t batches = 0;
  for (const ExperimentReport& experiment : report.experiments) {
    variables += experiment.variables.size();
    reached += experiment.verdict == kReached ? 1 : 0;
    batches += batchesOf(experiment);
  }
  const std::size_t experiments = report.experiments.size();
  out << "<header>\n<h1>" << escaped(report.title) << "</h1>\n<p>" << escaped(report.stopReason) << "</p>\n";
  out << "<dl class=\"facts\">\n";
  writeFact(out, "Precision wanted", goalInWords(report.goal));
  writeFact(out, "Experiments that reached it", fmt::format("{} of {}", reached, experiments));
  writeFact(out, "Variables", grouped(static_cast<std::int64_t>(variables)));
  writeFact(out, "Batches", grouped(batches));
  out << "</dl>\n</header>\n";
}

void writeExperiments(const StudyReport& report, std::ostream& out) {
  if (report.experiments.size() < 2) {
    return;
  }
  out << "<section>\n<h2>Experiments</h2>\n<div class=\"scroll\"><table>\n<thead><tr><th>Experiment</th>"
      << "<th class=\"text\">Precision</th><th>Batches</th><th class=\"text\">Values</th></tr></thead>\n<tbody>\n";
  for (std::size_t number = 0; number < report.experiments.size(); ++number) {
    const ExperimentReport& experiment = report.experiments[number];
    out << fmt::format("<tr><th scope=\"row\" class=\"wrap\"><a href=\"#experiment-{}\">{}</a></th>", number + 1,
                       escaped(experiment.name))
        << "<td class=\"text\">" << badge(experiment.verdict) << "</td><td>" << grouped(batchesOf(experiment))
        << "</td><td class=\"text long\">" << escaped(valuesInWords(experiment.values)) << "</td></tr>\n";
  }
  out << "</tbody>\n</table></div>\n</section>\n";
}

/// The lines of a group over its stop times, of the experiments that have it at two times or more.
std::vector<StopTimeLine> linesOf(const StudyReport& report, const std::string& group) {
  std::vector<StopTimeLine> lines;
  for (const ExperimentReport& experiment : report.experiments) {
    StopTimeLine line;
    line.experiment = experiment.name;
    for (const VariableReport& variable : experiment.variables) {
      if (variable.group == group && variable.stopTime) {
        line.variables.push_back(&variable);
      }
    }
    std::stable_sort(line.variables.begin(), line.variables.end(),
                     [](const VariableReport* a, const VariableReport* b) { return *a->stopTime < *b->stopTime; });
    if (line.variables.size() >= 2) {
      lines.push_back(std::move(line));
    }
  }
  return lines;
}

/// Groups of variables, in the order in which they first stand in the report.
std::vector<std::string> groupsOf(const StudyReport& report) {
  std::vector<std::string> groups;
  for (const ExperimentReport& experiment : report.experiments) {
    for (const VariableReport& variable : experiment.variables) {
      if (!variable.group.empty() && std::find(groups.begin(), groups.end(), variable.group) == groups.end()) {
        groups.push_back(variable.group);
      }
    }
  }
  return groups;
}

void writeCurves(const StudyReport& report, std::ostream& out) {
  for (const std::string& group : groupsOf(report)) {
    const std::vector<StopTimeLine> lines = linesOf(report, group);
    const std::string plot = lines.empty() ? "" : stopTimePlot(group, lines);
    if (plot.empty()) {
      continue;
    }
    out << "<section>\n<h2>" << escaped(group) << " over time</h2>\n<figure class=\"card curve\">\n"
        << plot << "<figcaption>Means at the stop times, with their intervals as bands\n<ul class=\"legend\">\n";
    for (std::size_t line = 0; line < lines.size(); ++line) {
      out << "<li><svg viewBox=\"0 0 28 10\" aria-hidden=\"true\"><path class=\"line " << colourOfLine(line)
          << "\" d=\"M0 5H28\"/></svg>" << escaped(lines[line].experiment) << "</li>\n";
    }
    out << "</ul>\n</figcaption>\n</figure>\n</section>\n";
  }
}

/// The quantiles of the table; a variable that lacks one shows a dash.
constexpr double kColumns[] = {0.05, 0.25, 0.5, 0.75, 0.95};

double quantileOf(const VariableReport& variable, double probability) {
  for (const Quantile& quantile : variable.quantiles) {
    if (quantile.probability == probability) {
      return quantile.value;
    }
  }
  return std::nan("");
}

void writeRow(const VariableReport& variable, std::ostream& out) {
  const Estimate& estimate = variable.estimate;
  out << "<tr><th scope=\"row\" class=\"wrap\">" << escaped(variable.name) << "</th><td class=\"text\">"
      << badge(variable.verdict) << "</td>" << cell(estimate.mean, estimate.halfWidth)
      << cell(estimate.halfWidth, estimate.halfWidth) << cell(variable.wantedHalfWidth, variable.wantedHalfWidth)
      << cell(estimate.lower, estimate.halfWidth) << cell(estimate.upper, estimate.halfWidth) << "<td>"
      << grouped(estimate.count) << "</td>" << cell(estimate.minimum);
  for (const double probability : kColumns) {
    out << cell(quantileOf(variable, probability));
  }
  out << cell(estimate.maximum) << cell(std::sqrt(estimate.variance)) << "<td class=\"text\">"
      << nameOf(estimate.method) << "</td></tr>\n";
}

void writeTable(const ExperimentReport& experiment, const Goal& goal, std::ostream& out) {
  out << "<div class=\"scroll\"><table>\n<thead><tr><th>Variable</th><th class=\"text\">Precision</th>"
      << "<th>Mean</th><th>Half-width</th><th>Wanted</th><th>Interval "
         "from</th><th>to</th><th>Batches</th><th>Minimum</th>";
  for (const double probability : kColumns) {
    out << "<th>" << percent(probability) << "</th>";
  }
  out << "<th>Maximum</th><th>Deviation</th><th class=\"text\">Interval by</th></tr></thead>\n<tbody>\n";
  double error = 0.0;
  for (const VariableReport& variable : experiment.variables) {
    writeRow(variable, out);
    error = std::max(error, variable.quantileError);
  }
  out << "</tbody>\n</table></div>\n<p class=\"soft\">All intervals of this table hold together with "
      << percent(goal.confidence) << " confidence. The half-width is the longer side of an interval.";
  if (error > 0.0) {
    out << " Quantiles of variables with many different values are off by at most " << percent(error)
        << " of the batches.";
  }
  out << "</p>\n";
}

void writeFigure(const std::string& plot, const std::string& caption, std::ostream& out) {
  if (!plot.empty()) {
    out << "<figure>\n" << plot << "<figcaption>" << escaped(caption) << "</figcaption>\n</figure>\n";
  }
}

void writePlots(const VariableReport& variable, const Goal& goal, std::ostream& out) {
  out << "<article class=\"card\">\n<h3>" << escaped(variable.name) << "</h3>\n";
  if (variable.verdict != kReached && !variable.word.empty()) {
    out << "<p class=\"soft\">It " << escaped(variable.word) << "</p>\n";
  }
  const std::string convergence = convergencePlot(variable);
  const std::string histogram = histogramPlot(variable);
  if (convergence.empty() && histogram.empty()) {
    out << "<p class=\"soft\">Too few batches to draw.</p>\n";
  }
  out << "<div class=\"plots\">\n";
  writeFigure(convergence,
              fmt::format("Mean and interval over the batches; dashed: {} about the last mean",
                          goal.isRelative ? percent(goal.precision) : numberInWords(goal.precision)),
              out);
  std::string caption = "How the batches are spread; the line is the mean";
  if (variable.outside > 0) {
    caption += fmt::format("; {} batches lie outside", grouped(variable.outside));
  }
  writeFigure(histogram, caption, out);
  out << "</div>\n</article>\n";
}

void writeExperiment(const ExperimentReport& experiment, std::size_t number, bool isOnly, const Goal& goal,
                     std::ostream& out) {
  out << fmt::format("<section id=\"experiment-{}\">\n<h2>{} {}</h2>\n", number, escaped(experiment.name),
                     badge(experiment.verdict));
  if (!experiment.values.empty()) {
    out << "<p>" << escaped(valuesInWords(experiment.values)) << "</p>\n";
  }
  if (!experiment.word.empty()) {
    out << "<p>" << escaped(experiment.word) << "</p>\n";
  }
  if (!experiment.remarks.empty()) {
    out << "<ul class=\"remarks\">\n";
    for (const std::string& remark : experiment.remarks) {
      out << "<li>" << escaped(remark) << "</li>\n";
    }
    out << "</ul>\n";
  }
  writeTable(experiment, goal, out);
  out << "<details" << (isOnly ? " open" : "") << ">\n<summary>Convergence and histograms</summary>\n";
  for (const VariableReport& variable : experiment.variables) {
    writePlots(variable, goal, out);
  }
  out << "</details>\n</section>\n";
}

void writeProvenance(const StudyReport& report, std::ostream& out) {
  if (report.provenance.empty()) {
    return;
  }
  out << "<section>\n<h2>Provenance</h2>\n<div class=\"scroll\"><table>\n<tbody>\n";
  for (const auto& [name, value] : report.provenance) {
    out << "<tr><th scope=\"row\">" << escaped(name) << "</th><td class=\"text long\">" << escaped(value)
        << "</td></tr>\n";
  }
  out << "</tbody>\n</table></div>\n</section>\n";
}

}  // namespace

void writeHtmlReport(const StudyReport& report, std::ostream& out) {
  writeHead(report, out);
  writeSummary(report, out);
  writeExperiments(report, out);
  writeCurves(report, out);
  for (std::size_t number = 0; number < report.experiments.size(); ++number) {
    writeExperiment(report.experiments[number], number + 1, report.experiments.size() == 1, report.goal, out);
  }
  writeProvenance(report, out);
  out << "</main>\n</body>\n</html>\n";
}

}  // namespace controller
