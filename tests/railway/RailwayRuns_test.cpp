#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "cli/RailwayProcessTest.h"

namespace {

using support::ProcessResult;
using support::RailwayProcessTest;
using ::testing::Combine;
using ::testing::HasSubstr;
using ::testing::Values;

constexpr int kVariables = 11;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// Lines of a whole ASCII file whose every batch observes the same: `observations` holds one value for each variable.
std::vector<std::string> fileOfEqualBatches(const std::string& generator, int batches,
                                            const std::vector<std::string>& observations) {
  std::vector<std::string> lines{
      "#QUORVA_SIM_ASCII_FILE,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,RANDOMGEN=" + generator,
      "#FORMAT: (PV ID Number),(PV Value)"};
  for (std::size_t variable = 0; variable < observations.size(); ++variable) {
    lines.insert(lines.end(), static_cast<std::size_t>(batches),
                 std::to_string(variable) + "," + observations[variable]);
  }
  lines.push_back("#META_DATA,BATCHES=" + std::to_string(batches));
  return lines;
}

const std::vector<std::string> kNoExit(kVariables, "0.0");
/// One train exits at time 100, the third stop time.
const std::vector<std::string> kExitAt100{"0.0", "0.0", "1.0", "1.0", "1.0", "1.0", "1.0", "1.0", "1.0", "1.0", "1.0"};

class RailwayExampleTest : public RailwayProcessTest {
 protected:
  std::vector<std::string> fileOf(const std::vector<std::string>& arguments, Environment environment = {}) const {
    std::vector<std::string> all{"-a", "out.csv"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const ProcessResult run = railway(all, std::move(environment));
    EXPECT_EQ(run.exitStatus, 0) << run.err;
    return linesOf(contents("out.csv"));
  }
};

TEST_F(RailwayExampleTest, TheExperimentAsItStandsLetsNoTrainExit) {
  // The first report's authority ends where the train was when it reported, so that the train falls back and stays.
  const std::vector<std::string> lines = fileOf({"-N", "1000"});
  EXPECT_EQ(lines.size(), 2U + 11000U + 1U);
  EXPECT_EQ(lines, fileOfEqualBatches("Lagged Fibonacci", 1000, kNoExit));
}

TEST_F(RailwayExampleTest, WithoutAnyDeliveryTheTrainExitsAtTime100) {
  EXPECT_EQ(fileOf({"-N", "20", "-O", "d:netNotDeliveryProb:1"}),
            fileOfEqualBatches("Lagged Fibonacci", 20, kExitAt100));
}

TEST_F(RailwayExampleTest, AShorterLineIsLeftEarlier) {
  EXPECT_EQ(fileOf({"-N", "3", "-O", "d:netNotDeliveryProb:1:i:lineLength:7920"}),
            fileOfEqualBatches("Lagged Fibonacci", 3, std::vector<std::string>(kVariables, "1.0")));  // at time 99
}

TEST_F(RailwayExampleTest, EachTrainExitsOnceWhenItHasTheLineToItself) {
  // At 160 length units a time unit a train is through the line after 50 time units. Every authority but the first
  // train's is 0, so that the others never start.
  EXPECT_EQ(fileOf({"-N", "3", "-O", "d:netNotDeliveryProb:1:s:nTrains:5:s:maxTrainSpeed:160"}),
            fileOfEqualBatches("Lagged Fibonacci", 3, std::vector<std::string>(kVariables, "1.0")));
}

TEST_F(RailwayExampleTest, NoTrainsEndInTheBoundsCheck) {
  const ProcessResult run = railway({"-N", "1", "-O", "s:nTrains:0"});
  EXPECT_TRUE(run.signal.has_value());
  EXPECT_THAT(run.err, HasSubstr("Runtime error: index out of bounds. "
                                 "trackStatusAreasHeads[0..18446744073709551615] indexed with 0\n"));
}

TEST_F(RailwayExampleTest, ANegativeNumberOfTrainsIsRefused) {
  const ProcessResult run = railway({"-N", "1", "-O", "s:nTrains:-2"});
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.err, "Number of reps for fleet must be >= 0.\n");
}

TEST_F(RailwayExampleTest, WithoutConnectivityEachTrainTakesItsIdentityAndNothingFollows) {
  const ProcessResult run = railway({"-N", "4", "-O", "s:nTrains:3"}, {{"SIMTEST", "7"}});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_THAT(run.out, HasSubstr("Actions fired: 12\n"));
}

TEST_F(RailwayExampleTest, SeedsAndGeneratorsGiveStreamsOfTheirOwn) {
  const auto observed = [&](const std::string& seed, const std::string& generator) {
    std::vector<std::string> lines =
        fileOf({"-N", "50", "-s", seed, "-r", generator, "-O", "d:netNotDeliveryProb:0.8:s:nTrains:2"});
    lines.erase(lines.begin());  // it names seed and generator
    return lines;
  };
  EXPECT_NE(observed("1", "0"), observed("2", "0"));
  EXPECT_NE(observed("1", "0"), observed("1", "1"));
  EXPECT_NE(observed("1", "0"), observed("1", "2"));
  EXPECT_NE(observed("1", "1"), observed("1", "2"));
}

/// Number of trains and SIMTEST.
class RailwayRunsTest : public RailwayExampleTest,
                        public ::testing::WithParamInterface<std::tuple<int, std::string>> {};

TEST_P(RailwayRunsTest, EndWellAndRepeatThemselvesByteForByte) {
  const auto& [trains, simtest] = GetParam();
  const std::vector<std::string> generators{"Lagged Fibonacci", "Tausworthe", "Mersenne Twister"};
  for (std::size_t generator = 0; generator < generators.size(); ++generator) {
    for (const std::string loss : {"0", "0.6", "1"}) {
      const std::vector<std::string> arguments{
          "-N", "3",       "-r", std::to_string(generator),
          "-a", "out.csv", "-O", "s:nTrains:" + std::to_string(trains) + ":d:netNotDeliveryProb:" + loss};
      const Environment environment{{"SIMTEST", simtest}};
      const ProcessResult first = railway(arguments, environment);
      const std::string firstFile = contents("out.csv");
      const ProcessResult second = railway(arguments, environment);
      const std::string what = generators[generator] + ", loss " + loss;
      EXPECT_EQ(first.exitStatus, 0) << what << "\n" << first.err;
      EXPECT_EQ(first.err, "SIMULATOR::MAIN()-GOOD EXIT\n") << what;
      EXPECT_EQ(second.exitStatus, 0) << what;
      EXPECT_EQ(second.out, first.out) << what;
      EXPECT_EQ(contents("out.csv"), firstFile) << what;
      EXPECT_EQ(linesOf(firstFile).size(), 2U + 3U * kVariables + 1U) << what;
      if (loss == "1") {
        // Without any delivery the first train keeps the whole line as its authority and the others have none.
        EXPECT_EQ(linesOf(firstFile),
                  fileOfEqualBatches(generators[generator], 3, simtest == "7" ? kNoExit : kExitAt100))
            << what;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(TrainsAndBuilders, RailwayRunsTest, Combine(Values(1, 2, 5, 20), Values("0", "1", "2", "7")),
                         [](const auto& info) {
                           return "Trains" + std::to_string(std::get<0>(info.param)) + "Simtest" +
                                  std::get<1>(info.param);
                         });

}  // namespace
