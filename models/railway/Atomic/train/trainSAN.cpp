#include "railway/Atomic/train/trainSAN.h"

#include <array>
#include <initializer_list>

#include "railway/Atomic/Arithmetic.h"
#include "railway/Study/study/GlobalVariables.h"

using support::difference32;
using support::keepLow16;
using support::sum32;
using support::truncateToInt32;

namespace {

/// Time between the arrivals of two trains.
constexpr int kArrivalGap = 50;

/// Index of each group in the model's group list.
enum GroupIndex {
  kTrainArrivalGroup = 0,
  kUpdatePositionGroup = 1,
  kTPRNetworkDelayGroup = 2,
  kUpdateTPRGroup = 3,
  kMANetworkDelayGroup = 4,
  kAssigningIDGroup = 5,
  kTrainExitsGroup = 6
};

/// The speed at which a train covers `distance` in one position update, at most maxTrainSpeed. There is no lower bound:
/// a distance behind the train makes it move backwards.
std::int16_t speedFor(std::int32_t distance) {
  std::int32_t speed = truncateToInt32(distance / positionUpdatePeriod);
  if (maxTrainSpeed < speed) {
    speed = maxTrainSpeed;
  }
  return keepLow16(speed);
}

/// The current time in whole time units, as messages are stamped.
std::int32_t timestampNow() {
  return truncateToInt32(BaseModelClass::LastActionTime);
}

}  // namespace

// ---- assigningID --------------------------------------------------------------------------------

trainSAN::assigningIDActivity::assigningIDActivity() {
  ActivityInitialize("assigningID", kAssigningIDGroup, Instantaneous, RaceEnabled, 4, 1, false);
}

void trainSAN::assigningIDActivity::LinkVariables() {
  Start->Register(&Start_Quorva_Mark);
  waitForEntering->Register(&waitForEntering_Quorva_Mark);
  trainID->Register(&trainID_Quorva_Mark);
  Count->Register(&Count_Quorva_Mark);
}

BaseActionClass* trainSAN::assigningIDActivity::Fire() {
  --*Start_Quorva_Mark;
  *trainID_Quorva_Mark = keepLow16(*Count_Quorva_Mark - 1);
  --*Count_Quorva_Mark;
  ++*waitForEntering_Quorva_Mark;
  return this;
}

// ---- trainExits ---------------------------------------------------------------------------------

trainSAN::trainExitsActivity::trainExitsActivity() {
  ActivityInitialize("trainExits", kTrainExitsGroup, Instantaneous, RaceEnabled, 2, 2, false);
}

void trainSAN::trainExitsActivity::LinkVariables() {
  trainHasToExit->Register(&trainHasToExit_Quorva_Mark);
  trainMovement->Register(&trainMovement_Quorva_Mark);
}

BaseActionClass* trainSAN::trainExitsActivity::Fire() {
  --*trainHasToExit_Quorva_Mark;
  --*trainMovement_Quorva_Mark;
  return this;
}

// ---- trainArrival -------------------------------------------------------------------------------

trainSAN::trainArrivalActivity::trainArrivalActivity() {
  ActivityInitialize("trainArrival", kTrainArrivalGroup, Deterministic, RaceEnabled, 8, 1, false);
}

void trainSAN::trainArrivalActivity::LinkVariables() {
  waitForEntering->Register(&waitForEntering_Quorva_Mark);
  trainMovement->Register(&trainMovement_Quorva_Mark);
  TPRwaiting->Register(&TPRwaiting_Quorva_Mark);
  trainID->Register(&trainID_Quorva_Mark);
}

double trainSAN::trainArrivalActivity::DeterministicParamValue() {
  return arrivalTime->Index(*trainID_Quorva_Mark)->Mark();
}

BaseActionClass* trainSAN::trainArrivalActivity::Fire() {
  const int train = *trainID_Quorva_Mark;
  --*waitForEntering_Quorva_Mark;
  trainHeadPositions->Index(train)->Mark() = 0;
  trainTailPositions->Index(train)->Mark() = difference32(0, trainLength);
  // The head is at 0, so that the authority is the distance to it.
  trainSpeeds->Index(train)->Mark() = speedFor(trainMAs->Index(train)->Mark());
  ++*trainMovement_Quorva_Mark;
  ++*TPRwaiting_Quorva_Mark;
  return this;
}

