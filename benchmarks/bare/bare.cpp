// The workloads without an engine: what the same work costs in a plain program that knows nothing but nets in flat
// tables. The measure that the engine is compared with.

#include <cstddef>
#include <cstdint>
#include <iostream>

#include "bare/CommandLine.h"
#include "bare/Net.h"
#include "bare/NetRun.h"
#include "bare/SlotHeap.h"
#include "bare/UniformStream.h"

namespace {

constexpr const char* kHelp =
    "usage: bench_bare <workload> [--size <n>] [--stop-time <t>] [--replications <r>] [--seed <s>]\n"
    "\n"
    "Runs a workload without an engine. For each replication one line \"answer=<value>\"; last a line\n"
    "\"events=<firings> seconds=<processor time of the runs>\".\n"
    "\n"
    "  queue     M/M/1/100, arrivals 0.9, service 1, from empty: average number in system; stop time 1e6\n"
    "  cycle     closed cycle of 50 stations, 200 customers: firings of a station a time unit; stop time 5e4\n"
    "  machines  <size> machines, failure 0.1, repair 1: average number down; size 1000, stop time 11000\n"
    "  clocks    <size> independent clocks of rate 1: ticks of a clock a time unit; size 10, stop time 1e5\n"
    "  hold      <size> pending events in a binary heap: <stop time> times the earliest is put off by an exponential\n"
    "            delay of mean 1; progress of the time in each, in units of 1/<size>; size 1000, stop time 2e6\n";

struct Outcome {
  std::uint64_t events = 0;
  double reward = 0.0;  // average over the run
};

/// Runs `net` from time 0 to `stopTime`, with its reward taken up to each firing.
Outcome run(bare::Net net, bare::UniformStream& stream, double stopTime) {
  bare::NetRun netRun(net, stream);
  netRun.fireUpTo(stopTime);
  return {netRun.firings(), netRun.rewardUpTo(stopTime) / stopTime};
}

/// The same, but for the outcome's reward: the firings of a transition a time unit, in the run's last nine tenths. The
/// start is left out of it, as so many firings would tell it apart from the long run.
Outcome runForThroughput(bare::Net net, bare::UniformStream& stream, double stopTime) {
  bare::NetRun netRun(net, stream);
  const double warmUp = 0.1 * stopTime;
  netRun.fireUpTo(warmUp);
  const std::uint64_t before = netRun.firings();
  netRun.fireUpTo(stopTime);
  const auto counted = static_cast<double>(netRun.firings() - before);
  return {netRun.firings(), counted / (net.transitionCount() * (stopTime - warmUp))};
}

/// Puts off the earliest of `size` events that many times; the reward is the time that it took.
Outcome hold(std::uint32_t size, bare::UniformStream& stream, double operations) {
  bare::SlotHeap<2> pending(size);
  for (std::uint32_t slot = 0; slot < size; ++slot) {
    pending.insert(slot, stream.exponential());
  }
  const auto count = static_cast<std::uint64_t>(operations);
  double now = 0.0;
  for (std::uint64_t i = 0; i < count; ++i) {
    now = pending.earliestTime();
    pending.replaceEarliest(pending.earliest(), now + stream.exponential());
  }
  return {count, now};
}

/// One replication; the reward of the outcome is the workload's answer.
Outcome replicate(const bare::CommandLine& order, bare::UniformStream& stream) {
  const auto size = static_cast<std::uint32_t>(order.size.value_or(order.workload == "clocks" ? 10.0 : 1000.0));
  if (order.workload == "queue") {
    return run(bare::queue(0.9, 1.0, 100), stream, order.stopTime.value_or(1e6));
  }
  if (order.workload == "cycle") {
    return runForThroughput(bare::cycle(50, 4), stream, order.stopTime.value_or(5e4));
  }
  if (order.workload == "machines") {
    return run(bare::machines(size, 0.1, 1.0), stream, order.stopTime.value_or(11000.0));
  }
  if (order.workload == "clocks") {
    return runForThroughput(bare::clocks(size), stream, order.stopTime.value_or(1e5));
  }
  if (order.workload == "hold") {
    Outcome outcome = hold(size, stream, order.stopTime.value_or(2e6));
    outcome.reward *= size / static_cast<double>(outcome.events);
    return outcome;
  }
  bare::failOn("no such workload", order.workload.empty() ? "(none given)" : order.workload);
}

}  // namespace

int main(int argc, char** argv) {
  const bare::CommandLine order(argc, argv, kHelp);
  bare::UniformStream stream(static_cast<std::uint64_t>(order.seed));
  std::cout.precision(12);
  const double start = bare::processorSeconds();
  std::uint64_t events = 0;
  for (int left = static_cast<int>(order.replications); left > 0; --left) {
    const Outcome outcome = replicate(order, stream);
    events += outcome.events;
    std::cout << "answer=" << outcome.reward << '\n';
  }
  std::cout << "events=" << events << " seconds=" << bare::processorSeconds() - start << '\n';
  return 0;
}
