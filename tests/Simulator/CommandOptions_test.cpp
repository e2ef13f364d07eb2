#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include "Simulator/EngineTest.h"
#include "support/FlushWatch.h"

namespace {

using support::HandModel;

constexpr const char* kUsage =
    "Valid Options\n"
    "-a <name>: write ASCII output to file <name>\n"
    "-b <name>: write binary output to file <name>\n"
    "-c <num>: Client identification number (default=0)\n"
    "-e <num>: Experiment to run, 'Experiment 1' is num=0 (default = 0)\n"
    "-f <name>: Trace file name (default=<stdout>)\n"
    "-m: Enable Quorva trace \n"
    "-l <num>: Trace Level (1, 2,3,4 [default=1])\n"
    "-x: Enable XML trace \n"
    "-n <num>: Num observations sent in 1 update to SimMgr. (default=1000)\n"
    "-N <num>: Maximum number of batches to run (default=infinite)\n"
    "-p <num>: Communication port of network server (default=10000)\n"
    "-r <num>: Random Number Generator (0 = Lagged Fibonacci[default], 1 = Tausworthe, 2 = Mersenne Twister\n"
    "-s <num>: Random Number Seed (31415[default])\n"
    "-t <num>: Simulation Type (1 = Terminating[default] 0 = Steady State)\n"
    "-w: Simulator will wait to send output until socket connection is established.\n"
    "\n";

/// Parses command lines with a simulator that was set up before; options of one line do not clear those of another.
class CommandOptionsTest : public support::EngineTest {
 protected:
  struct Outcome {
    int result;
    std::string out;
    std::string err;

    bool operator==(const Outcome&) const = default;
    friend std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
      return stream << outcome.result << " out: \"" << outcome.out << "\" err: \"" << outcome.err << '"';
    }
  };

  CommandOptionsTest() {
    useModel([](HandModel& model) { model.addActivity("tick"); });
    start();
  }

  Outcome parse(std::vector<std::string> words) {
    support::CommandLine line(std::move(words));
    Outcome outcome{};
    outcome.err = support::standardErrorOf([&] {
      outcome.out = support::standardOutputOf(
          [&] { outcome.result = simulator->ParseCommandLineOptions(line.argc(), line.argv()); });
    });
    return outcome;
  }

  static Outcome good(std::string out = "") { return {0, std::move(out), ""}; }
  static Outcome bad(std::string err, std::string out = "") { return {1, std::move(out), std::move(err)}; }
};

TEST_F(CommandOptionsTest, UsageListsTheOptionsOnStandardError) {
  EXPECT_EQ(support::standardErrorOf([this] { simulator->PrintUsage(); }), kUsage);
}

TEST_F(CommandOptionsTest, WithoutAnyWordTheLineIsBad) {
  EXPECT_EQ(parse({}), bad("ERROR: No command line options specified\n"));
}

TEST_F(CommandOptionsTest, ReportSizeAndBatchLimitStartAnewWithEachLine) {
  simulator->ReportSize = 7;
  simulator->MaxNumOfBatches = 7;
  EXPECT_EQ(parse({"stray"}), good());
  EXPECT_EQ(simulator->ReportSize, 1000);
  EXPECT_EQ(simulator->MaxNumOfBatches, 0);
}

