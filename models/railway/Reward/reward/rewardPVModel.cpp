#include "railway/Reward/reward/rewardPVModel.h"

#include "railway/Composed/model/modelRJ.h"
#include "railway/Reward/reward/rewardPV0.h"

rewardPVModel::rewardPVModel(bool expandTimeArrays) {
  TheModel = new modelRJ;
  DefineName("rewardPVModel");
  StateMode = 1;
  CreatePVList(1, expandTimeArrays);
  Initialize();
}

PerformanceVariableNode* rewardPVModel::createPVNode(int pvIndex, int timeIndex) {
  return pvIndex == 0 ? new rewardPV0(timeIndex) : nullptr;
}
