#include "Simulator/SimulatorClass.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "ArcCheck/ArcCheck.h"
#include "ArcCheck/ArcsAreChecked.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/List.h"
#include "BaseClasses/OwnedText.h"
#include "BaseClasses/QuorvaQueue.h"
#include "BaseClasses/QuorvaSocket.h"
#include "BaseClasses/StandardErrors.h"
#include "BaseClasses/TraceFileContainer.h"
#include "BaseClasses/TraceFileQuorva.h"
#include "BaseClasses/TraceFileXML.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/PerformanceVariableNode.h"
#include "Simulator/CPUTime.h"
#include "Simulator/DataPacket.h"
#include "Simulator/Event.h"
#include "Simulator/EventList.h"
#include "Simulator/MersenneTwister.h"
#include "Simulator/PAddress.h"
#include "Simulator/ParseInt32.h"
#include "Simulator/Tausworthe.h"
#include "Simulator/UserDistributions.h"
#include "Study/BaseStudyClass.h"

namespace {

constexpr int kManagerTimeoutMs = 60000;
constexpr int kDefaultSimTest = 2;  // the connectivity builder used when SIMTEST is not set

/// Deletes a queue and the packets in it.
void deleteWithPackets(QuorvaQueue<DataPacket*>*& queue) {
  std::vector<std::unique_ptr<DataPacket>> packets;
  while (DataPacket* const packet = queue->Pop()) {
    packets.emplace_back(packet);
  }
  delete queue;
  queue = nullptr;
}

}  // namespace

SimulatorClass::SimulatorClass() {
  std::exit(1);
}

SimulatorClass::SimulatorClass(int argc, char** argv) {
  std::set_new_handler(MemoryAllocationError);
  db_entity = support::copyOfText("fake");
  support::debugLine(3, "Starting SimulationClass");
  TheGroupContainer = new List<BaseGroupClass>;
  TheActionContainer = new List<BaseActionClass>;
  if (TheDistribution == nullptr || TheDistribution->RNG == nullptr) {
    TheDistribution = new UserDistributions(0, DEFAULT_SEED);
  }
  UnusedPackets = new QuorvaQueue<DataPacket*>(MaxDataPackets);
  OutputPackets = new QuorvaQueue<DataPacket*>(MaxDataPackets);
  if (ParseCommandLineOptions(argc, argv) != 0) {
    PrintUsage();
    std::cerr << "ERROR: Parsing command line options" << std::endl;
    std::exit(1);
  }
  createResultFiles();
  trace = new TraceFileContainer;
  createTraceSinks();
  obtainStudy();
  TheModel = TheStudy->GetPVModel(true);
  if (EnableQuorvaTrace || EnableXMLTrace) {
    trace->addPVModel(TheModel);
  }
  trace->printHeader();
  selectPerformanceVariables();
  listGroups();
  buildConnectivity();
  TheEventList = new EventList(TheModel->getNumGroups() + 1);
  installGenerator();
  listActions();
  seedGenerator();
  NumPVs = TheModel->Number_Of_Performance_Variables;
}

SimulatorClass::~SimulatorClass() {
  delete TheGroupContainer;
  delete TheActionContainer;
  delete TheEventList;
  delete[] EventPointerArray;
  delete SimMgrSocket;
  delete ConnectionSocket;
  delete trace;
  ConnectionSocket = nullptr;
  if (FileCSV != nullptr) {
    CloseAsciiFile(*FileCSV);
    delete FileCSV;
    FileCSV = nullptr;
  }
  finishBinFile();
  deleteWithPackets(OutputPackets);
  deleteWithPackets(UnusedPackets);
  delete CurPacket;
  delete CurSqrPacket;
  delete[] ASCIIFilename;
  delete[] BinFilename;
  delete[] TraceFilename;
  delete[] InitiallyEnabled;
  DestructConnectivityList();
  DestructStudy();
  delete[] db_entity;
  delete _cpuTimer;
}

