#include "railway/Reward/reward/rewardPVModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "railway/Atomic/train/trainSAN.h"
#include "railway/Composed/model/modelRJ.h"
#include "railway/Composed/model/modelRJ__fleet.h"
#include "railway/RailwayTest.h"
#include "railway/Reward/reward/rewardPV0.h"

namespace {

using support::RailwayTest;
using ::testing::Each;
using ::testing::ElementsAre;

const std::vector<double> kStopTimes{99.0, 99.5, 100.0, 100.5, 101.0, 101.5, 102.0, 102.5, 103.0, 103.5, 110.0};

class RailwayRewardTest : public RailwayTest {
 protected:
  /// The reward model with its protected operation open.
  class Rewards : public rewardPVModel {
   public:
    using rewardPVModel::createPVNode;
    using rewardPVModel::rewardPVModel;
  };

  Rewards& makeRewards(int trains, bool expandTimeArrays = true) {
    setTrains(trains);
    rewards_ = std::make_unique<Rewards>(expandTimeArrays);
    rewards_->ConsiderOnly(nullptr, 0);
    return *rewards_;
  }

  static std::vector<PerformanceVariableNode*> nodesOf(PVModel& rewards) {
    return {rewards.PerformanceVariableList, rewards.PerformanceVariableList + rewards.Number_Of_Performance_Variables};
  }

  static trainSAN& trainOf(PVModel& rewards, int index) {
    return *dynamic_cast<modelRJ&>(*rewards.TheModel).fleet->InstanceArray[index];
  }

  /// One step of a run: rewards up to the time, then the firing.
  static void fireAt(PVModel& rewards, double time, BaseActionClass& action) {
    rewards.Accumulate(time);
    EXPECT_EQ(rewards.FireAction(&action, time), &action);
  }

  /// The observations of a batch that ends now.
  static std::vector<double> observations(PVModel& rewards) {
    rewards.EndAccumulate(rewards.Simulation_Stop_Time);
    std::vector<double> values;
    for (PerformanceVariableNode* node : nodesOf(rewards)) {
      values.push_back(node->TotalReward);
    }
    return values;
  }

 private:
  std::unique_ptr<Rewards> rewards_;
};

TEST_F(RailwayRewardTest, StandsForTheComposedModel) {
  PVModel& rewards = makeRewards(2);
  EXPECT_STREQ(rewards.getName(), "rewardPVModel");
  EXPECT_NE(dynamic_cast<modelRJ*>(rewards.TheModel), nullptr);
  EXPECT_EQ(rewards.StateMode, 1);
  EXPECT_EQ(rewards.getNumActions(), 22);
  EXPECT_EQ(rewards.getNumGroups(), 16);
  // The index of the last action takes four bytes, as the low byte of 22 is not zero.
  EXPECT_EQ(rewards.StateSize(), rewards.TheModel->StateSize() + 4);
}

TEST_F(RailwayRewardTest, HasANodeForEachOfTheElevenStopTimes) {
  PVModel& rewards = makeRewards(1);
  ASSERT_EQ(rewards.Number_Of_Performance_Variables, 11);
  EXPECT_EQ(rewards.Simulation_Stop_Time, 110.0);
  for (int i = 0; i < 11; ++i) {
    PerformanceVariableNode& node = *rewards.PerformanceVariableList[i];
    EXPECT_STREQ(node.Name, "numberOfTrains");
    EXPECT_EQ(node.id, i);
    EXPECT_EQ(node.GetRewardType(), INTERVAL_OF_TIME);
    EXPECT_EQ(node.Type, terminating);
    EXPECT_EQ(node.Start, 0.0);
    EXPECT_EQ(node.Stop, kStopTimes[static_cast<std::size_t>(i)]);
    EXPECT_EQ(node.NumberOfWorkers, 0);
    ASSERT_EQ(node.GetNumTimePoints(), 11);
    for (int point = 0; point < 11; ++point) {
      EXPECT_EQ(node.GetStartTime(point), 0.0);
      EXPECT_EQ(node.GetStopTime(point), kStopTimes[static_cast<std::size_t>(point)]);
    }
  }
}

TEST_F(RailwayRewardTest, WithoutExpansionHasOneNodeForTheFirstStopTime) {
  PVModel& rewards = makeRewards(1, false);
  ASSERT_EQ(rewards.Number_Of_Performance_Variables, 1);
  EXPECT_EQ(rewards.PerformanceVariableList[0]->Stop, 99.0);
  EXPECT_EQ(rewards.Simulation_Stop_Time, 99.0);
}

TEST_F(RailwayRewardTest, MakesNodesOfTheOneVariableAlone) {
  Rewards& rewards = makeRewards(1);
  const std::unique_ptr<PerformanceVariableNode> node(rewards.createPVNode(0, 10));
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->Stop, 110.0);
  EXPECT_EQ(rewards.createPVNode(1, 0), nullptr);
  EXPECT_EQ(rewards.createPVNode(-1, 0), nullptr);
}

