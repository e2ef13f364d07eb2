#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "BaseClasses/ProcessId.h"
#include "Simulator/DataPacket.h"
#include "Simulator/EngineTest.h"
#include "Simulator/UserDistributions.h"

namespace {

using support::HandActivity;
using support::HandModel;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// `tick` fires every time unit and adds one to `count`. The variables are 1 accumulated, and `count` accumulated, over
/// [0, 2.5]: 2.5, and 0 + 1 + 2 * 0.5 = 2.
class TerminatingSimulationTest : public support::EngineTest {
 protected:
  static constexpr double kStop = 2.5;

  TerminatingSimulationTest() {
    useModel(
        [this](HandModel& model) {
          count = &model.addPlace("count");
          tick = &model.addActivity("tick", {}, {count});
          tick->effect = [this] { count->setMark(static_cast<short>(count->Mark() + 1)); };
          change();
        },
        {{kStop}, {kStop, [this] { return static_cast<double>(count->Mark()); }}});
    file = std::filesystem::temp_directory_path() / ("quorva_test_" + std::to_string(support::processId()) + ".csv");
  }

  ~TerminatingSimulationTest() override { std::filesystem::remove(file); }

  /// Runs to the end; gives the value lines of the ASCII result file.
  std::vector<std::string> runWithFile(std::vector<std::string> words) {
    words.insert(words.end(), {"-a", file.string()});
    run(std::move(words));
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
      if (!line.starts_with('#')) {
        lines.push_back(line);
      }
    }
    return lines;
  }

  std::function<void()> change = [] {};
  Place* count = nullptr;        // borrowed from the model
  HandActivity* tick = nullptr;  // borrowed from the model
  std::filesystem::path file;
};

TEST_F(TerminatingSimulationTest, FiveBatchesGiveOneReportOfFiveObservations) {
  EXPECT_THAT(runWithFile({"-N5"}),
              ElementsAre("0,2.5", "0,2.5", "0,2.5", "0,2.5", "0,2.5", "1,2.0", "1,2.0", "1,2.0", "1,2.0", "1,2.0"));
  EXPECT_EQ(simulator->BatchRuns, 5);
  EXPECT_EQ(simulator->NumberReports, 2) << "one output, counted from 1";
  EXPECT_EQ(simulator->SimControl, SimulatorClass::STOPHARD) << "raised by the flush";
  EXPECT_EQ(simulator->_fireActionCount, 10);
}

TEST_F(TerminatingSimulationTest, EachReportHoldsAsManyObservationsAsTheOptionSays) {
  EXPECT_THAT(runWithFile({"-N5", "-n2"}),
              ElementsAre("0,2.5", "0,2.5", "1,2.0", "1,2.0", "0,2.5", "0,2.5", "1,2.0", "1,2.0", "0,2.5", "1,2.0"));
  EXPECT_EQ(simulator->NumberReports, 4);
}

TEST_F(TerminatingSimulationTest, ALimitThatEndsWithAReportGivesThatReportOnce) {
  EXPECT_THAT(runWithFile({"-N2000"}), SizeIs(4000));
  EXPECT_EQ(simulator->NumberReports, 3) << "outputs at batches 1000 and 2000";
  EXPECT_EQ(simulator->BatchRuns, 2000);
}

/// The firings of the seventh batch are 13 and 14; nothing else ends this run.
TEST_F(TerminatingSimulationTest, ALimitOfZeroOrLessIsNone) {
  for (const char* const limit : {"-N0", "-N-3"}) {
    int firings = 0;
    change = [&] {
      tick->effect = [&] {
        if (++firings == 14) {
          simulator->SimControl = SimulatorClass::STOPHARD;
        }
      };
    };
    EXPECT_THAT(runWithFile({limit, "-n3"}), SizeIs(12)) << "two reports of three; the seventh batch is not reported";
    EXPECT_EQ(simulator->BatchRuns, 7);
    simulator.reset();
  }
}

TEST_F(TerminatingSimulationTest, EveryBatchBeginsAtTheInitialMarkingAtTimeZero) {
  std::vector<short> marks;
  std::vector<double> times;
  change = [&] {
    tick->delay = [&] {
      marks.push_back(count->Mark());
      times.push_back(simulator->CurrentTime);
      return 1.0;
    };
  };
  run({"-N2"});
  EXPECT_THAT(marks, ElementsAre(0, 1, 2, 0, 1, 2));
  EXPECT_THAT(times, ElementsAre(0.0, 1.0, 2.0, 0.0, 1.0, 2.0));
}

