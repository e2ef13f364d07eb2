#include <stdexcept>
#include <string>
#include <vector>

#include "BaseClasses/PostselectGroup.h"
#include "BaseClasses/PreselectGroup.h"
#include "Simulator/EngineTest.h"
#include "Simulator/EventList.h"
#include "support/AllocationCounter.h"
#include "support/ScriptedGenerator.h"

namespace {

using support::HandActivity;
using support::HandModel;
using testing::Contains;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::KilledBySignal;
using testing::Not;

/// `first` fires at 1, then `second` at 2, `third` at 3. Firing `first` touches `first` and `second` alone. What each
/// does more, a test sets before it starts the batch.
class SimStepTest : public support::EngineTest {
 protected:
  SimStepTest() {
    useModel([this](HandModel& model) {
      Place& shared = model.addPlace("shared");
      Place& apart = model.addPlace("apart");
      first = &model.addActivity("first", {}, {&shared});
      second = &model.addActivity("second", {&shared}, {});
      third = &model.addActivity("third", {&apart}, {});
      first->delay = [] { return 1.0; };
      second->delay = [] { return 2.0; };
      third->delay = [] { return 3.0; };
      change();
    });
  }

  std::function<void()> change = [] {};
  HandActivity* first = nullptr;   // borrowed from the model
  HandActivity* second = nullptr;  // borrowed from the model
  HandActivity* third = nullptr;   // borrowed from the model
};

TEST_F(SimStepTest, TheInitialListAsksEachGroupOnceInGroupOrderAndKeepsThoseEnabled) {
  change = [this] { second->predicate = [] { return false; }; };
  start();
  simulator->GenerateInitialEnabledList();
  EXPECT_THAT(log, ElementsAre("first.Enabled", "second.Enabled", "third.Enabled"));
  ASSERT_EQ(simulator->NumInitiallyEnabled, 2);
  EXPECT_EQ(simulator->InitiallyEnabled[0], first);
  EXPECT_EQ(simulator->InitiallyEnabled[1], third);
}

TEST_F(SimStepTest, AnInitialListThatIsMadeAnewReplacesTheEarlierOne) {
  start();
  EXPECT_EQ(support::leftBehindBy([this] { simulator->GenerateInitialEnabledList(); }), 0U);
}

/// 0 of 3 is below 3 / 2 in whole numbers: the array becomes one of no entries.
TEST_F(SimStepTest, TheInitialListMayBeEmpty) {
  change = [this] {
    for (HandActivity* const activity : {first, second, third}) {
      activity->predicate = [] { return false; };
    }
  };
  start();
  EXPECT_EQ(simulator->GenerateInitialEnabledList(), 0);
  EXPECT_EQ(simulator->NumInitiallyEnabled, 0);
  EXPECT_EQ(simulator->GenerateCompleteEventList(), 0);
  EXPECT_FALSE(simulator->chooseNextEvent());
}

TEST_F(SimStepTest, AShortInitialListKeepsItsGroupsWhenItIsCutToSize) {
  std::vector<HandActivity*> activities;
  useModel([&](HandModel& model) {
    for (const char* const name : {"a", "b", "c", "d"}) {
      activities.push_back(&model.addActivity(name));
    }
    for (HandActivity* const activity : {activities[0], activities[1], activities[3]}) {
      activity->predicate = [] { return false; };
    }
  });
  start();
  simulator->GenerateInitialEnabledList();
  ASSERT_EQ(simulator->NumInitiallyEnabled, 1);
  EXPECT_EQ(simulator->InitiallyEnabled[0], activities[2]);
}

TEST_F(SimStepTest, TheFirstSchedulingAsksEnabledTwiceThenSamplesThenAsksThePredicate) {
  start();
  simulator->makeLoopObjects();
  simulator->GenerateInitialEnabledList();
  log.clear();
  simulator->CurrentTime = 10.0;
  EXPECT_EQ(simulator->GenerateCompleteEventList(), 0);
  EXPECT_THAT(log, ElementsAre("first.Enabled", "first.Enabled", "first.Sample", "first.Predicate",  //
                               "second.Enabled", "second.Enabled", "second.Sample", "second.Predicate", "third.Enabled",
                               "third.Enabled", "third.Sample", "third.Predicate"));
  EXPECT_EQ(eventOf(*second).exec_time, 12.0);
  EXPECT_EQ(eventOf(*second).start_time, 10.0);
  EXPECT_EQ(eventOf(*second).action_ptr, second);
  EXPECT_TRUE(first->NewEnabled);
  EXPECT_TRUE(first->OldEnabled);
}

TEST_F(SimStepTest, TheFirstSchedulingWatchesTheGroupsThatAskForItLatestFirst) {
  change = [this] {
    first->watched = [] { return true; };
    third->watched = [] { return true; };
  };
  startBatch();
  EXPECT_THAT(watchedGroups(), ElementsAre("third", "first"));
  EXPECT_TRUE(first->Reactivation);
  EXPECT_FALSE(second->Reactivation);
  EXPECT_FALSE(addressOf(*first).isReactNull());
  EXPECT_TRUE(addressOf(*second).isReactNull());
  EXPECT_EQ(*addressOf(*third).getReact(), third);
}

TEST_F(SimStepTest, ThePredicateIsAskedBeforeTheEventEntersTheList) {
  std::vector<bool> scheduled;
  change = [&] {
    first->watched = [&] {
      scheduled.push_back(isScheduled(*first));
      return false;
    };
  };
  startBatch();
  simulator->SimStep();
  EXPECT_THAT(scheduled, ElementsAre(false, false)) << "at the first scheduling and after the firing";
}

/// Asked once for the list and twice when it is scheduled; the last answer is not looked at.
TEST_F(SimStepTest, TheFirstSchedulingTakesTheFirstOfItsTwoAnswers) {
  int asked = 0;
  change = [&] { second->predicate = [&] { return ++asked != 3; }; };
  start();
  simulator->makeLoopObjects();
  simulator->GenerateInitialEnabledList();
  EXPECT_EQ(simulator->GenerateCompleteEventList(), 0);
  EXPECT_EQ(asked, 3);
  EXPECT_TRUE(isScheduled(*second));
}

TEST_F(SimStepTest, AGroupThatWasNeverScheduledHasNoPlaceInEitherList) {
  const PAddress fresh;
  EXPECT_EQ(fresh.event, nullptr);
  EXPECT_TRUE(fresh.isReactNull());
}

TEST_F(SimStepTest, TheFirstSchedulingOfADisabledGroupAborts) {
  start();
  simulator->makeLoopObjects();
  simulator->GenerateInitialEnabledList();
  second->predicate = [] { return false; };
  EXPECT_EXIT(simulator->GenerateCompleteEventList(), KilledBySignal(SIGABRT), support::assertionIn("SimStep.cpp"));
}

TEST_F(SimStepTest, TheFirstSchedulingWithoutAScratchEventAborts) {
  start();
  simulator->GenerateInitialEnabledList();
  EXPECT_EXIT(simulator->GenerateCompleteEventList(), KilledBySignal(SIGABRT), support::assertionIn("SimStep.cpp"));
}

TEST_F(SimStepTest, ChoosingSetsTimeAndGroupOfTheNextEvent) {
  startBatch();
  EXPECT_EQ(simulator->CurrentTime, 1.0);
  EXPECT_EQ(simulator->CurrAction, first);
  EXPECT_EQ(simulator->NextEvent, addressOf(*first).event);
}

/// The chain of `first` is its own group last: second, first.
TEST_F(SimStepTest, AStepFiresThenLooksAtTheWatchedThenDropsThenSchedules) {
  change = [this] { third->watched = [] { return true; }; };
  startBatch();
  EXPECT_TRUE(simulator->SimStep());
  EXPECT_THAT(log, ElementsAre("first.Fire",                       //
                               "third.Enabled", "third.Function",  // watched
                               "second.Enabled",                   // scheduled, so asked whether it changed
                               "second.Enabled", "first.Enabled", "first.Sample", "first.Predicate"));
  EXPECT_EQ(simulator->_fireActionCount, 1);
  EXPECT_EQ(simulator->TempAction, first);
}

TEST_F(SimStepTest, AStepAccumulatesThenTracesThenFiresWithTheEventAlreadyGone) {
  bool wasScheduled = true;
  useModel(
      [&](HandModel& model) {
        first = &model.addActivity("first");
        first->effect = [&] { wasScheduled = isScheduled(*first); };
      },
      {{10.0, [this] {
          log.emplace_back("rate");
          return 1.0;
        }}});
  startBatch();
  support::LoggingSink sink(log);
  simulator->trace->AddTraceFile(&sink);
  simulator->SimStep();
  EXPECT_THAT(log, ElementsAre("rate", "before first", "firing first", "first.Fire", "after first first",  //
                               "first.Enabled", "first.Sample", "first.Predicate"));
  EXPECT_FALSE(wasScheduled);
}

TEST_F(SimStepTest, AnActivityFindsTheTimeOfItsOwnFiring) {
  double timeInFire = -1.0;
  change = [&] { first->effect = [&] { timeInFire = BaseModelClass::LastActionTime; }; };
  startBatch();
  EXPECT_TRUE(simulator->SimStep());
  EXPECT_EQ(timeInFire, 1.0);
}

TEST_F(SimStepTest, AGroupThatFiresAndStaysEnabledIsSampledAnewAtTheCurrentTime) {
  startBatch();
  first->delay = [] { return 0.25; };
  EXPECT_TRUE(simulator->SimStep());
  EXPECT_EQ(eventOf(*first).exec_time, 1.25);
  EXPECT_EQ(eventOf(*first).start_time, 1.0);
  EXPECT_EQ(simulator->CurrentTime, 1.25);
  EXPECT_EQ(simulator->CurrAction, first);
}

TEST_F(SimStepTest, AnAffectedGroupThatStaysEnabledKeepsItsEvent) {
  startBatch();
  second->delay = [] { return 0.125; };
  simulator->SimStep();
  EXPECT_EQ(eventOf(*second).exec_time, 2.0);
  EXPECT_EQ(eventOf(*second).start_time, 0.0);
  EXPECT_THAT(log, Not(Contains("second.Sample")));
}

TEST_F(SimStepTest, AnAffectedGroupThatLosesItsEnablingLosesItsEvent) {
  startBatch();
  second->predicate = [] { return false; };
  simulator->SimStep();
  EXPECT_FALSE(isScheduled(*second));
}

TEST_F(SimStepTest, AnAffectedGroupThatGainsItsEnablingIsScheduledOnce) {
  change = [this] { second->predicate = [] { return false; }; };
  startBatch();
  second->predicate = [] { return true; };
  simulator->SimStep();
  EXPECT_EQ(eventOf(*second).exec_time, 3.0);
  EXPECT_THAT(log, ElementsAre("first.Fire", "second.Enabled", "second.Sample", "second.Predicate",  //
                               "first.Enabled", "first.Sample", "first.Predicate"))
      << "a group without an event is not asked in the dropping pass";
}

TEST_F(SimStepTest, AGroupDisabledAndEnabledAgainWithinOneFiringKeepsItsEvent) {
  startBatch();
  bool enabled = true;
  second->predicate = [&] { return enabled; };
  first->effect = [&] {
    enabled = false;
    enabled = true;
  };
  simulator->SimStep();
  EXPECT_EQ(eventOf(*second).exec_time, 2.0);
}

/// As the step does with the two in turn, and each may be called by itself.
TEST_F(SimStepTest, DroppingAndSchedulingEachFollowTheChainOfTheActionThatFired) {
  startBatch();
  simulator->TempAction = first;
  second->predicate = [] { return false; };
  simulator->RemoveAffectedActions();
  EXPECT_THAT(log, ElementsAre("second.Enabled", "first.Enabled"));
  EXPECT_FALSE(isScheduled(*second));
  EXPECT_TRUE(isScheduled(*first));
  EXPECT_EQ(simulator->AffectsAction, nullptr);

  log.clear();
  second->predicate = [] { return true; };
  simulator->CurrentTime = 10.0;
  simulator->InsertAffectedActions();
  EXPECT_THAT(log, ElementsAre("second.Enabled", "second.Sample", "second.Predicate", "first.Enabled"));
  EXPECT_EQ(eventOf(*second).exec_time, 12.0);
  EXPECT_EQ(eventOf(*first).exec_time, 1.0);
  EXPECT_EQ(simulator->AffectsAction, nullptr);
}

/// So many that steps look ahead for the groups of the next firing. Each fires once, and touches its neighbour.
TEST_F(SimStepTest, AThousandGroupsFireInTheOrderOfTheirTimes) {
  constexpr int kGroups = 1000;
  std::vector<bool> hasFired(kGroups, false);
  std::vector<double> times;
  useModel([&](HandModel& model) {
    std::vector<Place*> places;
    for (int i = 0; i < kGroups; ++i) {
      places.push_back(&model.addPlace(("place_" + std::to_string(i)).c_str()));
    }
    for (int i = 0; i < kGroups; ++i) {
      Place* const own = places[static_cast<std::size_t>(i)];
      Place* const next = places[static_cast<std::size_t>((i + 1) % kGroups)];
      HandActivity& activity = model.addActivity(("activity_" + std::to_string(i)).c_str(), {own}, {next});
      const double time = 1.0 + i * 617 % kGroups;  // each of 1 to 1000 once: 617 is a prime
      activity.delay = [time] { return time; };
      activity.predicate = [&hasFired, i] { return !hasFired[static_cast<std::size_t>(i)]; };
      activity.effect = [this, &hasFired, &times, i] {
        hasFired[static_cast<std::size_t>(i)] = true;
        times.push_back(simulator->CurrentTime);
      };
    }
  });
  startBatch();
  while (simulator->SimStep()) {
  }
  ASSERT_EQ(times.size(), static_cast<std::size_t>(kGroups));
  for (int i = 0; i < kGroups; ++i) {
    EXPECT_EQ(times[static_cast<std::size_t>(i)], 1.0 + i);
  }
}

TEST_F(SimStepTest, AGroupOutsideTheChainIsNotAsked) {
  startBatch();
  third->predicate = [] { return false; };
  simulator->SimStep();
  EXPECT_TRUE(isScheduled(*third));
  EXPECT_THAT(log, Not(Contains("third.Enabled")));
}

TEST_F(SimStepTest, AWatchedGroupThatTurnsDisabledIsDroppedEvenOutsideTheChain) {
  change = [this] { third->watched = [] { return true; }; };
  startBatch();
  third->predicate = [] { return false; };
  simulator->SimStep();
  EXPECT_FALSE(isScheduled(*third));
  EXPECT_THAT(watchedGroups(), IsEmpty());
  EXPECT_FALSE(third->Reactivation);
  EXPECT_TRUE(addressOf(*third).isReactNull());
}

TEST_F(SimStepTest, AWatchedGroupThatHasFiredLeavesTheList) {
  change = [this] { first->watched = [] { return true; }; };
  startBatch();
  first->watched = [] { return false; };
  simulator->SimStep();
  EXPECT_THAT(watchedGroups(), IsEmpty());
  EXPECT_FALSE(first->Reactivation);
  EXPECT_TRUE(addressOf(*first).isReactNull());
  EXPECT_THAT(log, ElementsAre("first.Fire", "second.Enabled", "second.Enabled",  //
                               "first.Enabled", "first.Sample", "first.Predicate"));
}

TEST_F(SimStepTest, AWatchedGroupIsSampledAnewWhenItsFunctionAsksForIt) {
  change = [this] { third->watched = [] { return true; }; };
  startBatch();
  third->resampled = [] { return true; };
  third->watched = [] { return false; };
  third->delay = [] { return 0.5; };
  simulator->SimStep();
  EXPECT_EQ(eventOf(*third).exec_time, 1.5);
  EXPECT_EQ(eventOf(*third).start_time, 1.0);
  EXPECT_EQ(simulator->CurrAction, third) << "the list is in order again";
  EXPECT_THAT(watchedGroups(), IsEmpty());
  EXPECT_FALSE(third->Reactivation);
  EXPECT_TRUE(addressOf(*third).isReactNull());
}

TEST_F(SimStepTest, AGroupSampledAnewHasItsNewTimeWhenThePredicateIsAsked) {
  change = [this] { third->watched = [] { return true; }; };
  startBatch();
  third->resampled = [] { return true; };
  third->delay = [] { return 0.5; };
  std::vector<BaseActionClass*> next;
  third->watched = [&] {
    EXPECT_EQ(eventOf(*third).exec_time, 1.5);
    next.push_back((*simulator->TheEventList->Earliest())->action_ptr);
    return false;
  };
  simulator->SimStep();
  EXPECT_THAT(next, ElementsAre(third)) << "the list is in order already";
}

TEST_F(SimStepTest, AGroupWatchedAgainGoesToTheFrontAndIsNotVisitedTwiceInAPass) {
  change = [this] {
    second->watched = [] { return true; };
    third->watched = [] { return true; };
    second->resampled = [] { return true; };
  };
  startBatch();
  ASSERT_THAT(watchedGroups(), ElementsAre("third", "second"));
  simulator->TempAction = simulator->NullAction;
  simulator->CheckReactivationList();
  EXPECT_THAT(log, ElementsAre("third.Enabled", "third.Function",  //
                               "second.Enabled", "second.Function", "second.Sample", "second.Predicate"));
  EXPECT_THAT(watchedGroups(), ElementsAre("second", "third"));
  EXPECT_TRUE(second->Reactivation);
  EXPECT_EQ(*addressOf(*second).getReact(), second);
}

/// Of a watched group in the chain, the first pass takes a new sample and watches it again; the second pass drops it,
/// as its function still says so; the third schedules it with another sample.
TEST_F(SimStepTest, AWatchedGroupInTheChainWhoseFunctionHoldsIsSampledTwice) {
  int samples = 0;
  change = [&] {
    second->watched = [] { return true; };
    second->resampled = [] { return true; };
    second->delay = [&samples] { return 10.0 * ++samples; };
  };
  startBatch();
  simulator->SimStep();
  EXPECT_THAT(log, ElementsAre("first.Fire",                                                              //
                               "second.Enabled", "second.Function", "second.Sample", "second.Predicate",  //
                               "second.Enabled", "second.Function",                                       //
                               "second.Enabled", "second.Sample", "second.Predicate",                     //
                               "first.Enabled", "first.Sample", "first.Predicate"));
  EXPECT_EQ(eventOf(*second).exec_time, 31.0);
  EXPECT_THAT(watchedGroups(), ElementsAre("second"));
}

TEST_F(SimStepTest, AWatchedGroupDroppedForItsChangedEnablingLeavesTheListWithoutItsFunctionBeingAsked) {
  change = [this] { second->watched = [] { return true; }; };
  startBatch();
  int asked = 0;
  // Enabled when the watched groups are looked at, disabled when affected ones are.
  second->predicate = [&asked] { return ++asked == 1; };
  simulator->SimStep();
  EXPECT_THAT(log, ElementsAre("first.Fire", "second.Enabled", "second.Function", "second.Enabled", "second.Enabled",
                               "first.Enabled", "first.Sample", "first.Predicate"));
  EXPECT_FALSE(isScheduled(*second));
  EXPECT_FALSE(second->Reactivation);
  EXPECT_TRUE(addressOf(*second).isReactNull());
  EXPECT_THAT(watchedGroups(), IsEmpty());
}

TEST_F(SimStepTest, SamplesAreDrawnInTheOrderOfTheChain) {
  const auto drawDelay = [] { return TheDistribution->RNG->rnd(); };
  change = [&] {
    second->predicate = [] { return false; };
    first->delay = drawDelay;
    second->delay = drawDelay;
  };
  start();
  const support::ScriptedGenerator generator({0.5, 0.125, 0.25});
  simulator->makeLoopObjects();
  simulator->GenerateInitialEnabledList();
  simulator->GenerateCompleteEventList();
  simulator->chooseNextEvent();
  ASSERT_EQ(simulator->CurrentTime, 0.5);
  second->predicate = [] { return true; };
  simulator->SimStep();
  EXPECT_EQ(eventOf(*second).exec_time, 0.625);
  EXPECT_EQ(eventOf(*first).exec_time, 0.75);
}

TEST_F(SimStepTest, WithoutAFurtherEventTheStepIsFalseAndTimeStandsStill) {
  useModel([this](HandModel& model) { first = &model.addActivity("first"); });
  startBatch();
  first->predicate = [] { return false; };
  EXPECT_FALSE(simulator->SimStep());
  EXPECT_EQ(simulator->NextEvent, nullptr);
  EXPECT_EQ(simulator->CurrentTime, 1.0);
  EXPECT_EQ(simulator->CurrAction, first);
}

TEST_F(SimStepTest, AnInstantaneousGroupFiresAtTheCurrentTimeBeforeLaterOnes) {
  change = [this] { second->predicate = [] { return false; }; };
  startBatch();
  second->predicate = [] { return true; };
  second->delay = [] { return 0.0; };
  first->delay = [] { return 0.0; };
  second->rank = 1;
  simulator->SimStep();
  EXPECT_EQ(simulator->CurrentTime, 1.0);
  EXPECT_EQ(simulator->CurrAction, second) << "of two events at the current time the higher rank comes first";
}

TEST_F(SimStepTest, TheChainOfTheMemberThatFiredIsFollowed) {
  HandActivity* stay = nullptr;
  HandActivity* go = nullptr;
  HandActivity* other = nullptr;
  useModel([&](HandModel& model) {
    Place& place = model.addPlace("place");
    stay = &model.addMember("stay");
    go = &model.addMember("go", {}, {&place});
    model.addGroup<PostselectGroup>("choice", {stay, go});
    other = &model.addActivity("other", {&place}, {});
    other->delay = [] { return 5.0; };
  });
  startBatch();
  const support::ScriptedGenerator generator({0.9, 0.1});
  simulator->SimStep();
  EXPECT_EQ(simulator->TempAction, go);
  EXPECT_THAT(log, Contains("other.Enabled"));
  log.clear();
  simulator->SimStep();
  EXPECT_EQ(simulator->TempAction, stay);
  EXPECT_THAT(log, Not(Contains("other.Enabled")));
}

TEST_F(SimStepTest, StepsWithReactivationAllocateNothing) {
  change = [this] {
    for (HandActivity* const activity : {first, second, third}) {
      activity->watched = [] { return true; };
      activity->resampled = [] { return true; };
    }
  };
  startBatch();
  for (HandActivity* const activity : {first, second, third}) {
    activity->log = nullptr;
  }
  ASSERT_TRUE(simulator->SimStep());
  const std::size_t before = support::allocations();
  for (int i = 0; i < 1000; ++i) {
    simulator->SimStep();
  }
  EXPECT_EQ(support::allocations(), before);
}

class InvalidParametersTest : public SimStepTest {
 protected:
  static constexpr const char* kWords = "^FATAL ERROR: In action second, rate is non-positive\n$";

