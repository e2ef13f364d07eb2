#include <csignal>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "BaseClasses/ActionAffectsElement.h"
#include "Simulator/EventList.h"
#include "Simulator/SteadyStateTest.h"
#include "support/AllocationCounter.h"

namespace {

using support::CallLog;
using support::HandActivity;
using support::HandModel;
using testing::Contains;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::KilledBySignal;

/// `first` fires at 1, then `second` at 2, `third` at 3. Firing `first` touches `second` and `first`. What each does
/// more, a test sets before it starts the run.
class SimStepSSTest : public support::SteadyStateTest {
 protected:
  SimStepSSTest() {
    useSteadyModel(
        [this](HandModel& model) {
          Place& shared = model.addPlace("shared");
          Place& apart = model.addPlace("apart");
          first = &model.addActivity("first", {}, {&shared});
          second = &model.addActivity("second", {&shared}, {});
          third = &model.addActivity("third", {&apart}, {});
          first->delay = [] { return 1.0; };
          second->delay = [] { return 2.0; };
          third->delay = [] { return 3.0; };
          change();
        },
        {{.stop = 100.0, .rate = [] { return 1.0; }}});
  }

  /// Has the loop's objects and the initial list, and nothing scheduled.
  void startUnscheduled() {
    start({"-t0"});
    simulator->makeLoopObjects();
    simulator->GenerateInitialEnabledList();
    log.clear();
  }

  void disable(std::vector<HandActivity*> activities) {
    for (HandActivity* const activity : activities) {
      activity->predicate = [] { return false; };
    }
  }