TEST_F(TerminatingSimulationTest, TheRandomStreamRunsOnFromBatchToBatch) {
  std::vector<double> samples;
  change = [&] {
    tick->delay = [&] {
      samples.push_back(3.0 + TheDistribution->RNG->rnd());
      return samples.back();
    };
  };
  run({"-N3", "-r2"});
  ASSERT_THAT(samples, SizeIs(3));
  EXPECT_NE(samples[0], samples[1]);
  EXPECT_NE(samples[1], samples[2]);
}

/// The first firing moves the stop time from 2.5 to 4.5: that batch still has two firings, the second one four.
TEST_F(TerminatingSimulationTest, TheStopTimeIsReadAtTheStartOfEachBatch) {
  change = [this] { tick->effect = [this] { simulator->TheModel->Simulation_Stop_Time = 4.5; }; };
  run({"-N2"});
  EXPECT_EQ(simulator->_fireActionCount, 2 + 4);
}

TEST_F(TerminatingSimulationTest, AnEventAtTheStopTimeFiresAndTheNextDoesNot) {
  change = [this] { tick->delay = [] { return kStop; }; };
  run({"-N1"});
  EXPECT_EQ(simulator->_fireActionCount, 1);
}

TEST_F(TerminatingSimulationTest, AStopTimeOfZeroLetsEventsAtZeroFire) {
  int firings = 0;
  useModel(
      [&](HandModel& model) {
        tick = &model.addActivity("tick");
        tick->delay = [&] { return firings < 3 ? 0.0 : 1.0; };
        tick->effect = [&] { ++firings; };
      },
      {{0.0}});
  run({"-N1"});
  EXPECT_EQ(firings, 3);
}

TEST_F(TerminatingSimulationTest, WithNothingEnabledEveryBatchYieldsTheRewardsOfAnEmptyRun) {
  change = [this] { tick->predicate = [] { return false; }; };
  EXPECT_THAT(runWithFile({"-N3"}), ElementsAre("0,2.5", "0,2.5", "0,2.5", "1,0.0", "1,0.0", "1,0.0"));
  EXPECT_EQ(simulator->_fireActionCount, 0);
}

/// One firing at 1: 1 * 1.5 is accumulated up to the stop time although no event is left.
TEST_F(TerminatingSimulationTest, AnAbsorbingStateEndsTheBatchAndCountsLikeAnyOther) {
  change = [this] { tick->predicate = [this] { return count->Mark() == 0; }; };
  EXPECT_THAT(runWithFile({"-N2"}), ElementsAre("0,2.5", "0,2.5", "1,1.5", "1,1.5"));
  EXPECT_EQ(simulator->BatchRuns, 2);
}

TEST_F(TerminatingSimulationTest, TheInitiallyEnabledGroupsAreListedOnce) {
  change = [this] { tick->predicate = [this] { return count->Mark() == 0; }; };
  start({"-N2"});
  support::standardOutputOf([this] { simulator->Run(); });
  EXPECT_THAT(log, ElementsAre("tick.Enabled",                                                   // the list
                               "tick.Enabled", "tick.Enabled", "tick.Sample", "tick.Predicate",  // first batch
                               "tick.Fire", "tick.Enabled",                                      //
                               "tick.Enabled", "tick.Enabled", "tick.Sample", "tick.Predicate",  // second batch
                               "tick.Fire", "tick.Enabled"));
}

TEST_F(TerminatingSimulationTest, ABatchBeginsWithoutWatchedGroups) {
  std::vector<std::size_t> watchedAtFirstSample;
  change = [&] {
    tick->watched = [] { return true; };
    tick->delay = [&] {
      if (simulator->CurrentTime == 0.0) {
        watchedAtFirstSample.push_back(simulator->TheReactivationList.size());
        EXPECT_FALSE(tick->Reactivation);
        EXPECT_TRUE(addressOf(*tick).isReactNull());
      }
      return 1.0;
    };
  };
  run({"-N3"});
  EXPECT_THAT(watchedAtFirstSample, ElementsAre(0, 0, 0));
}

TEST_F(TerminatingSimulationTest, ARunThatIsStoppedBeforeItsLoopDoesNoBatch) {
  start({"-N5"});
  simulator->SimControl = SimulatorClass::STOPHARD;
  const std::string output = support::standardOutputOf([this] { simulator->Run(); });
  EXPECT_EQ(simulator->BatchRuns, 0);
  EXPECT_THAT(output, testing::StartsWith("Actions fired: 0\nCPU time (s): "));
  EXPECT_NE(simulator->CurPacket, nullptr) << "the packets are made before the loop";
}

