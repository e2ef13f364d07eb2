#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "cli/RailwayProcessTest.h"

namespace {

using support::goodOutput;
using support::kGoodError;
using support::RailwayProcessTest;

constexpr int kVariables = 11;
constexpr int kNothingLost = 218;  // actions of a batch of one train, as CommandOptions_test.cpp counts them
constexpr int kAllLost = 146;      // and with every message lost, as Overrides_test.cpp does

const std::string kAllLostOption = "d:netNotDeliveryProb:1";
const std::string kAllLostTold = "OverrideString is " + kAllLostOption + "\n";
const std::string kOverriding = "Overriding global variables in simulator\n";

/// With every message lost the train leaves at time 100, which the first two stop times lie before.
double observation(int variable) {
  return variable < 2 ? 0.0 : 1.0;
}

/// First two lines of an ASCII file.
std::string asciiHead(const std::string& seed, const std::string& generator) {
  return "#QUORVA_SIM_ASCII_FILE,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=" + seed +
         ",RANDOMGEN=" + generator + "\n#FORMAT: (PV ID Number),(PV Value)\n";
}

/// A whole ASCII file of a run with every message lost, its batches told in reports of these sizes.
std::string asciiFile(const std::string& head, const std::vector<int>& reports) {
  std::string text = head;
  int batches = 0;
  for (const int report : reports) {
    for (int variable = 0; variable < kVariables; ++variable) {
      for (int batch = 0; batch < report; ++batch) {
        text += std::to_string(variable) + (observation(variable) == 0.0 ? ",0.0\n" : ",1.0\n");
      }
    }
    batches += report;
  }
  return text + "#META_DATA,BATCHES=" + std::to_string(batches) + "\n";
}

/// An integer of `width` bytes, most significant first.
std::string bigEndian(std::uint64_t value, int width) {
  std::string bytes;
  for (int byte = width - 1; byte >= 0; --byte) {
    bytes += static_cast<char>((value >> (8 * byte)) & 0xFF);
  }
  return bytes;
}

/// The header of a binary file: the text, filled up with zero bytes to 256.
std::string binaryHeader(const std::string& seed, const std::string& generator, int batches) {
  std::string header = "QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=" + seed +
                       ",RANDOMGEN=" + generator + ",BATCHES=" + std::to_string(batches) + ",,";
  header.resize(256, '\0');
  return header;
}

/// One data message of a run with every message lost.
std::string dataMessage(std::uint8_t client, int batches) {
  const int length = 9 + 7 * kVariables + 8 * kVariables * batches;
  std::string message = bigEndian(static_cast<std::uint64_t>(length), 4) + bigEndian(client, 1) + bigEndian(0, 2) +
                        bigEndian(kVariables, 2);
  for (int variable = 0; variable < kVariables; ++variable) {
    message += bigEndian(static_cast<std::uint64_t>(variable), 2) + bigEndian(1, 1) +
               bigEndian(static_cast<std::uint64_t>(batches), 4);
    for (int batch = 0; batch < batches; ++batch) {
      message += bigEndian(std::bit_cast<std::uint64_t>(observation(variable)), 8);
    }
  }
  return message;
}

using RailwayResultTest = RailwayProcessTest;

TEST_F(RailwayResultTest, ARunWithoutFilesStillTellsWhatItFired) {
  expectGoodRun(railway({"-N", "5"}), goodOutput("Max Number of Batches: 5\n", 5 * kNothingLost));
}

TEST_F(RailwayResultTest, WithNothingLostNoTrainLeaves) {
  expectGoodRun(railway({"-N", "2", "-a", "text"}),
                goodOutput("Max Number of Batches: 2\nASCIIFilename: text\n", 2 * kNothingLost));
  std::string expected = asciiHead("31415", "Lagged Fibonacci");
  for (int variable = 0; variable < kVariables; ++variable) {
    expected += std::to_string(variable) + ",0.0\n" + std::to_string(variable) + ",0.0\n";
  }
  EXPECT_EQ(contents("text"), expected + "#META_DATA,BATCHES=2\n");
}

TEST_F(RailwayResultTest, BothFilesHoldEveryObservationOfTheRun) {
  expectGoodRun(railway({"-N", "5", "-a", "text", "-b", "bin", "-O", kAllLostOption}),
                goodOutput("Max Number of Batches: 5\nASCIIFilename: text\nBinFilename: bin\n" + kAllLostTold,
                           5 * kAllLost, kOverriding));
  EXPECT_EQ(contents("text"), asciiFile(asciiHead("31415", "Lagged Fibonacci"), {5}));
  EXPECT_EQ(contents("bin"), binaryHeader("31415", "Lagged Fibonacci", 5) + dataMessage(0, 5));
}

TEST_F(RailwayResultTest, ReportsFollowEachOtherInBothFiles) {
  expectGoodRun(railway({"-N5", "-n2", "-atext", "-bbin", "-c9", "-O" + kAllLostOption}),
                goodOutput("Max Number of Batches: 5\nReportSize: 2\nASCIIFilename: text\nBinFilename: bin\n"
                           "ClientID: 9\n" +
                               kAllLostTold,
                           5 * kAllLost, kOverriding));
  EXPECT_EQ(contents("text"), asciiFile(asciiHead("31415", "Lagged Fibonacci"), {2, 2, 1}));
  EXPECT_EQ(contents("bin"),
            binaryHeader("31415", "Lagged Fibonacci", 5) + dataMessage(9, 2) + dataMessage(9, 2) + dataMessage(9, 1));
}

TEST_F(RailwayResultTest, ReportsHeldBackAreAllThereAtTheEnd) {
  const auto run = railway({"-N", "60", "-n", "1", "-a", "text", "-O", kAllLostOption});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(contents("text"), asciiFile(asciiHead("31415", "Lagged Fibonacci"), std::vector<int>(60, 1)));
}

TEST_F(RailwayResultTest, TheFilesNameTheSeedAndTheGenerator) {
  const auto run = railway({"-N", "1", "-a", "text", "-b", "bin", "-s", "77", "-r", "2", "-O", kAllLostOption});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(contents("text"), asciiFile(asciiHead("77", "Mersenne Twister"), {1}));
  EXPECT_EQ(contents("bin"), binaryHeader("77", "Mersenne Twister", 1) + dataMessage(0, 1));
}

TEST_F(RailwayResultTest, SeedZeroStandsForTheDefaultOne) {
  const auto run = railway({"-N", "1", "-a", "text", "-b", "bin", "-s", "0", "-r", "1", "-O", kAllLostOption});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(contents("text"), asciiFile(asciiHead("31415", "Tausworthe"), {1}));
  EXPECT_EQ(contents("bin"), binaryHeader("31415", "Tausworthe", 1) + dataMessage(0, 1));
}

TEST_F(RailwayResultTest, AnExperimentThatDoesNotExistEndsTheRun) {
  const auto run = railway({"-N", "1", "-e", "4"});
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.out, "Max Number of Batches: 1\nExperiment: 4\n");
  EXPECT_EQ(run.err, "ERROR: Experiment 4 does not exist, the study's experiments are 0 to 0\n");
}

