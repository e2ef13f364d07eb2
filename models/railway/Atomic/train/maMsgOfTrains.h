#pragma once

#include "railway/Atomic/train/ArrayOfTrains.h"
#include "railway/Atomic/train/maMsg.h"

/// A movement authority for each train.
class maMsgOfTrains : public support::ArrayOfTrains<maMsg, maMsg_state, ArrayType_STRUCT> {
 public:
  using ArrayOfTrains::ArrayOfTrains;
};
