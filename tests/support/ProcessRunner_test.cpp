#include "support/ProcessRunner.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

using std::chrono::milliseconds;
using support::Process;
using support::ProcessRequest;
using support::ProcessResult;
using support::runProcess;

ProcessRequest shell(const std::string& script) {
  ProcessRequest request;
  request.program = "/bin/sh";
  request.arguments = {"-c", script};
  return request;
}

TEST(ProcessRunnerTest, TellsStatusAndBothStreamsApart) {
  const ProcessResult result = runProcess(shell("echo out; echo err >&2; exit 3"));
  EXPECT_EQ(result.exitStatus, 3);
  EXPECT_EQ(result.signal, std::nullopt);
  EXPECT_EQ(result.out, "out\n");
  EXPECT_EQ(result.err, "err\n");
  EXPECT_FALSE(result.timedOut);
}

TEST(ProcessRunnerTest, HandsArgumentsOnAsTheyAre) {
  const ProcessResult result = runProcess("/bin/sh", {"-c", "printf '[%s]' \"$@\"", "sh", "two words", "", "$HOME"});
  EXPECT_EQ(result.out, "[two words][][$HOME]");
}

TEST(ProcessRunnerTest, TellsTheSignalThatEndedAProgram) {
  const ProcessResult result = runProcess(shell("kill -ABRT $$"));
  EXPECT_EQ(result.signal, SIGABRT);
  EXPECT_EQ(result.exitStatus, std::nullopt);
}

TEST(ProcessRunnerTest, LaysItsEnvironmentOverTheTestsOwn) {
  setenv("QUORVA_TAKEN", "1", 1);
  setenv("QUORVA_KEPT", "2", 1);
  ProcessRequest request = shell("echo \"${QUORVA_TAKEN-none} $QUORVA_KEPT $QUORVA_NEW\"");
  request.environment = {{"QUORVA_TAKEN", std::nullopt}, {"QUORVA_NEW", "3"}};
  EXPECT_EQ(runProcess(request).out, "none 2 3\n");
}

TEST(ProcessRunnerTest, RunsInTheGivenFolder) {
  ProcessRequest request = shell("pwd -P");
  request.workingDirectory = "/usr";
  EXPECT_EQ(runProcess(request).out, "/usr\n");
}

TEST(ProcessRunnerTest, FeedsInputLargerThanAPipeAndTakesItBack) {
  ProcessRequest request;
  request.program = "/bin/cat";
  request.input = std::string(1000000, 'x');
  EXPECT_EQ(runProcess(request).out, request.input);
}

TEST(ProcessRunnerTest, SurvivesAProgramThatReadsNothing) {
  ProcessRequest request = shell("exit 0");
  request.input = std::string(1000000, 'x');
  EXPECT_EQ(runProcess(request).exitStatus, 0);
}

TEST(ProcessRunnerTest, KillsAProgramThatTakesTooLong) {
  ProcessRequest request = shell("echo begun; exec sleep 60");
  request.timeout = milliseconds(2000);
  const ProcessResult result = runProcess(request);
  EXPECT_TRUE(result.timedOut);
  EXPECT_EQ(result.signal, SIGKILL);
  EXPECT_EQ(result.out, "begun\n");
}

TEST(ProcessRunnerTest, ReportsAProgramThatCannotBeStarted) {
  const ProcessResult result = runProcess("/no/such/program", {});
  EXPECT_EQ(result.exitStatus, 127);
  EXPECT_EQ(result.err, "/no/such/program: No such file or directory\n");
}

TEST(ProcessRunnerTest, WaitsForTheEndOfAProgramThatHasClosedItsStreams) {
  const ProcessResult result = runProcess(shell("exec >&- 2>&-; sleep 0.2; exit 5"));
  EXPECT_EQ(result.exitStatus, 5);
}

TEST(ProcessTest, ReadsWhileTheProgramRuns) {
  Process process(shell("echo ready; read line; echo \"got $line\"; exec sleep 60"));
  EXPECT_EQ(process.readUntil("ready\n", milliseconds(60000)).substr(0, 6), "ready\n");
  EXPECT_GT(process.id(), 0);
  EXPECT_EQ(process.readUntil("never", milliseconds(100)).find("never"), std::string::npos);
}

TEST(ProcessTest, EndsTheProgramWithItself) {
  int id = 0;
  {
    const Process process(shell("exec sleep 60"));
    id = process.id();
    EXPECT_EQ(kill(id, 0), 0);
  }
  EXPECT_EQ(kill(id, 0), -1);
}

}  // namespace