// ---- updatePosition -----------------------------------------------------------------------------

trainSAN::updatePositionActivity::updatePositionActivity() {
  ActivityInitialize("updatePosition", kUpdatePositionGroup, Deterministic, RaceEnabled, 7, 1, false);
}

void trainSAN::updatePositionActivity::LinkVariables() {
  trainMovement->Register(&trainMovement_Quorva_Mark);
  trainID->Register(&trainID_Quorva_Mark);
  trainHasToExit->Register(&trainHasToExit_Quorva_Mark);
}

double trainSAN::updatePositionActivity::DeterministicParamValue() {
  return positionUpdatePeriod;
}

BaseActionClass* trainSAN::updatePositionActivity::Fire() {
  const int train = *trainID_Quorva_Mark;
  int& headPosition = trainHeadPositions->Index(train)->Mark();
  short& speed = trainSpeeds->Index(train)->Mark();
  --*trainMovement_Quorva_Mark;
  const std::int32_t head = truncateToInt32(positionUpdatePeriod * speed + headPosition);
  headPosition = head;
  trainTailPositions->Index(train)->Mark() = difference32(head, trainLength);
  if (lineLength <= head) {
    // On purpose: the test holds whenever trainLength is not negative, and the speed stays as it was.
    if (sum32(head, trainLength) >= lineLength) {
      *trainHasToExit_Quorva_Mark = 1;
    }
  } else {
    speed = speedFor(difference32(trainMAs->Index(train)->Mark(), head));
  }
  ++*trainMovement_Quorva_Mark;
  return this;
}

// ---- TPRNetworkDelay ----------------------------------------------------------------------------

void trainSAN::TPRNetworkDelayActivity::LinkVariables() {
  sendTPR->Register(&sendTPR_Quorva_Mark);
}

double trainSAN::TPRNetworkDelayActivity::DeterministicParamValue() {
  return TPRnetDelay;
}

trainSAN::TPRNetworkDelayActivity_case1::TPRNetworkDelayActivity_case1() {
  ActivityInitialize("TPRNetworkDelay_case1", kTPRNetworkDelayGroup, Deterministic, RaceEnabled, 5, 1, false);
}

void trainSAN::TPRNetworkDelayActivity_case1::LinkVariables() {
  TPRNetworkDelayActivity::LinkVariables();
  TPRtoRBC->Register(&TPRtoRBC_Quorva_Mark);
  trainID->Register(&trainID_Quorva_Mark);
}

double trainSAN::TPRNetworkDelayActivity_case1::Weight() {
  return 1 - netNotDeliveryProb;
}

BaseActionClass* trainSAN::TPRNetworkDelayActivity_case1::Fire() {
  tprMsg* const delivered = TPRmessages->Index(*trainID_Quorva_Mark);
  --*sendTPR_Quorva_Mark;
  delivered->timestamp->Mark() = TPRmsg->timestamp->Mark();
  delivered->position->Mark() = TPRmsg->position->Mark();
  delivered->speed->Mark() = TPRmsg->speed->Mark();
  delivered->integrityConfirmed->Mark() = TPRmsg->integrityConfirmed->Mark();
  TPRmsg->timestamp->Mark() = 0;
  ++*TPRtoRBC_Quorva_Mark;
  return this;
}

trainSAN::TPRNetworkDelayActivity_case2::TPRNetworkDelayActivity_case2() {
  ActivityInitialize("TPRNetworkDelay_case2", kTPRNetworkDelayGroup, Deterministic, RaceEnabled, 2, 1, false);
}

double trainSAN::TPRNetworkDelayActivity_case2::Weight() {
  return netNotDeliveryProb;
}

BaseActionClass* trainSAN::TPRNetworkDelayActivity_case2::Fire() {
  --*sendTPR_Quorva_Mark;
  TPRmsg->timestamp->Mark() = 0;
  return this;
}

// ---- updateTPR ----------------------------------------------------------------------------------

