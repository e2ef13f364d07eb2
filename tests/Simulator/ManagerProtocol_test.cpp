#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "BaseClasses/ProcessId.h"
#include "BaseClasses/QuorvaQueue.h"
#include "BaseClasses/QuorvaSocket.h"
#include "BaseClasses/QuorvaThread.h"
#include "Simulator/ResultsTest.h"
#include "support/Loopback.h"
#include "support/TemporaryFile.h"

namespace {

using support::bytes;
using support::SocketProbe;
using support::TemporaryFile;

std::string intBytes(std::uint32_t value) {
  return bytes({static_cast<int>(value >> 24), static_cast<int>(value >> 16 & 255), static_cast<int>(value >> 8 & 255),
                static_cast<int>(value & 255)});
}

/// The status message of this kind and code.
std::string status(int kind, int code) {
  return intBytes(10) + bytes({kind, code}) + intBytes(static_cast<std::uint32_t>(getpid()));
}

// Doubles in network order, by hand from their binary64 form.
const std::string kOne = bytes({0x3F, 0xF0, 0, 0, 0, 0, 0, 0});
const std::string kTwoAndAHalf = bytes({0x40, 0x04, 0, 0, 0, 0, 0, 0});
const std::string kMinusFour = bytes({0xC0, 0x10, 0, 0, 0, 0, 0, 0});

class ManagerProtocolTest : public support::ResultsTest {
 protected:
  std::string messageOf(DataPacket* packet, DataPacket* squares = nullptr) {
    std::ostringstream stream;
    simulator->OutputDataBinary(nullptr, &stream, packet, squares);
    return stream.str();
  }

  /// Puts packets of one observation each, worth `value`, in the places of the current ones, as a loop would.
  void observe(double value) {
    for (DataPacket** const packet : {&simulator->CurPacket, &simulator->CurSqrPacket}) {
      if (*packet == nullptr) {
        *packet = simulator->CreateDataPacket(simulator->NumPVs);
      }
    }
    fill(*simulator->CurPacket, {{value}});
    fill(*simulator->CurSqrPacket, {{value * value}});
  }

  /// Reports one observation of a run that has taken `seconds` so far.
  bool report(double seconds) {
    observe(1.0);
    return simulator->CheckReportSize(seconds);
  }
};

// ---- Writers --------------------------------------------------------------------------------------------------------

TEST_F(ManagerProtocolTest, IntsTakeFourBytesTheMostSignificantFirst) {
  SimulatorProbe& probe = start(1);
  std::ostringstream stream;
  EXPECT_EQ(probe.OutputInt(nullptr, &stream, 0x01020304), 4);
  EXPECT_EQ(probe.OutputInt(nullptr, &stream, -2), 4);
  EXPECT_EQ(stream.str(), bytes({1, 2, 3, 4, 255, 255, 255, 254}));
}

TEST_F(ManagerProtocolTest, ShortsTakeTwoBytesAndBytesOne) {
  SimulatorProbe& probe = start(1);
  std::ostringstream stream;
  EXPECT_EQ(probe.OutputShort(nullptr, &stream, 0x0102), 2);
  EXPECT_EQ(probe.OutputShort(nullptr, &stream, -3), 2);
  EXPECT_EQ(probe.OutputByte(nullptr, &stream, 7), 1);
  EXPECT_EQ(probe.OutputByte(nullptr, &stream, static_cast<char>(254)), 1);
  EXPECT_EQ(stream.str(), bytes({1, 2, 255, 253, 7, 254}));
}

TEST_F(ManagerProtocolTest, DoublesTakeTheirEightBytesTheMostSignificantFirst) {
  SimulatorProbe& probe = start(1);
  std::ostringstream stream;
  std::vector<double> values = {1.0, 2.5, -4.0};
  EXPECT_EQ(probe.Output(nullptr, &stream, values.data(), 3), 24);
  EXPECT_EQ(stream.str(), kOne + kTwoAndAHalf + kMinusFour);
  EXPECT_EQ(values, (std::vector<double>{1.0, 2.5, -4.0}));  // converted elsewhere
}

TEST_F(ManagerProtocolTest, ConvertingADoubleTwiceGivesItBack) {
  SimulatorProbe& probe = start(1);
  const double converted = probe.EndianConvertDouble(1.0);
  EXPECT_EQ(std::memcmp(&converted, kOne.data(), sizeof converted), 0);
  EXPECT_EQ(probe.EndianConvertDouble(converted), 1.0);
}

TEST_F(ManagerProtocolTest, ArraysBeyondTheFirstBufferAreWrittenWhole) {
  SimulatorProbe& probe = start(1);
  for (const int size : {100, 101, 250, 3}) {
    std::ostringstream stream;
    std::vector<double> values(static_cast<std::size_t>(size), 1.0);
    values.back() = 2.5;
    EXPECT_EQ(probe.Output(nullptr, &stream, values.data(), size), 8 * size);
    std::string expected;
    for (int i = 0; i + 1 < size; ++i) {
      expected += kOne;
    }
    EXPECT_EQ(stream.str(), expected + kTwoAndAHalf) << "size " << size;
  }
}

TEST_F(ManagerProtocolTest, WithoutSocketAndStreamWritersOnlyCount) {
  SimulatorProbe& probe = start(1);
  double value = 1.0;
  EXPECT_EQ(probe.OutputInt(nullptr, nullptr, 1), 4);
  EXPECT_EQ(probe.OutputShort(nullptr, nullptr, 1), 2);
  EXPECT_EQ(probe.OutputByte(nullptr, nullptr, 1), 1);
  EXPECT_EQ(probe.Output(nullptr, nullptr, &value, 1), 8);
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);
}

