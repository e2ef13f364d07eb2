#include "BaseClasses/TraceFileQuorva.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>

#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "BaseClasses/TraceFileContainer.h"
#include "BaseClasses/Traceprintf.h"
#include "support/FlushWatch.h"
#include "support/TemporaryFile.h"
#include "support/TraceModels.h"

namespace {

using support::ShownComposite;
using support::ShownModel;
using support::ShownVariable;

class TraceFileQuorvaTest : public testing::Test {
 protected:
  TraceFileQuorvaTest() {
    action.defineName("serve");
    action.TheModel = &leaf;
    action.addEnablingSV(&queue);
    action.addAffectedSV(&queue);
    action.addAffectedSV(&served);
    group.initialize(1, "work");
    group.TheModel = &leaf;
  }
  ~TraceFileQuorvaTest() override {
    trout = &std::cout;
    TraceLevel = 0;
  }

  [[nodiscard]] static std::string idOf(BaseModelClass& model) { return std::to_string(model.getId()); }

  /// What the sink wrote since the last call.
  std::string written() {
    const std::string text = stream.str();
    stream.str("");
    return text;
  }

  /// One whole event step, as the simulator traces it.
  void step(BaseActionClass* scheduled, double time) {
    sink.printPreFireAction(scheduled);
    sink.printFireAction(scheduled, time);
    sink.printPostFireAction(scheduled, &action);
  }