void trainSAN::updateTPRActivity::LinkVariables() {
  TPRwaiting->Register(&TPRwaiting_Quorva_Mark);
  sendTPR->Register(&sendTPR_Quorva_Mark);
  trainID->Register(&trainID_Quorva_Mark);
}

double trainSAN::updateTPRActivity::DeterministicParamValue() {
  return TPRUpdatePeriod;
}

void trainSAN::updateTPRActivity::makeReport(short integrityConfirmed) {
  const int train = *trainID_Quorva_Mark;
  --*TPRwaiting_Quorva_Mark;
  TPRmsg->timestamp->Mark() = timestampNow();
  TPRmsg->position->Mark() = trainHeadPositions->Index(train)->Mark();
  TPRmsg->speed->Mark() = trainSpeeds->Index(train)->Mark();
  TPRmsg->integrityConfirmed->Mark() = integrityConfirmed;
  ++*sendTPR_Quorva_Mark;
  ++*TPRwaiting_Quorva_Mark;
}

trainSAN::updateTPRActivity_case1::updateTPRActivity_case1() {
  ActivityInitialize("updateTPR_case1", kUpdateTPRGroup, Deterministic, RaceEnabled, 6, 1, false);
}

double trainSAN::updateTPRActivity_case1::Weight() {
  return 1 - integrityNotConfirmedProb;
}

BaseActionClass* trainSAN::updateTPRActivity_case1::Fire() {
  makeReport(1);
  return this;
}

trainSAN::updateTPRActivity_case2::updateTPRActivity_case2() {
  ActivityInitialize("updateTPR_case2", kUpdateTPRGroup, Deterministic, RaceEnabled, 6, 1, false);
}

double trainSAN::updateTPRActivity_case2::Weight() {
  return integrityNotConfirmedProb;
}

BaseActionClass* trainSAN::updateTPRActivity_case2::Fire() {
  makeReport(0);
  return this;
}

// ---- MANetworkDelay -----------------------------------------------------------------------------

bool trainSAN::MANetworkDelayActivity::Enabled() {
  return shiftEnabled(*MAtoRBC_Quorva_Mark > 0 && MAmessages->Index(*trainID_Quorva_Mark)->timestamp->Mark() > 0);
}

void trainSAN::MANetworkDelayActivity::LinkVariables() {
  MAtoRBC->Register(&MAtoRBC_Quorva_Mark);
  trainID->Register(&trainID_Quorva_Mark);
}

double trainSAN::MANetworkDelayActivity::DeterministicParamValue() {
  return MAnetDelay;
}

trainSAN::MANetworkDelayActivity_case1::MANetworkDelayActivity_case1() {
  ActivityInitialize("MANetworkDelay_case1", kMANetworkDelayGroup, Deterministic, RaceEnabled, 4, 3, false);
}

double trainSAN::MANetworkDelayActivity_case1::Weight() {
  return 1 - netNotDeliveryProb;
}

BaseActionClass* trainSAN::MANetworkDelayActivity_case1::Fire() {
  const int train = *trainID_Quorva_Mark;
  maMsg* const authority = MAmessages->Index(train);
  --*MAtoRBC_Quorva_Mark;
  trainMAs->Index(train)->Mark() = authority->EoA->Mark();
  authority->timestamp->Mark() = 0;
  return this;
}

trainSAN::MANetworkDelayActivity_case2::MANetworkDelayActivity_case2() {
  ActivityInitialize("MANetworkDelay_case2", kMANetworkDelayGroup, Deterministic, RaceEnabled, 3, 3, false);
}

double trainSAN::MANetworkDelayActivity_case2::Weight() {
  return netNotDeliveryProb;
}

BaseActionClass* trainSAN::MANetworkDelayActivity_case2::Fire() {
  --*MAtoRBC_Quorva_Mark;
  MAmessages->Index(*trainID_Quorva_Mark)->timestamp->Mark() = 0;
  return this;
}

// ---- The model ----------------------------------------------------------------------------------

