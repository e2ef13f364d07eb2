#include "Report/ReportBuilder.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cmath>
#include <system_error>
#include <utility>

#include "Report/Distribution.h"
#include "Statistics/ObservationSummary.h"
#include "Statistics/StoppingRule.h"

namespace controller {

namespace {

constexpr double kProbabilities[] = {0.01, 0.05, 0.25, 0.5, 0.75, 0.95, 0.99};
constexpr std::int64_t kFirstPoint = 10;

std::int64_t nextPoint(std::int64_t count) {
  return count + count / 5;
}

/// What is kept of one variable while its observations go by, beside its part in the stopping rule.
struct VariableStream {
  ObservationSummary summary;
  std::vector<ObservationSummary> series;  // as it was at each point of the convergence
  std::int64_t nextPoint = kFirstPoint;
  Distribution distribution;

  void add(std::span<const double> observations) {
    distribution.add(observations);
    while (!observations.empty()) {
      const auto room = static_cast<std::size_t>(nextPoint - summary.count());
      const std::span<const double> now = observations.first(std::min(room, observations.size()));
      summary.add(now);
      observations = observations.subspan(now.size());
      if (summary.count() == nextPoint) {
        series.push_back(summary);
        nextPoint = controller::nextPoint(nextPoint);
      }
    }
  }
};

std::vector<std::string> namesOf(const std::vector<VariableHeading>& headings) {
  std::vector<std::string> names;
  names.reserve(headings.size());
  for (const VariableHeading& heading : headings) {
    names.push_back(heading.name);
  }
  return names;
}

std::vector<ConvergencePoint> convergenceOf(const VariableStream& stream, double confidence) {
  std::vector<ConvergencePoint> points;
  const auto addPoint = [&points, confidence](const ObservationSummary& summary) {
    const Estimate estimate = summary.estimate(confidence);
    points.push_back({estimate.count, estimate.mean, estimate.lower, estimate.upper});
  };
  std::for_each(stream.series.begin(), stream.series.end(), addPoint);
  if (stream.summary.count() > 0 && (points.empty() || points.back().count < stream.summary.count())) {
    addPoint(stream.summary);
  }
  return points;
}

}  // namespace

VariableHeading headingOf(const std::string& name) {
  VariableHeading heading{name, "", std::nullopt};
  const std::size_t mark = name.rfind('@');
  if (mark == std::string::npos || mark == 0) {
    return heading;
  }
  const char* const end = name.data() + name.size();
  double time = 0.0;
  const auto [behind, error] = std::from_chars(name.data() + mark + 1, end, time);
  if (error == std::errc() && behind == end && std::isfinite(time)) {
    heading.group = name.substr(0, mark);
    heading.stopTime = time;
  }
  return heading;
}

struct ReportBuilder::ExperimentStream {
  std::vector<VariableHeading> headings;
  StoppingRule rule;
  std::vector<VariableStream> variables;

  ExperimentStream(const Goal& goal, std::vector<VariableHeading> itsHeadings)
      : headings(std::move(itsHeadings)), rule(goal, namesOf(headings)), variables(headings.size()) {}

  void add(std::size_t variable, std::span<const double> observations) {
    std::vector<std::span<const double>> ofAll(variables.size());
    ofAll[variable] = observations;
    rule.addUnit(ofAll);
    variables[variable].add(observations);
  }

  VariableReport reportOf(std::size_t number) {
    VariableStream& stream = variables[number];
    VariableReport result;
    result.name = headings[number].name;
    result.group = headings[number].group;
    result.stopTime = headings[number].stopTime;
    result.estimate = rule.estimate(number);
    result.wantedHalfWidth = rule.wantedHalfWidth(number);
    result.verdict = rule.standingOfVariable(number);
    result.word = rule.wordOf(number);
    if (stream.summary.count() > 0) {
      for (const double probability : kProbabilities) {
        result.quantiles.push_back({probability, stream.distribution.quantile(probability)});
      }
    }
    result.quantileError = stream.distribution.error();
    result.histogram = stream.distribution.histogram();
    result.outside = result.estimate.count;
    for (const HistogramBin& bin : result.histogram) {
      result.outside -= bin.count;
    }
    result.convergence = convergenceOf(stream, rule.variableConfidence());
    return result;
  }
};

ReportBuilder::ReportBuilder(std::string title, Goal goal) {
  requireSound(goal);
  report_.title = std::move(title);
  report_.goal = goal;
}

ReportBuilder::~ReportBuilder() = default;

std::size_t ReportBuilder::addExperiment(std::string name, NamedValues values, std::vector<VariableHeading> variables) {
  streams_.push_back(std::make_unique<ExperimentStream>(report_.goal, std::move(variables)));
  ExperimentReport& experiment = report_.experiments.emplace_back();
  experiment.name = std::move(name);
  experiment.values = std::move(values);
  return streams_.size() - 1;
}

ReportBuilder::ExperimentStream& ReportBuilder::streamOf(std::size_t experiment) {
  assert(streams_.at(experiment) != nullptr);
  return *streams_[experiment];
}

void ReportBuilder::add(std::size_t experiment, std::size_t variable, std::span<const double> observations) {
  streamOf(experiment).add(variable, observations);
}

void ReportBuilder::finishExperiment(std::size_t experiment, std::string verdict, std::string word,
                                     std::vector<std::string> remarks) {
  ExperimentStream& stream = streamOf(experiment);
  stream.rule.checkpoint();
  ExperimentReport& report = report_.experiments[experiment];
  report.verdict = std::move(verdict);
  report.word = std::move(word);
  report.remarks = std::move(remarks);
  for (std::size_t variable = 0; variable < stream.variables.size(); ++variable) {
    report.variables.push_back(stream.reportOf(variable));
  }
  streams_[experiment].reset();
}

StudyReport ReportBuilder::finish(std::string stopReason, NamedValues provenance) {
  for (std::size_t experiment = 0; experiment < streams_.size(); ++experiment) {
    if (streams_[experiment]) {
      finishExperiment(experiment, "unfinished", "");
    }
  }
  report_.stopReason = std::move(stopReason);
  report_.provenance = std::move(provenance);
  return std::move(report_);
}

}  // namespace controller
