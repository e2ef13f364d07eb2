#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "Process/Executor.h"
#include "Store/StudyStore.h"
#include "Study/ExperimentStanding.h"

namespace controller {

/// Bounds of the work, which no result depends on.
struct RunLimits {
  double timeLimitSeconds = 0;      ///< of the whole call; 0 for none
  double unitTimeLimitSeconds = 0;  ///< of one unit; 0 for an hour at first, and then by what units take
  std::int64_t attempts = 5;        ///< at one unit, 1 or more
};

/// A unit that cannot be run, or a simulator that cannot be relied on; in words for the user.
class StudyFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Why a call ended.
enum class StopReason { Reached, CannotReach, BatchesExhausted, TimeIsUp, Signal };

/// Runs the units of a study until every experiment has its precision.
///
/// Counting   units count in the order of their numbers, whenever they arrive, and the stopping rule is asked behind each of
///            them. Which units count, and with them every result, thus depends on no worker, no speed and no restart.
/// Ahead      while a unit is awaited, later ones are run; those behind the end of an experiment are stored and do not count
/// Storing    what has arrived is made durable twice a second
/// Faults     a unit whose simulator dies, hangs or leaves a damaged file is run again, a bounded number of times
class StudyRun {
 public:
  /// simulator  absolute path of the executable
  /// Borrows    the store and the executor
  StudyRun(StudyStore& store, Executor& executor, std::string simulator, StudyGoal goal, RunLimits limits);

  /// Called now and then, and told of faults that the run got over.
  std::function<void(const StudyRun&)> onProgress = [](const StudyRun&) {};
  std::function<void(const std::string&)> onFault = [](const std::string&) {};

  /// To the end of the study, the time limit or a signal. Throws StudyFailure and StoreError; what has arrived is stored.
  StopReason run();

  [[nodiscard]] const std::vector<ExperimentStanding>& standings() const { return standings_; }
  [[nodiscard]] const StudyIdentity& identity() const { return store_.identity(); }
  /// Batches that arrived in this call, and the seconds since its beginning.
  [[nodiscard]] std::int64_t batchesArrived() const { return batchesArrived_; }
  [[nodiscard]] double secondsPassed() const;

 private:
  using Clock = std::chrono::steady_clock;
  struct Unit {
    std::size_t experiment = 0;
    std::int64_t number = 0;
    bool operator<(const Unit& other) const {
      return std::tie(experiment, number) < std::tie(other.experiment, other.number);
    }
  };

  void countStoredUnits(std::size_t experiment);
  void fillExecutor();
  [[nodiscard]] std::optional<std::size_t> nextExperiment() const;
  void startUnit(const Unit& unit);
  [[nodiscard]] const Experiment& experimentOf(const Unit& unit) const {
    return identity().experiments[unit.experiment];
  }
  [[nodiscard]] RunRequest requestOf(const Unit& unit) const;
  [[nodiscard]] UnitRecord recordOf(const Unit& unit, const RunOutcome& outcome) const;
  void takeIn(const Unit& unit, const RunOutcome& outcome);
  void noteFault(const Unit& unit, const RunOutcome& outcome, const std::string& fault);
  void leaveExperiment(std::size_t experiment);
  void commitNowAndThen();
  [[nodiscard]] bool isDone() const;
  [[nodiscard]] StopReason reasonOfEnd() const;
  [[nodiscard]] double unitTimeLimit() const;

  StudyStore& store_;
  Executor& executor_;
  std::string simulator_;
  StudyGoal goal_;
  RunLimits limits_;
  Clock::time_point started_ = Clock::now();
  Clock::time_point lastCommit_ = Clock::now();
  std::vector<ExperimentStanding> standings_;
  std::vector<std::set<std::int64_t>> arrivedEarly_;  // stored, and not counted yet
  std::map<std::int64_t, Unit> underWay_;             // by ticket
  std::vector<std::set<std::int64_t>> unitsUnderWay_;
  std::map<Unit, std::int64_t> attempts_;
  std::int64_t nextTicket_ = 0;
  std::int64_t batchesArrived_ = 0;
  double longestUnitSeconds_ = 0;
};

/// The time of day in UTC, ISO 8601, to the second.
[[nodiscard]] std::string timeOfDay();

}  // namespace controller
