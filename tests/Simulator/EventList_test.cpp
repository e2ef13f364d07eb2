#include "Simulator/EventList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <list>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "BaseClasses/BaseGroupClass.h"
#include "Simulator/PAddress.h"
#include "support/AllocationCounter.h"
#include "support/CallLog.h"
#include "support/FlushWatch.h"
#include "support/ScriptedAnswers.h"
#include "support/ScriptedGenerator.h"

/// The heap as only its friend sees it.
class EventListProbe {
 public:
  static int faultOf(EventList& list) { return list.IsValid(); }
  static int sizeOf(const EventList& list) { return list.size; }
  static Event** slot(EventList& list, int i) { return &list.A[i]; }
  static void freeTwice(EventList& list, Event* record) { list.FreeList.front() = record; }
  static std::size_t freeRecords(const EventList& list) {
    return static_cast<std::size_t>(list.free_ - list.FreeList.data());
  }
};

namespace {

using support::ScriptedGenerator;
using testing::ElementsAre;

/// A group with a rank and a weight, and a back pointer of its own.
class Group : public support::ScriptedAnswers<BaseGroupClass> {
 public:
  explicit Group(const char* name, int theRank = 0, double theWeight = 1.0, support::CallLog* theLog = nullptr)
      : ScriptedAnswers(name, theWeight, theRank, theLog) {
    EventPointer = &address;
  }

