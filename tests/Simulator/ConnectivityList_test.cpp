#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "BaseClasses/PostselectGroup.h"
#include "Simulator/EngineTest.h"
#include "support/FlushWatch.h"

namespace {

using support::chainOf;
using support::EnvironmentGuard;
using support::HandActivity;
using support::HandModel;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::KilledBySignal;
using testing::UnorderedElementsAre;

/// `a` changes q, then p; `b` is enabled by p and by q, `c` by q alone; `d` touches nothing.
class ConnectivityListTest : public support::EngineTest {
 protected:
  ConnectivityListTest() {
    useModel([this](HandModel& model) {
      Place& p = model.addPlace("p");
      Place& q = model.addPlace("q");
      a = &model.addActivity("a", {}, {&q, &p});
      c = &model.addActivity("c", {&q}, {});
      b = &model.addActivity("b", {&p, &q}, {});
      d = &model.addActivity("d");
    });
  }

  HandActivity* a = nullptr;  // these four borrowed from the model
  HandActivity* b = nullptr;
  HandActivity* c = nullptr;
  HandActivity* d = nullptr;
};

/// Forward from a: a itself; q enables c and b; p enables b, which is known. Head insertion turns that round.
TEST_F(ConnectivityListTest, TheCurrentBuilderChainsInReverseOrderOfDiscoveryOwnGroupLast) {
  start();
  EXPECT_THAT(chainOf(*a), ElementsAre("b", "c", "a"));
  EXPECT_THAT(chainOf(*b), ElementsAre("b"));
  EXPECT_THAT(chainOf(*c), ElementsAre("c"));
  EXPECT_THAT(chainOf(*d), ElementsAre("d"));
}

/// Backward: a itself; then c through q; then b through p, and through q again.
TEST_F(ConnectivityListTest, SimtestZeroChainsInOrderOfDiscoveryOwnGroupFirst) {
  const EnvironmentGuard guard("SIMTEST", "0");
  start();
  EXPECT_THAT(chainOf(*a), ElementsAre("a", "c", "b"));
  EXPECT_THAT(chainOf(*d), ElementsAre("d"));
}

TEST_F(ConnectivityListTest, SimtestOneChainsTheSameBackwardWalkByHeadInsertion) {
  const EnvironmentGuard guard("SIMTEST", "1");
  start();
  EXPECT_THAT(chainOf(*a), ElementsAre("b", "c", "a"));
  EXPECT_THAT(chainOf(*d), ElementsAre("d"));
}

/// With the order of the variables turned, the forward walk meets b before c; the backward one does not care.
TEST_F(ConnectivityListTest, ForwardAndBackwardWalksOrderAChainDifferently) {
  useModel([this](HandModel& model) {
    Place& p = model.addPlace("p");
    Place& q = model.addPlace("q");
    a = &model.addActivity("a", {}, {&p, &q});
    c = &model.addActivity("c", {&q}, {});
    b = &model.addActivity("b", {&p}, {});
  });
  start();
  EXPECT_THAT(chainOf(*a), ElementsAre("c", "b", "a"));

  simulator->DestructConnectivityList();
  const EnvironmentGuard guard("SIMTEST", "1");
  simulator->GenerateConnectivityListOld();
  EXPECT_THAT(chainOf(*a), ElementsAre("b", "c", "a"));
}

TEST_F(ConnectivityListTest, SimtestTwoIsTheCurrentBuilder) {
  const EnvironmentGuard guard("SIMTEST", "2");
  start();
  EXPECT_THAT(chainOf(*a), ElementsAre("b", "c", "a"));
}

TEST_F(ConnectivityListTest, AnyOtherSimtestBuildsNoChain) {
  for (const char* const value : {"3", "7", "-1"}) {
    const EnvironmentGuard guard("SIMTEST", value);
    start();
    EXPECT_THAT(chainOf(*a), IsEmpty()) << value;
    simulator.reset();
  }
}

TEST_F(ConnectivityListTest, ASimtestThatIsNoNumberReadsAsZero) {
  const EnvironmentGuard guard("SIMTEST", "fast");
  start();
  EXPECT_THAT(chainOf(*a), ElementsAre("a", "c", "b"));
}

TEST_F(ConnectivityListTest, TheEarlierBuilderCalledDirectlyReadsNoSimtestAsOne) {
  start();
  simulator->DestructConnectivityList();
  EXPECT_EQ(simulator->GenerateConnectivityListOld(), 0);
  EXPECT_THAT(chainOf(*a), ElementsAre("b", "c", "a"));
}

TEST_F(ConnectivityListTest, MembersOfAGroupHaveChainsOfTheirOwnThatHoldTheirGroup) {
  HandActivity* stay = nullptr;
  HandActivity* go = nullptr;
  HandActivity* back = nullptr;
  useModel([&](HandModel& model) {
    Place& there = model.addPlace("there");
    Place& here = model.addPlace("here");
    stay = &model.addMember("stay", {&here}, {});
    go = &model.addMember("go", {&here}, {&there});
    model.addGroup<PostselectGroup>("choice", {stay, go});
    back = &model.addActivity("back", {&there}, {&here});
  });
  for (const char* const value : {"0", "1", "2"}) {
    const EnvironmentGuard guard("SIMTEST", value);
    SCOPED_TRACE(value);
    start();
    EXPECT_THAT(chainOf(*stay), ElementsAre("choice"));
    EXPECT_THAT(chainOf(*go), UnorderedElementsAre("choice", "back"));
    EXPECT_THAT(chainOf(*back), UnorderedElementsAre("back", "choice")) << "once, though it enables two members";
    simulator.reset();
  }
}

std::string numbered(const char* prefix, int number) {
  std::string name = prefix;
  name += std::to_string(number);
  return name;
}

/// Activities by the residue of the places they touch: enough of them to meet every kind of duplicate.
TEST_F(ConnectivityListTest, TheThreeWaysReachTheSameRelation) {
  std::vector<HandActivity*> activities;
  useModel([&](HandModel& model) {
    constexpr int kPlaces = 12;
    std::vector<Place*> places;
    for (int i = 0; i < kPlaces; ++i) {
      places.push_back(&model.addPlace(numbered("p", i).c_str()));
    }
    activities.clear();
    const auto place = [&](int i) { return places[static_cast<std::size_t>(i % kPlaces)]; };
    for (int i = 0; i < 30; ++i) {
      activities.push_back(&model.addActivity(numbered("a", i).c_str(), {place(i), place(5 * i + 1)},
                                              {place(3 * i), place(7 * i + 2), place(i + 4)}));
    }
  });
  std::vector<std::vector<std::string>> expected;
  for (const char* const value : {"0", "1", "2"}) {
    const EnvironmentGuard guard("SIMTEST", value);
    start();
    std::vector<std::vector<std::string>> chains;
    for (const HandActivity* const activity : activities) {
      chains.push_back(chainOf(*activity));
      std::sort(chains.back().begin(), chains.back().end());
    }
    if (expected.empty()) {
      // By hand: a0 changes p0, p2 and p4; those are read by the activities i with i or 5i + 1 among them, modulo 12.
      EXPECT_THAT(chains[0], UnorderedElementsAre("a0", "a12", "a24", "a2", "a14", "a26", "a4", "a16", "a28", "a7",
                                                  "a19", "a5", "a17", "a29", "a3", "a15", "a27"));
      expected = chains;
    }
    EXPECT_EQ(chains, expected) << "SIMTEST=" << value;
    simulator.reset();
  }
}

TEST_F(ConnectivityListTest, AModelWithoutActionsBuildsNothing) {
  useModel([](HandModel& model) { model.addPlace("p"); });
  start();
  EXPECT_EQ(simulator->GenerateConnectivityList(), 0);
  EXPECT_EQ(simulator->GenerateConnectivityListOld(), 0);
}

TEST_F(ConnectivityListTest, DestructionLeavesEveryChainEmpty) {
  start();
  simulator->DestructConnectivityList();
  for (const HandActivity* const activity : {a, b, c, d}) {
    EXPECT_EQ(activity->Affects, nullptr);
  }
}

TEST_F(ConnectivityListTest, ClearingFreesTheChainOfOneActionAlone) {
  start();
  simulator->ClearActionAffectsList(a);
  EXPECT_EQ(a->Affects, nullptr);
  EXPECT_THAT(chainOf(*b), ElementsAre("b"));
}

TEST_F(ConnectivityListTest, AdditionPutsAGroupAtTheHeadEvenWhenItIsThere) {
  start();
  EXPECT_EQ(simulator->AddActionAffects(d, b), 0);
  EXPECT_EQ(simulator->AddActionAffects(d, b), 0);
  EXPECT_THAT(chainOf(*b), ElementsAre("d", "d", "b"));
}

TEST_F(ConnectivityListTest, TheEarlierAdditionPutsAGroupAtTheTailUnlessItIsThere) {
  start();
  simulator->ClearActionAffectsList(b);
  EXPECT_EQ(simulator->AddActionAffectsOld(c, b), 0) << "to an empty chain";
  EXPECT_EQ(simulator->AddActionAffectsOld(d, b), 0);
  EXPECT_EQ(simulator->AddActionAffectsOld(c, b), 0);
  EXPECT_EQ(simulator->AddActionAffectsOld(d, b), 0);
  EXPECT_THAT(chainOf(*b), ElementsAre("c", "d"));
}

TEST_F(ConnectivityListTest, BothAdditionsHaveADebugLineAboveLevelThree) {
  start();
  const auto outputAtLevel = [this](int level) {
    const support::DebugLevelGuard guard(level);
    return support::standardOutputOf([this] {
      simulator->AddActionAffects(d, b);
      simulator->AddActionAffectsOld(d, b);
    });
  };
  EXPECT_EQ(outputAtLevel(4), "** AddActionAffects on b\n** AddActionAffects on b\n");
  EXPECT_EQ(outputAtLevel(3), "");
}

TEST_F(ConnectivityListTest, PrintingShowsEachActionAndWhatItAffects) {
  useModel([this](HandModel& model) {
    Place& p = model.addPlace("p");
    a = &model.addActivity("a", {}, {&p});
    b = &model.addActivity("b", {&p}, {});
  });
  start();
  BaseActionClass homeless;
  simulator->AddActionAffects(&homeless, b);
  const std::string model = "model(" + std::to_string(static_cast<BaseModelClass*>(a->TheModel)->getId()) + ")->";
  const std::string ofA = model + "a (" + std::to_string(a->getID()) + ")\n";
  const std::string ofB = model + "b (" + std::to_string(b->getID()) + ")\n";
  const std::string ofHomeless = "Unknown Model(0)->default (" + std::to_string(homeless.getID()) + ")\n";
  std::ostringstream out;
  simulator->PrintConnectivityList(&out);
  EXPECT_EQ(out.str(), "Action: " + ofA + "Checking my Affects\n" + "    " + ofB + "    " + ofA +  //
                           "Action: " + ofB + "Checking my Affects\n" + "    " + ofHomeless + "    " + ofB);
  EXPECT_THAT(support::linesHeldBack(out, [&] { simulator->PrintConnectivityList(&out); }), testing::IsEmpty());
}

TEST_F(ConnectivityListTest, PrintingAnEmptyChainAborts) {
  start();
  simulator->DestructConnectivityList();
  std::ostringstream out;
  EXPECT_EXIT(simulator->PrintConnectivityList(&out), KilledBySignal(SIGABRT),
              support::assertionIn("AddActionAffects.cpp"));
}

TEST_F(ConnectivityListTest, AGroupNumberThatNoGroupHasEndsTheRun) {
  start();
  for (const int number : {4, -1}) {
    b->GroupID = number;
    EXPECT_EXIT(simulator->GenerateConnectivityList(), ExitedWithCode(1),
                "^ERROR: action \"b\" belongs to group " + std::to_string(number) + "; the model has groups 0 to 3\n$");
  }
}

}  // namespace