  std::function<void()> change = [] {};
  HandActivity* first = nullptr;   // borrowed from the model
  HandActivity* second = nullptr;  // borrowed from the model
  HandActivity* third = nullptr;   // borrowed from the model
};

// ---- First scheduling -----------------------------------------------------------------------------------------------

TEST_F(SimStepSSTest, TheFirstSchedulingAsksEachGroupOnceAndSamplesThoseEnabled) {
  change = [this] { disable({second}); };
  startUnscheduled();
  simulator->CurrentTime = 10.0;
  EXPECT_EQ(simulator->GenerateCompleteEventListSS(), 0);
  EXPECT_THAT(log, ElementsAre("first.Enabled", "first.Sample", "first.Predicate",  //
                               "second.Enabled",                                    //
                               "third.Enabled", "third.Sample", "third.Predicate"));
  EXPECT_EQ(eventOf(*first).exec_time, 11.0);
  EXPECT_EQ(eventOf(*first).start_time, 10.0);
  EXPECT_EQ(eventOf(*first).action_ptr, first);
  EXPECT_FALSE(isScheduled(*second));
  EXPECT_TRUE(isScheduled(*third));
}

TEST_F(SimStepSSTest, TheFirstSchedulingWalksAllGroupsWhateverTheInitialListHolds) {
  startUnscheduled();
  simulator->NumInitiallyEnabled = 0;
  simulator->GenerateCompleteEventListSS();
  EXPECT_TRUE(isScheduled(*first));
  EXPECT_TRUE(isScheduled(*second));
  EXPECT_TRUE(isScheduled(*third));
}

TEST_F(SimStepSSTest, AfterItTheTwoHalvesOfEachEnablingPairAgree) {
  change = [this] { disable({third}); };
  startSteadyState();
  EXPECT_TRUE(first->NewEnabled);
  EXPECT_TRUE(first->OldEnabled);
  EXPECT_FALSE(third->NewEnabled);
  EXPECT_FALSE(third->OldEnabled);
}

TEST_F(SimStepSSTest, TheFirstSchedulingWatchesTheGroupsThatAskForItLatestFirst) {
  change = [this] {
    first->watched = [] { return true; };
    third->watched = [] { return true; };
  };
  startSteadyState();
  EXPECT_THAT(watchedGroups(), ElementsAre("third", "first"));
  EXPECT_TRUE(first->Reactivation);
  EXPECT_FALSE(second->Reactivation);
  EXPECT_EQ(*addressOf(*third).getReact(), third);
  EXPECT_TRUE(addressOf(*second).isReactNull());
}

TEST_F(SimStepSSTest, WithNothingEnabledTheListStaysEmpty) {
  change = [this] { disable({first, second, third}); };
  startUnscheduled();
  EXPECT_EQ(simulator->GenerateCompleteEventListSS(), 0);
  EXPECT_THAT(log, ElementsAre("first.Enabled", "second.Enabled", "third.Enabled"));
  EXPECT_FALSE(simulator->chooseNextEvent());
  EXPECT_EQ(simulator->NextEvent, nullptr);
}

TEST_F(SimStepSSTest, TheFirstSchedulingWithoutAScratchEventAborts) {
  start({"-t0"});
  EXPECT_EXIT(simulator->GenerateCompleteEventListSS(), KilledBySignal(SIGABRT),
              support::assertionIn("SimStepSS\\.cpp"));
}

TEST_F(SimStepSSTest, AScratchEventIsAskedForOnlyWhenAGroupIsEnabled) {
  change = [this] { disable({first, second, third}); };
  start({"-t0"});
  EXPECT_EQ(simulator->GenerateCompleteEventListSS(), 0);
}

TEST_F(SimStepSSTest, AnInvalidParameterAtTheFirstSchedulingEndsTheRun) {
  change = [this] { second->delay = []() -> double { throw std::string("INVALID_DIST_PARAMS: rate is negative"); }; };
  startUnscheduled();
  EXPECT_EXIT(simulator->GenerateCompleteEventListSS(), ExitedWithCode(1),
              "^FATAL ERROR: In action second, rate is negative\n$");
}

TEST_F(SimStepSSTest, DebugLinesTellOfEachGroupAndOfThoseEnabled) {
  change = [this] { disable({second}); };
  startUnscheduled();
  const support::DebugLevelGuard guard(4);
  std::string output = support::standardOutputOf([this] { simulator->GenerateCompleteEventListSS(); });
  std::vector<std::string> lines;
  for (std::size_t end = output.find('\n'); end != std::string::npos; end = output.find('\n')) {
    const std::string line = output.substr(0, end);
    if (line == "** Current Action Enabled" || line == "** After if Enabled") {
      lines.push_back(line);
    }
    output.erase(0, end + 1);
  }
  EXPECT_THAT(lines, ElementsAre("** Current Action Enabled", "** After if Enabled",  //
                                 "** After if Enabled",                               //
                                 "** Current Action Enabled", "** After if Enabled"));
}

TEST_F(SimStepSSTest, AtLevelThreeTheFirstSchedulingTellsNothing) {
  startUnscheduled();
  const support::DebugLevelGuard guard(3);
  const std::string output = support::standardOutputOf([this] { simulator->GenerateCompleteEventListSS(); });
  EXPECT_THAT(output, testing::Not(testing::HasSubstr("Enabled")));
}

// ---- Step -----------------------------------------------------------------------------------------------------------

TEST_F(SimStepSSTest, AStepFiresThenLooksAtTheWatchedThenDropsThenSchedules) {
  change = [this] { third->watched = [] { return true; }; };
  startSteadyState();
  EXPECT_TRUE(simulator->SimStepSS());
  EXPECT_THAT(log, ElementsAre("first.Fire",                       //
                               "third.Enabled", "third.Function",  // watched
                               "second.Enabled",                   // scheduled, so asked whether it changed
                               "second.Enabled", "first.Enabled", "first.Sample", "first.Predicate"));
  EXPECT_EQ(simulator->_fireActionCount, 1);
  EXPECT_EQ(simulator->TempAction, first);
  EXPECT_EQ(simulator->NextEvent, simulator->TheEventList->Earliest());
}

TEST_F(SimStepSSTest, AStepAccumulatesThenTracesThenFiresWithTheEventAlreadyGone) {
  bool wasScheduled = true;
  useSteadyModel(
      [&](HandModel& model) {
        first = &model.addActivity("first");
        first->effect = [&] { wasScheduled = isScheduled(*first); };
      },
      {{.stop = 10.0, .rate = [this] {
          log.emplace_back("rate");
          return 1.0;
        }}});
  startSteadyState();
  support::LoggingSink sink(log);
  simulator->trace->AddTraceFile(&sink);
  simulator->SimStepSS();
  EXPECT_THAT(log, ElementsAre("rate", "before first", "firing first", "first.Fire", "after first first",  //
                               "first.Enabled", "first.Sample", "first.Predicate"));
  EXPECT_FALSE(wasScheduled);
}

/// The same calls in the same order, and the same times, as the step of a terminating run.
TEST_F(SimStepSSTest, StepForStepItDoesAsTheTerminatingStep) {
  change = [this] {
    second->watched = [] { return true; };
    third->watched = [] { return true; };
    third->resampled = [this] { return simulator->_fireActionCount % 3 == 0; };
    second->predicate = [this] { return simulator == nullptr || simulator->_fireActionCount % 4 != 2; };
  };
  const auto callsAndTimes = [this](bool (SimulatorProbe::*step)()) {
    startSteadyState({"-t0", "-r2"});  // a generator that a seed puts back entirely, for the ties
    for (int i = 0; i < 20; ++i) {
      EXPECT_TRUE(((*simulator).*step)());
      log.push_back(std::to_string(simulator->CurrentTime) + ' ' + simulator->CurrAction->ActionName);
    }
    simulator->deleteLoopObjects();
    simulator.reset();
    return log;
  };
  const CallLog terminatingStep = callsAndTimes(&SimulatorProbe::SimStep);
  const CallLog steadyStateStep = callsAndTimes(&SimulatorProbe::SimStepSS);
  EXPECT_THAT(terminatingStep, Contains("second.Enabled"));
  EXPECT_EQ(steadyStateStep, terminatingStep);
}

/// The one difference between the two: the cursor of the passes still stands where the last pass left it.
TEST_F(SimStepSSTest, TheCursorIsNotSetBeforeTheWatchedGroupsAreLookedAt) {
  std::vector<ActionAffectsElement*> seen;
  change = [&] {
    third->watched = [] { return true; };
    third->resampled = [&] {
      seen.push_back(simulator->AffectsAction);
      return false;
    };
  };
  startSteadyState();
  simulator->SimStepSS();
  simulator->deleteLoopObjects();
  startSteadyState();
  simulator->SimStep();
  EXPECT_THAT(seen, ElementsAre(nullptr, first->Affects));
}

TEST_F(SimStepSSTest, AGroupDisabledAtTheStartGetsItsEventOnceAFiringEnablesIt) {
  change = [this] { second->predicate = [this] { return simulator != nullptr && simulator->_fireActionCount > 0; }; };
  startSteadyState();
  EXPECT_FALSE(isScheduled(*second));
  simulator->SimStepSS();
  ASSERT_TRUE(isScheduled(*second));
  EXPECT_EQ(eventOf(*second).exec_time, 1.0 + 2.0);
}

TEST_F(SimStepSSTest, TheLastEventLeavesTimeAndGroupWhereTheyAre) {
  change = [this] {
    disable({second, third});
    first->predicate = [this] { return simulator == nullptr || simulator->_fireActionCount == 0; };
  };
  startSteadyState();
  EXPECT_FALSE(simulator->SimStepSS());
  EXPECT_EQ(simulator->CurrentTime, 1.0);
  EXPECT_EQ(simulator->CurrAction, first);
  EXPECT_EQ(simulator->NextEvent, nullptr);
}

TEST_F(SimStepSSTest, AnInvalidParameterInAStepEndsTheRun) {
  startSteadyState();
  first->delay = []() -> double { throw std::string("INVALID_DIST_PARAMS: rate is non-positive"); };
  EXPECT_EXIT(simulator->SimStepSS(), ExitedWithCode(1), "^FATAL ERROR: In action first, rate is non-positive\n$");
}

TEST_F(SimStepSSTest, AtAnyDebugLevelButZeroAStepTellsThatItGoesOnToTheAffected) {
  const std::string line = "** Starting to look at the other actions that are affected by the firing\n";
  startSteadyState();
  EXPECT_EQ(support::standardOutputOf([this] { simulator->SimStepSS(); }), "");
  for (const int level : {1, 4}) {
    const support::DebugLevelGuard guard(level);
    EXPECT_THAT(support::standardOutputOf([this] { simulator->SimStepSS(); }), testing::HasSubstr(line));
  }
}

TEST_F(SimStepSSTest, AStepAllocatesNothing) {
  change = [this] { third->watched = [] { return true; }; };
  startSteadyState();
  for (HandActivity* const activity : {first, second, third}) {
    activity->log = nullptr;
  }
  for (int i = 0; i < 10; ++i) {
    simulator->SimStepSS();
  }
  const std::size_t before = support::allocations();
  for (int i = 0; i < 100; ++i) {
    simulator->SimStepSS();
  }
  EXPECT_EQ(support::allocations(), before);
}

}  // namespace
