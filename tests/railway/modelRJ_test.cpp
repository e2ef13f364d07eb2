#include "railway/Composed/model/modelRJ.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Composer/SharedStateVarLink.h"
#include "railway/Atomic/trackside/tracksideSAN.h"
#include "railway/Atomic/train/trainSAN.h"
#include "railway/Composed/model/modelRJ__fleet.h"
#include "railway/RailwayTest.h"

namespace {

using support::firingOf;
using support::Marking;
using support::markingOf;
using support::RailwayTest;
using ::testing::ElementsAre;
using ::testing::ExitedWithCode;

class RailwayCompositionTest : public RailwayTest {
 protected:
  modelRJ& makeRailway(int trains) {
    setTrains(trains);
    railway_ = std::make_unique<modelRJ>();
    return *railway_;
  }

  static std::vector<std::string> sharedNamesOf(BaseComposerClass& composer) {
    return {composer.SharedStateNames, composer.SharedStateNames + composer.NumSharedStateVariables};
  }

  static std::vector<BaseStateVariableClass*> listOfSharedVariables(BaseComposerClass& composer,
                                                                    BaseStateVariableClass* variable) {
    std::vector<BaseStateVariableClass*> variables;
    for (SharedStateVarLink* link = composer.getListOfSharedVariables(variable); link != nullptr;
         link = link->getNext()) {
      variables.push_back(link->getStateVar());
    }
    return variables;
  }

 private:
  std::unique_ptr<modelRJ> railway_;
};

using RailwayCompositionDeathTest = RailwayCompositionTest;

// ---- The tree ---------------------------------------------------------------------------------------

TEST_F(RailwayCompositionTest, JoinsTheFleetAndTheTrackside) {
  modelRJ& railway = makeRailway(3);
  EXPECT_STREQ(railway.getName(), "join");
  EXPECT_EQ(railway.GetModelType(), BaseModelClass::JoinModel);
  ASSERT_EQ(railway.GetNumberOfChildren(), 2);
  EXPECT_EQ(railway.GetChild(0), railway.fleet);
  EXPECT_EQ(railway.GetChild(1), railway.trackside);
  EXPECT_STREQ(railway.fleet->getName(), "fleet");
  EXPECT_STREQ(railway.trackside->getName(), "trackside");
}

TEST_F(RailwayCompositionTest, TheFleetReplicatesTheTrain) {
  modelRJ__fleet& fleet = *makeRailway(3).fleet;
  EXPECT_EQ(fleet.GetModelType(), BaseModelClass::RepModel);
  ASSERT_EQ(fleet.GetNumberOfChildren(), 3);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(fleet.GetChild(i), fleet.InstanceArray[i]);
    EXPECT_STREQ(fleet.InstanceArray[i]->getName(), "train");
  }
}

TEST_F(RailwayCompositionTest, NumbersModelsInTheOrderOfConstruction) {
  modelRJ& railway = makeRailway(3);
  const int first = railway.getId();
  EXPECT_EQ(railway.fleet->getId(), first + 1);
  EXPECT_EQ(railway.fleet->InstanceArray[0]->getId(), first + 2);
  EXPECT_EQ(railway.fleet->InstanceArray[2]->getId(), first + 4);
  EXPECT_EQ(railway.trackside->getId(), first + 5);
}

TEST_F(RailwayCompositionTest, CollectsActionsTrainByTrainAndTheTracksideLast) {
  modelRJ& railway = makeRailway(3);
  ASSERT_EQ(railway.getNumActions(), 3 * 10 + 2);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(railway.getActionList()[10 * i], &railway.fleet->InstanceArray[i]->assigningID);
    EXPECT_EQ(railway.getActionList()[10 * i + 9], &railway.fleet->InstanceArray[i]->MANetworkDelay_case2);
  }
  EXPECT_EQ(railway.getActionList()[30], &railway.trackside->evaluateOlderTPR);
  EXPECT_EQ(railway.getActionList()[31], &railway.trackside->RBCprocessing);
}

