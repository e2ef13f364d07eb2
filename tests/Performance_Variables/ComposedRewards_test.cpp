#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "Composer/TestModels.h"
#include "Performance_Variables/InstantOfTimeWorker.h"
#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/RewardKit.h"

// Rewards over the real thing: atomic models under a rep and a join.

namespace {

using support::itemsOf;
using support::TestNode;
using support::variable;
using testing::ElementsAre;
using testing_support::Leaf;
using testing_support::placeOf;
using testing_support::TestJoin;
using testing_support::TestRep;

constexpr int kTrains = 30;

/// A train with a place of its own, "travelled", which "move" fills, and a place common to all trains, "line", which
/// "exit" fills.
std::unique_ptr<Leaf> makeTrain() {
  auto train = std::make_unique<Leaf>("train");
  auto* const travelled = train->add<Place>("travelled", short{0});
  auto* const line = train->add<Place>("line", short{0});
  train->addActivity("move", travelled);
  train->addActivity("exit", line);
  train->finish();
  return train;
}

/// `kTrains` trains that share "line", joined to a hub with an activity "tick".
std::unique_ptr<BaseModelClass> makeRailway() {
  testing_support::Children trains;
  std::vector<testing_support::Member> members;
  for (std::size_t i = 0; i < kTrains; ++i) {
    auto train = makeTrain();
    members.push_back({i, placeOf(*train, 1)});
    trains.push_back(std::move(train));
  }
  auto fleet = std::make_unique<TestRep>(
      "fleet", "train", std::move(trains),
      testing_support::sharedOf(testing_support::SharedVariable{std::make_unique<Place>("line"), std::move(members)}));
  auto hub = std::make_unique<Leaf>("hub");
  hub->addActivity("tick", hub->add<Place>("clock", short{0}));
  hub->finish();
  return std::make_unique<TestJoin>("railway", testing_support::childrenOf(std::move(hub), std::move(fleet)));
}

/// A worker whose rate is the mark of one place of the train in its slot.
template <class Kind, std::size_t kPlace>
class TrainWorker : public Kind {
 public:
  TrainWorker() : Kind(1) {}
  double Reward_Function() override { return placeOf(*this->template modelAt<Leaf>(0), kPlace)->Mark(); }
};

class RailwayRewardModel : public PVModel {
 public:
  explicit RailwayRewardModel(std::vector<support::TestRewardModel::MakeNode> makers) : makers_(std::move(makers)) {
    TheModel = makeRailway().release();
    DefineName("railwayReward");
    StateMode = 1;
    CreatePVList(static_cast<int>(makers_.size()), true);
    Initialize();
    ConsiderOnly(nullptr, 0);
  }

  PerformanceVariableNode* createPVNode(int pvindex, int timeindex) override {
    return makers_[static_cast<std::size_t>(pvindex)](timeindex).release();
  }

  TestNode& node(int position) const { return static_cast<TestNode&>(*PerformanceVariableList[position]); }

  /// The action of that name in the train of that number.
  BaseActionClass& trainAction(const char* name, int train) {
    List<BaseModelClass> trains;
    listModels("train", &trains);
    List<BaseActionClass> actions;
    trains.getItem(train)->listActions(name, &actions);
    return *actions.getItem(0);
  }

  void fire(BaseActionClass& action, double now) {
    Accumulate(now);
    FireAction(GroupList[action.getGroupId()], now);
  }

