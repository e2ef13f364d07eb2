#include "railway/Atomic/train/trainSAN.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "railway/RailwayTest.h"

namespace {

using support::affectedLeaves;
using support::ArcRow;
using support::changesOf;
using support::enablingLeaves;
using support::firingOf;
using support::leafNames;
using support::Marking;
using support::markingOf;
using support::RailwayTest;
using support::variablesOf;
using ::testing::ElementsAre;

class TrainTest : public RailwayTest {
 protected:
  /// A new train among `count`, with the identity `id`.
  trainSAN& makeTrain(int count = 1, short id = 0) {
    setTrains(count);
    train_ = std::make_unique<trainSAN>();
    train_->trainID->Mark() = id;
    return *train_;
  }

  static std::vector<Activity*> activitiesOf(trainSAN& train) {
    return {&train.assigningID,           &train.trainExits,
            &train.trainArrival,          &train.updatePosition,
            &train.TPRNetworkDelay_case1, &train.TPRNetworkDelay_case2,
            &train.updateTPR_case1,       &train.updateTPR_case2,
            &train.MANetworkDelay_case1,  &train.MANetworkDelay_case2};
  }

 private:
  std::unique_ptr<trainSAN> train_;
};

using TrainDeathTest = TrainTest;

// ---- What the model consists of ---------------------------------------------------------------------

TEST_F(TrainTest, ListsItsVariablesInOrder) {
  trainSAN& train = makeTrain();
  std::vector<std::string> names;
  for (BaseStateVariableClass* variable : variablesOf(train)) {
    names.emplace_back(variable->getFullyQualifiedName());
  }
  EXPECT_THAT(names,
              ElementsAre("trainID", "Start", "Count", "waitForEntering", "trainMovement", "sendTPR", "TPRtoRBC",
                          "MAtoRBC", "TPRwaiting", "trainHasToExit", "arrivalTime", "trainHeadPositions",
                          "trainTailPositions", "trainSpeeds", "TPRmessages", "trainMAs", "TPRmsg", "MAmessages"));
  EXPECT_STREQ(train.getName(), "train");
  EXPECT_EQ(train.getNumReadOnlyPlaces(), 0);
}

TEST_F(TrainTest, StartsFromItsInitialMarking) {
  Marking expected{
      {"trainID", 0},          {"Start", 1},           {"Count", 3},         {"waitForEntering", 0},
      {"trainMovement", 0},    {"sendTPR", 0},         {"TPRtoRBC", 0},      {"MAtoRBC", 0},
      {"TPRwaiting", 0},       {"trainHasToExit", 0},  {"arrivalTime.0", 0}, {"arrivalTime.1", 50},
      {"arrivalTime.2", 100},  {"trainMAs.0", 8000},   {"trainMAs.1", 0},    {"trainMAs.2", 0},
      {"TPRmsg.timestamp", 0}, {"TPRmsg.position", 0}, {"TPRmsg.speed", 0},  {"TPRmsg.integrityConfirmed", 0}};
  for (const std::string train : {"0", "1", "2"}) {
    expected["trainHeadPositions." + train] = 0;
    expected["trainTailPositions." + train] = 0;
    expected["trainSpeeds." + train] = 0;
    expected["TPRmessages." + train + ".timestamp"] = 0;
    expected["TPRmessages." + train + ".position"] = 0;
    expected["TPRmessages." + train + ".speed"] = 0;
    expected["TPRmessages." + train + ".integrityConfirmed"] = 0;
    expected["MAmessages." + train + ".timestamp"] = 0;
    expected["MAmessages." + train + ".EoA"] = 0;
  }
  EXPECT_EQ(markingOf(makeTrain(3)), expected);
}

TEST_F(TrainTest, ArrivalTimesKeepTheirLowSixteenBits) {
  // 656 * 50 is 32800, 32 above the largest 16-bit number plus one.
  EXPECT_EQ(makeTrain(657).arrivalTime->Index(655)->Mark(), 32750);
  EXPECT_EQ(makeTrain(657).arrivalTime->Index(656)->Mark(), -32736);
}

TEST_F(TrainTest, ListsItsActivitiesAndGroupsInOrder) {
  trainSAN& train = makeTrain();
  const std::vector<Activity*> activities = activitiesOf(train);
  ASSERT_EQ(train.getNumActions(), 10);
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(train.getActionList()[i], activities[static_cast<std::size_t>(i)]);
    EXPECT_EQ(train.getActionList()[i]->TheModel, static_cast<BaseModelClass*>(&train));
  }
  ASSERT_EQ(train.getNumGroups(), 7);
  EXPECT_EQ(std::vector<BaseGroupClass*>(train.getGroupList(), train.getGroupList() + 7),
            (std::vector<BaseGroupClass*>{&train.trainArrival, &train.updatePosition, &train.TPRNetworkDelayGroup,
                                          &train.updateTPRGroup, &train.MANetworkDelayGroup, &train.assigningID,
                                          &train.trainExits}));
}