TEST_F(RailwayCompositionTest, EachActivityKnowsItsGroupInTheWholeRailway) {
  modelRJ& railway = makeRailway(3);
  ASSERT_EQ(railway.getNumGroups(), 3 * 7 + 2);
  for (int i = 0; i < 3; ++i) {
    trainSAN& train = *railway.fleet->InstanceArray[i];
    const auto expectGroup = [&](Activity& activity, int index, BaseGroupClass& group) {
      EXPECT_EQ(activity.getGroupId(), 7 * i + index) << activity.ActionName;
      EXPECT_EQ(railway.getGroupList()[7 * i + index], &group) << activity.ActionName;
    };
    expectGroup(train.trainArrival, 0, train.trainArrival);
    expectGroup(train.updatePosition, 1, train.updatePosition);
    expectGroup(train.TPRNetworkDelay_case1, 2, train.TPRNetworkDelayGroup);
    expectGroup(train.TPRNetworkDelay_case2, 2, train.TPRNetworkDelayGroup);
    expectGroup(train.updateTPR_case1, 3, train.updateTPRGroup);
    expectGroup(train.updateTPR_case2, 3, train.updateTPRGroup);
    expectGroup(train.MANetworkDelay_case1, 4, train.MANetworkDelayGroup);
    expectGroup(train.MANetworkDelay_case2, 4, train.MANetworkDelayGroup);
    expectGroup(train.assigningID, 5, train.assigningID);
    expectGroup(train.trainExits, 6, train.trainExits);
  }
  EXPECT_EQ(railway.trackside->RBCprocessing.getGroupId(), 21);
  EXPECT_EQ(railway.trackside->evaluateOlderTPR.getGroupId(), 22);
}

// ---- Sharing ----------------------------------------------------------------------------------------

TEST_F(RailwayCompositionTest, SharesByNameAtEachLevel) {
  modelRJ& railway = makeRailway(2);
  EXPECT_THAT(sharedNamesOf(railway), ElementsAre("MAmessages", "MAtoRBC", "TPRmessages", "TPRtoRBC"));
  EXPECT_THAT(sharedNamesOf(*railway.fleet),
              ElementsAre("Count", "MAmessages", "MAtoRBC", "TPRmessages", "TPRtoRBC", "arrivalTime",
                          "trainHeadPositions", "trainMAs", "trainSpeeds", "trainTailPositions"));
  const auto expectHeld = [](BaseComposerClass& composer, const std::vector<BaseStateVariableClass*>& variables) {
    const std::vector<std::string> names = sharedNamesOf(composer);
    ASSERT_EQ(names.size(), variables.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
      EXPECT_EQ(composer.SharedStatePtrs[i], variables[i]);
      EXPECT_EQ(variables[i]->getFullyQualifiedName(), names[i]);
    }
  };
  expectHeld(railway, {railway.MAmessages, railway.MAtoRBC, railway.TPRmessages, railway.TPRtoRBC});
  modelRJ__fleet& fleet = *railway.fleet;
  expectHeld(fleet, {fleet.Count, fleet.MAmessages, fleet.MAtoRBC, fleet.TPRmessages, fleet.TPRtoRBC, fleet.arrivalTime,
                     fleet.trainHeadPositions, fleet.trainMAs, fleet.trainSpeeds, fleet.trainTailPositions});
}

TEST_F(RailwayCompositionTest, WhatIsSharedIsOneLocation) {
  modelRJ& railway = makeRailway(3);
  for (int i = 0; i < 3; ++i) {
    trainSAN& train = *railway.fleet->InstanceArray[i];
    EXPECT_EQ(train.Count->getPointer(), railway.fleet->Count->getPointer());
    EXPECT_EQ(train.MAtoRBC->getPointer(), railway.MAtoRBC->getPointer());
    EXPECT_EQ(train.TPRtoRBC->getPointer(), railway.TPRtoRBC->getPointer());
    for (int element = 0; element < 3; ++element) {
      EXPECT_EQ(train.MAmessages->Index(element)->EoA->getPointer(),
                railway.MAmessages->Index(element)->EoA->getPointer());
      EXPECT_EQ(train.TPRmessages->Index(element)->speed->getPointer(),
                railway.TPRmessages->Index(element)->speed->getPointer());
      EXPECT_EQ(train.arrivalTime->Index(element)->getPointer(),
                railway.fleet->arrivalTime->Index(element)->getPointer());
      EXPECT_EQ(train.trainHeadPositions->Index(element)->getPointer(),
                railway.fleet->trainHeadPositions->Index(element)->getPointer());
      EXPECT_EQ(train.trainTailPositions->Index(element)->getPointer(),
                railway.fleet->trainTailPositions->Index(element)->getPointer());
      EXPECT_EQ(train.trainMAs->Index(element)->getPointer(), railway.fleet->trainMAs->Index(element)->getPointer());
      EXPECT_EQ(train.trainSpeeds->Index(element)->getPointer(),
                railway.fleet->trainSpeeds->Index(element)->getPointer());
    }
  }
  tracksideSAN& trackside = *railway.trackside;
  EXPECT_EQ(trackside.MAtoRBC->getPointer(), railway.MAtoRBC->getPointer());
  EXPECT_EQ(trackside.TPRtoRBC->getPointer(), railway.TPRtoRBC->getPointer());
  EXPECT_EQ(trackside.MAmessages->Index(2)->timestamp->getPointer(),
            railway.MAmessages->Index(2)->timestamp->getPointer());
  EXPECT_EQ(trackside.TPRmessages->Index(2)->integrityConfirmed->getPointer(),
            railway.TPRmessages->Index(2)->integrityConfirmed->getPointer());
}

