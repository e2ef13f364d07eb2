#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ArcCheck/ArcsAreChecked.h"
#include "support/ProcessRunner.h"

namespace {

using ::testing::HasSubstr;

const std::string kGoodExit = "SIMULATOR::MAIN()-GOOD EXIT\n";

support::ProcessResult run(int mistake, int machines = 3) {
  return support::runProcess(
      QUORVA_FAULTY,
      {"-N", "20", "-O", "s:mistake:" + std::to_string(mistake) + ":s:machines:" + std::to_string(machines)});
}

/// What a run with the mistake tells about arcs, without the line of counts at its end, which is checked here.
std::string faultsTold(int mistake, int expected, int machines = 3) {
  const support::ProcessResult result = run(mistake, machines);
  EXPECT_EQ(result.exitStatus, expected == 0 ? 0 : 3);
  const std::string counted = ", " + std::to_string(expected) + " faults\n" + kGoodExit;
  EXPECT_TRUE(result.err.ends_with(counted)) << result.err;
  const auto lastLine = result.err.rfind("ARCS: ");
  EXPECT_NE(lastLine, std::string::npos);
  return result.err.substr(0, lastLine);
}

// ---- In a build that checks arcs ---------------------------------------------------------------------------------

class ArcsTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!support::kArcsAreChecked) {
      GTEST_SKIP() << "this build does not check arcs; scripts/check-arcs does";
    }
  }
};

TEST_F(ArcsTest, AModelWithAllItsArcsHasNoFaults) {
  EXPECT_EQ(faultsTold(0, 0), "");
  EXPECT_EQ(faultsTold(0, 0, 1), "");
  EXPECT_EQ(faultsTold(0, 0, 0), "");  // a replication of none has no partner, and needs none
}

TEST_F(ArcsTest, AnEnablingArcTakenOutIsToldOnceForAllCopies) {
  EXPECT_EQ(
      faultsTold(1, 1),
      "ARCS: model \"plant/fleet/machine\", activity \"fail\": Enabled reads \"up\" without an enabling arc; name it "
      "in enabledBy, or in a call of AddEnableArc\n");
}

TEST_F(ArcsTest, AnAffectingArcToASharedPlaceTakenOutIsToldByTheNameInItsModel) {
  EXPECT_EQ(
      faultsTold(2, 1),
      "ARCS: model \"plant/fleet/machine\", activity \"fail\": Fire changes \"broken\" without an affecting arc; name "
      "it in fires, or in a call of AddAffectArc\n");
}

TEST_F(ArcsTest, AnEnablingArcToOneElementOfAnArrayTakenOutIsTold) {
  EXPECT_EQ(
      faultsTold(3, 1),
      "ARCS: model \"plant/crew\", activity \"mend\": Enabled reads \"open.2\" without an enabling arc; name it in "
      "enabledBy, or in a call of AddEnableArc\n");
}

TEST_F(ArcsTest, OfAWholeArrayThreeElementsAreTold) {
  const std::string start = "ARCS: model \"plant/crew\", activity \"mend\": Enabled reads ";
  const std::string end = " without an enabling arc; name it in enabledBy, or in a call of AddEnableArc\n";
  EXPECT_EQ(faultsTold(4, 4), start + "\"open.0\"" + end + start + "\"open.1\"" + end + start + "\"open.2\"" + end +
                                  start + "more of \"open\" than is told here\n");
}

TEST_F(ArcsTest, AnAffectingArcToAFieldOfAStructTakenOutIsTold) {
  EXPECT_EQ(
      faultsTold(5, 1),
      "ARCS: model \"plant/crew\", activity \"mend\": Fire changes \"logs.1.entries\" without an affecting arc; name "
      "it in fires, or in a call of AddAffectArc\n");
}

TEST_F(ArcsTest, AChangeByEnabledIsTold) {
  // The counter is read for being counted up, too.
  const std::string start = "ARCS: model \"plant/crew\", activity \"mend\": Enabled ";
  const std::string told = faultsTold(6, 2);
  EXPECT_EQ(told, start + "changes \"asked\", and may only look; change it in Fire\n" + start +
                      "reads \"asked\" without an enabling arc; name it in enabledBy, or in a call of AddEnableArc\n");
}

TEST_F(ArcsTest, AnArcOfASingleCaseTakenOutIsTold) {
  EXPECT_EQ(
      faultsTold(7, 1),
      "ARCS: model \"plant/crew\", activity \"turn_case2\": Fire changes \"open.2\" without an affecting arc; name it "
      "in fires, or in a call of AddAffectArc\n");
}

