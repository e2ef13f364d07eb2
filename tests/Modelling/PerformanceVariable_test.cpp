#include "Modelling/PerformanceVariable.h"

#include <gtest/gtest.h>

#include <span>
#include <string>

#include "Modelling/Modelling.h"

// Variables accumulated by hand: the test moves the time and the marks, and the sums are worked out beside it.

namespace {

using namespace modelling;
using ::testing::ExitedWithCode;

class Machine : public AtomicModel {
 public:
  Machine() : AtomicModel("machine") {
    fill = &activity("fill").deterministic(1).fires({q}, [this] { ++q.Mark(); });
    empty = &activity("empty").deterministic(1).fires({q}, [this] { q.Mark() = 0; });
  }
  Variable<Place> q{*this, "q"};
  Activity* fill = nullptr;
  Activity* empty = nullptr;
};

class Crew : public AtomicModel {
 public:
  Crew() : AtomicModel("crew") {
    activity("rest").deterministic(1).fires({hands}, [this] { ++hands.Mark(); });
  }
  Variable<Place> hands{*this, "hands", 2};
};

/// A reward model over two machines and a crew, and a clock.
class Bench {
 public:
  explicit Bench(const RewardModel::Describe& describe)
      : rewards_(
            "bench",
            [&describe](RewardModel& rewards) {
              rewards.model(join("top", {replicate("fleet", 2, child<Machine>("machine")), child<Crew>("crew")}));
              describe(rewards);
            },
            true) {
    rewards_.ConsiderOnly(nullptr, 0);
    rewards_.PVReset();
  }

  Machine& machine(int i) { return *static_cast<Machine*>(rewards_.TheModel->GetChild(0)->GetChild(i)); }

  void fireAt(double time, Activity* activity) {
    rewards_.Accumulate(time);
    rewards_.FireAction(activity, time);
  }
  void endAt(double time) { rewards_.EndAccumulate(time); }
  [[nodiscard]] double total(int variable) const { return rewards_.PerformanceVariableList[variable]->TotalReward; }
  [[nodiscard]] int variables() const { return rewards_.Number_Of_Performance_Variables; }
  RewardModel& rewards() { return rewards_; }

