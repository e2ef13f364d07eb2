#include "Simulator/SimulatorClass.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "BaseClasses/ActionAffectsElement.h"
#include "BaseClasses/CellPool.h"
#include "BaseClasses/ProcessId.h"
#include "BaseClasses/Sanitizers.h"
#include "BaseClasses/StandardErrors.h"
#include "BaseClasses/TraceFileQuorva.h"
#include "BaseClasses/TraceFileXML.h"
#include "Simulator/EngineTest.h"
#include "Simulator/EventList.h"
#include "Simulator/LaggedFibonacci.h"
#include "Simulator/MersenneTwister.h"
#include "Simulator/Tausworthe.h"
#include "Simulator/UserDistributions.h"
#include "support/AllocationCounter.h"
#include "support/FlushWatch.h"

/// The list's size as only its friend sees it.
class EventListProbe {
 public:
  static int capacityOf(const EventList& list) { return list.capacity; }
};

namespace {

using support::EnvironmentGuard;
using support::HandActivity;
using support::HandModel;
using support::HandVariable;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

static_assert(!std::is_default_constructible_v<SimulatorClass>, "a simulator needs a command line");
static_assert(!std::is_polymorphic_v<SimulatorClass>);

/// A folder that is gone with the test.
class ScratchFolder {
 public:
  ScratchFolder()
      : path_(std::filesystem::temp_directory_path() / ("quorva_test_" + std::to_string(support::processId()))) {
    std::filesystem::create_directory(path_);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() { std::filesystem::remove_all(path_); }

  [[nodiscard]] std::string at(const char* name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

std::string contentOf(const std::string& file) {
  std::ifstream stream(file);
  std::ostringstream content;
  content << stream.rdbuf();
  return content.str();
}

/// Without the numbers that a clock gives.
std::string withoutSeconds(const std::string& text) {
  std::istringstream lines(text);
  std::string result;
  for (std::string line; std::getline(lines, line);) {
    for (const std::string label : {"GenerateConnectivityList() Time=", "CPU time (s): "}) {
      if (line.starts_with(label)) {
        EXPECT_GE(std::stod(line.substr(label.size())), 0.0);
        line = label;
      }
    }
    result += line + '\n';
  }
  return result;
}

class SimulatorClassTest : public support::EngineTest {
 protected:
  SimulatorClassTest() {
    useModel([this](HandModel& model) {
      tick = &model.addActivity("tick");
      tock = &model.addActivity("tock");
    });
  }

  /// What setting up a simulator with these words writes to standard output. An earlier one ends before.
  std::string outputOfStart(std::vector<std::string> words) {
    simulator.reset();
    const std::string output =
        support::standardOutputOf([&] { simulator = std::make_unique<SimulatorProbe>(std::move(words)); });
    return withoutSeconds(output);
  }

  std::string outputOfRun() {
    return withoutSeconds(support::standardOutputOf([this] { simulator->Run(); }));
  }

  HandActivity* tick = nullptr;  // borrowed from the model
  HandActivity* tock = nullptr;
};

TEST_F(SimulatorClassTest, SettingUpTellsOptionsThenTheConnectivityBuilderAndItsTime) {
  EXPECT_EQ(outputOfStart({"-N1"}),
            "Max Number of Batches: 1\nGenerateConnectivityList()\nGenerateConnectivityList() Time=\n");
}

TEST_F(SimulatorClassTest, SettingUpTellsTheBuilderThatSimtestChose) {
  for (const auto& [value, line] :
       std::vector<std::pair<const char*, std::string>>{{"0", "GenerateConnectivityListOld()\n"},
                                                        {"1", "GenerateConnectivityListOld()\n"},
                                                        {"2", "GenerateConnectivityList()\n"},
                                                        {"7", ""}}) {
    const EnvironmentGuard guard("SIMTEST", value);
    EXPECT_EQ(outputOfStart({"stray"}), line + "GenerateConnectivityList() Time=\n") << value;
    simulator.reset();
    const auto start = [&] { simulator = std::make_unique<SimulatorProbe>(std::vector<std::string>{"stray"}); };
    EXPECT_THAT(support::linesHeldBack(std::cout, start), IsEmpty()) << value;
    simulator.reset();
  }
}

TEST_F(SimulatorClassTest, FieldsHaveTheirStartValues) {
  outputOfStart({"stray"});
  EXPECT_EQ(simulator->SimControl, 0);
  EXPECT_EQ(simulator->MaxDataPackets, 50);
  EXPECT_EQ(simulator->NumberReports, 1);
  EXPECT_EQ(simulator->AcceptSelectDelay, 2000);
  EXPECT_EQ(simulator->ReadSelectDelay, 0);
  EXPECT_EQ(simulator->ReportSize, 1000);
  EXPECT_EQ(simulator->SocketPort, 10000);
  EXPECT_EQ(simulator->MyClientID, 0);
  EXPECT_EQ(simulator->TheExperimentNumber, 0U);
  EXPECT_EQ(simulator->CPUSeconds, 0.0);
  EXPECT_EQ(simulator->isTerminatingSimulation, 1);
  EXPECT_EQ(simulator->TraceLevel, 1);
  EXPECT_FALSE(simulator->EnableQuorvaTrace);
  EXPECT_FALSE(simulator->EnableXMLTrace);
  EXPECT_EQ(simulator->RandomNumberSeed, 31415U);
  EXPECT_EQ(simulator->EventListType, 0);
  EXPECT_EQ(simulator->MaxNumOfBatches, 0) << "as the parser leaves it";
  EXPECT_FALSE(simulator->WaitForSocket);
  EXPECT_EQ(simulator->_fireActionCount, 0);
  EXPECT_EQ(simulator->BatchRuns, 0);
  EXPECT_STREQ(simulator->db_entity, "fake");
  EXPECT_EQ(simulator->NumPVs, 1);
  EXPECT_THAT(simulator->TheReactivationList, IsEmpty());
  for (const void* const pointer : std::initializer_list<const void*>{
           simulator->OverrideString, simulator->CurPacket, simulator->CurSqrPacket, simulator->SimMgrSocket,
           simulator->ConnectionSocket, simulator->TraceFilename, simulator->ASCIIFilename, simulator->BinFilename,
           simulator->FileCSV, simulator->FileBin, simulator->InitiallyEnabled}) {
    EXPECT_EQ(pointer, nullptr);
  }
}

TEST_F(SimulatorClassTest, EveryGroupPointsAtABackPointerOfItsOwn) {
  outputOfStart({"stray"});
  EXPECT_EQ(simulator->GroupList[0], tick);
  EXPECT_EQ(simulator->GroupList[1], tock);
  EXPECT_EQ(tick->EventPointer, &simulator->EventPointerArray[0]);
  EXPECT_EQ(tock->EventPointer, &simulator->EventPointerArray[1]);
}

TEST_F(SimulatorClassTest, TheEventListHasRoomForOneEventMoreThanThereAreGroups) {
  outputOfStart({"stray"});
  EXPECT_EQ(EventListProbe::capacityOf(*simulator->TheEventList), 2 + 1);
}

TEST_F(SimulatorClassTest, EveryActionIsListedWithItsReactivationFlagCleared) {
  useModel([this](HandModel& model) {
    tick = &model.addActivity("tick");
    tock = &model.addActivity("tock");
    tick->Reactivation = true;
    tock->Reactivation = true;
  });
  outputOfStart({"stray"});
  EXPECT_EQ(simulator->ActionList[0], tick);
  EXPECT_EQ(simulator->ActionList[1], tock);
  EXPECT_FALSE(tick->Reactivation);
  EXPECT_FALSE(tock->Reactivation);
}

TEST_F(SimulatorClassTest, AFailedAllocationEndsTheProcessWithItsWords) {
  outputOfStart({"stray"});
  EXPECT_EQ(std::get_new_handler(), &MemoryAllocationError);
}

TEST_F(SimulatorClassTest, TheGeneratorIsTheOneOfTheOption) {
  delete std::exchange(TheDistribution->RNG, new LaggedFibonacci);
  outputOfStart({"-r0"});
  EXPECT_NE(dynamic_cast<LaggedFibonacci*>(TheDistribution->RNG), nullptr);
  outputOfStart({"-r1"});
  EXPECT_NE(dynamic_cast<Tausworthe*>(TheDistribution->RNG), nullptr);
  outputOfStart({"-r2"});
  EXPECT_NE(dynamic_cast<MersenneTwister*>(TheDistribution->RNG), nullptr);
}

TEST_F(SimulatorClassTest, LaggedFibonacciIsTheSamplersOwnGeneratorKept) {
  const RandomNumberGenerator* const own = TheDistribution->RNG;
  outputOfStart({"-r0"});
  EXPECT_EQ(TheDistribution->RNG, own);
}

TEST_F(SimulatorClassTest, TheGeneratorIsSeededWithTheOptionsSeedAndZeroStandsForTheDefault) {
  for (const auto& [option, seed] : std::vector<std::pair<const char*, std::uint32_t>>{
           {"-s7", 7}, {"-s0", 31415}, {"-r1", 31415}, {"-s4294967295", 4294967295U}}) {
    Tausworthe expected;
    expected.srnd(seed);
    outputOfStart({"-r1", option});
    EXPECT_EQ(TheDistribution->RNG->rnd(), expected.rnd()) << option;
    simulator.reset();
  }
}

TEST_F(SimulatorClassTest, TheModelIsBuiltBeforeTheGeneratorIsChosen) {
  const RandomNumberGenerator* const before = TheDistribution->RNG;
  const RandomNumberGenerator* atConstruction = nullptr;
  useModel([&](HandModel& model) {
    model.addActivity("tick");
    atConstruction = TheDistribution->RNG;
  });
  outputOfStart({"-r2"});
  EXPECT_EQ(atConstruction, before);
}

TEST_F(SimulatorClassTest, AMissingSamplerOrGeneratorIsMadeAnew) {
  UserDistributions* const own = TheDistribution;
  TheDistribution = nullptr;
  outputOfStart({"-r0"});
  ASSERT_NE(TheDistribution, nullptr);
  EXPECT_NE(dynamic_cast<LaggedFibonacci*>(TheDistribution->RNG), nullptr);
  delete std::exchange(TheDistribution, own);

  delete std::exchange(TheDistribution->RNG, nullptr);
  outputOfStart({"-r0"});
  EXPECT_NE(TheDistribution, own);
  EXPECT_NE(dynamic_cast<LaggedFibonacci*>(TheDistribution->RNG), nullptr);
  delete std::exchange(TheDistribution, own);
}

/// Variables 0 and 2 are of terminating runs, 1 of steady-state ones.
class VariableSelectionTest : public SimulatorClassTest {
 protected:
  VariableSelectionTest() {
    HandVariable variable;
    variable.stop = 5.0;
    HandVariable steady = variable;
    steady.type = steady_state;
    useModel([](HandModel& model) { model.addActivity("tick"); }, {variable, steady, variable});
  }

  [[nodiscard]] std::vector<double> stops() const {
    std::vector<double> result;
    for (int i = 0; i < simulator->NumPVs; ++i) {
      result.push_back(simulator->PVList[i]->Stop);
    }
    return result;
  }

  /// Numbers of the variables that take part.
  [[nodiscard]] std::vector<int> relevant() const {
    std::vector<int> ids;
    for (const PerformanceVariableNode* const node : simulator->TheModel->RelevantNodes) {
      ids.push_back(node->id);
    }
    return ids;
  }

  static constexpr double kNever = std::numeric_limits<double>::max();
};

TEST_F(VariableSelectionTest, ATerminatingRunTakesTerminatingVariablesAndTheOthersNeverComeDue) {
  outputOfStart({"-t1"});
  EXPECT_EQ(simulator->NumPVs, 3) << "all keep their place in the numbering";
  EXPECT_THAT(relevant(), ElementsAre(0, 2));
  EXPECT_THAT(stops(), ElementsAre(5.0, kNever, 5.0));
}

TEST_F(VariableSelectionTest, ASteadyStateRunTakesSteadyStateVariables) {
  outputOfStart({"-t0"});
  EXPECT_THAT(relevant(), ElementsAre(1));
  EXPECT_THAT(stops(), ElementsAre(kNever, 5.0, kNever));
}

TEST_F(VariableSelectionTest, WithoutAVariableOfTheRunsKindNoneTakesPart) {
  useModel([](HandModel& model) { model.addActivity("tick"); }, {{5.0}});
  outputOfStart({"-t0"});
  EXPECT_THAT(relevant(), IsEmpty());
}

TEST_F(VariableSelectionTest, AnySimulationTypeButZeroTakesTerminatingVariables) {
  for (const char* const option : {"-t5", "-t-1"}) {
    outputOfStart({option});
    EXPECT_THAT(relevant(), ElementsAre(0, 2)) << option;
  }
}

/// A study that notes the order in which it is asked.
class NotingStudy : public support::TestStudy {
 public:
  NotingStudy(ModelFactory factory, support::CallLog& log, std::uint32_t experiments)
      : TestStudy(std::move(factory), experiments), log_(log) {}
  ~NotingStudy() override { log_.emplace_back("destroyed"); }

  void SetGVs(int experiment) override { log_.push_back("SetGVs " + std::to_string(experiment)); }
  void OverrideGVValue(const char* name, void* value) override {
    std::ostringstream call;
    call << "override " << name << ' ' << *static_cast<double*>(value);
    log_.push_back(call.str());
  }
  PVModel* GetPVModel(bool expandTimeArrays) override {
    log_.emplace_back(expandTimeArrays ? "GetPVModel true" : "GetPVModel false");
    return TestStudy::GetPVModel(expandTimeArrays);
  }

 private:
  support::CallLog& log_;
};

class StudyTest : public SimulatorClassTest {
 protected:
  void useStudy(std::uint32_t experiments) {
    support::setStudyFactory([this, experiments] {
      calls.emplace_back("generated");
      whenGenerated();
      return std::make_unique<NotingStudy>(
          [](bool) {
            auto* const model = new HandModel;
            model->addActivity("tick");
            model->finish("model", nullptr);
            return std::make_unique<support::HandReward>(model, std::vector<HandVariable>{{}});
          },
          calls, experiments);
    });
  }

  support::CallLog calls;
  std::function<void()> whenGenerated = [] {};
};

TEST_F(StudyTest, ExperimentsValuesThenOverridesAreInPlaceBeforeTheModelIsBuilt) {
  useStudy(1);
  EXPECT_EQ(outputOfStart({"-O", "d:rate:0.5"}),
            "OverrideString is d:rate:0.5\nOverriding global variables in simulator\n"
            "GenerateConnectivityList()\nGenerateConnectivityList() Time=\n");
  EXPECT_THAT(calls, ElementsAre("generated", "SetGVs 0", "override rate 0.5", "GetPVModel true"));
  simulator.reset();
  EXPECT_EQ(calls.back(), "destroyed");
}

TEST_F(StudyTest, TheExperimentIsTheOneOfTheOption) {
  useStudy(3);
  outputOfStart({"-e2"});
  EXPECT_EQ(calls[1], "SetGVs 2");
}

TEST_F(StudyTest, AnExperimentOutsideTheStudyEndsTheRun) {
  useStudy(3);
  const auto startWith = [](const char* option) { SimulatorProbe probe({option}); };
  EXPECT_EXIT(startWith("-e3"), ExitedWithCode(1),
              "^ERROR: Experiment 3 does not exist, the study's experiments are 0 to 2\n$");
  EXPECT_EXIT(startWith("-e-1"), ExitedWithCode(1), "^ERROR: Experiment 4294967295 does not exist, ");
}

TEST_F(StudyTest, AStudyWithoutExperimentsHasNoneToRun) {
  useStudy(0);
  EXPECT_EXIT(SimulatorProbe({"stray"}), ExitedWithCode(1),
              "^ERROR: Experiment 0 does not exist, the study has no experiments\n$");
}

TEST_F(StudyTest, TheResultFilesExistBeforeTheStudyDoes) {
  const ScratchFolder folder;
  bool ascii = false;
  bool binary = false;
  whenGenerated = [&] {
    ascii = std::filesystem::exists(folder.at("obs.csv"));
    binary = std::filesystem::exists(folder.at("obs.bin"));
  };
  useStudy(1);
  outputOfStart({"-a", folder.at("obs.csv"), "-b", folder.at("obs.bin")});
  EXPECT_TRUE(ascii);
  EXPECT_TRUE(binary);
}

TEST_F(SimulatorClassTest, RunEndsWithTheNumberOfFiringsAndTheProcessorTime) {
  outputOfStart({"-N3"});
  // Two activities fire at time 1, the stop time, in each of three batches.
  EXPECT_EQ(outputOfRun(), "Actions fired: 6\nCPU time (s): \n");
}

TEST_F(SimulatorClassTest, AnySimulationTypeButZeroRunsBatches) {
  for (const char* const option : {"-t5", "-t-1"}) {
    outputOfStart({option, "-N3"});
    outputOfRun();
    EXPECT_EQ(simulator->BatchRuns, 3) << option;
  }
}

TEST_F(SimulatorClassTest, ARunWithoutFilesOrSocketReportsToNowhere) {
  outputOfStart({"-N3"});
  outputOfRun();
  EXPECT_EQ(simulator->BatchRuns, 3);
  EXPECT_EQ(simulator->NumberReports, 2);
}

TEST_F(SimulatorClassTest, TheBinaryFileIsFinishedByRunAndTheAsciiFileByTheDestructor) {
  const ScratchFolder folder;
  outputOfStart({"-N5", "-a", folder.at("obs.csv"), "-b", folder.at("obs.bin")});
  ASSERT_NE(simulator->FileBin, nullptr);
  outputOfRun();
  EXPECT_EQ(simulator->FileBin, nullptr);
  ASSERT_NE(simulator->FileCSV, nullptr);
  EXPECT_THAT(contentOf(folder.at("obs.csv")), testing::Not(HasSubstr("#META_DATA")));
  EXPECT_THAT(contentOf(folder.at("obs.bin")), HasSubstr("BATCHES=5,"));
  simulator.reset();
  EXPECT_THAT(contentOf(folder.at("obs.csv")), testing::EndsWith("#META_DATA,BATCHES=5\n"));
}

TEST_F(SimulatorClassTest, TheBinaryFileIsFinishedAheadOfTheTracesFooter) {
  class FooterSink : public TraceFile {
   public:
    explicit FooterSink(const SimulatorProbe& simulator) : simulator_(simulator) {}
    void printFooter() override { finished.push_back(simulator_.FileBin == nullptr); }
    std::vector<bool> finished;

   private:
    const SimulatorProbe& simulator_;
  };
  const ScratchFolder folder;
  outputOfStart({"-N1", "-b", folder.at("obs.bin")});
  FooterSink sink(*simulator);
  simulator->trace->AddTraceFile(&sink);
  simulator->trace->addPVModel(simulator->TheModel);
  outputOfRun();
  EXPECT_THAT(sink.finished, ElementsAre(true));
}

TEST_F(SimulatorClassTest, ASimulatorThatDoesNotRunFinishesBothFilesInItsDestructor) {
  const ScratchFolder folder;
  outputOfStart({"-a", folder.at("obs.csv"), "-b", folder.at("obs.bin")});
  simulator.reset();
  EXPECT_THAT(contentOf(folder.at("obs.csv")), testing::EndsWith("#META_DATA,BATCHES=0\n"));
  EXPECT_EQ(std::filesystem::file_size(folder.at("obs.bin")), 256U);
}

TEST_F(SimulatorClassTest, TheResultFilesStateTheSeedInUse) {
  const ScratchFolder folder;
  outputOfStart({"-r1", "-s0", "-a", folder.at("obs.csv"), "-b", folder.at("obs.bin")});
  simulator.reset();
  EXPECT_THAT(contentOf(folder.at("obs.csv")), HasSubstr(",SEED=31415,RANDOMGEN=Tausworthe\n"));
  EXPECT_THAT(contentOf(folder.at("obs.bin")), HasSubstr(",SEED=31415,RANDOMGEN=Tausworthe,"));
}

TEST_F(SimulatorClassTest, AGeneratorWithoutANameIsUnknown) {
  outputOfStart({"stray"});
  simulator->RandomNumberGenerator = SimulatorClass::MAX_NUM_GENERATORS;
  EXPECT_THAT(simulator->CreateBinFileHeader(1), HasSubstr("RANDOMGEN=Unknown,"));
}

/// The wait ends at once, as the run is stopped already; the loop is entered and does nothing.
TEST_F(SimulatorClassTest, WithoutAManagerAWaitingRunDoesNoBatch) {
  outputOfStart({"-N3", "-w"});
  simulator->SimControl = SimulatorClass::STOPHARD;
  EXPECT_THAT(outputOfRun(), MatchesRegex("REGISTER:  Port: \\[[0-9]+\\]\nActions fired: 0\nCPU time \\(s\\): \n"));
  EXPECT_EQ(simulator->SimMgrSocket, nullptr);
  EXPECT_EQ(simulator->SimControl, SimulatorClass::STOPHARD);
  EXPECT_EQ(simulator->BatchRuns, 0);
}

TEST_F(SimulatorClassTest, WithoutALoopTheProcessorTimeIsZero) {
  outputOfStart({"stray"});
  EXPECT_EQ(simulator->cpuSeconds(), 0.0);
}

TEST_F(SimulatorClassTest, ATraceFileGetsItsSuffixAndBeginsWithTheHeader) {
  const ScratchFolder folder;
  outputOfStart({"-N1", "-f", folder.at("trace"), "-l2"});
  ASSERT_NE(simulator->traceQuorva, nullptr);
  EXPECT_EQ(simulator->traceQuorva->getTraceLevel(), 2);
  EXPECT_EQ(simulator->trace->getTraceLevel(), 2);
  EXPECT_EQ(simulator->trace->PVmodel, simulator->TheModel);
  EXPECT_THAT(contentOf(folder.at("trace.txt")), StartsWith("**************************************\n\t\tTRACE\n"));
  outputOfRun();
  EXPECT_THAT(contentOf(folder.at("trace.txt")), HasSubstr("#### Firing: 1  Action: ("));
}

TEST_F(SimulatorClassTest, ATraceWithoutAFileGoesToStandardOutputAndSaysSo) {
  EXPECT_THAT(outputOfStart({"-m"}),
              StartsWith("Adding cout: \n**************************************\n\t\tTRACE\n"
                         "**************************************\nGenerateConnectivityList()\n"));
  EXPECT_EQ(simulator->traceQuorva->getTraceLevel(), 1);
}

TEST_F(SimulatorClassTest, WithoutATraceThereIsNoSink) {
  const ScratchFolder folder;
  outputOfStart({"-N1"});
  EXPECT_EQ(simulator->traceQuorva, nullptr);
  EXPECT_EQ(simulator->traceXML, nullptr);
  EXPECT_EQ(simulator->trace->PVmodel, nullptr);
}

TEST_F(SimulatorClassTest, TheXmlTraceAloneMakesNoTextTrace) {
  const ScratchFolder folder;
  outputOfStart({"-x", "-f", folder.at("trace")});
  EXPECT_EQ(simulator->traceQuorva, nullptr);
  EXPECT_FALSE(std::filesystem::exists(folder.at("trace.txt")));
  EXPECT_EQ(simulator->trace->PVmodel, simulator->TheModel);
  EXPECT_THAT(contentOf(folder.at("trace.xml")), StartsWith("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"));
}

TEST_F(SimulatorClassTest, BothTracesHaveTheLevelThatWasAskedFor) {
  const ScratchFolder folder;
  outputOfStart({"-m", "-x", "-l3", "-f", folder.at("trace")});
  ASSERT_NE(simulator->traceQuorva, nullptr);
  ASSERT_NE(simulator->traceXML, nullptr);
  EXPECT_EQ(simulator->traceQuorva->getTraceLevel(), 3);
  EXPECT_EQ(simulator->traceXML->getTraceLevel(), 3);
  EXPECT_EQ(simulator->trace->getTraceLevel(), 3);
}

TEST_F(SimulatorClassTest, AnXmlTraceWithoutAFileGoesToStandardOutputWithoutSayingSo) {
  EXPECT_THAT(outputOfStart({"-x"}),
              MatchesRegex("<\\?xml(.|\n)*<Sequence type=\"StateActionType\">\nGenerateConnectivityList(.|\n)*"));
  EXPECT_EQ(simulator->traceXML->getTraceLevel(), 1);
}

/// The debug lines of setting up a simulator, without those of what it calls.
class SetUpDebugTest : public SimulatorClassTest {
 protected:
  std::vector<std::string> linesAtLevel(int level, const char* option) {
    simulator.reset();
    const support::DebugLevelGuard guard(level);
    std::istringstream output(support::standardOutputOf(
        [&] { simulator = std::make_unique<SimulatorProbe>(std::vector<std::string>{option}); }));
    const std::vector<std::string> others{"** BaseActionClassDestructor", "** Initial Marking"};
    std::vector<std::string> lines;
    for (std::string line; std::getline(output, line);) {
      const bool isOther =
          std::ranges::any_of(others, [&line](const std::string& other) { return line.starts_with(other); });
      if (line.starts_with("** ") && !isOther) {
        lines.push_back(line);
      }
    }
    return lines;
  }
};

TEST_F(SetUpDebugTest, LinesTellOfEachStepAndOfTheGenerator) {
  for (const auto& [option, generator] : std::vector<std::pair<const char*, std::string>>{
           {"-r0", "Lagged Fibonacci"}, {"-r1", "Tausworthe"}, {"-r2", "Mersenne Twister"}}) {
    EXPECT_THAT(linesAtLevel(4, option),
                ElementsAre("** Starting SimulationClass", "** Generating Study and getting pv model",
                            "** Getting groups", "** End getting groups", "** AddActionAffects on tick",
                            "** AddActionAffects on tock", "** Using " + generator + " Random Number Generator",
                            "** Done creating random number generator", "** About to start simulation"));
  }
}

TEST_F(SetUpDebugTest, AtLevelThreeTheyAreDormant) {
  EXPECT_THAT(linesAtLevel(3, "-r1"), IsEmpty());
}

/// A run of three batches, and one of three observations in the steady state.
TEST_F(SimulatorClassTest, ARunGivesBackAllThatItMade) {
  for (const char* const kind : {"-t1", "-t0"}) {
    useModel([this](HandModel& model) { tick = &model.addActivity("tick"); },
             {{.type = kind[2] == '1' ? terminating : steady_state}});
    const auto runWhole = [&] {
      run({kind, "-N3"});
      simulator->deleteLoopObjects();
      simulator.reset();
    };
    EXPECT_EQ(support::leftBehindBy(runWhole), 0U) << kind;
  }
}

/// Each cell of the pool was an element of the list before, so that a new one is the same again.
TEST_F(SimulatorClassTest, TheElementsOfTheConnectivityListAreGivenBack) {
  using Pool = support::CellPool<ActionAffectsElement>;
  if (support::kUnderAddressSanitizer) {
    GTEST_SKIP() << "under AddressSanitizer each element is made by new, and its leak check tells of one that is left";
  }
  start();
  std::set<const ActionAffectsElement*> elements;
  for (const BaseActionClass* const action : {tick, tock}) {
    for (const ActionAffectsElement* element = action->Affects; element != nullptr; element = element->next) {
      elements.insert(element);
    }
  }
  ASSERT_THAT(elements, testing::SizeIs(2)) << "each activity affects itself alone";
  simulator.reset();
  ActionAffectsElement* const first = Pool::make();
  ActionAffectsElement* const second = Pool::make();
  EXPECT_THAT(elements, testing::UnorderedElementsAre(first, second));
  Pool::release(first);
  Pool::release(second);
}

}  // namespace
