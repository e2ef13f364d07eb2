#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "BaseClasses/TraceFileXML.h"
#include "support/XmlTraceModels.h"

namespace {

using support::AtomicShown;
using support::ComposedShown;
using support::Ids;
using support::SharedVariable;
using support::ShownAction;
using support::ShownVariable;

/// Models whose names meet: two composed models beside each other share a variable "gate" each, and the stations ahead
/// of them and behind them have a private one of that name. All four actions are called "pass".
class TraceFileXMLNamesTest : public testing::Test {
 protected:
  TraceFileXMLNamesTest() {
    west.children = {&westTrain};
    east.children = {&eastTrain};
    top.children = {&first, &west, &east, &station};
    ids.name("top", top);
    ids.name("first", first);
    ids.name("west", west);
    ids.name("westTrain", westTrain);
    ids.name("east", east);
    ids.name("eastTrain", eastTrain);
    ids.name("station", station);
    ids.name("passFirst", passFirst);
    ids.name("passWest", passWest);
    ids.name("passEast", passEast);
    ids.name("passStation", passStation);
  }

  ShownVariable gateOfFirst{"gate", 1};
  SharedVariable gateOfWest{"gate", 2};
  SharedVariable gateOfEast{"gate", 3};
  ShownVariable gateOfStation{"gate", 4};
  ShownAction passFirst{"pass", {&gateOfFirst}};
  ShownAction passWest{"pass", {&gateOfWest}};
  ShownAction passEast{"pass", {&gateOfEast}};
  ShownAction passStation{"pass", {&gateOfStation}};
  ComposedShown top{"top", BaseModelClass::JoinModel, {}};
  AtomicShown first{"first", {&gateOfFirst}, {&passFirst}};
  ComposedShown west{"west", BaseModelClass::RepModel, {&gateOfWest}};
  AtomicShown westTrain{"train", {}, {&passWest}};
  ComposedShown east{"east", BaseModelClass::RepModel, {&gateOfEast}};
  AtomicShown eastTrain{"train", {}, {&passEast}};
  AtomicShown station{"station", {&gateOfStation}, {&passStation}};
  Ids ids;
  std::ostringstream stream;
  TraceFileXMLProbe sink{&stream};
};

TEST_F(TraceFileXMLNamesTest, ComposedModelsBesideEachOtherDeclareTheirVariablesEach) {
  sink.printHeader(&top, top.getId());
  // The first model's action was declared before any gate was shared; those of the later models go by the name.
  EXPECT_EQ(stream.str(), ids.in(R"(<Process id="p[top]" name="top" >
</Process>
<Process id="p[first]" name="first[first]" >
<Action id="a[passFirst]" name="pass" />
<Var id="p[first]gate" name="gate" />
</Process>
<Process id="p[west]" name="west" >
<Var id="p[west]gate" name="gate" />
</Process>
<Process id="p[westTrain]" name="train[westTrain]" >
</Process>
<Process id="p[east]" name="east" >
<Var id="p[east]gate" name="gate" />
</Process>
<Process id="p[eastTrain]" name="train[eastTrain]" >
</Process>
<Process id="p[station]" name="station[station]" >
<Var id="p[station]gate" name="gate" />
</Process>
)"));
}

TEST_F(TraceFileXMLNamesTest, AnActionIsPrivateByItsOwnNameAndNotByAnEqualText) {
  sink.printHeader(&top, top.getId());
  stream.str("");
  sink.printHeaderInteractions(&top);
  // The station's gate is its own, but bears the name of a shared one: the process touched is the station, once.
  EXPECT_EQ(stream.str(), ids.in(R"(<Undiraction id="a[passWest]" name="pass">
<Touch>p[west]</Touch><Touch>p[westTrain]</Touch></Undiraction>
<Undiraction id="a[passEast]" name="pass">
<Touch>p[east]</Touch><Touch>p[eastTrain]</Touch></Undiraction>
<Undiraction id="a[passStation]" name="pass">
<Touch>p[station]</Touch></Undiraction>
)"));
}

TEST_F(TraceFileXMLNamesTest, AStateResolvesASharedNameToItsOwnBranch) {
  sink.printHeader(&top, top.getId());
  sink.newBatch();
  stream.str("");
  sink.printState(static_cast<BaseModelClass*>(&top));
  EXPECT_EQ(stream.str(), ids.in(R"(<V id="p[first]gate" val="1" />
<V id="p[west]gate" val="2" />
<V id="p[east]gate" val="3" />
<V id="p[station]gate" val="4" />
)"));
}

TEST_F(TraceFileXMLNamesTest, AnActionWhoseSharedNameNoModelResolvesIsDeclaredNowhere) {
  // The model of the action was built before the one that declares the name, whose Id is thus too high.
  SharedVariable shared("lock", 7);
  ShownAction lost("lost", {&shared});
  AtomicShown early("early", {}, {&lost});
  ComposedShown late("late", BaseModelClass::RepModel, {&shared});
  ComposedShown root("root", BaseModelClass::JoinModel, {});
  root.children = {&late, &early};
  ids.name("early", early);
  ids.name("late", late);
  ids.name("root", root);
  ids.name("lost", lost);
  sink.printHeader(&root, root.getId());
  sink.printHeaderInteractions(&root);
  sink.newBatch();
  sink.printPostFireAction(&lost, &lost);
  EXPECT_EQ(stream.str(), ids.in(R"(<Process id="p[root]" name="root" >
</Process>
<Process id="p[late]" name="late" >
<Var id="p[late]lock" name="lock" />
</Process>
<Process id="p[early]" name="early[early]" >
</Process>
<A id="a[lost]" t="0">
  <V id="p-1lock"  val="7" />
</A>
)"));
}

TEST(TraceFileXMLBookkeepingTest, ASharedNameIsDeclaredByTheOutermostModelThatHoldsIt) {
  TraceFileXMLProbe sink;
  EXPECT_FALSE(sink.inUsedStateName("line"));
  EXPECT_TRUE(sink.addUsedStateName("line", 4, 4));
  EXPECT_TRUE(sink.inUsedStateName("line"));
  EXPECT_FALSE(sink.inUsedStateName("lin"));
  EXPECT_FALSE(sink.addUsedStateName("line", 4, 6));  // declared by its parent
  EXPECT_FALSE(sink.addUsedStateName("line", 5, 7));  // further down
  EXPECT_TRUE(sink.addUsedStateName("line", 3, 8));   // under a parent from before: a branch of its own
  EXPECT_TRUE(sink.addUsedStateName("lines", 9, 9));
}

TEST(TraceFileXMLBookkeepingTest, AUsedNameIsKeptAsACopy) {
  TraceFileXMLProbe sink;
  std::string name = "line";
  sink.addUsedStateName(name.c_str(), 1, 1);
  name = "gone";
  EXPECT_TRUE(sink.inUsedStateName("line"));
  EXPECT_FALSE(sink.inUsedStateName("gone"));
}

TEST(TraceFileXMLBookkeepingTest, AStateNameIsKeptOnceUntilTheInitialState) {
  std::ostringstream stream;
  TraceFileXMLProbe sink(&stream);
  const std::string equal = "mark";
  EXPECT_TRUE(sink.addState("mark"));
  EXPECT_FALSE(sink.addState(equal.c_str()));
  EXPECT_TRUE(sink.addState("marks"));
  AtomicShown model("room", {}, {});
  sink.printInitialState(&model);  // before the first batch: nothing happens
  EXPECT_FALSE(sink.addState("mark"));
  sink.newBatch();
  sink.printInitialState(&model);
  EXPECT_TRUE(sink.addState("mark"));
}

TEST(TraceFileXMLBookkeepingTest, AModelInsertedLaterComesFirst) {
  TraceFileXMLProbe sink;
  std::vector<std::unique_ptr<AtomicShown>> models;
  std::vector<const BaseModelClass*> expected;
  for (int i = 0; i < 100; ++i) {
    models.push_back(
        std::make_unique<AtomicShown>("room", std::vector<BaseStateVariableClass*>{}, std::vector<BaseActionClass*>{}));
    sink.insert(models.back().get(), {});
    expected.insert(expected.begin(), models.back().get());
    EXPECT_TRUE(TraceFileXMLProbe::comesFirst(models.front().get(), models.back().get()));
    EXPECT_TRUE(TraceFileXMLProbe::comesFirst(models.back().get(), models.front().get()));
    EXPECT_TRUE(TraceFileXMLProbe::comesFirst(models.back().get(), models.back().get()));
  }
  sink.insert(models[7].get(), {});  // a model twice: each insertion stands
  expected.insert(expected.begin(), models[7].get());
  EXPECT_EQ(sink.modelsInOrder(), expected);
}

TEST(TraceFileXMLBookkeepingTest, ANameResolvesToTheFirstModelInOrderWhoseIdIsNotAboveTheGivenOne) {
  TraceFileXMLProbe sink;
  ShownVariable mark("mark", 1, "box");
  ShownVariable other("mark", 1);
  AtomicShown one("one", {}, {});
  AtomicShown two("two", {}, {});
  AtomicShown three("three", {}, {});
  sink.insert(&three, {&other, &mark});
  sink.insert(&two, {&mark});
  sink.insert(&one, {&other});
  EXPECT_EQ(sink.getModelMap("box.mark", three.getId()), two.getId());  // inserted after the third
  EXPECT_EQ(sink.getModelMap("box.mark", two.getId()), two.getId());
  EXPECT_EQ(sink.getModelMap("box.mark", one.getId()), -1);
  EXPECT_EQ(sink.getModelMap("mark", three.getId()), one.getId());
  EXPECT_EQ(sink.getModelMap("box", three.getId()), -1);
  // A name out of the buffer of one of the variables that are compared.
  EXPECT_EQ(sink.getModelMap(mark.getFullyQualifiedName(), three.getId()), two.getId());
}

}  // namespace
