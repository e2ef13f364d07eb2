// How long is one event step of the railway, with 1 and with 20 trains?

#include <benchmark/benchmark.h>

#include <array>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "BaseClasses/BaseActionClass.h"
#include "Simulator/Event.h"
#include "Simulator/EventList.h"
#include "Simulator/EventStep.h"
#include "Simulator/SimulatorClass.h"

namespace {

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

/// A simulator stepped by hand, in one batch without an end.
class SteppedSimulator : public SimulatorClass {
 public:
  SteppedSimulator(int argc, char** argv) : SimulatorClass(argc, argv), current_(std::make_unique<Event>()) {
    CurrEvent = current_.get();
    GenerateInitialEnabledList();
    GenerateCompleteEventList();
    TempAction = &none_;
    chooseNextEvent();
  }

  using SimulatorClass::SimStep;

 private:
  std::unique_ptr<Event> current_;
  BaseActionClass none_;
};

void railwayStep(benchmark::State& state) {
  std::string program = "event_step_benchmark";
  std::string overrides = "-Os:nTrains:" + std::to_string(state.range(0)) + ":d:netNotDeliveryProb:0.5";
  std::array<char*, 2> words{program.data(), overrides.data()};
  const QuietOutput quiet;
  SteppedSimulator simulator(static_cast<int>(words.size()), words.data());
  for (auto _ : state) {
    benchmark::DoNotOptimize(simulator.SimStep());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(railwayStep)->Arg(1)->Arg(20);

}  // namespace
