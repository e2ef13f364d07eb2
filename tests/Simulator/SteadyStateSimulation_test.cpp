#include <bit>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BaseClasses/ProcessId.h"
#include "BaseClasses/QuorvaQueue.h"
#include "BaseClasses/QuorvaSocket.h"
#include "BaseClasses/Traceprintf.h"
#include "Simulator/DataPacket.h"
#include "Simulator/Heap.h"
#include "Simulator/SteadyStateTest.h"
#include "support/FlushWatch.h"
#include "support/Loopback.h"
#include "support/TemporaryFile.h"

namespace {

using support::HandActivity;
using support::HandModel;
using support::TemporaryFile;
using support::WindowVariable;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::KilledBySignal;
using testing::SizeIs;

using Lines = std::vector<std::string>;

const std::string kAbsorbing = "Simulator encountered an absorbing state and is unable to proceed.  Terminating run.\n";

/// `tick` fires every time unit and adds one to `count`, which is n from time n to n + 1. So the average of `count`
/// over [a, b] is known by hand. What else the model does, a test sets before it starts the run.
class SteadyStateSimulationTest : public support::SteadyStateTest {
 protected:
  SteadyStateSimulationTest() { use({averageOfCount(0.0, 2.0)}); }
  ~SteadyStateSimulationTest() override {
    trout = &std::cout;
    ::TraceLevel = 0;
  }

  void use(std::vector<WindowVariable> variables) {
    useSteadyModel(
        [this](HandModel& model) {
          count = &model.addPlace("count");
          tick = &model.addActivity("tick", {}, {count});
          tick->effect = [this] { count->setMark(static_cast<short>(count->Mark() + 1)); };
          change();
        },
        std::move(variables));
  }

  WindowVariable averageOfCount(double start, double stop) {
    return {.start = start, .stop = stop, .rate = [this] { return static_cast<double>(count->Mark()); }};
  }

  static WindowVariable firings(double start, double stop, WindowVariable::Impulses impulses) {
    return {.start = start, .stop = stop, .impulses = impulses, .counted = "tick"};
  }

  /// Runs to the end of the loop, silently.
  SimulatorProbe& runSteadyState(std::vector<std::string> words) {
    words.insert(words.begin(), "-t0");
    return run(std::move(words));
  }

  /// The same; gives the value lines of the ASCII result file.
  Lines valuesOf(std::vector<std::string> words) {
    const TemporaryFile file("steady");
    words.insert(words.end(), {"-a", file.name()});
    runSteadyState(std::move(words));
    Lines values;
    std::ifstream stream(file.name());
    for (std::string line; std::getline(stream, line);) {
      if (!line.starts_with('#')) {
        values.push_back(line);
      }
    }
    return values;
  }

  /// The time of the next stop of a variable, and how many batches it has finished.
  [[nodiscard]] double nextStop(int variable) const { return simulator->StopTimes->getElement(variable); }
  [[nodiscard]] int completed(int variable) const { return simulator->CompletedBatches->getElement(variable); }

