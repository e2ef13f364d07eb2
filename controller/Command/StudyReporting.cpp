#include "Command/StudyReporting.h"

#include <fmt/format.h>

#include <sstream>
#include <utility>

#include "Command/StudyFolder.h"
#include "Command/Version.h"
#include "Process/ResultFile.h"
#include "Report/HtmlReport.h"
#include "Report/ReportBuilder.h"
#include "Store/SafeFile.h"

namespace controller {
namespace {

/// The values of an override string, name by name.
NamedValues valuesOf(const std::string& overrides) {
  NamedValues values;
  std::istringstream stream(overrides);
  for (std::string letter, name, value;
       std::getline(stream, letter, ':') && std::getline(stream, name, ':') && std::getline(stream, value, ':');) {
    values.emplace_back(name, value);
  }
  return values;
}

NamedValues provenanceOf(StudyStore& store) {
  const StudyIdentity& study = store.identity();
  NamedValues provenance = {{"Simulator", store.text("simulatorPath").value_or(study.simulator)},
                            {"Simulator's version", study.simulatorVersion},
                            {"SHA-256 of the executable", study.simulatorDigest},
                            {"Kind of run", kindOf(study)},
                            {"Generator", generatorName(study.generator)},
                            {"Seed of the study", std::to_string(study.seed)},
                            {"Batches in a unit", std::to_string(study.batchesPerUnit)},
                            {"quorva", fmt::format("{}, commit {}", programVersion(), programCommit())}};
  for (std::size_t i = 0; i < study.experiments.size(); ++i) {
    const auto number = static_cast<std::int64_t>(i);
    if (store.hasUnit(number, 0)) {
      provenance.emplace_back(fmt::format("Unit 0 of \"{}\"", study.experiments[i].name),
                              store.unitRecord(number, 0).command);
    }
  }
  for (const SessionRecord& session : store.sessions()) {
    provenance.emplace_back(
        fmt::format("Run of {}", session.started),
        fmt::format("{} on {} (quorva {}), to {}: {}", session.command, session.host, session.version,
                    session.ended.empty() ? "an end that it could not tell of" : session.ended,
                    session.stopReason.empty() ? "none told" : session.stopReason));
  }
  return provenance;
}

std::string lastStopReason(StudyStore& store) {
  const auto sessions = store.sessions();
  return (sessions.empty() ? SessionRecord() : sessions.back()).reasonInWords();
}

}  // namespace

void writeReport(StudyStore& store, const StudyGoal& goal, const std::string& path) {
  const StudyIdentity& study = store.identity();
  ReportBuilder builder(fmt::format("Study of {}", study.simulator), goal.goal);
  for (std::size_t i = 0; i < study.experiments.size(); ++i) {
    const Experiment& experiment = study.experiments[i];
    std::vector<VariableHeading> headings;
    const ExperimentStanding empty(study, experiment, goal);
    for (const std::int32_t variable : empty.variables()) {
      headings.push_back(headingOf(goal.nameOf(variable)));
    }
    const std::size_t place =
        builder.addExperiment(experiment.name, valuesOf(experiment.overrides), std::move(headings));
    const ExperimentStanding standing =
        standingOf(store, i, goal, [&](const ExperimentStanding& now, const UnitObservations& unit) {
          const auto observations = now.observationsOf(unit);
          for (std::size_t variable = 0; variable < observations.size(); ++variable) {
            builder.add(place, variable, observations[variable]);
          }
        });
    builder.finishExperiment(place, nameOf(standing.verdict()), standing.rule().word(), standing.remarks());
  }
  std::ostringstream html;
  writeHtmlReport(builder.finish(lastStopReason(store), provenanceOf(store)), html);
  SafeFile file(path);
  file.write(html.str());
  file.finish();
}

std::string tableOfEstimates(const StudyIdentity& study, const std::vector<ExperimentStanding>& standings) {
  std::string table;
  for (std::size_t i = 0; i < standings.size(); ++i) {
    const ExperimentStanding& standing = standings[i];
    table += fmt::format("Experiment \"{}\": {}, {} units. {}\n", study.experiments[i].name, nameOf(standing.verdict()),
                         standing.units(), standing.rule().word());
    table +=
        fmt::format("  {:<24} {:>12} {:>14} {:>12} {:>12}\n", "variable", "batches", "mean", "half-width", "wanted");
    for (std::size_t variable = 0; variable < standing.variables().size(); ++variable) {
      const Estimate estimate = standing.rule().estimate(variable);
      table +=
          fmt::format("  {:<24} {:>12} {:>14.6g} {:>12.3g} {:>12.3g}\n", standing.rule().variableNames()[variable],
                      estimate.count, estimate.mean, estimate.halfWidth, standing.rule().wantedHalfWidth(variable));
    }
    for (const std::string& remark : standing.remarks()) {
      table += fmt::format("  {}\n", remark);
    }
  }
  return table;
}

}  // namespace controller