TEST_F(RailwayCompositionTest, WhatIsATrainsOwnStaysApart) {
  modelRJ& railway = makeRailway(2);
  trainSAN& first = *railway.fleet->InstanceArray[0];
  const Marking before = markingOf(*railway.fleet->InstanceArray[1]);
  for (Place* place : {first.trainID, first.Start, first.waitForEntering, first.trainMovement, first.sendTPR,
                       first.TPRwaiting, first.trainHasToExit}) {
    place->Mark() = 9;
  }
  first.TPRmsg->position->Mark() = 9;
  EXPECT_EQ(markingOf(*railway.fleet->InstanceArray[1]), before);
}

TEST_F(RailwayCompositionTest, ASharedPlaceIsStoredAtTheTopmostLevelAlone) {
  modelRJ& railway = makeRailway(2);
  trainSAN& train = *railway.fleet->InstanceArray[1];
  EXPECT_TRUE(railway.MAtoRBC->getStored());
  EXPECT_FALSE(railway.fleet->MAtoRBC->getStored());
  EXPECT_FALSE(train.MAtoRBC->getStored());
  EXPECT_FALSE(railway.trackside->MAtoRBC->getStored());
  EXPECT_TRUE(railway.fleet->Count->getStored());
  EXPECT_FALSE(train.Count->getStored());
  EXPECT_TRUE(train.MAmessages->getStored());  // of arrays only the elements are shared
  EXPECT_FALSE(train.MAmessages->Index(0)->EoA->getStored());
}

TEST_F(RailwayCompositionTest, SharingKeepsTheInitialMarking) {
  modelRJ& railway = makeRailway(3);
  setTrains(3);
  trainSAN alone;
  EXPECT_EQ(markingOf(*railway.fleet->InstanceArray[0]), markingOf(alone));
  EXPECT_EQ(markingOf(*railway.fleet->InstanceArray[2]), markingOf(alone));
  tracksideSAN tracksideAlone;
  EXPECT_EQ(markingOf(*railway.trackside), markingOf(tracksideAlone));
  EXPECT_EQ(railway.fleet->Count->Mark(), 3);
}

TEST_F(RailwayCompositionTest, KnowsTheVariablesThatAreOne) {
  modelRJ& railway = makeRailway(2);
  modelRJ__fleet& fleet = *railway.fleet;
  trainSAN& first = *fleet.InstanceArray[0];
  trainSAN& second = *fleet.InstanceArray[1];
  EXPECT_THAT(listOfSharedVariables(fleet, fleet.Count), ElementsAre(first.Count, second.Count));
  EXPECT_EQ(fleet.getListOfSharedVariables(fleet.Count)->parent, nullptr);
  EXPECT_THAT(listOfSharedVariables(railway, railway.MAmessages),
              ElementsAre(fleet.MAmessages, first.MAmessages, second.MAmessages, railway.trackside->MAmessages));
  EXPECT_EQ(railway.getListOfSharedVariables(railway.MAmessages)->parent, &fleet);
  EXPECT_EQ(railway.getMainSharedVariable(second.TPRtoRBC), railway.TPRtoRBC);
  EXPECT_EQ(railway.getMainSharedVariable(second.trainMAs), fleet.trainMAs);
  EXPECT_EQ(railway.getMainSharedVariable(second.trainID), nullptr);
}

TEST_F(RailwayCompositionTest, OneTrainSharesWithTheTracksideAlone) {
  modelRJ& railway = makeRailway(1);
  modelRJ__fleet& fleet = *railway.fleet;
  EXPECT_THAT(listOfSharedVariables(fleet, fleet.Count), ElementsAre(fleet.InstanceArray[0]->Count));
  EXPECT_EQ(fleet.Count->Mark(), 1);
}

// ---- Counts and images ------------------------------------------------------------------------------

TEST_F(RailwayCompositionTest, CountsEachGroupOfSharedVariablesOnce) {
  for (const int n : {1, 2, 5}) {
    modelRJ& railway = makeRailway(n);
    // Each train has 18 variables, of which 10 are one across all trains; the trackside has 8, of which 4 are the
    // fleet's.
    EXPECT_EQ(railway.fleet->getNumStateVariables(), 8 * n + 10);
    EXPECT_EQ(railway.getNumStateVariables(), 8 * n + 10 + 8 - 4);
  }
}