  PAddress address;
};

void insert(EventList& list, double time, Group& group, double startTime = 0.0) {
  Event event(time, startTime, &group);
  list.Insert(&event);
}

/// Names of the pending groups in the order of the heap's array.
std::vector<std::string> layoutOf(EventList& list) {
  std::vector<std::string> names;
  for (int i = 0; i < EventListProbe::sizeOf(list); ++i) {
    names.emplace_back((*EventListProbe::slot(list, i))->action_ptr->ActionName);
  }
  return names;
}

std::string nameOfEarliest(EventList& list) {
  return (*list.Earliest())->action_ptr->ActionName;
}

TEST(EventTest, ADefaultEventIsOfNoGroupAndBeforeAllTime) {
  const Event event;
  EXPECT_EQ(event.exec_time, -1.0);
  EXPECT_EQ(event.start_time, 0.0);
  EXPECT_EQ(event.action_ptr, nullptr);
}

TEST(EventTest, TakesFiringTimeThenSchedulingTimeThenGroupAndCopiesAllThree) {
  BaseGroupClass group;
  const Event event(2.5, 1.5, &group);
  Event copy;
  copy = event;
  EXPECT_EQ(copy.exec_time, 2.5);
  EXPECT_EQ(copy.start_time, 1.5);
  EXPECT_EQ(copy.action_ptr, &group);
}

TEST(PAddressTest, IsClearAtFirstAndAfterClear) {
  PAddress address;
  EXPECT_EQ(address.event, nullptr);
  EXPECT_TRUE(address.isReactNull());

  std::list<BaseActionClass*> watched{nullptr};
  Event* slot = nullptr;
  address.event = &slot;
  address.setReact(watched.begin());
  EXPECT_FALSE(address.isReactNull());
  EXPECT_EQ(address.getReact(), watched.begin());

  address.clear();
  EXPECT_EQ(address.event, nullptr);
  EXPECT_TRUE(address.isReactNull());
}

TEST(PAddressTest, SetReactNullKeepsTheEvent) {
  PAddress address;
  std::list<BaseActionClass*> watched{nullptr};
  Event* slot = nullptr;
  address.event = &slot;
  address.setReact(watched.begin());
  address.setReactNull();
  EXPECT_TRUE(address.isReactNull());
  EXPECT_EQ(address.event, &slot);
}

TEST(EventOrderTest, RankIsAskedOnlyAtEqualTimesAndOfTheFirstEventFirst) {
  support::CallLog log;
  Group a("a", 1, 1.0, &log);
  Group b("b", 2, 1.0, &log);
  const Event early(1.0, 0.0, &a);
  const Event late(2.0, 0.0, &b);
  const Event same(1.0, 0.0, &b);

  EXPECT_TRUE(EventEarlier()(&early, &late));
  EXPECT_FALSE(EventEarlier()(&late, &early));
  EXPECT_FALSE(EventEqual()(&early, &late));
  EXPECT_THAT(log, ElementsAre());

  EXPECT_FALSE(EventEarlier()(&early, &same));
  EXPECT_TRUE(EventEarlier()(&same, &early));
  EXPECT_FALSE(EventEqual()(&early, &same));
  EXPECT_THAT(log, ElementsAre("a.Rank", "b.Rank", "b.Rank", "a.Rank", "a.Rank", "b.Rank"));
}

TEST(EventOrderTest, EqualTimesAndRanksTieAndNeitherIsEarlier) {
  Group a("a", 3);
  Group b("b", 3);
  const Event first(1.0, 0.0, &a);
  const Event second(1.0, 0.5, &b);
  EXPECT_TRUE(EventEqual()(&first, &second));
  EXPECT_FALSE(EventEarlier()(&first, &second));
  EXPECT_FALSE(EventEarlier()(&second, &first));
}

TEST(EventOrderTest, ATimeThatIsNoNumberComparesFalseOnEveryTest) {
  Group a("a", 1);
  Group b("b", 2);
  const Event number(1.0, 0.0, &a);
  const Event none(std::numeric_limits<double>::quiet_NaN(), 0.0, &b);
  for (const auto& [first, second] : {std::pair{&number, &none}, {&none, &number}, {&none, &none}}) {
    EXPECT_FALSE(EventEarlier()(first, second));
    EXPECT_FALSE(EventEqual()(first, second));
  }
}

TEST(EventListTest, ATimeThatIsNoNumberIsPassedByNoEventAndPassesNone) {
  const ScriptedGenerator generator({});
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  Group none("none", 7);
  Group half("half");
  Group one("one");
  EventList list(4);
  insert(list, kNone, none);
  insert(list, 0.5, half);
  EXPECT_EQ(nameOfEarliest(list), "none") << "the half does not pass it";
  list.ClearEventList();

  insert(list, 1.0, one);
  insert(list, kNone, none);
  insert(list, 0.5, half);
  EXPECT_THAT(layoutOf(list), ElementsAre("half", "none", "one"));
  list.Remove(half.address.event);
  EXPECT_THAT(layoutOf(list), ElementsAre("one", "none")) << "it does not rise past the one";
  list.Remove(one.address.event);
  EXPECT_EQ(nameOfEarliest(list), "none");
  EXPECT_EQ(generator.drawn(), 0U);
}

TEST(EventListTest, EarliestOfAnEmptyListIsNullAndDrawsNothing) {
  const ScriptedGenerator generator({});
  EventList list(3);
  EXPECT_EQ(list.Earliest(), nullptr);
  EXPECT_EQ(generator.drawn(), 0U);
}

TEST(EventListTest, EarliestGivesTheSlotAndLeavesTheEventInTheList) {
  const ScriptedGenerator generator({});
  Group late("late");
  Group early("early");
  EventList list(3);
  insert(list, 2.0, late, 0.5);
  insert(list, 1.0, early, 0.25);
  Event** const slot = list.Earliest();
  EXPECT_EQ(slot, early.address.event);
  EXPECT_EQ((*slot)->exec_time, 1.0);
  EXPECT_EQ((*slot)->start_time, 0.25);
  EXPECT_EQ((*slot)->action_ptr, &early);
  EXPECT_EQ(list.Earliest(), slot);
  EXPECT_EQ(generator.drawn(), 0U);
}

TEST(EventListTest, InsertKeepsACopyOfTheCallersEvent) {
  Group group("group");
  Event event(1.0, 0.5, &group);
  EventList list(2);
  list.Insert(&event);
  event.exec_time = 7.0;
  EXPECT_EQ((*group.address.event)->exec_time, 1.0);
  EXPECT_NE(*group.address.event, &event);
}

TEST(EventListTest, EqualTimesGoToTheHigherRankWithoutADraw) {
  const ScriptedGenerator generator({});
  Group low("low", 1);
  Group high("high", 5);
  EventList list(3);
  insert(list, 2.0, low);
  insert(list, 2.0, high);
  EXPECT_EQ(nameOfEarliest(list), "high");
  EXPECT_EQ(generator.drawn(), 0U);
}

/// Weights 1 and 3: the first is chosen while u * 4 is below 1.
TEST(EventListTest, ATieIsChosenInProportionToTheWeightsWithOneDraw) {
  const ScriptedGenerator generator({0.0, 0.2499, 0.25, 0.999});
  Group one("one", 0, 1.0);
  Group three("three", 0, 3.0);
  EventList list(3);
  insert(list, 2.0, one);
  insert(list, 2.0, three);
  EXPECT_EQ(nameOfEarliest(list), "one");
  EXPECT_EQ(nameOfEarliest(list), "one");
  EXPECT_EQ(nameOfEarliest(list), "three");
  EXPECT_EQ(nameOfEarliest(list), "three");
  EXPECT_EQ(generator.drawn(), 4U);
}

TEST(EventListTest, AnEntryOfWeightZeroIsNotChosenEvenByADrawOfZero) {
  const ScriptedGenerator generator({0.0});
  Group none("none", 0, 0.0);
  Group some("some", 0, 0.5);
  EventList list(3);
  insert(list, 2.0, none);
  insert(list, 2.0, some);
  EXPECT_EQ(nameOfEarliest(list), "some");
}

TEST(EventListTest, WeightsAreSummedBeforeTheDrawAndAskedAgainUpToTheChosenEntry) {
  support::CallLog log;
  std::deque<Group> groups;
  EventList list(4);
  for (const char* const name : {"a", "b", "c"}) {
    insert(list, 1.0, groups.emplace_back(name));
  }
  for (Group& group : groups) {
    group.log = &log;
  }
  ScriptedGenerator generator({0.5}, &log);
  EXPECT_EQ(nameOfEarliest(list), "b");
  log.erase(std::remove_if(log.begin(), log.end(), [](const std::string& call) { return call.ends_with(".Rank"); }),
            log.end());
  EXPECT_THAT(log, ElementsAre("a.Weight", "b.Weight", "c.Weight", "draw", "a.Weight", "b.Weight"));
}

/// Seven events at equal times fill the array in their order of insertion. The walk takes each event before those under
/// it: 0, 1, 3, 4, 2, 5, 6; with weight 1 each, a draw of (k + 0.5) / 7 chooses its entry k.
TEST(EventListTest, TiesAreWeighedEachBeforeThoseUnderItLeftBeforeRight) {
  std::vector<double> numbers;
  for (int k = 0; k < 7; ++k) {
    numbers.push_back((k + 0.5) / 7.0);
  }
  const ScriptedGenerator generator(numbers);
  std::deque<Group> groups;
  EventList list(8);
  for (const char* const name : {"0", "1", "2", "3", "4", "5", "6"}) {
    insert(list, 1.0, groups.emplace_back(name));
  }
  std::vector<std::string> chosen;
  for (int k = 0; k < 7; ++k) {
    chosen.push_back(nameOfEarliest(list));
  }
  EXPECT_THAT(chosen, ElementsAre("0", "1", "3", "4", "2", "5", "6"));
}

/// Slot 1 is later than the root, so that nothing under it is looked at; slots 2, 5 and 6 tie with the root.
TEST(EventListTest, WhatHangsUnderALaterEventIsNotLookedAt) {
  support::CallLog log;
  const std::array<double, 7> times{1.0, 2.0, 1.0, 2.0, 2.0, 1.0, 1.0};
  std::deque<Group> groups;
  EventList list(8);
  for (std::size_t i = 0; i < times.size(); ++i) {
    insert(list, times[i], groups.emplace_back(std::to_string(i).c_str()));
  }
  for (Group& group : groups) {
    group.log = &log;
  }
  ScriptedGenerator generator({0.99}, &log);
  EXPECT_EQ(nameOfEarliest(list), "6");
  EXPECT_THAT(log, testing::Not(testing::Contains(testing::AnyOf(testing::StartsWith("1."), testing::StartsWith("3."),
                                                                 testing::StartsWith("4.")))));
}

TEST(EventListTest, ATieOfZeroWeightsReadsTheEntryThatAnEarlierTieLeft) {
  const ScriptedGenerator generator({0.99, 0.0});
  Group a("a");
  Group b("b");
  Group c("c");
  EventList list(4);
  insert(list, 1.0, a);
  insert(list, 1.0, b);
  insert(list, 1.0, c);
  EXPECT_EQ(nameOfEarliest(list), "c");  // the work array now holds the slots 0, 1, 2

  a.weight = 0.0;
  b.weight = 0.0;
  (*c.address.event)->exec_time = 5.0;
  list.ModifyKey(c.address.event);
  EXPECT_EQ(nameOfEarliest(list), "c") << "two entries tie, and the third is read";
}

TEST(EventListTest, ATieOfZeroWeightsMayReadAnEmptySlot) {
  const ScriptedGenerator generator({0.99, 0.0});
  Group a("a");
  Group b("b");
  Group c("c");
  EventList list(4);
  insert(list, 1.0, a);
  insert(list, 1.0, b);
  insert(list, 1.0, c);
  Event** const third = list.Earliest();
  list.Remove(third);
  a.weight = 0.0;
  b.weight = 0.0;
  EXPECT_EQ(list.Earliest(), third);
  EXPECT_EQ(*third, nullptr);
}

TEST(EventListTest, ATieOfZeroWeightsInANewListReadsTheRoot) {
  const ScriptedGenerator generator({0.0});
  Group a("a", 0, 0.0);
  Group b("b", 0, 0.0);
  EventList list(3);
  insert(list, 1.0, a);
  insert(list, 1.0, b);
  EXPECT_EQ(nameOfEarliest(list), "a");
}

/// 5; 3 over 5; 8 stays; 1 rises past 5 and 3.
TEST(EventListTest, InsertPutsAnEventWhereItRisesToFromTheEnd) {
  std::deque<Group> groups;
  EventList list(5);
  for (const int time : {5, 3, 8, 1}) {
    insert(list, time, groups.emplace_back(std::to_string(time).c_str()));
  }
  EXPECT_THAT(layoutOf(list), ElementsAre("1", "3", "8", "5"));
}

TEST(EventListTest, AnEqualEventDoesNotRise) {
  Group a("a");
  Group b("b");
  EventList list(4);
  insert(list, 1.0, a);
  insert(list, 1.0, b);
  EXPECT_THAT(layoutOf(list), ElementsAre("a", "b"));
}

/// The last event, d, takes the root's place; of the equal children b and c the left one rises.
TEST(EventListTest, AmongEqualChildrenTheLeftOneRises) {
  Group a("a");
  Group b("b");
  Group c("c");
  Group d("d");
  EventList list(5);
  insert(list, 1.0, a);
  insert(list, 2.0, b);
  insert(list, 2.0, c);
  insert(list, 3.0, d);
  list.Remove(a.address.event);
  EXPECT_THAT(layoutOf(list), ElementsAre("b", "d", "c"));
}

TEST(EventListTest, RemovingTheLastSlotMovesNothing) {
  Group a("a");
  Group b("b");
  Group c("c");
  EventList list(4);
  insert(list, 1.0, a);
  insert(list, 2.0, b);
  insert(list, 3.0, c);
  list.Remove(c.address.event);
  EXPECT_THAT(layoutOf(list), ElementsAre("a", "b"));
  EXPECT_EQ(c.address.event, nullptr);
  EXPECT_EQ(*EventListProbe::slot(list, 2), nullptr);
  EXPECT_EQ(EventListProbe::faultOf(list), 0);
}

TEST(EventListTest, RemovingTheOnlyEventLeavesAnEmptyRoot) {
  Group a("a");
  EventList list(2);
  insert(list, 1.0, a);
  list.Remove(list.Earliest());
  EXPECT_EQ(EventListProbe::sizeOf(list), 0);
  EXPECT_EQ(*EventListProbe::slot(list, 0), nullptr);
  EXPECT_EQ(a.address.event, nullptr);
  EXPECT_EQ(list.Earliest(), nullptr);
}

/// In  1 / 10 2 / 11 12 3 4  the removal of 12 puts 4 under 10, over which it rises.
TEST(EventListTest, TheEventThatFillsAGapRisesWhereItMust) {
  std::deque<Group> groups;
  EventList list(8);
  for (const int time : {1, 10, 2, 11, 12, 3, 4}) {
    insert(list, time, groups.emplace_back(std::to_string(time).c_str()));
  }
  list.Remove(groups[4].address.event);
  EXPECT_THAT(layoutOf(list), ElementsAre("1", "4", "2", "11", "10", "3"));
  EXPECT_EQ(EventListProbe::faultOf(list), 0);
}

TEST(EventListTest, RemoveByBackPointerRemovesThatGroupsEvent) {
  Group a("a");
  Group b("b");
  EventList list(3);
  insert(list, 1.0, a);
  insert(list, 2.0, b);
  list.Remove(static_cast<void*>(&a.address));
  EXPECT_THAT(layoutOf(list), ElementsAre("b"));
  EXPECT_EQ(b.address.event, EventListProbe::slot(list, 0));
}

TEST(EventListTest, RemoveLeavesTheReactivationPlaceAlone) {
  Group a("a");
  EventList list(2);
  insert(list, 1.0, a);
  std::list<BaseActionClass*> watched{&a};
  a.address.setReact(watched.begin());
  list.Remove(a.address.event);
  EXPECT_EQ(a.address.event, nullptr);
  EXPECT_FALSE(a.address.isReactNull());
}

TEST(EventListTest, ModifyKeyMovesAnEventUpAndDown) {
  Group a("a");
  Group b("b");
  Group c("c");
  EventList list(4);
  insert(list, 1.0, a);
  insert(list, 2.0, b);
  insert(list, 3.0, c);

  (*c.address.event)->exec_time = 0.5;
  list.ModifyKey(c.address.event);
  EXPECT_THAT(layoutOf(list), ElementsAre("c", "b", "a"));

  (*c.address.event)->exec_time = 9.0;
  list.ModifyKey(c.address.event);
  EXPECT_THAT(layoutOf(list), ElementsAre("a", "b", "c"));
  EXPECT_EQ(EventListProbe::faultOf(list), 0);
}

TEST(EventListTest, ClearingForgetsEveryEventAndEveryReactivationPlaceOfItsGroups) {
  Group a("a");
  Group b("b");
  EventList list(4);
  insert(list, 1.0, a);
  insert(list, 2.0, b);
  std::list<BaseActionClass*> watched{&b};
  b.address.setReact(watched.begin());
  list.ClearEventList();
  for (const Group* const group : {&a, &b}) {
    EXPECT_EQ(group->address.event, nullptr);
    EXPECT_TRUE(group->address.isReactNull());
  }
  EXPECT_EQ(list.Earliest(), nullptr);
  EXPECT_EQ(EventListProbe::freeRecords(list), 4U);
  EXPECT_EQ(EventListProbe::faultOf(list), 0);
}

TEST(EventListTest, TheDestructorClearsTheBackPointersOfWhatIsPending) {
  Group a("a");
  {
    EventList list(2);
    insert(list, 1.0, a);
    ASSERT_NE(a.address.event, nullptr);
  }
  EXPECT_EQ(a.address.event, nullptr);
}

TEST(EventListTest, TheRecordFreedLastIsUsedFirst) {
  Group a("a");
  Group b("b");
  Group c("c");
  EventList list(4);
  insert(list, 1.0, a);
  insert(list, 2.0, b);
  const Event* const ofA = *a.address.event;
  const Event* const ofB = *b.address.event;
  list.Remove(a.address.event);
  list.Remove(b.address.event);
  insert(list, 1.0, c);
  insert(list, 2.0, a);
  EXPECT_EQ(*c.address.event, ofB);
  EXPECT_EQ(*a.address.event, ofA);
}

TEST(EventListTest, AListOfOneMoreThanTheGroupsIsNeverExhausted) {
  constexpr int kGroups = 100;
  std::deque<Group> groups;
  EventList list(kGroups + 1);
  for (int i = 0; i < kGroups; ++i) {
    insert(list, 1.0, groups.emplace_back("group"));
  }
  EXPECT_EQ(EventListProbe::freeRecords(list), 1U);
  EXPECT_EQ(EventListProbe::faultOf(list), 0);
}

TEST(EventListTest, PrintListWritesTheHeapInArrayOrder) {
  Group a("serve");
  Group b("arrive");
  EventList list(4);
  insert(list, 2.5, a, 0.5);
  insert(list, 1.25, b, 1.0);
  std::ostringstream out;
  list.PrintList(out);
  EXPECT_EQ(out.str(),
            "------------------Event List-----------------\n"
            "(arrive) 1 --> 1.25\n"
            "(serve) 0.5 --> 2.5\n"
            "---------------------------------------------\n"
            "\n");
  EXPECT_THAT(support::linesHeldBack(out, [&] { list.PrintList(out); }), testing::IsEmpty());
}

/// Three events in slots 0 to 2 of a list of four, and a way to break it.
class EventListFaultTest : public testing::Test {
 protected:
  EventListFaultTest() {
    insert(list, 1.0, a);
    insert(list, 2.0, b);
    insert(list, 3.0, c);
  }