TEST_F(ManagerProtocolTest, AFailedSendStopsTheRunAndSkipsTheStream) {
  double value = 1.0;
  for (int writer = 0; writer < 4; ++writer) {
    SimulatorProbe& probe = start(1);
    SocketProbe broken(false);
    std::ostringstream stream;
    const int result = writer == 0   ? probe.OutputInt(&broken, &stream, 1)
                       : writer == 1 ? probe.OutputShort(&broken, &stream, 1)
                       : writer == 2 ? probe.OutputByte(&broken, &stream, 1)
                                     : probe.Output(&broken, &stream, &value, 1);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(stream.str(), "");
    EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
  }
}

// ---- Data message ---------------------------------------------------------------------------------------------------

TEST_F(ManagerProtocolTest, ADataMessageCountsAllOfItselfAndSkipsEmptyRows) {
  start(3, {"-N1", "-c5"});
  const auto packet = packetOf({{1.0, 2.5}, {}, {-4.0}});
  EXPECT_EQ(messageOf(packet.get()), intBytes(9 + 7 * 2 + 8 * 3) + bytes({5, 0, 0, 0, 2}) +      //
                                         bytes({0, 0, 1}) + intBytes(2) + kOne + kTwoAndAHalf +  //
                                         bytes({0, 2, 1}) + intBytes(1) + kMinusFour);
}

TEST_F(ManagerProtocolTest, SquaredRowsFollowAsRecordsOfKindTwo) {
  start(2);
  const auto packet = packetOf({{1.0}, {2.5}});
  const auto squares = packetOf({{}, {-4.0}});
  EXPECT_EQ(messageOf(packet.get(), squares.get()), intBytes(9 + 7 * 3 + 8 * 3) + bytes({0, 0, 0, 0, 3}) +  //
                                                        bytes({0, 0, 1}) + intBytes(1) + kOne +             //
                                                        bytes({0, 1, 1}) + intBytes(1) + kTwoAndAHalf +     //
                                                        bytes({0, 1, 2}) + intBytes(1) + kMinusFour);
}

TEST_F(ManagerProtocolTest, AMessageWithoutObservationsHasNineBytes) {
  start(2);
  const auto packet = packetOf({{}, {}});
  EXPECT_EQ(messageOf(packet.get()), bytes({0, 0, 0, 9, 0, 0, 0, 0, 0}));
}

TEST_F(ManagerProtocolTest, ClientAndExperimentAreCutToTheirFields) {
  SimulatorProbe& probe = start(1);
  probe.MyClientID = 0x1FD;              // 253 in a byte
  probe.TheExperimentNumber = 0x12345U;  // 0x2345 in a short
  const auto packet = packetOf({{}});
  EXPECT_EQ(messageOf(packet.get()), bytes({0, 0, 0, 9, 253, 0x23, 0x45, 0, 0}));
}

TEST_F(ManagerProtocolTest, TheMessageNamesTheSimulatorAndNotThePacket) {
  start(1, {"-N1", "-c5"});
  DataPacket packet(77, 88, 1, 1);
  EXPECT_EQ(messageOf(&packet), bytes({0, 0, 0, 9, 5, 0, 0, 0, 0}));
}

TEST_F(ManagerProtocolTest, APacketIsMadeInTheSimulatorsNameForAReport) {
  SimulatorProbe& probe = start(2, {"-N1", "-c5", "-n3"});
  probe.TheExperimentNumber = 4;
  const std::unique_ptr<DataPacket> packet(probe.CreateDataPacket(2));
  EXPECT_EQ(packet->GetClientId(), 5);
  EXPECT_EQ(packet->GetExperimentNum(), 4);
  EXPECT_EQ(packet->GetObsArray(1) - packet->GetObsArray(0), 3);
  EXPECT_EQ(packet->GetNumObs(1), 0);
}

// ---- Reports --------------------------------------------------------------------------------------------------------

TEST_F(ManagerProtocolTest, TheFirstTenOutputsAreNeverHeldBack) {
  SimulatorProbe& probe = start(1);
  for (int output = 1; output <= 10; ++output) {
    EXPECT_TRUE(report(0.0)) << "output " << output;
    EXPECT_EQ(probe.NumberReports, output + 1);
    EXPECT_EQ(probe.OutputPackets->GetCount(), 0);
  }
  EXPECT_FALSE(report(0.0));
  EXPECT_EQ(probe.NumberReports, 11);
  EXPECT_EQ(probe.OutputPackets->GetCount(), 2);
}

