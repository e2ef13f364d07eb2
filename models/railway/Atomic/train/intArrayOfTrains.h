#pragma once

#include "BaseClasses/state/ExtendedPlace.h"
#include "railway/Atomic/train/ArrayOfTrains.h"

/// A 32-bit value for each train.
class intArrayOfTrains : public support::ArrayOfTrains<ExtendedPlace<int>, int, ArrayType_INT> {
 public:
  using ArrayOfTrains::ArrayOfTrains;
};