  static double fail() { throw std::string("INVALID_DIST_PARAMS: rate is non-positive"); }
};

TEST_F(InvalidParametersTest, EndTheRunAtTheFirstScheduling) {
  change = [this] { second->delay = fail; };
  start();
  simulator->makeLoopObjects();
  simulator->GenerateInitialEnabledList();
  EXPECT_EXIT(simulator->GenerateCompleteEventList(), ExitedWithCode(1), kWords);
}

TEST_F(InvalidParametersTest, EndTheRunWhenAnAffectedGroupIsScheduled) {
  change = [this] { second->predicate = [] { return false; }; };
  startBatch();
  second->predicate = [] { return true; };
  second->delay = fail;
  EXPECT_EXIT(simulator->SimStep(), ExitedWithCode(1), kWords);
}

TEST_F(InvalidParametersTest, EndTheRunWhenAWatchedGroupIsSampledAnew) {
  change = [this] { second->watched = [] { return true; }; };
  startBatch();
  second->resampled = [] { return true; };
  second->delay = fail;
  EXPECT_EXIT(simulator->SimStep(), ExitedWithCode(1), kWords);
}

TEST_F(InvalidParametersTest, ATextAroundTheTagIsKept) {
  startBatch();
  EXPECT_EXIT(simulator->HandleInvalidDistParams(first, "see INVALID_DIST_PARAMS:here"), ExitedWithCode(1),
              "^FATAL ERROR: In action first,see here\n$");
}

TEST_F(InvalidParametersTest, ATextWithoutTheTagAborts) {
  startBatch();
  EXPECT_EXIT(simulator->HandleInvalidDistParams(first, "rate is non-positive"), KilledBySignal(SIGABRT),
              "^Assertion failed: false, file SimStepCommon\\.cpp, line [0-9]+\n$");
}

TEST_F(InvalidParametersTest, AnyOtherExceptionPassesOn) {
  startBatch();
  first->delay = []() -> double { throw std::runtime_error("not about parameters"); };
  EXPECT_THROW(simulator->SimStep(), std::runtime_error);
}

TEST_F(SimStepTest, WhileThePassesRunTheirCursorIsTheChainOfTheActionThatFired) {
  startBatch();
  std::vector<const ActionAffectsElement*> seen;
  second->predicate = [&] {
    seen.push_back(simulator->AffectsAction);
    return true;
  };
  simulator->SimStep();
  EXPECT_THAT(seen, ElementsAre(first->Affects, first->Affects))
      << "asked by the pass that takes out and by that which puts in";
  EXPECT_EQ(simulator->AffectsAction, nullptr);
}

TEST_F(SimStepTest, AFiringThatGivesNoActionEndsTheRun) {
  startBatch();
  first->fired = nullptr;
  EXPECT_EXIT(simulator->SimStep(), ExitedWithCode(1),
              "^ERROR: firing \"first\" at t=1 gave no action; Fire must return the action that fired\n$");
}

/// Gives one number for ever.
class ConstantGenerator : public RandomNumberGenerator {
 public:
  explicit ConstantGenerator(double number) : number_(number) {}
  double rnd() override { return number_; }

