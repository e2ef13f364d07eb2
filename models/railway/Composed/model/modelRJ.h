#pragma once

#include "BaseClasses/SAN/Place.h"
#include "Composer/Join.h"
#include "railway/Atomic/train/maMsgOfTrains.h"
#include "railway/Atomic/train/tprMsgArrayOfTrains.h"

class modelRJ__fleet;
class tracksideSAN;

/// The whole railway: the fleet of trains and the trackside controller, joined by the messages between them.
/// Owns     its children and the four shared variables.
class modelRJ : public Join {
 public:
  /// Requires: the global variables have their final values; nTrains is at least 1.
  modelRJ();
  modelRJ(const modelRJ&) = delete;
  modelRJ& operator=(const modelRJ&) = delete;
  ~modelRJ() override;

  modelRJ__fleet* fleet = nullptr;    // owned; first child
  tracksideSAN* trackside = nullptr;  // owned; second child

  // Variables of this level, in the order of their names. Owned.
  maMsgOfTrains* MAmessages = nullptr;
  Place* MAtoRBC = nullptr;
  tprMsgArrayOfTrains* TPRmessages = nullptr;
  Place* TPRtoRBC = nullptr;

 private:
  /// Calls `visit(variable, fleetMember, tracksideMember)` for each shared variable in the order of the names:
  /// `variable` is the pointer to this level's variable, the members point to the children's.
  template <typename Visitor>
  void forEachShared(Visitor visit);

  void shareVariables();
};