void SimulatorClass::Run() {
  if (WaitForSocket) {
    SimMgrSocket = WaitForSimMgrConnection(kManagerTimeoutMs);
    if (SimMgrSocket == nullptr) {
      SimControl = STOPHARD;
    }
  }
  if constexpr (support::kArcsAreChecked) {
    arcCheck_ = std::make_unique<support::ArcCheck>(*TheModel->TheModel, std::cerr);
  }
  if (isTerminatingSimulation != 0) {
    TerminatingSimulation();
  } else {
    SteadyStateSimulation();
  }
  if constexpr (support::kArcsAreChecked) {
    arcCheck_->conclude();
  }
  finishBinFile();
  trace->printFooter();
  std::cout << "Actions fired: " << _fireActionCount << std::endl;
  std::cout << "CPU time (s): " << cpuSeconds() << std::endl;
}

int SimulatorClass::arcFaults() const {
  return arcCheck_ == nullptr ? 0 : arcCheck_->faults();
}

const char* SimulatorClass::to_string(RandomNumberGeneratorType type) {
  switch (type) {
    case LAGGED_FIBONACCI:
      return "Lagged Fibonacci";
    case TAUSWORTHE:
      return "Tausworthe";
    case MERSENNE_TWISTER:
      return "Mersenne Twister";
    default:
      return "Unknown";
  }
}

void SimulatorClass::makeLoopObjects() {
  TempEvent = new Event;
  CurrEvent = new Event;
  NullAction = new BaseActionClass;
}

void SimulatorClass::deleteLoopObjects() {
  delete CurrEvent;
  CurrEvent = nullptr;
  delete TempEvent;
  TempEvent = nullptr;
  if (TempAction == NullAction) {
    TempAction = nullptr;
  }
  delete NullAction;
  NullAction = nullptr;
}

void SimulatorClass::startCpuTimer() {
  _cpuTimer = new CPUTime;
  _cpuTimer->Start();
}

double SimulatorClass::cpuSeconds() const {
  return _cpuTimer == nullptr ? 0.0 : _cpuTimer->GetTime();
}

void SimulatorClass::createResultFiles() {
  if (ASCIIFilename != nullptr) {
    FileCSV = CreateAsciiFile(ASCIIFilename);
  }
  if (BinFilename != nullptr) {
    FileBin = CreateBinFile(BinFilename);
  }
}

void SimulatorClass::finishBinFile() {
  if (FileBin != nullptr) {
    CloseBinFile(*FileBin);
    delete FileBin;
    FileBin = nullptr;
  }
}

void SimulatorClass::createTraceSinks() {
  if (!EnableQuorvaTrace && !EnableXMLTrace) {
    return;
  }
  trace->setTraceLevel(TraceLevel);
  if (EnableQuorvaTrace) {
    createTextSink();
  }
  if (EnableXMLTrace) {
    createXmlSink();
  }
}

void SimulatorClass::createTextSink() {
  if (TraceFilename != nullptr) {
    const std::string name = std::string(TraceFilename) + ".txt";
    traceQuorva = support::makeKeptSink<TraceFileQuorva>(name.c_str());
  } else {
    std::cout << "Adding cout: " << std::endl;
    traceQuorva = support::makeKeptSink<TraceFileQuorva>(&std::cout);
  }
  traceQuorva->setTraceLevel(TraceLevel);
  trace->AddTraceFile(traceQuorva);
}

void SimulatorClass::createXmlSink() {
  if (TraceFilename != nullptr) {
    const std::string name = std::string(TraceFilename) + ".xml";
    traceXML = support::makeKeptSink<TraceFileXML>(name.c_str());
  } else {
    traceXML = support::makeKeptSink<TraceFileXML>(&std::cout);
  }
  traceXML->setTraceLevel(TraceLevel);
  trace->AddTraceFile(traceXML);
}

void SimulatorClass::obtainStudy() {
  support::debugLine(3, "Generating Study and getting pv model");
  TheStudy = GenerateStudy();
  requireExperiment();
  TheStudy->SetGVs(static_cast<int>(TheExperimentNumber));
  if (OverrideString != nullptr) {
    TheStudy->overrideGVs(OverrideString);
    std::cout << "Overriding global variables in simulator" << std::endl;
  }
}

