#include "Performance_Variables/PerformanceVariableNode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cfloat>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Performance_Variables/ActionModelPairClass.h"
#include "Performance_Variables/InstantOfTimeWorker.h"
#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/RewardKit.h"
#include "Performance_Variables/TimeAveragedIntervalOfTimeWorker.h"
#include "Performance_Variables/VarModelPairClass.h"
#include "support/CapturedOutput.h"
#include "support/FlushWatch.h"

namespace {

using support::markVariable;
using support::MarkWorker;
using support::replicated;
using support::Room;
using support::TestAction;
using support::TestImpulse;
using support::TestModel;
using support::TestNode;
using support::TestRewardModel;
using support::TestSyncAction;
using support::variable;
using support::Window;
using testing::ElementsAre;

// Declarations.

TEST(NodeDeclarationTest, TheEnumerationsHaveTheirSettledValues) {
  EXPECT_EQ(INSTANT_OF_TIME, 0);
  EXPECT_EQ(INTERVAL_OF_TIME, 1);
  EXPECT_EQ(TIMEAVE_INTERVAL_OF_TIME, 2);
  EXPECT_EQ(STEADY_STATE, 3);
  EXPECT_EQ(UNDEFINED, 4);
  EXPECT_EQ(terminating, 0);
  EXPECT_EQ(steady_state, 1);
  EXPECT_EQ(acc_later, 0);
  EXPECT_EQ(acc_now, 1);
  EXPECT_EQ(acc_done, 2);
  EXPECT_EQ(acc_ignore, 3);
}

/// A node before any declaration.
class UndeclaredNode : public PerformanceVariableNode {
 public:
  void CreateWorkerList() override {}
};

TEST(NodeDeclarationTest, ANewNodeIsTerminatingAndHasNoWindowYet) {
  const UndeclaredNode node;
  EXPECT_EQ(node.Start, -1.0);
  EXPECT_EQ(node.Stop, -1.0);
  EXPECT_EQ(node.Type, terminating);
  EXPECT_EQ(node.Accumulating, acc_later);
  EXPECT_EQ(node.TotalReward, 0.0);
  EXPECT_EQ(node.TotalRewardSqr, 0.0);
  EXPECT_EQ(node.NumberOfWorkers, 0);
  EXPECT_EQ(node.NumberOfImpulses, 0);
  EXPECT_EQ(node.NumberOfModelNames, 0);
  EXPECT_EQ(node.NumberOfVarNames, 0);
  EXPECT_EQ(node.TheModelPtr, nullptr);
  EXPECT_EQ(node.Name, nullptr);
}

TEST(NodeDeclarationTest, NodesTakeTheirNumbersInOrderOfInitialisation) {
  const int next = PerformanceVariableNode::the_id;
  const TestNode first("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {});
  const TestNode second("b", INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {});
  EXPECT_EQ(first.id, next);
  EXPECT_EQ(second.id, next + 1);
  EXPECT_EQ(PerformanceVariableNode::the_id, next + 2);
}

TEST(NodeDeclarationTest, TheTimeIndexChoosesTheWindowAndAllTimePointsAreCopied) {
  double starts[] = {0.0, 1.0, 2.5};
  double stops[] = {10.0, 20.0, 30.0};
  UndeclaredNode node;
  std::string name = "load";
  node.Initialize(name.c_str(), TIMEAVE_INTERVAL_OF_TIME, 3, starts, stops, 2, 0, 0, 0);
  name = "xxxx";
  starts[2] = stops[2] = 0.0;
  EXPECT_STREQ(node.Name, "load");
  EXPECT_EQ(node.GetRewardType(), TIMEAVE_INTERVAL_OF_TIME);
  EXPECT_EQ(node.GetNumTimePoints(), 3);
  EXPECT_EQ(node.Start, 2.5);
  EXPECT_EQ(node.Stop, 30.0);
  EXPECT_EQ(node.batchSize, 27.5);
  EXPECT_EQ(node.GetStartTime(1), 1.0);
  EXPECT_EQ(node.GetStopTime(1), 20.0);
  EXPECT_EQ(node.GetStartTime(2), 2.5);
  EXPECT_EQ(node.GetStopTime(2), 30.0);
}

TEST(NodeDeclarationTest, ZeroCountsMakeNoArrays) {
  const TestNode node("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {});
  EXPECT_EQ(node.VarNamesList, nullptr);
  EXPECT_EQ(node.ModelNamesList, nullptr);
  EXPECT_EQ(node.ImpulseNodeList, nullptr);
  EXPECT_EQ(node.ActionNamesList, nullptr);
}

TEST(NodeDeclarationTest, AVariableDependencyIsAlsoAModelDependency) {
  TestNode node("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {.models = 1, .variables = 2});
  node.AddVariableDependency("mark", "queue");
  node.AddVariableDependency("busy", "queue");
  ASSERT_EQ(node.NumberOfVarNames, 2);
  EXPECT_STREQ(node.VarNamesList[0].VarName, "mark");
  EXPECT_STREQ(node.VarNamesList[0].ModelName, "queue");
  EXPECT_STREQ(node.VarNamesList[1].VarName, "busy");
  ASSERT_EQ(node.NumberOfModelNames, 1);
  EXPECT_STREQ(node.ModelNamesList[0], "queue");
}

TEST(NodeDeclarationTest, AModelNameAlreadyListedChangesNothing) {
  TestNode node("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {.models = 2});
  EXPECT_FALSE(node.IsDependentOnModel("queue"));
  node.AddModelDependency("queue");
  node.AddModelDependency("server");
  node.AddModelDependency(std::string("queue").c_str());
  ASSERT_EQ(node.NumberOfModelNames, 2);
  EXPECT_STREQ(node.ModelNamesList[0], "queue");
  EXPECT_STREQ(node.ModelNamesList[1], "server");
  EXPECT_TRUE(node.IsDependentOnModel("server"));
}

TEST(NodeDeclarationTest, AnImpulseKeepsItsNumberAndItsLatestAction) {
  TestNode node("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {.impulses = 2});
  TestImpulse& first = node.addImpulse("serve", "queue", 2);
  TestImpulse& second = node.addImpulse("leave", "queue", 1);
  node.AddImpulse("arrive", "source", &first);
  EXPECT_EQ(node.NumberOfImpulses, 2);
  EXPECT_EQ(node.GetImpulseNumber(&first), 0);
  EXPECT_EQ(node.GetImpulseNumber(&second), 1);
  EXPECT_STREQ(node.ActionNamesList[0].ActionName, "arrive");
  EXPECT_STREQ(node.ActionNamesList[0].ModelName, "source");
  ASSERT_EQ(node.NumberOfImpulseModelNames[0], 2);
  EXPECT_STREQ(node.ImpulseModelNamesList[0][0], "queue");
  EXPECT_STREQ(node.ImpulseModelNamesList[0][1], "source");
  EXPECT_EQ(node.NumberOfImpulseModelNames[1], 1);
}

TEST(NodeDeclarationTest, AnImpulsesModelNameAlreadyListedChangesNothing) {
  TestNode node("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {.impulses = 1});
  TestImpulse& impulse = node.addImpulse("serve", "queue", 1);
  node.AddImpulseModelDependency("queue", &impulse);
  EXPECT_EQ(node.NumberOfImpulseModelNames[0], 1);
  EXPECT_TRUE(node.IsDependentOnImpulseModel("queue", 0));
  EXPECT_FALSE(node.IsDependentOnImpulseModel("source", 0));
}

TEST(NodeDeclarationTest, AnImpulseThatWasNotAddedHasNoNumber) {
  TestNode node("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {.impulses = 1});
  const TestImpulse stranger(1);
  EXPECT_EQ(node.GetImpulseNumber(&stranger), -1);
}

TEST(NodeDeclarationDeathTest, AModelDependencyOfAnUndefinedImpulseEndsTheProcessWithStatusZero) {
  TestNode node("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {.impulses = 1});
  TestImpulse stranger(1);
  EXPECT_EXIT(node.AddImpulseModelDependency("queue", &stranger), testing::ExitedWithCode(0),
              testing::Eq("Model Dependency requested on undefined impulse."
                          "  Check code generator.  Error code GP0001.\n"));
}

TEST(NodeDeclarationDeathTest, MoreDependenciesThanDeclaredAreRefused) {
  TestNode node("a", INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {.impulses = 1, .models = 1, .variables = 1});
  node.AddVariableDependency("mark", "queue");
  TestImpulse& impulse = node.addImpulse("serve", "queue", 1);
  EXPECT_DEATH(node.AddVariableDependency("busy", "queue"), "Assertion failed: NumberOfVarNames < varNameCapacity_");
  EXPECT_DEATH(node.AddModelDependency("server"), "Assertion failed: NumberOfModelNames < modelNameCapacity_");
  EXPECT_DEATH(node.addImpulse("leave", "queue"), "Assertion failed: NumberOfImpulses < impulseCapacity_");
  EXPECT_DEATH(node.AddImpulseModelDependency("server", &impulse), "Assertion failed: NumberOfImpulseModelNames");
}

// Workers of a node against a tree.

TEST(NodeWorkerTest, AVariableWithoutModelNamesHasNoWorkers) {
  const TestRewardModel model(replicated("queue", 3, "serve"), {variable("none", INTERVAL_OF_TIME, {{0.0, 10.0}}, {})});
  EXPECT_EQ(model.node().NumberOfWorkers, 0);
  EXPECT_EQ(model.node().workerListsCreated, 1);
  EXPECT_EQ(model.node().top, &model.top());
}

TEST(NodeWorkerTest, WorkersGetTheNodesWindowNumbersNameAndModelInstance) {
  const TestRewardModel model(replicated("queue", 3, "serve"),
                              {variable("first", INTERVAL_OF_TIME, {{0.0, 1.0}}, {}),
                               markVariable<IntervalOfTimeWorker>("load", INTERVAL_OF_TIME, {2.0, 8.0}, "queue")});
  const TestNode& node = model.node(1);
  ASSERT_EQ(node.NumberOfWorkers, 3);
  for (int i = 0; i < 3; ++i) {
    const PerformanceVariableWorker& worker = *node.WorkerList[i];
    EXPECT_STREQ(worker.Name, "load");
    EXPECT_EQ(worker.Number, i);
    EXPECT_EQ(worker.id, 1);
    EXPECT_EQ(worker.Start, 2.0);
    EXPECT_EQ(worker.Stop, 8.0);
    EXPECT_EQ(*worker.TheModelPtr[0], &model.child(i));
  }
}

TEST(NodeWorkerTest, TheFirstModelNameIsTheSlowestDigit) {
  auto top = std::make_unique<TestModel>("top");
  for (int i = 0; i < 2; ++i) {
    top->addChild("a").addMarkAndAction("serve");
  }
  for (int i = 0; i < 3; ++i) {
    top->addChild("b").addMarkAndAction("serve");
  }
  const TestRewardModel model(std::move(top),
                              {variable("pairs", INTERVAL_OF_TIME, {{0.0, 1.0}}, {.models = 2}, [](TestNode& node) {
                                node.AddModelDependency("a");
                                node.AddModelDependency("b");
                                node.makeWorker = [] { return new MarkWorker<IntervalOfTimeWorker>(2); };
                              })});
  const TestNode& node = model.node();
  ASSERT_EQ(node.NumberOfWorkers, 6);
  std::vector<int> first;
  std::vector<int> second;
  for (int worker = 0; worker < 6; ++worker) {
    for (int child = 0; child < 5; ++child) {
      if (*node.WorkerList[worker]->TheModelPtr[0] == &model.child(child)) {
        first.push_back(child);
      }
      if (*node.WorkerList[worker]->TheModelPtr[1] == &model.child(child)) {
        second.push_back(child - 2);
      }
    }
  }
  EXPECT_THAT(first, ElementsAre(0, 0, 0, 1, 1, 1));
  EXPECT_THAT(second, ElementsAre(0, 1, 2, 0, 1, 2));
}

TEST(NodeWorkerTest, DefineNameRenamesWorkersAndImpulseWorkers) {
  const TestRewardModel model(
      replicated("queue", 2, "serve"),
      {variable("load", INTERVAL_OF_TIME, {{0.0, 1.0}}, {.impulses = 1, .models = 1}, [](TestNode& node) {
        node.AddModelDependency("queue");
        node.makeWorker = [] { return new MarkWorker<IntervalOfTimeWorker>; };
        node.addImpulse("serve", "queue");
      })});
  TestNode& node = model.node();
  node.DefineName("renamed");
  for (int i = 0; i < 2; ++i) {
    EXPECT_STREQ(node.WorkerList[i]->Name, "renamed");
    EXPECT_EQ(node.WorkerList[i]->Number, i);
    EXPECT_STREQ(node.impulseWorker(0, i).Name, "renamed");
    EXPECT_EQ(node.impulseWorker(0, i).ImpulseNumber, 0);
    EXPECT_EQ(node.impulseWorker(0, i).WorkerNumber, i);
  }
  EXPECT_STREQ(node.Name, "load");
}

/// A worker that counts the objects of its class.
class CountedWorker : public IntervalOfTimeWorker {
 public:
  CountedWorker() : IntervalOfTimeWorker(1) { ++alive; }
  ~CountedWorker() override { --alive; }
  double Reward_Function() override { return 1.0; }

  inline static int alive = 0;
};

/// A node that makes its workers with the helper.
class FillingNode : public TestNode {
 public:
  explicit FillingNode(const char* name) : TestNode(name, INTERVAL_OF_TIME, {{0.0, 1.0}}, 0, {.models = 1}) {
    AddModelDependency("queue");
  }
  void CreateWorkerList() override { fillWorkerList<CountedWorker>(); }
};

TEST(NodeWorkerTest, TheNodeDeletesTheWorkersThatFillWorkerListMade) {
  {
    const TestRewardModel model(replicated("queue", 3, "serve"),
                                {[](int) { return std::make_unique<FillingNode>("filled"); }});
    EXPECT_EQ(CountedWorker::alive, 3);
  }
  EXPECT_EQ(CountedWorker::alive, 0);
}

/// A node that deletes the workers itself.
class DeletingNode : public FillingNode {
 public:
  using FillingNode::FillingNode;
  ~DeletingNode() override {
    for (int worker = 0; worker < NumberOfWorkers; ++worker) {
      delete WorkerList[worker];
    }
  }
};

TEST(NodeWorkerTest, WorkersThatTheDerivedClassDeletedAreNotDeletedAgain) {
  {
    const TestRewardModel model(replicated("queue", 3, "serve"),
                                {[](int) { return std::make_unique<DeletingNode>("deleting"); }});
    EXPECT_EQ(CountedWorker::alive, 3);
  }
  EXPECT_EQ(CountedWorker::alive, 0);
}

/// A node that holds its workers as members.
class HoldingNode : public FillingNode {
 public:
  using FillingNode::FillingNode;
  void CreateWorkerList() override {
    for (int worker = 0; worker < NumberOfWorkers; ++worker) {
      WorkerList[worker] = &held[worker];
    }
  }

  CountedWorker held[3];
};

TEST(NodeWorkerTest, WorkersMayBeMembersOfTheDerivedClass) {
  {
    const TestRewardModel model(replicated("queue", 3, "serve"),
                                {[](int) { return std::make_unique<HoldingNode>("holding"); }});
    EXPECT_EQ(CountedWorker::alive, 3);
  }
  EXPECT_EQ(CountedWorker::alive, 0);
}

TEST(NodeWorkerDeathTest, AWorkerListLeftEmptyIsRefused) {
  const auto build = [] {
    const TestRewardModel model(replicated("queue", 1, "serve"),
                                {variable("load", INTERVAL_OF_TIME, {{0.0, 1.0}}, {.models = 1},
                                          [](TestNode& node) { node.AddModelDependency("queue"); })});
  };
  EXPECT_DEATH(build(), "Assertion failed: WorkerList\\[worker\\] != nullptr");
}

TEST(NodeWorkerDeathTest, AModelNameWithoutInstanceEndsTheProcessWithStatusZero) {
  const auto build = [](const char* topName) {
    const TestRewardModel model(std::make_unique<TestModel>(topName),
                                {markVariable<IntervalOfTimeWorker>("load", INTERVAL_OF_TIME, {0.0, 1.0}, "ghost")});
  };
  EXPECT_EXIT(build("top"), testing::ExitedWithCode(0),
              testing::Eq("Number of ghost's was 0.  Model cannot be created.\nModel Name was: top\n."));
  EXPECT_EXIT(build(nullptr), testing::ExitedWithCode(0),
              testing::Eq("Number of ghost's was 0.  Model cannot be created.\nModel Name was: NULL\n"));
}

TEST(NodeWorkerDeathTest, ALaterModelNameWithoutInstanceEndsTheProcessToo) {
  const auto build = [] {
    const TestRewardModel model(replicated("queue", 2, "serve"),
                                {variable("load", INTERVAL_OF_TIME, {{0.0, 1.0}}, {.models = 2}, [](TestNode& node) {
                                  node.AddModelDependency("queue");
                                  node.AddModelDependency("ghost");
                                })});
  };
  EXPECT_EXIT(build(), testing::ExitedWithCode(0), "^Number of ghost's was 0\\.  Model cannot be created\\.");
}

// Impulse workers of a node against a tree.

/// The children of the top model that stand in one model slot of each worker of an impulse; -1 for none.
std::vector<int> childrenInSlot(const TestRewardModel& model, int impulse, std::size_t slot) {
  std::vector<int> found;
  for (int worker = 0; worker < model.node().NumberOfImpulseWorkers[impulse]; ++worker) {
    int match = -1;
    for (int child = 0; child < static_cast<int>(model.top().children.size()); ++child) {
      if (model.node().impulseWorker(impulse, worker).models[slot] == &model.child(child)) {
        match = child;
      }
    }
    found.push_back(match);
  }
  return found;
}

/// The same of the containing model.
std::vector<int> containingChildren(const TestRewardModel& model, int impulse) {
  std::vector<int> found;
  for (int worker = 0; worker < model.node().NumberOfImpulseWorkers[impulse]; ++worker) {
    int match = -1;
    for (int child = 0; child < static_cast<int>(model.top().children.size()); ++child) {
      if (model.node().impulseWorker(impulse, worker).ContainingModel == &model.child(child)) {
        match = child;
      }
    }
    found.push_back(match);
  }
  return found;
}

/// A tree with that many children of each name, in order, each with a mark and the action "serve".
std::unique_ptr<TestModel> treeOf(const std::vector<std::pair<const char*, int>>& names) {
  auto top = std::make_unique<TestModel>("top");
  for (const auto& [name, count] : names) {
    for (int i = 0; i < count; ++i) {
      top->addChild(name).addMarkAndAction("serve");
    }
  }
  return top;
}

/// A variable with one impulse on "serve" of the first name that depends on all the names.
TestRewardModel::MakeNode impulseOver(const std::vector<const char*>& names) {
  return variable("impulse", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 1}, [=](TestNode& node) {
    TestImpulse& impulse = node.addImpulse("serve", names.front(), static_cast<int>(names.size()));
    for (const char* const name : names) {
      node.AddImpulseModelDependency(name, &impulse);
    }
  });
}

TEST(NodeImpulseWorkerTest, EachReplicaOfTheActionsModelGetsAWorkerInABlockOfItsOwn) {
  const TestRewardModel model(replicated("train", 30, "exit"),
                              {support::firingsVariable("exits", {{0.0, 10.0}}, "exit", "train")});
  ASSERT_EQ(model.node().NumberOfImpulseWorkers[0], 30);
  ASSERT_EQ(model.node().NumberOfImpulseActions[0], 30);
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(model.node().impulseWorker(0, i).ContainingModel, &model.child(i));
    BaseActionClass& action = model.actionOf(i);
    ASSERT_EQ(action.NumAffectedImpulseWorkers[0][0], 1);
    EXPECT_EQ(action.AffectedImpulseWorkers[0][0][0], i);
  }
}

TEST(NodeImpulseWorkerTest, WorkersGetTheNodesWindowNumbersAndName) {
  const TestRewardModel model(replicated("train", 2, "exit"),
                              {variable("first", INTERVAL_OF_TIME, {{0.0, 1.0}}, {}),
                               support::firingsVariable("exits", {{2.0, 8.0}}, "exit", "train")});
  for (int i = 0; i < 2; ++i) {
    const TestImpulse& worker = model.node(1).impulseWorker(0, i);
    EXPECT_STREQ(worker.Name, "exits");
    EXPECT_EQ(worker.ImpulseNumber, 0);
    EXPECT_EQ(worker.WorkerNumber, i);
    EXPECT_EQ(worker.id, 1);
    EXPECT_EQ(worker.Start, 2.0);
    EXPECT_EQ(worker.Stop, 8.0);
  }
}

TEST(NodeImpulseWorkerTest, TheModelSlotsOfEveryBlockStartAtTheFirstInstances) {
  const TestRewardModel model(treeOf({{"a", 2}, {"b", 3}}), {impulseOver({"a", "b"})});
  ASSERT_EQ(model.node().NumberOfImpulseWorkers[0], 6);
  ASSERT_EQ(model.node().NumberOfImpulseActions[0], 2);
  EXPECT_THAT(containingChildren(model, 0), ElementsAre(0, 0, 0, 1, 1, 1));
  EXPECT_THAT(childrenInSlot(model, 0, 0), ElementsAre(0, 0, 0, 0, 0, 0));
  EXPECT_THAT(childrenInSlot(model, 0, 1), ElementsAre(2, 2, 2, 2, 2, 2));
}

TEST(NodeImpulseWorkerTest, ABlockThatStartsNoRepetitionSeesTheModelBeforeIt) {
  // The impulse reads "b", its action stands in "a", which it does not read: W = 5 * 2 and a repetition is 5 / (5 / 2).
  const TestRewardModel model(
      treeOf({{"a", 2}, {"b", 5}}),
      {variable("impulse", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 1}, [](TestNode& node) {
        node.addImpulse("serve", "b", 1);
        node.AddImpulseActionDependency("serve", "a", 0);
      })});
  ASSERT_EQ(model.node().NumberOfImpulseWorkers[0], 10);
  ASSERT_EQ(model.node().NumberOfImpulseActions[0], 2);
  EXPECT_THAT(containingChildren(model, 0), ElementsAre(0, 0, 0, 0, 0, 1, 1, 1, 1, 1));
  EXPECT_THAT(childrenInSlot(model, 0, 0), ElementsAre(2, 2, 3, 3, 4, 4, 2, 2, 3, 3));
}

TEST(NodeImpulseWorkerTest, PastTheLastInstanceAWorkerKeepsTheOneBeforeIt) {
  const TestRewardModel model(treeOf({{"a", 1}, {"b", 2}, {"c", 3}}), {impulseOver({"a", "b", "c"})});
  ASSERT_EQ(model.node().NumberOfImpulseWorkers[0], 6);
  EXPECT_THAT(childrenInSlot(model, 0, 0), ElementsAre(0, 0, 0, 0, 0, 0));
  EXPECT_THAT(childrenInSlot(model, 0, 1), ElementsAre(1, 1, 1, 2, 2, 2));
  EXPECT_THAT(childrenInSlot(model, 0, 2), ElementsAre(3, 4, 5, 5, 5, 5));
}

TEST(NodeImpulseWorkerTest, ANameOfFewerInstancesThanBlocksLeavesTheRepetitionAsItIs) {
  // Six workers in three blocks of "b", of which two each: "a", of which there are two, divides nothing.
  const TestRewardModel model(treeOf({{"b", 3}, {"a", 2}}), {impulseOver({"b", "a"})});
  ASSERT_EQ(model.node().NumberOfImpulseWorkers[0], 6);
  ASSERT_EQ(model.node().NumberOfImpulseActions[0], 3);
  EXPECT_THAT(containingChildren(model, 0), ElementsAre(0, 0, 1, 1, 2, 2));
  EXPECT_THAT(childrenInSlot(model, 0, 0), ElementsAre(0, 0, 0, 0, 0, 0));
  EXPECT_THAT(childrenInSlot(model, 0, 1), ElementsAre(3, 3, 3, 3, 3, 3));
}

TEST(NodeImpulseWorkerTest, AnImpulseWithoutModelSlotsHasAWorkerForEachInstanceOfItsActionsModel) {
  const TestRewardModel model(replicated("train", 3, "exit"),
                              {variable("exits", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 1},
                                        [](TestNode& node) { node.addImpulse("exit", "train", 0); })});
  ASSERT_EQ(model.node().NumberOfImpulseWorkers[0], 3);
  EXPECT_THAT(containingChildren(model, 0), ElementsAre(0, 1, 2));
}

TEST(NodeImpulseWorkerTest, ALaterImpulsesBlocksAreCutByTheInstancesOfAllImpulsesSoFar) {
  // The second impulse has 2 workers in 5 blocks, of which the third and the fifth hold one worker each.
  const TestRewardModel model(treeOf({{"a", 3}, {"b", 2}}),
                              {variable("both", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 2}, [](TestNode& node) {
                                node.addImpulse("serve", "a");
                                node.addImpulse("serve", "b");
                              })});
  EXPECT_THAT(containingChildren(model, 0), ElementsAre(0, 1, 2));
  EXPECT_THAT(containingChildren(model, 1), ElementsAre(2, 4));
  EXPECT_EQ(model.actionOf(3).NumAffectedImpulseWorkers[0][1], 0);
  ASSERT_EQ(model.actionOf(4).NumAffectedImpulseWorkers[0][1], 1);
  EXPECT_EQ(model.actionOf(4).AffectedImpulseWorkers[0][1][0], 1);
}

TEST(NodeImpulseWorkerTest, TwoImpulsesOnOneModelShareItsBlocks) {
  const TestRewardModel model(treeOf({{"a", 3}}),
                              {variable("both", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 2}, [](TestNode& node) {
                                node.addImpulse("serve", "a");
                                node.addImpulse("serve", "a");
                              })});
  EXPECT_THAT(containingChildren(model, 0), ElementsAre(0, 1, 2));
  EXPECT_THAT(containingChildren(model, 1), ElementsAre(0, 1, 2));
  EXPECT_THAT(support::itemsOf(model.actionOf(1).AffectedImpulseRewards[0]), ElementsAre(0, 1));
}

TEST(NodeImpulseWorkerTest, AnImpulseModelWithoutInstanceIsNoError) {
  TestRewardModel model(replicated("train", 1, "exit"),
                        {support::firingsVariable("ghosts", {{0.0, 10.0}}, "exit", "ghost")});
  EXPECT_EQ(model.node().NumberOfImpulseWorkers[0], 0);
  model.ConsiderOnly(nullptr, 0);
  model.step(model.actionOf(0), 1.0);
  model.endBatch();
  EXPECT_EQ(model.node().TotalReward, 0.0);
}

TEST(NodeImpulseWorkerTest, TheNumberOfWorkersIsToldUnderTheDebugLevel) {
  const support::DebugLevelGuard level(1);
  const std::string text = support::standardOutputOf([] {
    const TestRewardModel model(treeOf({{"a", 2}, {"b", 3}}), {impulseOver({"a", "b"})});
  });
  EXPECT_THAT(text, testing::HasSubstr("There are 6 workers for Impulse : 0\n"));
  EXPECT_THAT(text, testing::HasSubstr("Number Of Actions with affects is: 2 , NumActions is: 5\n"));
  EXPECT_THAT(
      support::linesHeldBack(std::cout,
                             [] {
                               const TestRewardModel model(treeOf({{"a", 2}, {"b", 3}}), {impulseOver({"a", "b"})});
                             }),
      testing::IsEmpty());
}

TEST(NodeImpulseWorkerDeathTest, AnActionThatItsModelLacksIsReported) {
  const auto build = [] {
    const TestRewardModel model(replicated("train", 1, "exit"),
                                {support::firingsVariable("exits", {{0.0, 10.0}}, "leave", "train")});
  };
  EXPECT_EXIT(build(), testing::ExitedWithCode(1),
              testing::Eq("performance variable \"exits\": model \"train\" has no action \"leave\" for its impulse "
                          "reward\n"));
}

/// The rate rewards of all nodes are made ahead of any impulse, whatever the order of the nodes.
TEST(NodeImpulseWorkerDeathTest, AFaultOfARateRewardIsReportedBeforeOneOfAnImpulse) {
  const auto build = [] {
    const TestRewardModel model(replicated("train", 1, "exit"),
                                {support::firingsVariable("exits", {{0.0, 10.0}}, "leave", "train"),
                                 markVariable<IntervalOfTimeWorker>("load", INTERVAL_OF_TIME, {0.0, 1.0}, "ghost")});
  };
  EXPECT_EXIT(build(), testing::ExitedWithCode(0), "^Number of ghost's was 0\\.  Model cannot be created\\.");
}

// The arithmetic of accumulation.

/// A reward model over queues, each with a mark and an action "serve" that adds 1 to it.
class NodeArithmeticTest : public testing::Test {
 protected:
  void build(int queues, std::vector<TestRewardModel::MakeNode> variables) {
    model.emplace(replicated("queue", queues, "serve"), std::move(variables));
    model->ConsiderOnly(nullptr, 0);
  }
  template <class Kind>
  void buildMark(int queues, RewardType type, Window window) {
    build(queues, {markVariable<Kind>("mark", type, window, "queue")});
  }
  void fire(int queue, double time) { model->step(model->actionOf(queue), time); }
  TestNode& node(int position = 0) { return model->node(position); }

  std::optional<TestRewardModel> model;
};

TEST_F(NodeArithmeticTest, AnIntervalRewardIsTheIntegralOfTheRateOverTheWindow) {
  buildMark<IntervalOfTimeWorker>(1, INTERVAL_OF_TIME, {0.0, 10.0});
  fire(0, 2.0);
  EXPECT_EQ(node().TotalReward, 0.0);  // mark 0 up to 2
  fire(0, 5.0);
  EXPECT_EQ(node().TotalReward, 3.0);  // mark 1 from 2 to 5
  EXPECT_EQ(node().Accumulating, acc_now);
  fire(0, 12.0);
  EXPECT_EQ(node().TotalReward, 13.0);  // mark 2 from 5 to 10
  EXPECT_EQ(node().TotalRewardSqr, 0.0 + 9.0 + 100.0);
  EXPECT_EQ(node().Accumulating, acc_done);
}

TEST_F(NodeArithmeticTest, ATimeAveragedRewardIsTheIntegralOverTheWindowsLength) {
  buildMark<TimeAveragedIntervalOfTimeWorker>(1, TIMEAVE_INTERVAL_OF_TIME, {2.0, 10.0});
  fire(0, 2.0);
  fire(0, 5.0);
  model->endBatch();
  EXPECT_EQ(node().TotalReward, (3.0 + 10.0) / 8.0);
  EXPECT_EQ(node().TotalRewardSqr, (9.0 + 100.0) / 8.0);
  EXPECT_EQ(node().Accumulating, acc_done);
}

TEST_F(NodeArithmeticTest, AnInstantRewardIsTakenOnceAtTheClosingStep) {
  buildMark<InstantOfTimeWorker>(1, INSTANT_OF_TIME, {10.0, 10.0});
  fire(0, 2.0);
  fire(0, 5.0);
  EXPECT_EQ(node().TotalReward, 0.0);
  EXPECT_EQ(node().Accumulating, acc_later);
  fire(0, 12.0);
  EXPECT_EQ(node().TotalReward, 2.0);
  EXPECT_EQ(node().TotalRewardSqr, 4.0);
  EXPECT_EQ(node().Accumulating, acc_done);
}

TEST_F(NodeArithmeticTest, StepsBeforeTheClosingOneLeaveAnInstantNodesTotalsAtZero) {
  buildMark<InstantOfTimeWorker>(1, INSTANT_OF_TIME, {0.0, 10.0});
  fire(0, 2.0);
  fire(0, 5.0);
  EXPECT_EQ(node().Accumulating, acc_now);
  EXPECT_EQ(node().TotalReward, 0.0);
  EXPECT_EQ(node().TotalRewardSqr, 0.0);
}

TEST_F(NodeArithmeticTest, AFiringAtExactlyTheInstantComesBeforeTheValueIsTaken) {
  buildMark<InstantOfTimeWorker>(1, INSTANT_OF_TIME, {10.0, 10.0});
  fire(0, 10.0);
  EXPECT_EQ(node().Accumulating, acc_now);
  fire(0, 10.0);
  EXPECT_EQ(node().TotalReward, 0.0);
  model->endBatch();
  EXPECT_EQ(node().TotalReward, 2.0);
}

TEST_F(NodeArithmeticTest, AnInstantRewardSquaresTheSumOverTheWorkers) {
  buildMark<InstantOfTimeWorker>(3, INSTANT_OF_TIME, {10.0, 10.0});
  fire(0, 1.0);
  fire(2, 2.0);
  fire(2, 3.0);
  model->endBatch();
  EXPECT_EQ(node().TotalReward, 3.0);
  EXPECT_EQ(node().TotalRewardSqr, 9.0);
}

TEST_F(NodeArithmeticTest, AnIntervalRewardSquaresTheSumOverTheWorkersInEachStep) {
  buildMark<IntervalOfTimeWorker>(2, INTERVAL_OF_TIME, {0.0, 10.0});
  fire(0, 2.0);
  fire(1, 4.0);
  model->endBatch();
  EXPECT_EQ(node().TotalReward, 2.0 + 12.0);
  EXPECT_EQ(node().TotalRewardSqr, 4.0 + 144.0);
}

TEST_F(NodeArithmeticTest, TheFractionIsReadFromTheFirstWorkerAlone) {
  buildMark<IntervalOfTimeWorker>(2, INTERVAL_OF_TIME, {0.0, 10.0});
  node().WorkerList[0]->RewardFraction = 0.5;
  node().WorkerList[1]->RewardFraction = 100.0;
  fire(1, 0.0);
  model->endBatch();
  EXPECT_EQ(node().TotalReward, 5.0);
  EXPECT_EQ(node().TotalRewardSqr, 50.0);
}

TEST_F(NodeArithmeticTest, OnlyInstantOfTimeIsTreatedApart) {
  for (const RewardType type : {INTERVAL_OF_TIME, TIMEAVE_INTERVAL_OF_TIME, STEADY_STATE, UNDEFINED}) {
    buildMark<IntervalOfTimeWorker>(1, type, {0.0, 10.0});
    fire(0, 4.0);
    fire(0, 6.0);
    EXPECT_EQ(node().TotalReward, 2.0) << type;
  }
}

TEST_F(NodeArithmeticTest, ANodeBeforeItsWindowStaysThereAndItsWorkersAreNotCalled) {
  buildMark<IntervalOfTimeWorker>(1, INTERVAL_OF_TIME, {6.0, 10.0});
  model->actionOf(0).step = 5;
  fire(0, 1.0);
  fire(0, 5.9);
  EXPECT_EQ(node().Accumulating, acc_later);
  EXPECT_EQ(node().TotalReward, 0.0);
  EXPECT_EQ(static_cast<MarkWorker<IntervalOfTimeWorker>&>(*node().WorkerList[0]).evaluations, 0);
  fire(0, 8.0);  // mark 10 from 6 to 8
  EXPECT_EQ(node().Accumulating, acc_now);
  EXPECT_EQ(node().TotalReward, 20.0);
}

TEST_F(NodeArithmeticTest, AStepAtExactlyStartOpensTheNode) {
  buildMark<IntervalOfTimeWorker>(1, INTERVAL_OF_TIME, {6.0, 10.0});
  fire(0, 6.0);
  EXPECT_EQ(node().Accumulating, acc_now);
}

TEST_F(NodeArithmeticTest, AStepAtExactlyStopLeavesTheNodeOpen) {
  buildMark<IntervalOfTimeWorker>(1, INTERVAL_OF_TIME, {0.0, 10.0});
  fire(0, 10.0);
  EXPECT_EQ(node().Accumulating, acc_now);
  fire(0, 10.0);
  EXPECT_EQ(node().Accumulating, acc_now);
  fire(0, 10.5);
  EXPECT_EQ(node().Accumulating, acc_done);
}

TEST_F(NodeArithmeticTest, AClosedNodeTakesNoMoreSteps) {
  buildMark<IntervalOfTimeWorker>(1, INTERVAL_OF_TIME, {0.0, 10.0});
  fire(0, 2.0);
  fire(0, 11.0);
  ASSERT_EQ(node().Accumulating, acc_done);
  const double total = node().TotalReward;
  fire(0, 12.0);
  model->EndAccumulate(20.0);
  EXPECT_EQ(node().TotalReward, total);
}

TEST_F(NodeArithmeticTest, TheEndOfABatchClosesANodeWhoseStartLiesPastIt) {
  buildMark<IntervalOfTimeWorker>(1, INTERVAL_OF_TIME, {10.25, 10.5});
  fire(0, 2.0);
  model->EndAccumulate(10.0);
  EXPECT_EQ(node().Accumulating, acc_done);
  EXPECT_EQ(node().TotalReward, 0.0);
}

TEST_F(NodeArithmeticTest, TheEndOfABatchLeavesANodeOpenWhoseStopIsNotExceeded) {
  buildMark<IntervalOfTimeWorker>(1, INTERVAL_OF_TIME, {0.0, 11.0});
  fire(0, 2.0);
  model->EndAccumulate(10.0);
  EXPECT_EQ(node().Accumulating, acc_now);
  EXPECT_EQ(node().TotalReward, 8.0);
}

TEST_F(NodeArithmeticTest, ANodeWithoutWorkersAddsNoRateTerm) {
  build(1, {variable("none", INSTANT_OF_TIME, {{0.0, 10.0}}, {}),
            variable("nothing", INTERVAL_OF_TIME, {{0.0, 10.0}}, {})});
  fire(0, 2.0);
  model->endBatch();
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(node(i).Accumulating, acc_done);
    EXPECT_EQ(node(i).TotalReward, 0.0);
    EXPECT_EQ(node(i).TotalRewardSqr, 0.0);
    EXPECT_EQ(node(i).TotalImpulse, 0.0);
  }
}

TEST_F(NodeArithmeticTest, ANodeWithoutImpulsesHasNoImpulseShare) {
  buildMark<IntervalOfTimeWorker>(1, INTERVAL_OF_TIME, {0.0, 10.0});
  node().TotalImpulse = 9.0;
  fire(0, 4.0);
  model->endBatch();
  EXPECT_EQ(node().TotalReward, 6.0);
  EXPECT_EQ(node().TotalImpulse, 0.0);
  EXPECT_EQ(node().TotalImpulseSqr, 0.0);
}

// Impulses.

TEST_F(NodeArithmeticTest, AFiringInTheWindowCountsThoughTheNextEventIsPastIt) {
  build(1, {support::firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue")});
  fire(0, 9.0);
  EXPECT_EQ(node().TotalReward, 0.0);
  fire(0, 25.0);
  EXPECT_EQ(node().Accumulating, acc_done);
  EXPECT_EQ(node().TotalReward, 1.0);
  EXPECT_EQ(node().TotalImpulse, 1.0);
}

TEST_F(NodeArithmeticTest, TheLastFiringOfABatchIsCountedAtItsEnd) {
  build(1, {support::firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue")});
  fire(0, 4.0);
  fire(0, 10.0);
  model->endBatch();
  EXPECT_EQ(node().TotalReward, 2.0);
}

TEST_F(NodeArithmeticTest, AFiringBeforeTheWindowAddsNothingThoughItsStepIsInside) {
  build(1, {support::firingsVariable("firings", {{5.0, 10.0}}, "serve", "queue")});
  fire(0, 4.0);
  fire(0, 6.0);
  EXPECT_EQ(node().Accumulating, acc_now);
  EXPECT_EQ(node().impulseWorker(0, 0).Impulse, 0.0);
  model->endBatch();
  EXPECT_EQ(node().TotalReward, 1.0);
}

TEST_F(NodeArithmeticTest, BeforeTheFirstFiringNoImpulseIsTouched) {
  build(1, {support::firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue")});
  model->Accumulate(3.0);
  model->endBatch();
  EXPECT_EQ(node().TotalReward, 0.0);
}

TEST_F(NodeArithmeticTest, OnlyTheWorkersOfTheFiredActionEarnItsImpulse) {
  build(3, {support::firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue")});
  fire(1, 1.0);
  fire(1, 2.0);
  fire(2, 3.0);
  model->endBatch();
  EXPECT_EQ(node().impulseWorker(0, 0).Impulse, 0.0);
  EXPECT_EQ(node().impulseWorker(0, 1).Impulse, 2.0);
  EXPECT_EQ(node().impulseWorker(0, 2).Impulse, 1.0);
  EXPECT_EQ(node().TotalReward, 3.0);
}

TEST_F(NodeArithmeticTest, TheSecondMomentSumsTheSquaresOfTheImpulseWorkers) {
  build(3, {support::firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue")});
  fire(1, 1.0);
  fire(1, 2.0);
  fire(2, 3.0);
  model->endBatch();
  EXPECT_EQ(node().TotalRewardSqr, 4.0 + 1.0);
  EXPECT_EQ(node().TotalImpulseSqr, 5.0);
}

TEST_F(NodeArithmeticTest, RateAndImpulseSharesAdd) {
  build(1, {variable("both", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 1, .models = 1}, [](TestNode& node) {
          node.AddModelDependency("queue");
          node.makeWorker = [] { return new MarkWorker<IntervalOfTimeWorker>; };
          node.addImpulse("serve", "queue", 1, false, [](const TestImpulse&, double) { return 100.0; });
        })});
  fire(0, 4.0);
  model->endBatch();
  EXPECT_EQ(node().TotalReward, 6.0 + 100.0);
  EXPECT_EQ(node().TotalRewardSqr, 36.0 + 10000.0);
}

TEST_F(NodeArithmeticTest, OnlyTheEndOfABatchAveragesATimeAveragedImpulse) {
  build(1, {support::firingsVariable("byTheBatch", {{0.0, 10.0}}, "serve", "queue", true),
            support::firingsVariable("byAStep", {{0.0, 5.0}}, "serve", "queue", true)});
  fire(0, 1.0);
  fire(0, 4.0);
  fire(0, 8.0);  // closes the second node
  model->endBatch();
  EXPECT_EQ(node(0).TotalReward, 3.0 / 10.0);
  EXPECT_EQ(node(1).TotalReward, 2.0);
}

TEST_F(NodeArithmeticTest, TheEndOfABatchAveragesEveryWorkerOfEveryImpulse) {
  build(2, {variable("both", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 2}, [](TestNode& node) {
          node.addImpulse("serve", "queue", 1, true);
          node.addImpulse("serve", "queue", 1, true, [](const TestImpulse&, double) { return 5.0; });
        })});
  fire(1, 4.0);
  model->endBatch();
  EXPECT_EQ(node().impulseWorker(0, 0).Impulse, 0.0);
  EXPECT_EQ(node().impulseWorker(0, 1).Impulse, 0.1);
  EXPECT_EQ(node().impulseWorker(1, 1).Impulse, 0.5);
}

TEST_F(NodeArithmeticTest, EachTimePointOfAVariableCountsInItsOwnWindow) {
  build(1, {support::firingsVariable("firings", {{0.0, 3.0}, {2.0, 6.0}, {0.0, 10.0}}, "serve", "queue")});
  for (const double time : {1.0, 3.0, 5.0, 9.0}) {
    fire(0, time);
  }
  model->endBatch();
  EXPECT_EQ(node(0).TotalReward, 2.0);
  EXPECT_EQ(node(1).TotalReward, 2.0);
  EXPECT_EQ(node(2).TotalReward, 4.0);
}

// Sync actions.

/// One queue whose "serve" carries an impulse, and a sync action of the top model that superposes it.
class NodeSyncTest : public testing::Test {
 protected:
  void build(TestRewardModel::MakeNode variable) {
    auto top = replicated("queue", 1, "serve");
    BaseActionClass* const serve = top->children[0]->actions[0].get();
    sync = &top->addAction<TestSyncAction>("sync", std::vector<BaseActionClass*>{serve, &unlisted});
    top->children[0]->mark().value = 4;
    model.emplace(std::move(top), std::vector{std::move(variable)});
    model->ConsiderOnly(nullptr, 0);
  }

  TestAction unlisted{"unlisted"};  // superposed, yet no action of the model's list
  TestSyncAction* sync = nullptr;
  std::optional<TestRewardModel> model;
};

TEST_F(NodeSyncTest, AFiringOfASyncActionEarnsTheImpulsesOfTheActionsThatItSuperposes) {
  build(support::firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue"));
  model->step(*sync, 2.0);
  model->step(*sync, 5.0);
  model->endBatch();
  EXPECT_EQ(model->node().TotalReward, 2.0);
}

TEST_F(NodeSyncTest, ItsRateRewardIsCountedOnceMoreForEachSuperposedAction) {
  build(variable("both", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 1, .models = 1}, [](TestNode& node) {
    node.AddModelDependency("queue");
    node.makeWorker = [] { return new MarkWorker<IntervalOfTimeWorker>; };
    node.addImpulse("serve", "queue");
  }));
  model->step(*sync, 2.0);  // mark 4 up to 2, with no action before: 8
  model->endBatch();        // mark 4 from 2 to 10, three times: 96; one impulse
  EXPECT_EQ(model->node().TotalReward, 8.0 + 3.0 * 32.0 + 1.0);
  EXPECT_EQ(model->node().TotalRewardSqr, 64.0 + 3.0 * 1024.0 + 1.0);
}

TEST_F(NodeSyncTest, ASyncActionWithoutAnyImpulseCountsTheRateOnce) {
  build(markVariable<IntervalOfTimeWorker>("mark", INTERVAL_OF_TIME, {0.0, 10.0}, "queue"));
  model->step(*sync, 2.0);
  model->endBatch();
  EXPECT_EQ(model->node().TotalReward, 40.0);
}

TEST_F(NodeSyncTest, SuperposedActionsHaveFrozenImpulseSetsThoughTheModelDoesNotListThem) {
  build(support::firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue"));
  EXPECT_EQ(unlisted.AffectedNodesByImpulseReward.size(), 0);
  ASSERT_TRUE(unlisted.IsPVImpulseDSAllocated());
  EXPECT_EQ(unlisted.AffectedImpulseRewards[0].size(), 0);
  EXPECT_FALSE(unlisted.IsPVRateDSAllocated());
}

TEST_F(NodeSyncTest, ANestedSyncActionIsDescendedInto) {
  auto top = replicated("queue", 1, "serve");
  BaseActionClass* const serve = top->children[0]->actions[0].get();
  TestSyncAction inner("inner", {serve});
  TestSyncAction& outer = top->addAction<TestSyncAction>("outer", std::vector<BaseActionClass*>{&inner});
  TestRewardModel nested(std::move(top), {support::firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue")});
  nested.ConsiderOnly(nullptr, 0);
  nested.step(outer, 2.0);
  nested.endBatch();
  EXPECT_EQ(nested.node().TotalReward, 1.0);
}

TEST_F(NodeSyncTest, TheCurrentRewardDoesNotDescendIntoSuperposedActions) {
  build(support::firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue"));
  model->node().CurrentReward(sync);
  EXPECT_EQ(model->node().TotalImpulse, 0.0);
  model->node().CurrentReward(&model->actionOf(0));
  EXPECT_EQ(model->node().TotalImpulse, 1.0);
}

// The reward of the present state.

TEST_F(NodeArithmeticTest, TheCurrentRewardIsThatOfThePresentStateWhateverWasAccumulated) {
  buildMark<IntervalOfTimeWorker>(2, INTERVAL_OF_TIME, {0.0, 10.0});
  fire(0, 2.0);
  fire(1, 3.0);
  fire(1, 4.0);
  node().CurrentReward(&model->ZeroImpulseAction);
  EXPECT_EQ(node().TotalReward, 3.0);
  EXPECT_EQ(node().TotalRewardSqr, 1.0 + 4.0);
  EXPECT_EQ(node().TotalImpulse, 0.0);
}

TEST_F(NodeArithmeticTest, TheCurrentRewardTakesTheImpulsesOfTheGivenAction) {
  build(2, {variable("both", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 1}, [](TestNode& node) {
          node.addImpulse("serve", "queue", 1, false, [](const TestImpulse&, double time) { return time + 3.0; });
        })});
  node().impulseWorker(0, 1).Impulse = 50.0;
  node().impulseWorker(0, 1).ImpulseSqr = 9.0;
  node().CurrentReward(&model->actionOf(1));
  EXPECT_EQ(node().TotalReward, 0.0);
  EXPECT_EQ(node().TotalImpulse, 3.0);
  EXPECT_EQ(node().TotalImpulseSqr, 9.0);
}

// Reset.

TEST_F(NodeArithmeticTest, ResetClearsTotalsWorkersAndImpulseWorkers) {
  build(1, {variable("both", INTERVAL_OF_TIME, {{0.0, 10.0}}, {.impulses = 1, .models = 1}, [](TestNode& node) {
          node.AddModelDependency("queue");
          node.makeWorker = [] { return new MarkWorker<IntervalOfTimeWorker>; };
          node.addImpulse("serve", "queue");
        })});
  fire(0, 4.0);
  model->endBatch();
  node().Reset();
  EXPECT_EQ(node().Accumulating, acc_later);
  EXPECT_EQ(node().TotalReward, 0.0);
  EXPECT_EQ(node().TotalRewardSqr, 0.0);
  EXPECT_EQ(node().TotalImpulse, 0.0);
  EXPECT_EQ(node().TotalImpulseSqr, 0.0);
  EXPECT_EQ(node().WorkerList[0]->Reward, 0.0);
  EXPECT_EQ(node().impulseWorker(0, 0).Impulse, 0.0);
  EXPECT_EQ(node().Start, 0.0);
  EXPECT_EQ(node().Stop, 10.0);
}

TEST_F(NodeArithmeticTest, ResetSlidesTheWindowOfASteadyStateNodeByItsLength) {
  buildMark<IntervalOfTimeWorker>(1, STEADY_STATE, {5.0, 15.0});
  node().Type = steady_state;
  node().Reset();
  EXPECT_EQ(node().Start, 15.0);
  EXPECT_EQ(node().Stop, 25.0);
  node().Reset();
  EXPECT_EQ(node().Start, 25.0);
  EXPECT_EQ(node().Stop, 35.0);
}

TEST_F(NodeArithmeticTest, AStepPastStopClosesASteadyStateBatchOnItsOwnWindow) {
  buildMark<TimeAveragedIntervalOfTimeWorker>(1, STEADY_STATE, {0.0, 10.0});
  node().Type = steady_state;
  fire(0, 4.0);
  node().Accumulate(node().Stop + 1.0, BaseModelClass::LastActionTime, model->LastAction);
  EXPECT_EQ(node().Accumulating, acc_done);
  EXPECT_EQ(node().TotalReward, 0.1 * 6.0);
}

// Retiring actions.

TEST_F(NodeArithmeticTest, AnActionIsRetiredWhenAllItsNodesHaveBeenCollected) {
  build(1, {support::firingsVariable("a", {{0.0, 10.0}}, "serve", "queue"),
            support::firingsVariable("b", {{0.0, 10.0}}, "serve", "queue")});
  BaseActionClass& serve = model->actionOf(0);
  ASSERT_EQ(serve.AffectedNodes.size(), 2);
  node(0).UpdateDependencies();
  EXPECT_EQ(serve.TotalNumCollected, 1);
  EXPECT_EQ(serve.AffectedNodes.size(), 2);
  node(1).UpdateDependencies();
  EXPECT_EQ(serve.TotalNumCollected, 2);
  EXPECT_EQ(serve.AffectedNodes.size(), 0);
}

TEST_F(NodeArithmeticTest, ASteadyStateNodeRetiresNoAction) {
  build(1, {support::firingsVariable("a", {{0.0, 10.0}}, "serve", "queue")});
  node().Type = steady_state;
  node().UpdateDependencies();
  EXPECT_EQ(model->actionOf(0).TotalNumCollected, 0);
  EXPECT_EQ(model->actionOf(0).AffectedNodes.size(), 1);
}

TEST_F(NodeArithmeticTest, AnActionAffectsANodeByItsImpulseOrBySuperposition) {
  build(2, {support::firingsVariable("a", {{0.0, 10.0}}, "serve", "queue"),
            markVariable<IntervalOfTimeWorker>("b", INTERVAL_OF_TIME, {0.0, 10.0}, "queue")});
  EXPECT_TRUE(node(0).ImpulseAffectedBy(&model->actionOf(1)));
  EXPECT_FALSE(node(1).ImpulseAffectedBy(&model->actionOf(1)));
  EXPECT_FALSE(node(0).ImpulseAffectedBy(&model->ZeroImpulseAction));
}

}  // namespace
