#include "Study/StudyRun.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include "Process/SignalPipe.h"
#include "Study/Unit.h"
#include "Study/UnitSeed.h"

namespace controller {
namespace {

constexpr std::chrono::milliseconds kBetweenCommits{500};
constexpr std::chrono::milliseconds kLongestWait{200};
constexpr double kFirstUnitLimitSeconds = 3600;
constexpr double kLeastUnitLimitSeconds = 60;
constexpr double kUnitLimitFactor = 20;
constexpr std::int64_t kAttemptsAtRefusal = 2;  // a simulator that refuses says the same thing each time

/// Errors of a start that another start does not mend.
bool isForGood(int error) {
  return error == ENOENT || error == EACCES || error == ENOEXEC || error == ENOTDIR || error == EISDIR;
}

}  // namespace

std::string timeOfDay() {
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::time(nullptr)));
}

StudyRun::StudyRun(StudyStore& store, Executor& executor, std::string simulator, StudyGoal goal, RunLimits limits)
    : store_(store), executor_(executor), simulator_(std::move(simulator)), goal_(std::move(goal)), limits_(limits) {
  for (const Experiment& experiment : identity().experiments) {
    standings_.emplace_back(identity(), experiment, goal_);
  }
  arrivedEarly_.resize(standings_.size());
  unitsUnderWay_.resize(standings_.size());
}

double StudyRun::secondsPassed() const {
  return std::chrono::duration<double>(Clock::now() - started_).count();
}

StopReason StudyRun::run() {
  for (std::size_t i = 0; i < standings_.size(); ++i) {
    const auto stored = store_.units(static_cast<std::int64_t>(i));
    arrivedEarly_[i].insert(stored.begin(), stored.end());
    countStoredUnits(i);
  }
  try {
    while (!isDone()) {
      fillExecutor();
      for (const Executor::Finished& finished : executor_.wait(kLongestWait)) {
        const auto found = underWay_.find(finished.ticket);
        if (found == underWay_.end()) {
          continue;
        }
        const Unit unit = found->second;
        underWay_.erase(found);
        unitsUnderWay_[unit.experiment].erase(unit.number);
        takeIn(unit, finished.outcome);
      }
      commitNowAndThen();
      onProgress(*this);
    }
  } catch (const StudyFailure&) {
    store_.commit();
    throw;
  }
  store_.commit();
  for (const auto& [ticket, unit] : underWay_) {
    executor_.cancel(ticket);
  }
  underWay_.clear();
  return reasonOfEnd();
}

bool StudyRun::isDone() const {
  const bool isTimeUp = limits_.timeLimitSeconds > 0 && secondsPassed() >= limits_.timeLimitSeconds;
  return isTimeUp || SignalPipe::stopSignal() != 0 ||
         std::all_of(standings_.begin(), standings_.end(),
                     [](const ExperimentStanding& standing) { return standing.verdict() != Verdict::GoOn; });
}

StopReason StudyRun::reasonOfEnd() const {
  const auto hasSome = [&](Verdict verdict) {
    return std::any_of(standings_.begin(), standings_.end(),
                       [verdict](const ExperimentStanding& standing) { return standing.verdict() == verdict; });
  };
  if (hasSome(Verdict::GoOn)) {
    return SignalPipe::stopSignal() != 0 ? StopReason::Signal : StopReason::TimeIsUp;
  }
  return hasSome(Verdict::BatchesExhausted) ? StopReason::BatchesExhausted
         : hasSome(Verdict::CannotReach)    ? StopReason::CannotReach
                                            : StopReason::Reached;
}

void StudyRun::countStoredUnits(std::size_t experiment) {
  ExperimentStanding& standing = standings_[experiment];
  std::set<std::int64_t>& early = arrivedEarly_[experiment];
  while (standing.verdict() == Verdict::GoOn && early.erase(standing.units()) > 0 && SignalPipe::stopSignal() == 0) {
    standing.count(store_.observations(static_cast<std::int64_t>(experiment), standing.units()));
  }
  if (standing.verdict() != Verdict::GoOn) {
    leaveExperiment(experiment);
  }
}

void StudyRun::leaveExperiment(std::size_t experiment) {
  for (auto one = underWay_.begin(); one != underWay_.end();) {
    if (one->second.experiment == experiment) {
      executor_.cancel(one->first);
      one = underWay_.erase(one);
    } else {
      ++one;
    }
  }
  unitsUnderWay_[experiment].clear();
}

