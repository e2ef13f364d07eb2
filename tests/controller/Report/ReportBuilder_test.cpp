#include "Report/ReportBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Report/HtmlReport.h"
#include "Statistics/Intervals.h"
#include "Statistics/ObservationSummary.h"
#include "controller/Statistics/Noise.h"

namespace controller {
namespace {

constexpr Goal kGoal{
    .precision = 0.05, .isRelative = true, .confidence = 0.95, .leastBatches = 10, .greatestBatches = 0};

std::string htmlOf(const StudyReport& report) {
  std::ostringstream out;
  writeHtmlReport(report, out);
  return out.str();
}

TEST(ReportBuilderTest, ATableRowIsWhatTheObservationsSay) {
  ReportBuilder builder("A study", kGoal);
  const std::size_t experiment =
      builder.addExperiment("First", {{"nTrains", "3"}}, {{"x", "", {}}, {"y at 2", "y", 2.0}});
  std::vector<double> x;
  for (int at = 0; at < 1000; ++at) {
    x.push_back(at % 2 == 0 ? 9.0 : 11.0);
  }
  builder.add(experiment, 0, x);
  builder.add(experiment, 1, std::vector<double>{0, 1, 0, 0});
  builder.finishExperiment(experiment, "stopped short", "the word", {"a remark"});
  const StudyReport report = builder.finish("why it stopped", {{"Seed", "31415"}});

  EXPECT_EQ(report.title, "A study");
  EXPECT_EQ(report.stopReason, "why it stopped");
  EXPECT_EQ(report.provenance, (NamedValues{{"Seed", "31415"}}));
  ASSERT_EQ(report.experiments.size(), 1U);
  const ExperimentReport& only = report.experiments[0];
  EXPECT_EQ(only.name, "First");
  EXPECT_EQ(only.values, (NamedValues{{"nTrains", "3"}}));
  EXPECT_EQ(only.verdict, "stopped short");
  EXPECT_EQ(only.word, "the word");
  EXPECT_EQ(only.remarks, std::vector<std::string>{"a remark"});
  ASSERT_EQ(only.variables.size(), 2U);

  const VariableReport& first = only.variables[0];
  EXPECT_EQ(first.estimate.count, 1000);
  EXPECT_EQ(first.estimate.mean, 10.0);
  // Two variables share the 5 %: standard error 1 / sqrt(999).
  const double halfWidth = studentInterval(1000, 10.0, 1000.0 / 999.0, 0.975).upper - 10.0;
  EXPECT_NEAR(first.estimate.halfWidth, halfWidth, 1e-12);
  EXPECT_NEAR(first.wantedHalfWidth, 10.0 * 0.05 / 1.05, 1e-12);
  EXPECT_EQ(first.verdict, "reached");
  EXPECT_EQ(first.word, "is precise");
  ASSERT_EQ(first.quantiles.size(), 7U);
  EXPECT_EQ(first.quantiles[3].probability, 0.5);
  EXPECT_EQ(first.quantiles[3].value, 9.0);
  EXPECT_EQ(first.quantiles[4].value, 11.0);
  ASSERT_EQ(first.histogram.size(), 2U);
  EXPECT_EQ(first.histogram[1].count, 500);
  EXPECT_EQ(first.outside, 0);

  const VariableReport& second = only.variables[1];
  EXPECT_EQ(second.group, "y");
  EXPECT_EQ(second.stopTime, 2.0);
  EXPECT_EQ(second.verdict, "too few batches");
  EXPECT_EQ(second.estimate.method, EstimateMethod::ClopperPearson);
}

TEST(ReportBuilderTest, TheConvergenceHasThePointsOfAGrowingSeriesAndTheLast) {
  ReportBuilder builder("", kGoal);
  builder.addExperiment("", {}, {{"x", "", {}}});
  support::Noise noise(1);
  const std::vector<double> observations = noise.normals(30);
  builder.add(0, 0, observations);
  const StudyReport report = builder.finish("", {});
  const std::vector<ConvergencePoint>& points = report.experiments[0].variables[0].convergence;
  std::vector<std::int64_t> counts;
  for (const ConvergencePoint& point : points) {
    counts.push_back(point.count);
  }
  EXPECT_EQ(counts, (std::vector<std::int64_t>{10, 12, 14, 16, 19, 22, 26, 30}));
  ObservationSummary summary;
  summary.add(std::span(observations).first(14));
  const Estimate estimate = summary.estimate(0.95);
  EXPECT_EQ(points[2].mean, estimate.mean);
  EXPECT_EQ(points[2].lower, estimate.lower);
  EXPECT_EQ(points[2].upper, estimate.upper);
}

TEST(ReportBuilderTest, TheSameObservationsInAnyPiecesGiveTheSameBytes) {
  support::Noise noise(2);
  const std::vector<double> x = noise.normals(20'000);
  const std::vector<double> y = noise.normals(20'000);
  const auto report = [&](std::size_t piece) {
    ReportBuilder builder("pieces", kGoal);
    builder.addExperiment("one", {}, {{"x", "", {}}, {"y", "", {}}});
    builder.addExperiment("two", {}, {{"y", "", {}}});
    for (std::size_t at = 0; at < x.size(); at += piece) {
      const std::size_t length = std::min(piece, x.size() - at);
      builder.add(0, 0, std::span(x).subspan(at, length));
      builder.add(1, 0, std::span(y).subspan(at, length));
    }
    builder.add(0, 1, y);
    builder.finishExperiment(0, "reached", "");
    builder.finishExperiment(1, "reached", "");
    return htmlOf(builder.finish("", {}));
  };
  const std::string whole = report(x.size());
  EXPECT_GT(whole.size(), 10'000U);
  EXPECT_EQ(report(1), whole);
  EXPECT_EQ(report(777), whole);
}

TEST(ReportBuilderTest, ObservationsThatAreNoNumbersAreToldAndCountedOutside) {
  ReportBuilder builder("", kGoal);
  builder.addExperiment("", {}, {{"x", "", {}}, {"nothing", "", {}}});
  builder.add(0, 0, std::vector<double>{1.0, std::nan(""), 2.0, std::numeric_limits<double>::infinity()});
  const StudyReport report = builder.finish("", {});
  const VariableReport& variable = report.experiments[0].variables[0];
  EXPECT_EQ(variable.verdict, "can't be reached");
  EXPECT_EQ(variable.word, "can't become precise: its observation 2 is no finite number");
  EXPECT_EQ(variable.outside, 2);
  EXPECT_EQ(report.experiments[0].variables[1].estimate.count, 0);
  EXPECT_TRUE(report.experiments[0].variables[1].quantiles.empty());
  EXPECT_TRUE(report.experiments[0].variables[1].convergence.empty());
  EXPECT_EQ(report.experiments[0].verdict, "unfinished");
}

TEST(ReportBuilderTest, ANameTellsItsStopTimeBehindAnAt) {
  const auto partsOf = [](const std::string& name) {
    const VariableHeading heading = headingOf(name);
    EXPECT_EQ(heading.name, name);
    return std::pair(heading.group, heading.stopTime.value_or(-1.0));
  };
  EXPECT_EQ(partsOf("out@99.5"), std::pair(std::string("out"), 99.5));
  EXPECT_EQ(partsOf("a@b@1e3"), std::pair(std::string("a@b"), 1000.0));
  for (const char* name : {"out", "@5", "out@", "out@x", "out@5s", "out@ 5", "out@inf", "out@nan", ""}) {
    EXPECT_EQ(partsOf(name), std::pair(std::string(), -1.0)) << name;
  }
}

TEST(ReportBuilderTest, RefusesAGoalThatHasNoMeaning) {
  EXPECT_THROW(ReportBuilder("", {.precision = -1.0}), std::invalid_argument);
}

}  // namespace
}  // namespace controller