TEST_F(TerminatingSimulationTest, ReportsThatAreHeldBackAreNotSentAfterAHardStop) {
  int firings = 0;
  change = [&] {
    tick->effect = [&] {
      if (++firings == 2 * 14) {
        simulator->SimControl = SimulatorClass::STOPHARD;
      }
    };
  };
  // The first ten outputs are made at once; the reports of batches 11 to 14 of this fast run are held.
  EXPECT_THAT(runWithFile({"-N0", "-n1"}), SizeIs(2 * 10));
  EXPECT_EQ(simulator->BatchRuns, 14);
}

TEST_F(TerminatingSimulationTest, TheScratchObjectsAreGoneAfterTheLoop) {
  run({"-N1"});
  EXPECT_EQ(simulator->CurrEvent, nullptr);
  EXPECT_EQ(simulator->TempEvent, nullptr);
  EXPECT_EQ(simulator->NullAction, nullptr);
}

TEST_F(TerminatingSimulationTest, AtTheFirstSamplesOfABatchTheLastBatchsActionStandsForTheFired) {
  std::vector<BaseActionClass*> fired;
  change = [&] { tick->effect = [&] { fired.push_back(simulator->TempAction); }; };
  start({"-N2"});
  BaseActionClass* none = nullptr;
  tick->delay = [&] {
    none = simulator->NullAction;
    return 2.0;
  };
  support::standardOutputOf([this] { simulator->Run(); });
  EXPECT_THAT(fired, ElementsAre(none, none)) << "no action has fired in the batch";
}

class BatchTraceTest : public TerminatingSimulationTest {
 protected:
  /// The trace calls of a run at that level, without those of single firings.
  std::vector<std::string> traceAt(int level) {
    start({"-N2"});
    support::LoggingSink sink(trace);
    simulator->trace->AddTraceFile(&sink);
    simulator->trace->addPVModel(simulator->TheModel);
    simulator->trace->setTraceLevel(level);
    support::standardOutputOf([this] { simulator->Run(); });
    std::erase_if(trace, [](const std::string& call) { return call.ends_with("tick"); });
    simulator.reset();
    return trace;
  }

  support::CallLog trace;
};

TEST_F(BatchTraceTest, LevelZeroShowsABatchLineBeforeTheFirstAndAtTheEndOfEachBatch) {
  EXPECT_THAT(traceAt(0), ElementsAre("new batch", "new batch", "new batch", "footer"));
}

TEST_F(BatchTraceTest, LevelOneShowsTheInitialStateOfEachBatch) {
  EXPECT_THAT(traceAt(1),
              ElementsAre("new batch", "initial state", "new batch", "initial state", "new batch", "footer"));
}

TEST_F(BatchTraceTest, LevelThreeShowsTheStateAfterEachFiring) {
  EXPECT_THAT(traceAt(3), ElementsAre("new batch", "initial state", "state", "state", "new batch",  //
                                      "initial state", "state", "state", "new batch", "footer"));
}

TEST_F(BatchTraceTest, TheStateIsNotShownAfterTheFiringThatLeavesNoEvent) {
  change = [this] { tick->predicate = [this] { return count->Mark() == 0; }; };
  EXPECT_THAT(traceAt(3),
              ElementsAre("new batch", "initial state", "new batch", "initial state", "new batch", "footer"));
}

TEST_F(BatchTraceTest, TheBatchLineStandsAheadOfTheClosingOfTheVariables) {
  useModel([](HandModel& model) { model.addActivity("tick"); }, {{kStop, [this] {
                                                                    trace.emplace_back("rate");
                                                                    return 1.0;
                                                                  }}});
  const support::CallLog calls = traceAt(0);
  ASSERT_GE(calls.size(), 3U);
  EXPECT_THAT(std::vector<std::string>(calls.end() - 3, calls.end()), ElementsAre("new batch", "rate", "footer"));
}

TEST_F(TerminatingSimulationTest, DebugLinesTellSizeAndBytesOfTheOriginalState) {
  change = [this] { count->setMark(258); };
  const auto outputAtLevel = [this](int level) {
    start({"-N1"});
    simulator->SimControl = SimulatorClass::STOPHARD;
    const support::DebugLevelGuard guard(level);
    return support::standardOutputOf([this] { simulator->TerminatingSimulation(); });
  };
  // Two bytes of the place, and four of the last action's number, of which there is none.
  EXPECT_THAT(outputAtLevel(4), testing::HasSubstr("** Size of original state = 6\n** OriginalState[0] = 2\n"
                                                   "** OriginalState[1] = 1\n** OriginalState[2] = 0\n"));
  EXPECT_EQ(outputAtLevel(3), "** Size of original state = 6\n");
  EXPECT_EQ(outputAtLevel(2), "");
}

}  // namespace