  std::function<void()> change = [] {};
  Place* count = nullptr;        // borrowed from the model
  HandActivity* tick = nullptr;  // borrowed from the model
};

// ---- Batches --------------------------------------------------------------------------------------------------------

TEST_F(SteadyStateSimulationTest, EachBatchGivesOneObservationAndTheModelRunsOn) {
  EXPECT_THAT(valuesOf({"-N4"}), ElementsAre("0,0.5", "0,2.5", "0,4.5", "0,6.5"));
  EXPECT_EQ(simulator->SimControl, SimulatorClass::STOPHARD) << "raised by the flush";
  EXPECT_EQ(simulator->BatchRuns, 0) << "that counts terminating batches alone";
}

/// The fourth stop is at 8. The event of that time is the next one when the stop is served, and fires as the last one.
TEST_F(SteadyStateSimulationTest, AStopAtTheTimeOfAFiringIsServedBeforeItAndOneMoreFiringFollows) {
  runSteadyState({"-N4"});
  EXPECT_EQ(simulator->_fireActionCount, 8);
  EXPECT_EQ(count->Mark(), 8) << "the marking is never restored";
}

/// Over [0, 2.5] the count is 0, 1, and 2 for half a unit: 2 / 2.5.
TEST_F(SteadyStateSimulationTest, AStopBetweenFiringsIsServedBeforeTheNextFiring) {
  use({averageOfCount(0.0, 2.5)});
  EXPECT_THAT(valuesOf({"-N1"}), ElementsAre("0,0.8"));
  EXPECT_EQ(simulator->_fireActionCount, 3) << "the stop of 2.5 is seen at 3";
}

TEST_F(SteadyStateSimulationTest, SeveralStopsWithinOneStepAreServedInOrder) {
  use({averageOfCount(0.0, 0.25)});
  EXPECT_THAT(valuesOf({"-N5"}), ElementsAre("0,0.0", "0,0.0", "0,0.0", "0,0.0", "0,1.0", "0,1.0", "0,1.0", "0,1.0"));
  EXPECT_EQ(simulator->_fireActionCount, 2) << "the limit is looked at between firings";
}

TEST_F(SteadyStateSimulationTest, AVariableWithoutTransientBeginsWithItsFirstBatch) {
  change = [this] {
    tick->effect = [this] {
      if (simulator->_fireActionCount == 0) {
        EXPECT_EQ(nextStop(0), 2.0);
        EXPECT_EQ(completed(0), 0);
      }
    };
  };
  runSteadyState({"-N1"});
}

/// Over [1.5, 3.5] the count is 1 for half a unit, 2 for one, 3 for half of one: 4 / 2. Two units later it is 2 more.
TEST_F(SteadyStateSimulationTest, TheEndOfATransientGivesNoObservation) {
  use({averageOfCount(1.5, 3.5)});
  std::vector<std::pair<double, int>> seen;  // at each firing
  change = [&] {
    const auto grow = tick->effect;
    tick->effect = [this, grow, &seen] {
      seen.emplace_back(nextStop(0), completed(0));
      grow();
    };
  };
  EXPECT_THAT(valuesOf({"-N2"}), ElementsAre("0,2.0", "0,4.0"));
  using Stop = std::pair<double, int>;
  EXPECT_THAT(seen, ElementsAre(Stop(1.5, -1), Stop(3.5, 0), Stop(3.5, 0), Stop(5.5, 1), Stop(5.5, 1), Stop(7.5, 2)));
}

TEST_F(SteadyStateSimulationTest, ATransientMayEndInTheSameStepAsTheFirstBatches) {
  use({averageOfCount(0.25, 0.5)});
  EXPECT_THAT(valuesOf({"-N1"}), ElementsAre("0,0.0", "0,0.0", "0,0.0"));  // [0.25, 0.5], [0.5, 0.75], [0.75, 1]
  EXPECT_EQ(simulator->_fireActionCount, 1);
}

/// Any start but exactly 0 is a transient; one before the beginning is over at once. The first batch is [-1, 1], of
/// which half was simulated.
TEST_F(SteadyStateSimulationTest, ATransientBeforeTheBeginningIsOverAtTheFirstFiring) {
  use({{.start = -1.0, .stop = 1.0, .rate = [] { return 1.0; }}});
  EXPECT_THAT(valuesOf({"-N2"}), ElementsAre("0,0.5", "0,1.0"));
}

// ---- Several variables ----------------------------------------------------------------------------------------------

TEST_F(SteadyStateSimulationTest, TheRunLastsUntilTheSlowestVariableHasItsBatches) {
  use({averageOfCount(0.0, 1.0), averageOfCount(0.0, 10.0)});
  const Lines values = valuesOf({"-N3"});
  ASSERT_THAT(values, SizeIs(30 + 3));
  EXPECT_EQ(values[0], "0,0.0");
  EXPECT_EQ(values[29], "0,29.0");
  EXPECT_EQ(values[30], "1,4.5");
  EXPECT_EQ(values[31], "1,14.5");
  EXPECT_EQ(values[32], "1,24.5");
  EXPECT_EQ(simulator->_fireActionCount, 30);
}

/// Stops: 2, 4, 6 and so on of the first; 1, then 4, 7, 10 of the second, whose third batch ends the run.
TEST_F(SteadyStateSimulationTest, VariablesHaveTransientsAndBatchLengthsOfTheirOwn) {
  use({averageOfCount(0.0, 2.0), averageOfCount(1.0, 4.0)});
  EXPECT_THAT(valuesOf({"-N3"}), ElementsAre("0,0.5", "0,2.5", "0,4.5", "0,6.5", "0,8.5",  //
                                             "1,2.0", "1,5.0", "1,8.0"));
}

/// One firing at 1; the stops before it lie at 0.75 of variable 0, at 0.5 and 1 of variable 1, at 0.625 of variable 2.
TEST_F(SteadyStateSimulationTest, StopsOfSeveralVariablesAreServedInTheOrderOfTheirTimes) {
  use({averageOfCount(0.0, 0.75), averageOfCount(0.0, 0.5), averageOfCount(0.625, 8.0)});
  start({"-t0", "-N1"});
  using Completed = std::vector<int>;
  class StopSink : public TraceFile {
   public:
    StopSink(SimulatorProbe& simulator, std::vector<Completed>& seen) : simulator_(simulator), seen_(seen) {}
    void newBatch() override {
      if (simulator_.CurPacket != nullptr && simulator_._fireActionCount == 0) {
        seen_.push_back({completed(0), completed(1), completed(2)});
      }
    }

   private:
    int completed(int variable) { return simulator_.CompletedBatches->getElement(variable); }
    SimulatorProbe& simulator_;
    std::vector<Completed>& seen_;
  };
  std::vector<Completed> seen;
  StopSink sink(*simulator, seen);
  simulator->trace->AddTraceFile(&sink);
  simulator->trace->addPVModel(simulator->TheModel);
  support::standardOutputOf([this] { simulator->Run(); });
  EXPECT_THAT(seen, ElementsAre(Completed{0, 1, -1}, Completed{0, 1, 0}, Completed{1, 1, 0}, Completed{1, 2, 0}));
}

TEST_F(SteadyStateSimulationTest, AVariableBehindTerminatingOnesHasItsOwnNumber) {
  WindowVariable terminatingOne = averageOfCount(0.0, 2.5);
  terminatingOne.type = terminating;
  use({terminatingOne, terminatingOne, terminatingOne, averageOfCount(0.0, 2.0)});
  EXPECT_THAT(valuesOf({"-N2"}), ElementsAre("3,0.5", "3,2.5"));
  EXPECT_EQ(simulator->NumPVs, 4);
}

/// Over [0, 2.5] the integral of the count is 1 + 2 * 0.5. The last stop of all, 3, ends each terminating batch.
TEST_F(SteadyStateSimulationTest, AModelWithVariablesOfBothTypesRunsBothWays) {
  WindowVariable integral = averageOfCount(0.0, 2.5);
  integral.type = terminating;
  use({integral, averageOfCount(1.0, 3.0), firings(0.0, 2.0, WindowVariable::kOfEachBatch)});
  EXPECT_THAT(valuesOf({"-N2"}), ElementsAre("1,1.5", "1,3.5", "2,1.0", "2,2.0"));

  const TemporaryFile file("terminating");
  run({"-t1", "-N2", "-a", file.name()});
  EXPECT_THAT(file.bytes(), HasSubstr("\n0,2.0\n0,2.0\n1,0.0\n1,0.0\n2,0.0\n2,0.0\n"));
  EXPECT_EQ(simulator->_fireActionCount, 2 * 3);
}

// ---- Impulses -------------------------------------------------------------------------------------------------------

/// Batches of 2.5: firings at 1 and 2; at 3 and 4, as that at 5 begins the next one; at 5, 6 and 7; at 8 and 9.
TEST_F(SteadyStateSimulationTest, ASteadyStateImpulseCountsEachFiringInTheBatchOfItsTime) {
  use({firings(0.0, 2.5, WindowVariable::kOfEachBatch)});
  EXPECT_THAT(valuesOf({"-N4"}), ElementsAre("0,2.0", "0,2.0", "0,3.0", "0,2.0"));
}

TEST_F(SteadyStateSimulationTest, ASteadyStateImpulseCountsNothingTwiceWhereManyBatchesEndInOneStep) {
  use({firings(0.0, 0.25, WindowVariable::kOfEachBatch)});
  EXPECT_THAT(valuesOf({"-N9"}), ElementsAre("0,0.0", "0,0.0", "0,0.0", "0,0.0",  //
                                             "0,1.0", "0,0.0", "0,0.0", "0,0.0",  //
                                             "0,1.0", "0,0.0", "0,0.0", "0,0.0"));
}

TEST_F(SteadyStateSimulationTest, AFiringOfTheTransientCountsInNoBatch) {
  use({firings(2.0, 4.0, WindowVariable::kOfEachBatch)});
  EXPECT_THAT(valuesOf({"-N2"}), ElementsAre("0,2.0", "0,2.0"));  // at 2 and 3; at 4 and 5
}

TEST_F(SteadyStateSimulationTest, RateAndImpulseOfOneVariableAddUp) {
  WindowVariable both = firings(0.0, 2.0, WindowVariable::kOfEachBatch);
  both.rate = [this] { return static_cast<double>(count->Mark()); };
  use({both});
  EXPECT_THAT(valuesOf({"-N3"}), ElementsAre("0,1.5", "0,4.5", "0,6.5"));
}

/// On purpose: the window of an interval impulse stays at [0, 2.5]. The step that closes the first batch carries the
/// firing at 2, and so does the first step of the second batch; what fires later lies outside.
TEST_F(SteadyStateSimulationTest, AnIntervalImpulseCountsInItsFirstWindowOnly) {
  use({firings(0.0, 2.5, WindowVariable::kOfTheFirstWindow)});
  EXPECT_THAT(valuesOf({"-N4"}), ElementsAre("0,2.0", "0,1.0", "0,0.0", "0,0.0"));
}

// ---- Reports --------------------------------------------------------------------------------------------------------

TEST_F(SteadyStateSimulationTest, ARunWithinOneReportSendsItAtTheEnd) {
  EXPECT_THAT(valuesOf({"-N3"}), SizeIs(3));
  EXPECT_EQ(simulator->NumberReports, 2) << "one output, counted from 1";
}

/// The first observation enters the packet; the second finds it full and sends it first.
TEST_F(SteadyStateSimulationTest, WithReportsOfOneEachObservationSendsTheOneBefore) {
  std::vector<int> reports;
  change = [&] { tick->effect = [&] { reports.push_back(simulator->NumberReports - 1); }; };
  EXPECT_THAT(valuesOf({"-N4", "-n1"}), SizeIs(4));
  // Stops at 2, 4, 6 and 8, each served before the firing of its time.
  EXPECT_THAT(reports, ElementsAre(0, 0, 0, 1, 1, 2, 2, 3));
  EXPECT_EQ(simulator->NumberReports - 1, 4) << "and the last one goes out at the end";
}

/// Rows of 2. Variable 0 stops at every unit, variable 1 at 3, 6 and 9, each time after variable 0.
TEST_F(SteadyStateSimulationTest, AFullRowSendsTheRowsOfAllVariables) {
  use({averageOfCount(0.0, 1.0), averageOfCount(0.0, 3.0)});
  EXPECT_THAT(valuesOf({"-N3", "-n2"}), ElementsAre("0,0.0", "0,1.0",           // variable 1 has none yet
                                                    "0,2.0", "0,3.0", "1,1.0",  //
                                                    "0,4.0", "0,5.0", "1,4.0",  //
                                                    "0,6.0", "0,7.0",           //
                                                    "0,8.0", "1,7.0"));
}

/// A number in network order.
std::string number(std::uint64_t value, int width) {
  std::string bytes;
  for (int byte = width - 1; byte >= 0; --byte) {
    bytes += static_cast<char>((value >> (8 * byte)) & 0xFF);
  }
  return bytes;
}

std::string record(int variable, const std::vector<double>& values) {
  std::string text = number(static_cast<std::uint64_t>(variable), 2) + number(1, 1) + number(values.size(), 4);
  for (const double value : values) {
    text += number(std::bit_cast<std::uint64_t>(value), 8);
  }
  return text;
}

std::string message(int records, const std::string& body) {
  return number(9 + body.size(), 4) + number(0, 1) + number(0, 2) + number(static_cast<std::uint64_t>(records), 2) +
         body;
}

std::string binaryHeader() {
  std::string header =
      "QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,"
      "RANDOMGEN=Lagged Fibonacci,BATCHES=0,,";
  header.resize(256, '\0');
  return header;
}

TEST_F(SteadyStateSimulationTest, AVariableWithoutNewObservationsHasNoRecordInTheMessage) {
  use({averageOfCount(0.0, 1.0), averageOfCount(0.0, 3.0)});
  const TemporaryFile file("binary");
  runSteadyState({"-N1", "-n2", "-b", file.name()});
  EXPECT_EQ(file.bytes(),
            binaryHeader() + message(1, record(0, {0.0, 1.0})) + message(2, record(0, {2.0}) + record(1, {1.0})));
}

TEST_F(SteadyStateSimulationTest, BothFilesSayThatThereWereNoTerminatingBatches) {
  const TemporaryFile ascii("ascii");
  const TemporaryFile binary("binary");
  runSteadyState({"-N2", "-a", ascii.name(), "-b", binary.name()});
  simulator.reset();
  EXPECT_EQ(ascii.bytes(),
            "#QUORVA_SIM_ASCII_FILE,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,"
            "RANDOMGEN=Lagged Fibonacci\n"
            "#FORMAT: (PV ID Number),(PV Value)\n"
            "0,0.5\n0,2.5\n"
            "#META_DATA,BATCHES=0\n");
  EXPECT_EQ(binary.bytes(), binaryHeader() + message(1, record(0, {0.5, 2.5})));
}

/// The square of the reward rate integrates in steps: the first step of each batch has 2 times the count of one unit,
/// that is TReward * TReward / 2 for each unit.
TEST_F(SteadyStateSimulationTest, TheSquaredPacketHoldsTheSecondMoments) {
  runSteadyState({"-N2", "-n5"});
  // The last report has gone; its packets wait for their next use with their observations in them.
  DataPacket* const values = simulator->UnusedPackets->Pop();
  DataPacket* const squares = simulator->UnusedPackets->Pop();
  ASSERT_NE(squares, nullptr);
  EXPECT_EQ(values->GetNumObs(0), 2);
  EXPECT_EQ(squares->GetNumObs(0), 2);
  EXPECT_EQ(values->GetObsArray(0)[1], 2.5);
  EXPECT_EQ(squares->GetObsArray(0)[0], (0.0 + 1.0) / 2.0);
  EXPECT_EQ(squares->GetObsArray(0)[1], (4.0 + 9.0) / 2.0);
  simulator->UnusedPackets->Push(values);
  simulator->UnusedPackets->Push(squares);
}

// ---- Ends -----------------------------------------------------------------------------------------------------------

TEST_F(SteadyStateSimulationTest, ALimitOfZeroOrLessIsNone) {
  for (const char* const limit : {"-N0", "-N-3"}) {
    change = [this] {
      tick->effect = [this] {
        if (simulator->_fireActionCount == 99) {
          simulator->SimControl = SimulatorClass::STOPHARD;
        }
      };
    };
    EXPECT_THAT(valuesOf({limit}), IsEmpty()) << "after a hard stop the last report is not sent";
    EXPECT_EQ(simulator->_fireActionCount, 100);
  }
}

/// Firings at 1 to 5; the stops at 2 and 4 are served, and the batch that begins at 4 is not finished.
class AbsorbingTest : public SteadyStateSimulationTest {
 protected:
  AbsorbingTest() {
    change = [this] { tick->predicate = [this] { return count->Mark() < 5; }; };
  }
};

TEST_F(AbsorbingTest, AnAbsorbingStateEndsTheRunWithTheFinishedBatches) {
  EXPECT_THAT(valuesOf({"-N100"}), ElementsAre("0,0.5", "0,2.5"));
  EXPECT_EQ(simulator->_fireActionCount, 5);
  EXPECT_EQ(simulator->SimControl, SimulatorClass::STOPHARD);
}

TEST_F(AbsorbingTest, ItIsToldOnceDirectlyAndOnceThroughTheTrace) {
  start({"-t0", "-N100"});
  const std::string output = support::standardOutputOf([this] { simulator->Run(); });
  EXPECT_THAT(output, testing::StartsWith(kAbsorbing + kAbsorbing + "Actions fired: 5\nCPU time (s): "));
  start({"-t0", "-N100"});
  EXPECT_THAT(support::linesHeldBack(std::cout, [this] { simulator->Run(); }), IsEmpty());
}

TEST_F(AbsorbingTest, ATraceFileIsToldToo) {
  const TemporaryFile base("trace");
  const std::string name = std::string(base.name()) + ".txt";
  start({"-t0", "-N100", "-l0", "-f", base.name()});
  const std::string output = support::standardOutputOf([this] { simulator->Run(); });
  simulator->deleteLoopObjects();
  simulator.reset();
  EXPECT_THAT(output, testing::StartsWith(kAbsorbing + kAbsorbing + "Actions fired: 5\n"));
  const std::string text = support::bytesOf(name);
  std::filesystem::remove(name);
  const std::size_t first = text.find(kAbsorbing);
  ASSERT_NE(first, std::string::npos) << text;
  EXPECT_EQ(text.find(kAbsorbing, first + 1), std::string::npos);
}

TEST_F(AbsorbingTest, TheFinalReportHoldsWhatCameSinceTheLastOne) {
  EXPECT_THAT(valuesOf({"-N100", "-n1"}), ElementsAre("0,0.5", "0,2.5"));
  EXPECT_EQ(simulator->NumberReports - 1, 2);
}

/// The last firing may also be the one that follows the limit.
TEST_F(AbsorbingTest, ItIsToldEvenWhereTheLimitHasJustEndedTheRun) {
  change = [this] { tick->predicate = [this] { return count->Mark() < 2; }; };
  start({"-t0", "-N1"});
  EXPECT_THAT(support::standardOutputOf([this] { simulator->Run(); }),
              testing::StartsWith(kAbsorbing + kAbsorbing + "Actions fired: 2\n"));
}

TEST_F(SteadyStateSimulationTest, AnEventThatNeverComesIsAnAbsorbingState) {
  change = [this] {
    tick->delay = [this] { return count->Mark() < 5 ? 1.0 : std::numeric_limits<double>::infinity(); };
  };
  EXPECT_THAT(valuesOf({"-N100"}), ElementsAre("0,0.5", "0,2.5"));
  EXPECT_EQ(simulator->_fireActionCount, 5);
}

TEST_F(SteadyStateSimulationTest, WithAnEventThatNeverComesAloneThereIsNoStep) {
  change = [this] { tick->delay = [] { return std::numeric_limits<double>::infinity(); }; };
  EXPECT_THAT(valuesOf({"-N100"}), IsEmpty());
  EXPECT_EQ(simulator->_fireActionCount, 0);
}

class NothingEnabledTest : public SteadyStateSimulationTest {
 protected:
  NothingEnabledTest() {
    change = [this] { tick->predicate = [] { return false; }; };
  }
};

TEST_F(NothingEnabledTest, TheRunEndsWithoutAStepAndWithoutWords) {
  start({"-t0", "-N3"});
  const std::string output = support::standardOutputOf([this] { simulator->Run(); });
  EXPECT_EQ(output, "Actions fired: 0\nCPU time (s): 0\n");
  EXPECT_EQ(simulator->CPUSeconds, 0.0);
  EXPECT_EQ(simulator->SimControl, SimulatorClass::STOPHARD) << "raised by the flush";
  EXPECT_EQ(simulator->NumberReports - 1, 1) << "the empty report is made";
}

TEST_F(NothingEnabledTest, TheFilesHoldAnEmptyReport) {
  const TemporaryFile ascii("ascii");
  const TemporaryFile binary("binary");
  runSteadyState({"-a", ascii.name(), "-b", binary.name()});
  simulator.reset();
  EXPECT_THAT(ascii.bytes(), testing::EndsWith("#FORMAT: (PV ID Number),(PV Value)\n#META_DATA,BATCHES=0\n"));
  EXPECT_EQ(binary.bytes(), binaryHeader() + message(0, "")) << "nine bytes, and no record";
}

TEST_F(NothingEnabledTest, ASteadyStateVariableIsNotNeededThen) {
  useSteadyModel([](HandModel& model) { model.addActivity("tick").predicate = [] { return false; }; }, {});
  runSteadyState({"-N3"});
  EXPECT_EQ(simulator->SimControl, SimulatorClass::STOPHARD);
}

TEST_F(NothingEnabledTest, ARunThatIsToStopAtOnceStaysSo) {
  const TemporaryFile binary("binary");
  start({"-t0", "-b", binary.name()});
  simulator->SimControl = SimulatorClass::STOPHARD;
  support::standardOutputOf([this] { simulator->Run(); });
  EXPECT_EQ(binary.bytes(), binaryHeader()) << "no report, not even an empty one";
}

TEST_F(SteadyStateSimulationTest, WithoutASteadyStateVariableTheFirstLookAtTheStopsAborts) {
  WindowVariable terminatingOne = averageOfCount(0.0, 2.0);
  terminatingOne.type = terminating;
  for (const std::size_t number : {std::size_t{0}, std::size_t{1}}) {
    simulator.reset();  // it reads the study's model to its end
    use(std::vector<WindowVariable>(number, terminatingOne));
    start({"-t0", "-N1"});
    EXPECT_EXIT(simulator->Run(), KilledBySignal(SIGABRT), "^Assertion failed: size > 0, file Heap\\.h, line [0-9]+\n");
  }
}

TEST_F(SteadyStateSimulationTest, ABatchWithoutLengthIsReportedAndEndsTheRun) {
  use({averageOfCount(0.0, 2.0), averageOfCount(3.0, 3.0)});
  start({"-t0", "-N1"});
  EXPECT_EXIT(simulator->Run(), ExitedWithCode(1),
              "^ERROR: the batches of performance variable \"variable\" have the length 0; a steady-state variable's "
              "stop must lie behind its start\n$");
}

TEST_F(SteadyStateSimulationTest, TheScratchObjectsAndTheHeapsAreGoneAfterTheLoop) {
  runSteadyState({"-N1"});
  EXPECT_EQ(simulator->CurrEvent, nullptr);
  EXPECT_EQ(simulator->TempEvent, nullptr);
  EXPECT_EQ(simulator->NullAction, nullptr);
  EXPECT_EQ(simulator->StopTimes, nullptr);
  EXPECT_EQ(simulator->CompletedBatches, nullptr);
}

TEST_F(SteadyStateSimulationTest, ARunThatIsStoppedBeforeItsLoopTakesNoStep) {
  start({"-t0", "-N5"});
  simulator->SimControl = SimulatorClass::STOPHARD;
  const std::string output = support::standardOutputOf([this] { simulator->Run(); });
  EXPECT_THAT(output, testing::StartsWith("Actions fired: 0\nCPU time (s): "));
  EXPECT_EQ(simulator->NumberReports - 1, 0);
}

// ---- Order of the calls ---------------------------------------------------------------------------------------------

TEST_F(SteadyStateSimulationTest, TheStartAsksEachGroupForTheListAndForTheFirstScheduling) {
  runSteadyState({"-N1"});
  EXPECT_THAT(log, ElementsAre("tick.Enabled",                                                // the list
                               "tick.Enabled", "tick.Sample", "tick.Predicate",               // the first scheduling
                               "tick.Fire", "tick.Enabled", "tick.Sample", "tick.Predicate",  //
                               "tick.Fire", "tick.Enabled", "tick.Sample", "tick.Predicate"));
}

TEST_F(SteadyStateSimulationTest, UntilTheFirstFiringNoneStandsForTheFired) {
  std::vector<bool> isNone;
  change = [&] { tick->effect = [&] { isNone.push_back(simulator->TempAction == simulator->NullAction); }; };
  runSteadyState({"-N1"});
  EXPECT_THAT(isNone, ElementsAre(true, false));
}

class SteadyStateTraceTest : public SteadyStateSimulationTest {
 protected:
  SteadyStateTraceTest() { use({averageOfCount(1.0, 3.0)}); }

