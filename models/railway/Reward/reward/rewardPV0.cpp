#include "railway/Reward/reward/rewardPV0.h"

#include <array>

#include "railway/Composed/model/modelRJ.h"

namespace {

constexpr int kNumTimes = 11;

}  // namespace

rewardPV0::rewardPV0(int timeIndex) {
  // The reward model writes a BaseModelClass* through this pointer. A modelRJ begins with its only base, so that the
  // pointer to either is the same.
  TheModelPtr = reinterpret_cast<BaseModelClass**>(&ThemodelRJ);
  std::array<double, kNumTimes> startTimes{};
  std::array<double, kNumTimes> stopTimes{99.0, 99.5, 100.0, 100.5, 101.0, 101.5, 102.0, 102.5, 103.0, 103.5, 110.0};
  Initialize("numberOfTrains", INTERVAL_OF_TIME, kNumTimes, startTimes.data(), stopTimes.data(), timeIndex, 1, 0, 0);
  AddImpulse("trainExits", "train", &Impulse0);
}

void rewardPV0::CreateWorkerList() {}