TEST_F(ManagerProtocolTest, AFastRunOutputsEveryTwentyFiveReports) {
  const TemporaryFile file("csv");
  SimulatorProbe& probe = start(1, {"-N1", "-n1", std::string("-a") + file.name()});
  for (int output = 1; output <= 10; ++output) {
    ASSERT_TRUE(report(0.0));
  }
  for (int round = 0; round < 3; ++round) {
    for (int held = 1; held <= 24; ++held) {
      ASSERT_FALSE(report(0.0)) << "report " << held;
      ASSERT_EQ(probe.OutputPackets->GetCount(), 2 * held);
    }
    EXPECT_TRUE(report(0.0));
    EXPECT_EQ(probe.OutputPackets->GetCount(), 0);
    EXPECT_EQ(probe.NumberReports, 12 + round);  // outputs, not reports
  }
  std::istringstream lines(file.bytes());
  std::string line;
  int observations = 0;
  while (std::getline(lines, line)) {
    observations += line == "0,1.0" ? 1 : 0;
  }
  EXPECT_EQ(observations, 10 + 3 * 25);
}

TEST_F(ManagerProtocolTest, ASlowRunIsNeverHeldBack) {
  SimulatorProbe& probe = start(1);
  probe.NumberReports = 16;
  EXPECT_FALSE(report(16 * 0.1875));  // below 0.2 seconds for each output so far
  EXPECT_TRUE(report(16 * 0.25));
  EXPECT_EQ(probe.NumberReports, 17);
  probe.NumberReports = 11;
  EXPECT_TRUE(report(2.2));  // 2.2 / 11 is exactly the double 0.2, which is not below it
}

TEST_F(ManagerProtocolTest, ASoftStopFlushesWhatIsHeldAndBecomesAHardOne) {
  SimulatorProbe& probe = start(1);
  probe.NumberReports = 11;
  EXPECT_FALSE(report(0.0));
  probe.SimControl = SimulatorClass::STOPSOFT;
  EXPECT_TRUE(report(0.0));
  EXPECT_EQ(probe.OutputPackets->GetCount(), 0);
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
}

TEST_F(ManagerProtocolTest, AHardStopDoesNotFlush) {
  SimulatorProbe& probe = start(1);
  probe.NumberReports = 11;
  probe.SimControl = SimulatorClass::STOPHARD;
  EXPECT_FALSE(report(0.0));
  EXPECT_EQ(probe.OutputPackets->GetCount(), 2);
}

TEST_F(ManagerProtocolTest, PacketsGoRoundInPairs) {
  SimulatorProbe& probe = start(1);
  probe.NumberReports = 11;
  observe(1.0);
  DataPacket* const first = probe.CurPacket;
  DataPacket* const firstSquares = probe.CurSqrPacket;
  EXPECT_FALSE(probe.CheckReportSize(0.0));
  EXPECT_NE(probe.CurPacket, first);
  EXPECT_NE(probe.CurSqrPacket, firstSquares);
  DataPacket* const second = probe.CurPacket;
  DataPacket* const secondSquares = probe.CurSqrPacket;
  observe(2.0);
  EXPECT_TRUE(probe.CheckReportSize(1000.0));
  EXPECT_EQ(probe.UnusedPackets->Pop(), first);
  EXPECT_EQ(probe.UnusedPackets->Pop(), firstSquares);
  EXPECT_EQ(probe.UnusedPackets->Pop(), second);
  EXPECT_EQ(probe.UnusedPackets->Pop(), secondSquares);
  for (DataPacket* const packet : {first, firstSquares, second, secondSquares}) {
    probe.UnusedPackets->Push(packet);
  }
  EXPECT_TRUE(report(1000.0));
  EXPECT_EQ(probe.CurPacket, first);
  EXPECT_EQ(probe.CurSqrPacket, firstSquares);
  EXPECT_EQ(probe.CurPacket->GetNumObs(0), 1);  // on purpose: a packet is not cleared when reused
}

TEST_F(ManagerProtocolTest, BothFilesGetTheObservationsAndNeverTheSquaredOnes) {
  const TemporaryFile csv("csv");
  const TemporaryFile bin("bin");
  SimulatorProbe& probe = start(1, {"-N1", std::string("-a") + csv.name(), std::string("-b") + bin.name()});
  const std::string csvHead = csv.bytes();
  observe(2.5);
  probe.BatchRuns = 1;
  ASSERT_TRUE(probe.CheckReportSize(0.0));
  const std::string lines = csv.bytes();
  EXPECT_EQ(lines.substr(lines.rfind("\n", lines.size() - 2) + 1), "0,2.5\n");
  const std::string file = bin.bytes();
  EXPECT_NE(file.find(",BATCHES=1,,"), std::string::npos);  // the header follows each output
  EXPECT_EQ(file.substr(256), intBytes(9 + 7 + 8) + bytes({0, 0, 0, 0, 1, 0, 0, 1}) + intBytes(1) + kTwoAndAHalf);
}

TEST_F(ManagerProtocolTest, AnOutputWithNothingWaitingIsSilent) {
  SimulatorProbe& probe = start(1);
  EXPECT_EQ(probe.OutputThreadFunc(), 0U);
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);
}

TEST_F(ManagerProtocolTest, ResettingTheBufferFreesWhatWaitsUnwritten) {
  SimulatorProbe& probe = start(1);
  probe.NumberReports = 11;
  EXPECT_FALSE(report(0.0));
  EXPECT_FALSE(report(0.0));
  probe.ResetDataPacketBuffer();
  EXPECT_EQ(probe.OutputPackets->GetCount(), 0);
  EXPECT_EQ(probe.UnusedPackets->GetCount(), 4);
}

