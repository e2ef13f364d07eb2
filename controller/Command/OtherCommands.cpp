#include "Command/OtherCommands.h"

#include <fmt/format.h>
#include <unistd.h>

#include <bit>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>

#include "Command/Export.h"
#include "Command/RunCommand.h"
#include "Command/StudyFolder.h"
#include "Command/StudyReporting.h"
#include "Process/LocalExecutor.h"
#include "Process/Sha256.h"
#include "Process/SignalPipe.h"
#include "Store/SafeFile.h"
#include "Study/Grid.h"
#include "Study/Unit.h"

namespace controller {
namespace {

void writeTo(const std::string& path, const std::function<void(const TextSink&)>& writer) {
  if (!path.empty()) {
    SafeFile file(path);
    writer([&](const std::string& text) { file.write(text); });
    file.finish();
    return;
  }
  writer([](const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
      throw std::runtime_error("standard output cannot be written to");
    }
  });
}

/// Where two units differ, or nothing where they are the same bit for bit.
std::string differenceOf(const UnitObservations& stored, const UnitObservations& now) {
  if (stored.variables.size() != now.variables.size()) {
    return fmt::format("{} variables are stored, and there are {}", stored.variables.size(), now.variables.size());
  }
  for (std::size_t i = 0; i < stored.variables.size(); ++i) {
    const VariableObservations& there = stored.variables[i];
    const VariableObservations& here = now.variables[i];
    if (there.variable != here.variable || there.values.size() != here.values.size()) {
      return fmt::format("variable {} with {} observations is stored, and there is variable {} with {}", there.variable,
                         there.values.size(), here.variable, here.values.size());
    }
    for (std::size_t batch = 0; batch < there.values.size(); ++batch) {
      if (std::bit_cast<std::uint64_t>(there.values[batch]) != std::bit_cast<std::uint64_t>(here.values[batch])) {
        return fmt::format("variable {}, batch {}: {} is stored, and there is {}", there.variable, batch,
                           there.values[batch], here.values[batch]);
      }
    }
  }
  return "";
}

/// Runs one unit again; gives whether it came out the same.
bool rerunUnit(StudyStore& store, const std::string& simulator, std::size_t place, std::int64_t unit,
               const std::string& scratch) {
  const StudyIdentity& study = store.identity();
  const Experiment& experiment = study.experiments[place];
  const UnitObservations stored = store.observations(static_cast<std::int64_t>(place), unit);
  const RunOutcome outcome = runAlone(unitRequest(study, experiment, unit, simulator), scratch);
  if (!outcome.isGood()) {
    throw std::runtime_error(
        fmt::format("unit {} of \"{}\": the simulator {}", unit, experiment.name, describe(outcome)));
  }
  const std::string difference = differenceOf(stored, unitObservations(study, experiment, unit, outcome.resultFile));
  fmt::print("Unit {} of \"{}\": {}\n", unit, experiment.name,
             difference.empty() ? "the same, bit for bit" : difference);
  return difference.empty();
}

}  // namespace

int reportStudy(const ReportOptions& options) {
  const auto store = openStudy(options.folder);
  const std::string path = options.output.empty() ? reportPath(options.folder) : options.output;
  writeReport(*store, storedGoal(*store), path);
  fmt::print("Report: {}\n", path);
  return kReached;
}

int exportStudy(const ExportOptions& options) {
  const auto store = openStudy(options.folder);
  const StudyGoal goal = storedGoal(*store);
  const bool isJson = options.format == "json";
  writeTo(options.output, [&](const TextSink& sink) {
    if (options.wantsObservations) {
      (isJson ? exportObservationsAsJson : exportObservationsAsCsv)(*store, goal, sink);
    } else {
      (isJson ? exportEstimatesAsJson : exportEstimatesAsCsv)(*store, goal, sink);
    }
  });
  return kReached;
}

int rerunUnits(const RerunOptions& options) {
  const auto store = openStudy(options.folder);
  const StudyIdentity& study = store->identity();
  const std::string simulator = findProgram(
      options.simulator.empty() ? store->text("simulatorPath").value_or(study.simulator) : options.simulator);
  if (const std::string digest = sha256OfFile(simulator); digest != study.simulatorDigest) {
    throw StoreError(
        fmt::format("{} is another executable than that of the study: its SHA-256 is {}, and that of the study {}",
                    simulator, digest, study.simulatorDigest));
  }
  const auto scratch = std::filesystem::temp_directory_path() / fmt::format("quorva-rerun-{}", ::getpid());
  bool areSame = true;
  bool isFound = false;
  for (std::size_t place = 0; place < study.experiments.size(); ++place) {
    if (!options.experiment.empty() && options.experiment != study.experiments[place].name) {
      continue;
    }
    isFound = true;
    const auto units =
        options.units == "all" ? store->units(static_cast<std::int64_t>(place)) : readNumbers(options.units, "--units");
    for (const std::int64_t unit : units) {
      areSame = rerunUnit(*store, simulator, place, unit, scratch) && areSame;
      if (SignalPipe::stopSignal() != 0) {
        return statusOfSignal(SignalPipe::stopSignal());
      }
    }
  }
  if (!isFound) {
    std::string names;
    for (const Experiment& experiment : study.experiments) {
      names += fmt::format("\n  {}", experiment.name);
    }
    throw UsageError(fmt::format("the study has no experiment \"{}\"; it has{}", options.experiment, names));
  }
  return areSame ? kReached : kFailed;
}

int tellStatus(const StatusOptions& options) {
  const auto store = openStudy(options.folder);
  const StudyIdentity& study = store->identity();
  const StudyGoal goal = storedGoal(*store);
  std::vector<ExperimentStanding> standings;
  for (std::size_t i = 0; i < study.experiments.size(); ++i) {
    standings.push_back(standingOf(*store, i, goal));
  }
  fmt::print("Study of {} ({}), seed {}, {} batches in a unit\n", study.simulator, kindOf(study), study.seed,
             study.batchesPerUnit);
  fmt::print("{}", tableOfEstimates(study, standings));
  for (std::size_t i = 0; i < study.experiments.size(); ++i) {
    fmt::print("Stored for \"{}\": {} units, of which {} count\n", study.experiments[i].name,
               store->countOfUnits(static_cast<std::int64_t>(i)), standings[i].units());
  }
  for (const SessionRecord& session : store->sessions()) {
    fmt::print("{} to {} on {}: {}\n", session.started, session.ended.empty() ? "?" : session.ended, session.host,
               session.reasonInWords());
  }
  return kReached;
}

}  // namespace controller
