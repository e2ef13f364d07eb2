// The hold model on the engine's event list, beside `bench_bare hold`: the earliest of n pending events is put off by
// an exponential delay, again and again.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <iostream>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "Simulator/EventList.h"
#include "Simulator/PAddress.h"
#include "Simulator/UserDistributions.h"
#include "bare/CommandLine.h"

namespace {

constexpr const char* kHelp =
    "usage: bench_hold [--size <n>] [--stop-time <operations>] [--replications <r>] [--seed <s>]\n"
    "\n"
    "Keeps <n> events (1000) in the engine's event list and puts the earliest off by an exponential delay of mean 1,\n"
    "<operations> times (2e6). For each replication one line \"answer=<value>\", the progress of the time in an "
    "operation\n"
    "in units of 1/<n>; last a line \"events=<operations> seconds=<their processor time>\".\n";

/// An event list with an event of each of `size` groups, which come to a place in memory each, as in a model.
class HeldEvents {
 public:
  explicit HeldEvents(std::size_t size) : actions_(size), addresses_(size), list_(static_cast<int>(size) + 1) {
    for (std::size_t i = 0; i < size; ++i) {
      actions_[i].EventPointer = &addresses_[i];
      Event event(TheDistribution->Exponential(1.0), 0.0, &actions_[i]);
      list_.Insert(&event);
    }
  }

  /// Gives the time of the last event put off.
  double putOff(std::uint64_t operations) {
    double now = 0.0;
    Event next;
    for (std::uint64_t i = 0; i < operations; ++i) {
      Event** const earliest = list_.Earliest();
      now = (*earliest)->exec_time;
      next.action_ptr = (*earliest)->action_ptr;
      list_.Remove(earliest);
      next.start_time = now;
      next.exec_time = now + TheDistribution->Exponential(1.0);
      list_.Insert(&next);
    }
    return now;
  }

 private:
  std::deque<BaseActionClass> actions_;
  std::vector<PAddress> addresses_;
  EventList list_;
};

}  // namespace

int main(int argc, char** argv) {
  const bare::CommandLine order(argc, argv, kHelp);
  const double size = order.size.value_or(1000.0);
  const auto operations = static_cast<std::uint64_t>(order.stopTime.value_or(2e6));
  TheDistribution->RNG->srnd(static_cast<std::uint32_t>(order.seed));
  std::cout.precision(12);
  double seconds = 0.0;
  std::uint64_t events = 0;
  for (int left = static_cast<int>(order.replications); left > 0; --left) {
    HeldEvents held(static_cast<std::size_t>(size));
    const double start = bare::processorSeconds();
    const double now = held.putOff(operations);
    seconds += bare::processorSeconds() - start;
    events += operations;
    std::cout << "answer=" << now * size / static_cast<double>(operations) << '\n';
  }
  std::cout << "events=" << events << " seconds=" << seconds << '\n';
  return 0;
}
