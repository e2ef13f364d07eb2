#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "Process/ResultFile.h"
#include "Process/Run.h"
#include "Study/Experiment.h"
#include "Study/Grid.h"

namespace controller {

/// A simulator that is not to be had as it is asked for: an unknown experiment or global variable, a value that it refuses,
/// or a program that is no simulator. The text holds the simulator's own words.
class SimulatorRefusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Learns what a simulator has to offer by short runs of it, as it has no option that lists anything.
///
/// Experiments   a number far too large is answered with the numbers that there are
/// Variables     one batch tells which numbers have observations. A terminating run writes zeros for the variables of
///               steady-state runs, so a batch of those tells which ones to leave out
/// Names         a global variable that does not exist is told of on standard error
/// Types         an override must name the type of its variable, as it is stored bit by bit; see letterOf
class SimulatorProbe {
 public:
  /// simulator      absolute path of the executable
  /// scratchFolder  for the runs, made and removed
  /// setUp          seed, generator and kind of run
  SimulatorProbe(std::string simulator, std::string scratchFolder, StudyIdentity setUp);

  /// Number of the simulator's experiments; they are 0 to one less.
  [[nodiscard]] std::int32_t countOfExperiments();
  /// Fills in the letters of a setting's type and checks it against the simulator.
  ///
  /// What an override stores is eight bytes, of which the variable reads as many as it has. So bytes can be put together
  /// that read as the value for a double and, their first four, as the value for an integer: with them and with the four
  /// alone, a run of the same seed comes out the same if the variable is an integer; if not, it is a double. Where the run
  /// also comes out the same with other values, nothing is known, and the user is asked for the type.
  void findType(Setting& setting, std::int32_t experiment);
  /// Checks the experiment as it stands, and fills in its variables.
  void describe(Experiment& experiment);

  [[nodiscard]] const std::string& simulatorVersion() const { return version_; }
  /// Batches that fire some millions of actions together, in the heaviest experiment described so far: enough for the start
  /// of a process to be next to nothing beside them. It follows from the model alone, and not from the machine's speed.
  [[nodiscard]] std::int64_t usefulUnit() const;

 private:
  /// All that tells two runs apart, but for times and for the overrides themselves.
  struct Trial {
    RunOutcome outcome;
    std::string signature;
  };

  /// One batch of an experiment.
  struct Batch {
    RunOutcome outcome;
    UnitObservations observations;
    std::string fault;  ///< in words; empty for none
  };

  [[nodiscard]] RunOutcome run(const std::vector<std::string>& arguments, int cpuLimitSeconds, bool wantsTrace);
  [[nodiscard]] Trial tryOverride(const std::string& triple, std::int32_t experiment, int cpuLimitSeconds);
  void refuseUnknownName(const std::string& name, const RunOutcome& outcome) const;
  [[nodiscard]] char typeByValues(const Setting& setting, std::int32_t experiment);
  [[nodiscard]] char typeByInteger(const std::string& name, std::int32_t value, std::int32_t experiment);
  [[nodiscard]] char typeByFraction(const std::string& name, const std::string& value, std::int32_t experiment);
  void requireFit(const std::string& name, std::int32_t value, std::int32_t experiment);
  [[nodiscard]] Batch runBatch(const Experiment& experiment, bool isTerminating, int cpuLimitSeconds);

  std::string simulator_;
  std::string scratchFolder_;
  StudyIdentity setUp_;
  std::string version_;
  std::int64_t actionsOfABatch_ = 0;  // 0 where no run has told
};

/// The override string of a point, as option -O has it. Throws UsageError where it is longer than a simulator takes.
[[nodiscard]] std::string overrideString(const std::vector<Assignment>& point);

}  // namespace controller