 private:
  RewardModel rewards_;
};

/// Machine 0 holds 1 from time 1 on, 2 from 3 on and none from 6 on; machine 1 holds 1 from 4 on. The batch ends at 10.
void runBatch(Bench& bench) {
  bench.fireAt(1.0, bench.machine(0).fill);
  bench.fireAt(3.0, bench.machine(0).fill);
  bench.fireAt(4.0, bench.machine(1).fill);
  bench.fireAt(6.0, bench.machine(0).empty);
  bench.endAt(10.0);
}

int marks(Machine& machine) {
  return machine.q.Mark();
}

TEST(PerformanceVariableTest, RatesOfEveryKindAddTheInstancesOfAModel) {
  Bench bench([](RewardModel& rewards) {
    const auto q = [](Machine& machine) { return marks(machine); };
    rewards.instantOfTime("at", {2.0, 5.0, 10.0}).rate("machine", q);
    rewards.intervalOfTime("over", 0.0, 10.0).rate("machine", q);
    rewards.timeAveraged("mean", {0.0, 2.0}, {10.0, 7.0}).rate("machine", q);
  });
  runBatch(bench);
  ASSERT_EQ(bench.variables(), 6);
  EXPECT_EQ(bench.total(0), 1.0);
  EXPECT_EQ(bench.total(1), 3.0);
  EXPECT_EQ(bench.total(2), 1.0);
  // Machine 0: 2 * 1 + 3 * 2; machine 1: 6 * 1.
  EXPECT_DOUBLE_EQ(bench.total(3), 14.0);
  EXPECT_DOUBLE_EQ(bench.total(4), 1.4);
  // From 2 to 7: machine 0 has 1 * 1 + 3 * 2, machine 1 has 3 * 1.
  EXPECT_DOUBLE_EQ(bench.total(5), 10.0 / 5.0);
}

TEST(PerformanceVariableTest, ARateOfSeveralModelsAddsAllCombinations) {
  Bench bench([](RewardModel& rewards) {
    rewards.instantOfTime("product", 5.0).rate({"machine", "crew"}, [](Machine& machine, Crew& crew) {
      return machine.q.Mark() * crew.hands.Mark();
    });
  });
  runBatch(bench);
  EXPECT_EQ(bench.total(0), 6.0);
}

TEST(PerformanceVariableTest, ARateOfAllSeesTheInstancesAtOnce) {
  Bench bench([](RewardModel& rewards) {
    rewards.intervalOfTime("bothBusy", 0.0, 10.0).rateOfAll<Machine>("machine", [](std::span<Machine* const> all) {
      return marks(*all[0]) > 0 && marks(*all[1]) > 0;
    });
  });
  runBatch(bench);
  EXPECT_DOUBLE_EQ(bench.total(0), 2.0);
}

TEST(PerformanceVariableTest, ImpulsesAreNumbersOrFunctionsOfTheModelThatFired) {
  Bench bench([](RewardModel& rewards) {
    rewards.intervalOfTime("fills", 0.0, 10.0).impulse("fill", "machine");
    rewards.intervalOfTime("price", 2.0, 10.0).impulse("fill", "machine", 2.5);
    rewards.intervalOfTime("after", 0.0, 10.0).impulse("fill", "machine", [](Machine& machine) {
      return marks(machine);
    });
    rewards.intervalOfTime("two", 0.0, 10.0).impulse("fill", "machine").impulse("empty", "machine", [] {
      return 100.0;
    });
    rewards.intervalOfTime("mixed", 0.0, 10.0)
        .rate("machine", [](Machine& machine) { return marks(machine); })
        .impulse("empty", "machine", -4.0);
  });
  runBatch(bench);
  EXPECT_EQ(bench.total(0), 3.0);
  EXPECT_EQ(bench.total(1), 5.0);
  EXPECT_EQ(bench.total(2), 1.0 + 2.0 + 1.0);
  EXPECT_EQ(bench.total(3), 103.0);
  EXPECT_DOUBLE_EQ(bench.total(4), 10.0);
}

// The engine's own impulse divides only a window that the end of the batch closes; the kit's divides any.
TEST(PerformanceVariableTest, ATimeAverageDividesImpulsesWheneverTheWindowCloses) {
  Bench bench([](RewardModel& rewards) {
    rewards.timeAveraged("early", 0.0, 5.0).impulse("fill", "machine");
    rewards.timeAveraged("late", 0.0, 10.0).impulse("fill", "machine");
    rewards.timeAveraged("sum", 0.0, 5.0).impulseSum("fill", "machine", 1.0);
  });
  runBatch(bench);
  EXPECT_DOUBLE_EQ(bench.total(0), 3.0 / 5.0);
  EXPECT_DOUBLE_EQ(bench.total(1), 3.0 / 10.0);
  EXPECT_EQ(bench.total(2), 3.0);
  bench.rewards().PVReset();
  runBatch(bench);
  EXPECT_DOUBLE_EQ(bench.total(0), 3.0 / 5.0);
}

TEST(PerformanceVariableTest, ASteadyStateVariableHasItsTypeAndWindow) {
  Bench bench([](RewardModel& rewards) {
    rewards.steadyState("load", 100.0, 50.0).rate("machine", [](Machine& machine) { return marks(machine); });
    rewards.instantOfTime("at", 1.0)
        .rate("machine", [](Machine& machine) { return marks(machine); })
        .reads("q", "machine");
  });
  PerformanceVariableNode& load = *bench.rewards().PerformanceVariableList[0];
  EXPECT_EQ(load.Type, steady_state);
  EXPECT_EQ(load.GetStartTime(0), 100.0);
  EXPECT_EQ(load.GetStopTime(0), 150.0);
  PerformanceVariableNode& at = *bench.rewards().PerformanceVariableList[1];
  EXPECT_EQ(at.Type, terminating);
  EXPECT_EQ(at.NumberOfActionDependencies, 4);
}

TEST(PerformanceVariableTest, ABatchEndsWithTheLastTerminatingVariable) {
  const auto q = [](Machine& machine) { return marks(machine); };
  const auto load = [q](RewardModel& rewards) { rewards.steadyState("load", 100.0, 50.0).rate("machine", q); };

  Bench mixed([q, load](RewardModel& rewards) {
    load(rewards);
    rewards.instantOfTime("at", {1.0, 7.0, 3.0}).rate("machine", q);
    rewards.timeAveraged("mean", 0.0, 5.0).rate("machine", q);
  });
  EXPECT_EQ(mixed.rewards().Simulation_Stop_Time, 7.0);

  Bench steadyAlone(load);
  EXPECT_EQ(steadyAlone.rewards().Simulation_Stop_Time, 150.0);
}

void expectFault(const RewardModel::Describe& describe, const std::string& text) {
  EXPECT_EXIT(Bench bench(describe), ExitedWithCode(1), "^ERROR: " + text + "\n$");
}

TEST(PerformanceVariableDeathTest, ContradictionsAreReported) {
  const auto q = [](Machine& machine) { return marks(machine); };
  expectFault([](RewardModel& rewards) { rewards.intervalOfTime("none", 0.0, 1.0); },
              "performance variable \"none\" has neither a rate reward nor an impulse");
  expectFault([q](RewardModel& rewards) { rewards.instantOfTime("x", 1.0).rate("crew", q); },
              "performance variable \"x\": model \"crew\" is not of the class that its function takes");
  expectFault([q](RewardModel& rewards) { rewards.instantOfTime("x", 1.0).rate("machine", q).rate("machine", q); },
              "performance variable \"x\" has two rate rewards: put both into one function");
  expectFault(
      [q](RewardModel& rewards) {
        rewards.instantOfTime("x", 1.0).rate({"machine", "crew"}, q);
      },
      "performance variable \"x\" names 2 models, and its rate function takes 1");
  expectFault(
      [](RewardModel& rewards) {
        rewards.instantOfTime("x", 1.0).rate({"machine", "machine"},
                                             [](Machine& one, Machine& other) { return marks(one) - marks(other); });
      },
      "performance variable \"x\" names model \"machine\" twice: rateOfAll has all models of one name");
  expectFault([](RewardModel& rewards) { rewards.intervalOfTime("x", 0.0, 1.0).impulse("fil", "machine"); },
              "performance variable \"x\" has an impulse on \"fil\", and model \"machine\" has no action of that name");
  expectFault(
      [](RewardModel& rewards) { rewards.intervalOfTime("x", 0.0, 1.0).impulse("fill", "machin"); },
      "performance variable \"x\" has an impulse on \"fill\" of model \"machin\", and there is no model of that "
      "name");
  expectFault(
      [q](RewardModel& rewards) {
        rewards.intervalOfTime("x", {0.0, 1.0}, {2.0}).rate("machine", q);
      },
      "performance variable \"x\" has 2 starts and 1 stops");
  expectFault([](RewardModel& rewards) { rewards.model<Machine>(); },
              "reward model \"bench\" was given two models: join them");
  EXPECT_EXIT(RewardModel(
                  "bare", [](RewardModel& /*rewards*/) {}, true),
              ExitedWithCode(1), "^ERROR: reward model \"bare\" was given no model\n$");
}

TEST(PerformanceVariableDeathTest, ImpulsesOnSeveralReplicatedModelsAreRefused) {
  EXPECT_EXIT(
      RewardModel(
          "two",
          [](RewardModel& rewards) {
            rewards.model(join("top", {replicate("machines", 2, child<Machine>("machine")),
                                       replicate("crews", 2, child<Crew>("crew"))}));
            rewards.intervalOfTime("x", 0.0, 1.0).impulse("fill", "machine").impulse("rest", "crew");
          },
          true),
      ExitedWithCode(1),
      "^ERROR: performance variable \"x\" has impulses on several replicated models: make a variable for each of "
      "these models\n$");
}

}  // namespace