TEST_F(ManagerProtocolTest, TheOutputEntryWorksUntilAHardStop) {
  SimulatorProbe& probe = start(1);
  probe.NumberReports = 11;
  EXPECT_FALSE(report(0.0));
  probe.SimControl = SimulatorClass::STOPSOFT;  // flushes, and then stops hard
  EXPECT_EQ(SimulatorProbe::StaticOutputThreadFunc(static_cast<SimulatorClass*>(&probe)), 0U);
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
  EXPECT_EQ(probe.OutputPackets->GetCount(), 0);
}

// ---- A manager on the line ------------------------------------------------------------------------------------------

class ConnectedTest : public ManagerProtocolTest {
 protected:
  /// A simulator with a manager connected to it.
  SimulatorProbe& startConnected(int numPVs, std::vector<std::string> words = {"-N1"}) {
    SimulatorProbe& probe = start(numPVs, std::move(words));
    if (port == 0) {
      port = support::bindToFreePort(listener, support::processId());
      EXPECT_TRUE(listener.Listen(5));
    } else {  // another manager after the first
      manager.Close();
      manager._socket = socket(AF_INET, SOCK_STREAM, 0);
    }
    auto accepted = std::make_unique<QuorvaSocket>(false);
    EXPECT_TRUE(manager.Connect("127.0.0.1", port));
    EXPECT_TRUE(listener.Accept(*accepted));
    simulatorSide = accepted.get();
    probe.SimMgrSocket = accepted.release();
    return probe;
  }

  void send(const std::string& text) {
    ASSERT_EQ(manager.Send(text.data(), static_cast<int>(text.size())), static_cast<int>(text.size()));
  }

  /// The next `count` bytes from the simulator.
  std::string receive(std::size_t count) {
    std::string data(count, '?');
    data.resize(static_cast<std::size_t>(manager.RecvBlock(data.data(), static_cast<int>(count))));
    return data;
  }

  /// Lets the simulator look for a signal once it has come; gives what it wrote to standard output.
  std::string listen() {
    EXPECT_TRUE(simulator->SimMgrSocket->Select(5000));
    return support::standardOutputOf([this] { simulator->ListenToSimMgr(simulator->SimMgrSocket); });
  }

  /// True when the simulator has closed the connection and nothing more comes.
  bool isClosed() {
    char byte = 0;
    return manager.Recv(&byte, 1) == 0;
  }

  SocketProbe listener{true};
  int port = 0;  // of the listener, once it listens
  SocketProbe manager{true};
  QuorvaSocket* simulatorSide = nullptr;  // borrowed from the simulator
};

TEST_F(ConnectedTest, AReportIsAProcessorTimeMessageAndADataMessage) {
  SimulatorProbe& probe = startConnected(1, {"-N1", "-c5"});
  probe.TheExperimentNumber = 0x0102;
  probe.CPUSeconds = 2.5;
  observe(1.0);
  EXPECT_TRUE(probe.CheckReportSize(2.5));
  EXPECT_EQ(receive(16), intBytes(12) + bytes({254, 5, 1, 2}) + kTwoAndAHalf);
  EXPECT_EQ(receive(24), intBytes(24) + bytes({5, 1, 2, 0, 1, 0, 0, 1}) + intBytes(1) + kOne);
}

TEST_F(ConnectedTest, HeldReportsGoOutOneByOneEachUnderTheLatestProcessorTime) {
  SimulatorProbe& probe = startConnected(1);
  probe.NumberReports = 11;
  probe.CPUSeconds = 0.5;
  observe(2.5);
  EXPECT_FALSE(probe.CheckReportSize(0.5));
  probe.CPUSeconds = 1.0;
  observe(-4.0);
  probe.SimControl = SimulatorClass::STOPSOFT;
  EXPECT_TRUE(probe.CheckReportSize(1.0));
  const std::string time = intBytes(12) + bytes({254, 0, 0, 0}) + kOne;
  const std::string head = intBytes(24) + bytes({0, 0, 0, 0, 1, 0, 0, 1}) + intBytes(1);
  EXPECT_EQ(receive(80), time + head + kTwoAndAHalf + time + head + kMinusFour);
}

TEST_F(ConnectedTest, TheSocketAndTheFileGetTheSameMessage) {
  const TemporaryFile file("bin");
  SimulatorProbe& probe = startConnected(1, {"-N1", std::string("-b") + file.name()});
  observe(1.0);
  EXPECT_TRUE(probe.CheckReportSize(0.0));
  receive(16);  // the processor time is for the manager alone
  EXPECT_EQ(file.bytes().substr(256), receive(24));
}

TEST_F(ConnectedTest, ALostConnectionStopsTheRun) {
  SimulatorProbe& probe = startConnected(1);
  simulatorSide->Close();
  const auto packet = packetOf({{1.0}});
  std::ostringstream stream;
  probe.OutputDataBinary(simulatorSide, &stream, packet.get(), nullptr);
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
  EXPECT_EQ(stream.str(), "");
}

/// A send of no bytes gives 0, which is no success.
TEST_F(ConnectedTest, ASendOfNothingCountsAsAFailedOne) {
  SimulatorProbe& probe = startConnected(1);
  double value = 1.0;
  std::ostringstream stream;
  EXPECT_EQ(probe.Output(simulatorSide, &stream, &value, 0), -1);
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
}

