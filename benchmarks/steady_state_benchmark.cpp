// What does a step of the steady-state loop cost, with 1 to 1,000 performance variables and with 10 to 100,000 groups?
//
// The step is that of the loop: look at the stops that have come due, at the slowest variable, and fire. Two of its
// parts are measured alone besides: taking the rewards up to now, which visits every variable, and the look at the stops
// when none has come due.

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/PerformanceVariableNode.h"
#include "Performance_Variables/SteadyStateWorker.h"
#include "Simulator/DataPacket.h"
#include "Simulator/Event.h"
#include "Simulator/EventList.h"
#include "Simulator/EventStep.h"
#include "Simulator/Heap.h"
#include "Simulator/SimulatorClass.h"
#include "Simulator/UserDistributions.h"
#include "Study/BaseStudyClass.h"

namespace {

/// Fires for ever at rate 1 and touches a place of its own alone.
class ClockActivity : public Activity {
 public:
  ClockActivity(const char* name, Place& place) : place_(place) {
    ActivityInitialize(name, 0, Exponential, RaceEnabled, 0, 0, false);
  }

  bool Enabled() override {
    OldEnabled = NewEnabled;
    NewEnabled = true;
    return true;
  }
  double SampleDistribution() override { return TheDistribution->Exponential(1.0); }
  BaseActionClass* Fire() override {
    place_.Mark() ^= 1;
    return this;
  }
  double Weight() override { return 1.0; }
  double Rate() override { return 1.0; }
  int Rank() override { return 1; }
  bool ReactivationPredicate() override { return false; }
  bool ReactivationFunction() override { return false; }
  double* ReturnDistributionParameters() override { return nullptr; }
  void LinkVariables() override {}

 private:
  Place& place_;
};

/// Clocks that have nothing to do with each other.
class ClocksModel : public SANModel {
 public:
  explicit ClocksModel(int clocks) {
    std::vector<BaseStateVariableClass*> places;
    std::vector<Activity*> activities;
    std::vector<BaseGroupClass*> groups;
    for (int i = 0; i < clocks; ++i) {
      places_.push_back(std::make_unique<Place>("on", 0));
      clocks_.push_back(std::make_unique<ClockActivity>("clock", *places_.back()));
      places.push_back(places_.back().get());
      activities.push_back(clocks_.back().get());
      groups.push_back(clocks_.back().get());
    }
    initializeSANModelNow("clocks", clocks, places.data(), 0, nullptr, clocks, activities.data(), clocks,
                          groups.data());
    for (int i = 0; i < clocks; ++i) {
      groups[static_cast<std::size_t>(i)]->setGroupId(i);
    }
    for (std::size_t i = 0; i < clocks_.size(); ++i) {
      AddAffectArc(places[i], clocks_[i].get());
      AddEnableArc(places[i], clocks_[i].get());
    }
  }

  [[nodiscard]] double first() const { return places_.front()->Mark(); }

 private:
  std::vector<std::unique_ptr<Place>> places_;
  std::vector<std::unique_ptr<ClockActivity>> clocks_;
};

class FirstClockWorker : public SteadyStateWorker {
 public:
  FirstClockWorker() : SteadyStateWorker(1) {}
  double Reward_Function() override { return modelAt<ClocksModel>(0)->first(); }
};

/// Average of the first clock's place over each batch.
class FirstClockAverage : public PerformanceVariableNode {
 public:
  explicit FirstClockAverage(double batchLength) {
    TheModelPtr = &top_;
    const double start = 0.0;
    Initialize("first", STEADY_STATE, 1, &start, &batchLength, 0, 0, 1, 0);
    AddModelDependency("clocks");
    Type = steady_state;
  }
  void CreateWorkerList() override { fillWorkerList<FirstClockWorker>(); }

 private:
  BaseModelClass* top_ = nullptr;
};

/// Variable i has batches of the length 1,000 + i, in units of the mean time between two firings of a clock, so that
/// stops come at different times.
class ClocksReward : public PVModel {
 public:
  ClocksReward(int clocks, int variables) {
    TheModel = new ClocksModel(clocks);
    DefineName("clocksReward");
    CreatePVList(variables, true);
    Initialize();
  }

 protected:
  PerformanceVariableNode* createPVNode(int pvindex, int /*timeindex*/) override {
    return new FirstClockAverage(1000.0 + pvindex);
  }
};

class ClocksStudy : public BaseStudyClass {
 public:
  ClocksStudy(int clocks, int variables) : clocks_(clocks), variables_(variables) { NumExps = 1; }
  ~ClocksStudy() override { delete ThePVModel; }

  PVModel* GetPVModel(bool /*expandTimeArrays*/) override {
    ThePVModel = new ClocksReward(clocks_, variables_);
    return ThePVModel;
  }
  void SetGVs(int /*experiment*/) override {}

 private:
  int clocks_;
  int variables_;
};

std::unique_ptr<ClocksStudy>& theStudy() {
  static std::unique_ptr<ClocksStudy> study;
  return study;
}

/// Keeps the simulator's progress lines out of the benchmark's table.
class QuietOutput {
 public:
  QuietOutput() : old_(std::cout.rdbuf(sink_.rdbuf())) {}
  ~QuietOutput() { std::cout.rdbuf(old_); }
  QuietOutput(const QuietOutput&) = delete;
  QuietOutput& operator=(const QuietOutput&) = delete;

