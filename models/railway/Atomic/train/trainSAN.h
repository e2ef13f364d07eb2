#pragma once

#include "BaseClasses/PostselectGroup.h"
#include "BaseClasses/PreselectGroup.h"
#include "BaseClasses/SAN/Place.h"
#include "railway/Atomic/RailwayActivity.h"
#include "railway/Atomic/RailwaySAN.h"
#include "railway/Atomic/train/intArrayOfTrains.h"
#include "railway/Atomic/train/maMsgOfTrains.h"
#include "railway/Atomic/train/shortArrayOfTrains.h"
#include "railway/Atomic/train/tprMsg.h"
#include "railway/Atomic/train/tprMsgArrayOfTrains.h"

/// One train on the line: it takes an identity, enters at its arrival time, moves under its movement authority, reports
/// its position over a network that may lose the report, receives authorities over the same kind of network and leaves
/// at the end of the line.
/// Units    positions in whole length units on one axis, growing in the direction of travel, a train enters with its
///          head at 0; speeds in length units per time unit; 16-bit marks keep the low 16 bits of what is stored.
/// Order    actions and groups are numbered in the order of construction: the ten activities in list order, then
///          ImmediateGroup, TPRNetworkDelayGroup, updateTPRGroup, MANetworkDelayGroup, assigningIDGroup,
///          trainExitsGroup.
/// Owns     its activities and groups, and its variables through its base.
class trainSAN : public support::RailwaySAN {
 public:
  // Each activity has, for each place it uses, the place and a cached pointer to its mark, which follows sharing. The
  // pointers are borrowed from the train and filled by assignPlacesToActivitiesInst and -Timed.

  /// Takes the next identity. Identities are handed out downward, to nTrains - 1 first.
  class assigningIDActivity : public support::RailwayActivity {
   public:
    assigningIDActivity();
    bool Enabled() override { return shiftEnabled(*Start_Quorva_Mark > 0); }
    BaseActionClass* Fire() override;
    void LinkVariables() override;

    Place* Start = nullptr;
    Place* waitForEntering = nullptr;
    Place* trainID = nullptr;
    Place* Count = nullptr;
    short* Start_Quorva_Mark = nullptr;
    short* waitForEntering_Quorva_Mark = nullptr;
    short* trainID_Quorva_Mark = nullptr;
    short* Count_Quorva_Mark = nullptr;
  };

  /// Takes the train off the line. Its report timer goes on.
  class trainExitsActivity : public support::RailwayActivity {
   public:
    trainExitsActivity();
    bool Enabled() override { return shiftEnabled(*trainHasToExit_Quorva_Mark > 0 && *trainMovement_Quorva_Mark >= 1); }
    BaseActionClass* Fire() override;
    void LinkVariables() override;

    Place* trainHasToExit = nullptr;
    Place* trainMovement = nullptr;
    short* trainHasToExit_Quorva_Mark = nullptr;
    short* trainMovement_Quorva_Mark = nullptr;
  };

  /// The train enters the line, with a speed from its authority as it stands.
  class trainArrivalActivity : public support::DeterministicActivity {
   public:
    trainArrivalActivity();
    bool Enabled() override { return shiftEnabled(*waitForEntering_Quorva_Mark > 0); }
    double DeterministicParamValue() override;
    BaseActionClass* Fire() override;
    void LinkVariables() override;

    Place* waitForEntering = nullptr;
    Place* trainMovement = nullptr;
    Place* TPRwaiting = nullptr;
    Place* trainID = nullptr;
    short* waitForEntering_Quorva_Mark = nullptr;
    short* trainMovement_Quorva_Mark = nullptr;
    short* TPRwaiting_Quorva_Mark = nullptr;
    short* trainID_Quorva_Mark = nullptr;
    shortArrayOfTrains* arrivalTime = nullptr;
    intArrayOfTrains* trainHeadPositions = nullptr;
    intArrayOfTrains* trainTailPositions = nullptr;
    intArrayOfTrains* trainMAs = nullptr;
    shortArrayOfTrains* trainSpeeds = nullptr;
  };