TEST_F(RailwayRewardTest, EachTrainHasAnImpulseWorkerOfItsOwn) {
  PVModel& rewards = makeRewards(3);
  auto& railway = dynamic_cast<modelRJ&>(*rewards.TheModel);
  for (PerformanceVariableNode* node : nodesOf(rewards)) {
    EXPECT_EQ(dynamic_cast<rewardPV0&>(*node).ThemodelRJ, &railway);
    ASSERT_EQ(node->NumberOfImpulses, 1);
    ASSERT_EQ(node->NumberOfImpulseWorkers[0], 3);
    for (int i = 0; i < 3; ++i) {
      auto& worker = dynamic_cast<rewardPV0Impulse0&>(*node->ImpulseWorkersList[0][i]);
      EXPECT_EQ(worker.ContainingModel, railway.fleet->InstanceArray[i]);
      // On purpose: the model that a worker sees is counted from the first instance in the block of each.
      EXPECT_EQ(worker.train, railway.fleet->InstanceArray[0]);
      EXPECT_EQ(worker.WorkerNumber, i);
    }
  }
}

TEST_F(RailwayRewardTest, OnlyTrainExitsEarnsAnImpulse) {
  PVModel& rewards = makeRewards(2);
  for (int i = 0; i < rewards.getNumActions(); ++i) {
    BaseActionClass& action = *rewards.getActionList()[i];
    const bool earns = &action == &trainOf(rewards, 0).trainExits || &action == &trainOf(rewards, 1).trainExits;
    EXPECT_EQ(action.AffectedNodesByImpulseReward.size(), earns ? 11 : 0) << action.ActionName;
    EXPECT_EQ(action.AffectedNodesByRateReward.size(), 0) << action.ActionName;
  }
}

TEST_F(RailwayRewardTest, AnImpulseIsOneWhateverTheTime) {
  rewardPV0Impulse0 impulse;
  for (const double time : {-1.0, 0.0, 99.5, 1e300}) {
    EXPECT_EQ(impulse.Impulse_Function(time), 1.0);
  }
  EXPECT_EQ(impulse.NumberOfModelDependencies, 1);
}

TEST_F(RailwayRewardTest, AFiringCountsFromItsTimeOn) {
  PVModel& rewards = makeRewards(1);
  fireAt(rewards, 100.0, trainOf(rewards, 0).trainExits);
  fireAt(rewards, 101.2, trainOf(rewards, 0).updatePosition);
  EXPECT_THAT(observations(rewards), ElementsAre(0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1));
}

TEST_F(RailwayRewardTest, AFiringAtAStopTimeStillCounts) {
  PVModel& rewards = makeRewards(1);
  fireAt(rewards, 99.0, trainOf(rewards, 0).trainExits);
  fireAt(rewards, 105.0, trainOf(rewards, 0).updatePosition);
  EXPECT_THAT(observations(rewards), Each(1.0));
}

TEST_F(RailwayRewardTest, AFiringAtTheVeryEndCounts) {
  PVModel& rewards = makeRewards(1);
  fireAt(rewards, 110.0, trainOf(rewards, 0).trainExits);
  EXPECT_THAT(observations(rewards), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1));
}

TEST_F(RailwayRewardTest, TheFiringsOfAllTrainsAddUp) {
  PVModel& rewards = makeRewards(3);
  fireAt(rewards, 99.25, trainOf(rewards, 2).trainExits);
  fireAt(rewards, 99.5, trainOf(rewards, 2).updateTPR_case1);
  fireAt(rewards, 101.0, trainOf(rewards, 0).trainExits);
  fireAt(rewards, 104.0, trainOf(rewards, 1).trainExits);
  EXPECT_THAT(observations(rewards), ElementsAre(0, 1, 1, 1, 2, 2, 2, 2, 2, 2, 3));
}

TEST_F(RailwayRewardTest, ABatchStartsFromZero) {
  PVModel& rewards = makeRewards(1);
  fireAt(rewards, 50.0, trainOf(rewards, 0).trainExits);
  EXPECT_THAT(observations(rewards), Each(1.0));
  rewards.PVReset();
  EXPECT_EQ(BaseModelClass::LastActionTime, 0.0);
  fireAt(rewards, 103.25, trainOf(rewards, 0).trainExits);
  EXPECT_THAT(observations(rewards), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1));
}

}  // namespace