TEST_F(ConnectedTest, AShortSendCountsAsAWholeOne) {
  SimulatorProbe& probe = startConnected(1);
  const int size = 1;  // the system makes it its least
  ASSERT_EQ(setsockopt(SocketProbe::descriptorOf(*simulatorSide), SOL_SOCKET, SO_SNDBUF, &size, sizeof size), 0);
  ASSERT_EQ(fcntl(SocketProbe::descriptorOf(*simulatorSide), F_SETFL, O_NONBLOCK), 0);
  std::vector<double> values(4 << 20, 1.0);  // far beyond what the buffers of a connection hold
  const int count = static_cast<int>(values.size());
  std::ostringstream stream;
  EXPECT_EQ(probe.Output(simulatorSide, &stream, values.data(), count), 8 * count);
  EXPECT_EQ(stream.str().size(), 8 * values.size());
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);

  // The rest of the array is not made up for: the next writes stand behind the gap, until there is no room for one.
  std::size_t behind = 0;
  while (behind < values.size() && probe.OutputInt(simulatorSide, &stream, 1) != -1) {
    behind += 4;
  }
  EXPECT_LT(behind, values.size());
  EXPECT_EQ(stream.str().size(), 8 * values.size() + behind);  // the one that failed left no trace
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
  simulatorSide->Close();
  std::size_t received = 0;
  std::vector<char> data(1 << 16);
  while (const int part = manager.Recv(data.data(), static_cast<int>(data.size()))) {
    ASSERT_GT(part, 0);
    received += static_cast<std::size_t>(part);
  }
  EXPECT_GT(received, 0U);
  EXPECT_LT(received, 8 * values.size());
}

TEST_F(ConnectedTest, ClientAndExperimentWrapAroundInTheirFields) {
  struct Case {
    std::int32_t client;
    std::uint32_t experiment;
    std::string fields;
  };
  const std::vector<Case> cases = {
      {253, 0x7FFF, bytes({253, 0x7F, 0xFF})}, {255, 0x8000, bytes({255, 0x80, 0})},
      {256, 0xFFFF, bytes({0, 0xFF, 0xFF})},   {257, 0x10000, bytes({1, 0, 0})},
      {-1, 0x10001, bytes({255, 0, 1})},       {-2147483647 - 1, 0xFFFFFFFE, bytes({0, 0xFF, 0xFE})},
  };
  SimulatorProbe& probe = startConnected(1);
  for (const Case& numbers : cases) {
    probe.MyClientID = numbers.client;
    probe.TheExperimentNumber = numbers.experiment;
    probe.OutputCPUTime(simulatorSide, 1.0);
    EXPECT_EQ(receive(16), intBytes(12) + bytes({254}) + numbers.fields + kOne);
    EXPECT_EQ(messageOf(packetOf({{}}).get()), intBytes(9) + numbers.fields + bytes({0, 0}));
    // Within the process both keep all of their bits.
    const std::unique_ptr<DataPacket> packet(probe.CreateDataPacket(1));
    EXPECT_EQ(packet->GetClientId(), numbers.client);
    EXPECT_EQ(static_cast<std::uint32_t>(packet->GetExperimentNum()), numbers.experiment);
  }
}

TEST_F(ConnectedTest, WithoutASignalNothingHappens) {
  SimulatorProbe& probe = startConnected(1);
  const std::string out = support::standardOutputOf([&] { probe.ListenToSimMgr(probe.SimMgrSocket); });
  EXPECT_EQ(out, "");
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);
}

TEST_F(ConnectedTest, SignalOneIsAcknowledged) {
  SimulatorProbe& probe = startConnected(1);
  send("\1");
  EXPECT_EQ(listen(), "");
  EXPECT_EQ(receive(10), status(255, 1));
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);
}

TEST_F(ConnectedTest, SignalTwoQuits) {
  SimulatorProbe& probe = startConnected(1);
  send("\2");
  EXPECT_EQ(listen(), "SOCKET::Quit\n");
  EXPECT_EQ(receive(10), status(254, 2));
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
  EXPECT_NE(probe.SimMgrSocket, nullptr);  // stays open to the end
}

TEST_F(ConnectedTest, SignalsAreLookedAtOncePerReportBeforeItsOutput) {
  SimulatorProbe& probe = startConnected(1);
  send("\1\2");
  ASSERT_TRUE(probe.SimMgrSocket->Select(5000));
  EXPECT_TRUE(report(0.0));
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);  // the quit signal waits for the next report
  EXPECT_EQ(receive(10), status(255, 1));
  receive(16 + 24);
  const std::string out = support::standardOutputOf([this] { EXPECT_TRUE(report(0.0)); });
  EXPECT_EQ(out, "SOCKET::Quit\n");
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
  EXPECT_EQ(receive(10), status(254, 2));
}

