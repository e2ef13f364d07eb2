// The conversation with the simulation manager, and the packets through which observations leave the simulation. The
// simulator is the server: it binds a port, tells it on standard output and accepts one connection.
//
// Numbers travel in network byte order, without padding and without anything between the messages. Status and data
// messages begin with the length of the whole message; the processor time message begins with the length of what
// follows that field. On purpose: managers rely on either.

#include <array>
#include <bit>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "BaseClasses/OwnedText.h"
#include "BaseClasses/ProcessId.h"
#include "BaseClasses/QuorvaQueue.h"
#include "BaseClasses/QuorvaSocket.h"
#include "BaseClasses/QuorvaThread.h"
#include "Simulator/DataPacket.h"
#include "Simulator/ParseInt32.h"
#include "Simulator/SimulatorClass.h"

namespace {

// Byte 4 of the messages that are no data messages. Client ids stay below.
constexpr int kAcknowledgement = 255;
constexpr int kQuitOrProcessorTime = 254;

// Signals of the manager, and codes of the answers to them.
constexpr int kAreYouThere = 1;
constexpr int kQuit = 2;
constexpr int kDetach = 3;

constexpr int kStatusLength = 10;
constexpr int kProcessorTimeLength = 12;  // without the length field
constexpr int kDataHeadLength = 9;
constexpr int kRecordHeadLength = 7;
constexpr int kDetachTextLength = 512;

constexpr std::int32_t kPorts = 65536;
constexpr int kPauseBetweenPortsMs = 100;
constexpr int kBacklog = 100;
constexpr int kReportsNeverHeld = 10;
constexpr double kSecondsOfFastReport = 0.2;

/// The bytes of `value`, the most significant one first.
template <typename Unsigned>
constexpr std::array<char, sizeof(Unsigned)> networkOrder(Unsigned value) {
  std::array<char, sizeof(Unsigned)> bytes{};
  for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte) {
    *byte = static_cast<char>(static_cast<unsigned char>(value & 0xFFU));
    value = static_cast<Unsigned>(value >> CHAR_BIT);
  }
  return bytes;
}

/// Takes the next token off `text`: the longest run of characters other than ";". Empty when there is none.
std::string_view takeToken(std::string_view& text) {
  const std::size_t begin = text.find_first_not_of(';');
  if (begin == std::string_view::npos) {
    return {};
  }
  text.remove_prefix(begin);
  const std::string_view token = text.substr(0, text.find(';'));
  text.remove_prefix(token.size());
  return token;
}

}  // namespace

// ---- Connection -----------------------------------------------------------------------------------------------------

QuorvaSocket* SimulatorClass::WaitForSimMgrConnection(int timeout_ms) {
  delete ConnectionSocket;
  ConnectionSocket = new QuorvaSocket(true);
  auto connection = std::make_unique<QuorvaSocket>(false);

  // On purpose: any failure moves on to the next port, and there is no last one. Once all have failed, as they do for a
  // process that has no descriptor left, the search goes on at a pace that costs next to no processor time.
  // Ports from 32768 on stand in SocketPort as negative numbers.
  std::int32_t untried = kPorts;
  while (!ConnectionSocket->Bind(static_cast<std::uint16_t>(SocketPort))) {
    ++SocketPort;
    if (untried > 0) {
      --untried;
    } else {
      QuorvaThread::Sleep(kPauseBetweenPortsMs);
    }
  }
  std::cout << "REGISTER:  Port: [" << static_cast<std::uint16_t>(SocketPort) << "]" << std::endl;
  ConnectionSocket->Listen(kBacklog);

  bool GotSocket = false;
  while (SimControl == GO && !GotSocket && (timeout_ms == -1 || timeout_ms >= 1)) {
    if (ConnectionSocket->Select(AcceptSelectDelay) && ConnectionSocket->Accept(*connection)) {
      sendStatus(connection.get(), kAcknowledgement, kAreYouThere);
      GotSocket = true;
    }
    if (timeout_ms >= 1) {
      timeout_ms -= AcceptSelectDelay;
    }
  }
  return GotSocket ? connection.release() : nullptr;
}

void SimulatorClass::ListenToSimMgr(QuorvaSocket* ms) {
  if (!ms->Select(ReadSelectDelay)) {
    if (ms->GetErrorString() != nullptr) {
      std::cout << "Error reading socket 'select'... Exiting." << std::endl;
      SimControl = STOPHARD;
    }
    return;
  }
  char signal = 0;
  if (ms->RecvBlock(&signal, 1) < 1) {
    if (ms->GetErrorString() != nullptr) {
      std::cout << "Error reading socket 'read'... Exiting." << std::endl;
      SimControl = STOPHARD;
    }
    return;
  }
  switch (signal) {
    case kAreYouThere:
      sendStatus(ms, kAcknowledgement, kAreYouThere);
      break;
    case kQuit:
      std::cout << "SOCKET::Quit" << std::endl;
      sendStatus(ms, kQuitOrProcessorTime, kQuit);
      SimControl = STOPHARD;
      break;
    case kDetach:
      detachFromSimMgr(ms);
      break;
    default:
      std::cerr << "!! Invalid Response Received by Client " << std::endl;
      std::cerr << "!! Simulation" << std::endl;
      break;
  }
}