TEST_F(CommandOptionsTest, NumbersAreStoredAndTold) {
  EXPECT_EQ(parse({"-N", "5"}), good("Max Number of Batches: 5\n"));
  EXPECT_EQ(simulator->MaxNumOfBatches, 5);
  EXPECT_EQ(parse({"-c", "12"}), good("ClientID: 12\n"));
  EXPECT_EQ(simulator->MyClientID, 12);
  EXPECT_EQ(parse({"-e", "3"}), good("Experiment: 3\n"));
  EXPECT_EQ(simulator->TheExperimentNumber, 3U);
  EXPECT_EQ(parse({"-l", "4"}), good("TraceLevel: 4\n"));
  EXPECT_EQ(simulator->TraceLevel, 4);
  EXPECT_EQ(parse({"-n", "500"}), good("ReportSize: 500\n"));
  EXPECT_EQ(simulator->ReportSize, 500);
  EXPECT_EQ(parse({"-p", "12345"}), good("Port: 12345\n"));
  EXPECT_EQ(simulator->SocketPort, 12345);
  EXPECT_EQ(parse({"-s", "271828"}), good("Random Number Seed: 271828\n"));
  EXPECT_EQ(simulator->RandomNumberSeed, 271828U);
  EXPECT_EQ(parse({"-t", "0"}), good("Is Terminating Simulation: 0\n"));
  EXPECT_EQ(simulator->isTerminatingSimulation, 0);
  EXPECT_EQ(parse({"-t", "5"}), good("Is Terminating Simulation: 5\n"));
  EXPECT_EQ(simulator->isTerminatingSimulation, 5);
}

TEST_F(CommandOptionsTest, EachOptionIsToldAtOnce) {
  support::CommandLine line({"-N5", "-s", "3", "-a", "obs.csv", "-w"});
  const auto parseAll = [&] { EXPECT_EQ(simulator->ParseCommandLineOptions(line.argc(), line.argv()), 0); };
  EXPECT_THAT(support::linesHeldBack(std::cout, parseAll), testing::IsEmpty());
}

TEST_F(CommandOptionsTest, TextsAreCopiedAndTold) {
  EXPECT_EQ(parse({"-a", "obs.csv"}), good("ASCIIFilename: obs.csv\n"));
  EXPECT_STREQ(simulator->ASCIIFilename, "obs.csv");
  EXPECT_EQ(parse({"-b", "obs.bin"}), good("BinFilename: obs.bin\n"));
  EXPECT_STREQ(simulator->BinFilename, "obs.bin");
  EXPECT_EQ(parse({"-f", "trace"}), good("TraceFile: trace\n"));
  EXPECT_STREQ(simulator->TraceFilename, "trace");
  EXPECT_EQ(parse({"-O", "d:rate:0.5"}), good("OverrideString is d:rate:0.5\n"));
  EXPECT_STREQ(simulator->OverrideString, "d:rate:0.5");
}

TEST_F(CommandOptionsTest, TheLaterOfTwoEqualOptionsWins) {
  EXPECT_EQ(parse({"-a", "one", "-a", "two", "-O", "x", "-O", "y", "-N1", "-N2"}),
            good("ASCIIFilename: one\nASCIIFilename: two\nOverrideString is x\nOverrideString is y\n"
                 "Max Number of Batches: 1\nMax Number of Batches: 2\n"));
  EXPECT_STREQ(simulator->ASCIIFilename, "two");
  EXPECT_STREQ(simulator->OverrideString, "y");
  EXPECT_EQ(simulator->MaxNumOfBatches, 2);
}

TEST_F(CommandOptionsTest, GeneratorsAreToldByName) {
  EXPECT_EQ(parse({"-r", "0"}), good("Random Number Generator: Lagged Fibonacci\n"));
  EXPECT_EQ(simulator->RandomNumberGenerator, SimulatorClass::LAGGED_FIBONACCI);
  EXPECT_EQ(parse({"-r", "1"}), good("Random Number Generator: Tausworthe\n"));
  EXPECT_EQ(simulator->RandomNumberGenerator, SimulatorClass::TAUSWORTHE);
  EXPECT_EQ(parse({"-r", "2"}), good("Random Number Generator: Mersenne Twister\n"));
  EXPECT_EQ(simulator->RandomNumberGenerator, SimulatorClass::MERSENNE_TWISTER);
}