  /// The trace calls of a run of one batch at that level. The firing that follows the stop is at 3.
  Lines traceAt(int level) {
    start({"-t0", "-N1"});
    support::LoggingSink sink(log);
    simulator->trace->AddTraceFile(&sink);
    simulator->trace->addPVModel(simulator->TheModel);
    simulator->trace->setTraceLevel(level);
    support::standardOutputOf([this] { simulator->Run(); });
    std::erase_if(log, [](const std::string& call) {
      return call.starts_with("tick.") || call.starts_with("before") || call.starts_with("after");
    });
    simulator.reset();
    return log;
  }
};

TEST_F(SteadyStateTraceTest, ABatchLineStandsAtTheStartAtTheEndOfATransientAndAtEachStop) {
  EXPECT_THAT(traceAt(0), ElementsAre("new batch", "new batch", "firing tick", "firing tick", "new batch",
                                      "firing tick", "footer"));
}

TEST_F(SteadyStateTraceTest, LevelOneShowsTheInitialStateOnce) {
  EXPECT_THAT(traceAt(1), ElementsAre("new batch", "initial state", "new batch", "firing tick", "firing tick",
                                      "new batch", "firing tick", "footer"));
}

TEST_F(SteadyStateTraceTest, LevelTwoShowsNoOtherStates) {
  EXPECT_EQ(traceAt(2), traceAt(1));
}

TEST_F(SteadyStateTraceTest, LevelThreeShowsTheStateAfterEachFiring) {
  EXPECT_THAT(traceAt(3), ElementsAre("new batch", "initial state", "new batch", "firing tick", "state", "firing tick",
                                      "state", "new batch", "firing tick", "state", "footer"));
}

/// Unlike in a terminating run.
TEST_F(SteadyStateTraceTest, TheStateIsShownAfterTheFiringThatLeavesNoEvent) {
  change = [this] { tick->predicate = [this] { return count->Mark() == 0; }; };
  EXPECT_THAT(traceAt(3), ElementsAre("new batch", "initial state", "new batch", "firing tick", "state", "footer"));
}

TEST_F(SteadyStateTraceTest, WithNothingEnabledTheInitialStateIsShownAllTheSame) {
  change = [this] { tick->predicate = [] { return false; }; };
  EXPECT_THAT(traceAt(1), ElementsAre("new batch", "initial state", "footer"));
}

// ---- A manager ------------------------------------------------------------------------------------------------------

class ManagedTest : public SteadyStateSimulationTest {
 protected:
  /// Runs under a manager that has sent `signal` before the first report.
  void runUnderManager(std::vector<std::string> words, char signal) {
    words.insert(words.begin(), "-t0");
    start(std::move(words));
    const int port = support::bindToFreePort(listener, support::processId());
    ASSERT_TRUE(listener.Listen(1));
    ASSERT_TRUE(manager.Connect("127.0.0.1", port));
    simulator->SimMgrSocket = new QuorvaSocket(false);
    ASSERT_TRUE(listener.Accept(*simulator->SimMgrSocket));
    ASSERT_EQ(manager.Send(&signal, 1), 1);
    output = support::standardOutputOf([this] { simulator->Run(); });
  }