TEST_F(RailwayCompositionTest, TheImageHoldsSharedPlacesOnceAndArraysAtEachLevel) {
  for (const int n : {1, 3}) {
    modelRJ& railway = makeRailway(n);
    // The seven arrays of a train, by element: arrival time 2, head 4, tail 4, speed 2, report 12, authority 4, message
    // of authority 8.
    const int arrays = (2 + 4 + 4 + 2 + 12 + 4 + 8) * n;
    const int train = 7 * 2 + 12 + arrays;
    const int fleet = n * train + 2 + arrays;            // Count and the arrays once more
    const int trackside = 2 * 2 + (12 + 4 + 4 + 8) * n;  // idle, msgIn and its arrays
    const int join = fleet + trackside + 2 * 2 + (12 + 8) * n;
    EXPECT_EQ(railway.fleet->InstanceArray[0]->StateSize(), train);
    EXPECT_EQ(railway.fleet->StateSize(), fleet);
    EXPECT_EQ(railway.trackside->StateSize(), trackside);
    EXPECT_EQ(railway.StateSize(), join);
  }
}

TEST_F(RailwayCompositionTest, AnImageBringsTheMarkingBack) {
  modelRJ& railway = makeRailway(2);
  trainSAN& train = *railway.fleet->InstanceArray[0];
  const Marking trainBefore = markingOf(train);
  const Marking tracksideBefore = markingOf(*railway.trackside);
  std::vector<char> image(static_cast<std::size_t>(railway.StateSize()));
  railway.CurrentState(image.data());
  train.assigningID.Fire();
  train.trainArrival.Fire();
  train.updatePosition.Fire();
  train.updateTPR_case1.Fire();
  train.TPRNetworkDelay_case1.Fire();
  railway.trackside->evaluateOlderTPR.Fire();
  railway.trackside->RBCprocessing.Fire();
  ASSERT_NE(markingOf(train), trainBefore);
  ASSERT_NE(markingOf(*railway.trackside), tracksideBefore);
  railway.SetState(image.data());
  EXPECT_EQ(markingOf(train), trainBefore);
  EXPECT_EQ(markingOf(*railway.trackside), tracksideBefore);
}

// ---- The whole at work ------------------------------------------------------------------------------

TEST_F(RailwayCompositionTest, IdentitiesAreHandedOutDownwardUntilNoneIsLeft) {
  modelRJ& railway = makeRailway(3);
  modelRJ__fleet& fleet = *railway.fleet;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(fleet.Count->Mark(), 3 - i);
    fleet.InstanceArray[i]->assigningID.Fire();
    EXPECT_EQ(fleet.InstanceArray[i]->trainID->Mark(), 2 - i);
  }
  EXPECT_EQ(fleet.Count->Mark(), 0);
}

TEST_F(RailwayCompositionTest, AReportTravelsToTheTracksideAndItsAuthorityBack) {
  modelRJ& railway = makeRailway(2);
  trainSAN& other = *railway.fleet->InstanceArray[0];  // takes identity 1
  trainSAN& train = *railway.fleet->InstanceArray[1];  // takes identity 0
  other.assigningID.Fire();
  train.assigningID.Fire();
  train.trainArrival.Fire();
  for (int i = 0; i < 5; ++i) {
    train.updatePosition.Fire();
  }
  BaseModelClass::LastActionTime = 5.0;
  train.updateTPR_case1.Fire();
  train.TPRNetworkDelay_case1.Fire();
  ASSERT_TRUE(railway.trackside->evaluateOlderTPR.Enabled());
  railway.trackside->evaluateOlderTPR.Fire();
  BaseModelClass::LastActionTime = 6.5;
  railway.trackside->RBCprocessing.Fire();
  EXPECT_TRUE(train.MANetworkDelay_case1.Enabled());
  EXPECT_FALSE(other.MANetworkDelay_case1.Enabled());
  train.MANetworkDelay_case1.Fire();
  EXPECT_EQ(railway.fleet->trainMAs->Index(0)->Mark(), 400);  // where the train was at time 5
  EXPECT_EQ(railway.trackside->trackStatusAreasHeads->Index(1)->Mark(), 700);
  EXPECT_EQ(railway.MAtoRBC->Mark(), 0);
}

TEST_F(RailwayCompositionDeathTest, ANegativeNumberOfTrainsEndsTheProcess) {
  setTrains(-1);
  EXPECT_EXIT(modelRJ(), ExitedWithCode(1), "^Number of reps for fleet must be >= 0\\.\n$");
}

TEST_F(RailwayCompositionTest, AFleetWithoutTrainsIsEmpty) {
  setTrains(0);
  modelRJ__fleet fleet;
  EXPECT_EQ(fleet.GetNumberOfChildren(), 0);
  EXPECT_EQ(fleet.getNumActions(), 0);
  EXPECT_EQ(fleet.getNumGroups(), 0);
  EXPECT_EQ(fleet.StateSize(), 0);
  EXPECT_EQ(fleet.Count, nullptr);
}

TEST_F(RailwayCompositionDeathTest, ARailwayWithoutTrainsEndsInTheTracksidesArrays) {
  setTrains(0);
  EXPECT_DEATH(modelRJ(), "Runtime error: index out of bounds. trackStatusAreasHeads\\[0..");
}

}  // namespace
