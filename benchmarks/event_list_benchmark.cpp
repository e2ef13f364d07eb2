// How long is one hold operation of the event list: taking the earliest of n events and putting it back an exponential
// delay later?

#include <benchmark/benchmark.h>

#include <deque>
#include <memory>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "Simulator/EventList.h"
#include "Simulator/PAddress.h"
#include "Simulator/UserDistributions.h"

namespace {

void holdOperation(benchmark::State& state) {
  const auto pending = static_cast<std::size_t>(state.range(0));
  TheDistribution->RNG->srnd(31415);
  std::deque<BaseActionClass> actions(pending);
  std::vector<PAddress> addresses(pending);
  EventList list(static_cast<int>(pending) + 1);
  for (std::size_t i = 0; i < pending; ++i) {
    actions[i].EventPointer = &addresses[i];
    Event event(TheDistribution->Exponential(1.0), 0.0, &actions[i]);
    list.Insert(&event);
  }
  for (auto _ : state) {
    Event** const earliest = list.Earliest();
    Event next = **earliest;
    list.Remove(earliest);
    next.start_time = next.exec_time;
    next.exec_time += TheDistribution->Exponential(1.0);
    list.Insert(&next);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(holdOperation)->Arg(10)->Arg(1000)->Arg(100000);

/// The delays alone, to be taken off the above.
void exponentialDelay(benchmark::State& state) {
  TheDistribution->RNG->srnd(31415);
  for (auto _ : state) {
    benchmark::DoNotOptimize(TheDistribution->Exponential(1.0));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(exponentialDelay);

}  // namespace