TEST_F(TrainTest, ThreeGroupsHoldTheTwoCasesOfAnActivity) {
  trainSAN& train = makeTrain();
  const auto expectCases = [](PostselectGroup& group, const char* name, Activity& case1, Activity& case2) {
    EXPECT_STREQ(group.ActionName, name);
    ASSERT_EQ(group.getNumMembers(), 2);
    EXPECT_EQ(group.getMember(0), &case1);
    EXPECT_EQ(group.getMember(1), &case2);
  };
  expectCases(train.TPRNetworkDelayGroup, "TPRNetworkDelayGroup", train.TPRNetworkDelay_case1,
              train.TPRNetworkDelay_case2);
  expectCases(train.updateTPRGroup, "updateTPRGroup", train.updateTPR_case1, train.updateTPR_case2);
  expectCases(train.MANetworkDelayGroup, "MANetworkDelayGroup", train.MANetworkDelay_case1, train.MANetworkDelay_case2);
  EXPECT_EQ(train.ImmediateGroup.getNumMembers(), 0);
  EXPECT_EQ(train.assigningIDGroup.getNumMembers(), 0);
  EXPECT_EQ(train.trainExitsGroup.getNumMembers(), 0);
}

TEST_F(TrainTest, NumbersActivitiesFirstAndGroupsBehindThem) {
  trainSAN& train = makeTrain();
  std::vector<BaseActionClass*> inOrder;
  for (Activity* activity : activitiesOf(train)) {
    inOrder.push_back(activity);
  }
  for (BaseActionClass* group :
       std::vector<BaseActionClass*>{&train.ImmediateGroup, &train.TPRNetworkDelayGroup, &train.updateTPRGroup,
                                     &train.MANetworkDelayGroup, &train.assigningIDGroup, &train.trainExitsGroup}) {
    inOrder.push_back(group);
  }
  for (std::size_t i = 1; i < inOrder.size(); ++i) {
    EXPECT_EQ(inOrder[i]->getID(), inOrder[0]->getID() + static_cast<int>(i)) << inOrder[i]->ActionName;
  }
}

TEST_F(TrainTest, EachActivityHasItsSettings) {
  struct Settings {
    std::string name;
    int groupId;
    Distribution distribution;
  };
  const std::vector<Settings> table{
      {"assigningID", 5, Instantaneous},           {"trainExits", 6, Instantaneous},
      {"trainArrival", 0, Deterministic},          {"updatePosition", 1, Deterministic},
      {"TPRNetworkDelay_case1", 2, Deterministic}, {"TPRNetworkDelay_case2", 2, Deterministic},
      {"updateTPR_case1", 3, Deterministic},       {"updateTPR_case2", 3, Deterministic},
      {"MANetworkDelay_case1", 4, Deterministic},  {"MANetworkDelay_case2", 4, Deterministic}};
  trainSAN& train = makeTrain();
  const std::vector<Activity*> activities = activitiesOf(train);
  for (std::size_t i = 0; i < table.size(); ++i) {
    Activity& activity = *activities[i];
    EXPECT_EQ(activity.ActionName, table[i].name);
    EXPECT_EQ(activity.getGroupId(), table[i].groupId) << table[i].name;
    EXPECT_EQ(activity.DistributionType, table[i].distribution) << table[i].name;
    EXPECT_EQ(activity.ExecutionPolicy, RaceEnabled) << table[i].name;
    EXPECT_FALSE(activity.Reactivation) << table[i].name;
    EXPECT_FALSE(activity.ReactivationPredicate()) << table[i].name;
    EXPECT_FALSE(activity.ReactivationFunction()) << table[i].name;
    EXPECT_EQ(activity.Rank(), 1) << table[i].name;
    EXPECT_EQ(activity.Rate(), 0.0) << table[i].name;
  }
}

// ---- Arcs -------------------------------------------------------------------------------------------