  ~EventListFaultTest() override { list.ClearEventList(); }

  int fault() { return EventListProbe::faultOf(list); }

  Group a{"a"};
  Group b{"b"};
  Group c{"c"};
  EventList list{4};
};

TEST_F(EventListFaultTest, ASoundHeapHasNone) {
  EXPECT_EQ(fault(), 0);
}

TEST_F(EventListFaultTest, AnEarlierLeftChildShowsAsTwiceTheIndexPlusOne) {
  (*b.address.event)->exec_time = 0.5;
  EXPECT_EQ(fault(), 1);
}

TEST_F(EventListFaultTest, AnEarlierRightChildShowsAsTwiceTheNextIndex) {
  (*c.address.event)->exec_time = 0.5;
  EXPECT_EQ(fault(), 2);
}

TEST_F(EventListFaultTest, AWrongBackPointerShowsAboveAHundredThousand) {
  Event** const right = b.address.event;
  b.address.event = a.address.event;
  EXPECT_EQ(fault(), 100001);
  b.address.event = right;
}

TEST_F(EventListFaultTest, AFilledSlotBeyondTheEventsShowsAsItsIndex) {
  *EventListProbe::slot(list, 3) = *a.address.event;
  EXPECT_EQ(fault(), 3);
  *EventListProbe::slot(list, 3) = nullptr;
}

TEST_F(EventListFaultTest, AFreeRecordInTheHeapShowsAsMinusItsIndex) {
  EventListProbe::freeTwice(list, *c.address.event);
  EXPECT_EQ(fault(), -2);
}

TEST(EventListTest, NothingIsAllocatedAfterConstruction) {
  constexpr int kGroups = 50;
  const ScriptedGenerator generator(std::vector<double>(kGroups, 0.5));
  std::deque<Group> groups;
  for (int i = 0; i < kGroups; ++i) {
    groups.emplace_back("group");
  }
  EventList list(kGroups + 1);
  const std::size_t before = support::allocations();
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < kGroups; ++i) {
      insert(list, i % 7, groups[static_cast<std::size_t>(i)]);
    }
    for (int i = 0; i < kGroups / 2; ++i) {
      list.Remove(list.Earliest());
    }
    list.ClearEventList();
  }
  EXPECT_EQ(support::allocations(), before);
}