void SimulatorClass::requireExperiment() {
  const std::uint32_t count = TheStudy->GetNumExps();
  if (TheExperimentNumber < count) {
    return;
  }
  std::cerr << "ERROR: Experiment " << TheExperimentNumber << " does not exist, ";
  if (count == 0) {
    std::cerr << "the study has no experiments" << std::endl;
  } else {
    std::cerr << "the study's experiments are 0 to " << count - 1 << std::endl;
  }
  std::exit(1);
}

void SimulatorClass::selectPerformanceVariables() {
  const PVType wanted = isTerminatingSimulation != 0 ? terminating : steady_state;
  const int count = TheModel->Number_Of_Performance_Variables;
  PVList = TheModel->PerformanceVariableList;
  std::vector<int> indices;
  // Never without memory of its own: a null array would stand for all variables.
  indices.reserve(static_cast<std::size_t>(count) + 1);
  for (int i = 0; i < count; ++i) {
    if (PVList[i]->Type == wanted) {
      indices.push_back(i);
    } else {
      PVList[i]->Stop = std::numeric_limits<double>::max();
    }
  }
  TheModel->ConsiderOnly(indices.data(), static_cast<int>(indices.size()));
}

void SimulatorClass::listGroups() {
  support::debugLine(3, "Getting groups");
  TheModel->listGroups(TheGroupContainer);
  GroupList = TheGroupContainer->getList();
  const int NumGroups = TheModel->getNumGroups();
  EventPointerArray = new PAddress[static_cast<std::size_t>(NumGroups)];
  for (int i = 0; i < NumGroups; ++i) {
    GroupList[i]->EventPointer = &EventPointerArray[i];
  }
  support::debugLine(3, "End getting groups");
}

void SimulatorClass::buildConnectivity() {
  CPUTime stopwatch;
  stopwatch.Start();
  const char* const text = std::getenv("SIMTEST");
  const int simTest = text == nullptr ? kDefaultSimTest : support::parseInt32(text);
  short result = 0;
  if (simTest == 2) {
    std::cout << "GenerateConnectivityList()" << std::endl;
    result = GenerateConnectivityList();
  } else if (simTest == 0 || simTest == 1) {
    std::cout << "GenerateConnectivityListOld()" << std::endl;
    result = GenerateConnectivityListOld();
  }
  // On purpose: with any other value no group is looked at again after a firing.
  if (result != 0) {
    std::cerr << "Error Generating Connectivity List\n";
    std::exit(1);
  }
  std::cout << "GenerateConnectivityList() Time=" << stopwatch.GetTime() << std::endl;
}

void SimulatorClass::installGenerator() {
  switch (RandomNumberGenerator) {
    case TAUSWORTHE:
      support::debugLine(3, "Using Tausworthe Random Number Generator");
      delete TheDistribution->RNG;
      TheDistribution->RNG = nullptr;
      TheDistribution->RNG = new Tausworthe;
      break;
    case MERSENNE_TWISTER:
      support::debugLine(3, "Using Mersenne Twister Random Number Generator");
      delete TheDistribution->RNG;
      TheDistribution->RNG = nullptr;
      TheDistribution->RNG = new MersenneTwister;
      break;
    default:
      support::debugLine(3, "Using Lagged Fibonacci Random Number Generator");
  }
  support::debugLine(3, "Done creating random number generator");
}

void SimulatorClass::listActions() {
  ActionList = nullptr;
  TheModel->listActions(TheActionContainer);
  ActionList = TheActionContainer->getList();
  const int NumActions = TheModel->getNumActions();
  for (int i = 0; i < NumActions; ++i) {
    ActionList[i]->Reactivation = false;
  }
}

void SimulatorClass::seedGenerator() {
  TheDistribution->RNG->srnd(RandomNumberSeed == 0 ? DEFAULT_SEED : RandomNumberSeed);
  support::debugLine(3, "About to start simulation");
}
