#include "railway/Atomic/trackside/tracksideSAN.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "railway/Atomic/Arithmetic.h"
#include "railway/Study/study/GlobalVariables.h"

using support::sum32;
using support::truncateToInt32;

namespace {

/// Index of each group in the model's group list.
enum GroupIndex { kRBCprocessingGroup = 0, kEvaluateOlderTPRGroup = 1 };

}  // namespace

// ---- evaluateOlderTPR ---------------------------------------------------------------------------

tracksideSAN::evaluateOlderTPRActivity::evaluateOlderTPRActivity() {
  ActivityInitialize("evaluateOlderTPR", kEvaluateOlderTPRGroup, Instantaneous, RaceEnabled, 3, 2, false);
}

void tracksideSAN::evaluateOlderTPRActivity::LinkVariables() {
  TPRtoRBC->Register(&TPRtoRBC_Quorva_Mark);
  idle->Register(&idle_Quorva_Mark);
  msgIn->Register(&msgIn_Quorva_Mark);
}

BaseActionClass* tracksideSAN::evaluateOlderTPRActivity::Fire() {
  --*TPRtoRBC_Quorva_Mark;
  --*idle_Quorva_Mark;
  ++*msgIn_Quorva_Mark;
  return this;
}

// ---- RBCprocessing ------------------------------------------------------------------------------

tracksideSAN::RBCprocessingActivity::RBCprocessingActivity() {
  ActivityInitialize("RBCprocessing", kRBCprocessingGroup, Deterministic, RaceEnabled, 7, 1, false);
}

void tracksideSAN::RBCprocessingActivity::LinkVariables() {
  msgIn->Register(&msgIn_Quorva_Mark);
  MAtoRBC->Register(&MAtoRBC_Quorva_Mark);
  idle->Register(&idle_Quorva_Mark);
}

double tracksideSAN::RBCprocessingActivity::DeterministicParamValue() {
  return RBCprocessingTime;
}

int tracksideSAN::RBCprocessingActivity::trainOfOldestReport() {
  int oldest = 0;
  std::int32_t oldestTimestamp = TPRmessages->Index(0)->timestamp->Mark();
  for (int train = 1; train < nTrains; ++train) {
    const std::int32_t timestamp = TPRmessages->Index(train)->timestamp->Mark();
    if (oldestTimestamp == 0 || (timestamp > 0 && timestamp < oldestTimestamp)) {
      oldest = train;
      oldestTimestamp = timestamp;
    }
  }
  return oldest;
}

BaseActionClass* tracksideSAN::RBCprocessingActivity::Fire() {
  --*msgIn_Quorva_Mark;
  const int train = trainOfOldestReport();
  tprMsg* const report = TPRmessages->Index(train);
  const std::int32_t position = report->position->Mark();
  const bool integrityConfirmed = report->integrityConfirmed->Mark() == 1;
  report->timestamp->Mark() = 0;
  trackStatusAreasHeads->Index(train)->Mark() = position;
  if (integrityConfirmed) {
    // On purpose: the area's tail lies ahead of the reported head by one train length, and it is not capped.
    trackStatusAreasTails->Index(train)->Mark() = sum32(trainLength, position);
    if (train < nTrains - 1) {
      const std::int32_t limit = sum32(sum32(position, trainLength), safetyMargin);
      trackStatusAreasHeads->Index(train + 1)->Mark() = std::min<std::int32_t>(limit, lineLength);
    }
  }
  // On purpose: the authority ends at the position just reported, whatever the area's head was before.
  maMsg* const authority = MAmessages->Index(train);
  authority->timestamp->Mark() = truncateToInt32(BaseModelClass::LastActionTime);
  authority->EoA->Mark() = trackStatusAreasHeads->Index(train)->Mark();
  ++*MAtoRBC_Quorva_Mark;
  ++*idle_Quorva_Mark;
  return this;
}

// ---- The model ----------------------------------------------------------------------------------

tracksideSAN::tracksideSAN() {
  createStateVariables();
  std::array<BaseStateVariableClass*, 8> variables{
      TPRtoRBC, MAtoRBC, idle, msgIn, TPRmessages, trackStatusAreasHeads, trackStatusAreasTails, MAmessages};
  std::array<Activity*, 2> activities{&evaluateOlderTPR, &RBCprocessing};
  std::array<BaseGroupClass*, 2> groups{&RBCprocessing, &evaluateOlderTPR};
  takeOver("trackside", variables, activities, groups);
  assignPlacesToActivitiesInst();
  assignPlacesToActivitiesTimed();
  addArcs();
  for (Activity* activity : activities) {
    activity->LinkVariables();
  }
  CustomInitialization();
}

void tracksideSAN::createStateVariables() {
  TPRtoRBC = new Place("TPRtoRBC", 0);
  MAtoRBC = new Place("MAtoRBC", 0);
  idle = new Place("idle", 1);
  msgIn = new Place("msgIn", 0);
  TPRmessages = new tprMsgArrayOfTrains("TPRmessages");
  trackStatusAreasHeads = new intArrayOfTrains("trackStatusAreasHeads");
  trackStatusAreasTails = new intArrayOfTrains("trackStatusAreasTails");
  MAmessages = new maMsgOfTrains("MAmessages");
}

void tracksideSAN::assignPlacesToActivitiesInst() {
  evaluateOlderTPR.TPRtoRBC = TPRtoRBC;
  evaluateOlderTPR.idle = idle;
  evaluateOlderTPR.msgIn = msgIn;
}

void tracksideSAN::assignPlacesToActivitiesTimed() {
  RBCprocessing.msgIn = msgIn;
  RBCprocessing.MAtoRBC = MAtoRBC;
  RBCprocessing.idle = idle;
  RBCprocessing.TPRmessages = TPRmessages;
  RBCprocessing.trackStatusAreasHeads = trackStatusAreasHeads;
  RBCprocessing.trackStatusAreasTails = trackStatusAreasTails;
  RBCprocessing.MAmessages = MAmessages;
}

void tracksideSAN::addArcs() {
  addAffectArcs(evaluateOlderTPR, {TPRtoRBC, idle, msgIn});
  addAffectArcs(RBCprocessing,
                {msgIn, MAtoRBC, idle, TPRmessages, trackStatusAreasHeads, trackStatusAreasTails, MAmessages});

  addEnableArcs(evaluateOlderTPR, {TPRtoRBC, idle});
  addEnableArcs(RBCprocessing, {msgIn});
}

void tracksideSAN::CustomInitialization() {
  trackStatusAreasHeads->Index(0)->Mark() = lineLength;
  for (int i = 1; i < nTrains; ++i) {
    trackStatusAreasHeads->Index(i)->Mark() = 0;
  }
}
