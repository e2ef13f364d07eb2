#include "Study/Unit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <string>

#include "Study/UnitSeed.h"

namespace controller {
namespace {

using testing::ElementsAre;

const Experiment kExperiment{"1 nTrains=3", 1, "s:nTrains:3", {2, 5}};

StudyIdentity studyOf(std::int64_t batchesPerUnit) {
  StudyIdentity study;
  study.simulatorDigest = "abc";
  study.generator = 1;
  study.seed = 7;
  study.batchesPerUnit = batchesPerUnit;
  return study;
}

std::string number(std::uint64_t value, int width) {
  std::string bytes;
  for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
    bytes += static_cast<char>(value >> shift & 0xffU);
  }
  return bytes;
}

/// The result file of a unit of one batch in which each of the variables is as large as its number.
std::string resultFile(std::uint32_t seed, const std::vector<std::uint64_t>& variables) {
  std::string file =
      "QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=1,SEED=" + std::to_string(seed) +
      ",RANDOMGEN=Tausworthe,BATCHES=1,,";
  file.resize(256, '\0');
  file += number(9 + 15 * variables.size(), 4) + number(0, 1) + number(1, 2) + number(variables.size(), 2);
  for (const std::uint64_t variable : variables) {
    file += number(variable, 2) + number(1, 1) + number(1, 4) +
            number(std::bit_cast<std::uint64_t>(static_cast<double>(variable)), 8);
  }
  return file;
}

UnitObservations observationsIn(const std::string& file, std::int64_t unit) {
  return unitObservations(studyOf(1), kExperiment, unit, std::as_bytes(std::span(file)));
}

TEST(UnitTest, ARequestHasAllThatTheUnitDependsOn) {
  const std::string seed = std::to_string(unitSeed(7, "1 nTrains=3", 4));
  const RunRequest request = unitRequest(studyOf(200), kExperiment, 4, "/opt/railway");
  EXPECT_EQ(request.program, "/opt/railway");
  EXPECT_EQ(request.digest, "abc");
  EXPECT_THAT(request.arguments,
              ElementsAre("-t", "1", "-e", "1", "-r", "1", "-s", seed, "-N", "200", "-O", "s:nTrains:3"));
  EXPECT_EQ(commandOf(request), "/opt/railway -t 1 -e 1 -r 1 -s " + seed + " -N 200 -O s:nTrains:3");
}

TEST(UnitTest, ASteadyStateUnitWithoutOverridesIsAskedForAsSuch) {
  StudyIdentity study = studyOf(60);
  study.isTerminating = false;
  const std::string seed = std::to_string(unitSeed(7, "0", 0));
  EXPECT_THAT(unitRequest(study, {"0", 0, "", {2}}, 0, "/opt/railway").arguments,
              ElementsAre("-t", "0", "-e", "0", "-r", "1", "-s", seed, "-N", "60"));
}

TEST(UnitTest, OfTheObservationsThoseOfTheStudysVariablesAreTaken) {
  const UnitObservations unit = observationsIn(resultFile(unitSeed(7, "1 nTrains=3", 4), {1, 2, 5, 6}), 4);
  EXPECT_EQ(unit.simulatorVersion, "Version 2.5");
  ASSERT_EQ(unit.variables.size(), 2U);
  EXPECT_EQ(unit.variables[0].variable, 2);
  EXPECT_THAT(unit.variables[0].values, ElementsAre(2.0));
  EXPECT_EQ(unit.variables[1].variable, 5);
  EXPECT_THAT(unit.variables[1].values, ElementsAre(5.0));
}

TEST(UnitTest, TheResultFileOfAnotherUnitIsRefused) {
  const std::string file = resultFile(unitSeed(7, "1 nTrains=3", 4), {2, 5});
  EXPECT_THROW(static_cast<void>(observationsIn(file, 5)), ResultFileError);
}

}  // namespace
}  // namespace controller
