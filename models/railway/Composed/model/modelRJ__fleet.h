#pragma once

#include "BaseClasses/SAN/Place.h"
#include "Composer/Rep.h"
#include "railway/Atomic/train/intArrayOfTrains.h"
#include "railway/Atomic/train/maMsgOfTrains.h"
#include "railway/Atomic/train/shortArrayOfTrains.h"
#include "railway/Atomic/train/tprMsgArrayOfTrains.h"

class trainSAN;

/// The trains of the railway: nTrains copies of trainSAN, which share all that is indexed by train identity and the
/// counters of identities and messages.
/// Owns     the trains and the ten shared variables.
class modelRJ__fleet : public Rep {
 public:
  /// Requires: the global variables have their final values. A negative nTrains ends the process; 0 makes an empty
  /// fleet.
  modelRJ__fleet();
  modelRJ__fleet(const modelRJ__fleet&) = delete;
  modelRJ__fleet& operator=(const modelRJ__fleet&) = delete;
  ~modelRJ__fleet() override;

  trainSAN** InstanceArray = nullptr;  // owned array of owned trains, in the order of ModelArray

  // Variables of this level, in the order of their names. Owned; null in an empty fleet.
  Place* Count = nullptr;
  maMsgOfTrains* MAmessages = nullptr;
  Place* MAtoRBC = nullptr;
  tprMsgArrayOfTrains* TPRmessages = nullptr;
  Place* TPRtoRBC = nullptr;
  shortArrayOfTrains* arrivalTime = nullptr;
  intArrayOfTrains* trainHeadPositions = nullptr;
  intArrayOfTrains* trainMAs = nullptr;
  shortArrayOfTrains* trainSpeeds = nullptr;
  intArrayOfTrains* trainTailPositions = nullptr;

 private:
  /// Calls `visit(variable, member)` for each shared variable in the order of the names: `variable` is the pointer to
  /// this level's variable, `member` the member of trainSAN that points to a train's.
  template <typename Visitor>
  void forEachShared(Visitor visit);

  void shareVariables();
};
