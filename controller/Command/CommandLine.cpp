#include "Command/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "Cluster/Cluster.h"
#include "Command/Completion.h"
#include "Command/Options.h"
#include "Command/OtherCommands.h"
#include "Command/RunCommand.h"
#include "Command/Version.h"
#include "Study/Grid.h"
#include "Study/UnitSeed.h"

namespace controller {
namespace {

constexpr const char* kAbout =
    "Runs simulators of Quorva until every performance variable is as precise as wanted, keeps all observations in a "
    "store, and reports them. The manual page has the details: man quorva.";
constexpr const char* kStatuses =
    "Exit status: 0 the precision is reached, 1 failed, 2 wrong usage, 3 stopped short of the precision, "
    "128 + n stopped by signal n (130 Ctrl-C, 143 SIGTERM).";

constexpr std::int64_t kGreatestCount32 = 2147483647;

void addStudyOptions(CLI::App& run, RunOptions& options) {
  run.add_option("simulator", options.simulator, "The simulator: a path, or a name to look for in PATH")->required();
  run.add_option("-e,--experiment", options.experiments, "Experiments by number, such as 0,2-4, or all")
      ->capture_default_str();
  run.add_option(
         "--set", options.settings,
         "Values of a global variable: name=3, name=1,2,5, name=0..1..0.1; several make a grid. The type may stand "
         "ahead, double:name=1")
      ->allow_extra_args(false)
      ->take_all();
  run.add_option("--mode", options.mode, "terminating or steady")
      ->check(CLI::IsMember({"terminating", "steady"}))
      ->capture_default_str();
  run.add_option("--seed", options.seed, "Seed of the study, from which those of the units are made")
      ->capture_default_str();
  run.add_option("--generator", options.generator, "lagged-fibonacci, tausworthe or mersenne-twister")
      ->capture_default_str();
  run.add_option("--unit-batches", options.batchesPerUnit,
                 "Batches in a unit, the work of one simulator process; by what a batch takes unless told")
      ->check(CLI::Range(std::int64_t{1}, std::int64_t{10'000'000}));
  run.add_option("-o,--out", options.out, "Folder of the study; quorva-<simulator> unless told");
}

void addGoalOptions(CLI::App& run, RunOptions& options) {
  run.add_option("-p,--precision", options.precision, "Greatest error wanted: a share of the mean, as 0.01 or 1%")
      ->capture_default_str();
  run.add_flag("--absolute", options.isAbsolute,
               "The precision is in the variables' own units, not a share of the mean");
  run.add_option("-c,--confidence", options.confidence, "That all variables are within the precision")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  run.add_option("--least", options.leastBatches, "Observations of each variable before the study may stop")
      ->check(CLI::Range(std::int64_t{2}, kGreatestCount32))
      ->capture_default_str();
  run.add_option("--greatest", options.greatestBatches, "Observations of each variable at which it stops; 0 for none")
      ->check(CLI::Range(std::int64_t{0}, std::int64_t{1} << 53))
      ->capture_default_str();
  run.add_option("--variables", options.variables,
                 "Variables that count, by number, such as 0,3=late,5-7; all unless told");
  run.add_option("--warm-up", options.warmUp, "Batches to leave out at the beginning of each unit")
      ->check(CLI::Range(std::int64_t{0}, kGreatestCount32))
      ->capture_default_str();
  run.add_option("--together", options.together, "Batches whose mean is one observation")
      ->check(CLI::Range(std::int64_t{1}, kGreatestCount32))
      ->capture_default_str();
}

void addWorkOptions(CLI::App& run, RunOptions& options) {
  run.add_option("-j,--jobs", options.jobs,
                 "Simulators at a time; as many as there are processors unless told, under MPI one a process")
      ->check(CLI::Range(std::int64_t{1}, std::int64_t{1024}));
  run.add_option("--time-limit", options.timeLimit, "Stop after this time: 90, 90s, 5m, 2h");
  run.add_option(
      "--unit-time-limit", options.unitTimeLimit,
      "Take a simulator for hanging after this time; an hour at first, then by what units take, unless told");
  run.add_option("--attempts", options.attempts, "At a unit whose simulator dies, hangs or leaves a damaged file")
      ->check(CLI::Range(std::int64_t{1}, std::int64_t{1000}))
      ->capture_default_str();
  run.add_option("--launcher", options.launcher,
                 "slurm: print a job script that does the same under srun, and run nothing")
      ->check(CLI::IsMember({"slurm"}));
  run.add_flag("-q,--quiet", options.isQuiet, "Say nothing but faults");
}

/// A word as a shell reads it back.
std::string shellWord(const std::string& word) {
  if (!word.empty() &&
      word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=./,:%@") ==
          std::string::npos) {
    return word;
  }
  std::string quoted = "'";
  for (const char character : word) {
    quoted += character == '\'' ? "'\\''" : std::string(1, character);
  }
  return quoted + "'";
}

/// The words as a line that a shell reads back.
std::string commandLineOf(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) {
    line += (line.empty() ? "" : " ") + shellWord(word);
  }
  return line;
}

std::vector<std::string> withoutLauncher(const std::vector<std::string>& words) {
  std::vector<std::string> kept;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] == "--launcher") {
      ++i;
    } else if (!words[i].starts_with("--launcher=")) {
      kept.push_back(words[i]);
    }
  }
  return kept;
}