TEST_F(CommandOptionsTest, AGeneratorThatDoesNotExistIsRefusedWithoutWordsOfItsOwn) {
  EXPECT_EQ(parse({"-r", "3"}), bad(""));
  EXPECT_EQ(parse({"-r-1"}), bad(""));
}

TEST_F(CommandOptionsTest, FlagsAreSetAndOnlyWaitingIsTold) {
  EXPECT_EQ(parse({"-m", "-x", "-w"}), good("Wait For Socket Enabled\n"));
  EXPECT_TRUE(simulator->EnableQuorvaTrace);
  EXPECT_TRUE(simulator->EnableXMLTrace);
  EXPECT_TRUE(simulator->WaitForSocket);
}

TEST_F(CommandOptionsTest, AValueMayStandInTheSameWord) {
  EXPECT_EQ(parse({"-n500"}), parse({"-n", "500"}));
  EXPECT_EQ(parse({"-N-1"}), good("Max Number of Batches: -1\n"));
  EXPECT_EQ(simulator->MaxNumOfBatches, -1);
  EXPECT_EQ(parse({"-aresult"}), good("ASCIIFilename: result\n"));
}

TEST_F(CommandOptionsTest, AnOptionWithoutItsValueIsRefusedByItsOwnLetter) {
  for (const char letter : std::string("NOabceflnprst")) {
    const std::string option = std::string("-") + letter;
    const Outcome expected = bad("Expect a parameter after '" + option + "'\n");
    EXPECT_EQ(parse({option}), expected);
    EXPECT_EQ(parse({option, "-w"}), expected) << "a word that begins with '-' is no value";
  }
}

TEST_F(CommandOptionsTest, AFlagWithAValueIsRefusedByItsOwnLetter) {
  for (const char letter : std::string("mwx")) {
    const std::string option = std::string("-") + letter;
    const Outcome expected = bad("Did not expect a parameter after '" + option + "'\n");
    EXPECT_EQ(parse({option, "junk"}), expected);
    EXPECT_EQ(parse({option + "junk"}), expected);
  }
}

TEST_F(CommandOptionsTest, StrayWordsAreSkipped) {
  EXPECT_EQ(parse({"junk", "-m"}), good());
  EXPECT_TRUE(simulator->EnableQuorvaTrace);
  EXPECT_EQ(parse({"", "-N", "2", "junk"}), good("Max Number of Batches: 2\n"));
}

TEST_F(CommandOptionsTest, AnUnknownLetterIsRefusedWithItsWord) {
  EXPECT_EQ(parse({"-z"}), bad("ERROR: Unrecognized Command Line option: -z\n"));
  EXPECT_EQ(parse({"--help"}), bad("ERROR: Unrecognized Command Line option: --help\n"));
  EXPECT_EQ(parse({"-"}), bad("ERROR: Unrecognized Command Line option: -\n"));
}

TEST_F(CommandOptionsTest, AFaultLeavesWhatWasSetBeforeIt) {
  EXPECT_EQ(parse({"-N", "4", "-z", "-N", "9"}),
            bad("ERROR: Unrecognized Command Line option: -z\n", "Max Number of Batches: 4\n"));
  EXPECT_EQ(simulator->MaxNumOfBatches, 4);
}

TEST_F(CommandOptionsTest, AWordMayHave128CharactersAndNotMore) {
  const std::string longest(128, 'x');
  const Outcome tooLong = bad("ERROR: Command Line Argument Too Long, Limited to 128 Characters\n");
  EXPECT_EQ(parse({longest}), good());
  EXPECT_EQ(parse({longest + "x"}), tooLong);
  EXPECT_EQ(parse({"-a", longest}), good("ASCIIFilename: " + longest + "\n"));
  EXPECT_EQ(parse({"-a", longest + "x"}), tooLong) << "a value is a word too";
  EXPECT_EQ(parse({"-a" + longest}), tooLong);
  EXPECT_EQ(parse({"-", longest + "x"}), bad("ERROR: Unrecognized Command Line option: -\n"))
      << "the first fault counts";
}

