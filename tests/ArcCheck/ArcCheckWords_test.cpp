#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "ArcCheck/AccessLog.h"
#include "ArcCheck/ArcCheck.h"
#include "ArcCheck/MarkTable.h"
#include "Modelling/Modelling.h"
#include "support/TestVariable.h"

// What the check says of each kind of mistake, and what it passes over. As in ArcCheck_test.cpp the activities hand their
// accesses to the log themselves.

namespace {

using namespace modelling;
using support::AccessLog;
using support::ArcCheck;

template <typename T>
T& read(T& mark) {
  AccessLog::note(&mark, sizeof mark, false);
  return mark;
}
template <typename T>
T& change(T& mark) {
  AccessLog::note(&mark, sizeof mark, true);
  return mark;
}

/// What the check says of the model when it begins.
std::string wordsOn(BaseModelClass& model) {
  std::ostringstream out;
  const ArcCheck check(model, out);
  return out.str();
}

TEST(ArcCheckWordsTest, AVariableOfAKindOfItsOwnHasNoMark) {
  support::TestVariable own("own");
  JoinModel empty("empty", {}, {});
  EXPECT_FALSE(support::MarkTable(empty).markOf(own).has_value());
}

class Stray : public AtomicModel {
 public:
  Stray() : AtomicModel("strays") {
    activity("go").enabledBy({lost}, [] { return true; }).deterministic(1).fires({}, [] {});
  }
  Place lost{"lost"};  // of no model
};

TEST(ArcCheckWordsTest, AnArcToAVariableOfNoModelIsAFault) {
  Stray model;
  EXPECT_EQ(
      wordsOn(model),
      "ARCS: model \"strays\", activity \"go\": an arc leads to \"lost\", which is no variable of a model; enter it "
      "among the variables of its model\n");
}

class Meddler : public AtomicModel {
 public:
  Meddler() : AtomicModel("meddler") {
    activity("look").enabledBy({seen}, [this] { return ++change(seen.Mark()) > 0; }).deterministic(1).fires({}, [] {});
  }
  Variable<Place> seen{*this, "seen"};
};

TEST(ArcCheckWordsTest, AnEnabledThatChangesAMarkIsAFault) {
  Meddler model;
  EXPECT_EQ(
      wordsOn(model),
      "ARCS: model \"meddler\", activity \"look\": Enabled changes \"seen\", and may only look; change it in Fire\n");
}

TEST(ArcCheckWordsTest, TheFaultOfAllCopiesOfAModelIsToldOnce) {
  RepModel copies("copies", 3, child<Meddler>("meddler"), {});
  EXPECT_EQ(
      wordsOn(copies),
      "ARCS: model \"copies/meddler\", activity \"look\": Enabled changes \"seen\", and may only look; change it in "
      "Fire\n");
}

class Reader : public AtomicModel {
 public:
  Reader() : AtomicModel("reader") {
    activity("scan")
        .enabledBy({},
                   [this] {
                     int sum = 0;
                     for (int i = 0; i < 6; ++i) {
                       sum += read(shelf[i]->Mark());
                     }
                     return sum >= 0;
                   })
        .deterministic(1)
        .fires({}, [] {});
  }
  Variable<ArrayVariable<int>> shelf{*this, "shelf", 6};
};

TEST(ArcCheckWordsTest, OfManyElementsOfOneArrayAFewAreTold) {
  Reader model;
  const std::string words = wordsOn(model);
  const std::string each = "ARCS: model \"reader\", activity \"scan\": Enabled reads \"shelf.";
  for (const char element : {'0', '1', '2'}) {
    EXPECT_NE(words.find(each + element + "\" without an enabling arc"), std::string::npos) << words;
  }
  EXPECT_EQ(words.find(each + "3"), std::string::npos) << words;
  const std::string last =
      "ARCS: model \"reader\", activity \"scan\": Enabled reads more of \"shelf\" than is told here\n";
  EXPECT_TRUE(words.ends_with(last)) << words;
  EXPECT_EQ(words.find(last), words.size() - last.size());  // once, though three more are read
}

class Owner : public AtomicModel {
 public:
  Owner() : AtomicModel("owner") {}
  Variable<Place> box{*this, "box"};
};

TEST(ArcCheckWordsTest, WhatIsSharedWithAReplicationOfNoneNeedsNoPartner) {
  JoinModel join("join", {child<Owner>("owner"), replicate("none", 0, child<Owner>("owner"), {"box"})},
                 {{"box", {{"owner", "box"}, {"none", "box"}}}});
  EXPECT_EQ(wordsOn(join), "");
}

}  // namespace