TEST_F(TrainTest, AffectingArcsAreThoseOfTheTable) {
  trainSAN& t = makeTrain(3);
  const std::vector<BaseStateVariableClass*> report{t.TPRwaiting,         t.sendTPR,    t.TPRmsg, t.trainID,
                                                    t.trainHeadPositions, t.trainSpeeds};
  const std::vector<ArcRow> table{
      {&t.assigningID, {t.Start, t.waitForEntering, t.trainID, t.Count}},
      {&t.trainExits, {t.trainHasToExit, t.trainMovement}},
      {&t.trainArrival,
       {t.waitForEntering, t.trainMovement, t.TPRwaiting, t.trainID, t.trainHeadPositions, t.trainTailPositions,
        t.trainMAs, t.trainSpeeds}},
      {&t.updatePosition,
       {t.trainMovement, t.trainID, t.trainHasToExit, t.trainHeadPositions, t.trainSpeeds, t.trainTailPositions,
        t.trainMAs}},
      {&t.TPRNetworkDelay_case1, {t.sendTPR, t.TPRtoRBC, t.trainID, t.TPRmsg, t.TPRmessages}},
      {&t.TPRNetworkDelay_case2, {t.sendTPR, t.TPRmsg}},
      {&t.updateTPR_case1, report},
      {&t.updateTPR_case2, report},
      {&t.MANetworkDelay_case1, {t.MAtoRBC, t.trainID, t.trainMAs, t.MAmessages}},
      {&t.MANetworkDelay_case2, {t.MAtoRBC, t.trainID, t.MAmessages}}};
  std::size_t arcs = 0;
  for (const ArcRow& row : table) {
    EXPECT_EQ(affectedLeaves(*row.first), leafNames(row)) << row.first->ActionName;
    arcs += row.second.size();
  }
  EXPECT_EQ(arcs, 47U);
}

TEST_F(TrainTest, EnablingArcsAreThoseOfTheTable) {
  trainSAN& t = makeTrain(3);
  const std::vector<BaseStateVariableClass*> authority{t.MAtoRBC, t.trainID, t.MAmessages};
  const std::vector<ArcRow> table{{&t.assigningID, {t.Start}},
                                  {&t.trainExits, {t.trainHasToExit, t.trainMovement}},
                                  {&t.trainArrival, {t.waitForEntering}},
                                  {&t.updatePosition, {t.trainMovement}},
                                  {&t.TPRNetworkDelay_case1, {t.sendTPR}},
                                  {&t.TPRNetworkDelay_case2, {t.sendTPR}},
                                  {&t.updateTPR_case1, {t.TPRwaiting}},
                                  {&t.updateTPR_case2, {t.TPRwaiting}},
                                  {&t.MANetworkDelay_case1, authority},
                                  {&t.MANetworkDelay_case2, authority}};
  std::size_t arcs = 0;
  for (const ArcRow& row : table) {
    EXPECT_EQ(enablingLeaves(*row.first), leafNames(row)) << row.first->ActionName;
    arcs += row.second.size();
  }
  EXPECT_EQ(arcs, 15U);
}

TEST_F(TrainTest, VariablesKnowTheActionsOfTheirArcs) {
  trainSAN& t = makeTrain();
  const auto expectList = [](List<BaseActionClass>* list, const std::vector<BaseActionClass*>& expected) {
    EXPECT_EQ(std::vector<BaseActionClass*>(list->getList(), list->getList() + list->getNumItems()), expected);
  };
  expectList(t.trainMovement->getEnabledActions(), {&t.trainExits, &t.updatePosition});
  expectList(t.trainMovement->getAffectingActions(), {&t.trainExits, &t.trainArrival, &t.updatePosition});
  expectList(t.MAmessages->Index(0)->EoA->getEnabledActions(), {&t.MANetworkDelay_case1, &t.MANetworkDelay_case2});
  expectList(t.trainMAs->Index(0)->getAffectingActions(),
             {&t.trainArrival, &t.updatePosition, &t.MANetworkDelay_case1});
}

// ---- Enabling, weights and delays -------------------------------------------------------------------

TEST_F(TrainTest, EnabledMovesTheOldAnswerOn) {
  trainSAN& train = makeTrain();
  EXPECT_FALSE(train.trainArrival.Enabled());
  train.waitForEntering->Mark() = 1;
  EXPECT_TRUE(train.trainArrival.Enabled());
  EXPECT_TRUE(train.trainArrival.NewEnabled);
  EXPECT_FALSE(train.trainArrival.OldEnabled);
  EXPECT_FALSE(train.trainArrival.EnablingChange());
  train.waitForEntering->Mark() = 0;
  EXPECT_TRUE(train.trainArrival.EnablingChange());
}

TEST_F(TrainTest, OneTokenEnablesASimpleActivity) {
  trainSAN& train = makeTrain();
  const auto expectEnabledBy = [](Place* place, const std::vector<Activity*>& activities) {
    for (Activity* activity : activities) {
      for (const short mark : std::initializer_list<short>{-1, 0, 1, 2}) {
        place->Mark() = mark;
        EXPECT_EQ(activity->Enabled(), mark > 0) << activity->ActionName << " with mark " << mark;
      }
    }
  };
  expectEnabledBy(train.Start, {&train.assigningID});
  expectEnabledBy(train.waitForEntering, {&train.trainArrival});
  expectEnabledBy(train.trainMovement, {&train.updatePosition});
  expectEnabledBy(train.sendTPR, {&train.TPRNetworkDelay_case1, &train.TPRNetworkDelay_case2});
  expectEnabledBy(train.TPRwaiting, {&train.updateTPR_case1, &train.updateTPR_case2});
}

