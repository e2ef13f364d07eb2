#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/RewardKit.h"
#include "support/CapturedOutput.h"

namespace {

using support::firingsVariable;
using support::itemsOf;
using support::markVariable;
using support::MarkWorker;
using support::replicated;
using support::TestAction;
using support::TestModel;
using support::TestNode;
using support::TestRewardModel;
using support::TestVariable;
using support::variable;
using support::Window;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::vector<Window> windowsUpTo(int count) {
  std::vector<Window> windows;
  for (int i = 1; i <= count; ++i) {
    windows.push_back({0.0, static_cast<double>(i)});
  }
  return windows;
}

/// A reward model of which nothing has been built.
class EmptyRewardModel : public PVModel {
 public:
  PerformanceVariableNode* createPVNode(int, int) override { return nullptr; }
};

TEST(PVModelTest, ANewRewardModelIsEmptyAndNoActionHasFired) {
  BaseModelClass::LastActionTime = 4.0;
  EmptyRewardModel model;
  EXPECT_EQ(model.LastAction, &model.ZeroImpulseAction);
  EXPECT_STREQ(model.ZeroImpulseAction.ActionName, "No Action Fired Yet");
  EXPECT_EQ(BaseModelClass::LastActionTime, 0.0);
  EXPECT_EQ(model.PerformanceVariableList, nullptr);
  EXPECT_EQ(model.Number_Of_Performance_Variables, 0);
  EXPECT_EQ(model.Trace, 0);
  EXPECT_EQ(model.TheModel, nullptr);
  EXPECT_EQ(model.ListOfActions(), nullptr);
  EXPECT_EQ(model.Simulation_Stop_Time, 0.0);
  EXPECT_EQ(model.AccumulateStartTime, 0.0);
  EXPECT_EQ(model.AccumulateStopTime, 0.0);
  EXPECT_EQ(model.TotalNumAffectingActions, 0);
  EXPECT_EQ(model.StateSize(), 0);
  EXPECT_EQ(model.StateMode, 0);
  EXPECT_TRUE(model.RelevantNodes.empty());
}

TEST(PVModelTest, TheNodesOfEveryRewardModelAreNumberedByPosition) {
  for (int round = 0; round < 2; ++round) {
    const TestRewardModel model(replicated("queue", 1, "serve"),
                                {firingsVariable("a", windowsUpTo(3), "serve", "queue"),
                                 firingsVariable("b", windowsUpTo(2), "serve", "queue")});
    ASSERT_EQ(model.Number_Of_Performance_Variables, 5);
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(model.node(i).id, i) << "round " << round;
    }
  }
}

// The list of nodes.

TEST(PVListTest, WithExpansionEachTimePointGetsANode) {
  const TestRewardModel model(replicated("queue", 1, "serve"),
                              {firingsVariable("a", windowsUpTo(11), "serve", "queue")});
  ASSERT_EQ(model.Number_Of_Performance_Variables, 11);
  ASSERT_EQ(model.calls.size(), 11U);
  for (int i = 0; i < 11; ++i) {
    EXPECT_EQ(model.node(i).id, i);
    EXPECT_EQ(model.node(i).Stop, i + 1.0);
    EXPECT_THAT(model.calls[static_cast<std::size_t>(i)], Pair(0, i));
  }
}

TEST(PVListTest, WithoutExpansionOnlyTheFirstTimePointGetsANode) {
  const TestRewardModel model(
      replicated("queue", 1, "serve"),
      {firingsVariable("a", windowsUpTo(11), "serve", "queue"), firingsVariable("b", windowsUpTo(2), "serve", "queue")},
      1, false);
  ASSERT_EQ(model.Number_Of_Performance_Variables, 2);
  EXPECT_THAT(model.calls, ElementsAre(Pair(0, 0), Pair(1, 0)));
  EXPECT_STREQ(model.node(1).Name, "b");
  EXPECT_EQ(model.node(1).GetNumTimePoints(), 2);
}

