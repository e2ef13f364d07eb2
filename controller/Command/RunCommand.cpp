#include "Command/RunCommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "Cluster/Cluster.h"
#include "Command/Progress.h"
#include "Command/StudyFolder.h"
#include "Command/StudyReporting.h"
#include "Command/Version.h"
#include "Process/LocalExecutor.h"
#include "Process/Sha256.h"
#include "Process/SignalPipe.h"
#include "Store/SafeFile.h"
#include "Study/SimulatorProbe.h"
#include "Study/StudyRun.h"

namespace controller {
namespace {

std::int32_t generatorOf(const std::string& name) {
  constexpr std::array<const char*, 3> kNames = {"lagged-fibonacci", "tausworthe", "mersenne-twister"};
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (name == kNames[i] || name == std::to_string(i)) {
      return static_cast<std::int32_t>(i);
    }
  }
  throw UsageError(fmt::format("--generator {}: lagged-fibonacci, tausworthe or mersenne-twister", name));
}

StudyIdentity setUpOf(const RunOptions& options, const std::string& simulator) {
  StudyIdentity study;
  study.simulator = std::filesystem::path(simulator).filename();
  study.simulatorDigest = sha256OfFile(simulator);
  study.isTerminating = options.mode == "terminating";
  study.generator = generatorOf(options.generator);
  study.seed = options.seed;
  study.batchesPerUnit = options.batchesPerUnit;
  return study;
}

/// Variables as in "0,3=late,5-7": the numbers, and the names of those that have one.
void readVariables(const std::string& text, StudyGoal& goal) {
  std::istringstream parts(text);
  std::string numbers;
  for (std::string part; std::getline(parts, part, ',');) {
    const std::size_t equals = part.find('=');
    numbers += part.substr(0, equals) + ",";
    if (equals != std::string::npos) {
      const auto named = readNumbers(part.substr(0, equals), "--variables");
      goal.names[static_cast<std::int32_t>(named.front())] = part.substr(equals + 1);
    }
  }
  for (const std::int64_t number : readNumbers(numbers, "--variables")) {
    goal.variables.push_back(static_cast<std::int32_t>(std::min<std::int64_t>(number, 1 << 20)));
  }
}

StudyGoal goalOf(const RunOptions& options) {
  StudyGoal goal;
  goal.goal.precision = readShare(options.precision);
  goal.goal.isRelative = !options.isAbsolute;
  goal.goal.confidence = options.confidence;
  goal.goal.leastBatches = options.leastBatches;
  goal.goal.greatestBatches = options.greatestBatches;
  goal.warmUpBatches = options.warmUp;
  goal.batchesTogether = options.together;
  if (!options.variables.empty()) {
    readVariables(options.variables, goal);
  }
  try {
    requireSound(goal.goal);
  } catch (const std::invalid_argument& fault) {
    throw UsageError(fault.what());
  }
  return goal;
}

std::string nameOf(std::int32_t number, std::vector<Assignment> point) {
  std::sort(point.begin(), point.end(), [](const Assignment& a, const Assignment& b) { return a.name < b.name; });
  std::string name = std::to_string(number);
  for (const Assignment& assignment : point) {
    name += fmt::format(" {}={}", assignment.name, assignment.value);
  }
  return name;
}

/// The experiments that are asked for, ascending.
std::vector<std::int32_t> numbersOf(const RunOptions& options, std::int32_t count) {
  if (options.experiments == "all") {
    std::vector<std::int32_t> all(static_cast<std::size_t>(count));
    std::iota(all.begin(), all.end(), 0);
    return all;
  }
  const std::vector<std::int64_t> asked = readNumbers(options.experiments, "--experiment");
  if (asked.back() >= count) {
    throw UsageError(
        fmt::format("there is no experiment {}: the simulator's experiments are 0 to {}", asked.back(), count - 1));
  }
  return {asked.begin(), asked.end()};
}

/// The points of the grid that the settings make, with the types of their variables.
std::vector<std::vector<Assignment>> pointsOf(const RunOptions& options, SimulatorProbe& probe,
                                              std::int32_t experiment) {
  std::vector<Setting> settings;
  for (const std::string& text : options.settings) {
    settings.push_back(readSetting(text));
  }
  static_cast<void>(gridPoints(settings));  // faults of the command line are told before anything is run
  for (Setting& setting : settings) {
    probe.findType(setting, experiment);
  }
  return gridPoints(settings);
}

/// Fills in the variables of the experiments. What the stored study already knows is taken over, not asked for again.
void findVariables(SimulatorProbe& probe, const StudyIdentity* stored, StudyIdentity& study) {
  const auto keyOf = [](const Experiment& experiment) { return std::pair(experiment.name, experiment.overrides); };
  std::map<std::pair<std::string, std::string>, std::vector<std::int32_t>> known;
  if (stored != nullptr && stored->simulatorDigest == study.simulatorDigest &&
      stored->isTerminating == study.isTerminating) {
    for (const Experiment& experiment : stored->experiments) {
      known[keyOf(experiment)] = experiment.variables;
    }
  }
  study.simulatorVersion = stored == nullptr ? "" : stored->simulatorVersion;
  for (Experiment& experiment : study.experiments) {
    if (const auto found = known.find(keyOf(experiment)); found != known.end()) {
      experiment.variables = found->second;
    } else {
      probe.describe(experiment);
      study.simulatorVersion = probe.simulatorVersion();
    }
  }
}

/// Fills in the experiments of the study.
void findExperiments(const RunOptions& options, SimulatorProbe& probe, const StudyIdentity* stored,
                     StudyIdentity& study) {
  const std::vector<std::int32_t> numbers = numbersOf(options, probe.countOfExperiments());
  const auto points = pointsOf(options, probe, numbers.front());
  for (const std::int32_t number : numbers) {
    for (const auto& point : points) {
      study.experiments.push_back({nameOf(number, point), number, overrideString(point), {}});
    }
  }
  findVariables(probe, stored, study);
}

void requireVariables(const StudyIdentity& study, const StudyGoal& goal) {
  for (const Experiment& experiment : study.experiments) {
    for (const std::int32_t variable : goal.variables) {
      if (!experiment.has(variable)) {
        throw UsageError(fmt::format("--variables: experiment \"{}\" has no variable {}; it has {}", experiment.name,
                                     variable, fmt::join(experiment.variables, ",")));
      }
    }
  }
}

void requireSame(const std::string& folder, const StudyIdentity& stored, const StudyIdentity& asked) {
  if (const std::string difference = differenceOf(stored, asked); !difference.empty()) {
    throw StoreError(
        fmt::format("the study in {} is another one: {}. Begin in another folder with --out", folder, difference));
  }
}

/// The store of the study, made where there is none.
std::unique_ptr<StudyStore> obtainStore(const RunOptions& options, const std::string& folder,
                                        const std::string& simulator, const StudyGoal& goal) {
  StudyIdentity study = setUpOf(options, simulator);
  const std::string path = storePath(folder);
  std::unique_ptr<StudyStore> store;
  if (std::filesystem::exists(path)) {
    store = std::make_unique<StudyStore>(path, Database::Access::Write);
    if (study.batchesPerUnit == 0) {
      study.batchesPerUnit = store->identity().batchesPerUnit;
    }
    StudyIdentity asked = study;  // what costs no run is compared first
    asked.experiments = store->identity().experiments;
    requireSame(folder, store->identity(), asked);
  }
  SimulatorProbe probe(simulator, scratchPath(folder), study);
  findExperiments(options, probe, store ? &store->identity() : nullptr, study);
  requireVariables(study, goal);
  if (!store) {
    study.batchesPerUnit = study.batchesPerUnit != 0 ? study.batchesPerUnit : probe.usefulUnit();
    StudyStore::create(path, study);
    store = std::make_unique<StudyStore>(path, Database::Access::Write);
  }
  requireSame(folder, store->identity(), study);
  return store;
}

std::string reasonInWords(StopReason reason) {
  switch (reason) {
    case StopReason::Reached:
      return "the precision is reached";
    case StopReason::CannotReach:
      return "the precision cannot be reached";
    case StopReason::BatchesExhausted:
      return "the greatest number of batches is there, and the precision is not reached";
    case StopReason::TimeIsUp:
      return "the time is up, and the precision is not reached";
    case StopReason::Signal:
      return fmt::format("stopped by signal {}", SignalPipe::stopSignal());
  }
  return "";
}

int statusOf(StopReason reason) {
  return reason == StopReason::Signal    ? statusOfSignal(SignalPipe::stopSignal())
         : reason == StopReason::Reached ? kReached
                                         : kStoppedShort;
}

}  // namespace