TEST_F(TrainTest, ATrainExitsOnlyWhenItHasToAndMoves) {
  trainSAN& train = makeTrain();
  for (const short hasToExit : std::initializer_list<short>{0, 1}) {
    for (const short movement : std::initializer_list<short>{0, 1}) {
      train.trainHasToExit->Mark() = hasToExit;
      train.trainMovement->Mark() = movement;
      EXPECT_EQ(train.trainExits.Enabled(), hasToExit == 1 && movement == 1);
    }
  }
}

TEST_F(TrainTest, AnAuthorityIsTakenFromTheNetworkWhenItIsForThisTrain) {
  trainSAN& train = makeTrain(2, 1);
  for (Activity* activity : std::vector<Activity*>{&train.MANetworkDelay_case1, &train.MANetworkDelay_case2}) {
    train.MAtoRBC->Mark() = 1;
    train.MAmessages->Index(0)->timestamp->Mark() = 9;  // another train's
    train.MAmessages->Index(1)->timestamp->Mark() = 0;
    EXPECT_FALSE(activity->Enabled());
    train.MAmessages->Index(1)->timestamp->Mark() = 1;
    EXPECT_TRUE(activity->Enabled());
    train.MAtoRBC->Mark() = 0;
    EXPECT_FALSE(activity->Enabled());
  }
}

TEST_F(TrainTest, AnAuthorityMadeBeforeTimeOneIsNeverTaken) {
  trainSAN& train = makeTrain();
  train.MAtoRBC->Mark() = 1;
  train.MAmessages->Index(0)->timestamp->Mark() = 0;
  train.MAmessages->Index(0)->EoA->Mark() = 500;
  EXPECT_FALSE(train.MANetworkDelayGroup.Enabled());
}

TEST_F(TrainTest, CaseWeightsAreTheProbabilities) {
  trainSAN& train = makeTrain();
  setParameters("d:netNotDeliveryProb:0.25:d:integrityNotConfirmedProb:0.125");
  EXPECT_EQ(train.TPRNetworkDelay_case1.Weight(), 0.75);
  EXPECT_EQ(train.TPRNetworkDelay_case2.Weight(), 0.25);
  EXPECT_EQ(train.MANetworkDelay_case1.Weight(), 0.75);
  EXPECT_EQ(train.MANetworkDelay_case2.Weight(), 0.25);
  EXPECT_EQ(train.updateTPR_case1.Weight(), 0.875);
  EXPECT_EQ(train.updateTPR_case2.Weight(), 0.125);
  for (Activity* single :
       std::vector<Activity*>{&train.assigningID, &train.trainExits, &train.trainArrival, &train.updatePosition}) {
    EXPECT_EQ(single->Weight(), 1.0) << single->ActionName;
  }
}

TEST_F(TrainTest, WithoutLossesTheSecondCasesHaveNoWeight) {
  trainSAN& train = makeTrain();
  EXPECT_EQ(train.TPRNetworkDelay_case2.Weight(), 0.0);
  EXPECT_EQ(train.MANetworkDelay_case2.Weight(), 0.0);
  EXPECT_EQ(train.updateTPR_case2.Weight(), 0.0);
}

TEST_F(TrainTest, DelaysAreTheParametersOfTheMoment) {
  trainSAN& train = makeTrain(3, 2);
  setParameters("d:positionUpdatePeriod:1.25:d:TPRnetDelay:0.375:d:TPRUpdatePeriod:4.5:d:MAnetDelay:0.0625");
  const auto expectDelay = [](Activity& activity, double delay) {
    EXPECT_EQ(activity.SampleDistribution(), delay) << activity.ActionName;
    double* const parameters = activity.ReturnDistributionParameters();
    ASSERT_NE(parameters, nullptr) << activity.ActionName;
    EXPECT_EQ(parameters[0], delay) << activity.ActionName;
    EXPECT_EQ(activity.ReturnDistributionParameters(), parameters) << activity.ActionName;
  };
  expectDelay(train.trainArrival, 100.0);
  expectDelay(train.updatePosition, 1.25);
  expectDelay(train.TPRNetworkDelay_case1, 0.375);
  expectDelay(train.TPRNetworkDelay_case2, 0.375);
  expectDelay(train.updateTPR_case1, 4.5);
  expectDelay(train.updateTPR_case2, 4.5);
  expectDelay(train.MANetworkDelay_case1, 0.0625);
  expectDelay(train.MANetworkDelay_case2, 0.0625);
  train.trainID->Mark() = 1;
  expectDelay(train.trainArrival, 50.0);
  EXPECT_EQ(train.updatePosition.DeterministicParamValue(), 1.25);
}