TEST(PVListTest, AListOfMoreThanAHundredNodesGrowsAndKeepsTheOrder) {
  const std::vector<std::pair<const char*, int>> sizes = {{"a", 60}, {"b", 50}, {"c", 250}, {"d", 7}};
  std::vector<TestRewardModel::MakeNode> makers;
  for (const auto& [name, count] : sizes) {
    makers.push_back(variable(name, INTERVAL_OF_TIME, windowsUpTo(count), {}));
  }
  const TestRewardModel model(replicated("queue", 1, "serve"), std::move(makers));
  ASSERT_EQ(model.Number_Of_Performance_Variables, 367);
  int position = 0;
  for (const auto& [name, count] : sizes) {
    for (int t = 0; t < count; ++t, ++position) {
      ASSERT_EQ(model.node(position).id, position);
      ASSERT_STREQ(model.node(position).Name, name);
      ASSERT_EQ(model.node(position).Stop, t + 1.0);
    }
  }
}

TEST(PVListTest, AHundredVariablesOfOneTimePointFit) {
  for (const int count : {99, 100, 101}) {
    const TestRewardModel model(
        replicated("queue", 1, "serve"),
        std::vector(static_cast<std::size_t>(count), variable("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, {})));
    EXPECT_EQ(model.Number_Of_Performance_Variables, count);
    EXPECT_EQ(model.node(count - 1).id, count - 1);
  }
}

TEST(PVListDeathTest, AVariableWithoutNodeIsRefused) {
  EmptyRewardModel model;
  EXPECT_DEATH(model.CreatePVList(1, true), "Assertion failed: pvnode != nullptr");
}

TEST(ConsiderOnlyTest, NullTakesAllNodes) {
  TestRewardModel model(replicated("queue", 1, "serve"), {firingsVariable("a", windowsUpTo(3), "serve", "queue")});
  model.ConsiderOnly(nullptr, 0);
  EXPECT_THAT(model.RelevantNodes, ElementsAre(&model.node(0), &model.node(1), &model.node(2)));
}

TEST(ConsiderOnlyTest, ListedNodesComeInTheGivenOrderAndASecondCallAppends) {
  TestRewardModel model(replicated("queue", 1, "serve"), {firingsVariable("a", windowsUpTo(4), "serve", "queue")});
  const int first[] = {2, 0};
  const int second[] = {3};
  model.ConsiderOnly(first, 2);
  model.ConsiderOnly(second, 1);
  EXPECT_THAT(model.RelevantNodes, ElementsAre(&model.node(2), &model.node(0), &model.node(3)));
}

TEST(ConsiderOnlyTest, AnEmptyListTakesNoNode) {
  TestRewardModel model(replicated("queue", 1, "serve"), {firingsVariable("a", windowsUpTo(2), "serve", "queue")});
  const int none[] = {0};
  model.ConsiderOnly(none, 0);
  EXPECT_TRUE(model.RelevantNodes.empty());
}

// What Initialize takes from the wrapped model.

TEST(PVModelInitializeTest, TheWrappedModelsListsAndCountsAreTakenOver) {
  TestRewardModel model(replicated("queue", 3, "serve"), {});
  EXPECT_EQ(model.getActionList(), model.top().getActionList());
  EXPECT_EQ(model.ListOfActions(), model.top().getActionList());
  EXPECT_EQ(model.getGroupList(), model.top().getGroupList());
  EXPECT_EQ(model.NumActions, 3);
  EXPECT_EQ(model.NumGroups, 1);
  EXPECT_EQ(model.NumStateVariables, model.top().NumStateVariables);
  EXPECT_EQ(model.NumSharedStateVariables, 0);
  EXPECT_EQ(model.NumPVs, 0);
}

TEST(PVModelInitializeTest, TheStopTimeIsTheLargestStopAndAtLeastZero) {
  const TestRewardModel three(replicated("queue", 1, "serve"),
                              {variable("a", INTERVAL_OF_TIME, {{0.0, 5.0}, {1.0, 99.5}, {2.0, 7.0}}, {})});
  EXPECT_EQ(three.Simulation_Stop_Time, 99.5);
  const TestRewardModel negative(replicated("queue", 1, "serve"),
                                 {variable("a", INTERVAL_OF_TIME, {{-5.0, -2.0}}, {})});
  EXPECT_EQ(negative.Simulation_Stop_Time, 0.0);
}

TEST(PVModelInitializeTest, QuestionsOfAModelGoToTheWrappedModel) {
  TestRewardModel model(replicated("queue", 3, "serve"), {});
  PVModel& rewards = model;

  List<BaseModelClass> models;
  rewards.listModels("queue", &models);
  EXPECT_EQ(models.getNumItems(), 3);
  EXPECT_EQ(models.getItem(2), &model.child(2));

  List<BaseActionClass> actions;
  rewards.listActions(&actions);
  EXPECT_EQ(actions.getNumItems(), 3);
  EXPECT_EQ(actions.getItem(1), &model.actionOf(1));

  List<BaseActionClass> named;
  rewards.listActions("serve", &named);
  EXPECT_EQ(named.getNumItems(), 3);

  List<BaseGroupClass> groups;
  rewards.listGroups(&groups);
  EXPECT_EQ(groups.getNumItems(), 1);

  List<BaseStateVariableClass> variables;
  List<BaseModelClass> owners;
  rewards.listSVs("queue", "mark", &variables, &owners);
  EXPECT_EQ(variables.getNumItems(), 3);
  EXPECT_EQ(owners.getItem(1), &model.child(1));

  std::ostringstream text;
  rewards.printState(&text);
  EXPECT_EQ(text.str(), "state of top\n");
}

// The lists of actions.

/// The workers that an action's entry for one impulse of one node names.
std::vector<int> impulseWorkersOf(const BaseActionClass& action, int node, int impulse) {
  const int* const workers = action.AffectedImpulseWorkers[node][impulse];
  return {workers, workers + action.NumAffectedImpulseWorkers[node][impulse]};
}

TEST(AffectedListsTest, AnActionOfNoVariableEndsWithEmptyFrozenSetsAndIsAbsentFromTheAffectingOnes) {
  auto top = replicated("queue", 1, "serve");
  TestAction& idle = top->addAction("idle");
  const TestRewardModel model(std::move(top),
                              {markVariable<IntervalOfTimeWorker>("mark", INTERVAL_OF_TIME, {0.0, 10.0}, "queue"),
                               firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue")});
  for (int pv = 0; pv < 2; ++pv) {
    EXPECT_THAT(itemsOf(idle.AffectedRateWorkers[pv]), IsEmpty());
    EXPECT_THAT(itemsOf(idle.AffectedImpulseRewards[pv]), IsEmpty());
    EXPECT_EQ(idle.AffectedImpulseWorkers[pv], nullptr);
    EXPECT_EQ(idle.NumAffectedImpulseWorkers[pv], nullptr);
  }
  EXPECT_THAT(itemsOf(idle.AffectedNodesByRateReward), IsEmpty());
  EXPECT_THAT(itemsOf(idle.AffectedNodesByImpulseReward), IsEmpty());
  EXPECT_TRUE(idle.AffectedNodes.empty()) << "an action that affects nothing keeps the building form";
  ASSERT_EQ(model.TotalNumAffectingActions, 1);
  EXPECT_EQ(model.AffectingActions[0], &model.actionOf(0));
}

TEST(AffectedListsTest, TheMarkerAnswersWithEmptyFrozenSets) {
  TestRewardModel model(replicated("queue", 1, "serve"),
                        {markVariable<IntervalOfTimeWorker>("mark", INTERVAL_OF_TIME, {0.0, 10.0}, "queue"),
                         firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue")});
  EXPECT_THAT(itemsOf(model.ZeroImpulseAction.AffectedNodesByRateReward), IsEmpty());
  EXPECT_THAT(itemsOf(model.ZeroImpulseAction.AffectedNodesByImpulseReward), IsEmpty());
  for (int pv = 0; pv < 2; ++pv) {
    EXPECT_THAT(itemsOf(model.ZeroImpulseAction.AffectedRateWorkers[pv]), IsEmpty());
    EXPECT_THAT(itemsOf(model.ZeroImpulseAction.AffectedImpulseRewards[pv]), IsEmpty());
  }
}

TEST(AffectedListsTest, AnActionNamesTheRateWorkersWhoseModelItChanges) {
  const TestRewardModel model(replicated("queue", 3, "serve"),
                              {variable("none", INTERVAL_OF_TIME, {{0.0, 1.0}}, {}),
                               markVariable<IntervalOfTimeWorker>("mark", INTERVAL_OF_TIME, {0.0, 10.0}, "queue")});
  for (int i = 0; i < 3; ++i) {
    TestAction& action = model.actionOf(i);
    EXPECT_THAT(itemsOf(action.AffectedNodesByRateReward), ElementsAre(1));
    EXPECT_THAT(itemsOf(action.AffectedRateWorkers[0]), IsEmpty());
    EXPECT_THAT(itemsOf(action.AffectedRateWorkers[1]), ElementsAre(i));
    EXPECT_THAT(itemsOf(action.AffectedNodes), ElementsAre(1));
  }
  EXPECT_EQ(model.NumAffectingActions, 3);
  EXPECT_EQ(model.NumActionsWithImpulseAffects, 0);
  EXPECT_EQ(model.node(1).NumberOfActionDependencies, 3);
}

TEST(AffectedListsTest, AnActionThatChangesTwoVariablesOfANodeIsOneDependency) {
  auto top = replicated("queue", 1, "serve");
  TestModel& queue = *top->children[0];
  TestVariable& busy = queue.addVariable("busy");
  queue.AddAffectArc(&busy, queue.actions[0].get());
  const TestRewardModel model(
      std::move(top),
      {variable("both", INTERVAL_OF_TIME, {{0.0, 1.0}}, {.models = 1, .variables = 2}, [](TestNode& node) {
        node.AddVariableDependency("mark", "queue");
        node.AddVariableDependency("busy", "queue");
        node.makeWorker = [] { return new MarkWorker<IntervalOfTimeWorker>; };
      })});
  EXPECT_EQ(model.NumAffectingActions, 1);
  EXPECT_EQ(model.node().NumberOfActionDependencies, 1);
  EXPECT_THAT(itemsOf(model.actionOf(0).AffectedRateWorkers[0]), ElementsAre(0));
}

TEST(AffectedListsTest, AnActionNamesTheImpulseWorkersThatItsModelContains) {
  const TestRewardModel model(replicated("queue", 3, "serve"),
                              {variable("none", INTERVAL_OF_TIME, {{0.0, 1.0}}, {}),
                               variable("two", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 2}, [](TestNode& node) {
                                 node.addImpulse("serve", "queue");
                                 node.addImpulse("serve", "queue");
                               })});
  for (int i = 0; i < 3; ++i) {
    TestAction& action = model.actionOf(i);
    EXPECT_THAT(itemsOf(action.AffectedNodesByImpulseReward), ElementsAre(1));
    EXPECT_THAT(itemsOf(action.AffectedImpulseRewards[0]), IsEmpty());
    EXPECT_THAT(itemsOf(action.AffectedImpulseRewards[1]), ElementsAre(0, 1));
    EXPECT_EQ(action.AffectedImpulseWorkers[0], nullptr);
    EXPECT_THAT(impulseWorkersOf(action, 1, 0), ElementsAre(i));
    EXPECT_THAT(impulseWorkersOf(action, 1, 1), ElementsAre(i));
  }
  EXPECT_EQ(model.NumAffectingActions, 0);
  EXPECT_EQ(model.NumActionsWithImpulseAffects, 3);
}

TEST(AffectedListsTest, ImpulsesOnDifferentActionsLeaveEachOthersEntriesNull) {
  auto top = replicated("queue", 1, "serve");
  TestAction& leave = top->children[0]->addAction("leave");
  const TestRewardModel model(std::move(top),
                              {variable("two", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 2}, [](TestNode& node) {
                                node.addImpulse("serve", "queue");
                                node.addImpulse("leave", "queue");
                              })});
  EXPECT_THAT(itemsOf(model.actionOf(0).AffectedImpulseRewards[0]), ElementsAre(0));
  EXPECT_EQ(model.actionOf(0).AffectedImpulseWorkers[0][1], nullptr);
  EXPECT_EQ(model.actionOf(0).NumAffectedImpulseWorkers[0][1], 0);
  EXPECT_THAT(itemsOf(leave.AffectedImpulseRewards[0]), ElementsAre(1));
  EXPECT_EQ(leave.AffectedImpulseWorkers[0][0], nullptr);
}

TEST(AffectedListsTest, TheFirstActionOfANameIsTaken) {
  auto top = replicated("queue", 1, "serve");
  TestAction& second = top->children[0]->addAction("serve");
  const TestRewardModel model(std::move(top), {firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue")});
  EXPECT_EQ(model.actionOf(0).AffectedNodesByImpulseReward.size(), 1);
  EXPECT_EQ(second.AffectedNodesByImpulseReward.size(), 0);
}

TEST(AffectedListsTest, AnActionThatAffectsANodeBothWaysIsCountedTwiceAndStoredOnce) {
  const TestRewardModel model(replicated("queue", 2, "serve"),
                              {variable("both", INTERVAL_OF_TIME, {{0.0, 10.0}},
                                        {.impulses = 1, .models = 1, .variables = 1}, [](TestNode& node) {
                                          node.AddVariableDependency("mark", "queue");
                                          node.makeWorker = [] { return new MarkWorker<IntervalOfTimeWorker>; };
                                          node.addImpulse("serve", "queue");
                                        })});
  EXPECT_EQ(model.NumAffectingActions, 2);
  EXPECT_EQ(model.NumActionsWithImpulseAffects, 2);
  ASSERT_EQ(model.TotalNumAffectingActions, 2);
  const TestNode& node = model.node();
  ASSERT_EQ(node.NumberOfActionDependencies, 2);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(model.AffectingActions[i], &model.actionOf(i));
    EXPECT_EQ(model.ListOfAffectedLists[i], &model.actionOf(i).AffectedNodes);
    EXPECT_EQ(node.ActionDependencies[i], &model.actionOf(i));
  }
}

TEST(AffectedListsTest, AffectedNodesIsTheUnionOfBothWays) {
  const TestRewardModel model(replicated("queue", 1, "serve"),
                              {firingsVariable("a", {{0.0, 10.0}}, "serve", "queue"),
                               markVariable<IntervalOfTimeWorker>("b", INTERVAL_OF_TIME, {0.0, 10.0}, "queue"),
                               firingsVariable("c", {{0.0, 10.0}, {0.0, 20.0}}, "serve", "queue")});
  EXPECT_THAT(itemsOf(model.actionOf(0).AffectedNodes), ElementsAre(0, 1, 2, 3));
  EXPECT_THAT(itemsOf(model.actionOf(0).AffectedNodesByRateReward), ElementsAre(1));
  EXPECT_THAT(itemsOf(model.actionOf(0).AffectedNodesByImpulseReward), ElementsAre(0, 2, 3));
  for (int pv = 0; pv < 4; ++pv) {
    EXPECT_EQ(model.node(pv).NumberOfActionDependencies, 1);
    EXPECT_EQ(model.node(pv).ActionDependencies[0], &model.actionOf(0));
  }
}

TEST(AffectedListsTest, WithoutAnyDependencyThereAreNoAffectingLists) {
  const TestRewardModel model(replicated("queue", 1, "serve"), {variable("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, {})});
  EXPECT_EQ(model.AffectingActions, nullptr);
  EXPECT_EQ(model.ListOfAffectedLists, nullptr);
  EXPECT_EQ(model.TotalNumAffectingActions, 0);
  EXPECT_EQ(model.node().ActionDependencies, nullptr);
}

TEST(AffectedListsTest, RemakingTheListsChangesNothing) {
  TestRewardModel model(replicated("queue", 1, "serve"), {firingsVariable("a", {{0.0, 10.0}}, "serve", "queue")});
  model.RemakeAffectedLists();
  EXPECT_THAT(itemsOf(model.actionOf(0).AffectedNodes), ElementsAre(0));
  EXPECT_EQ(model.TotalNumAffectingActions, 1);
}

TEST(AffectedListsDeathTest, AnActionsAffectedNodesMustNotHaveBeenFilledBefore) {
  TestAction action("serve");
  action.AffectedNodes.insert(3);
  EXPECT_DEATH(PVModel::CreateTotalPVAffectsList(&action), "Assertion failed: Action->AffectedNodes\\.empty\\(\\)");
}

/// A top model that names itself, and not the instance, as the holder of each variable.
class MisnamingModel : public TestModel {
 public:
  using TestModel::TestModel;
  void listSVs(const char* modelName, const char* variableName, List<BaseStateVariableClass>* list,
               List<BaseModelClass>* models) override {
    List<BaseModelClass> holders;
    TestModel::listSVs(modelName, variableName, list, &holders);
    for (int i = 0; i < holders.getNumItems(); ++i) {
      models->append(this);
    }
  }
};

TEST(AffectedListsTest, AVariableOfAModelThatNoWorkerSeesTouchesNoWorker) {
  auto top = std::make_unique<MisnamingModel>("top");
  TestAction& serve = top->addChild("queue").addMarkAndAction("serve");
  const TestRewardModel model(std::move(top),
                              {markVariable<IntervalOfTimeWorker>("mark", INTERVAL_OF_TIME, {0.0, 1.0}, "queue")});
  EXPECT_THAT(itemsOf(serve.AffectedNodesByRateReward), ElementsAre(0));
  EXPECT_THAT(itemsOf(serve.AffectedRateWorkers[0]), IsEmpty());
}

TEST(AffectedListsDeathTest, ANodeIsInsertedOnceForEachAction) {
  auto top = std::make_unique<MisnamingModel>("top");
  TestModel& queue = top->addChild("queue");
  TestAction& serve = queue.addMarkAndAction("serve");
  TestVariable& busy = queue.addVariable("busy");
  queue.AddAffectArc(&busy, &serve);
  const auto build = [&] {
    const TestRewardModel model(
        std::move(top),
        {variable("both", INTERVAL_OF_TIME, {{0.0, 1.0}}, {.models = 1, .variables = 2}, [](TestNode& node) {
          node.AddVariableDependency("mark", "queue");
          node.AddVariableDependency("busy", "queue");
          node.makeWorker = [] { return new MarkWorker<IntervalOfTimeWorker>; };
        })});
  };
  EXPECT_DEATH(build(), "Assertion failed: Action->AffectedNodesByRateReward\\.insert\\(PVCounter\\)");
}

// The end.

TEST(PVModelDestructTest, ASecondDestructDoesNothing) {
  TestRewardModel model(replicated("queue", 2, "serve"),
                        {markVariable<IntervalOfTimeWorker>("mark", INTERVAL_OF_TIME, {0.0, 10.0}, "queue"),
                         firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue")});
  model.ConsiderOnly(nullptr, 0);
  model.Destruct();
  EXPECT_EQ(model.TheModel, nullptr);
  EXPECT_EQ(model.PerformanceVariableList, nullptr);
  EXPECT_EQ(model.Number_Of_Performance_Variables, 0);
  EXPECT_TRUE(model.RelevantNodes.empty());
  EXPECT_EQ(model.getActionList(), nullptr);
  EXPECT_EQ(model.getNumActions(), 0);
  EXPECT_EQ(model.getGroupList(), nullptr);
  EXPECT_EQ(model.getNumGroups(), 0);
  EXPECT_EQ(model.PVStateIndexLength, 0);
  model.Destruct();
}

/// A model that tells when it is deleted.
class MortalModel : public TestModel {
 public:
  explicit MortalModel(bool* isDead) : TestModel("top"), isDead_(isDead) {}
  ~MortalModel() override { *isDead_ = true; }

 private:
  bool* isDead_;
};

TEST(PVModelDestructTest, TheRewardModelDeletesTheWrappedModel) {
  bool isDead = false;
  {
    const TestRewardModel model(std::make_unique<MortalModel>(&isDead), {}, 0);
    EXPECT_FALSE(isDead);
  }
  EXPECT_TRUE(isDead);
}

TEST(PVModelDestructTest, ARewardModelThatWasNeverInitialisedReturnsItsNodesAndItsModel) {
  bool isDead = false;
  {
    class Halfway : public PVModel {
     public:
      PerformanceVariableNode* createPVNode(int, int timeIndex) override {
        return new TestNode("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, timeIndex, {.impulses = 1, .models = 1});
      }
    };
    Halfway model;
    model.TheModel = new MortalModel(&isDead);
    model.CreatePVList(2, true);
  }
  EXPECT_TRUE(isDead);
}

// The description of the variables.

/// A path for a file of the test's own, which is removed with it.
class ScratchFile {
 public:
  explicit ScratchFile(const char* name) : path_(std::filesystem::path(testing::TempDir()) / name) {}
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { std::filesystem::remove(path_); }

  [[nodiscard]] std::string path() const { return path_.string(); }
  [[nodiscard]] std::string bytes() const {
    std::ifstream file(path_, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }

 private:
  std::filesystem::path path_;
};

TEST(PVTypeFileTest, EachNodeIsDescribedWithAllTimePointsOfItsVariable) {
  const ScratchFile file("quorva_pvtypes_test.txt");
  std::ofstream(file.path()) << "an older and much longer content of the file, which is replaced\n";
  TestRewardModel model(replicated("queue", 1, "serve"),
                        {variable("load", TIMEAVE_INTERVAL_OF_TIME, {{0.0, 99.5}, {0.25, 1234567.0}}, {}),
                         variable("at end", INSTANT_OF_TIME, {{1e-7, 100.0}}, {})});
  model.WritePVTypeFile(file.path().c_str());
  const std::string load = "Name:load\nType:2\nNumTimes:2\nStart:0\nStop:99.5\nStart:0.25\nStop:1.23457e+06\n";
  EXPECT_EQ(file.bytes(),
            "Version:1\nNumPV:3\n" + load + load + "Name:at end\nType:0\nNumTimes:1\nStart:1e-07\nStop:100\n");
}

TEST(PVTypeFileTest, WithoutVariablesTheHeadIsAll) {
  const ScratchFile file("quorva_pvtypes_empty_test.txt");
  TestRewardModel model(replicated("queue", 1, "serve"), {});
  model.WritePVTypeFile(file.path().c_str());
  EXPECT_EQ(file.bytes(), "Version:1\nNumPV:0\n");
}

TEST(PVTypeFileTest, AFileThatCannotBeWrittenIsReported) {
  TestRewardModel model(replicated("queue", 1, "serve"), {});
  const std::string path = testing::TempDir() + "no/such/folder/pv.txt";
  EXPECT_EQ(support::standardErrorOf([&] { model.WritePVTypeFile(path.c_str()); }),
            "performance variables not written to \"" + path + "\"\n");
}

}  // namespace
