#include "Command/Export.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>

#include "Command/StudyFolder.h"
#include "Process/ResultFile.h"
#include "Study/UnitSeed.h"

namespace controller {
namespace {

using Json = nlohmann::ordered_json;

std::string quoted(const std::string& text) {
  if (text.find_first_of(",\"\n") == std::string::npos) {
    return text;
  }
  std::string field = "\"";
  for (const char character : text) {
    field += character == '"' ? "\"\"" : std::string(1, character);
  }
  return field + "\"";
}

/// A number that JSON has, or its name where it has none.
Json numberToJson(double value) {
  return std::isfinite(value) ? Json(value) : Json(fmt::format("{}", value));
}

Json goalAsJson(const StudyGoal& goal) {
  return Json::parse(goalToJson(goal));
}

Json variableToJson(const ExperimentStanding& standing, std::size_t variable, const StudyGoal& goal) {
  const Estimate estimate = standing.rule().estimate(variable);
  const std::int32_t number = standing.variables()[variable];
  return {{"variable", number},
          {"name", goal.nameOf(number)},
          {"batches", estimate.count},
          {"mean", numberToJson(estimate.mean)},
          {"lower", numberToJson(estimate.lower)},
          {"upper", numberToJson(estimate.upper)},
          {"halfWidth", numberToJson(estimate.halfWidth)},
          {"wantedHalfWidth", numberToJson(standing.rule().wantedHalfWidth(variable))},
          {"variance", numberToJson(estimate.variance)},
          {"skewness", numberToJson(estimate.skewness)},
          {"minimum", numberToJson(estimate.minimum)},
          {"maximum", numberToJson(estimate.maximum)},
          {"method", nameOf(estimate.method)},
          {"word", standing.rule().wordOf(variable)}};
}

/// Shows each unit that counts to `visit`: its experiment, its number and its observations.
template <typename Visit>
void visitUnits(StudyStore& store, const StudyGoal& goal, Visit visit) {
  const auto& experiments = store.identity().experiments;
  for (std::size_t i = 0; i < experiments.size(); ++i) {
    static_cast<void>(standingOf(store, i, goal, [&](const ExperimentStanding& standing, const UnitObservations& unit) {
      visit(experiments[i], standing.units() - 1, unit);
    }));
  }
}

}  // namespace

void exportEstimatesAsCsv(StudyStore& store, const StudyGoal& goal, const TextSink& sink) {
  sink(
      "experiment,variable,name,units,batches,mean,lower,upper,half_width,wanted_half_width,variance,skewness,minimum,"
      "maximum,method,verdict\n");
  const auto& experiments = store.identity().experiments;
  for (std::size_t i = 0; i < experiments.size(); ++i) {
    const ExperimentStanding standing = standingOf(store, i, goal);
    for (std::size_t variable = 0; variable < standing.variables().size(); ++variable) {
      const Estimate estimate = standing.rule().estimate(variable);
      const std::int32_t number = standing.variables()[variable];
      sink(fmt::format("{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{}\n", quoted(experiments[i].name), number,
                       quoted(goal.nameOf(number)), standing.units(), estimate.count, estimate.mean, estimate.lower,
                       estimate.upper, estimate.halfWidth, standing.rule().wantedHalfWidth(variable), estimate.variance,
                       estimate.skewness, estimate.minimum, estimate.maximum, nameOf(estimate.method),
                       nameOf(standing.verdict())));
    }
  }
}

void exportEstimatesAsJson(StudyStore& store, const StudyGoal& goal, const TextSink& sink) {
  const StudyIdentity& study = store.identity();
  Json json = {{"format", "quorva-estimates"},
               {"version", 1},
               {"simulator", study.simulator},
               {"sha256", study.simulatorDigest},
               {"simulatorVersion", study.simulatorVersion},
               {"kind", modeOf(study)},
               {"generator", generatorName(study.generator)},
               {"seed", study.seed},
               {"batchesPerUnit", study.batchesPerUnit},
               {"goal", goalAsJson(goal)},
               {"experiments", Json::array()}};
  for (std::size_t i = 0; i < study.experiments.size(); ++i) {
    const Experiment& experiment = study.experiments[i];
    const ExperimentStanding standing = standingOf(store, i, goal);
    Json variables = Json::array();
    for (std::size_t variable = 0; variable < standing.variables().size(); ++variable) {
      variables.push_back(variableToJson(standing, variable, goal));
    }
    json["experiments"].push_back({{"name", experiment.name},
                                   {"number", experiment.number},
                                   {"overrides", experiment.overrides},
                                   {"units", standing.units()},
                                   {"verdict", nameOf(standing.verdict())},
                                   {"word", standing.rule().word()},
                                   {"remarks", standing.remarks()},
                                   {"variables", variables}});
  }
  sink(json.dump(2) + "\n");
}

void exportObservationsAsCsv(StudyStore& store, const StudyGoal& goal, const TextSink& sink) {
  sink("experiment,unit,batch,variable,value\n");
  visitUnits(store, goal, [&](const Experiment& experiment, std::int64_t number, const UnitObservations& unit) {
    const std::string name = quoted(experiment.name);
    fmt::memory_buffer lines;
    for (const VariableObservations& row : unit.variables) {
      for (std::size_t batch = 0; batch < row.values.size(); ++batch) {
        fmt::format_to(std::back_inserter(lines), "{},{},{},{},{}\n", name, number, batch, row.variable,
                       row.values[batch]);
      }
    }
    sink(fmt::to_string(lines));
  });
}

void exportObservationsAsJson(StudyStore& store, const StudyGoal& goal, const TextSink& sink) {
  visitUnits(store, goal, [&](const Experiment& experiment, std::int64_t number, const UnitObservations& unit) {
    Json json = {{"experiment", experiment.name},
                 {"unit", number},
                 {"seed", unitSeed(store.identity().seed, experiment.name, number)},
                 {"variables", Json::array()}};
    for (const VariableObservations& row : unit.variables) {
      Json values = Json::array();
      for (const double value : row.values) {
        values.push_back(numberToJson(value));
      }
      json["variables"].push_back({{"variable", row.variable}, {"observations", values}});
    }
    sink(json.dump() + "\n");
  });
}

}  // namespace controller