TEST_F(TrainTest, ADelayOfZeroIsLegal) {
  trainSAN& train = makeTrain();
  setParameters("d:TPRnetDelay:0:d:MAnetDelay:-1");
  EXPECT_EQ(train.trainArrival.SampleDistribution(), 0.0);
  EXPECT_EQ(train.TPRNetworkDelay_case1.SampleDistribution(), 0.0);
  EXPECT_EQ(train.MANetworkDelay_case1.SampleDistribution(), -1.0);
}

TEST_F(TrainTest, InstantaneousActivitiesHaveNoParameter) {
  trainSAN& train = makeTrain();
  EXPECT_EQ(train.assigningID.SampleDistribution(), 0.0);
  EXPECT_EQ(train.trainExits.SampleDistribution(), 0.0);
  EXPECT_EQ(train.assigningID.ReturnDistributionParameters(), nullptr);
  EXPECT_EQ(train.trainExits.ReturnDistributionParameters(), nullptr);
}

TEST_F(TrainTest, CachedMarksFollowSharing) {
  trainSAN& train = makeTrain();
  Place movement("movement", 0);
  movement.ShareWith(train.trainMovement);
  movement.Mark() = 1;
  EXPECT_EQ(train.updatePosition.trainMovement_Quorva_Mark, movement.getPointer());
  EXPECT_EQ(train.trainExits.trainMovement_Quorva_Mark, movement.getPointer());
  EXPECT_EQ(train.trainArrival.trainMovement_Quorva_Mark, movement.getPointer());
  EXPECT_TRUE(train.updatePosition.Enabled());
}

// ---- Firings ----------------------------------------------------------------------------------------

TEST_F(TrainTest, AssigningIDHandsOutTheHighestIdentityLeft) {
  trainSAN& train = makeTrain(3);
  EXPECT_EQ(firingOf(train, train.assigningID),
            (Marking{{"Start", 0}, {"trainID", 2}, {"Count", 2}, {"waitForEntering", 1}}));
  train.Start->Mark() = 1;
  EXPECT_EQ(firingOf(train, train.assigningID),
            (Marking{{"Start", 0}, {"trainID", 1}, {"Count", 1}, {"waitForEntering", 2}}));
}

TEST_F(TrainTest, TrainExitsTakesTheTrainOffTheLineAndLeavesItsReportTimer) {
  trainSAN& train = makeTrain();
  train.trainHasToExit->Mark() = 1;
  train.trainMovement->Mark() = 1;
  train.TPRwaiting->Mark() = 1;
  EXPECT_EQ(firingOf(train, train.trainExits), (Marking{{"trainHasToExit", 0}, {"trainMovement", 0}}));
  EXPECT_TRUE(train.updateTPRGroup.Enabled());
  EXPECT_FALSE(train.updatePosition.Enabled());
}

TEST_F(TrainTest, TrainArrivalEntersAtTheSpeedOfTheAuthority) {
  trainSAN& train = makeTrain(3, 1);
  train.waitForEntering->Mark() = 1;
  train.trainMAs->Index(1)->Mark() = 33;
  train.trainHeadPositions->Index(1)->Mark() = 77;  // a stale value
  EXPECT_EQ(firingOf(train, train.trainArrival), (Marking{{"waitForEntering", 0},
                                                          {"trainHeadPositions.1", 0},
                                                          {"trainTailPositions.1", -300},
                                                          {"trainSpeeds.1", 33},
                                                          {"trainMovement", 1},
                                                          {"TPRwaiting", 1}}));
}

TEST_F(TrainTest, TrainArrivalDividesTheAuthorityByThePeriodAndCapsTheSpeed) {
  trainSAN& train = makeTrain();
  const auto speedAfterArrival = [&](int authority) {
    train.trainMAs->Index(0)->Mark() = authority;
    train.trainArrival.Fire();
    return train.trainSpeeds->Index(0)->Mark();
  };
  EXPECT_EQ(speedAfterArrival(8000), 80);
  EXPECT_EQ(speedAfterArrival(80), 80);
  EXPECT_EQ(speedAfterArrival(79), 79);
  EXPECT_EQ(speedAfterArrival(0), 0);
  EXPECT_EQ(speedAfterArrival(-5), -5);
  setParameters("d:positionUpdatePeriod:2");
  EXPECT_EQ(speedAfterArrival(33), 16);
  EXPECT_EQ(speedAfterArrival(-33), -16);
}

