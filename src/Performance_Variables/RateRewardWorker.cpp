#include "Performance_Variables/RateRewardWorker.h"

#include <cstddef>

RateRewardWorker::RateRewardWorker(int numModels)
    : instances_(std::make_unique<BaseModelClass*[]>(static_cast<std::size_t>(numModels))) {
  NumModels = numModels;
  TheModelPtr = new BaseModelClass**[static_cast<std::size_t>(numModels)];
  for (int slot = 0; slot < numModels; ++slot) {
    TheModelPtr[slot] = &instances_[static_cast<std::size_t>(slot)];
  }
}

RateRewardWorker::~RateRewardWorker() {
  delete[] TheModelPtr;
}

void RateRewardWorker::CurrentReward() {
  take(Reward_Function());
}
