#pragma once

#include <memory>
#include <vector>

#include "BaseClasses/SAN/SANModel.h"
#include "BaseClasses/state/ExtendedPlace.h"
#include "Composer/Join.h"
#include "Composer/Rep.h"
#include "Study/PrimitiveType.h"
#include "workloads/machines/MachineSAN.h"

extern Int machines;

/// The machines, which share the number of those that are down.
class MachinesRep : public Rep {
 public:
  MachinesRep();

  ExtendedPlace<int> down{"down"};

 private:
  std::vector<std::unique_ptr<MachineSAN>> machines_;
};

/// The board that shows how many machines are down: a model without activities, for the rewards to read. A variable of
/// the machines themselves would be a sum over all of them.
class BoardSAN : public SANModel {
 public:
  BoardSAN();

  ExtendedPlace<int> down{"down"};
};

/// The shop: the machines, and the board that shares their count.
class ShopModel : public Join {
 public:
  ShopModel();

 private:
  MachinesRep machines_;
  BoardSAN board_;
  ExtendedPlace<int> down_{"down"};
};