TEST_F(TrainTest, UpdatePositionMovesTheTrainAndKeepsItMoving) {
  trainSAN& train = makeTrain(2, 0);
  train.trainMovement->Mark() = 1;
  train.trainHeadPositions->Index(0)->Mark() = 100;
  train.trainSpeeds->Index(0)->Mark() = 60;
  EXPECT_EQ(firingOf(train, train.updatePosition),
            (Marking{{"trainHeadPositions.0", 160}, {"trainTailPositions.0", -140}, {"trainSpeeds.0", 80}}));
  EXPECT_TRUE(train.updatePosition.Enabled());
}

TEST_F(TrainTest, UpdatePositionBrakesForTheEndOfItsAuthority) {
  trainSAN& train = makeTrain();
  train.trainMovement->Mark() = 1;
  train.trainHeadPositions->Index(0)->Mark() = 100;
  train.trainSpeeds->Index(0)->Mark() = 80;
  train.trainMAs->Index(0)->Mark() = 200;
  EXPECT_EQ(firingOf(train, train.updatePosition),
            (Marking{{"trainHeadPositions.0", 180}, {"trainTailPositions.0", -120}, {"trainSpeeds.0", 20}}));
  EXPECT_EQ(firingOf(train, train.updatePosition),
            (Marking{{"trainHeadPositions.0", 200}, {"trainTailPositions.0", -100}, {"trainSpeeds.0", 0}}));
  EXPECT_EQ(firingOf(train, train.updatePosition), Marking{});
}

TEST_F(TrainTest, AnAuthorityBehindTheTrainMakesItMoveBackwards) {
  trainSAN& train = makeTrain();
  train.trainMovement->Mark() = 1;
  train.trainHeadPositions->Index(0)->Mark() = 500;
  train.trainSpeeds->Index(0)->Mark() = 80;
  train.trainMAs->Index(0)->Mark() = 400;
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainHeadPositions->Index(0)->Mark(), 580);
  EXPECT_EQ(train.trainSpeeds->Index(0)->Mark(), -180);
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainHeadPositions->Index(0)->Mark(), 400);
  EXPECT_EQ(train.trainSpeeds->Index(0)->Mark(), 0);
}

TEST_F(TrainTest, PositionsAndSpeedsDropTheirFractionTowardZero) {
  trainSAN& train = makeTrain();
  train.trainMovement->Mark() = 1;
  setParameters("d:positionUpdatePeriod:0.5");
  train.trainHeadPositions->Index(0)->Mark() = 100;
  train.trainSpeeds->Index(0)->Mark() = 41;
  train.trainMAs->Index(0)->Mark() = 130;
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainHeadPositions->Index(0)->Mark(), 120);  // 120.5
  EXPECT_EQ(train.trainSpeeds->Index(0)->Mark(), 20);          // 10 / 0.5
  setParameters("d:positionUpdatePeriod:2");
  train.trainSpeeds->Index(0)->Mark() = 0;
  train.trainMAs->Index(0)->Mark() = 117;
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainSpeeds->Index(0)->Mark(), -1);  // -3 / 2
  setParameters("d:positionUpdatePeriod:0.25");
  train.trainHeadPositions->Index(0)->Mark() = 0;
  train.trainSpeeds->Index(0)->Mark() = -3;
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainHeadPositions->Index(0)->Mark(), 0);  // -0.75
}

TEST_F(TrainTest, AtTheEndOfTheLineTheTrainHasToExitAndKeepsItsSpeed) {
  trainSAN& train = makeTrain();
  train.trainMovement->Mark() = 1;
  train.trainHeadPositions->Index(0)->Mark() = 7920;
  train.trainSpeeds->Index(0)->Mark() = 80;
  train.trainMAs->Index(0)->Mark() = 0;
  EXPECT_EQ(firingOf(train, train.updatePosition),
            (Marking{{"trainHeadPositions.0", 8000}, {"trainTailPositions.0", 7700}, {"trainHasToExit", 1}}));
  EXPECT_TRUE(train.trainExits.Enabled());
}

TEST_F(TrainTest, BeforeTheEndOfTheLineTheTrainStays) {
  trainSAN& train = makeTrain();
  train.trainMovement->Mark() = 1;
  train.trainHeadPositions->Index(0)->Mark() = 7919;
  train.trainSpeeds->Index(0)->Mark() = 80;
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainHasToExit->Mark(), 0);
  EXPECT_EQ(train.trainSpeeds->Index(0)->Mark(), 1);
}

TEST_F(TrainTest, TheTokenToExitIsAssignedAndNeverCounted) {
  trainSAN& train = makeTrain();
  train.trainMovement->Mark() = 1;
  train.trainHeadPositions->Index(0)->Mark() = 8000;
  train.updatePosition.Fire();
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainHasToExit->Mark(), 1);
  train.trainHasToExit->Mark() = 5;
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainHasToExit->Mark(), 1);
}

