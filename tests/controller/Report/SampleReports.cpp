#include "controller/Report/SampleReports.h"

#include <limits>

#include "Report/ReportBuilder.h"
#include "controller/Statistics/Noise.h"

namespace support {

namespace {

using controller::Goal;
using controller::NamedValues;
using controller::ReportBuilder;
using controller::StudyReport;
using controller::VariableHeading;

constexpr Goal kGoal{
    .precision = 0.05, .isRelative = true, .confidence = 0.95, .leastBatches = 100, .greatestBatches = 0};

StudyReport withStopTimes() {
  ReportBuilder builder("Eighteen experiments", kGoal);
  Noise noise(1);
  for (int number = 0; number < 18; ++number) {
    std::vector<VariableHeading> headings;
    for (const double time : {1.0, 2.5, 10.0}) {
      headings.push_back({"out by " + std::to_string(time), "out", time});
    }
    const std::size_t experiment =
        builder.addExperiment("load " + std::to_string(number), {{"load", std::to_string(number)}}, headings);
    for (std::size_t variable = 0; variable < 3; ++variable) {
      std::vector<double> observations = noise.normals(500);
      for (double& observation : observations) {
        observation += static_cast<double>(variable) + number;
      }
      builder.add(experiment, variable, observations);
    }
    builder.finishExperiment(experiment, number % 2 == 0 ? "reached" : "stopped short", "a word",
                             {"a remark", "another"});
  }
  return builder.finish("9 of 18 experiments reached the precision", {{"Command", "quorva run"}, {"Seed", "1"}});
}

StudyReport withOddDistributions() {
  Noise noise(2);
  const double infinity = std::numeric_limits<double>::infinity();
  const double most = std::numeric_limits<double>::max();
  std::vector<std::vector<double>> all(12);
  for (int at = 0; at < 3000; ++at) {
    all[0].push_back(1e9 + 1e-3 * noise.normal());
    all[1].push_back(std::exp(3.0 * noise.normal()));
    all[2].push_back(0.0);
    all[3].push_back(at % 3 == 0 ? 1.0 : 0.0);
    all[4].push_back(3.25);
    all[5].push_back(at == 7 ? infinity : 1.0 * at);
    all[6].push_back(at % 2 == 0 ? most : -most);
    all[7].push_back(noise.uniform() * 5e-324);
    all[8].push_back(noise.uniform() * 1e-300);
    all[9].push_back(noise.uniform() * 1e300);
  }
  all[10] = {1.5};  // and the last one has none
  std::vector<VariableHeading> headings;
  for (std::size_t number = 0; number < all.size(); ++number) {
    headings.push_back({"variable " + std::to_string(number), "", {}});
  }
  ReportBuilder builder("Odd distributions", kGoal);
  builder.addExperiment("odd", {}, headings);
  for (std::size_t number = 0; number < all.size(); ++number) {
    builder.add(0, number, all[number]);
  }
  return builder.finish("", {});
}

StudyReport withHostileNames() {
  ReportBuilder builder(kHostileName, kGoal);
  const std::vector<VariableHeading> headings{{kHostileName, kHostileName, 1.0}, {kHostileName, kHostileName, 2.0}};
  for (int number = 0; number < 2; ++number) {
    builder.addExperiment(kHostileName, {{kHostileName, kHostileName}}, headings);
    for (std::size_t variable = 0; variable < 2; ++variable) {
      builder.add(static_cast<std::size_t>(number), variable,
                  std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    }
    builder.finishExperiment(static_cast<std::size_t>(number), kHostileName, kHostileName, {kHostileName});
  }
  return builder.finish(kHostileName, {{kHostileName, kHostileName}});
}

}  // namespace

std::vector<std::pair<std::string, controller::StudyReport>> sampleReports() {
  std::vector<std::pair<std::string, controller::StudyReport>> samples;
  samples.emplace_back("empty", StudyReport());
  samples.emplace_back("stop-times", withStopTimes());
  samples.emplace_back("odd", withOddDistributions());
  samples.emplace_back("hostile", withHostileNames());
  return samples;
}

}  // namespace support
