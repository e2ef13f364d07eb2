// How many data messages, and how many bytes of them, does a simulator send in a second to a manager that reads, for 1,
// 11 and 1000 performance variables of one observation each? A report is a processor time message and a data message,
// each of its fields a write of its own.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "BaseClasses/ProcessId.h"
#include "BaseClasses/QuorvaSocket.h"
#include "Simulator/DataPacket.h"
#include "Simulator/SimulatorClass.h"

namespace {

/// Keeps the simulator's progress lines out of the benchmark's table.
class QuietOutput {
 public:
  QuietOutput() : oldOut_(std::cout.rdbuf(sink_.rdbuf())), oldErr_(std::cerr.rdbuf(sink_.rdbuf())) {}
  ~QuietOutput() {
    std::cout.rdbuf(oldOut_);
    std::cerr.rdbuf(oldErr_);
  }
  QuietOutput(const QuietOutput&) = delete;
  QuietOutput& operator=(const QuietOutput&) = delete;

 private:
  std::ostringstream sink_;
  std::streambuf* oldOut_;
  std::streambuf* oldErr_;
};

/// A simulator that reports made-up observations to `manager`, which it takes over.
class ReportingSimulator : public SimulatorClass {
 public:
  ReportingSimulator(int argc, char** argv, int variables, QuorvaSocket* manager) : SimulatorClass(argc, argv) {
    NumPVs = variables;
    SimMgrSocket = manager;
    packet_ = std::make_unique<DataPacket>(0, 0, variables, 1);
    for (int i = 0; i < variables; ++i) {
      packet_->SetObs(i, 0, i);
      packet_->SetNumObs(i, 1);
    }
  }

  void report() {
    OutputCPUTime(SimMgrSocket, 1.0);
    OutputDataBinary(SimMgrSocket, nullptr, packet_.get(), nullptr);
  }

  [[nodiscard]] bool isConnected() const { return SimControl == GO; }

 private:
  std::unique_ptr<DataPacket> packet_;
};

void dataMessages(benchmark::State& state) {
  const QuietOutput quiet;
  QuorvaSocket listener(true);
  QuorvaSocket manager(true);
  auto connection = std::make_unique<QuorvaSocket>(false);
  int port = 10000 + support::processId() % 10000;
  while (!listener.Bind(port)) {
    ++port;
  }
  if (!listener.Listen(1) || !manager.Connect("127.0.0.1", port) || !listener.Accept(*connection)) {
    state.SkipWithError("no connection");
    return;
  }
  std::int64_t received = 0;
  std::thread reader([&] {
    std::vector<char> buffer(1 << 16);
    int count = 0;
    while ((count = manager.Recv(buffer.data(), static_cast<int>(buffer.size()))) > 0) {
      received += count;
    }
  });

  const int variables = static_cast<int>(state.range(0));
  std::string program = "manager_benchmark";
  std::string batches = "-N1";
  std::array<char*, 2> words{program.data(), batches.data()};
  {
    ReportingSimulator simulator(static_cast<int>(words.size()), words.data(), variables, connection.release());
    for (auto _ : state) {
      simulator.report();
    }
    if (!simulator.isConnected()) {
      state.SkipWithError("the connection broke");
    }
  }
  reader.join();  // the simulator has closed its end
  const std::int64_t bytesOfReport = 16 + 9 + (7 + 8) * variables;
  if (received != state.iterations() * bytesOfReport) {
    state.SkipWithError("bytes were lost");
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(received);
}
BENCHMARK(dataMessages)->Arg(1)->Arg(11)->Arg(1000)->UseRealTime();

}  // namespace
