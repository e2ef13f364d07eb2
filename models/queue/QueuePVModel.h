#pragma once

#include "Performance_Variables/PVModel.h"

/// What is measured of the queue: "numberInQueue", the customers at times 1, 5 and 10, and "numberServed", those served
/// by time 10. The results number them 0, 1, 2 and 3.
class QueuePVModel : public PVModel {
 public:
  explicit QueuePVModel(bool expandTimeArrays);

  PerformanceVariableNode* createPVNode(int pvIndex, int timeIndex) override;
};
