#include "Study/SimulatorProbe.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <optional>
#include <span>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "Process/LocalExecutor.h"
#include "Process/Sha256.h"
#include "Process/SignalPipe.h"

namespace controller {
namespace {

constexpr std::size_t kGreatestWord = 128;  // that a simulator takes on its command line
constexpr double kProbeSeconds = 600;       // of wall time
constexpr int kTrialSeconds = 30;           // of processor time, for a run whose values may make it endless
constexpr std::int64_t kGreatestProbeFile = 64 << 20;
constexpr std::int64_t kActionsOfAUnit = 5'000'000;
constexpr int kAttempts = 20;  // at a run that somebody kills
constexpr std::uint32_t kProbeSeed = 20261;

/// Seconds of processor time for a run that may come out as one before it, and may be endless if it does not.
int limitAfter(const RunOutcome& outcome) {
  return 2 + static_cast<int>(20.0 * outcome.cpuSeconds);
}

/// By a signal that a run does not bring upon itself.
bool isKilledFromOutside(const RunOutcome& outcome) {
  constexpr std::array<int, 4> kFromOutside = {SIGKILL, SIGTERM, SIGINT, SIGHUP};
  return outcome.end == RunEnd::Killed &&
         std::find(kFromOutside.begin(), kFromOutside.end(), outcome.number) != kFromOutside.end();
}

std::optional<std::int32_t> asInteger(const std::string& text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isAll = error == std::errc() && end == text.data() + text.size();
  return isAll ? std::optional(value) : std::nullopt;
}

/// The number from 0 to 999999999 that stands behind the words, where they stand first in a text.
std::optional<std::int32_t> numberBehind(std::string_view words, std::string_view text) {
  const std::size_t place = text.find(words);
  if (place == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view rest = text.substr(place + words.size());
  const std::string_view digits = rest.substr(0, rest.find_first_not_of("0123456789"));
  return digits.size() > 9 ? std::nullopt : asInteger(std::string(digits));
}

std::optional<double> asDouble(const std::string& text) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  const bool isAll = !text.empty() && *end == '\0' && std::isfinite(value);
  return isAll ? std::optional(value) : std::nullopt;
}

/// A double near `value` whose low four bytes are the given ones, as a text that is read back to the same bits.
std::string doubleWithLowBytes(double value, std::uint32_t low) {
  const std::uint64_t bits = (std::bit_cast<std::uint64_t>(value) & 0xffffffff00000000U) | low;
  return fmt::format("{:a}", std::bit_cast<double>(bits));
}

std::string triple(char letter, const std::string& name, const std::string& value) {
  return fmt::format("{}:{}:{}", letter, name, value);
}

/// Refuses values that are no numbers.
void requireNumbers(const Setting& setting) {
  for (const std::string& value : setting.values) {
    if (!asDouble(value)) {
      throw UsageError(
          fmt::format("--set {}={}: {} is no number; true and false are 1 and 0 with --set bool:{}=..., and a "
                      "character needs --set char:{}=...",
                      setting.name, value, value, setting.name, setting.name));
    }
  }
}

std::vector<std::int32_t> variablesOf(const UnitObservations& unit) {
  std::vector<std::int32_t> variables;
  for (const VariableObservations& row : unit.variables) {
    variables.push_back(row.variable);
  }
  return variables;
}

/// Standard output without the lines that differ from run to run.
std::string steadyLines(const std::string& text) {
  std::string kept;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (!line.starts_with("OverrideString is ") && line.find("ime=") == std::string::npos &&
        !line.starts_with("CPU time (s): ")) {
      kept += line + '\n';
    }
  }
  return kept;
}

}  // namespace

std::string overrideString(const std::vector<Assignment>& point) {
  std::string text;
  for (const Assignment& assignment : point) {
    text += text.empty() ? "" : ":";
    text += triple(assignment.letter, assignment.name, assignment.value);
  }
  if (text.size() > kGreatestWord) {
    throw UsageError(
        fmt::format("the values \"{}\" are too long together: a simulator takes {} characters", text, kGreatestWord));
  }
  return text;
}

SimulatorProbe::SimulatorProbe(std::string simulator, std::string scratchFolder, StudyIdentity setUp)
    : simulator_(std::move(simulator)), scratchFolder_(std::move(scratchFolder)), setUp_(std::move(setUp)) {}

RunOutcome SimulatorProbe::run(const std::vector<std::string>& arguments, int cpuLimitSeconds, bool wantsTrace) {
  RunRequest request;
  request.program = simulator_;
  request.arguments = arguments;
  request.timeLimitSeconds = kProbeSeconds;
  request.cpuLimitSeconds = cpuLimitSeconds;
  request.wantsTrace = wantsTrace;
  request.greatestFileBytes = kGreatestProbeFile;
  RunOutcome outcome = runAlone(request, scratchFolder_);
  for (int attempt = 1; isKilledFromOutside(outcome) && attempt < kAttempts && SignalPipe::stopSignal() == 0;
       ++attempt) {
    outcome = runAlone(request, scratchFolder_);
  }
  if (SignalPipe::stopSignal() != 0) {
    throw SimulatorRefusal("stopped by a signal");
  }
  if (outcome.end == RunEnd::NotStarted || outcome.end == RunEnd::TimedOut) {
    throw SimulatorRefusal(fmt::format("the simulator {} {}", simulator_, controller::describe(outcome)));
  }
  return outcome;
}

