#pragma once

class BaseGroupClass;

/// One row of a group's cumulative weight table.
struct GroupWeight {
  double Weight = 0.0;                         // sum of the weights of the selectable members up to this one
  BaseGroupClass* AssociatedAction = nullptr;  // borrowed from the group's members
};
