#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "support/ProcessRunner.h"
#include "support/TemporaryFile.h"

// A model that is written with the kit and the same model on the engine's classes alone: every byte of their results, of
// their traces and of their words is the same.

namespace {

/// One command line for both programs of a pair. `simtest` is the way in which the connectivity list is built.
struct Run {
  const char* kitProgram;
  const char* handProgram;
  std::vector<std::string> options;
  std::optional<std::string> simtest;

  friend std::ostream& operator<<(std::ostream& out, const Run& run) {
    out << std::filesystem::path(run.kitProgram).filename().string();
    for (const std::string& option : run.options) {
      out << ' ' << option;
    }
    return out << (run.simtest ? " SIMTEST=" + *run.simtest : "");
  }
};

/// All that a run leaves behind.
struct Outcome {
  std::string asciiFile;
  std::string binaryFile;
  std::string out;
  std::string err;
  std::optional<int> exitStatus;
};

/// Without the lines of the times, which no two runs share, and the lines that name the files.
std::string comparable(const std::string& text) {
  std::istringstream lines(text);
  std::string kept;
  for (std::string line; std::getline(lines, line);) {
    const auto tells = [&line](const char* what) { return line.find(what) != std::string::npos; };
    if (!tells("CPU time") && !tells("GenerateConnectivityList() Time=") && !tells("Filename")) {
      kept += line + '\n';
    }
  }
  return kept;
}

Outcome outcomeOf(const char* program, const Run& run) {
  const support::TemporaryFile ascii("same_bytes");
  const support::TemporaryFile binary("same_bytes");
  support::ProcessRequest request;
  request.program = program;
  request.arguments = run.options;
  request.arguments.insert(request.arguments.end(), {"-a", ascii.name(), "-b", binary.name()});
  request.environment["SIMTEST"] = run.simtest;
  const support::ProcessResult result = support::runProcess(request);
  return {ascii.bytes(), binary.bytes(), comparable(result.out), result.err, result.exitStatus};
}

/// Equal, or the first line at which the two part: a difference of whole traces would take long to show.
::testing::AssertionResult same(const std::string& byKit, const std::string& byHand) {
  if (byKit == byHand) {
    return ::testing::AssertionSuccess();
  }
  std::istringstream kitLines(byKit);
  std::istringstream handLines(byHand);
  std::string kitLine;
  std::string handLine;
  int number = 0;
  do {
    ++number;
    std::getline(kitLines, kitLine);
    std::getline(handLines, handLine);
  } while (kitLine == handLine && kitLines && handLines);
  return ::testing::AssertionFailure() << "line " << number << " is \"" << kitLine << "\" by the kit and \"" << handLine
                                       << "\" by hand";
}

std::vector<Run> allRuns() {
  std::vector<Run> runs;
  const std::vector<std::vector<std::string>> queueRuns{
      {"-N200"},
      {"-N200", "-e1", "-r1"},
      {"-N200", "-e2", "-r2", "-s7"},
      {"-N100", "-O", "s:capacity:1:d:arrivalRate:2:d:serviceRate:1.5"},
      {"-N3", "-m", "-l4"},
      {"-N10", "-O", "d:serviceRate:-1"},  // a parameter that the sampler refuses
      {"-N1", "-O", "d:speed:1"},          // a name that does not exist
      {"-N1", "-e3"},
  };
  for (const auto& options : queueRuns) {
    runs.push_back({QUORVA_QUEUE, QUORVA_QUEUE_BY_HAND, options, std::nullopt});
  }
  const std::vector<std::vector<std::string>> workshopRuns{
      {"-N100"},
      {"-N100", "-e1", "-r1"},
      {"-N50", "-e2", "-r2", "-s7"},
      {"-N50", "-O", "s:machines:2:d:failureRate:1.5"},
      {"-t0", "-N100"},
      {"-t0", "-N100", "-e1", "-r2"},
      {"-N2", "-m", "-l4"},
      {"-t0", "-N2", "-m", "-l4"},
  };
  for (const std::optional<std::string>& simtest : {std::optional<std::string>(), std::optional<std::string>("0")}) {
    for (const auto& options : workshopRuns) {
      runs.push_back({QUORVA_WORKSHOP, QUORVA_WORKSHOP_BY_HAND, options, simtest});
    }
  }
  return runs;
}

class SameBytesTest : public ::testing::TestWithParam<Run> {};

INSTANTIATE_TEST_SUITE_P(Runs, SameBytesTest, ::testing::ValuesIn(allRuns()));

TEST_P(SameBytesTest, AModelByTheKitRunsAsTheSameModelByHand) {
  const Outcome byKit = outcomeOf(GetParam().kitProgram, GetParam());
  const Outcome byHand = outcomeOf(GetParam().handProgram, GetParam());
  EXPECT_TRUE(same(byKit.asciiFile, byHand.asciiFile));
  EXPECT_TRUE(same(byKit.binaryFile, byHand.binaryFile));
  EXPECT_TRUE(same(byKit.out, byHand.out));
  EXPECT_TRUE(same(byKit.err, byHand.err));
  EXPECT_EQ(byKit.exitStatus, byHand.exitStatus);
  EXPECT_FALSE(byHand.out.empty());
}

}  // namespace
