// Whole runs, from the command line to the bytes of their result files and traces.

#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <vector>

#include "BaseClasses/Traceprintf.h"
#include "Performance_Variables/PVModel.h"
#include "Simulator/EngineTest.h"
#include "support/TemporaryFile.h"

namespace {

using support::HandActivity;
using support::HandModel;
using support::TemporaryFile;

/// A model that ticks at times 1 and 2 and then has nothing left to do; its one variable accumulates 1 over [0, 5].
class ResultRunTest : public support::EngineTest {
 protected:
  ResultRunTest() { useTicks(terminating); }
  ~ResultRunTest() override {
    trout = &std::cout;
    ::TraceLevel = 0;
  }

  void useTicks(PVType type) {
    useModel(
        [](HandModel& model) {
          Place& count = model.addPlace("count");
          HandActivity& tick = model.addActivity("tick", {&count}, {&count});
          tick.predicate = [&count] { return count.Mark() < 2; };
          tick.effect = [&count] { ++count.Mark(); };
        },
        {{.stop = 5.0, .type = type}});
  }

  void runToTheEndOfTheProcess(std::vector<std::string> words) {
    run(std::move(words));
    modelId = std::string("(") + std::to_string(simulator->TheModel->TheModel->getId()) + ")";
    simulator->deleteLoopObjects();
    support::standardOutputOf([this] { simulator.reset(); });
  }

  /// The text trace of a run of two batches at this level.
  std::string traceOf(int level) {
    const TemporaryFile file("trace");  // stands for the name without its suffix
    const std::string name = std::string(file.name()) + ".txt";
    runToTheEndOfTheProcess({"-N2", std::string("-f") + file.name(), "-l" + std::to_string(level)});
    const std::string text = support::bytesOf(name);
    std::filesystem::remove(name);
    return text;
  }

  std::string modelId;  // in brackets, as the trace shows it
};

const std::string kTraceHead =
    "**************************************\n"
    "\t\tTRACE\n"
    "**************************************\n"
    "##### NEW BATCH #####\n";

TEST_F(ResultRunTest, FiveBatchesLeaveFiveObservationsAndTheirNumberInBothFiles) {
  const TemporaryFile csv("csv");
  const TemporaryFile bin("bin");
  runToTheEndOfTheProcess({"-N5", "-c3", std::string("-a") + csv.name(), std::string("-b") + bin.name()});
  EXPECT_EQ(csv.bytes(),
            "#QUORVA_SIM_ASCII_FILE,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,"
            "RANDOMGEN=Lagged Fibonacci\n"
            "#FORMAT: (PV ID Number),(PV Value)\n"
            "0,5.0\n0,5.0\n0,5.0\n0,5.0\n0,5.0\n"
            "#META_DATA,BATCHES=5\n");
  std::string expected =
      "QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,"
      "RANDOMGEN=Lagged Fibonacci,BATCHES=5,,";
  expected.resize(256, '\0');
  expected += std::string("\0\0\0\x38\3\0\0\0\1", 9);  // 9 + 7 + 8 * 5 = 56 bytes; client 3, experiment 0, one record
  expected += std::string("\0\0\1\0\0\0\5", 7);        // variable 0, of kind 1, five observations
  for (int i = 0; i < 5; ++i) {
    expected += std::string("\x40\x14\0\0\0\0\0\0", 8);  // 5.0
  }
  EXPECT_EQ(bin.bytes(), expected);
}

TEST_F(ResultRunTest, ReportsOfTwoFollowEachOtherInBothFiles) {
  const TemporaryFile csv("csv");
  const TemporaryFile bin("bin");
  runToTheEndOfTheProcess({"-N3", "-n2", std::string("-a") + csv.name(), std::string("-b") + bin.name()});
  EXPECT_NE(csv.bytes().find("\n0,5.0\n0,5.0\n0,5.0\n#META_DATA,BATCHES=3\n"), std::string::npos);
  EXPECT_EQ(bin.bytes().size(), 256U + (9 + 7 + 8 * 2) + (9 + 7 + 8));
}

TEST_F(ResultRunTest, ASteadyStateRunLeavesBatchesAtZeroInBothFiles) {
  // On purpose: only terminating batches are counted.
  const TemporaryFile csv("csv");
  const TemporaryFile bin("bin");
  useTicks(steady_state);
  runToTheEndOfTheProcess({"-t0", std::string("-a") + csv.name(), std::string("-b") + bin.name()});
  EXPECT_TRUE(csv.bytes().ends_with("\n#META_DATA,BATCHES=0\n")) << csv.bytes();
  EXPECT_NE(bin.bytes().find(",BATCHES=0,,"), std::string::npos);
}

TEST_F(ResultRunTest, AtLevelZeroTheTraceIsItsHeaderAndOneBatchLineMoreThanBatches) {
  EXPECT_EQ(traceOf(0), kTraceHead + "##### NEW BATCH #####\n##### NEW BATCH #####\n");
}

TEST_F(ResultRunTest, AtLevelOneTheTraceShowsTheInitialStateAndTheFirings) {
  const std::string text = traceOf(1);
  const std::string batch = "Initial Model State:\n  Model: " + modelId + "model" +
                            "\n    count = 0\n"
                            "#### Firing: 1  Action: " +
                            modelId + "model->tick\n#### After: " + modelId +
                            "tick->tick\n"
                            "#### Firing: 2  Action: " +
                            modelId + "model->tick\n#### After: " + modelId +
                            "tick->tick\n"
                            "##### NEW BATCH #####\n";
  EXPECT_EQ(text, kTraceHead + batch + batch);
}

TEST_F(ResultRunTest, AtLevelThreeTheTraceShowsVariablesAndTheStateAfterEachStepButTheLast) {
  const std::string text = traceOf(3);
  const auto firing = [&](int time) {
    return "Enabling state before action firing:\n  count = " + std::to_string(time - 1) +  //
           "\n#### Firing: " + std::to_string(time) + "  Action: " + modelId + "model" +    //
           "->tick\n#### After: " + modelId +
           "tick->tick\nAffected state after firing: \n  count = " + std::to_string(time) + "\n";
  };
  const std::string batch = "Initial Model State:\n  Model: " + modelId + "model\n    count = 0\n" + firing(1) +
                            "Model State:\n  Model: " + modelId + "model\n    count = 1\n" + firing(2) +
                            "##### NEW BATCH #####\n";
  EXPECT_EQ(text, kTraceHead + batch + batch);
}

TEST_F(ResultRunTest, AtLevelTwoTheStateAfterEachStepIsLeftOut) {
  const std::string text = traceOf(2);
  EXPECT_EQ(text.find("\nModel State:"), std::string::npos);
  EXPECT_NE(text.find("Affected state after firing: \n  count = 2\n##### NEW BATCH #####\n"), std::string::npos);
}

}  // namespace
