// Sharing over three levels: atomic models under a rep, reps under a join or a rep.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "BaseClasses/state/TestVariables.h"
#include "Composer/TestModels.h"

namespace {

using testing::ElementsAre;
using testing_support::AddOneActivity;
using testing_support::Children;
using testing_support::childrenOf;
using testing_support::imageOf;
using testing_support::Leaf;
using testing_support::Member;
using testing_support::Message;
using testing_support::Message_state;
using testing_support::MessageArray;
using testing_support::sharedOf;
using testing_support::SharedVariable;
using testing_support::TestJoin;
using testing_support::TestRep;

/// The shared variables of one atomic model: a place, a struct and an array of structs.
struct Unit {
  Place* count = nullptr;
  Message* message = nullptr;
  MessageArray* table = nullptr;
  Place* own = nullptr;
  AddOneActivity* action = nullptr;
};

std::unique_ptr<Leaf> makeUnit(const char* name, int number, Unit& unit) {
  auto leaf = std::make_unique<Leaf>(name);
  unit.own = leaf->add<Place>("own", static_cast<short>(number));
  unit.count = leaf->add<Place>("count", static_cast<short>(10 + number));
  unit.message = leaf->add<Message>("message", "", Message_state{20 + number, 30 + number});
  unit.table = leaf->add<MessageArray>("table", 2);
  unit.table->Index(1)->EoA->setMark(40 + number);
  unit.action = leaf->addActivity("fire", unit.count);
  leaf->finish();
  leaf->AddAffectArc(unit.message, unit.action);
  leaf->AddEnableArc(unit.table, unit.action);
  return leaf;
}

/// New variables of one composer, with no members yet, in the order count, message, table.
std::vector<SharedVariable> newShared() {
  return sharedOf(SharedVariable{std::make_unique<Place>("count"), {}},
                  SharedVariable{std::make_unique<Message>("message"), {}},
                  SharedVariable{std::make_unique<MessageArray>("table", 2), {}});
}

Unit unitOf(const std::vector<SharedVariable>& shared) {
  Unit unit;
  unit.count = static_cast<Place*>(shared[0].variable.get());
  unit.message = static_cast<Message*>(shared[1].variable.get());
  unit.table = static_cast<MessageArray*>(shared[2].variable.get());
  return unit;
}

void addMembers(std::vector<SharedVariable>& shared, std::size_t child, const Unit& unit) {
  shared[0].members.push_back({child, unit.count});
  shared[1].members.push_back({child, unit.message});
  shared[2].members.push_back({child, unit.table});
}

/// A rep of units, numbered from `firstNumber`.
std::unique_ptr<TestRep> makeRep(const char* name, int count, int firstNumber, std::vector<Unit>& units, Unit& own) {
  Children replicas;
  auto shared = newShared();
  own = unitOf(shared);
  for (int i = 0; i < count; i++) {
    Unit unit;
    replicas.push_back(makeUnit("unit", firstNumber + i, unit));
    addMembers(shared, static_cast<std::size_t>(i), unit);
    units.push_back(unit);
  }
  return std::make_unique<TestRep>(name, "unit", std::move(replicas), std::move(shared));
}

void append(std::vector<unsigned char>& image, int value, int bytes) {
  for (int i = 0; i < bytes; i++) {
    image.push_back(static_cast<unsigned char>(value >> (8 * i)));
  }
}

/// Image of the table of two messages whose last value is `last` and the others 0.
void appendTable(std::vector<unsigned char>& image, int last) {
  for (const int value : {0, 0, 0, last}) {
    append(image, value, 4);
  }
}

/// Two units under a rep, and a lone unit beside it under a join that shares everything again.
class RepInJoinTest : public testing::Test {
 protected:
  RepInJoinTest() {
    auto rep = makeRep("fleet", 2, 1, units_, repOwn_);
    rep_ = rep.get();
    Unit lone;
    auto leaf = makeUnit("lone", 7, lone);
    units_.push_back(lone);
    auto shared = newShared();
    top_ = unitOf(shared);
    addMembers(shared, 0, repOwn_);
    addMembers(shared, 1, lone);
    join_ = std::make_unique<TestJoin>("join", childrenOf(std::move(rep), std::move(leaf)), std::move(shared));
  }