TEST_F(RailwayResultTest, FilesThatCannotBeOpenedLeaveTheRunAlone) {
  expectGoodRun(railway({"-N", "1", "-a", "no/such/folder/text", "-b", "no/such/folder/bin"}),
                goodOutput("Max Number of Batches: 1\nASCIIFilename: no/such/folder/text\n"
                           "BinFilename: no/such/folder/bin\n",
                           kNothingLost));
}

TEST_F(RailwayResultTest, AnOlderFileIsReplaced) {
  EXPECT_EQ(railway({"-N", "9", "-a", "text", "-b", "bin", "-O", kAllLostOption}).exitStatus, 0);
  EXPECT_EQ(railway({"-N", "1", "-a", "text", "-b", "bin", "-O", kAllLostOption}).exitStatus, 0);
  EXPECT_EQ(contents("text"), asciiFile(asciiHead("31415", "Lagged Fibonacci"), {1}));
  EXPECT_EQ(contents("bin"), binaryHeader("31415", "Lagged Fibonacci", 1) + dataMessage(0, 1));
}

TEST_F(RailwayResultTest, TheSameCommandGivesTheSameBytes) {
  const std::string overrides = "s:nTrains:5:d:netNotDeliveryProb:0.5";
  const auto first = railway({"-N", "50", "-a", "text", "-b", "bin", "-r", "2", "-O", overrides});
  const std::string text = contents("text");
  const std::string binary = contents("bin");
  const auto second = railway({"-N", "50", "-a", "text", "-b", "bin", "-r", "2", "-O", overrides});
  EXPECT_EQ(first.exitStatus, 0);
  EXPECT_EQ(first.out, second.out);
  EXPECT_EQ(first.err, second.err);
  EXPECT_EQ(contents("text"), text);
  EXPECT_EQ(contents("bin"), binary);
}

// At this loss the train leaves in about half of the batches: two streams that agree on all 1000 are the same stream.
TEST_F(RailwayResultTest, AnotherSeedGivesOtherObservations) {
  EXPECT_EQ(railway({"-N", "1000", "-a", "one", "-s", "1", "-O", "d:netNotDeliveryProb:0.8"}).exitStatus, 0);
  EXPECT_EQ(railway({"-N", "1000", "-a", "two", "-s", "2", "-O", "d:netNotDeliveryProb:0.8"}).exitStatus, 0);
  const auto dataLines = [this](const std::string& file) {
    const std::string text = contents(file);
    return text.substr(text.find("#FORMAT"));
  };
  EXPECT_NE(dataLines("one"), dataLines("two"));
}

// ---- SIMTEST --------------------------------------------------------------------------------------------------------

struct SimTestCase {
  std::string value;
  std::string builder;
  int actions;

  friend std::ostream& operator<<(std::ostream& out, const SimTestCase& testCase) { return out << testCase.value; }
};

class RailwaySimTest : public RailwayProcessTest, public ::testing::WithParamInterface<SimTestCase> {};

// Without a connectivity list nothing is scheduled after a firing, and assigningID is all that is enabled at the start.
INSTANTIATE_TEST_SUITE_P(Values, RailwaySimTest,
                         ::testing::Values(SimTestCase{"0", "GenerateConnectivityListOld()\n", kNothingLost},
                                           SimTestCase{"1", "GenerateConnectivityListOld()\n", kNothingLost},
                                           SimTestCase{"2", "GenerateConnectivityList()\n", kNothingLost},
                                           SimTestCase{"text", "GenerateConnectivityListOld()\n", kNothingLost},
                                           SimTestCase{"7", "", 1}, SimTestCase{"-1", "", 1}),
                         [](const auto& testCase) { return "Number" + std::to_string(testCase.index); });

TEST_P(RailwaySimTest, ChoosesTheBuilderOfTheConnectivityList) {
  const auto& [value, builder, actions] = GetParam();
  expectGoodRun(railway({"-N", "3"}, {{"SIMTEST", value}}),
                goodOutput("Max Number of Batches: 3\n", 3 * actions, "", builder));
}

}  // namespace