trainSAN::trainSAN() {
  initializeGroups();
  createStateVariables();
  std::array<BaseStateVariableClass*, 18> variables{trainID,
                                                    Start,
                                                    Count,
                                                    waitForEntering,
                                                    trainMovement,
                                                    sendTPR,
                                                    TPRtoRBC,
                                                    MAtoRBC,
                                                    TPRwaiting,
                                                    trainHasToExit,
                                                    arrivalTime,
                                                    trainHeadPositions,
                                                    trainTailPositions,
                                                    trainSpeeds,
                                                    TPRmessages,
                                                    trainMAs,
                                                    TPRmsg,
                                                    MAmessages};
  std::array<Activity*, 10> activities{
      &assigningID,           &trainExits,      &trainArrival,    &updatePosition,       &TPRNetworkDelay_case1,
      &TPRNetworkDelay_case2, &updateTPR_case1, &updateTPR_case2, &MANetworkDelay_case1, &MANetworkDelay_case2};
  std::array<BaseGroupClass*, 7> groups{&trainArrival,   &updatePosition,      &TPRNetworkDelayGroup,
                                        &updateTPRGroup, &MANetworkDelayGroup, &assigningID,
                                        &trainExits};
  takeOver("train", variables, activities, groups);
  assignPlacesToActivitiesInst();
  assignPlacesToActivitiesTimed();
  addArcs();
  for (Activity* activity : activities) {
    activity->LinkVariables();
  }
  CustomInitialization();
}

void trainSAN::initializeGroups() {
  const auto initializeCases = [](PostselectGroup& group, const char* name, Activity& case1, Activity& case2) {
    group.initialize(2, name);
    group.appendGroup(&case1);
    group.appendGroup(&case2);
  };
  initializeCases(TPRNetworkDelayGroup, "TPRNetworkDelayGroup", TPRNetworkDelay_case1, TPRNetworkDelay_case2);
  initializeCases(updateTPRGroup, "updateTPRGroup", updateTPR_case1, updateTPR_case2);
  initializeCases(MANetworkDelayGroup, "MANetworkDelayGroup", MANetworkDelay_case1, MANetworkDelay_case2);
}

void trainSAN::createStateVariables() {
  trainID = new Place("trainID", 0);
  Start = new Place("Start", 1);
  Count = new Place("Count", nTrains);
  waitForEntering = new Place("waitForEntering", 0);
  trainMovement = new Place("trainMovement", 0);
  sendTPR = new Place("sendTPR", 0);
  TPRtoRBC = new Place("TPRtoRBC", 0);
  MAtoRBC = new Place("MAtoRBC", 0);
  TPRwaiting = new Place("TPRwaiting", 0);
  trainHasToExit = new Place("trainHasToExit", 0);
  arrivalTime = new shortArrayOfTrains("arrivalTime");
  trainHeadPositions = new intArrayOfTrains("trainHeadPositions");
  trainTailPositions = new intArrayOfTrains("trainTailPositions");
  trainSpeeds = new shortArrayOfTrains("trainSpeeds");
  TPRmessages = new tprMsgArrayOfTrains("TPRmessages");
  trainMAs = new intArrayOfTrains("trainMAs");
  TPRmsg = new tprMsg("TPRmsg");
  MAmessages = new maMsgOfTrains("MAmessages");
}

void trainSAN::assignPlacesToActivitiesInst() {
  assigningID.Start = Start;
  assigningID.waitForEntering = waitForEntering;
  assigningID.trainID = trainID;
  assigningID.Count = Count;

  trainExits.trainHasToExit = trainHasToExit;
  trainExits.trainMovement = trainMovement;
}