void SimulatorClass::detachFromSimMgr(QuorvaSocket* ms) {
  std::array<char, kDetachTextLength + 1> data{};
  std::string_view text;
  if (ms->RecvBlock(data.data(), kDetachTextLength, ";;") > 0) {
    text = data.data();
  }
  const std::string newBinName(takeToken(text));
  // A text without a limit reads as 0, which is no limit.
  const std::int32_t newMaxNumBatches = support::parseInt32(std::string(takeToken(text)).c_str());

  sendStatus(ms, kAcknowledgement, kDetach);
  // A file named on the command line stays, and with it the limit given there.
  if (BinFilename == nullptr) {
    MaxNumOfBatches = newMaxNumBatches;
    BinFilename = newBinName.empty() ? nullptr : support::copyOfText(newBinName.c_str());
    delete FileBin;
    FileBin = CreateBinFile(BinFilename);
  }
  delete SimMgrSocket;
  SimMgrSocket = nullptr;
}

void SimulatorClass::sendStatus(QuorvaSocket* ms, int kind, int code) {
  OutputInt(ms, nullptr, kStatusLength);
  OutputByte(ms, nullptr, static_cast<char>(kind));
  OutputByte(ms, nullptr, static_cast<char>(code));
  OutputInt(ms, nullptr, support::processId());
}

void SimulatorClass::ListenToSimMgrLoop(QuorvaSocket* ms) {
  // A manager that detaches takes its socket with it: there is nobody left to listen to.
  const bool isManagersSocket = ms == SimMgrSocket;
  while (SimControl == GO && !(isManagersSocket && SimMgrSocket == nullptr)) {
    ListenToSimMgr(ms);
  }
}

// ---- Reports --------------------------------------------------------------------------------------------------------

DataPacket* SimulatorClass::CreateDataPacket(int numPVs) {
  auto* const packet = new DataPacket(-1, -1, numPVs, ReportSize);
  packet->SetClientId(MyClientID);
  packet->SetExperimentNum(static_cast<std::int32_t>(TheExperimentNumber));
  return packet;
}

DataPacket* SimulatorClass::takeUnusedPacket() {
  DataPacket* const packet = UnusedPackets->Pop();
  return packet != nullptr ? packet : CreateDataPacket(NumPVs);
}

bool SimulatorClass::CheckReportSize(double seconds) {
  if (SimMgrSocket != nullptr) {
    ListenToSimMgr(SimMgrSocket);
  }
  const double secondsPerReport = seconds / NumberReports;

  OutputPackets->Push(CurPacket);
  OutputPackets->Push(CurSqrPacket);
  CurPacket = takeUnusedPacket();
  CurSqrPacket = takeUnusedPacket();

  // A fast run bundles its reports, which limits the number of messages and of system calls.
  if (NumberReports > kReportsNeverHeld && secondsPerReport < kSecondsOfFastReport &&
      OutputPackets->GetCount() < MaxDataPackets && SimControl != STOPSOFT) {
    return false;
  }
  ++NumberReports;
  OutputThreadFunc();
  return true;
}

std::uint32_t SimulatorClass::OutputThreadFunc() {
  while (DataPacket* const dp = OutputPackets->Pop()) {
    DataPacket* const companion = OutputPackets->Pop();
    if (SimMgrSocket != nullptr) {
      OutputCPUTime(SimMgrSocket, CPUSeconds);
    }
    if (SimMgrSocket != nullptr || FileBin != nullptr) {
      OutputDataBinary(SimMgrSocket, FileBin, dp, nullptr);
    }
    if (FileCSV != nullptr) {
      OutputDataCSV(*FileCSV, dp, nullptr);
    }
    UnusedPackets->Push(dp);
    UnusedPackets->Push(companion);  // the squared observations: on purpose unwritten
  }
  if (SimControl == STOPSOFT && OutputPackets->GetCount() == 0) {
    SimControl = STOPHARD;
  }
  if (FileBin != nullptr) {
    UpdateBinFileHeader(*FileBin);
  }
  return 0;
}

void SimulatorClass::ResetDataPacketBuffer() {
  while (DataPacket* const packet = OutputPackets->Pop()) {
    UnusedPackets->Push(packet);
  }
}

// ---- Entries for threads of their own -------------------------------------------------------------------------------

