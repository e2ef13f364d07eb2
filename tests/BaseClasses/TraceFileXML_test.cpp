#include "BaseClasses/TraceFileXML.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "BaseClasses/TraceFileContainer.h"
#include "BaseClasses/TraceFileQuorva.h"
#include "support/FlushWatch.h"
#include "support/TemporaryFile.h"
#include "support/XmlTraceModels.h"

namespace {

using support::AtomicShown;
using support::ComposedShown;
using support::Ids;
using support::SharedVariable;
using support::ShownAction;
using support::ShownComposite;
using support::ShownVariable;

/// A line with trains and a station: "line" is shared over the whole model, "speed" among the trains alone.
class TraceFileXMLTest : public testing::Test {
 protected:
  TraceFileXMLTest() {
    fleet.children = {&train};
    top->children = {&fleet, &station};
    ids.name("top", *top);
    ids.name("fleet", fleet);
    ids.name("train", train);
    ids.name("station", station);
    ids.name("move", move);
    ids.name("report", report);
    ids.name("accelerate", accelerate);
    ids.name("open", open);
    ids.name("idle", idle);
  }

  /// What the sink wrote since the last call.
  std::string written() {
    const std::string text = stream.str();
    stream.str("");
    return text;
  }

  /// A sink in batch 0, its head written and forgotten.
  void startFirstBatch() {
    sink.printHeader(&rewards);
    sink.newBatch();
    written();
  }

  ShownVariable position{"position", 17};
  ShownVariable weight{"weight", 3, "cargo"};
  SharedVariable cargoOwner{"owner", 4, "cargo"};
  ShownComposite cargo{"cargo", {&weight, &cargoOwner}};
  SharedVariable lineOfTrain{"line", 8};
  SharedVariable lineOfFleet{"line", 8};
  SharedVariable speed{"speed", 5};
  SharedVariable line{"line", 8};
  SharedVariable deskCount{"count", 2, "desk"};
  ShownComposite desk{"desk", {&deskCount}};
  ShownVariable alone{"alone", 1};  // held by the top, but joined to nothing
  ShownVariable doors{"doors", 0};

  ShownAction move{"move", {&position}};
  ShownAction report{"report", {&position, &line}};
  ShownAction accelerate{"accelerate", {&speed, &line, &deskCount}};
  ShownAction open{"open", {&doors}};
  ShownAction idle{"idle", {}};

