#include "railway/Reward/reward/rewardPV0Impulse0.h"

#include <cstddef>

rewardPV0Impulse0::rewardPV0Impulse0() {
  NumberOfModelDependencies = 1;
  TheModelPtr = new BaseModelClass**[1];
  // The reward model writes a BaseModelClass* through this pointer. A trainSAN begins with its only base, so that the
  // pointer to either is the same.
  TheModelPtr[0] = reinterpret_cast<BaseModelClass**>(&train);
}

rewardPV0Impulse0::~rewardPV0Impulse0() {
  delete[] TheModelPtr;
  for (int i = 0; i < ImpulseWorkerListLength; ++i) {
    delete ImpulseWorkerList[i];
  }
  delete[] ImpulseWorkerList;
}

double rewardPV0Impulse0::Impulse_Function(double /*firingTime*/) {
  return 1.0;
}

ImpulseNodeClass** rewardPV0Impulse0::CreateImpulseWorkerList(int count) {
  ImpulseWorkerListLength = count;
  ImpulseWorkerList = new ImpulseNodeClass*[static_cast<std::size_t>(count)];
  for (int i = 0; i < count; ++i) {
    ImpulseWorkerList[i] = new rewardPV0Impulse0;
  }
  return ImpulseWorkerList;
}