TEST_F(TrainTest, ATrainOfNegativeLengthPassesTheEndOfTheLineBeforeItExits) {
  trainSAN& train = makeTrain();
  setParameters("i:trainLength:-500");
  train.trainMovement->Mark() = 1;
  train.trainHeadPositions->Index(0)->Mark() = 8419;
  train.trainSpeeds->Index(0)->Mark() = 80;
  EXPECT_EQ(firingOf(train, train.updatePosition),
            (Marking{{"trainHeadPositions.0", 8499}, {"trainTailPositions.0", 8999}}));
  EXPECT_EQ(firingOf(train, train.updatePosition),
            (Marking{{"trainHeadPositions.0", 8579}, {"trainTailPositions.0", 9079}, {"trainHasToExit", 1}}));
}

TEST_F(TrainTest, ASpeedKeepsItsLowSixteenBits) {
  trainSAN& train = makeTrain();
  train.trainMovement->Mark() = 1;
  train.trainMAs->Index(0)->Mark() = -100000;
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainSpeeds->Index(0)->Mark(), 31072);  // -100000 + 2 * 65536
}

TEST_F(TrainTest, ExtremeParametersStayDefined) {
  trainSAN& train = makeTrain();
  train.trainMovement->Mark() = 1;
  setParameters("d:positionUpdatePeriod:0");
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainSpeeds->Index(0)->Mark(), 80);  // 8000 / 0 is beyond any speed
  train.trainMAs->Index(0)->Mark() = 0;
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainSpeeds->Index(0)->Mark(), 0);  // 0 / 0 is no speed
  setParameters("d:positionUpdatePeriod:1e300:i:lineLength:0x7fffffff:i:trainLength:-1");
  train.trainSpeeds->Index(0)->Mark() = -1;
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainHeadPositions->Index(0)->Mark(), -2147483647 - 1);
  EXPECT_EQ(train.trainTailPositions->Index(0)->Mark(), -2147483647);
}

TEST_F(TrainTest, UpdateTPRWritesAReportOfTheMoment) {
  trainSAN& train = makeTrain(2, 1);
  train.TPRwaiting->Mark() = 1;
  train.trainHeadPositions->Index(1)->Mark() = 640;
  train.trainSpeeds->Index(1)->Mark() = -7;
  BaseModelClass::LastActionTime = 12.9;
  EXPECT_EQ(firingOf(train, train.updateTPR_case1), (Marking{{"TPRmsg.timestamp", 12},
                                                             {"TPRmsg.position", 640},
                                                             {"TPRmsg.speed", -7},
                                                             {"TPRmsg.integrityConfirmed", 1},
                                                             {"sendTPR", 1}}));
  EXPECT_TRUE(train.updateTPR_case1.Enabled());
}

TEST_F(TrainTest, TheSecondCaseOfAReportDoesNotConfirmIntegrity) {
  trainSAN& train = makeTrain();
  train.TPRwaiting->Mark() = 1;
  train.TPRmsg->integrityConfirmed->Mark() = 1;
  BaseModelClass::LastActionTime = 5.0;
  EXPECT_EQ(firingOf(train, train.updateTPR_case2),
            (Marking{{"TPRmsg.timestamp", 5}, {"TPRmsg.integrityConfirmed", 0}, {"sendTPR", 1}}));
}

TEST_F(TrainTest, AReportMadeBeforeTimeOneHasTimestampZero) {
  trainSAN& train = makeTrain();
  BaseModelClass::LastActionTime = 0.9;
  train.updateTPR_case1.Fire();
  EXPECT_EQ(train.TPRmsg->timestamp->Mark(), 0);
}

TEST_F(TrainTest, ADeliveredReportStandsInTheTrainsSlot) {
  trainSAN& train = makeTrain(3, 2);
  train.sendTPR->Mark() = 1;
  train.TPRmsg->timestamp->Mark() = 10;
  train.TPRmsg->position->Mark() = 800;
  train.TPRmsg->speed->Mark() = 80;
  train.TPRmsg->integrityConfirmed->Mark() = 1;
  EXPECT_EQ(firingOf(train, train.TPRNetworkDelay_case1), (Marking{{"sendTPR", 0},
                                                                   {"TPRmessages.2.timestamp", 10},
                                                                   {"TPRmessages.2.position", 800},
                                                                   {"TPRmessages.2.speed", 80},
                                                                   {"TPRmessages.2.integrityConfirmed", 1},
                                                                   {"TPRmsg.timestamp", 0},
                                                                   {"TPRtoRBC", 1}}));
}