void trainSAN::assignPlacesToActivitiesTimed() {
  trainArrival.waitForEntering = waitForEntering;
  trainArrival.trainMovement = trainMovement;
  trainArrival.TPRwaiting = TPRwaiting;
  trainArrival.trainID = trainID;
  trainArrival.arrivalTime = arrivalTime;
  trainArrival.trainHeadPositions = trainHeadPositions;
  trainArrival.trainTailPositions = trainTailPositions;
  trainArrival.trainMAs = trainMAs;
  trainArrival.trainSpeeds = trainSpeeds;

  updatePosition.trainMovement = trainMovement;
  updatePosition.trainID = trainID;
  updatePosition.trainHasToExit = trainHasToExit;
  updatePosition.trainHeadPositions = trainHeadPositions;
  updatePosition.trainSpeeds = trainSpeeds;
  updatePosition.trainTailPositions = trainTailPositions;
  updatePosition.trainMAs = trainMAs;

  for (TPRNetworkDelayActivity* activity :
       std::initializer_list<TPRNetworkDelayActivity*>{&TPRNetworkDelay_case1, &TPRNetworkDelay_case2}) {
    activity->sendTPR = sendTPR;
    activity->TPRmsg = TPRmsg;
  }
  TPRNetworkDelay_case1.TPRtoRBC = TPRtoRBC;
  TPRNetworkDelay_case1.trainID = trainID;
  TPRNetworkDelay_case1.TPRmessages = TPRmessages;

  for (updateTPRActivity* activity : std::initializer_list<updateTPRActivity*>{&updateTPR_case1, &updateTPR_case2}) {
    activity->TPRwaiting = TPRwaiting;
    activity->sendTPR = sendTPR;
    activity->trainID = trainID;
    activity->TPRmsg = TPRmsg;
    activity->trainHeadPositions = trainHeadPositions;
    activity->trainSpeeds = trainSpeeds;
  }

  for (MANetworkDelayActivity* activity :
       std::initializer_list<MANetworkDelayActivity*>{&MANetworkDelay_case1, &MANetworkDelay_case2}) {
    activity->MAtoRBC = MAtoRBC;
    activity->trainID = trainID;
    activity->MAmessages = MAmessages;
  }
  MANetworkDelay_case1.trainMAs = trainMAs;
}

void trainSAN::addArcs() {
  // Some of these variables are only read by the activity. They belong to the lists all the same: the lists decide
  // which groups are looked at after a firing, and in which order.
  addAffectArcs(assigningID, {Start, waitForEntering, trainID, Count});
  addAffectArcs(trainExits, {trainHasToExit, trainMovement});
  addAffectArcs(trainArrival, {waitForEntering, trainMovement, TPRwaiting, trainID, trainHeadPositions,
                               trainTailPositions, trainMAs, trainSpeeds});
  addAffectArcs(updatePosition, {trainMovement, trainID, trainHasToExit, trainHeadPositions, trainSpeeds,
                                 trainTailPositions, trainMAs});
  addAffectArcs(TPRNetworkDelay_case1, {sendTPR, TPRtoRBC, trainID, TPRmsg, TPRmessages});
  addAffectArcs(TPRNetworkDelay_case2, {sendTPR, TPRmsg});
  addAffectArcs(updateTPR_case1, {TPRwaiting, sendTPR, TPRmsg, trainID, trainHeadPositions, trainSpeeds});
  addAffectArcs(updateTPR_case2, {TPRwaiting, sendTPR, TPRmsg, trainID, trainHeadPositions, trainSpeeds});
  addAffectArcs(MANetworkDelay_case1, {MAtoRBC, trainID, trainMAs, MAmessages});
  addAffectArcs(MANetworkDelay_case2, {MAtoRBC, trainID, MAmessages});

  addEnableArcs(assigningID, {Start});
  addEnableArcs(trainExits, {trainHasToExit, trainMovement});
  addEnableArcs(trainArrival, {waitForEntering});
  addEnableArcs(updatePosition, {trainMovement});
  addEnableArcs(TPRNetworkDelay_case1, {sendTPR});
  addEnableArcs(TPRNetworkDelay_case2, {sendTPR});
  addEnableArcs(updateTPR_case1, {TPRwaiting});
  addEnableArcs(updateTPR_case2, {TPRwaiting});
  addEnableArcs(MANetworkDelay_case1, {MAtoRBC, trainID, MAmessages});
  addEnableArcs(MANetworkDelay_case2, {MAtoRBC, trainID, MAmessages});
}

void trainSAN::CustomInitialization() {
  for (int i = 0; i < nTrains; ++i) {
    arrivalTime->Index(i)->Mark() = keepLow16(i * kArrivalGap);
  }
  trainMAs->Index(0)->Mark() = lineLength;
  for (int i = 1; i < nTrains; ++i) {
    trainMAs->Index(i)->Mark() = 0;
  }
}