TEST_F(CommandOptionsTest, TextThatIsNoNumberReadsAsZero) {
  EXPECT_EQ(parse({"-N", "many"}), good("Max Number of Batches: 0\n"));
  EXPECT_EQ(parse({"-c", "7up"}), good("ClientID: 7\n"));
}

TEST_F(CommandOptionsTest, ThePortIsCutTo16Bits) {
  EXPECT_EQ(parse({"-p", "70000"}), good("Port: 4464\n"));
  EXPECT_EQ(simulator->SocketPort, 4464);
  EXPECT_EQ(parse({"-p", "40000"}), good("Port: -25536\n"));
}

TEST_F(CommandOptionsTest, SeedAndExperimentAreUnsigned) {
  EXPECT_EQ(parse({"-s", "4294967295", "-e", "4294967294"}),
            good("Random Number Seed: 4294967295\nExperiment: 4294967294\n"));
  EXPECT_EQ(simulator->RandomNumberSeed, 4294967295U);
  EXPECT_EQ(parse({"-s-1"}), good("Random Number Seed: 4294967295\n"));
}

TEST_F(CommandOptionsTest, AReportHoldsOneObservationOrMore) {
  EXPECT_EQ(parse({"-n", "1"}), good("ReportSize: 1\n"));
  EXPECT_EQ(parse({"-n", "0"}), bad("ERROR: Report size 0 given with '-n' is too small, must be at least 1\n"));
  EXPECT_EQ(parse({"-n-5"}), bad("ERROR: Report size -5 given with '-n' is too small, must be at least 1\n"));
  EXPECT_EQ(parse({"-n", "-t", "1"}), bad("Expect a parameter after '-n'\n"));
}

TEST_F(CommandOptionsTest, ATraceFileOrLevelAloneTurnsTheTextTraceOn) {
  for (const std::vector<std::string>& words : {std::vector<std::string>{"-f", "trace"}, {"-l", "2"}}) {
    simulator->EnableQuorvaTrace = false;
    EXPECT_EQ(parse(words).result, 0);
    EXPECT_TRUE(simulator->EnableQuorvaTrace);
    EXPECT_FALSE(simulator->EnableXMLTrace);
  }
}

TEST_F(CommandOptionsTest, WithTheXmlTraceAFileTurnsOnNothingMore) {
  EXPECT_EQ(parse({"-x", "-f", "trace"}).result, 0);
  EXPECT_FALSE(simulator->EnableQuorvaTrace);
  EXPECT_TRUE(simulator->EnableXMLTrace);
}

TEST_F(CommandOptionsTest, BothTracesAreOnWhenBothAreAskedFor) {
  EXPECT_EQ(parse({"-m", "-x", "-f", "trace"}).result, 0);
  EXPECT_TRUE(simulator->EnableQuorvaTrace);
  EXPECT_TRUE(simulator->EnableXMLTrace);
}

/// The words on both streams of a start that fails; only standard error can be looked at by a death test.
TEST_F(CommandOptionsTest, ABadLineEndsTheProcessAfterUsageAndParseError) {
  const auto startWith = [](std::vector<std::string> words) { SimulatorProbe probe(std::move(words)); };
  const std::string end = std::string(kUsage) + "ERROR: Parsing command line options\n";
  const auto exactly = [](const std::string& text) {
    return testing::ResultOf([](const std::string& actual) { return actual; }, testing::StrEq(text));
  };
  EXPECT_EXIT(startWith({}), testing::ExitedWithCode(1), exactly("ERROR: No command line options specified\n" + end));
  EXPECT_EXIT(startWith({"-n"}), testing::ExitedWithCode(1), exactly("Expect a parameter after '-n'\n" + end));
  EXPECT_EXIT(startWith({"-r", "3"}), testing::ExitedWithCode(1), exactly(end));
}

}  // namespace