  QuorvaSocket listener{true};
  QuorvaSocket manager{true};
  std::string output;
};

constexpr char kQuit = 2;

/// The stop at 4 finds the row full, reports it and learns of the quit; the firing at 4 is the last one.
TEST_F(ManagedTest, AQuitEndsTheRunAfterTheFiringAndSkipsTheFinalReport) {
  runUnderManager({"-n1"}, kQuit);
  EXPECT_THAT(output, HasSubstr("SOCKET::Quit\n"));
  EXPECT_EQ(simulator->SimControl, SimulatorClass::STOPHARD);
  EXPECT_EQ(simulator->_fireActionCount, 4);
  EXPECT_EQ(simulator->NumberReports - 1, 1);
}

TEST_F(ManagedTest, AQuitIsNotTakenBackByTheLimitReachedAtTheSameStop) {
  runUnderManager({"-n1", "-N2"}, kQuit);
  EXPECT_EQ(simulator->SimControl, SimulatorClass::STOPHARD);
  EXPECT_EQ(simulator->NumberReports - 1, 1) << "no final report";
}

TEST_F(ManagedTest, AQuitIsNotTakenBackByAnAbsorbingState) {
  change = [this] { tick->predicate = [this] { return count->Mark() < 4; }; };
  runUnderManager({"-n1"}, kQuit);
  EXPECT_THAT(output, HasSubstr(kAbsorbing));
  EXPECT_EQ(simulator->SimControl, SimulatorClass::STOPHARD);
  EXPECT_EQ(simulator->NumberReports - 1, 1) << "no final report";
}

/// Sixteen batches end in the first step. The first report learns of the quit, and what follows has no room.
TEST_F(ManagedTest, ObservationsAfterAQuitWithinOneStepAreDropped) {
  use({averageOfCount(0.0, 0.0625)});
  runUnderManager({"-n2"}, kQuit);
  EXPECT_EQ(simulator->_fireActionCount, 1);
  EXPECT_EQ(simulator->NumberReports - 1, 1);
  EXPECT_EQ(simulator->SimControl, SimulatorClass::STOPHARD);
}

}  // namespace