std::uint32_t SimulatorClass::SocketThreadFunc() {
  while (SimControl == GO) {
    SimMgrSocket = WaitForSimMgrConnection(-1);
    if (SimMgrSocket != nullptr) {
      ListenToSimMgrLoop(SimMgrSocket);
    }
  }
  return 0;
}

std::uint32_t SimulatorClass::StaticSocketThreadFunc(void* data) {
  return static_cast<SimulatorClass*>(data)->SocketThreadFunc();
}

std::uint32_t SimulatorClass::StaticOutputThreadFunc(void* data) {
  auto* const simulator = static_cast<SimulatorClass*>(data);
  std::uint32_t result = 0;
  while (simulator->SimControl != STOPHARD) {
    result = simulator->OutputThreadFunc();
  }
  return result;
}

// ---- Messages -------------------------------------------------------------------------------------------------------

int SimulatorClass::outputBytes(QuorvaSocket* ms, std::ostream* ostr, const char* bytes, int count) {
  // A short send counts as success.
  if (ms != nullptr && ms->Send(bytes, count) < 1) {
    SimControl = STOPHARD;
    return -1;
  }
  if (ostr != nullptr) {
    ostr->write(bytes, count);
  }
  return count;
}

int SimulatorClass::OutputInt(QuorvaSocket* ms, std::ostream* ostr, int value) {
  const auto bytes = networkOrder(static_cast<std::uint32_t>(value));
  return outputBytes(ms, ostr, bytes.data(), static_cast<int>(bytes.size()));
}

int SimulatorClass::OutputShort(QuorvaSocket* ms, std::ostream* ostr, short value) {
  const auto bytes = networkOrder(static_cast<std::uint16_t>(value));
  return outputBytes(ms, ostr, bytes.data(), static_cast<int>(bytes.size()));
}

int SimulatorClass::OutputByte(QuorvaSocket* ms, std::ostream* ostr, char value) {
  return outputBytes(ms, ostr, &value, 1);
}

int SimulatorClass::Output(QuorvaSocket* ms, std::ostream* ostr, double* array, int sizeArray) {
  static std::int32_t bufferSize = 100;
  static std::vector<double> buffer(static_cast<std::size_t>(bufferSize));
  if (sizeArray > bufferSize) {
    bufferSize = sizeArray;
    buffer = std::vector<double>(static_cast<std::size_t>(bufferSize));
  }
  for (int i = 0; i < sizeArray; ++i) {
    buffer[static_cast<std::size_t>(i)] = EndianConvertDouble(array[i]);
  }
  return outputBytes(ms, ostr, reinterpret_cast<const char*>(buffer.data()),
                     sizeArray * static_cast<int>(sizeof(double)));
}

double SimulatorClass::EndianConvertDouble(double value) {
  return std::bit_cast<double>(networkOrder(std::bit_cast<std::uint64_t>(value)));
}

void SimulatorClass::OutputCPUTime(QuorvaSocket* ms, double seconds) {
  OutputInt(ms, nullptr, kProcessorTimeLength);
  OutputByte(ms, nullptr, static_cast<char>(kQuitOrProcessorTime));
  OutputByte(ms, nullptr, static_cast<char>(MyClientID));
  OutputShort(ms, nullptr, static_cast<short>(TheExperimentNumber));
  Output(ms, nullptr, &seconds, 1);
}

void SimulatorClass::OutputDataBinary(QuorvaSocket* ms, std::ostream* ostr, DataPacket* dp, DataPacket* dpsqr) {
  const std::array<DataPacket*, 2> packets = {dp, dpsqr};
  int NumDatas = 0;
  std::int64_t observations = 0;
  for (DataPacket* const packet : packets) {
    for (int i = 0; packet != nullptr && i < NumPVs; ++i) {
      if (const int count = packet->GetNumObs(i); count > 0) {
        ++NumDatas;
        observations += count;
      }
    }
  }
  const std::int64_t length = kDataHeadLength + std::int64_t{kRecordHeadLength} * NumDatas +
                              static_cast<std::int64_t>(sizeof(double)) * observations;
  OutputInt(ms, ostr, static_cast<int>(length));
  OutputByte(ms, ostr, static_cast<char>(MyClientID));
  OutputShort(ms, ostr, static_cast<short>(TheExperimentNumber));
  OutputShort(ms, ostr, static_cast<short>(NumDatas));

  char kind = 0;  // 1 for a row of dp, 2 for one of dpsqr
  for (DataPacket* const packet : packets) {
    ++kind;
    for (int i = 0; packet != nullptr && i < NumPVs; ++i) {
      if (const int count = packet->GetNumObs(i); count > 0) {
        OutputShort(ms, ostr, static_cast<short>(i));
        OutputByte(ms, ostr, kind);
        OutputInt(ms, ostr, count);
        Output(ms, ostr, packet->GetObsArray(i), count);
      }
    }
  }
  if (ostr != nullptr) {
    ostr->flush();
  }
}