  ComposedShown* top = new ComposedShown("top", BaseModelClass::JoinModel, {&line, &desk, &alone});
  ComposedShown fleet{"fleet", BaseModelClass::RepModel, {&lineOfFleet, &speed}};
  AtomicShown train{"train", {&position, &lineOfTrain, &cargo}, {&move, &report, &accelerate}};
  AtomicShown station{"station", {&doors}, {&open, &idle}};
  support::ShownRewardModel rewards{top};  // owns top
  Ids ids;
  std::ostringstream stream;
  TraceFileXMLProbe sink{&stream};
};

TEST_F(TraceFileXMLTest, TheHeadDeclaresProcessesAndInteractionsAndOpensTheSequence) {
  sink.printHeader(&rewards);
  // "alone" is not shared. The fleet's "line" is declared by the top. Of the train's actions "move" alone changes
  // nothing that is shared; "idle" changes nothing at all. "accelerate" touches the top twice, and the train last.
  EXPECT_EQ(written(), ids.in(R"(<?xml version="1.0" encoding="utf-8" ?>
<!DOCTYPE Trace
  SYSTEM "http://quorva.invalid/dtd/jMSCVis_trace.dtd">
<Trace model="Example_Quorva" generator="manually_generated" >
<Comment> Purpose of this trace: demonstration </Comment>
<!-- TESTING declaration of processes -->
<!-- Trace file of model Example_Quorva -->
<Process id="p[top]" name="top" >
<Var id="p[top]line" name="line" />
<Var id="p[top]desk.count" name="desk.count" />
</Process>
<Process id="p[fleet]" name="fleet" >
<Var id="p[fleet]speed" name="speed" />
</Process>
<Process id="p[train]" name="train[train]" >
<Action id="a[move]" name="move" />
<Var id="p[train]position" name="position" />
<Var id="p[train]cargo.weight" name="cargo.weight" />
</Process>
<Process id="p[station]" name="station[station]" >
<Action id="a[open]" name="open" />
<Action id="a[idle]" name="idle" />
<Var id="p[station]doors" name="doors" />
</Process>
<Interactions>
<Undiraction id="a[report]" name="report">
<Touch>p[top]</Touch><Touch>p[train]</Touch></Undiraction>
<Undiraction id="a[accelerate]" name="accelerate">
<Touch>p[fleet]</Touch><Touch>p[top]</Touch><Touch>p[train]</Touch></Undiraction>
</Interactions>
<!-- process sequence -->
<Sequence type="StateActionType">
)"));
}

TEST_F(TraceFileXMLTest, TheHeadTellsEachModelItsParent) {
  sink.printHeader(&rewards);
  EXPECT_EQ(top->getParentId(), top->getId());
  EXPECT_EQ(fleet.getParentId(), top->getId());
  EXPECT_EQ(train.getParentId(), fleet.getId());
  EXPECT_EQ(station.getParentId(), top->getId());
}

TEST_F(TraceFileXMLTest, TheStateGoesDownTheTreeWithASharedVariableAtEachLevelThatHoldsIt) {
  startFirstBatch();
  sink.printInitialState(top);
  EXPECT_EQ(written(), ids.in(R"(<S>
<V id="p[top]line" val="8" />
<V id="p[top]desk.count" val="2" />
<V id="p[top]line" val="8" />
<V id="p[fleet]speed" val="5" />
<V id="p[train]position" val="17" />
<V id="p[train]cargo.weight" val="3" />
<V id="p[station]doors" val="0" />
</S>
)"));
}

TEST_F(TraceFileXMLTest, TheStateOfARewardModelIsNotWritten) {
  startFirstBatch();
  sink.printState(&rewards);
  EXPECT_EQ(written(), "");
}

TEST_F(TraceFileXMLTest, AFiringHasItsTimeAndWhatItChanged) {
  startFirstBatch();
  sink.printPreFireAction(&report);
  sink.printFireAction(&report, 12.3456789);
  EXPECT_EQ(written(), "");
  sink.printPostFireAction(&report, &report);
  EXPECT_EQ(written(), ids.in(R"(<A id="a[report]" t="12.3457">
  <V id="p[train]position"  val="17" />
  <V id="p[top]line"  val="8" />
</A>
)"));
}

TEST_F(TraceFileXMLTest, ForAGroupTheFiringIsTheMembersAndPrivateVariablesAreOfTheGroupsModel) {
  BaseGroupClass group;
  group.initialize(1, "work");
  group.appendGroup(&report);
  group.TheModel = static_cast<BaseModelClass*>(&station);
  startFirstBatch();
  sink.printFireAction(&group, 2);
  sink.printPostFireAction(&group, &report);
  EXPECT_EQ(written(), ids.in(R"(<A id="a[report]" t="2">
  <V id="p[station]position"  val="17" />
  <V id="p[top]line"  val="8" />
</A>
)"));
}

TEST_F(TraceFileXMLTest, BeforeTheFirstBatchThereIsNothingButTheHead) {
  sink.printInitialState(top);
  sink.printState(static_cast<BaseModelClass*>(top));
  sink.printFireAction(&move, 7);
  sink.printPostFireAction(&move, &move);
  sink.printFooter();
  EXPECT_EQ(written(), "");
  startFirstBatch();
  sink.printPostFireAction(&idle, &idle);
  EXPECT_EQ(written(), ids.in("<A id=\"a[idle]\" t=\"0\">\n</A>\n"));  // the earlier time was not taken
}

TEST_F(TraceFileXMLTest, TheEndOfTheFirstBatchClosesTheDocumentAndLaterBatchesAreSilent) {
  sink.printHeader(&rewards);
  written();
  sink.newBatch();
  EXPECT_EQ(written(), "");  // a run that ends here leaves the document open
  sink.newBatch();
  EXPECT_EQ(written(), "</Sequence>\n</Trace>\n");
  for (int batch = 1; batch < 4; ++batch) {
    sink.printHeader(&rewards);
    sink.printHeader(top, top->getId());
    sink.printInitialState(top);
    sink.printState(static_cast<BaseModelClass*>(top));
    sink.printPreFireAction(&move);
    sink.printFireAction(&move, 1);
    sink.printPostFireAction(&move, &move);
    sink.printState(&rewards);
    sink.newBatch();
  }
  sink.printFooter();
  EXPECT_EQ(written(), "");
}

TEST_F(TraceFileXMLTest, TheNumberOfTheBatchStopsAtItsGreatest) {
  sink.setBatch(std::numeric_limits<int>::max() - 1);
  sink.newBatch();
  sink.newBatch();  // one more would begin again below the first
  EXPECT_EQ(sink.batch(), std::numeric_limits<int>::max());
  EXPECT_EQ(written(), "");
}

TEST_F(TraceFileXMLTest, TheHeadIsNotWrittenOnceABatchHasBegun) {
  sink.newBatch();
  sink.printHeader(&rewards);
  sink.printHeader(top, top->getId());
  EXPECT_EQ(written(), "");
}

TEST_F(TraceFileXMLTest, TheLevelHasNoSay) {
  for (const int level : {0, 1, 4}) {
    TraceFileXML other(&stream);
    other.setTraceLevel(level);
    other.printHeader(&rewards);
    other.newBatch();
    written();
    other.printInitialState(&station);
    other.printFireAction(&open, 1);
    other.printPostFireAction(&open, &open);
    other.newBatch();
    EXPECT_EQ(written(), ids.in(R"(<S>
<V id="p[station]doors" val="0" />
</S>
<A id="a[open]" t="1">
  <V id="p[station]doors"  val="0" />
</A>
</Sequence>
</Trace>
)")) << "level "
     << level;
  }
}

TEST_F(TraceFileXMLTest, ASharedVariableThatNoModelHasDeclaredIsOfProcessMinusOne) {
  sink.newBatch();  // without the head
  sink.printState(static_cast<BaseModelClass*>(top));
  sink.printPostFireAction(&report, &report);
  EXPECT_EQ(written(), ids.in(R"(<V id="p-1line" val="8" />
<V id="p-1desk.count" val="2" />
<V id="p-1line" val="8" />
<V id="p-1speed" val="5" />
<V id="p[train]position" val="17" />
<V id="p[train]cargo.weight" val="3" />
<V id="p[station]doors" val="0" />
<A id="a[report]" t="0">
  <V id="p[train]position"  val="17" />
  <V id="p-1line"  val="8" />
</A>
)"));
}

TEST_F(TraceFileXMLTest, ASharedVariableOfNoComposedModelIsOfProcessMinusOneInAFiring) {
  ShownAction load("load", {&weight, &cargoOwner});
  load.TheModel = static_cast<BaseModelClass*>(&train);
  ids.name("load", load);
  startFirstBatch();
  sink.printPostFireAction(&load, &load);
  EXPECT_EQ(written(), ids.in(R"(<A id="a[load]" t="0">
  <V id="p[train]cargo.weight"  val="3" />
  <V id="p-1cargo.owner"  val="4" />
</A>
)"));
}

TEST_F(TraceFileXMLTest, NamesAreWrittenWithoutEscaping) {
  ShownVariable odd("a<b", 1, "x&y");
  ShownAction turn("go \"on\"", {&odd});
  AtomicShown model("top & \"tail\"", {&odd}, {&turn});
  ids.name("model", model);
  ids.name("turn", turn);
  sink.printHeader(&model, model.getId());
  EXPECT_EQ(written(), ids.in(R"(<Process id="p[model]" name="top & "tail"[model]" >
<Action id="a[turn]" name="go "on"" />
<Var id="p[model]x&y.a<b" name="x&y.a<b" />
</Process>
)"));
}

TEST_F(TraceFileXMLTest, ModelsWithoutVariablesActionsAndChildrenAreEmptyProcesses) {
  ComposedShown hall("hall", BaseModelClass::GraphJoinModel, {});
  AtomicShown room("room", {}, {});
  ids.name("hall", hall);
  ids.name("room", room);
  sink.printHeader(&hall, hall.getId());
  sink.printHeader(&room, hall.getId());
  sink.printHeaderInteractions(&hall);
  sink.printHeaderInteractions(&room);
  EXPECT_EQ(written(), ids.in(R"(<Process id="p[hall]" name="hall" >
</Process>
<Process id="p[room]" name="room[room]" >
</Process>
)"));
}

TEST_F(TraceFileXMLTest, AnAtomicModelShowsItsReadOnlyPlacesBehindItsLocalOnes) {
  Place queue("queue", 2);
  Place limit("limit", 9);
  BaseStateVariableClass* places[] = {&queue};
  BaseStateVariableClass* readOnly[] = {&limit};
  SANModel atomic("desk", 1, places, 1, readOnly, 0, nullptr, 0, nullptr);
  ids.name("atomic", atomic);
  sink.printHeader(&atomic, atomic.getId());
  sink.newBatch();
  sink.printState(static_cast<BaseModelClass*>(&atomic));
  EXPECT_EQ(written(), ids.in(R"(<Process id="p[atomic]" name="desk[atomic]" >
<Var id="p[atomic]queue" name="queue" />
<Var id="p[atomic]limit" name="limit" />
</Process>
<V id="p[atomic]queue" val="2" />
<V id="p[atomic]limit" val="9" />
)"));
}

TEST_F(TraceFileXMLTest, WithoutAStreamItWritesNothing) {
  TraceFileXML silent;
  EXPECT_EQ(silent.getTraceLevel(), 1);
  silent.printHeader(&rewards);
  silent.newBatch();
  silent.printInitialState(top);
  silent.printFireAction(&report, 1);
  silent.printPostFireAction(&report, &report);
  silent.newBatch();
  EXPECT_EQ(written(), "");
}

TEST_F(TraceFileXMLTest, EveryLineIsInTheFileAsSoonAsItIsWritten) {
  const support::TemporaryFile file("xml_trace");
  TraceFileXML named(file.name());
  named.newBatch();
  named.printFireAction(&idle, 3);
  named.printPostFireAction(&idle, &idle);
  EXPECT_EQ(file.bytes(), ids.in("<A id=\"a[idle]\" t=\"3\">\n</A>\n"));
  named.newBatch();
  EXPECT_EQ(file.bytes(), ids.in("<A id=\"a[idle]\" t=\"3\">\n</A>\n</Sequence>\n</Trace>\n"));
}

TEST_F(TraceFileXMLTest, NoLineWaitsForTheNext) {
  const auto batch = [this] {
    sink.printHeader(&rewards);
    sink.newBatch();
    sink.printInitialState(top);
    sink.printPreFireAction(&move);
    sink.printFireAction(&move, 3);
    sink.printPostFireAction(&move, &move);
    sink.newBatch();
  };
  EXPECT_THAT(support::linesHeldBack(stream, batch), testing::IsEmpty());
}

TEST_F(TraceFileXMLTest, TwoSinksOfOneRunWriteTheirWholeTracesEach) {
  std::ostringstream text;
  TraceFileQuorva textSink(&text);
  textSink.setTraceLevel(1);
  support::ShownRewardModel rewardsOfStation(new AtomicShown("station", {&doors}, {&open}));
  ids.name("room", *rewardsOfStation.TheModel);
  TraceFileContainer container;
  container.AddTraceFile(&textSink);
  container.AddTraceFile(&sink);
  container.addPVModel(&rewardsOfStation);
  container.printHeader();
  text.str("");
  const std::string head = written();
  EXPECT_EQ(head.substr(head.size() - 35), "\n<Sequence type=\"StateActionType\">\n");
  container.newBatch();
  container.printInitialState();
  container.printPreFireAction(&open);
  container.printFireAction(&open, 4);
  container.printPostFireAction(&open, &open);
  container.printState();
  container.newBatch();
  container.printFooter();
  EXPECT_EQ(written(), ids.in(R"(<S>
<V id="p[room]doors" val="0" />
</S>
<A id="a[open]" t="4">
  <V id="p[room]doors"  val="0" />
</A>
</Sequence>
</Trace>
)"));
  EXPECT_EQ(text.str(), ids.in(R"(##### NEW BATCH #####
Initial Model State:
  Model: ([room])station
    doors = 0
#### Firing: 4  Action: ([room])station->open
#### After: ([room])open->open
Model State:
  Model: ([room])station
    doors = 0
##### NEW BATCH #####
)"));
}

}  // namespace
