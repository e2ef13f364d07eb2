#include <string>

#include "Modelling/Modelling.h"

// A server that goes round and round between stations and serves whoever waits: cyclic polling.

namespace {

using namespace modelling;

Parameter<Short> stations{"stations"};           // stations on the server's round
Parameter<Double> arrivalRate{"arrivalRate"};    // customers per time unit at each station, while it is empty
Parameter<Double> walkRate{"walkRate"};          // looks at a station per time unit
Parameter<Double> serviceRate{"serviceRate"};    // customers per time unit, while one is being served
Parameter<Double> observedTime{"observedTime"};  // of a terminating run

/// Where the server is.
class Server : public StructVariable<> {
 public:
  using StructVariable::StructVariable;
  Field<short> position{*this, "position", short{1}};  // the station it is at, from 1
  Field<short> serving{*this, "serving"};              // 1 while it serves, 0 while it looks and walks
};

class Polling : public AtomicModel {
 public:
  Variable<Server> server{*this, "server"};
  Variable<ArrayVariable<short>> customers{*this, "customers", stations};  // 0 or 1 at each station

  Polling() : AtomicModel("polling") {
    for (short station = 1; station <= stations; ++station) {
      addStation(station);
    }
    activity("walk")
        .enabledBy({server, customers}, [this] { return server.serving.Mark() == 0 && customersHere() == 0; })
        .exponential(walkRate)
        .fires({server.position}, [this] { walkOn(); });
    activity("start")
        .enabledBy({server, customers}, [this] { return server.serving.Mark() == 0 && customersHere() == 1; })
        .exponential(walkRate)
        .fires({server.serving}, [this] { server.serving.Mark() = 1; });
  }

  /// Whether a customer waits at that station and is not being served.
  [[nodiscard]] bool isWaiting(short station) { return at(station).Mark() == 1 && !isServed(station); }
  [[nodiscard]] bool isServed(short station) { return server.position.Mark() == station && server.serving.Mark() == 1; }
  /// The share of stations at which a customer waits.
  [[nodiscard]] double waitingShare() {
    int waiting = 0;
    for (short station = 1; station <= stations; ++station) {
      waiting += isWaiting(station) ? 1 : 0;
    }
    return static_cast<double>(waiting) / stations;
  }

 private:
  void addStation(short station) {
    const std::string number = std::to_string(station);
    activity("arrive_" + number)
        .enabledBy({at(station)}, [this, station] { return at(station).Mark() == 0; })
        .exponential(arrivalRate)
        .fires({at(station)}, [this, station] { at(station).Mark() = 1; });
    activity("serve_" + number)
        .enabledBy({server}, [this, station] { return isServed(station); })
        .exponential(serviceRate)
        .fires({server, at(station)}, [this, station] {
          at(station).Mark() = 0;
          server.serving.Mark() = 0;
          walkOn();
        });
  }

  ExtendedPlace<short>& at(short station) { return *customers[station - 1]; }
  short customersHere() { return at(server.position.Mark()).Mark(); }
  void walkOn() { server.position.Mark() = static_cast<short>(server.position.Mark() % stations + 1); }
};

/// In the results: 0 and 1 belong to terminating runs, 2 to 4 to steady-state runs.
void measure(RewardModel& rewards) {
  rewards.model<Polling>();

  rewards.intervalOfTime("timeWaiting", 0.0, observedTime).rate("polling", [](Polling& polling) {
    return polling.isWaiting(1);
  });
  rewards.intervalOfTime("served", 0.0, observedTime).impulse("serve_1", "polling");

  constexpr double kTransient = 100.0;
  constexpr double kBatchLength = 500.0;
  rewards.steadyState("waiting", kTransient, kBatchLength).rate("polling", [](Polling& polling) {
    return polling.waitingShare();
  });
  PerformanceVariable& throughput = rewards.steadyState("throughput", kTransient, kBatchLength);
  for (int station = 1; station <= stations; ++station) {
    throughput.impulse("serve_" + std::to_string(station), "polling");
  }
  rewards.steadyState("serving", kTransient, kBatchLength).rate("polling", [](Polling& polling) {
    return polling.server.serving.Mark();
  });
}

const StudyEntry study{"polling",
                       Experiments(stations, arrivalRate, walkRate, serviceRate, observedTime)
                           .row(3, 1.0 / 3.0, 200.0, 1.0, 16.0)
                           .row(3, 1.0 / 3.0, 5.0, 1.0, 16.0)
                           .row(5, 0.2, 10.0, 1.0, 10.0),
                       measure};

}  // namespace
