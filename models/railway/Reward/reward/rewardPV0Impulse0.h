#pragma once

#include "Performance_Variables/IntervalOfTimeImpulse.h"

class trainSAN;

/// One firing of trainExits counts 1. One object is the prototype, which a node declares; it makes a worker for each
/// train.
/// Owns     the workers that it made, and the array of its model dependencies.
class rewardPV0Impulse0 : public IntervalOfTimeImpulse {
 public:
  rewardPV0Impulse0();
  rewardPV0Impulse0(const rewardPV0Impulse0&) = delete;
  rewardPV0Impulse0& operator=(const rewardPV0Impulse0&) = delete;
  ~rewardPV0Impulse0() override;

  /// 1.0 for every firing.
  double Impulse_Function(double firingTime) override;

  /// Makes `count` workers and keeps them. To be called once.
  ImpulseNodeClass** CreateImpulseWorkerList(int count) override;

  trainSAN* train = nullptr;  // borrowed from the composed model, stored through TheModelPtr

 private:
  ImpulseNodeClass** ImpulseWorkerList = nullptr;  // owned array of owned workers
  int ImpulseWorkerListLength = 0;
};