  std::vector<Unit> units_;  // two replicas, then the lone one
  Unit repOwn_;
  Unit top_;
  TestRep* rep_ = nullptr;
  std::unique_ptr<TestJoin> join_;
};

TEST_F(RepInJoinTest, TheWholeRingBelowMovesToTheTopVariable) {
  for (const Unit& unit : {units_[0], units_[1], units_[2], repOwn_}) {
    EXPECT_EQ(unit.count->getPointer(), top_.count->getPointer());
    EXPECT_EQ(unit.message->EoA->getPointer(), top_.message->EoA->getPointer());
    EXPECT_EQ(unit.table->Index(1)->EoA->getPointer(), top_.table->Index(1)->EoA->getPointer());
    EXPECT_FALSE(unit.count->getStored());
    EXPECT_FALSE(unit.message->getStored());
    EXPECT_TRUE(unit.table->getStored());
  }
  EXPECT_TRUE(top_.count->getStored());
  EXPECT_TRUE(top_.message->getStored());
  EXPECT_EQ(units_[1].count->getLeader(), repOwn_.count);
  EXPECT_EQ(repOwn_.count->getLeader(), top_.count);
}

TEST_F(RepInJoinTest, TheValuesOfTheChildSharedLastStay) {
  EXPECT_EQ(units_[0].count->getMark(), 17);
  EXPECT_EQ(units_[0].message->timestamp->getMark(), 27);
  EXPECT_EQ(units_[1].table->Index(1)->EoA->getMark(), 47);
}

TEST_F(RepInJoinTest, ASharedPlaceIsStoredOnceAtTheTopAndAnArrayInEveryModel) {
  std::vector<unsigned char> expected;
  for (const int own : {1, 2}) {  // replicas
    append(expected, own, 2);
    appendTable(expected, 47);
  }
  appendTable(expected, 47);  // the rep's array
  append(expected, 7, 2);     // the lone unit
  appendTable(expected, 47);
  append(expected, 17, 2);  // the join's own: place, message, array
  append(expected, 27, 4);
  append(expected, 37, 4);
  appendTable(expected, 47);
  EXPECT_EQ(imageOf(*join_), expected);
  EXPECT_EQ(join_->StateSize(), 2 * 18 + 16 + 18 + 2 + 8 + 16);
}

TEST_F(RepInJoinTest, AnImageBringsTheWholeMarkingBack) {
  auto image = imageOf(*join_);
  for (const Unit& unit : units_) {
    unit.count->setMark(100);
    unit.own->setMark(100);
    unit.message->setMark({100, 100});
    unit.table->Index(0)->setMark({100, 100});
  }
  join_->SetState(image.data());
  EXPECT_EQ(imageOf(*join_), image);
  EXPECT_EQ(units_[1].own->getMark(), 2);
  EXPECT_EQ(units_[1].message->EoA->getMark(), 37);
}

TEST_F(RepInJoinTest, AFiringAnywhereWritesTheOneMark) {
  for (const Unit& unit : units_) {
    unit.action->Fire();
  }
  EXPECT_EQ(top_.count->getMark(), 17 + 3);
}

TEST_F(RepInJoinTest, TheActionsNameTheTopVariablesLeavesAlone) {
  for (const Unit& unit : units_) {
    std::vector<BaseStateVariableClass*> affected;
    for (int i = 0; i < unit.action->getNumAffectedSVs(); i++) {
      affected.push_back(unit.action->getAffectedSV(i));
    }
    EXPECT_THAT(affected, ElementsAre(top_.count, top_.message->timestamp, top_.message->EoA));
    std::vector<BaseStateVariableClass*> enabling;
    for (int i = 0; i < unit.action->getNumEnablingSVs(); i++) {
      enabling.push_back(unit.action->getEnablingSV(i));
    }
    EXPECT_THAT(enabling, ElementsAre(top_.count, top_.table->Index(0)->timestamp, top_.table->Index(0)->EoA,
                                      top_.table->Index(1)->timestamp, top_.table->Index(1)->EoA));
  }
}

TEST_F(RepInJoinTest, EveryVariableOfARingSeesTheMergedActions) {
  for (const Unit& unit : {units_[0], units_[1], units_[2], repOwn_, top_}) {
    EXPECT_EQ(unit.count->getNumAffectingActions(), 3);
    EXPECT_EQ(unit.count->getNumEnabledActions(), 3);
    EXPECT_EQ(unit.message->getNumAffectingActions(), 3);
    EXPECT_EQ(unit.message->EoA->getNumAffectingActions(), 3);
    EXPECT_EQ(unit.table->Index(0)->getNumEnabledActions(), 3);
  }
  // The arrays themselves keep what was entered in them.
  EXPECT_EQ(units_[0].table->getNumEnabledActions(), 1);
  EXPECT_EQ(top_.table->getNumEnabledActions(), 0);
}

TEST_F(RepInJoinTest, TheTopVariableStandsForEveryVariableBelow) {
  for (const Unit& unit : {units_[0], units_[1], units_[2], repOwn_}) {
    EXPECT_EQ(join_->getMainSharedVariable(unit.count), top_.count);
    EXPECT_EQ(join_->getMainSharedVariable(unit.table), top_.table);
  }
  EXPECT_EQ(rep_->getMainSharedVariable(units_[0].count), repOwn_.count);
}

TEST_F(RepInJoinTest, AMergedGroupCountsOnceAtEachLevel) {
  EXPECT_EQ(rep_->getNumStateVariables(), 2 * 4 - 3 * 2 + 3);
  EXPECT_EQ(join_->getNumStateVariables(), (5 + 4) - 3 * 2 + 3);
}

TEST_F(RepInJoinTest, TheGlobalActionsOfAReplicaAreThoseThatTouchSharedVariables) {
  // The struct of a replica borrows its lists, which must be those of the top after two rounds of sharing.
  base_action_list_t actions;
  rep_->GetChild(0)->GetGlobalActions(actions);
  EXPECT_THAT(std::vector<BaseActionClass*>(actions.begin(), actions.end()), ElementsAre(units_[0].action));
}

/// Two reps of two units each under a rep that shares everything again.
TEST(RepInRepTest, ReplicasOfRepsShareOneVariableAndAreSortedAtEachLevel) {
  std::vector<Unit> units;
  Unit firstOwn;
  Unit secondOwn;
  Children reps;
  reps.push_back(makeRep("inner", 2, 5, units, firstOwn));
  reps.push_back(makeRep("inner", 2, 1, units, secondOwn));
  auto shared = newShared();
  const Unit top = unitOf(shared);
  addMembers(shared, 0, firstOwn);
  addMembers(shared, 1, secondOwn);
  TestRep outer("outer", "middle", std::move(reps), std::move(shared));

  EXPECT_STREQ(outer.GetChild(0)->getName(), "middle");
  EXPECT_STREQ(outer.GetChild(0)->GetChild(1)->getName(), "unit");
  EXPECT_EQ(outer.SubmodelStateSize, 2 * 18 + 16);
  EXPECT_EQ(outer.StateSize(), 2 * outer.SubmodelStateSize + 2 + 8 + 16);
  for (const Unit& unit : units) {
    EXPECT_EQ(unit.count->getPointer(), top.count->getPointer());
    EXPECT_EQ(unit.message->getAffectingActions(), top.message->getAffectingActions());
    EXPECT_EQ(unit.count->getMark(), 15);
  }

  std::vector<unsigned char> expected;
  for (const int firstNumber : {1, 5}) {  // the second rep's image comes before the first's
    for (const int own : {firstNumber, firstNumber + 1}) {
      append(expected, own, 2);
      appendTable(expected, 45);
    }
    appendTable(expected, 45);
  }
  append(expected, 15, 2);
  append(expected, 25, 4);
  append(expected, 35, 4);
  appendTable(expected, 45);
  EXPECT_EQ(imageOf(outer), expected);

  outer.SetState(expected.data());
  EXPECT_EQ(units[0].own->getMark(), 1);
  EXPECT_EQ(units[3].own->getMark(), 6);
  units[2].action->Fire();
  EXPECT_EQ(top.count->getMark(), 16);
}

}  // namespace