 private:
  std::ostringstream sink_;
  std::streambuf* old_;
};

/// A simulator under the steady-state loop, stepped by hand.
class SteppedSimulator : public SimulatorClass {
 public:
  SteppedSimulator(int argc, char** argv)
      : SimulatorClass(argc, argv),
        current_(std::make_unique<Event>()),
        resultCounters_(static_cast<std::size_t>(NumPVs)),
        resultSqrCounters_(static_cast<std::size_t>(NumPVs)) {
    CurrEvent = current_.get();
    TempAction = &none_;
    GenerateInitialEnabledList();
    GenerateCompleteEventListSS();
    StopTimes = new Heap<double>(NumPVs);
    CompletedBatches = new Heap<int>(NumPVs);
    for (int i = 0; i < NumPVs; ++i) {
      StopTimes->Insert(PVList[i]->Stop, i);
      CompletedBatches->Insert(0, i);
    }
    CurPacket = CreateDataPacket(NumPVs);
    CurSqrPacket = CreateDataPacket(NumPVs);
    chooseNextEvent();
    startCpuTimer();
  }
  ~SteppedSimulator() {
    delete StopTimes;
    delete CompletedBatches;
  }

  bool step() {
    lookAtStops();
    std::pair<int, int> slowest;
    CompletedBatches->Earliest(slowest);
    benchmark::DoNotOptimize(slowest);
    return SimStepSS();
  }
  void lookAtStops() {
    CheckCompletedBatches(TheModel->PerformanceVariableList, resultCounters_.data(), resultSqrCounters_.data());
  }
  void accumulate() { TheModel->Accumulate(CurrentTime); }
  /// Moves the time on to the next stop, without a firing.
  void goToNextStop() {
    std::pair<double, int> next;
    StopTimes->Earliest(next);
    CurrentTime = next.first;
  }

 private:
  std::unique_ptr<Event> current_;
  BaseActionClass none_;
  std::vector<int> resultCounters_;
  std::vector<int> resultSqrCounters_;
};

/// The simulator of that many clocks and variables. It is kept for the next call, as a listing of many groups takes
/// seconds: it looks for duplicates.
SteppedSimulator& simulatorOf(int clocks, int variables) {
  static_cast<void>(theStudy());  // made first, so that it outlives the simulator
  static std::unique_ptr<SteppedSimulator> simulator;
  static std::pair<int, int> made;
  if (simulator == nullptr || made != std::pair(clocks, variables)) {
    simulator.reset();
    theStudy() = std::make_unique<ClocksStudy>(clocks, variables);
    std::string program = "steady_state_benchmark";
    std::string steadyState = "-t0";
    std::array<char*, 2> words{program.data(), steadyState.data()};
    simulator = std::make_unique<SteppedSimulator>(static_cast<int>(words.size()), words.data());
    made = {clocks, variables};
    for (int i = 0; i < 2 * clocks; ++i) {
      simulator->step();  // past the first schedule, whose events lie in the order of the groups
    }
  }
  return *simulator;
}

/// Measures `work` on a simulator of that many clocks and variables.
template <typename Work>
void measure(benchmark::State& state, int clocks, int variables, Work work) {
  const QuietOutput quiet;
  SteppedSimulator& simulator = simulatorOf(clocks, variables);
  for (auto _ : state) {
    work(simulator);
  }
  state.SetItemsProcessed(state.iterations());
}

constexpr int kFewClocks = 10;

void stepByVariables(benchmark::State& state) {
  measure(state, kFewClocks, static_cast<int>(state.range(0)), [](SteppedSimulator& simulator) { simulator.step(); });
}
BENCHMARK(stepByVariables)->Arg(1)->Arg(10)->Arg(1000);

/// The part of it that visits every variable.
void accumulateByVariables(benchmark::State& state) {
  measure(state, kFewClocks, static_cast<int>(state.range(0)),
          [](SteppedSimulator& simulator) { simulator.accumulate(); });
}
BENCHMARK(accumulateByVariables)->Arg(1)->Arg(10)->Arg(1000);

/// The look at the stops when none has come due.
void lookByVariables(benchmark::State& state) {
  measure(state, kFewClocks, static_cast<int>(state.range(0)),
          [](SteppedSimulator& simulator) { simulator.lookAtStops(); });
}
BENCHMARK(lookByVariables)->Arg(1)->Arg(10)->Arg(1000);

/// The same when one has: the batch is closed, observed and reset.
void stopByVariables(benchmark::State& state) {
  measure(state, kFewClocks, static_cast<int>(state.range(0)), [](SteppedSimulator& simulator) {
    simulator.goToNextStop();
    simulator.lookAtStops();
  });
}
BENCHMARK(stopByVariables)->Arg(1)->Arg(10)->Arg(1000);

void stepByGroups(benchmark::State& state) {
  measure(state, static_cast<int>(state.range(0)), 1, [](SteppedSimulator& simulator) { simulator.step(); });
}
BENCHMARK(stepByGroups)->Arg(10)->Arg(1000)->Arg(100000);

}  // namespace

BaseStudyClass* GenerateStudy() {
  return theStudy().get();
}

void DestructStudy() {
  theStudy().reset();
}