/// A list of what is pending, slow and obviously right.
class PendingTable {
 public:
  struct Row {
    double time;
    int rank;
    const Group* group;
  };

  void insert(double time, const Group& group) { rows_.push_back({time, group.rank, &group}); }
  void remove(const Group& group) {
    rows_.erase(std::find_if(rows_.begin(), rows_.end(), [&](const Row& row) { return row.group == &group; }));
  }
  [[nodiscard]] bool empty() const { return rows_.empty(); }
  [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }
  [[nodiscard]] Row earliest() {
    std::sort(rows_.begin(), rows_.end(),
              [](const Row& x, const Row& y) { return std::tuple(x.time, -x.rank) < std::tuple(y.time, -y.rank); });
    return rows_.front();
  }

 private:
  std::vector<Row> rows_;
};

/// Times and ranks out of few values, so that ties are common; removal, new times and clearing at random.
TEST(EventListTest, TenThousandRandomStepsAgreeWithATable) {
  constexpr int kGroups = 40;
  std::mt19937 random(20240607);
  const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  std::vector<double> numbers;
  for (int i = 0; i < 20000; ++i) {
    numbers.push_back(below(1000) / 1000.0);
  }
  const ScriptedGenerator generator(numbers);
  PendingTable table;
  std::deque<Group> groups;
  for (int i = 0; i < kGroups; ++i) {
    groups.emplace_back("group", static_cast<int>(below(3)));
  }

  EventList list(kGroups + 1);
  for (int step = 0; step < 10000; ++step) {
    SCOPED_TRACE("step " + std::to_string(step));
    Group& group = groups[below(kGroups)];
    const double time = below(12);
    switch (below(20)) {
      case 0:
        if (below(20) == 0) {
          list.ClearEventList();
          table = PendingTable();
        }
        break;
      case 1:
      case 2:
      case 3:
        if (!table.empty()) {
          Event** const slot = list.Earliest();
          table.remove(static_cast<const Group&>(*(*slot)->action_ptr));
          list.Remove(slot);
        }
        break;
      default:
        if (group.address.event == nullptr) {
          insert(list, time, group);
          table.insert(time, group);
        } else if (below(2) == 0) {
          list.Remove(group.address.event);
          table.remove(group);
        } else {
          (*group.address.event)->exec_time = time;
          list.ModifyKey(group.address.event);
          table.remove(group);
          table.insert(time, group);
        }
    }
    ASSERT_EQ(EventListProbe::faultOf(list), 0);
    ASSERT_EQ(static_cast<std::size_t>(EventListProbe::sizeOf(list)), table.rows().size());
    for (const PendingTable::Row& row : table.rows()) {
      ASSERT_NE(row.group->address.event, nullptr);
      ASSERT_EQ((*row.group->address.event)->action_ptr, row.group);
      ASSERT_EQ((*row.group->address.event)->exec_time, row.time);
    }
    Event** const earliest = list.Earliest();
    ASSERT_EQ(earliest == nullptr, table.empty());
    if (earliest != nullptr) {
      const PendingTable::Row expected = table.earliest();
      ASSERT_EQ((*earliest)->exec_time, expected.time);
      ASSERT_EQ(static_cast<const Group&>(*(*earliest)->action_ptr).rank, expected.rank);
    }
  }
}

/// Long enough for the walks of Remove to look ahead, in the nearer and in the farther way.
TEST(EventListTest, LongListsGiveTheirEventsInTheOrderOfTime) {
  for (const int events : {600, 20000}) {
    std::deque<Group> groups;
    EventList list(events + 1);
    for (int i = 0; i < events; ++i) {
      insert(list, static_cast<double>(std::int64_t{7919} * i % events), groups.emplace_back("group"));  // each once
    }
    ASSERT_EQ(EventListProbe::faultOf(list), 0);
    for (int i = 0; i < events; ++i) {
      Event** const earliest = list.Earliest();
      ASSERT_EQ((*earliest)->exec_time, i);
      list.Remove(earliest);
    }
    EXPECT_EQ(list.Earliest(), nullptr);
  }
}

}  // namespace