std::string findProgram(const std::string& name) {
  std::vector<std::string> places;
  if (name.find('/') != std::string::npos) {
    places.push_back(name);
  } else if (const char* const path = std::getenv("PATH"); path != nullptr) {
    std::istringstream folders(path);
    for (std::string folder; std::getline(folders, folder, ':');) {
      places.push_back((folder.empty() ? "." : folder) + "/" + name);
    }
  }
  for (const std::string& place : places) {
    if (std::filesystem::is_regular_file(place) && ::access(place.c_str(), X_OK) == 0) {
      return std::filesystem::canonical(place);
    }
  }
  const bool isThere = name.find('/') != std::string::npos && std::filesystem::exists(name);
  throw SimulatorRefusal(
      fmt::format("the simulator {} {}", name, isThere ? "is no program that may be executed" : "does not exist"));
}

int runStudy(const RunOptions& options, const std::string& commandLine) {
  const StudyGoal goal = goalOf(options);
  const RunLimits limits = {readSeconds(options.timeLimit), readSeconds(options.unitTimeLimit), options.attempts};
  const std::string simulator = findProgram(options.simulator);
  const std::string named =
      options.out.empty() ? "quorva-" + std::filesystem::path(simulator).filename().string() : options.out;
  std::filesystem::create_directories(named);
  const std::string folder = std::filesystem::canonical(named);
  const FolderLock lock(lockPath(folder));
  const std::unique_ptr<StudyStore> store = obtainStore(options, folder, simulator, goal);
  store->setText("goal", goalToJson(goal));
  store->setText("simulatorPath", simulator);
  SessionRecord record = {timeOfDay(), "", hostName(), fmt::format("{} ({})", programVersion(), programCommit()),
                          commandLine, ""};
  const std::int64_t session = store->beginSession(record);
  store->commit();

  const auto executor = makeExecutor(static_cast<std::size_t>(options.jobs), scratchPath(folder));
  StudyRun run(*store, *executor, simulator, goal, limits);
  StopReason reason{};
  {
    Progress progress(options.isQuiet);
    run.onProgress = [&](const StudyRun& now) { progress.show(now); };
    run.onFault = [&](const std::string& fault) { progress.tellFault(fault); };
    try {
      reason = run.run();
    } catch (const StudyFailure& failure) {
      store->endSession(session, timeOfDay(), "a unit failed");
      store->commit();
      throw;
    }
  }
  store->endSession(session, timeOfDay(), reasonInWords(reason));
  store->commit();
  if (reason == StopReason::Signal) {
    fmt::print(stderr, "quorva: {}; the same command goes on with the study in {}\n", reasonInWords(reason), named);
    return statusOf(reason);
  }
  writeReport(*store, goal, reportPath(folder));
  if (!options.isQuiet) {
    fmt::print("{}", tableOfEstimates(store->identity(), run.standings()));
    fmt::print("Stopped: {}.\nReport: {}\n", reasonInWords(reason), reportPath(named));
  }
  return statusOf(reason);
}

}  // namespace controller