  /// Moves the train by one period, then sets its speed for the next one.
  class updatePositionActivity : public support::DeterministicActivity {
   public:
    updatePositionActivity();
    bool Enabled() override { return shiftEnabled(*trainMovement_Quorva_Mark > 0); }
    double DeterministicParamValue() override;
    BaseActionClass* Fire() override;
    void LinkVariables() override;

    Place* trainMovement = nullptr;
    Place* trainID = nullptr;
    Place* trainHasToExit = nullptr;
    short* trainMovement_Quorva_Mark = nullptr;
    short* trainID_Quorva_Mark = nullptr;
    short* trainHasToExit_Quorva_Mark = nullptr;
    intArrayOfTrains* trainHeadPositions = nullptr;
    shortArrayOfTrains* trainSpeeds = nullptr;
    intArrayOfTrains* trainTailPositions = nullptr;
    intArrayOfTrains* trainMAs = nullptr;
  };

  /// What the two outcomes of sending a report have in common: the report leaves the network, and TPRmsg is free again.
  class TPRNetworkDelayActivity : public support::DeterministicActivity {
   public:
    bool Enabled() override { return shiftEnabled(*sendTPR_Quorva_Mark > 0); }
    double DeterministicParamValue() override;
    void LinkVariables() override;

    Place* sendTPR = nullptr;
    short* sendTPR_Quorva_Mark = nullptr;
    tprMsg* TPRmsg = nullptr;
  };

  /// The report gets through.
  class TPRNetworkDelayActivity_case1 : public TPRNetworkDelayActivity {
   public:
    TPRNetworkDelayActivity_case1();
    double Weight() override;
    BaseActionClass* Fire() override;
    void LinkVariables() override;

    Place* TPRtoRBC = nullptr;
    Place* trainID = nullptr;
    short* TPRtoRBC_Quorva_Mark = nullptr;
    short* trainID_Quorva_Mark = nullptr;
    tprMsgArrayOfTrains* TPRmessages = nullptr;
  };

  /// The report is lost.
  class TPRNetworkDelayActivity_case2 : public TPRNetworkDelayActivity {
   public:
    TPRNetworkDelayActivity_case2();
    double Weight() override;
    BaseActionClass* Fire() override;
  };

  /// What the two outcomes of making a report have in common: all but the confirmation of integrity.
  class updateTPRActivity : public support::DeterministicActivity {
   public:
    bool Enabled() override { return shiftEnabled(*TPRwaiting_Quorva_Mark > 0); }
    double DeterministicParamValue() override;
    void LinkVariables() override;

    Place* TPRwaiting = nullptr;
    Place* sendTPR = nullptr;
    Place* trainID = nullptr;
    short* TPRwaiting_Quorva_Mark = nullptr;
    short* sendTPR_Quorva_Mark = nullptr;
    short* trainID_Quorva_Mark = nullptr;
    tprMsg* TPRmsg = nullptr;
    intArrayOfTrains* trainHeadPositions = nullptr;
    shortArrayOfTrains* trainSpeeds = nullptr;

   protected:
    /// Writes the report of this moment into TPRmsg and hands it to the network.
    void makeReport(short integrityConfirmed);
  };

  /// A report with its integrity confirmed.
  class updateTPRActivity_case1 : public updateTPRActivity {
   public:
    updateTPRActivity_case1();
    double Weight() override;
    BaseActionClass* Fire() override;
  };

  /// A report without confirmation of integrity.
  class updateTPRActivity_case2 : public updateTPRActivity {
   public:
    updateTPRActivity_case2();
    double Weight() override;
    BaseActionClass* Fire() override;
  };

