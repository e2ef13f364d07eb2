#pragma once

#include "BaseClasses/state/ExtendedPlace.h"
#include "railway/Atomic/train/ArrayOfTrains.h"

/// A 16-bit value for each train.
class shortArrayOfTrains : public support::ArrayOfTrains<ExtendedPlace<short>, short, ArrayType_SHORT> {
 public:
  using ArrayOfTrains::ArrayOfTrains;
};