TEST_F(ConnectedTest, SignalThreeDetachesWithAFileAndALimit) {
  const TemporaryFile file("detached");
  SimulatorProbe& probe = startConnected(1);
  send(std::string("\3") + file.name() + ";250;;");
  EXPECT_EQ(support::standardErrorOf([this] { EXPECT_EQ(listen(), ""); }), "");
  EXPECT_EQ(receive(10), status(255, 3));
  EXPECT_TRUE(isClosed());
  EXPECT_EQ(probe.SimMgrSocket, nullptr);
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);
  EXPECT_EQ(probe.MaxNumOfBatches, 250);
  EXPECT_STREQ(probe.BinFilename, file.name());
  ASSERT_NE(probe.FileBin, nullptr);
  EXPECT_TRUE(report(0.0));  // goes on alone, into the file
  EXPECT_EQ(file.bytes().size(), 256U + 24);
}

TEST_F(ConnectedTest, SignalThreeLeavesAFileOfTheCommandLineAndItsLimit) {
  const TemporaryFile own("own");
  const TemporaryFile other("other");
  SimulatorProbe& probe = startConnected(1, {"-N7", std::string("-b") + own.name()});
  const std::ofstream* const stream = probe.FileBin;
  send(std::string("\3") + other.name() + ";250;;");
  listen();
  EXPECT_EQ(receive(10), status(255, 3));
  EXPECT_TRUE(isClosed());
  EXPECT_EQ(probe.SimMgrSocket, nullptr);
  EXPECT_EQ(probe.MaxNumOfBatches, 7);
  EXPECT_STREQ(probe.BinFilename, own.name());
  EXPECT_EQ(probe.FileBin, stream);
  EXPECT_FALSE(other.exists());
}

TEST_F(ConnectedTest, SignalThreeWithoutALimitTakesTheLimitAway) {
  const TemporaryFile file("detached");
  SimulatorProbe& probe = startConnected(1, {"-N7"});
  send(std::string("\3") + file.name() + ";;");
  listen();
  EXPECT_EQ(receive(10), status(255, 3));
  EXPECT_EQ(probe.MaxNumOfBatches, 0);
  EXPECT_STREQ(probe.BinFilename, file.name());
}

TEST_F(ConnectedTest, SignalThreeWithoutAFileGoesOnWithoutOne) {
  SimulatorProbe& probe = startConnected(1, {"-N7"});
  send("\3;;");
  listen();
  EXPECT_EQ(receive(10), status(255, 3));
  EXPECT_EQ(probe.BinFilename, nullptr);
  ASSERT_NE(probe.FileBin, nullptr);
  EXPECT_TRUE(probe.FileBin->fail());
  EXPECT_TRUE(report(0.0));
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);
}

TEST_F(ConnectedTest, SignalThreeTakesTheTokensBetweenWhateverSemicolons) {
  const TemporaryFile file("detached");
  struct Case {
    std::string text;
    const char* name;
    std::int32_t limit;
  };
  const std::string name = file.name();
  const std::vector<Case> cases = {
      {";" + name + ";70;;", file.name(), 70},  // one ahead of the first token counts for nothing
      {name + ";70;80;;", file.name(), 70},     // a third token neither
      {name + ";many;;", file.name(), 0},       // text that is no number
      {name + ";-5;;", file.name(), -5},        // no limit either
      {name + ";70" + std::string(1, '\0') + "9;;", name.c_str(), 70},  // a zero byte ends the text
  };
  for (const Case& detach : cases) {
    SimulatorProbe& probe = startConnected(1, {"-N7"});
    send("\3" + detach.text);
    listen();
    EXPECT_EQ(receive(10), status(255, 3));
    EXPECT_STREQ(probe.BinFilename, detach.name) << detach.text;
    EXPECT_EQ(probe.MaxNumOfBatches, detach.limit) << detach.text;
  }
}

TEST_F(ConnectedTest, SignalThreeTakesATextOf512BytesAtMost) {
  SimulatorProbe& probe = startConnected(1);
  const std::string name = "/no/such/folder/" + std::string(484, 'x');  // 500 characters
  send("\3" + name + ";12345678901;;");                                 // cut behind ";12345678901", 512 characters
  listen();
  EXPECT_EQ(receive(10), status(255, 3));
  EXPECT_EQ(probe.BinFilename, name);
  EXPECT_EQ(probe.MaxNumOfBatches, static_cast<std::int32_t>(12345678901 % 4294967296));  // the low 32 bits
}

TEST_F(ConnectedTest, AnUnknownSignalIsToldAndIgnored) {
  SimulatorProbe& probe = startConnected(1);
  for (const char* const signal : {"1", "\4", "\377"}) {
    send(signal);
    const std::string err = support::standardErrorOf([this] { EXPECT_EQ(listen(), ""); });
    EXPECT_EQ(err, "!! Invalid Response Received by Client \n!! Simulation\n");
  }
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);
}

TEST_F(ConnectedTest, AFailedSelectStopsTheRun) {
  SimulatorProbe& probe = start(1);
  SocketProbe broken(false);
  std::string out;
  support::standardErrorOf([&] { out = support::standardOutputOf([&] { probe.ListenToSimMgr(&broken); }); });
  EXPECT_EQ(out, "Error reading socket 'select'... Exiting.\n");
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
}

/// Brings the simulator's side to the point where it is readable and a receive fails.
void reset(SocketProbe& manager) {
  const linger atOnce{1, 0};
  setsockopt(manager._socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
  close(manager._socket);  // not by Close, whose shutdown would be an end in good order
  manager._socket = -1;
}

TEST_F(ConnectedTest, AFailedReadIsIgnoredByItself) {
  SimulatorProbe& probe = startConnected(1);
  reset(manager);
  EXPECT_EQ(listen(), "");
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);
}

