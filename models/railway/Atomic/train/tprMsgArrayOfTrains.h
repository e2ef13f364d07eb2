#pragma once

#include "railway/Atomic/train/ArrayOfTrains.h"
#include "railway/Atomic/train/tprMsg.h"

/// A train position report for each train.
class tprMsgArrayOfTrains : public support::ArrayOfTrains<tprMsg, tprMsg_state, ArrayType_STRUCT> {
 public:
  using ArrayOfTrains::ArrayOfTrains;
};