 private:
  double number_;
};

/// The first tie, of three, leaves slot 2 in the work array. When that event has fired and the other two, now of weight
/// 0, tie, slot 2 is read and is empty.
TEST_F(SimStepTest, ATieWithoutWeightThatFindsNoEventEndsTheRun) {
  change = [this] {
    for (HandActivity* const activity : {first, second, third}) {
      activity->delay = [] { return 1.0; };
    }
  };
  start();
  delete TheDistribution->RNG;
  TheDistribution->RNG = new ConstantGenerator(0.99);  // the sampler's own, as the process ends with it
  simulator->makeLoopObjects();
  simulator->GenerateInitialEnabledList();
  simulator->GenerateCompleteEventList();
  ASSERT_TRUE(simulator->chooseNextEvent());
  ASSERT_EQ(simulator->CurrAction, third);
  third->predicate = [] { return false; };
  first->weight = 0.0;
  second->weight = 0.0;
  EXPECT_EXIT(simulator->SimStep(), ExitedWithCode(1), "^ERROR: no event can be chosen after t=1: ");
}

/// No earlier tie has left anything behind the three entries: what is read there is the first slot.
TEST_F(SimStepTest, ATieOfAllGroupsWithoutWeightTakesTheRoot) {
  change = [this] {
    for (HandActivity* const activity : {first, second, third}) {
      activity->delay = [] { return 1.0; };
      activity->weight = 0.0;
    }
  };
  startBatch();
  EXPECT_EQ(simulator->CurrAction, first);
}

TEST_F(SimStepTest, WithoutConnectivityNoGroupIsScheduledAfterAFiring) {
  const support::EnvironmentGuard guard("SIMTEST", "7");
  startBatch();
  EXPECT_TRUE(simulator->SimStep());
  EXPECT_TRUE(simulator->SimStep());
  EXPECT_FALSE(simulator->SimStep()) << "each of the three groups has fired once";
  EXPECT_EQ(simulator->_fireActionCount, 3);
  EXPECT_EQ(simulator->CurrentTime, 3.0);
}

TEST_F(SimStepTest, DebugLinesTellOfTheStepAtAnyLevelButZero) {
  startBatch();
  for (const int level : {-1, 1}) {
    const support::DebugLevelGuard guard(level);
    EXPECT_THAT(support::standardOutputOf([this] { simulator->SimStep(); }),
                testing::HasSubstr("** Starting to look at the other actions that are affected by the firing\n"));
  }
  EXPECT_EQ(support::standardOutputOf([this] { simulator->SimStep(); }), "");
}

TEST_F(SimStepTest, DebugLinesTellOfEachGroupThatIsEnabledAtFirstAboveLevelThree) {
  change = [this] { second->predicate = [] { return false; }; };
  start();
  const auto outputAtLevel = [this](int level) {
    const support::DebugLevelGuard guard(level);
    return support::standardOutputOf([this] { simulator->GenerateInitialEnabledList(); });
  };
  EXPECT_EQ(outputAtLevel(4), "** Current Action Enabled\n** End if\n** Current Action Enabled\n** End if\n");
  EXPECT_EQ(outputAtLevel(3), "");
}

}  // namespace