TEST_F(TrainTest, ALostReportLeavesTheNetworkAndNothingElse) {
  trainSAN& train = makeTrain();
  train.sendTPR->Mark() = 2;
  train.TPRmsg->timestamp->Mark() = 10;
  train.TPRmsg->position->Mark() = 800;
  EXPECT_EQ(firingOf(train, train.TPRNetworkDelay_case2), (Marking{{"sendTPR", 1}, {"TPRmsg.timestamp", 0}}));
}

TEST_F(TrainTest, ALaterReportOverwritesAnEarlierOneOnItsWay) {
  trainSAN& train = makeTrain();
  train.TPRwaiting->Mark() = 1;
  BaseModelClass::LastActionTime = 2.0;
  train.trainHeadPositions->Index(0)->Mark() = 160;
  train.updateTPR_case1.Fire();
  BaseModelClass::LastActionTime = 4.0;
  train.trainHeadPositions->Index(0)->Mark() = 320;
  train.updateTPR_case1.Fire();
  EXPECT_EQ(train.sendTPR->Mark(), 2);
  train.TPRNetworkDelay_case1.Fire();
  EXPECT_EQ(train.TPRmessages->Index(0)->timestamp->Mark(), 4);
  EXPECT_EQ(train.TPRmessages->Index(0)->position->Mark(), 320);
  train.TPRNetworkDelay_case1.Fire();
  EXPECT_EQ(train.TPRmessages->Index(0)->timestamp->Mark(), 0);
  EXPECT_EQ(train.TPRmessages->Index(0)->position->Mark(), 320);
  EXPECT_EQ(train.TPRtoRBC->Mark(), 2);
}

TEST_F(TrainTest, ADeliveredAuthorityReplacesTheTrainsOwn) {
  trainSAN& train = makeTrain(2, 1);
  train.MAtoRBC->Mark() = 2;
  train.MAmessages->Index(1)->timestamp->Mark() = 6;
  train.MAmessages->Index(1)->EoA->Mark() = 400;
  EXPECT_EQ(firingOf(train, train.MANetworkDelay_case1),
            (Marking{{"MAtoRBC", 1}, {"trainMAs.1", 400}, {"MAmessages.1.timestamp", 0}}));
}

TEST_F(TrainTest, ALostAuthorityLeavesTheTrainsOwnInPlace) {
  trainSAN& train = makeTrain(2, 1);
  train.MAtoRBC->Mark() = 2;
  train.MAmessages->Index(1)->timestamp->Mark() = 6;
  train.MAmessages->Index(1)->EoA->Mark() = 400;
  EXPECT_EQ(firingOf(train, train.MANetworkDelay_case2), (Marking{{"MAtoRBC", 1}, {"MAmessages.1.timestamp", 0}}));
}

TEST_F(TrainTest, TheSpeedFollowsAnAuthorityAtTheNextPositionUpdate) {
  trainSAN& train = makeTrain();
  train.trainMovement->Mark() = 1;
  train.trainSpeeds->Index(0)->Mark() = 80;
  train.MAtoRBC->Mark() = 1;
  train.MAmessages->Index(0)->timestamp->Mark() = 6;
  train.MAmessages->Index(0)->EoA->Mark() = 90;
  train.MANetworkDelay_case1.Fire();
  EXPECT_EQ(train.trainSpeeds->Index(0)->Mark(), 80);
  train.updatePosition.Fire();
  EXPECT_EQ(train.trainSpeeds->Index(0)->Mark(), 10);
}

TEST_F(TrainTest, ATrainWithoutAuthorityStandsAtTheStartAndReports) {
  trainSAN& train = makeTrain(2, 1);
  train.waitForEntering->Mark() = 1;
  train.trainArrival.Fire();
  EXPECT_EQ(train.trainSpeeds->Index(1)->Mark(), 0);
  for (int i = 0; i < 5; ++i) {
    train.updatePosition.Fire();
  }
  EXPECT_EQ(train.trainHeadPositions->Index(1)->Mark(), 0);
  ASSERT_TRUE(train.updateTPR_case1.Enabled());
  BaseModelClass::LastActionTime = 55.0;
  train.updateTPR_case1.Fire();
  EXPECT_EQ(train.TPRmsg->timestamp->Mark(), 55);
  EXPECT_EQ(train.TPRmsg->position->Mark(), 0);
}

TEST_F(TrainDeathTest, AnIdentityOutsideTheArraysEndsTheRun) {
  trainSAN& train = makeTrain(2, 2);
  EXPECT_DEATH(train.trainArrival.SampleDistribution(),
               "Runtime error: index out of bounds. arrivalTime\\[0..1\\] indexed with 2\n");
}

TEST_F(TrainDeathTest, WithoutTrainsThereIsNoTrain) {
  setTrains(0);
  EXPECT_DEATH(trainSAN(),
               "Runtime error: index out of bounds. trainMAs\\[0..18446744073709551615\\] indexed with 0\n");
}

}  // namespace