std::optional<std::size_t> StudyRun::nextExperiment() const {
  // The experiment with the fewest units ahead of what is counted: what is run ahead may turn out not to be wanted.
  std::optional<std::size_t> best;
  const auto ahead = [&](std::size_t i) { return arrivedEarly_[i].size() + unitsUnderWay_[i].size(); };
  for (std::size_t i = 0; i < standings_.size(); ++i) {
    const bool hasRoom = arrivedEarly_[i].size() < 2 * executor_.capacity();
    if (standings_[i].verdict() == Verdict::GoOn && hasRoom && (!best || ahead(i) < ahead(*best))) {
      best = i;
    }
  }
  return best;
}

void StudyRun::fillExecutor() {
  while (executor_.running() < executor_.capacity() && SignalPipe::stopSignal() == 0) {
    const auto experiment = nextExperiment();
    if (!experiment) {
      return;
    }
    std::int64_t unit = standings_[*experiment].units();
    while (arrivedEarly_[*experiment].count(unit) + unitsUnderWay_[*experiment].count(unit) > 0) {
      ++unit;
    }
    startUnit({*experiment, unit});
  }
}

double StudyRun::unitTimeLimit() const {
  if (limits_.unitTimeLimitSeconds > 0) {
    return limits_.unitTimeLimitSeconds;
  }
  return longestUnitSeconds_ > 0 ? kLeastUnitLimitSeconds + kUnitLimitFactor * longestUnitSeconds_
                                 : kFirstUnitLimitSeconds;
}

void StudyRun::startUnit(const Unit& unit) {
  RunRequest request = requestOf(unit);
  request.timeLimitSeconds = unitTimeLimit();
  executor_.start(nextTicket_, request);
  underWay_[nextTicket_++] = unit;
  unitsUnderWay_[unit.experiment].insert(unit.number);
}

RunRequest StudyRun::requestOf(const Unit& unit) const {
  return unitRequest(identity(), experimentOf(unit), unit.number, simulator_);
}

UnitRecord StudyRun::recordOf(const Unit& unit, const RunOutcome& outcome) const {
  const auto faults = attempts_.find(unit);
  UnitRecord record;
  record.experiment = static_cast<std::int64_t>(unit.experiment);
  record.unit = unit.number;
  record.seed = unitSeed(identity().seed, experimentOf(unit).name, unit.number);
  record.command = commandOf(requestOf(unit));
  record.host = outcome.host;
  record.finished = timeOfDay();
  record.wallSeconds = outcome.wallSeconds;
  record.cpuSeconds = outcome.cpuSeconds;
  record.attempts = 1 + (faults == attempts_.end() ? 0 : faults->second);
  return record;
}

void StudyRun::takeIn(const Unit& unit, const RunOutcome& outcome) {
  if (!outcome.isGood()) {
    noteFault(unit, outcome, "the simulator " + describe(outcome));
    return;
  }
  const Experiment& experiment = experimentOf(unit);
  UnitObservations observations;
  try {
    observations = unitObservations(identity(), experiment, unit.number, outcome.resultFile);
  } catch (const ResultFileError& error) {
    noteFault(unit, outcome, error.what());
    return;
  }
  if (observations.variables.size() != experiment.variables.size()) {
    noteFault(unit, outcome,
              fmt::format("the result file holds {} of the {} variables of the study", observations.variables.size(),
                          experiment.variables.size()));
    return;
  }
  store_.addUnit(recordOf(unit, outcome), observations);
  attempts_.erase(unit);
  batchesArrived_ += identity().batchesPerUnit;
  longestUnitSeconds_ = std::max(longestUnitSeconds_, outcome.wallSeconds);
  arrivedEarly_[unit.experiment].insert(unit.number);
  countStoredUnits(unit.experiment);
}

void StudyRun::noteFault(const Unit& unit, const RunOutcome& outcome, const std::string& fault) {
  const std::int64_t attempt = ++attempts_[unit];
  const bool isRefusal = outcome.end == RunEnd::Exited && outcome.number != 0;
  const std::string text = fmt::format("unit {} of experiment \"{}\", attempt {}: {}{}", unit.number,
                                       experimentOf(unit).name, attempt, fault, lastWordsClause(outcome));
  const bool isForGoodNow =
      outcome.end == RunEnd::Replaced || (outcome.end == RunEnd::NotStarted && isForGood(outcome.number));
  if (attempt < (isRefusal ? std::min(limits_.attempts, kAttemptsAtRefusal) : limits_.attempts) && !isForGoodNow) {
    onFault(text);
    return;
  }
  throw StudyFailure(fmt::format("{}\nThe unit is given up. Its command: {}", text, commandOf(requestOf(unit))));
}

void StudyRun::commitNowAndThen() {
  if (Clock::now() - lastCommit_ >= kBetweenCommits || executor_.running() == 0) {
    store_.commit();
    lastCommit_ = Clock::now();
  }
}

}  // namespace controller