  /// What the two outcomes of sending an authority have in common: a token of the network and a pending authority for
  /// this train.
  class MANetworkDelayActivity : public support::DeterministicActivity {
   public:
    bool Enabled() override;
    double DeterministicParamValue() override;
    void LinkVariables() override;

    Place* MAtoRBC = nullptr;
    Place* trainID = nullptr;
    short* MAtoRBC_Quorva_Mark = nullptr;
    short* trainID_Quorva_Mark = nullptr;
    maMsgOfTrains* MAmessages = nullptr;
  };

  /// The authority gets through. The speed follows at the next position update.
  class MANetworkDelayActivity_case1 : public MANetworkDelayActivity {
   public:
    MANetworkDelayActivity_case1();
    double Weight() override;
    BaseActionClass* Fire() override;

    intArrayOfTrains* trainMAs = nullptr;
  };

  /// The authority is lost.
  class MANetworkDelayActivity_case2 : public MANetworkDelayActivity {
   public:
    MANetworkDelayActivity_case2();
    double Weight() override;
    BaseActionClass* Fire() override;
  };

  /// Requires: the global variables have their final values; nTrains is at least 1.
  trainSAN();

  // Activities, in the order of the model's list.
  assigningIDActivity assigningID;
  trainExitsActivity trainExits;
  trainArrivalActivity trainArrival;
  updatePositionActivity updatePosition;
  TPRNetworkDelayActivity_case1 TPRNetworkDelay_case1;
  TPRNetworkDelayActivity_case2 TPRNetworkDelay_case2;
  updateTPRActivity_case1 updateTPR_case1;
  updateTPRActivity_case2 updateTPR_case2;
  MANetworkDelayActivity_case1 MANetworkDelay_case1;
  MANetworkDelayActivity_case2 MANetworkDelay_case2;

  PreselectGroup ImmediateGroup;  // takes no part in a run
  PostselectGroup TPRNetworkDelayGroup;
  PostselectGroup updateTPRGroup;
  PostselectGroup MANetworkDelayGroup;
  PostselectGroup assigningIDGroup;  // takes no part in a run
  PostselectGroup trainExitsGroup;   // takes no part in a run

  // State variables, in the order of the model's list. Owned.
  Place* trainID = nullptr;                        // identity, and index into the arrays
  Place* Start = nullptr;                          // token that starts the identity assignment
  Place* Count = nullptr;                          // identities not yet taken; shared by all trains
  Place* waitForEntering = nullptr;                // the train waits for its arrival time
  Place* trainMovement = nullptr;                  // the train is on the line and moves
  Place* sendTPR = nullptr;                        // reports waiting in the network
  Place* TPRtoRBC = nullptr;                       // delivered reports; shared with the trackside
  Place* MAtoRBC = nullptr;                        // authorities on the way to trains; shared with the trackside
  Place* TPRwaiting = nullptr;                     // token of the report timer
  Place* trainHasToExit = nullptr;                 // the train reached the end of the line
  shortArrayOfTrains* arrivalTime = nullptr;       // arrival time of each train
  intArrayOfTrains* trainHeadPositions = nullptr;  // head position of each train
  intArrayOfTrains* trainTailPositions = nullptr;  // tail position of each train
  shortArrayOfTrains* trainSpeeds = nullptr;       // speed of each train
  tprMsgArrayOfTrains* TPRmessages = nullptr;      // last delivered report of each train; shared with the trackside
  intArrayOfTrains* trainMAs = nullptr;            // end of authority known to each train
  tprMsg* TPRmsg = nullptr;                        // the report this train is sending; its own
  maMsgOfTrains* MAmessages = nullptr;             // authority sent to each train; shared with the trackside

 private:
  void initializeGroups();
  void createStateVariables();
  void assignPlacesToActivitiesInst();
  void assignPlacesToActivitiesTimed();
  void addArcs();
  /// Arrival times 50 apart; the first train has the whole line as its authority, the others none.
  void CustomInitialization();
};
