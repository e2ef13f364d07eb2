#include <string>

#include "Modelling/Modelling.h"

// A fixed number of customers on a ring of stations, each with one server: a closed queueing network.

namespace {

using namespace modelling;

Parameter<Short> stations{"stations"};           // stations on the ring
Parameter<Short> customers{"customers"};         // customers on the ring, evenly spread at first
Parameter<Double> serviceRate{"serviceRate"};    // of every server but the first, customers per time unit
Parameter<Double> firstRate{"firstRate"};        // of the first server
Parameter<Short> crowd{"crowd"};                 // customers from which on a station is crowded
Parameter<Double> observedTime{"observedTime"};  // of a terminating run
Parameter<Double> batchLength{"batchLength"};    // of a steady-state run; twice as long is thrown away first

class Network : public AtomicModel {
 public:
  Variable<ArrayVariable<short>> at{*this, "at", stations};  // customers at each station

  Network() : AtomicModel("network") {
    for (short station = 0; station < stations; ++station) {
      // The first stations get one more each if the customers cannot be spread evenly.
      at[station]->Mark() = static_cast<short>((customers + stations - 1 - station) / stations);
    }
    for (short station = 0; station < stations; ++station) {
      addServer(station, station == 0 ? firstRate : serviceRate);
    }
  }

  /// Stations with at least that many customers.
  [[nodiscard]] int stationsWith(short least) {
    int found = 0;
    for (short station = 0; station < stations; ++station) {
      found += at[station]->Mark() >= least ? 1 : 0;
    }
    return found;
  }

 private:
  void addServer(short station, double rate) {
    ExtendedPlace<short>& here = *at[station];
    ExtendedPlace<short>& next = *at[(station + 1) % stations];
    activity("serve_" + std::to_string(station))
        .enabledBy({here}, [&here] { return here.Mark() > 0; })
        .exponential(rate)
        .fires({here, next}, [&here, &next] {
          --here.Mark();
          ++next.Mark();
        });
  }
};

/// In the results: 0 and 1 belong to terminating runs, 2 to 5 to steady-state runs.
void measure(RewardModel& rewards) {
  rewards.model<Network>();

  const auto atFirst = [](Network& network) { return network.at[0]->Mark(); };
  rewards.instantOfTime("first", observedTime).rate("network", atFirst);
  rewards.timeAveraged("firstOverTime", 0.0, observedTime).rate("network", atFirst);

  PerformanceVariable& throughput = rewards.steadyState("throughput", 2.0 * batchLength, batchLength);
  for (int station = 0; station < stations; ++station) {
    throughput.impulse("serve_" + std::to_string(station), "network", 1.0 / stations);
  }
  rewards.steadyState("busy", 2.0 * batchLength, batchLength).rate("network", [](Network& network) {
    return network.stationsWith(1);
  });
  rewards.steadyState("crowded", 2.0 * batchLength, batchLength).rate("network", [](Network& network) {
    return network.stationsWith(crowd);
  });
  rewards.steadyState("firstBusy", 2.0 * batchLength, batchLength).rate("network", [](Network& network) {
    return network.at[0]->Mark() > 0;
  });
}

const StudyEntry study{"closed-network",
                       Experiments(stations, customers, serviceRate, firstRate, crowd, observedTime, batchLength)
                           .row(50, 200, 1.0, 1.0, 10, 5.0, 500.0)
                           .row(3, 5, 1.0, 1.0, 3, 2.0, 500.0)
                           .row(5, 10, 1.0, 0.6, 4, 2.0, 500.0),
                       measure};

}  // namespace
