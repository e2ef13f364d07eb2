#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "cli/RailwayProcessTest.h"

namespace {

using support::goodOutput;
using support::kGoodError;
using support::RailwayProcessTest;

// One batch of one train fires assigningID and trainArrival once, updateTPR 22 times and takes 21 of the reports out of
// the network. With nothing lost it moves 110 times, and each of the 21 is taken up, processed and answered. With all
// lost it moves until it leaves: from time 100 on with a line of 8000 and a speed of 80, from time 10 on with one of
// 800.
constexpr int kEachBatch = 2 + 22 + 21;
constexpr int kNothingLost = kEachBatch + 110 + 3 * 21;
constexpr int kAllLost = kEachBatch + 100 + 1;
constexpr int kAllLostShortLine = kEachBatch + 10 + 1;
constexpr int kAllLostNoLine = kEachBatch + 1 + 1;  // leaves at the first look at its position

class RailwayOverrideTest : public RailwayProcessTest {
 protected:
  /// Runs one batch with the overrides; `told` is what applying them prints on standard output.
  void expectRun(const std::string& overrides, int actions, const std::string& told = "",
                 const std::string& error = "") const {
    expectGoodRun(railway({"-N", "1", "-O", overrides}),
                  goodOutput("Max Number of Batches: 1\nOverrideString is " + overrides + "\n", actions,
                             told + "Overriding global variables in simulator\n"),
                  error + kGoodError);
  }
};

TEST_F(RailwayOverrideTest, AnEmptyStringChangesNothing) {
  expectRun("", kNothingLost);
}

TEST_F(RailwayOverrideTest, AValueReplacesTheExperimentsOne) {
  expectRun("d:netNotDeliveryProb:1", kAllLost);
}

TEST_F(RailwayOverrideTest, SeveralTriplesAreAllApplied) {
  expectRun("d:netNotDeliveryProb:1:i:lineLength:800", kAllLostShortLine);
}

TEST_F(RailwayOverrideTest, ALaterTripleWinsOverAnEarlierOne) {
  expectRun("d:netNotDeliveryProb:1:d:netNotDeliveryProb:0", kNothingLost);
}

TEST_F(RailwayOverrideTest, IntegersMayBeHexadecimal) {
  expectRun("d:netNotDeliveryProb:1:i:lineLength:0x320", kAllLostShortLine);
}

TEST_F(RailwayOverrideTest, IntegersMayBeOctal) {
  expectRun("d:netNotDeliveryProb:1:i:lineLength:01440", kAllLostShortLine);
}

TEST_F(RailwayOverrideTest, RunsOfColonsCountAsOne) {
  expectRun("::d::netNotDeliveryProb:::1::", kAllLost);
}

TEST_F(RailwayOverrideTest, OfATypeOnlyTheFirstCharacterCounts) {
  expectRun("double:netNotDeliveryProb:1", kAllLost);
}

TEST_F(RailwayOverrideTest, ATypeWithoutAValueIsToldAndChangesNothing) {
  expectRun("d:netNotDeliveryProb", kNothingLost, "Not enough double override tokens");
}

TEST_F(RailwayOverrideTest, ATypeWithoutANameIsToldAfterTheTriplesBeforeItAreApplied) {
  expectRun("d:netNotDeliveryProb:1:d", kAllLost, "Not enough double override tokens");
}

TEST_F(RailwayOverrideTest, AnUnknownTypeDropsItsTripleAlone) {
  expectRun("x:foo:1:d:netNotDeliveryProb:1", kAllLost, "Type x not recognized\n");
}

TEST_F(RailwayOverrideTest, AnUnknownNameIsReportedAndTheRestApplied) {
  expectRun("d:noSuchName:1:d:netNotDeliveryProb:1", kAllLost, "",
            "!! studyRangeStudy::OverrideGVValue: Global Variable noSuchName does not exist.\n");
}

TEST_F(RailwayOverrideTest, NamesAreCaseSensitive) {
  expectRun("d:NETNOTDELIVERYPROB:1", kNothingLost, "",
            "!! studyRangeStudy::OverrideGVValue: Global Variable NETNOTDELIVERYPROB does not exist.\n");
}

TEST_F(RailwayOverrideTest, AValueThatIsNoNumberCountsAsZero) {
  expectRun("d:netNotDeliveryProb:1:i:lineLength:far", kAllLostNoLine);
}

TEST_F(RailwayOverrideTest, NoTrainsAtAllEndTheRunAtTheFirstIndex) {
  const auto run = railway({"-N", "1", "-O", "s:nTrains:0"});
  EXPECT_EQ(run.signal, SIGABRT);
  EXPECT_EQ(run.out,
            "Max Number of Batches: 1\nOverrideString is s:nTrains:0\nOverriding global variables in simulator\n");
  const std::string words =
      "Runtime error: index out of bounds. trackStatusAreasHeads[0..18446744073709551615] indexed with 0\n";
  EXPECT_EQ(run.err.substr(0, words.size()), words);
  EXPECT_EQ(run.err.substr(words.size(), 19), "Assertion failed: 0");
}

TEST_F(RailwayOverrideTest, ANegativeNumberOfTrainsIsRefused) {
  const auto run = railway({"-N", "1", "-O", "s:nTrains:-1"});
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.out,
            "Max Number of Batches: 1\nOverrideString is s:nTrains:-1\nOverriding global variables in simulator\n");
  EXPECT_EQ(run.err, "Number of reps for fleet must be >= 0.\n");
}

}  // namespace
