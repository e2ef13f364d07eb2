#include "Study/Unit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Study/UnitSeed.h"
#include "controller/Process/ResultFileBuilder.h"

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

/// The result file of a unit of one batch in which each of the variables is as large as its number.
std::string resultFile(std::uint32_t seed, const std::vector<std::uint16_t>& variables) {
  support::ResultFileBuilder file("QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=1,SEED=" +
                                  std::to_string(seed) + ",RANDOMGEN=Tausworthe,BATCHES=1,,");
  file.messageHead(9 + 15 * variables.size(), variables.size());
  for (const std::uint16_t variable : variables) {
    file.recordHead(variable, 1).value(variable);
  }
  return file.bytes();
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
