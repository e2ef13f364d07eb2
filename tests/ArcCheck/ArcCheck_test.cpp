#include "ArcCheck/ArcCheck.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "ArcCheck/AccessLog.h"
#include "ArcCheck/ArcsAreChecked.h"
#include "Composer/Join.h"
#include "Modelling/Modelling.h"
#include "support/TestVariable.h"

// Here the activities hand their accesses to the log themselves, so that the check can be looked at in every build. What
// it makes of whole models stands in Mistakes_test.cpp.

namespace {

using namespace modelling;
using support::AccessLog;
using support::ArcCheck;

short& reading(Place& place) {
  AccessLog::note(&place.Mark(), sizeof(short), false);
  return place.Mark();
}
short& changing(Place& place) {
  AccessLog::note(&place.Mark(), sizeof(short), true);
  return place.Mark();
}

/// Water flows in by itself, and drips out while there is room. The arcs from and to what is outside are left out.
class Valve : public AtomicModel {
 public:
  Valve() : AtomicModel("valve") {
    fill = &activity("fill").exponential(1.0).fires({in}, [this] { ++changing(in); });
    drip = &activity("drip")
                .enabledBy({in}, [this] { return reading(in) > 0 && reading(out) < 5; })
                .exponential(1.0)
                .fires({in}, [this] {
                  --changing(in);
                  ++changing(out);
                });
  }
  Variable<Place> in{*this, "in"};
  Variable<Place> out{*this, "out"};
  Activity* fill = nullptr;
  Activity* drip = nullptr;
};

const std::string kReadsOut =
    "ARCS: model \"valve\", activity \"drip\": Enabled reads \"out\" without an enabling arc; name it in enabledBy, or "
    "in "
    "a call of AddEnableArc\n";
const std::string kChangesOut =
    "ARCS: model \"valve\", activity \"drip\": Fire changes \"out\" without an affecting arc; name it in fires, or in "
    "a "
    "call of AddAffectArc\n";

TEST(ArcCheckTest, AllActivitiesAreAskedInEveryMarking) {
  Valve valve;
  std::ostringstream out;
  ArcCheck check(valve, out);
  EXPECT_EQ(out.str(), "");  // nothing is in, so that drip does not look at out
  EXPECT_EQ(check.watchFiring([&] { return valve.fill->Fire(); }), valve.fill);
  EXPECT_EQ(out.str(), kReadsOut);
  EXPECT_EQ(check.faults(), 1);
}

TEST(ArcCheckTest, AFaultIsToldOnce) {
  Valve valve;
  std::ostringstream out;
  ArcCheck check(valve, out);
  for (int i = 0; i < 3; ++i) {
    check.watchFiring([&] { return valve.fill->Fire(); });
    check.watchFiring([&] { return valve.drip->Fire(); });
  }
  EXPECT_EQ(out.str(), kReadsOut + kChangesOut);
  check.conclude();
  EXPECT_EQ(out.str(), kReadsOut + kChangesOut + "ARCS: 2 activities in 6 firings, 2 faults\n");
}

TEST(ArcCheckTest, ActivitiesKeepTheirLastTwoAnswers) {
  Valve valve;
  std::ostringstream out;
  valve.drip->NewEnabled = true;
  valve.drip->OldEnabled = true;
  ArcCheck check(valve, out);
  check.watchFiring([&] { return valve.fill->Fire(); });
  EXPECT_TRUE(valve.drip->NewEnabled);
  EXPECT_TRUE(valve.drip->OldEnabled);
  valve.drip->NewEnabled = false;
  check.watchFiring([&] { return valve.fill->Fire(); });
  EXPECT_FALSE(valve.drip->NewEnabled);
  EXPECT_TRUE(valve.drip->OldEnabled);
}

TEST(ArcCheckTest, AFiringOfNothingIsHandedOn) {
  Valve valve;
  std::ostringstream out;
  ArcCheck check(valve, out);
  EXPECT_EQ(check.watchFiring([] { return static_cast<BaseActionClass*>(nullptr); }), nullptr);
  EXPECT_EQ(check.faults(), 0);
}

TEST(ArcCheckTest, AVariableOfAKindOfItsOwnIsToldAsNotWatched) {
  support::TestVariable own("own");
  Valve valve;
  valve.addVariable(own);
  std::ostringstream out;
  const ArcCheck check(valve, out);
  EXPECT_EQ(out.str(), "ARCS: not watched: \"own\" of model \"valve\", which is of a kind of its own\n");
  EXPECT_EQ(check.faults(), 0);
}

/// Looks into a place that is none of its own.
class Onlooker : public AtomicModel {
 public:
  Onlooker() : AtomicModel("onlooker") {
    activity("look")
        .enabledBy({seen}, [this] { return seenFrom != nullptr && reading(*seenFrom) > 0; })
        .exponential(1.0)
        .fires({}, [] {});
  }
  Variable<Place> seen{*this, "seen"};
  Place* seenFrom = nullptr;
};

TEST(ArcCheckTest, AVariableOfAnotherModelIsToldWithItsOwner) {
  JoinModel top("top", {child<Valve>("valve"), child<Onlooker>("onlooker")});
  static_cast<Onlooker*>(top.GetChild(1))->seenFrom = &static_cast<Valve*>(top.GetChild(0))->in;
  std::ostringstream out;
  const ArcCheck check(top, out);
  EXPECT_EQ(out.str(),
            "ARCS: model \"top/onlooker\", activity \"look\": Enabled reads \"in\" of model \"top/valve\" without an "
            "enabling arc; name it in enabledBy, or in a call of AddEnableArc\n");
}

class Silent : public AtomicModel {
 public:
  Silent() : AtomicModel("silent") {
    activity("tick").enabledBy({mark}, [this] { return mark.Mark() > 0; }).exponential(1.0).fires({}, [] {});
  }
  Variable<Place> mark{*this, "mark"};
};

TEST(ArcCheckTest, ARunInWhichNoAccessIsSeenIsAFault) {
  if (support::kArcsAreChecked) {
    GTEST_SKIP() << "accesses of this test are seen";
  }
  Silent silent;
  std::ostringstream out;
  ArcCheck check(silent, out);
  check.conclude();
  EXPECT_EQ(out.str(),
            "ARCS: no access was seen: the model was compiled without QUORVA_CHECK_ARCS\n"
            "ARCS: 1 activities in 0 firings, 1 faults\n");
}

/// A join by hand, which shares `in` of one child, and calls a name that it makes no variable for.
class LoneJoin : public Join {
 public:
  explicit LoneJoin(const char* const* names) : Join("lone", 2, 2, names) {
    ModelArray[0] = &first;
    ModelArray[1] = &second;
    SetupActions();
    addSharedPtr(&held, "held");
    held.ShareWith(&first.in);
    addSharingInfo(&first.in, &held, &first);
  }
  Valve first;
  Valve second;
  Place held{"held"};
};

TEST(ArcCheckTest, SharedVariablesOfAJoinByHandNeedPartners) {
  const char* const names[] = {"held", "forgotten"};
  LoneJoin join(names);
  join.NumStateVariables = 4;
  std::ostringstream out;
  const ArcCheck check(join, out);
  EXPECT_EQ(out.str(),
            "ARCS: model \"lone\": \"held\" is shared with nobody; join the variables of two children with it\n"
            "ARCS: model \"lone\": shared variable 2 was never made\n");
}

}  // namespace
