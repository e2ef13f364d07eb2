#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Simulator/DataPacket.h"
#include "support/CapturedOutput.h"
#include "support/SimulatorProbe.h"
#include "support/TestStudy.h"
#include "support/TraceModels.h"

namespace support {

/// Bytes given as numbers.
inline std::string bytes(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) {
    text += static_cast<char>(value);
  }
  return text;
}

/// A simulator over an empty model, for what it does with observations that a test makes up.
class ResultsTest : public testing::Test {
 protected:
  ResultsTest() {
    setModelFactory([](bool) { return std::make_unique<ShownRewardModel>(new ShownModel("top")); });
  }

  /// Sets a simulator of `numPVs` performance variables up, silently.
  SimulatorProbe& start(int numPVs, std::vector<std::string> words = {"-N1"}) {
    simulator.reset();  // one simulator at a time: the study is one of the process
    standardOutputOf([&] { simulator = std::make_unique<SimulatorProbe>(std::move(words)); });
    simulator->NumPVs = numPVs;
    return *simulator;
  }

  /// A packet with these rows, with the ids of the simulator.
  std::unique_ptr<DataPacket> packetOf(const std::vector<std::vector<double>>& rows) const {
    int capacity = 0;
    for (const auto& row : rows) {
      capacity = std::max(capacity, static_cast<int>(row.size()));
    }
    auto packet = std::make_unique<DataPacket>(0, 0, static_cast<int>(rows.size()), capacity);
    fill(*packet, rows);
    return packet;
  }

  static void fill(DataPacket& packet, const std::vector<std::vector<double>>& rows) {
    for (std::size_t pv = 0; pv < rows.size(); ++pv) {
      for (std::size_t n = 0; n < rows[pv].size(); ++n) {
        packet.SetObs(static_cast<int>(pv), static_cast<int>(n), rows[pv][n]);
      }
      packet.SetNumObs(static_cast<int>(pv), static_cast<int>(rows[pv].size()));
    }
  }

  std::unique_ptr<SimulatorProbe> simulator;
};

}  // namespace support
