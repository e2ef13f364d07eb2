#pragma once

#include "BaseClasses/PostselectGroup.h"
#include "BaseClasses/PreselectGroup.h"
#include "BaseClasses/SAN/Place.h"
#include "railway/Atomic/RailwayActivity.h"
#include "railway/Atomic/RailwaySAN.h"
#include "railway/Atomic/train/intArrayOfTrains.h"
#include "railway/Atomic/train/maMsgOfTrains.h"
#include "railway/Atomic/train/tprMsgArrayOfTrains.h"

/// The trackside controller: it takes delivered train position reports one at a time, oldest first, spends
/// RBCprocessingTime on each, updates its map of track status areas and answers with a movement authority.
/// Order    actions and groups are numbered in the order of construction: the two activities in list order, then
///          ImmediateGroup, evaluateOlderTPRGroup.
/// Owns     its activities and groups, and its variables through its base.
class tracksideSAN : public support::RailwaySAN {
 public:
  // Each activity has, for each place it uses, the place and a cached pointer to its mark, which follows sharing. The
  // pointers are borrowed from the model and filled by assignPlacesToActivitiesInst and -Timed.

  /// Takes up one report token as soon as the controller is idle.
  class evaluateOlderTPRActivity : public support::RailwayActivity {
   public:
    evaluateOlderTPRActivity();
    bool Enabled() override { return shiftEnabled(*TPRtoRBC_Quorva_Mark > 0 && *idle_Quorva_Mark >= 1); }
    BaseActionClass* Fire() override;
    void LinkVariables() override;

    Place* TPRtoRBC = nullptr;
    Place* idle = nullptr;
    Place* msgIn = nullptr;
    short* TPRtoRBC_Quorva_Mark = nullptr;
    short* idle_Quorva_Mark = nullptr;
    short* msgIn_Quorva_Mark = nullptr;
  };

  /// Processes the oldest stored report and answers it.
  class RBCprocessingActivity : public support::DeterministicActivity {
   public:
    RBCprocessingActivity();
    bool Enabled() override { return shiftEnabled(*msgIn_Quorva_Mark > 0); }
    double DeterministicParamValue() override;
    BaseActionClass* Fire() override;
    void LinkVariables() override;

    Place* msgIn = nullptr;
    Place* MAtoRBC = nullptr;
    Place* idle = nullptr;
    short* msgIn_Quorva_Mark = nullptr;
    short* MAtoRBC_Quorva_Mark = nullptr;
    short* idle_Quorva_Mark = nullptr;
    tprMsgArrayOfTrains* TPRmessages = nullptr;
    intArrayOfTrains* trackStatusAreasHeads = nullptr;
    intArrayOfTrains* trackStatusAreasTails = nullptr;
    maMsgOfTrains* MAmessages = nullptr;

   private:
    /// The train with the oldest pending report, of two equally old ones the lower identity; the last train if no
    /// report is pending, as a token may find its report overwritten or already answered. O(nTrains).
    int trainOfOldestReport();
  };

  /// Requires: the global variables have their final values; nTrains is at least 1.
  tracksideSAN();

  // Activities, in the order of the model's list.
  evaluateOlderTPRActivity evaluateOlderTPR;
  RBCprocessingActivity RBCprocessing;

  PreselectGroup ImmediateGroup;          // takes no part in a run
  PostselectGroup evaluateOlderTPRGroup;  // takes no part in a run

  // State variables, in the order of the model's list. Owned.
  Place* TPRtoRBC = nullptr;                          // delivered reports not yet taken up; shared with the trains
  Place* MAtoRBC = nullptr;                           // authorities on the way to trains; shared with the trains
  Place* idle = nullptr;                              // the controller is free
  Place* msgIn = nullptr;                             // a report is being processed
  tprMsgArrayOfTrains* TPRmessages = nullptr;         // last delivered report of each train; shared with the trains
  intArrayOfTrains* trackStatusAreasHeads = nullptr;  // front limit of the area of each train
  intArrayOfTrains* trackStatusAreasTails = nullptr;  // rear limit of the area of each train
  maMsgOfTrains* MAmessages = nullptr;                // authority for each train; shared with the trains

 private:
  void createStateVariables();
  void assignPlacesToActivitiesInst();
  void assignPlacesToActivitiesTimed();
  void addArcs();
  /// The first train's area begins at the end of the line, the others' at 0.
  void CustomInitialization();
};