TEST_F(ArcsTest, AReadThroughACachedPointerOfAnActivityByHandIsTold) {
  EXPECT_EQ(
      faultsTold(8, 1),
      "ARCS: model \"plant/crew\", activity \"wear\": Enabled reads \"queue\" without an enabling arc; name it in "
      "enabledBy, or in a call of AddEnableArc\n");
}

TEST_F(ArcsTest, AnArcToAVariableOfNoModelIsTold) {
  EXPECT_EQ(
      faultsTold(9, 1),
      "ARCS: model \"plant/crew\", activity \"stand\": an arc leads to \"stray\", which is no variable of a model; "
      "enter it among the variables of its model\n");
}

#ifdef QUORVA_CHECK_ARCS
// Arcs of the models themselves.

/// The ARCS lines on standard error, without the one of counts.
std::string faultsOfModel(const std::string& program, const std::vector<std::string>& arguments) {
  const support::ProcessResult result = support::runProcess(program, arguments);
  EXPECT_EQ(result.exitStatus, 3);
  return result.err.substr(0, result.err.rfind("ARCS: "));
}

TEST_F(ArcsTest, AnArcTakenOutOfTheQueueIsTold) {
  EXPECT_EQ(
      faultsOfModel(QUORVA_QUEUE_LESS, {"-N", "5"}),
      "ARCS: model \"queue\", activity \"serve\": Enabled reads \"q\" without an enabling arc; name it in enabledBy, "
      "or in a call of AddEnableArc\n");
}

TEST_F(ArcsTest, ArcsTakenOutOfTheRailwayAreTold) {
  const std::string start = "ARCS: model \"join/fleet/train\", activity \"";
  const std::string told =
      faultsOfModel(QUORVA_RAILWAY_LESS, {"-N", "20", "-O", "s:nTrains:2:d:netNotDeliveryProb:0.5"});
  const std::string enabling = " without an enabling arc; name it in enabledBy, or in a call of AddEnableArc\n";
  for (const std::string oneCase : {"1", "2"}) {
    for (const std::string train : {"0", "1"}) {
      EXPECT_THAT(told, HasSubstr(start + "MANetworkDelay_case" + oneCase + "\": Enabled reads \"MAmessages." + train +
                                  ".timestamp\"" + enabling));
    }
  }
  for (const std::string train : {"0", "1"}) {
    EXPECT_THAT(told, HasSubstr(start + "MANetworkDelay_case1\": Fire changes \"trainMAs." + train +
                                "\" without an affecting arc; name it in fires, or in a call of AddAffectArc\n"));
  }
  EXPECT_EQ(std::ranges::count(told, '\n'), 6);
}

#endif  // QUORVA_CHECK_ARCS

// ---- In any other build --------------------------------------------------------------------------------------------

TEST(MistakesTest, WithoutTheCheckAMissingArcIsNotTold) {
  if (support::kArcsAreChecked) {
    GTEST_SKIP() << "this build checks arcs";
  }
  for (int mistake = 0; mistake < 10; ++mistake) {
    const support::ProcessResult result = run(mistake);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.err, kGoodExit);
  }
}

// ---- In every build ------------------------------------------------------------------------------------------------

/// That the model is not built, and why.
void expectRefusal(int mistake, const std::string& err) {
  const support::ProcessResult result = run(mistake);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err, err);
  EXPECT_EQ(result.out, "Max Number of Batches: 20\nOverrideString is s:mistake:" + std::to_string(mistake) +
                            ":s:machines:3\nOverriding global variables in simulator\n");
}

TEST(MistakesTest, AnArcToNullIsRefusedWithItsNumber) {
  expectRefusal(
      21, "ERROR: model \"machine\": enabling arc 1 of activity \"fail\" leads to no variable: its pointer is null\n");
  expectRefusal(
      22, "ERROR: model \"machine\": affecting arc 2 of activity \"fail\" leads to no variable: its pointer is null\n");
}

TEST(MistakesTest, AnArcToNullDrawnByHandIsRefusedWithTheArcBeforeIt) {
  expectRefusal(
      23,
      "ERROR: model \"crew\": the affecting arc of activity \"lean\" behind that to \"queue\" leads to no variable: "
      "its pointer is null\n");
}

TEST(MistakesTest, ASharedNameWithoutAPartnerIsRefused) {
  expectRefusal(24, "ERROR: model \"plant\" shares \"tools\", which only its child \"crew\" has\n");
  expectRefusal(
      25,
      "ERROR: model \"plant\" shares \"broken\" with the variable \"quue\" of its child \"crew\", which has no such "
      "variable\n");
  expectRefusal(
      26, "ERROR: model \"fleet\" shares \"brokn\" among copies of \"machine\", which has no variable \"brokn\"\n");
}

}  // namespace