struct Commands {
  RunOptions run;
  ReportOptions report;
  ExportOptions exported;
  RerunOptions rerun;
  StatusOptions status;
  std::string shell;
};

void addOtherCommands(CLI::App& app, Commands& commands) {
  CLI::App* const report = app.add_subcommand("report", "Write the report of a study anew");
  report->add_option("folder", commands.report.folder, "Folder of the study")->required();
  report->add_option("--output", commands.report.output, "File to write; report.html in the folder unless told");

  CLI::App* const exported = app.add_subcommand("export", "Print the estimates or the observations of a study");
  exported->add_option("folder", commands.exported.folder, "Folder of the study")->required();
  exported->add_option("--format", commands.exported.format, "csv or json")
      ->check(CLI::IsMember({"csv", "json"}))
      ->capture_default_str();
  exported->add_flag("--observations", commands.exported.wantsObservations,
                     "Every observation instead of the estimates");
  exported->add_option("--output", commands.exported.output, "File to write; standard output unless told");

  CLI::App* const rerun =
      app.add_subcommand("rerun", "Run units again and compare them bit for bit with what is stored");
  rerun->add_option("folder", commands.rerun.folder, "Folder of the study")->required();
  rerun->add_option("-e,--experiment", commands.rerun.experiment,
                    "Experiment by its name in the study; all unless told");
  rerun->add_option("--units", commands.rerun.units, "Units by number, such as 0,3-5, or all")->capture_default_str();
  rerun->add_option("--simulator", commands.rerun.simulator, "The simulator, where it has moved");

  CLI::App* const status = app.add_subcommand("status", "Tell what a study holds and how far it is");
  status->add_option("folder", commands.status.folder, "Folder of the study")->required();

  CLI::App* const completion = app.add_subcommand("completion", "Print the completion for a shell");
  completion->add_option("shell", commands.shell, "bash")->required()->check(CLI::IsMember({"bash"}));
}

int runChosen(const CLI::App& app, const Commands& commands, const std::vector<std::string>& words) {
  if (app.got_subcommand("run")) {
    if (!commands.run.launcher.empty()) {
      const std::string name = "quorva-" + std::filesystem::path(commands.run.simulator).filename().string();
      fmt::print("{}", slurmScript(commandLineOf(withoutLauncher(words)), name));
      return kReached;
    }
    return runStudy(commands.run, commandLineOf(words));
  }
  if (app.got_subcommand("report")) {
    return reportStudy(commands.report);
  }
  if (app.got_subcommand("export")) {
    return exportStudy(commands.exported);
  }
  if (app.got_subcommand("rerun")) {
    return rerunUnits(commands.rerun);
  }
  if (app.got_subcommand("status")) {
    return tellStatus(commands.status);
  }
  fmt::print("{}", bashCompletion(app));
  return kReached;
}

}  // namespace

int runCommandLine(int argc, char** argv) {
  CLI::App app(kAbout, "quorva");
  app.footer(kStatuses);
  app.require_subcommand(1);
  app.set_version_flag("--version", fmt::format("quorva {} (commit {}; MPI: {})", programVersion(), programCommit(),
                                                Cluster::hasMpi() ? "yes" : "no"));
  Commands commands;
  CLI::App* const run = app.add_subcommand("run", "Run a study to its precision, or go on with it");
  addStudyOptions(*run, commands.run);
  addGoalOptions(*run, commands.run);
  addWorkOptions(*run, commands.run);
  addOtherCommands(app, commands);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kReached : kWrongUsage;
  }
  try {
    const int status = runChosen(app, commands, {argv, argv + argc});
    if (std::fflush(stdout) != 0) {
      throw std::runtime_error("standard output cannot be written to");
    }
    return status;
  } catch (const UsageError& error) {
    fmt::print(stderr, "quorva: {}\n", error.what());
    return kWrongUsage;
  } catch (const std::exception& error) {
    fmt::print(stderr, "quorva: {}\n", error.what());
    return kFailed;
  }
}

}  // namespace controller
