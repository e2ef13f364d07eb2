#include "BaseClasses/TraceFileContainer.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "support/TraceModels.h"

namespace {

using Calls = std::vector<std::string>;

/// Notes every call with its arguments, as texts.
class RecordingSink : public TraceFile {
 public:
  RecordingSink(std::string name, Calls& calls) : name_(std::move(name)), calls_(calls) {}

  void printHeader(PVModel* model) override { note("printHeader", model); }
  void printFooter() override { note("printFooter"); }
  void printInitialState(BaseModelClass* model) override { note("printInitialState", model); }
  void printState(BaseModelClass* model) override { note("printState of model", model); }
  void printState(PVModel* model) override { note("printState of rewards", model); }
  void printFireAction(BaseActionClass* action, double time) override { note("printFireAction", action, time); }
  void printPreFireAction(BaseActionClass* action) override { note("printPreFireAction", action); }
  void printPostFireAction(BaseActionClass* first, BaseActionClass* second) override {
    note("printPostFireAction", first, second);
  }
  void newBatch() override { note("newBatch"); }
  void printStr(int level, const char* text) override { note("printStr", level, text); }

  template <typename... Arguments>
  [[nodiscard]] static std::string call(const std::string& name, const Arguments&... arguments) {
    std::ostringstream text;
    text << name;
    ((text << ' ' << arguments), ...);
    return text.str();
  }

 private:
  template <typename... Arguments>
  void note(const Arguments&... arguments) {
    calls_.push_back(call(name_, arguments...));
  }

  std::string name_;
  Calls& calls_;
};

class TraceFileContainerTest : public testing::Test {
 protected:
  /// The call as each of the two sinks must have got it, in their order.
  template <typename... Arguments>
  static Calls both(const Arguments&... arguments) {
    return {RecordingSink::call("first", arguments...), RecordingSink::call("second", arguments...)};
  }

  void addBoth() {
    EXPECT_EQ(container.AddTraceFile(&first), 0);
    EXPECT_EQ(container.AddTraceFile(&second), 0);
    container.addPVModel(&rewards);
  }

  Calls calls;
  RecordingSink first{"first", calls};
  RecordingSink second{"second", calls};
  support::ShownRewardModel rewards{new support::ShownModel("top")};
  BaseActionClass action;
  BaseActionClass other;
  TraceFileContainer container;
};

TEST_F(TraceFileContainerTest, WithoutSinksEveryCallDoesNothing) {
  ASSERT_EQ(container.PVmodel, nullptr);
  container.printHeader();
  container.printHeader(&rewards);
  container.newBatch();
  container.printInitialState();
  container.printPreFireAction(&action);
  container.printFireAction(&action, 1.0);
  container.printPostFireAction(&action, &other);
  container.printState();
  container.printState(&rewards);
  container.printState(rewards.TheModel);
  EXPECT_EQ(container.printf(0, "%s", "text"), 0);
  container.printStr(0, "text");
  container.printFooter();
  EXPECT_TRUE(calls.empty());
}

TEST_F(TraceFileContainerTest, StartsAtLevelOne) {
  EXPECT_EQ(container.getTraceLevel(), 1);
}

TEST_F(TraceFileContainerTest, HandsTheRewardModelToEachSinkInTheOrderOfAddition) {
  addBoth();
  container.printHeader();
  EXPECT_EQ(calls, both("printHeader", static_cast<PVModel*>(&rewards)));
  calls.clear();
  container.printState();
  EXPECT_EQ(calls, both("printState of rewards", static_cast<PVModel*>(&rewards)));
  calls.clear();
  container.printInitialState();
  EXPECT_EQ(calls, both("printInitialState", rewards.TheModel));
}

TEST_F(TraceFileContainerTest, HandsFiringsOnWithTheSameArguments) {
  addBoth();
  container.printPreFireAction(&action);
  EXPECT_EQ(calls, both("printPreFireAction", &action));
  calls.clear();
  container.printFireAction(&action, 2.5);
  EXPECT_EQ(calls, both("printFireAction", &action, 2.5));
  calls.clear();
  container.printPostFireAction(&action, &other);
  EXPECT_EQ(calls, both("printPostFireAction", &action, &other));
}

TEST_F(TraceFileContainerTest, HandsBatchesAndFooterOn) {
  addBoth();
  container.newBatch();
  EXPECT_EQ(calls, both("newBatch"));
  calls.clear();
  container.printFooter();
  EXPECT_EQ(calls, both("printFooter"));
}

TEST_F(TraceFileContainerTest, CallsThatNameTheModelThemselvesGoNowhere) {
  addBoth();
  TraceFile& asSink = container;
  asSink.printHeader(&rewards);
  asSink.printState(&rewards);
  asSink.printState(rewards.TheModel);
  asSink.printInitialState(rewards.TheModel);
  EXPECT_TRUE(calls.empty());
}

TEST_F(TraceFileContainerTest, ASinkCannotBeRemoved) {
  addBoth();
  EXPECT_EQ(container.RemoveTraceFile(&first), 0);
  container.newBatch();
  EXPECT_EQ(calls, both("newBatch"));
}

TEST_F(TraceFileContainerTest, TellsWhetherThereIsASinkToCall) {
  EXPECT_FALSE(container.hasSinks());
  container.AddTraceFile(&first);
  EXPECT_TRUE(container.hasSinks());
  container.RemoveTraceFile(&first);  // which does nothing
  EXPECT_TRUE(container.hasSinks());
}

TEST_F(TraceFileContainerTest, ASinkAddedTwiceIsCalledTwice) {
  container.AddTraceFile(&first);
  container.AddTraceFile(&first);
  container.newBatch();
  EXPECT_EQ(calls, (Calls{"first newBatch", "first newBatch"}));
}

TEST_F(TraceFileContainerTest, FormatsOnceAndHandsTheTextOn) {
  addBoth();
  EXPECT_EQ(container.printf(2, "%s=%d", "mark", 12), 0);
  EXPECT_EQ(calls, both("printStr", 2, "mark=12"));
  calls.clear();
  container.printStr(1, "50% plain");
  EXPECT_EQ(calls, both("printStr", 1, "50% plain"));
}

TEST_F(TraceFileContainerTest, ATextLongerThanTheBufferIsCut) {
  container.AddTraceFile(&first);
  const std::string longText(2000, 'x');
  container.printf(0, "%s", longText.c_str());
  EXPECT_EQ(calls, (Calls{"first printStr 0 " + std::string(999, 'x')}));
}

TEST_F(TraceFileContainerTest, DoesNotDeleteItsSinks) {
  auto local = std::make_unique<TraceFileContainer>();
  local->AddTraceFile(&first);
  local.reset();
  first.newBatch();
  EXPECT_EQ(calls, (Calls{"first newBatch"}));
}

}  // namespace
