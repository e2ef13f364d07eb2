#include <gtest/gtest.h>

#include <string>

#include "cli/RailwayProcessTest.h"

namespace {

using support::goodOutput;
using support::RailwayProcessTest;

/// Actions of a batch of one train with nothing lost: assigningID and trainArrival once; updatePosition at 1, 2 to 110;
/// updateTPR at 5, 10 to 110; and of each of the 21 reports up to that of 105 its delivery, its take-up, its processing
/// and the delivery of its authority.
constexpr int kActionsOfABatch = 2 + 110 + 22 + 21 * 4;

/// What behaves alike for options of one kind, by the option's letter.
class RailwayOptionTest : public RailwayProcessTest, public ::testing::WithParamInterface<char> {
 protected:
  [[nodiscard]] static std::string option() { return {'-', GetParam()}; }
};

using RailwayValueOptionTest = RailwayOptionTest;
using RailwaySwitchTest = RailwayOptionTest;
using RailwayCommandLineTest = RailwayProcessTest;

INSTANTIATE_TEST_SUITE_P(Letters, RailwayValueOptionTest,
                         ::testing::Values('N', 'O', 'a', 'b', 'c', 'e', 'f', 'l', 'n', 'p', 'r', 's', 't'));

INSTANTIATE_TEST_SUITE_P(Letters, RailwaySwitchTest, ::testing::Values('m', 'w', 'x'));

TEST_P(RailwayValueOptionTest, FailsWithoutAValueAtTheEndOfTheLine) {
  expectRefusal({option()}, "", "Expect a parameter after '" + option() + "'\n");
}

TEST_P(RailwayValueOptionTest, TakesNoNextWordThatBeginsWithADash) {
  expectRefusal({option(), "-1"}, "", "Expect a parameter after '" + option() + "'\n");
}

TEST_P(RailwaySwitchTest, FailsWithAValueInTheNextWord) {
  expectRefusal({option(), "junk"}, "", "Did not expect a parameter after '" + option() + "'\n");
}

TEST_P(RailwaySwitchTest, FailsWithAValueInTheSameWord) {
  expectRefusal({option() + "junk"}, "", "Did not expect a parameter after '" + option() + "'\n");
}

TEST_F(RailwayCommandLineTest, NoArgumentsAtAllAreAnError) {
  expectRefusal({}, "", "ERROR: No command line options specified\n");
}

TEST_F(RailwayCommandLineTest, AnUnknownLetterIsNamedWithItsWholeWord) {
  expectRefusal({"-zoom"}, "", "ERROR: Unrecognized Command Line option: -zoom\n");
}

TEST_F(RailwayCommandLineTest, ADashAloneIsUnknown) {
  expectRefusal({"-"}, "", "ERROR: Unrecognized Command Line option: -\n");
}

TEST_F(RailwayCommandLineTest, ADashAloneIsUnknownAlsoWithAWordBehindIt) {
  expectRefusal({"-", "N"}, "", "ERROR: Unrecognized Command Line option: -\n");
}

TEST_F(RailwayCommandLineTest, LettersAreCaseSensitive) {
  expectRefusal({"-A", "name"}, "", "ERROR: Unrecognized Command Line option: -A\n");
}

TEST_F(RailwayCommandLineTest, AGeneratorAboveTwoFailsWithoutAMessageOfItsOwn) {
  expectRefusal({"-r", "3"}, "", "");
}

TEST_F(RailwayCommandLineTest, AGeneratorBelowZeroFailsWithoutAMessageOfItsOwn) {
  expectRefusal({"-r-1"}, "", "");
}

TEST_F(RailwayCommandLineTest, AWordOf129CharactersIsTooLong) {
  expectRefusal({std::string(129, 'x')}, "", "ERROR: Command Line Argument Too Long, Limited to 128 Characters\n");
}

TEST_F(RailwayCommandLineTest, AValueOf129CharactersIsTooLong) {
  expectRefusal({"-O", std::string(129, 'x')}, "",
                "ERROR: Command Line Argument Too Long, Limited to 128 Characters\n");
}

TEST_F(RailwayCommandLineTest, AWordOf128CharactersPasses) {
  expectGoodRun(railway({std::string(128, 'x'), "-N1"}), goodOutput("Max Number of Batches: 1\n", kActionsOfABatch));
}

TEST_F(RailwayCommandLineTest, StrayWordsAreSkipped) {
  expectGoodRun(railway({"junk", "-N", "1", "more"}), goodOutput("Max Number of Batches: 1\n", kActionsOfABatch));
}

TEST_F(RailwayCommandLineTest, WhatWasReadBeforeAFaultHasBeenTold) {
  expectRefusal({"-c", "7", "-z", "-n", "500"}, "ClientID: 7\n", "ERROR: Unrecognized Command Line option: -z\n");
}

// A refused generator ends these lines before a run begins.
TEST_F(RailwayCommandLineTest, EachOptionTellsItsValueWhenItIsRead) {
  expectRefusal({"-N", "12", "-O", "d:x:1", "-a", "text", "-b", "bin", "-c", "7",  "-e", "2",  "-f", "trace", "-l", "3",
                 "-m", "-n", "50", "-p",    "77", "-r",   "1",  "-s",  "9",  "-t", "1",  "-w", "-x", "-r",    "3"},
                "Max Number of Batches: 12\n"
                "OverrideString is d:x:1\n"
                "ASCIIFilename: text\n"
                "BinFilename: bin\n"
                "ClientID: 7\n"
                "Experiment: 2\n"
                "TraceFile: trace\n"
                "TraceLevel: 3\n"
                "ReportSize: 50\n"
                "Port: 77\n"
                "Random Number Generator: Tausworthe\n"
                "Random Number Seed: 9\n"
                "Is Terminating Simulation: 1\n"
                "Wait For Socket Enabled\n",
                "");
}

TEST_F(RailwayCommandLineTest, AValueInTheSameWordIsTheSame) {
  const std::string told =
      "Max Number of Batches: 12\n"
      "ClientID: 7\n"
      "ReportSize: 50\n"
      "ASCIIFilename: text\n";
  expectRefusal({"-N12", "-c7", "-n50", "-atext", "-r3"}, told, "");
  expectRefusal({"-N", "12", "-c", "7", "-n", "50", "-a", "text", "-r", "3"}, told, "");
}

TEST_F(RailwayCommandLineTest, TheLastOfSeveralValuesCounts) {
  expectGoodRun(railway({"-N", "9", "-N", "1"}),
                goodOutput("Max Number of Batches: 9\nMax Number of Batches: 1\n", kActionsOfABatch));
}

TEST_F(RailwayCommandLineTest, EachGeneratorHasItsName) {
  expectRefusal({"-r", "0", "-r", "1", "-r", "2", "-r", "3"},
                "Random Number Generator: Lagged Fibonacci\n"
                "Random Number Generator: Tausworthe\n"
                "Random Number Generator: Mersenne Twister\n",
                "");
}

// 70000 - 65536 = 4464, and 40000 - 65536 = -25536.
TEST_F(RailwayCommandLineTest, APortIsCutToSixteenBits) {
  expectRefusal({"-p", "70000", "-p", "40000", "-r", "3"}, "Port: 4464\nPort: -25536\n", "");
}

TEST_F(RailwayCommandLineTest, ASeedAndAnExperimentHaveNoSign) {
  expectRefusal({"-s-1", "-e-1", "-r", "3"}, "Random Number Seed: 4294967295\nExperiment: 4294967295\n", "");
}

TEST_F(RailwayCommandLineTest, AClientAndALimitOfBatchesHaveASign) {
  expectRefusal({"-c-3", "-N-1", "-r", "3"}, "ClientID: -3\nMax Number of Batches: -1\n", "");
}

TEST_F(RailwayCommandLineTest, AReportHoldsAtLeastOneObservation) {
  expectRefusal({"-n", "0"}, "", "ERROR: Report size 0 given with '-n' is too small, must be at least 1\n");
  expectRefusal({"-n-5"}, "", "ERROR: Report size -5 given with '-n' is too small, must be at least 1\n");
  expectRefusal({"-n", "many"}, "", "ERROR: Report size 0 given with '-n' is too small, must be at least 1\n");
}

TEST_F(RailwayCommandLineTest, TextThatIsNoNumberGivesZero) {
  expectRefusal({"-c", "seven", "-e", "", "-s", "12abc", "-r", "3"},
                "ClientID: 0\nExperiment: 0\nRandom Number Seed: 12\n", "");
}

}  // namespace