TEST_F(ConnectedTest, AFailedReadAfterAnEarlierErrorStopsTheRun) {
  SimulatorProbe& probe = startConnected(1);
  SocketProbe::errorStringOf(*simulatorSide) = "an earlier failure";
  reset(manager);
  EXPECT_EQ(listen(), "Error reading socket 'read'... Exiting.\n");
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
}

TEST_F(ConnectedTest, TheLoopListensUntilTheRunIsToStop) {
  SimulatorProbe& probe = startConnected(1);
  send("\1\1\2");
  const std::string out = support::standardOutputOf([&] { probe.ListenToSimMgrLoop(probe.SimMgrSocket); });
  EXPECT_EQ(out, "SOCKET::Quit\n");
  EXPECT_EQ(receive(30), status(255, 1) + status(255, 1) + status(254, 2));
}

TEST_F(ConnectedTest, TheLoopEndsWhenTheManagerDetaches) {
  SimulatorProbe& probe = startConnected(1);
  send("\3;;");
  probe.ListenToSimMgrLoop(probe.SimMgrSocket);
  EXPECT_EQ(probe.SimMgrSocket, nullptr);
  EXPECT_EQ(probe.SimControl, SimulatorClass::GO);
}

// ---- The output entry on a thread of its own -------------------------------------------------------------------------

TEST_F(ConnectedTest, TheOutputEntryWritesWhatWaitsBesideATakerOfUsedPackets) {
  SimulatorProbe& probe = startConnected(1);
  probe.NumberReports = 11;
  for (int i = 0; i < 24; ++i) {
    ASSERT_FALSE(report(0.0));
  }
  probe.SimControl = SimulatorClass::STOPSOFT;  // flushes, and then stops hard
  QuorvaThread thread(SimulatorProbe::StaticOutputThreadFunc, static_cast<SimulatorClass*>(&probe));
  thread.Start();
  std::vector<DataPacket*> used;
  const std::string time = intBytes(12) + bytes({254, 0, 0, 0}) + std::string(8, '\0');
  const std::string data = intBytes(24) + bytes({0, 0, 0, 0, 1, 0, 0, 1}) + intBytes(1) + kOne;
  for (int i = 0; i < 24; ++i) {
    ASSERT_EQ(receive(40), time + data);
  }
  while (used.size() < 48) {
    if (DataPacket* const packet = probe.UnusedPackets->Pop(); packet != nullptr) {
      used.push_back(packet);
    }
  }
  thread.WaitUntilDone();
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
  EXPECT_EQ(probe.OutputPackets->GetCount(), 0);
  for (DataPacket* const packet : used) {
    probe.UnusedPackets->Push(packet);
  }
}

TEST_F(ConnectedTest, TheOutputEntryEndsWhenTheManagerBreaksOff) {
  SimulatorProbe& probe = startConnected(1);
  probe.NumberReports = 11;
  for (int i = 0; i < 24; ++i) {
    ASSERT_FALSE(report(0.0));
  }
  reset(manager);
  QuorvaThread thread(SimulatorProbe::StaticOutputThreadFunc, static_cast<SimulatorClass*>(&probe));
  thread.Start();
  thread.WaitUntilDone();
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
  EXPECT_EQ(probe.OutputPackets->GetCount(), 0);
}

// ---- Waiting for a manager ------------------------------------------------------------------------------------------

class WaitTest : public ManagerProtocolTest {
 protected:
  /// A simulator that will try a port first that was free a moment ago.
  SimulatorProbe& startWaiting() {
    SimulatorProbe& probe = start(1);
    support::standardErrorOf([this] {  // closing an unconnected socket is told
      SocketProbe taken(true);
      port = support::bindToFreePort(taken, support::processId());
      taken.Close();
    });
    probe.SocketPort = static_cast<std::int16_t>(port);
    probe.AcceptSelectDelay = 20;
    return probe;
  }

  /// The port on loopback.
  static sockaddr_in addressOf(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
  }

  /// Connects as soon as somebody listens at `port` or one of the next three; -1 if nobody does for ten seconds.
  [[nodiscard]] int connectWhenListening() const {
    for (int attempt = 0; attempt < 4000; ++attempt) {
      const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
      const sockaddr_in address = addressOf(static_cast<std::uint16_t>(port + attempt % 4));
      if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return descriptor;
      }
      close(descriptor);
      std::this_thread::sleep_for(std::chrono::microseconds(2500));
    }
    return -1;
  }

  /// A connection on which the greeting has come. A socket that listened for an earlier manager may still take a
  /// connection, and drop it.
  [[nodiscard]] int connectUntilGreeted() const {
    while (true) {
      const int descriptor = connectWhenListening();
      if (descriptor == -1 || receive(descriptor, 10) == status(255, 1)) {
        return descriptor;
      }
      close(descriptor);
    }
  }

  static std::string receive(int descriptor, std::size_t count) {
    std::string data(count, '?');
    const auto received = recv(descriptor, data.data(), count, MSG_WAITALL);
    data.resize(received < 0 ? 0 : static_cast<std::size_t>(received));
    return data;
  }

  int port = 0;
};