  ShownVariable queue{"queue", 3};
  ShownVariable served{"count", 14, "desk"};
  ShownComposite desk{"desk", {&served}};
  ShownModel leaf{"station", {&queue, &desk}};
  ShownModel empty{"hall"};
  ShownModel* top = new ShownModel("top", {}, {&leaf, &empty});
  support::ShownRewardModel rewards{top};  // owns top
  BaseGroupClass group;
  BaseGroupClass action;  // a member of the group in some tests
  std::ostringstream stream;
  TraceFileQuorva sink{&stream};
};

TEST_F(TraceFileQuorvaTest, TakesTraceprintfOver) {
  EXPECT_EQ(trout, &stream);
  TraceLevel = 1;
  Traceprintf(1, "mark %d", 5);
  EXPECT_EQ(written(), "mark 5");
}

TEST_F(TraceFileQuorvaTest, ByNameTakesTraceprintfOverToo) {
  const support::TemporaryFile file("text_trace");
  TraceFileQuorva named(file.name());
  named.newBatch();
  TraceLevel = 1;
  Traceprintf(1, "note\n");
  EXPECT_EQ(file.bytes(), "##### NEW BATCH #####\nnote\n");
}

TEST_F(TraceFileQuorvaTest, WithoutAStreamItWritesNothingAndLeavesTraceprintfAlone) {
  TraceFileQuorva silent;
  EXPECT_EQ(trout, &stream);
  silent.setTraceLevel(3);
  silent.printHeader(&rewards);
  silent.newBatch();
  silent.printInitialState(top);
  silent.printState(&rewards);
  silent.printState(static_cast<BaseModelClass*>(top));
  silent.printPreFireAction(&action);
  silent.printFireAction(&action, 1.0);
  silent.printPostFireAction(&action, &action);
  silent.printFooter();
  EXPECT_EQ(written(), "");
}

TEST_F(TraceFileQuorvaTest, TheHeaderHasThreeLinesAtEveryLevelAndTheFooterNone) {
  const std::string header =
      "**************************************\n"
      "\t\tTRACE\n"
      "**************************************\n";
  for (const int level : {0, 1, 3}) {
    sink.setTraceLevel(level);
    sink.printHeader(&rewards);
    EXPECT_EQ(written(), header) << "level " << level;
    sink.printFooter();
    EXPECT_EQ(written(), "") << "level " << level;
  }
}

TEST_F(TraceFileQuorvaTest, ABatchHasItsLineAtEveryLevel) {
  for (const int level : {0, 1, 3}) {
    sink.setTraceLevel(level);
    sink.newBatch();
    EXPECT_EQ(written(), "##### NEW BATCH #####\n") << "level " << level;
  }
}

TEST_F(TraceFileQuorvaTest, TheStateGoesDownTheTreeWithEachLeafUnderItsQualifiedName) {
  const std::string state = "  Model: (" + idOf(*top) + ")top\n" +      //
                            "  Model: (" + idOf(leaf) + ")station\n" +  //
                            "    queue = 3\n"
                            "    desk.count = 14\n"
                            "  Model: (" +
                            idOf(empty) + ")hall\n";
  sink.printState(top);
  EXPECT_EQ(written(), state);
  sink.printInitialState(top);
  EXPECT_EQ(written(), "Initial Model State:\n" + state);
  sink.printState(&rewards);
  EXPECT_EQ(written(), "Model State:\n" + state);
}

TEST_F(TraceFileQuorvaTest, AnAtomicModelShowsItsReadOnlyPlacesBehindItsLocalOnes) {
  Place line{"line", 2};
  Place limit{"limit", 9};
  BaseStateVariableClass* places[] = {&line};
  BaseStateVariableClass* readOnly[] = {&limit};
  SANModel atomic("desk", 1, places, 1, readOnly, 0, nullptr, 0, nullptr);
  sink.printState(&atomic);
  EXPECT_EQ(written(), "  Model: (" + idOf(atomic) + ")desk\n    line = 2\n    limit = 9\n");
}

TEST_F(TraceFileQuorvaTest, AtLevelZeroFiringsAreSilent) {
  sink.setTraceLevel(0);
  step(&action, 1.5);
  EXPECT_EQ(written(), "");
}

TEST_F(TraceFileQuorvaTest, FromLevelOneOnAFiringShowsWhatFiredAndWhatCameOfIt) {
  sink.setTraceLevel(1);
  step(&action, 1.5);
  EXPECT_EQ(written(), "#### Firing: 1.5  Action: (" + idOf(leaf) + ")station->serve\n" +  //
                           "#### After: (" + idOf(leaf) + ")serve->serve\n");
}

TEST_F(TraceFileQuorvaTest, FromLevelTwoOnAFiringShowsTheVariablesToo) {
  for (const int level : {2, 3, 4}) {
    sink.setTraceLevel(level);
    step(&action, 0.1234567);
    EXPECT_EQ(written(),
              "Enabling state before action firing:\n"
              "  queue = 3\n"
              "#### Firing: 0.123457  Action: (" +
                  idOf(leaf) + ")station->serve\n" +  //
                  "#### After: (" + idOf(leaf) +
                  ")serve->serve\n"
                  "Affected state after firing: \n"
                  "  queue = 3\n"
                  "  desk.count = 14\n")
        << "level " << level;
  }
}

TEST_F(TraceFileQuorvaTest, ForAGroupTheActionsShownAreTheGroupAndItsChosenMember) {
  BaseGroupClass neverChosen;
  neverChosen.defineName("other");
  group.appendGroup(&action);
  group.appendGroup(&neverChosen);
  sink.setTraceLevel(2);
  step(&group, 2.0);
  EXPECT_EQ(written(),
            "Enabling state before action firing:\n"  // of the first member
            "  queue = 3\n"
            "#### Firing: 2  Action: (" +
                idOf(leaf) + ")station->work\n" +  //
                "#### After: (" + idOf(leaf) +
                ")work->serve\n"
                "Affected state after firing: \n"
                "  queue = 3\n"
                "  desk.count = 14\n");
}

TEST_F(TraceFileQuorvaTest, AGroupWithoutMembersShowsItself) {
  group.addEnablingSV(&served);
  sink.setTraceLevel(2);
  sink.printPreFireAction(&group);
  EXPECT_EQ(written(),
            "Enabling state before action firing:\n"
            "  desk.count = 14\n");
}

TEST_F(TraceFileQuorvaTest, EveryLineIsInTheFileAsSoonAsItIsWritten) {
  const support::TemporaryFile file("flushed_trace");
  TraceFileQuorva named(file.name());
  named.printHeader(&rewards);
  const auto afterHeader = file.bytes().size();
  EXPECT_EQ(afterHeader, 38U + 1 + 7 + 1 + 38 + 1);
  named.newBatch();
  EXPECT_EQ(file.bytes().size(), afterHeader + 22);
}

TEST_F(TraceFileQuorvaTest, NoLineOfItsOwnWaitsForTheNext) {
  const auto head = [this] {
    sink.printHeader(&rewards);
    sink.newBatch();
  };
  EXPECT_THAT(support::linesHeldBack(stream, head), testing::IsEmpty());
  EXPECT_THAT(support::linesHeldBack(stream, [this] { step(&action, 0.5); }), testing::IsEmpty());
}

TEST_F(TraceFileQuorvaTest, AsASinkOfTheContainerItTracesARunOfTwoBatches) {
  TraceFileContainer container;
  container.AddTraceFile(&sink);
  container.addPVModel(&rewards);
  sink.setTraceLevel(1);
  container.printHeader();
  container.newBatch();
  for (int batch = 0; batch < 2; ++batch) {
    container.printInitialState();
    container.printPreFireAction(&action);
    container.printFireAction(&action, 0.5);
    container.printPostFireAction(&action, &action);
    container.newBatch();
  }
  container.printFooter();
  const std::string batch = "Initial Model State:\n  Model: (" + idOf(*top) + ")top\n  Model: (" + idOf(leaf) +
                            ")station\n    queue = 3\n    desk.count = 14\n  Model: (" + idOf(empty) +
                            ")hall\n#### Firing: 0.5  Action: (" + idOf(leaf) + ")station->serve\n#### After: (" +
                            idOf(leaf) + ")serve->serve\n##### NEW BATCH #####\n";
  EXPECT_EQ(written(),
            "**************************************\n\t\tTRACE\n**************************************\n"
            "##### NEW BATCH #####\n" +
                batch + batch);
}

}  // namespace