std::int32_t SimulatorProbe::countOfExperiments() {
  const RunOutcome outcome = run({"-N", "1", "-e", "2147483647"}, 0, false);
  const auto last = numberBehind("the study's experiments are 0 to ", outcome.err);
  if (outcome.end != RunEnd::Exited || outcome.number != 1 || !last) {
    throw SimulatorRefusal(fmt::format("{} does not answer as a simulator does when asked for its experiments: it {}{}",
                                       simulator_, controller::describe(outcome),
                                       lastWordsClause(outcome, " without a word")));
  }
  return *last + 1;
}

SimulatorProbe::Trial SimulatorProbe::tryOverride(const std::string& override, std::int32_t experiment,
                                                  int cpuLimitSeconds) {
  if (override.size() > kGreatestWord) {
    throw UsageError(fmt::format("\"{}\" is too long: a simulator takes {} characters", override, kGreatestWord));
  }
  Trial trial;
  trial.outcome = run({"-t", setUp_.isTerminating ? "1" : "0", "-N", "1", "-e", std::to_string(experiment), "-s",
                       std::to_string(kProbeSeed), "-O", override},
                      cpuLimitSeconds, true);
  Sha256 digest;
  digest.add(std::as_bytes(std::span(trial.outcome.trace)));
  digest.add(trial.outcome.resultFile);
  // What had to be ended has come to some chance point.
  trial.signature = trial.outcome.end == RunEnd::Killed && trial.outcome.number != SIGABRT
                        ? fmt::format("signal {}", trial.outcome.number)
                        : fmt::format("{} {}\n{}\n{}\n{}", static_cast<int>(trial.outcome.end), trial.outcome.number,
                                      digest.finish(), steadyLines(trial.outcome.out), trial.outcome.err);
  return trial;
}

void SimulatorProbe::refuseUnknownName(const std::string& name, const RunOutcome& outcome) const {
  if (!outcome.isGood()) {
    return;
  }
  std::istringstream lines(outcome.err);
  for (std::string line; std::getline(lines, line);) {
    if (line.find(name) != std::string::npos) {
      throw UsageError(fmt::format("the simulator knows no global variable {}; its words: {}", name, line));
    }
  }
}

char SimulatorProbe::typeByInteger(const std::string& name, std::int32_t value, std::int32_t experiment) {
  const auto low = static_cast<std::uint32_t>(value);
  const Trial asBoth = tryOverride(triple('d', name, doubleWithLowBytes(value, low)), experiment, kTrialSeconds);
  refuseUnknownName(name, asBoth.outcome);
  const int limit = limitAfter(asBoth.outcome);
  const Trial asInteger = tryOverride(triple('i', name, std::to_string(value)), experiment, limit);
  if (asBoth.signature != asInteger.signature) {
    return 'd';
  }
  // With no other value does an integer read the same bytes; a float reads next to nothing, as it does of the value.
  const Trial other = tryOverride(triple('i', name, std::to_string(value == 1 ? 2 : 1)), experiment, limit);
  return other.signature != asInteger.signature ? 'i' : '\0';
}

char SimulatorProbe::typeByFraction(const std::string& name, const std::string& value, std::int32_t experiment) {
  const double number = *asDouble(value);
  const auto low = std::bit_cast<std::uint32_t>(static_cast<float>(number));
  const Trial asBoth = tryOverride(triple('d', name, doubleWithLowBytes(number, low)), experiment, kTrialSeconds);
  refuseUnknownName(name, asBoth.outcome);
  const int limit = limitAfter(asBoth.outcome);
  const Trial asFloat = tryOverride(triple('f', name, value), experiment, limit);
  return asBoth.signature != asFloat.signature ? 'd' : '\0';
}

void SimulatorProbe::requireFit(const std::string& name, std::int32_t value, std::int32_t experiment) {
  if (value >= std::numeric_limits<std::int16_t>::min() && value <= std::numeric_limits<std::int16_t>::max()) {
    return;
  }
  const auto cut = static_cast<std::int16_t>(value);
  const Trial whole = tryOverride(triple('i', name, std::to_string(value)), experiment, kTrialSeconds);
  const Trial part = tryOverride(triple('i', name, std::to_string(cut)), experiment, kTrialSeconds);
  if (whole.signature == part.signature) {
    throw UsageError(
        fmt::format("--set {}={}: the simulator takes it for {}; the variable seems to be a short, up to 32767. "
                    "If it is not, give the type: --set int:{}={}",
                    name, value, cut, name, value));
  }
}