TEST_F(WaitTest, RegistersItsPortAndGreetsTheManager) {
  SimulatorProbe& probe = startWaiting();
  std::string greeting;
  std::thread manager([&] {
    const int descriptor = connectWhenListening();
    greeting = receive(descriptor, 10);
    close(descriptor);
  });
  QuorvaSocket* connection = nullptr;
  const std::string out = support::standardOutputOf([&] { connection = probe.WaitForSimMgrConnection(10000); });
  manager.join();
  EXPECT_EQ(out, "REGISTER:  Port: [" + std::to_string(probe.SocketPort) + "]\n");
  EXPECT_NE(connection, nullptr);
  EXPECT_NE(probe.ConnectionSocket, nullptr);
  EXPECT_EQ(greeting, status(255, 1));
  delete connection;
}

TEST_F(WaitTest, APortInUseIsPassedOver) {
  SimulatorProbe& probe = startWaiting();
  SocketProbe occupant(true);
  port = support::bindToFreePort(occupant, support::processId());
  probe.SocketPort = static_cast<std::int16_t>(port);
  std::string out;
  const std::string err = support::standardErrorOf(
      [&] { out = support::standardOutputOf([&] { EXPECT_EQ(probe.WaitForSimMgrConnection(1), nullptr); }); });
  EXPECT_GT(probe.SocketPort, port);
  EXPECT_EQ(out, "REGISTER:  Port: [" + std::to_string(probe.SocketPort) + "]\n");
  EXPECT_EQ(err.find("error in bind"), std::string::npos);
}

TEST_F(WaitTest, APortBeyondTheShortRangeIsRegisteredAsTheNumberItHas) {
  SimulatorProbe& probe = startWaiting();
  probe.SocketPort = static_cast<std::int16_t>(40000 + support::processId() % 10000);
  const std::string out = support::standardOutputOf([&] { EXPECT_EQ(probe.WaitForSimMgrConnection(1), nullptr); });
  EXPECT_EQ(out, "REGISTER:  Port: [" + std::to_string(static_cast<std::uint16_t>(probe.SocketPort)) + "]\n");
  EXPECT_LT(probe.SocketPort, 0);
}

TEST_F(WaitTest, GivesUpAfterAsManyRoundsAsTheTimeHolds) {
  SimulatorProbe& probe = startWaiting();
  const auto start = std::chrono::steady_clock::now();
  support::standardOutputOf([&] { EXPECT_EQ(probe.WaitForSimMgrConnection(60), nullptr); });  // three rounds of 20
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(60));
  EXPECT_LT(waited, std::chrono::seconds(5));
  EXPECT_NE(probe.ConnectionSocket, nullptr);  // stays open to the end
}

TEST_F(WaitTest, DoesNotWaitWhenTheRunIsToStopOrThereIsNoTime) {
  SimulatorProbe& probe = startWaiting();
  probe.AcceptSelectDelay = 600000;  // a round would outlast the test
  support::standardOutputOf([&] { EXPECT_EQ(probe.WaitForSimMgrConnection(0), nullptr); });
  probe.SimControl = SimulatorClass::STOPHARD;
  support::standardOutputOf([&] { EXPECT_EQ(probe.WaitForSimMgrConnection(-1), nullptr); });
}

TEST_F(WaitTest, AHundredManagersMayWaitToBeTaken) {
  SimulatorProbe& probe = startWaiting();
  support::standardOutputOf(
      [&] { EXPECT_EQ(probe.WaitForSimMgrConnection(0), nullptr); });  // listens, and takes nobody
  std::vector<pollfd> waiting;
  for (int i = 0; i < 100; ++i) {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    const sockaddr_in address = addressOf(static_cast<std::uint16_t>(probe.SocketPort));
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      EXPECT_EQ(errno, EINPROGRESS);
    }
    waiting.push_back({descriptor, POLLOUT, 0});
  }
  int connected = 0;
  for (pollfd& manager : waiting) {
    connected += poll(&manager, 1, 5000) == 1 && manager.revents == POLLOUT ? 1 : 0;
    close(manager.fd);
  }
  EXPECT_EQ(connected, 100);
}

TEST_F(WaitTest, TheSocketEntryServesOneManagerAfterTheOtherUntilOneQuits) {
  SimulatorProbe& probe = startWaiting();
  std::string answers;
  const std::string out = support::standardOutputOf([&] {
    QuorvaThread thread(SimulatorProbe::StaticSocketThreadFunc, static_cast<SimulatorClass*>(&probe));
    thread.Start();
    for (const std::string signals : {"\1\3;;", "\2"}) {
      const int manager = connectUntilGreeted();
      EXPECT_EQ(send(manager, signals.data(), signals.size(), 0), static_cast<ssize_t>(signals.size()));
      answers += receive(manager, signals.size() == 1 ? 10 : 20);
      close(manager);
    }
    thread.WaitUntilDone();
  });
  EXPECT_EQ(answers, status(255, 1) + status(255, 3) + status(254, 2));
  EXPECT_NE(out.find("SOCKET::Quit\n"), std::string::npos);
  EXPECT_EQ(probe.SimControl, SimulatorClass::STOPHARD);
}

}  // namespace