 private:
  std::vector<support::TestRewardModel::MakeNode> makers_;
};

support::TestRewardModel::MakeNode exits(std::vector<support::Window> windows) {
  return support::firingsVariable("exits", std::move(windows), "exit", "train");
}

template <class Kind, std::size_t kPlace>
support::TestRewardModel::MakeNode trainMark(const char* placeName, RewardType type, support::Window window) {
  return variable(placeName, type, {window}, {.models = 1, .variables = 1}, [=](TestNode& node) {
    node.AddVariableDependency(placeName, "train");
    node.makeWorker = [] { return new TrainWorker<Kind, kPlace>; };
  });
}

TEST(ComposedRewardsTest, FiringsInAnyReplicaAreCountedUpToEachTimePoint) {
  RailwayRewardModel model({exits({{0.0, 2.0}, {0.0, 5.0}, {0.0, 9.0}})});
  ASSERT_EQ(model.node(0).NumberOfImpulseWorkers[0], kTrains);
  model.fire(model.trainAction("exit", 0), 1.0);
  model.fire(model.trainAction("move", 0), 1.5);
  model.fire(model.trainAction("exit", 17), 2.0);
  model.fire(model.trainAction("exit", 29), 4.0);
  model.fire(model.trainAction("exit", 17), 8.0);
  model.EndAccumulate(model.Simulation_Stop_Time);
  EXPECT_EQ(model.node(0).TotalReward, 2.0);
  EXPECT_EQ(model.node(1).TotalReward, 3.0);
  EXPECT_EQ(model.node(2).TotalReward, 4.0);
  EXPECT_EQ(model.node(2).TotalRewardSqr, 1.0 + 4.0 + 1.0);
}

TEST(ComposedRewardsTest, AReplicasOwnPlaceTouchesItsOwnWorkerAlone) {
  RailwayRewardModel model({trainMark<IntervalOfTimeWorker, 0>("travelled", INTERVAL_OF_TIME, {0.0, 10.0})});
  EXPECT_THAT(itemsOf(model.trainAction("move", 12).AffectedRateWorkers[0]), ElementsAre(12));
  EXPECT_EQ(model.trainAction("exit", 12).AffectedRateWorkers[0].size(), 0);
  model.fire(model.trainAction("move", 12), 4.0);
  model.fire(model.trainAction("move", 3), 6.0);
  model.EndAccumulate(10.0);
  EXPECT_EQ(model.node(0).TotalReward, 2.0 + 8.0);
}

TEST(ComposedRewardsTest, APlaceSharedByAllReplicasTouchesTheWorkersOfAll) {
  RailwayRewardModel model({trainMark<InstantOfTimeWorker, 1>("line", INSTANT_OF_TIME, {10.0, 10.0})});
  EXPECT_EQ(model.trainAction("exit", 12).AffectedRateWorkers[0].size(), kTrains);
  EXPECT_EQ(model.node(0).NumberOfActionDependencies, kTrains);
  model.fire(model.trainAction("exit", 12), 4.0);
  model.fire(model.trainAction("exit", 13), 5.0);
  model.EndAccumulate(10.0);
  EXPECT_EQ(model.node(0).TotalReward, 2.0 * kTrains);
}

TEST(ComposedRewardsTest, AnActionOfAnotherModelAffectsNoNode) {
  RailwayRewardModel model({exits({{0.0, 2.0}})});
  List<BaseActionClass> ticks;
  model.listActions("tick", &ticks);
  ASSERT_EQ(ticks.getNumItems(), 1);
  EXPECT_EQ(ticks.getItem(0)->AffectedNodesByImpulseReward.size(), 0);
  EXPECT_EQ(ticks.getItem(0)->AffectedNodesByRateReward.size(), 0);
  EXPECT_EQ(model.TotalNumAffectingActions, kTrains);
  EXPECT_EQ(model.NumActions, 2 * kTrains + 1);
}

TEST(ComposedRewardsTest, TheImageHoldsTheTreesImageAndTheLastAction) {
  RailwayRewardModel model({exits({{0.0, 2.0}})});
  // The clock, 30 times "travelled" and one "line" of 2 bytes each, and 4 bytes for 61 actions.
  ASSERT_EQ(model.StateSize(), 2 + 2 * kTrains + 2 + 4);
  std::vector<unsigned char> start(static_cast<std::size_t>(model.StateSize()));
  model.CurrentState(start.data());
  BaseActionClass& exit = model.trainAction("exit", 5);
  model.fire(exit, 1.0);
  std::vector<unsigned char> later(start.size());
  model.CurrentState(later.data());
  EXPECT_FALSE(model.CompareState(start.data(), later.data()));
  const int index = model.StateIndexLookup(later.data() + model.ModelStateSize);
  EXPECT_EQ(model.ListOfActions()[index - 1], &exit);

  model.SetState(start.data());
  model.PVReset();
  std::vector<unsigned char> again(start.size());
  model.CurrentState(again.data());
  EXPECT_EQ(again, start);
}

}  // namespace