char SimulatorProbe::typeByValues(const Setting& setting, std::int32_t experiment) {
  for (const std::string& value : setting.values) {
    if (*asDouble(value) != 0.0) {
      const auto integer = asInteger(value);
      const char letter =
          integer ? typeByInteger(setting.name, *integer, experiment) : typeByFraction(setting.name, value, experiment);
      if (letter != '\0') {
        return letter;
      }
    }
  }
  return '\0';
}

void SimulatorProbe::findType(Setting& setting, std::int32_t experiment) {
  const std::string& name = setting.name;
  const std::vector<std::string>& values = setting.values;
  if (setting.letter != '\0') {
    const std::string asGiven = triple(setting.letter, name, values.front());
    refuseUnknownName(name, tryOverride(asGiven, experiment, kTrialSeconds).outcome);
    return;
  }
  requireNumbers(setting);
  if (std::all_of(values.begin(), values.end(), [](const std::string& value) { return *asDouble(value) == 0.0; })) {
    // It has the same bytes in every type.
    refuseUnknownName(name, tryOverride(triple('d', name, "0"), experiment, kTrialSeconds).outcome);
    setting.letter = 'd';
    return;
  }
  setting.letter = typeByValues(setting, experiment);
  const bool areIntegers =
      std::all_of(values.begin(), values.end(), [](const std::string& value) { return asInteger(value).has_value(); });
  if (setting.letter == '\0' || (setting.letter == 'i' && !areIntegers)) {
    throw UsageError(
        fmt::format("the type of the global variable {} does not show in a run of the simulator; give it: "
                    "--set double:{}=... or --set int:{}=..., likewise short, long, float, bool, char",
                    name, name, name));
  }
  if (setting.letter == 'i') {
    for (const std::string& value : values) {
      requireFit(name, *asInteger(value), experiment);
    }
  }
}

SimulatorProbe::Batch SimulatorProbe::runBatch(const Experiment& experiment, bool isTerminating, int cpuLimitSeconds) {
  std::vector<std::string> words = {"-t", isTerminating ? "1" : "0",         "-N", "1",
                                    "-e", std::to_string(experiment.number), "-r", std::to_string(setUp_.generator),
                                    "-s", std::to_string(kProbeSeed)};
  if (!experiment.overrides.empty()) {
    words.insert(words.end(), {"-O", experiment.overrides});
  }
  Batch batch;
  batch.outcome = run(words, cpuLimitSeconds, false);
  if (!batch.outcome.isGood()) {
    batch.fault = "it " + controller::describe(batch.outcome);
    return batch;
  }
  try {
    batch.observations =
        readResultFile(batch.outcome.resultFile, {kProbeSeed, setUp_.generator, experiment.number, isTerminating, 1});
  } catch (const ResultFileError& error) {
    batch.fault = error.what();
  }
  return batch;
}

std::int64_t SimulatorProbe::usefulUnit() const {
  const std::int64_t least = setUp_.isTerminating ? 10 : 100;
  const std::int64_t greatest = setUp_.isTerminating ? 100'000 : 10'000;
  if (actionsOfABatch_ == 0) {
    return setUp_.isTerminating ? 1000 : 100;
  }
  // A round number: 1, 2 or 5 with zeros behind.
  std::int64_t unit = least;
  for (std::int64_t power = 1; power <= greatest; power *= 10) {
    for (const std::int64_t digit : {1, 2, 5}) {
      if (digit * power * actionsOfABatch_ <= kActionsOfAUnit && digit * power <= greatest) {
        unit = std::max(unit, digit * power);
      }
    }
  }
  return unit;
}

void SimulatorProbe::describe(Experiment& experiment) {
  const Batch batch = runBatch(experiment, setUp_.isTerminating, 0);
  if (!batch.fault.empty()) {
    throw SimulatorRefusal(fmt::format("the simulator cannot run experiment \"{}\": {}{}", experiment.name, batch.fault,
                                       lastWordsClause(batch.outcome)));
  }
  version_ = batch.observations.simulatorVersion;
  if (const auto actions = numberBehind("Actions fired: ", batch.outcome.out)) {
    actionsOfABatch_ = std::max<std::int64_t>({actionsOfABatch_, 1, *actions});
  }
  experiment.variables = variablesOf(batch.observations);
  if (setUp_.isTerminating) {
    // Without variables of that kind a steady-state run ends in an assertion, and all stay.
    const auto others = variablesOf(runBatch(experiment, false, kTrialSeconds).observations);
    std::erase_if(experiment.variables, [&](std::int32_t variable) {
      return std::find(others.begin(), others.end(), variable) != others.end();
    });
  }
  if (experiment.variables.empty()) {
    throw SimulatorRefusal(fmt::format("experiment \"{}\" has no performance variable for {} runs", experiment.name,
                                       setUp_.isTerminating ? "terminating" : "steady-state"));
  }
}

}  // namespace controller
